#pragma once

// How much memory a run will take, by a glance at its input, told to the platform before the run begins.

#include <string>

namespace q7z::app
{

/// Has room made for what the file at path will become. Where nothing can be told of it, nothing is done.
void PrepareMemoryFor(const std::string& path);

}  // namespace q7z::app
