#include "tests/images/imagebuilders.h"

#include <algorithm>
#include <sstream>

namespace q7z::test
{

namespace
{

void AppendBigEndian(Bytes& target, std::uint32_t value, int byteCount = 4)
{
  for (int i = byteCount - 1; i >= 0; --i)
    target.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::uint32_t Crc(const std::uint8_t* bytes, std::size_t count)
{
  std::uint32_t crc = ~0u;
  for (std::size_t i = 0; i < count; ++i)
  {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit)
      crc = crc & 1 ? crc >> 1 ^ 0xEDB88320u : crc >> 1;
  }
  return ~crc;
}

std::uint32_t Adler(const Bytes& bytes)
{
  std::uint32_t a = 1;
  std::uint32_t b = 0;
  for (const std::uint8_t byte : bytes)
  {
    a = (a + byte) % 65521;
    b = (b + a) % 65521;
  }
  return b << 16 | a;
}

void AppendSegment(Bytes& target, int marker, const Bytes& content)
{
  target.push_back(0xFF);
  target.push_back(static_cast<std::uint8_t>(marker));
  AppendBigEndian(target, static_cast<std::uint32_t>(content.size() + 2), 2);
  Append(target, content);
}

/// Entropy coded bits, the highest first; a byte FF is followed by 00.
class JpegBits
{
public:
  void Put(int value, int count)
  {
    for (int i = count - 1; i >= 0; --i)
    {
      _byte = _byte << 1 | (value >> i & 1);
      if (++_count == 8)
        Flush();
    }
  }
  Bytes Finish()
  {
    while (_count)
      Put(1, 1);
    return _bytes;
  }

private:
  void Flush()
  {
    _bytes.push_back(static_cast<std::uint8_t>(_byte));
    if (_bytes.back() == 0xFF)
      _bytes.push_back(0);
    _byte = _count = 0;
  }
  Bytes _bytes;
  int _byte = 0;
  int _count = 0;
};

/// A difference of the block's mean, by the table that Build writes: four bits for how many bits follow.
void PutDifference(JpegBits& bits, int difference)
{
  int size = 0;
  while (std::abs(difference) >> size)
    ++size;
  bits.Put(size, 4);
  bits.Put(difference < 0 ? difference + (1 << size) - 1 : difference, size);
}

Bytes MakeScanHeader(int componentCount, int first, int last)
{
  Bytes header{static_cast<std::uint8_t>(componentCount)};
  for (int i = 1; i <= componentCount; ++i)
    Append(header, {static_cast<std::uint8_t>(i), 0});
  Append(header, {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(last), 0});
  return header;
}

}  // namespace

void Append(Bytes& target, const Bytes& bytes)
{
  target.insert(target.end(), bytes.begin(), bytes.end());
}

Bytes BytesOf(std::string_view text)
{
  return Bytes(text.begin(), text.end());
}

PngBuilder::PngBuilder(const PngHeader& header) : _bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}
{
  Bytes content;
  AppendBigEndian(content, header.width);
  AppendBigEndian(content, header.height);
  Append(content, {header.depth, header.colorType, 0, 0, header.interlace});
  Chunk("IHDR", content);
}

PngBuilder& PngBuilder::Chunk(std::string_view type, const Bytes& content)
{
  AppendBigEndian(_bytes, static_cast<std::uint32_t>(content.size()));
  const std::size_t start = _bytes.size();
  Append(_bytes, BytesOf(type));
  Append(_bytes, content);
  AppendBigEndian(_bytes, Crc(&_bytes[start], _bytes.size() - start));
  return *this;
}

PngBuilder& PngBuilder::Rows(const Bytes& rows)
{
  return Chunk("IDAT", Stored(rows));
}

Bytes PngBuilder::Build() const
{
  PngBuilder whole(*this);
  return whole.Chunk("IEND", {})._bytes;
}

Bytes Stored(const Bytes& content)
{
  const std::uint8_t low = static_cast<std::uint8_t>(content.size());
  const std::uint8_t high = static_cast<std::uint8_t>(content.size() >> 8);
  Bytes stream{0x78, 0x01, 1, low, high, static_cast<std::uint8_t>(~low), static_cast<std::uint8_t>(~high)};
  Append(stream, content);
  AppendBigEndian(stream, Adler(content));
  return stream;
}

