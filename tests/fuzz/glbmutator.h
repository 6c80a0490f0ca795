#pragma once

// A mutator for GLB files that keeps the lengths in the header and in front of the chunks consistent, so that what is mutated is
// what the chunks hold, not how long they claim to be.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace q7z::test
{

struct GlbChunk
{
  uint32_t type = 0;
  std::vector<uint8_t> bytes;
};

/// The chunks of a GLB as far as they can be told; a chunk that runs over the end is cut there.
std::vector<GlbChunk> SplitGlb(const uint8_t* data, size_t size);

/// Header and chunks with true lengths, each chunk padded to a multiple of four.
std::vector<uint8_t> JoinGlb(const std::vector<GlbChunk>& chunks);

}  // namespace q7z::test
