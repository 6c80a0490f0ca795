#pragma once

// What a developer reads in the diagnostic output when something failed: the whole chain of an error, which messages to the user
// leave out. For every subsystem.

#include "framework/error.h"

namespace q7z
{

/// Prints "what: message (file:line), caused by: ..." as one line. Falls back to what alone without memory.
void PrintError(const String& what, const Error& error) noexcept;

}  // namespace q7z
