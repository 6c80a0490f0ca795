#pragma once

// The module shell: what the library's entry does with each message of the host. It attaches to the host's tables, registers what
// the module offers, loads its texts, and is torn down at the end. Its state is process-wide; the host sends messages from one
// thread.

#include "framework/types.h"

namespace q7z
{

/// Answers one message; the arguments are those of HostEntryFunction. @return what the host reads, by message.
Int32 AnswerModuleMessage(Int32 message, void* argument1, void* argument2, void* argument3) noexcept;

}  // namespace q7z
