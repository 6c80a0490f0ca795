#pragma once

// The revision of the sources that the benchmarks were built from; its source is generated at every build by revision.cmake.

namespace q7z::bench
{

extern const char* const kRevision;

}  // namespace q7z::bench
