#pragma once

// ByteSink: where the writers of this folder put their text, piece by piece, in order. A sink belongs to its caller and outlives
// the write. StringSink keeps the text in memory, StreamSink hands it to an open stream.

#include <cstdio>
#include <string>
#include <string_view>

#include "framework/result.h"

namespace q7z
{

class ByteSink
{
public:
  /// Takes bytes, in pieces of any size. After an error nothing more comes.
  virtual Result<void> Write(std::string_view bytes) noexcept = 0;

protected:
  ~ByteSink() = default;
};

class StringSink final : public ByteSink
{
public:
  Result<void> Write(std::string_view bytes) noexcept override;
  const std::string& GetText() const noexcept { return _text; }

private:
  std::string _text;
};

/// Writes to a stream that stays open and is the caller's to flush.
class StreamSink final : public ByteSink
{
public:
  explicit StreamSink(std::FILE* stream) noexcept : _stream(stream) {}
  /// An error of the class io tells the system's reason.
  Result<void> Write(std::string_view bytes) noexcept override;

private:
  std::FILE* _stream;  // not owned
};

/// Collects small pieces and hands them on in large ones. After the first error of the sink it swallows everything; Finish tells
/// the error.
class BufferedBytes
{
public:
  explicit BufferedBytes(ByteSink& sink) noexcept : _sink(sink) {}

  /// Room for at least byteCount bytes, at most kLongestPiece. What was written there counts once Advance is called with its end.
  char* Reserve(size_t byteCount) noexcept
  {
    if (static_cast<size_t>(_buffer + sizeof(_buffer) - _end) < byteCount)
      Flush();
    return _end;
  }
  void Advance(char* end) noexcept { _end = end; }

  void Add(char byte) noexcept
  {
    *Reserve(1) = byte;
    ++_end;
  }
  void Add(std::string_view bytes) noexcept;

  /// Hands on what is left. @return the first error of the sink.
  Result<void> Finish() noexcept;

  static constexpr size_t kLongestPiece = 4096;

private:
  void Flush() noexcept;

  ByteSink& _sink;
  Error _error;
  char _buffer[64 * 1024];
  char* _end = _buffer;
};

}  // namespace q7z
