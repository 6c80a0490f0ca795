#pragma once

// What q7z does once its command line is understood: the verbs.

#include "app/arguments.h"

namespace q7z::app
{

/// @return the exit code.
int Run(const Arguments& arguments);

}  // namespace q7z::app
