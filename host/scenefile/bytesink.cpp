#include "host/scenefile/bytesink.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include "framework/check.h"

namespace q7z
{

Result<void> StringSink::Write(std::string_view bytes) noexcept
{
  try
  {
    _text.append(bytes);
    return {};
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<void> StreamSink::Write(std::string_view bytes) noexcept
{
  errno = 0;
  if (std::fwrite(bytes.data(), 1, bytes.size(), _stream) == bytes.size())
    return {};
  const int reason = errno;
  try
  {
    const std::string text = "writing failed: " + std::generic_category().message(reason ? reason : EIO);
    ASSIGN_OR_RETURN(const String message, String::Create(text));
    return MAKE_ERROR(ErrorClass::kIo, message);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

void BufferedBytes::Flush() noexcept
{
  const size_t byteCount = static_cast<size_t>(_end - _buffer);
  _end = _buffer;
  if (_error || byteCount == 0)
    return;
  if (const Result<void> written = _sink.Write({_buffer, byteCount}); written.HasError())
    _error = written.GetError();
}

void BufferedBytes::Add(std::string_view bytes) noexcept
{
  while (!bytes.empty())
  {
    const std::string_view piece = bytes.substr(0, kLongestPiece);
    std::memcpy(Reserve(piece.size()), piece.data(), piece.size());
    _end += piece.size();
    bytes.remove_prefix(piece.size());
  }
}

Result<void> BufferedBytes::Finish() noexcept
{
  Flush();
  return _error ? Result<void>(_error) : Result<void>();
}

}  // namespace q7z
