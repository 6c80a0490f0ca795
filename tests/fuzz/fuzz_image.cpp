// Decodes mutated PNG and JPEG files. What is decoded has the size that its header was read to have, and the same pixels again after
// it was written as a PNG.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "host/images/decode.h"
#include "host/images/encode.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maximumSize);

namespace
{

using Image = std::shared_ptr<q7z::PixelImage>;

constexpr q7z::Int kMostPixelsToWrite = 4096;  // larger images cost time and show nothing else

constexpr size_t kSignatureBytes = 8;
constexpr size_t kLengthAndType = 8;
constexpr size_t kChecksumBytes = 4;

void Demand(bool isTrue, const char* what)
{
  if (isTrue)
    return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void CheckWriting(const q7z::PixelImage& image)
{
  const q7z::Result<q7z::BaseArray<q7z::Byte>> written = q7z::EncodePng(image);
  Demand(!written.HasError(), "not written");
  const q7z::Result<Image> again = q7z::DecodeImage(written.GetValue().GetFirst(), written.GetValue().GetCount());
  Demand(!again.HasError(), "not read again");
  const q7z::PixelImage& other = *again.GetValue();
  Demand(other.GetWidth() == image.GetWidth() && other.GetByteCount() == image.GetByteCount(), "another size");
  Demand(std::memcmp(other.GetRow(0), image.GetRow(0), static_cast<size_t>(image.GetByteCount())) == 0, "other pixels");
}

// PNG files end each chunk with a checksum of its type and data, which stops most mutations before they are looked at.

uint32_t ReadWord(const uint8_t* data)
{
  return uint32_t(data[0]) << 24 | uint32_t(data[1]) << 16 | uint32_t(data[2]) << 8 | data[3];
}

uint32_t GetChecksum(const uint8_t* data, size_t size)
{
  uint32_t sum = 0xFFFFFFFF;
  for (size_t i = 0; i < size; ++i)
  {
    sum ^= data[i];
    for (int bit = 0; bit < 8; ++bit)
      sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320 : 0);
  }
  return ~sum;
}

void MendChecksums(uint8_t* data, size_t size)
{
  for (size_t place = kSignatureBytes; place + kLengthAndType + kChecksumBytes <= size;)
  {
    const size_t length = ReadWord(data + place);
    if (length > size - place - kLengthAndType - kChecksumBytes)
      return;
    uint8_t* const end = data + place + kLengthAndType + length;
    const uint32_t sum = GetChecksum(data + place + 4, 4 + length);
    for (int i = 0; i < 4; ++i)
      end[i] = static_cast<uint8_t>(sum >> (24 - 8 * i));
    place += kLengthAndType + length + kChecksumBytes;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
  const auto count = static_cast<q7z::Int>(size);
  const q7z::Result<q7z::ImageInfo> info = q7z::ReadImageInfo(data, count, count);
  const q7z::Result<Image> decoded = q7z::DecodeImage(data, count);
  if (decoded.HasError())
    return 0;
  const q7z::PixelImage& image = *decoded.GetValue();
  Demand(!info.HasError(), "decoded without a header");
  Demand(info.GetValue().width == image.GetWidth() && info.GetValue().height == image.GetHeight(), "the header has another size");
  if (q7z::Int(image.GetWidth()) * image.GetHeight() <= kMostPixelsToWrite)
    CheckWriting(image);
  return 0;
}

// One time in four the checksums stay as the mutation left them.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maximumSize, unsigned int seed)
{
  const size_t mutated = LLVMFuzzerMutate(data, size, maximumSize);
  if (seed % 4 != 0 && q7z::GetImageFormat(data, static_cast<q7z::Int>(mutated)) == q7z::ImageFormat::kPng)
    MendChecksums(data, mutated);
  return mutated;
}
