// Loads mutated .gltf texts through the plug-in's entry into a document of the headless host.

#include "tests/support/testhost.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  q7z::test::LoadOnce(data, size, "gltf");
  return 0;
}
