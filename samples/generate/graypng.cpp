#include "samples/generate/graypng.h"

#include <string_view>

namespace q7z::generate
{

namespace
{

void AppendBigEndian(std::string& target, UInt32 value, int byteCount = 4)
{
  for (int shift = 8 * (byteCount - 1); shift >= 0; shift -= 8)
    target += static_cast<char>(value >> shift & 255);
}

void AppendLittleEndian16(std::string& target, UInt32 value)
{
  target += static_cast<char>(value & 255);
  target += static_cast<char>(value >> 8 & 255);
}

UInt32 GetCrc(std::string_view bytes)
{
  UInt32 crc = ~UInt32(0);
  for (const char byte : bytes)
  {
    crc ^= static_cast<Byte>(byte);
    for (int bit = 0; bit < 8; ++bit)
      crc = crc & 1 ? crc >> 1 ^ 0xEDB88320u : crc >> 1;
  }
  return ~crc;
}

UInt32 GetAdler(std::string_view bytes)
{
  UInt32 low = 1;
  UInt32 high = 0;
  for (const char byte : bytes)
  {
    low = (low + static_cast<Byte>(byte)) % 65521;
    high = (high + low) % 65521;
  }
  return high << 16 | low;
}

void AppendChunk(std::string& target, std::string_view type, std::string_view content)
{
  AppendBigEndian(target, static_cast<UInt32>(content.size()));
  std::string named(type);
  named += content;
  target += named;
  AppendBigEndian(target, GetCrc(named));
}

/// A zlib stream of one stored block, whose length has 16 bits.
std::string StoreRows(std::string_view rows)
{
  std::string stream("\x78\x01\x01");
  AppendLittleEndian16(stream, static_cast<UInt32>(rows.size()));
  AppendLittleEndian16(stream, ~static_cast<UInt32>(rows.size()));
  stream += rows;
  AppendBigEndian(stream, GetAdler(rows));
  return stream;
}

}  // namespace

std::string MakeGrayPng(Int side, const GrayFunction& grayAt)
{
  std::string header;
  AppendBigEndian(header, static_cast<UInt32>(side));
  AppendBigEndian(header, static_cast<UInt32>(side));
  header += std::string_view("\x08\0\0\0\0", 5);  // 8 bits of gray, the usual methods
  std::string rows;
  for (Int y = 0; y < side; ++y)
  {
    rows += '\0';  // no filter
    for (Int x = 0; x < side; ++x)
      rows += static_cast<char>(grayAt(x, y));
  }
  std::string file("\x89PNG\r\n\x1a\n");
  AppendChunk(file, "IHDR", header);
  AppendChunk(file, "IDAT", StoreRows(rows));
  AppendChunk(file, "IEND", "");
  return file;
}

}  // namespace q7z::generate
