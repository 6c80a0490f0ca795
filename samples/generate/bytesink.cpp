#include "samples/generate/bytesink.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace q7z::generate
{

void CountingSink::Write(const void* /*bytes*/, std::size_t byteCount)
{
  _byteCount += static_cast<Int>(byteCount);
}

BoundsSink::BoundsSink(Int componentCount)
    : _min(static_cast<std::size_t>(componentCount), std::numeric_limits<Float32>::max()),
      _max(static_cast<std::size_t>(componentCount), std::numeric_limits<Float32>::lowest())
{}

void BoundsSink::Write(const void* bytes, std::size_t byteCount)
{
  if (byteCount % sizeof(Float32) != 0)
    throw std::logic_error("a value was cut");
  const auto* source = static_cast<const Byte*>(bytes);
  for (std::size_t offset = 0; offset < byteCount; offset += sizeof(Float32))
  {
    Float32 value = 0;
    std::memcpy(&value, source + offset, sizeof(value));
    value += 0.0f;  // a negative zero would be written as -0
    _min[_component] = std::min(_min[_component], value);
    _max[_component] = std::max(_max[_component], value);
    _component = (_component + 1) % _min.size();
  }
}

void Base64Sink::PutGroup()
{
  static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (_textLength == _text.size())
  {
    _target.Write(_text.data(), _textLength);
    _textLength = 0;
  }
  const UInt32 bits = UInt32{_group[0]} << 16 | UInt32{_group[1]} << 8 | UInt32{_group[2]};
  for (int shift = 18; shift >= 0; shift -= 6)
    _text[_textLength++] = kDigits[bits >> shift & 63];
  _grouped = 0;
}

void Base64Sink::Write(const void* bytes, std::size_t byteCount)
{
  const auto* source = static_cast<const Byte*>(bytes);
  for (std::size_t i = 0; i < byteCount; ++i)
  {
    _group[_grouped++] = source[i];
    if (_grouped == _group.size())
      PutGroup();
  }
}

void Base64Sink::Finish()
{
  const std::size_t missing = _grouped == 0 ? 0 : _group.size() - _grouped;
  if (missing > 0)
  {
    std::fill(_group.begin() + static_cast<std::ptrdiff_t>(_grouped), _group.end(), Byte{0});
    PutGroup();
    std::fill_n(_text.begin() + static_cast<std::ptrdiff_t>(_textLength - missing), missing, '=');
  }
  _target.Write(_text.data(), _textLength);
  _textLength = 0;
}

FileSink::FileSink(const std::string& path) : _path(path)
{
  if (path == "-")
  {
    _file = stdout;
    return;
  }
  _temporaryPath = path + ".partial";
  _file = std::fopen(_temporaryPath.c_str(), "wb");
  if (_file == nullptr)
    Fail("open");
}

FileSink::~FileSink()
{
  if (_file == nullptr || _temporaryPath.empty())
    return;
  std::fclose(_file);
  std::remove(_temporaryPath.c_str());
}

void FileSink::Fail(const char* what) const
{
  throw std::system_error(errno, std::generic_category(), std::string("cannot ") + what + " " + _path);
}

void FileSink::Write(const void* bytes, std::size_t byteCount)
{
  if (std::fwrite(bytes, 1, byteCount, _file) != byteCount)
    Fail("write");
}

void FileSink::Finish()
{
  if (std::fflush(_file) != 0)
    Fail("write");
  if (_temporaryPath.empty())
    return;
  std::FILE* const file = _file;
  _file = nullptr;
  if (std::fclose(file) != 0 || std::rename(_temporaryPath.c_str(), _path.c_str()) != 0)
  {
    const int error = errno;
    std::remove(_temporaryPath.c_str());
    errno = error;
    Fail("write");
  }
}

}  // namespace q7z::generate
