// Loads mutated GLB files through the plug-in's entry into a document of the headless host.

#include <cstring>

#include "tests/fuzz/glbmutator.h"
#include "tests/support/testhost.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maximumSize);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  q7z::test::LoadOnce(data, size, "glb");
  return 0;
}

// One time in four the bytes are mutated as they are, so that broken lengths are met, too.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maximumSize, unsigned int seed)
{
  std::vector<q7z::test::GlbChunk> chunks = q7z::test::SplitGlb(data, size);
  if (seed % 4 == 0 || chunks.empty())
    return LLVMFuzzerMutate(data, size, maximumSize);
  std::vector<uint8_t>& bytes = chunks[seed / 4 % chunks.size()].bytes;
  const size_t oldSize = bytes.size();
  const size_t room = maximumSize > size + 16 ? maximumSize - size - 16 : 0;
  bytes.resize(oldSize + room);
  if (bytes.empty())
    return LLVMFuzzerMutate(data, size, maximumSize);
  bytes.resize(LLVMFuzzerMutate(bytes.data(), oldSize, bytes.size()));
  const std::vector<uint8_t> joined = q7z::test::JoinGlb(chunks);
  if (joined.size() > maximumSize)
    return LLVMFuzzerMutate(data, size, maximumSize);
  std::memcpy(data, joined.data(), joined.size());
  return joined.size();
}
