#pragma once

// The verb hash: the plug-in's extensions hasher with a terminal in place of its dialog.

#include "app/arguments.h"

namespace q7z::app
{

/// Names, or the lines of stdin, go into the dialog's input; its output goes to stdout. @return the exit code.
int RunHash(const Arguments& arguments);

}  // namespace q7z::app