Bytes LongRun(std::size_t byteCount)
{
  // The fixed codes: a zero byte, then again and again 258 bytes from one byte back, then the end. Bits fill bytes from below.
  std::string bits = "110"
                     "00110000";
  for (std::size_t i = 0; i < byteCount / 258; ++i)
    bits += "11000101"
            "00000";
  bits += "0000000";
  bits.resize((bits.size() + 7) / 8 * 8, '0');
  Bytes stream{0x78, 0x01};
  for (std::size_t i = 0; i < bits.size(); i += 8)
  {
    int byte = 0;
    for (std::size_t bit = 0; bit < 8; ++bit)
      byte |= (bits[i + bit] - '0') << bit;
    stream.push_back(static_cast<std::uint8_t>(byte));
  }
  return stream;
}

JpegBuilder& JpegBuilder::Components(const std::vector<int>& values)
{
  _values = values;
  return *this;
}

JpegBuilder& JpegBuilder::Adobe(int transform)
{
  _transform = transform;
  return *this;
}

JpegBuilder& JpegBuilder::Scans(int scanCount)
{
  _scanCount = scanCount;
  return *this;
}

Bytes JpegBuilder::Build() const
{
  const int count = static_cast<int>(_values.size());
  const int blockCount = (_width + 7) / 8 * ((_height + 7) / 8);
  Bytes file{0xFF, 0xD8};
  if (_transform >= 0)
  {
    Bytes marker = BytesOf("Adobe");
    Append(marker, {0, 100, 0, 0, 0, 0, static_cast<std::uint8_t>(_transform)});
    AppendSegment(file, 0xEE, marker);
  }
  Bytes steps{0};  // one table, all of whose steps are 8: a mean of 1 is one step
  steps.resize(65, 8);
  AppendSegment(file, 0xDB, steps);
  Bytes frame{8};
  AppendBigEndian(frame, static_cast<std::uint32_t>(_height), 2);
  AppendBigEndian(frame, static_cast<std::uint32_t>(_width), 2);
  frame.push_back(static_cast<std::uint8_t>(count));
  for (int i = 1; i <= count; ++i)
    Append(frame, {static_cast<std::uint8_t>(i), 0x11, 0});
  AppendSegment(file, _scanCount ? 0xC2 : 0xC0, frame);
  Bytes means{0x00, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // twelve codes of four bits
  for (std::uint8_t i = 0; i < 12; ++i)
    means.push_back(i);
  AppendSegment(file, 0xC4, means);
  AppendSegment(file, 0xC4, {0x10, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});  // the end of a block: one bit

  AppendSegment(file, 0xDA, MakeScanHeader(count, 0, _scanCount ? 0 : 63));
  JpegBits bits;
  for (int block = 0; block < blockCount; ++block)
  {
    for (const int value : _values)
    {
      PutDifference(bits, block ? 0 : value - 128);
      if (!_scanCount)
        bits.Put(0, 1);
    }
  }
  Append(file, bits.Finish());
  for (int scan = 1; scan < _scanCount; ++scan)
  {
    AppendSegment(file, 0xDA, MakeScanHeader(1, 1, 63));
    JpegBits ends;
    for (int block = 0; block < blockCount; ++block)
      ends.Put(0, 1);
    Append(file, ends.Finish());
  }
  Append(file, {0xFF, 0xD9});
  return file;
}

std::string PixelText(const PixelImage& image)
{
  std::string text;
  for (Int y = 0; y < image.GetHeight(); ++y)
  {
    text += y ? " / " : "";
    for (Int i = 0; i < image.GetRowBytes(); ++i)
    {
      text += i == 0 ? "" : i % image.GetChannels() ? "," : " ";
      text += std::to_string(image.GetRow(y)[i]);
    }
  }
  return text;
}

std::shared_ptr<PixelImage> ImageOf(const std::string& text)
{
  std::vector<Byte> values;
  Int32 height = 1;
  Int32 pixelCount = 0;
  std::istringstream words(text);
  for (std::string word; words >> word;)
  {
    ++(word == "/" ? height : pixelCount);
    std::istringstream numbers(word);
    for (std::string number; word != "/" && std::getline(numbers, number, ',');)
      values.push_back(static_cast<Byte>(std::stoi(number)));
  }
  const Int32 channels = static_cast<Int32>(values.size()) / pixelCount;
  std::shared_ptr<PixelImage> image = PixelImage::Create(pixelCount / height, height, channels);
  std::copy(values.begin(), values.end(), image->GetRow(0));
  return image;
}

std::shared_ptr<PixelImage> NoiseImage(Int32 width, Int32 height, Int32 channels)
{
  std::shared_ptr<PixelImage> image = PixelImage::Create(width, height, channels);
  std::uint32_t state = 1;
  for (Int i = 0; i < image->GetByteCount(); ++i)
  {
    state = state * 1664525u + 1013904223u;
    image->GetRow(0)[i] = static_cast<Byte>(state >> 24);
  }
  return image;
}

}  // namespace q7z::test
