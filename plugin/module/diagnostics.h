#pragma once

// What a developer reads in the diagnostic output when something failed: the whole chain of an error, which messages to the user
// leave out. For every subsystem.

#include "framework/error.h"

namespace q7z
{

/// Prints "what: message, caused by: message (file:line), ..." as one line, under the place that raised the error. Prints what alone
/// without memory.
/// @param error  not empty.
void PrintError(const String& what, const Error& error) noexcept;

}  // namespace q7z
