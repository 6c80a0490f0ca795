#pragma once

// JsonEmitter: writes JSON token by token, straight to a sink, without keeping any of it. What begins in its own lines is indented
// so that changes show line by line; what begins inline stays on one line with everything in it. The caller opens and closes in
// the right order; nothing is checked here.

#include <string_view>

#include "framework/vector.h"
#include "host/scenefile/bytesink.h"

namespace q7z
{

/// How an object or array is laid out.
enum class JsonLayout
{
  kLines,
  kInline,
};

class JsonEmitter
{
public:
  explicit JsonEmitter(ByteSink& sink) noexcept : _bytes(sink) {}

  void BeginObject(JsonLayout layout = JsonLayout::kLines) noexcept { Begin('{', layout); }
  void EndObject() noexcept { End('}'); }
  void BeginArray(JsonLayout layout = JsonLayout::kLines) noexcept { Begin('[', layout); }
  void EndArray() noexcept { End(']'); }
  /// The name of the member whose value comes next.
  void WriteKey(std::string_view name) noexcept;

  void WriteNull() noexcept { PutToken("null"); }
  void WriteBool(Bool value) noexcept { PutToken(value ? "true" : "false"); }
  void WriteInt(Int value) noexcept;
  /// A text; bytes that are no UTF-8 become the replacement character.
  void WriteString(std::string_view text) noexcept;
  /// A number that is not finite becomes an object that names it.
  void WriteFloat(Float value) noexcept;
  void WriteVector(const Vector& value) noexcept;

  // Whole arrays, on one line.
  void WriteInts(const Int32* values, Int count) noexcept;
  void WriteFloats(const Float* values, Int count) noexcept;
  /// Numbers that are kept in 32 bits, and numbers that could have been; see numbertext.h.
  void WriteSingles(const Float32* values, Int count) noexcept;
  void WriteDoubles(const Float* values, Int count) noexcept;

  /// @return the first error of the sink.
  Result<void> Finish() noexcept;

private:
  void Begin(char bracket, JsonLayout layout) noexcept;
  void End(char bracket) noexcept;
  void Separate() noexcept;
  void BreakLine() noexcept;
  void PutToken(std::string_view text) noexcept;
  void PutQuoted(std::string_view text) noexcept;
  void PutEscaped(std::string_view sequence) noexcept;
  template <typename T, typename WriteText>
  void PutNumbers(const T* values, Int count, const WriteText& writeText) noexcept;

  BufferedBytes _bytes;
  Int _depth = 0;
  Int _inlineDepth = 0;  // of the brackets that are open, those that stay on one line
  Bool _isFirst = true;  // nothing stands before the next token in its object or array
  Bool _hasKey = false;
};

}  // namespace q7z
