#include "host/scenefile/jsonemitter.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/scenefile/numbertext.h"
#include "host/scenefile/utf8.h"

namespace q7z
{

namespace
{

constexpr Int kIndent = 2;
// Deeper lines stand at the same column: a chain of many objects would otherwise be blanks for the most part.
constexpr Int kDeepestIndent = 64;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::string_view GetNonFiniteText(Float value) noexcept
{
  return std::isnan(value) ? R"({"float": "nan"})" : value > 0 ? R"({"float": "inf"})" : R"({"float": "-inf"})";
}

}  // namespace

void JsonEmitter::BreakLine() noexcept
{
  static constexpr std::string_view kBlanks = "\n                                                                ";
  static_assert(kBlanks.size() == 1 + kDeepestIndent);
  _bytes.Add(kBlanks.substr(0, static_cast<size_t>(1 + std::min(_depth * kIndent, kDeepestIndent))));
}

/// What comes before a value or a name.
void JsonEmitter::Separate() noexcept
{
  if (_hasKey || _depth == 0)
  {
    _hasKey = false;
    return;
  }
  if (!_isFirst)
    _bytes.Add(',');
  if (_inlineDepth == 0)
    BreakLine();
  else if (!_isFirst)
    _bytes.Add(' ');
}

void JsonEmitter::Begin(char bracket, JsonLayout layout) noexcept
{
  Separate();
  _bytes.Add(bracket);
  ++_depth;
  if (layout == JsonLayout::kInline || _inlineDepth > 0)
    ++_inlineDepth;
  _isFirst = true;
}

void JsonEmitter::End(char bracket) noexcept
{
  --_depth;
  if (_inlineDepth > 0)
    --_inlineDepth;
  else if (!_isFirst)
    BreakLine();
  _bytes.Add(bracket);
  _isFirst = false;
}

void JsonEmitter::PutToken(std::string_view text) noexcept
{
  Separate();
  _bytes.Add(text);
  _isFirst = false;
}

void JsonEmitter::WriteKey(std::string_view name) noexcept
{
  Separate();
  PutQuoted(name);
  _bytes.Add(": ");
  _hasKey = true;
}

void JsonEmitter::WriteInt(Int value) noexcept
{
  char text[kNumberTextBytes];
  const char* const end = std::to_chars(text, text + sizeof(text), value).ptr;
  PutToken({text, static_cast<size_t>(end - text)});
}

void JsonEmitter::WriteString(std::string_view text) noexcept
{
  Separate();
  PutQuoted(text);
  _isFirst = false;
}

void JsonEmitter::PutQuoted(std::string_view text) noexcept
{
  _bytes.Add('"');
  size_t plain = 0;  // bytes at the start of text that go out as they are
  while (plain < text.size())
  {
    const size_t length = GetUtf8Length(text.substr(plain));
    const std::string_view sequence = text.substr(plain, std::max<size_t>(length, 1));
    if (length > 0 && static_cast<Byte>(sequence[0]) >= 0x20 && sequence[0] != '"' && sequence[0] != '\\')
    {
      plain += length;
      continue;
    }
    _bytes.Add(text.substr(0, plain));
    length == 0 ? _bytes.Add(kReplacement) : PutEscaped(sequence);
    text.remove_prefix(plain + sequence.size());
    plain = 0;
  }
  _bytes.Add(text);
  _bytes.Add('"');
}

void JsonEmitter::PutEscaped(std::string_view sequence) noexcept
{
  static constexpr char kDigits[] = "0123456789abcdef";
  const char byte = sequence[0];
  switch (byte)
  {
    case '"': _bytes.Add("\\\""); return;
    case '\\': _bytes.Add("\\\\"); return;
    case '\n': _bytes.Add("\\n"); return;
    case '\r': _bytes.Add("\\r"); return;
    case '\t': _bytes.Add("\\t"); return;
    default: break;
  }
  _bytes.Add("\\u00");
  _bytes.Add(kDigits[byte >> 4]);
  _bytes.Add(kDigits[byte & 15]);
}

void JsonEmitter::WriteFloat(Float value) noexcept
{
  if (!std::isfinite(value))
  {
    PutToken(GetNonFiniteText(value));
    return;
  }
  char text[kNumberTextBytes];
  const char* const end = WriteFloatText(text, value);
  PutToken({text, static_cast<size_t>(end - text)});
}

void JsonEmitter::WriteVector(const Vector& value) noexcept
{
  const Float numbers[3] = {value.x, value.y, value.z};
  WriteFloats(numbers, 3);
}

/// The one loop over millions of numbers: each text goes straight into the buffer.
template <typename T, typename WriteText>
void JsonEmitter::PutNumbers(const T* values, Int count, const WriteText& writeText) noexcept
{
  Separate();
  _bytes.Add('[');
  for (Int i = 0; i < count; ++i)
  {
    char* end = _bytes.Reserve(kNumberTextBytes + 2);
    if (i > 0)
    {
      *end++ = ',';
      *end++ = ' ';
    }
    _bytes.Advance(writeText(end, values[i]));
  }
  _bytes.Add(']');
  _isFirst = false;
}

namespace
{

/// Puts writeText, or the text of a number that is not finite.
template <typename T, typename WriteText>
char* WriteAnyNumber(char* target, T value, const WriteText& writeText) noexcept
{
  if (std::isfinite(value)) [[likely]]
    return writeText(target, value);
  const std::string_view text = GetNonFiniteText(static_cast<Float>(value));
  return std::copy(text.begin(), text.end(), target);
}

char* WriteAnyFloat(char* target, Float value) noexcept
{
  return WriteAnyNumber(target, value, WriteFloatText);
}

}  // namespace

void JsonEmitter::WriteInts(const Int32* values, Int count) noexcept
{
  PutNumbers(values, count,
             [](char* target, Int32 value) { return std::to_chars(target, target + kNumberTextBytes, value).ptr; });
}

void JsonEmitter::WriteFloats(const Float* values, Int count) noexcept
{
  PutNumbers(values, count, WriteAnyFloat);
}

void JsonEmitter::WriteSingles(const Float32* values, Int count) noexcept
{
  PutNumbers(values, count, [](char* target, Float32 value) { return WriteAnyNumber(target, value, WriteSingleText); });
}

void JsonEmitter::WriteDoubles(const Float* values, Int count) noexcept
{
  const auto passesForSingle = [](Float value) { return !std::isfinite(value) || HasSingleText(value); };
  Bool needsMark = std::all_of(values, values + count, passesForSingle);
  PutNumbers(values, count,
             [&needsMark](char* target, Float value)
             {
               if (!needsMark || !std::isfinite(value))
                 return WriteAnyFloat(target, value);
               needsMark = false;
               return WriteMarkedFloatText(target, value);
             });
}

Result<void> JsonEmitter::Finish() noexcept
{
  _bytes.Add('\n');
  return _bytes.Finish();
}

}  // namespace q7z
