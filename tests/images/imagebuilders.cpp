#include "tests/images/imagebuilders.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <jpeglib.h>

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

}  // namespace

PngBuilder::PngBuilder(const PngHeader& header) : _bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}
{
  Bytes content;
  AppendBigEndian(content, header.width);
  AppendBigEndian(content, header.height);
  content.insert(content.end(), {header.depth, header.colorType, 0, 0, header.interlace});
  Chunk("IHDR", content);
}

PngBuilder& PngBuilder::Chunk(std::string_view type, const Bytes& content)
{
  AppendBigEndian(_bytes, static_cast<std::uint32_t>(content.size()));
  const std::size_t start = _bytes.size();
  _bytes.insert(_bytes.end(), type.begin(), type.end());
  _bytes.insert(_bytes.end(), content.begin(), content.end());
  AppendBigEndian(_bytes, Crc(&_bytes[start], _bytes.size() - start));
  return *this;
}

/// A zlib stream of literal bytes.
PngBuilder& PngBuilder::Rows(const Bytes& rows)
{
  const std::uint8_t low = static_cast<std::uint8_t>(rows.size());
  const std::uint8_t high = static_cast<std::uint8_t>(rows.size() >> 8);
  Bytes stream{0x78, 0x01, 1, low, high, static_cast<std::uint8_t>(~low), static_cast<std::uint8_t>(~high)};
  stream.insert(stream.end(), rows.begin(), rows.end());
  AppendBigEndian(stream, Adler(rows));
  return Chunk("IDAT", stream);
}

Bytes PngBuilder::Build() const
{
  PngBuilder whole(*this);
  return whole.Chunk("IEND", {})._bytes;
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

Bytes MakeJpeg(int width, int height, const Bytes& values, int transform, int scanCount)
{
  const int count = static_cast<int>(values.size());
  const J_COLOR_SPACE spaces[] = {JCS_UNKNOWN, JCS_GRAYSCALE, JCS_UNKNOWN, transform == 0 ? JCS_RGB : JCS_YCbCr,
                                  transform == 2 ? JCS_YCCK : JCS_CMYK};
  jpeg_compress_struct coder;
  jpeg_error_mgr errors;
  coder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&coder);
  unsigned char* bytes = nullptr;
  unsigned long byteCount = 0;
  jpeg_mem_dest(&coder, &bytes, &byteCount);
  coder.image_width = static_cast<JDIMENSION>(width);
  coder.image_height = static_cast<JDIMENSION>(height);
  coder.input_components = count;
  coder.in_color_space = spaces[count];
  jpeg_set_defaults(&coder);
  jpeg_set_colorspace(&coder, spaces[count]);
  jpeg_set_quality(&coder, 100, TRUE);
  if (scanCount)
    jpeg_simple_progression(&coder);
  for (int i = 0; i < count; ++i)
    coder.comp_info[i].h_samp_factor = coder.comp_info[i].v_samp_factor = 1;
  coder.write_JFIF_header = FALSE;
  coder.write_Adobe_marker = transform >= 0;
  jpeg_start_compress(&coder, TRUE);
  Bytes row;
  for (int x = 0; x < width; ++x)
    row.insert(row.end(), values.begin(), values.end());
  for (JSAMPROW rows[] = {row.data()}; coder.next_scanline < coder.image_height;)
    jpeg_write_scanlines(&coder, rows, 1);
  jpeg_finish_compress(&coder);
  Bytes file(bytes, bytes + byteCount);
  jpeg_destroy_compress(&coder);
  std::free(bytes);

  const Bytes startOfScan = {0xFF, 0xDA};
  const Bytes lastScan(std::find_end(file.begin(), file.end(), startOfScan.begin(), startOfScan.end()), file.end() - 2);
  for (int i = 1; i < scanCount; ++i)
    file.insert(file.end() - 2, lastScan.begin(), lastScan.end());
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
