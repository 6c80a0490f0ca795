#include "tests/fuzz/glbmutator.h"

#include <algorithm>
#include <cstring>

namespace q7z::test
{

namespace
{

constexpr uint32_t kMagic = 0x46546C67;
constexpr uint32_t kJson = 0x4E4F534A;
constexpr size_t kHeaderBytes = 12;
constexpr size_t kChunkHeaderBytes = 8;

uint32_t ReadWord(const uint8_t* data)
{
  uint32_t word = 0;
  std::memcpy(&word, data, sizeof(word));
  return word;
}

void AppendWord(std::vector<uint8_t>& bytes, uint32_t word)
{
  const auto* const first = reinterpret_cast<const uint8_t*>(&word);
  bytes.insert(bytes.end(), first, first + sizeof(word));
}

}  // namespace

std::vector<GlbChunk> SplitGlb(const uint8_t* data, size_t size)
{
  std::vector<GlbChunk> chunks;
  for (size_t position = kHeaderBytes; position + kChunkHeaderBytes <= size;)
  {
    const size_t length = std::min<size_t>(ReadWord(data + position), size - position - kChunkHeaderBytes);
    const uint8_t* const first = data + position + kChunkHeaderBytes;
    chunks.push_back({ReadWord(data + position + 4), {first, first + length}});
    position += kChunkHeaderBytes + length;
  }
  return chunks;
}

std::vector<uint8_t> JoinGlb(const std::vector<GlbChunk>& chunks)
{
  std::vector<uint8_t> bytes;
  AppendWord(bytes, kMagic);
  AppendWord(bytes, 2);
  AppendWord(bytes, 0);
  for (const GlbChunk& chunk : chunks)
  {
    const size_t padding = (4 - chunk.bytes.size() % 4) % 4;
    AppendWord(bytes, static_cast<uint32_t>(chunk.bytes.size() + padding));
    AppendWord(bytes, chunk.type);
    bytes.insert(bytes.end(), chunk.bytes.begin(), chunk.bytes.end());
    bytes.insert(bytes.end(), padding, chunk.type == kJson ? ' ' : 0);
  }
  const uint32_t length = static_cast<uint32_t>(bytes.size());
  std::memcpy(bytes.data() + 8, &length, sizeof(length));
  return bytes;
}

}  // namespace q7z::test
