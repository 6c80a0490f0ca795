// JSON writing: ours, because 32-bit floats must come out in their own shortest form.

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

#include "framework/check.h"
#include "host/services/filereading.h"
#include "host/services/headlessjson.h"

namespace q7z
{

namespace
{

constexpr size_t kIndent = 2;
constexpr size_t kLongestNumber = 40;  // none is as long, even with ".0" behind it
// The elements of an array that is written by several threads, of a batch of it, and of the part of that which one thread writes.
constexpr Int kLongArray = 2048;
constexpr Int kBatch = 4096;
constexpr Int kPart = 256;
// The batches that are taken to be like the first.
constexpr size_t kMostForeseen = 16;
constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

/// Text that grows in a block, so that what is ready needs no copy. Throws bad_alloc.
class GrowingText
{
public:
  void Append(std::string_view text)
  {
    if (text.empty())
      return;
    std::memcpy(MakeRoom(text.size()), text.data(), text.size());
    _used += text.size();
  }
  void Append(char byte)
  {
    *MakeRoom(1) = byte;
    ++_used;
  }
  /// Where up to byteCount bytes can be written, of which Use tells how many were.
  Char* MakeRoom(size_t byteCount)
  {
    if (_used + byteCount > GetCapacity())
      Grow(_used + byteCount);
    return _block.Get()->GetBytes() + _used;
  }
  void Use(size_t byteCount) noexcept { _used += byteCount; }
  void Clear() noexcept { _used = 0; }
  size_t GetLength() const noexcept { return _used; }
  std::string_view GetView() const noexcept
  {
    return _block ? std::string_view(_block.Get()->GetBytes(), _used) : std::string_view();
  }
  /// Room for byteCount bytes more, so that the text does not move while they come.
  void Reserve(size_t byteCount)
  {
    if (_used + byteCount > GetCapacity())
      Reallocate(_used + byteCount);
  }
  /// The text so far. A block that is mostly empty is not kept.
  Result<String> Finish() const noexcept
  {
    if (!_block)
      return String();
    if (_used < GetCapacity() / 2)
      return String::Create(GetView());
    return String(_block.Get(), _block.Get()->GetBytes(), static_cast<Int>(_used));
  }

private:
  size_t GetCapacity() const noexcept { return _block ? static_cast<size_t>(_block.Get()->GetByteCount()) : 0; }

  void Grow(size_t minimum)
  {
    const size_t grown = GetCapacity() * 2 + 256;
    Reallocate(grown > minimum ? grown : minimum + minimum / 8);
  }

  void Reallocate(size_t capacity)
  {
    BlockOwner block(StringBlock::Create(static_cast<Int>(capacity)));
    if (!block)
      throw std::bad_alloc();
    if (_used)
      std::memcpy(block.Get()->GetBytes(), _block.Get()->GetBytes(), _used);
    _block = std::move(block);
  }

  BlockOwner _block;
  size_t _used = 0;
};

/// Whether a byte of a string is written in another form.
bool NeedsEscape(char byte) noexcept
{
  return byte == '"' || byte == '\\' || static_cast<unsigned char>(byte) < 0x20;
}

/// The bytes at the start of text that are written as they are.
size_t GetUnescapedLength(std::string_view text) noexcept
{
  constexpr size_t kBytes = 32;
  size_t position = 0;
  for (; position + kBytes <= text.size(); position += kBytes)
  {
    // Without a branch for each byte, so that the compiler can test many at once.
    unsigned special = 0;
    for (size_t i = 0; i < kBytes; ++i)
      special |= static_cast<unsigned>(NeedsEscape(text[position + i]));
    if (special)
      break;
  }
  while (position < text.size() && !NeedsEscape(text[position]))
    ++position;
  return position;
}

/// The length of the character at the start of a text that is not empty; 0 when it is no valid UTF-8.
size_t GetCharacterLength(std::string_view text) noexcept
{
  const unsigned char first = static_cast<unsigned char>(text[0]);
  const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  return length <= text.size() && simdjson::validate_utf8(text.substr(0, length)) ? length : 0;
}

class JsonWriter
{
public:
  /// @param jobs  null for the caller's thread alone.
  JsonWriter(Bool formatted, HostJobs* jobs) noexcept : _formatted(formatted), _jobs(jobs) {}

  Result<void> WriteValue(const Data& value, size_t depth)
  {
    switch (value.GetKind())
    {
      case DataKind::kNil: _text.Append("null"); return {};
      case DataKind::kBool: _text.Append(value.GetBool().GetValue() ? "true" : "false"); return {};
      case DataKind::kInt: WriteInt(value.GetInt().GetValue()); return {};
      case DataKind::kFloat: return WriteFloat(value.GetFloat().GetValue(), value.IsSinglePrecision());
      case DataKind::kString: WriteString(value.GetString().GetValue().GetView()); return {};
      case DataKind::kArray: return WriteArray(value.GetArray().GetValue(), depth + 1);
      case DataKind::kDictionary: return WriteDictionary(value.GetDictionary().GetValue(), depth + 1);
    }
    return {};
  }

  Result<String> Finish() const noexcept { return _text.Finish(); }

private:
  void BreakLine(size_t depth)
  {
    if (!_formatted)
      return;
    const size_t blankCount = depth * kIndent;
    Char* const line = _text.MakeRoom(1 + blankCount);
    line[0] = '\n';
    std::memset(line + 1, ' ', blankCount);
    _text.Use(1 + blankCount);
  }

  static Error MakeDepthError() noexcept
  {
    return MAKE_ERROR(ErrorClass::kIllegalArgument, "The JSON value nests deeper than 1,024."_s);
  }

  Result<void> WriteArray(const DataArrayView& elements, size_t depth)
  {
    if (depth > kDeepestJson)
      return MakeDepthError();
    _text.Append('[');
    const Bool isLong = _jobs && elements.GetCount() >= kLongArray;
    RETURN_IF_ERROR(isLong ? WriteLongArray(elements, depth) : WriteElements(elements, 0, elements.GetCount(), depth));
    if (!elements.IsEmpty())
      BreakLine(depth - 1);
    _text.Append(']');
    return {};
  }

  Result<void> WriteElements(const DataArrayView& elements, Int first, Int end, size_t depth)
  {
    for (Int i = first; i < end; ++i)
    {
      if (i > 0)
        _text.Append(',');
      BreakLine(depth);
      RETURN_IF_ERROR(WriteValue(elements[i], depth));
    }
    return {};
  }

  /// Batch by batch, so that the parts need little memory beside the text. The first tells how long the text will be.
  Result<void> WriteLongArray(const DataArrayView& elements, size_t depth)
  {
    const Int count = elements.GetCount();
    const size_t start = _text.GetLength();
    std::vector<JsonWriter> parts;
    for (Int i = 0; i < std::min(kBatch, count); i += kPart)
      parts.emplace_back(_formatted, nullptr);
    for (Int first = 0; first < count; first += kBatch)
    {
      const Int end = std::min(first + kBatch, count);
      RETURN_IF_ERROR(WriteBatch(parts, elements, first, end, depth));
      const size_t batches = static_cast<size_t>((count - end) / kBatch + 1);
      if (first == 0)
        _text.Reserve((_text.GetLength() - start) * std::min(batches, kMostForeseen));
    }
    return {};
  }

  /// Part of a long array, by several threads.
  Result<void> WriteBatch(std::vector<JsonWriter>& parts, const DataArrayView& elements, Int first, Int end, size_t depth)
  {
    auto writePart = [&](Int index, Int) noexcept -> Result<void>
    {
      const Int partFirst = first + index * kPart;
      parts[static_cast<size_t>(index)].WritePart(elements, partFirst, std::min(partFirst + kPart, end), depth);
      return {};
    };
    const Int partCount = (end - first + kPart - 1) / kPart;
    RETURN_IF_ERROR(ParallelFor(*_jobs, partCount, 1, writePart));
    for (Int i = 0; i < partCount; ++i)
    {
      const JsonWriter& part = parts[static_cast<size_t>(i)];
      RETURN_IF_ERROR(part._partResult);  // the first of the array, whatever the threads
      _text.Append(part._text.GetView());
    }
    return {};
  }

  /// Some elements alone, in the place of what was written before.
  void WritePart(const DataArrayView& elements, Int first, Int end, size_t depth) noexcept
  {
    try
    {
      _text.Clear();
      _partResult = WriteElements(elements, first, end, depth);
    }
    catch (...)
    {
      _partResult = Error::OutOfMemory();
    }
  }

  Result<void> WriteDictionary(const DataDictionary& dictionary, size_t depth)
  {
    if (depth > kDeepestJson)
      return MakeDepthError();
    _text.Append('{');
    for (const DataMember& member : dictionary)
    {
      if (&member != dictionary.begin())
        _text.Append(',');
      BreakLine(depth);
      WriteString(member.key.GetName().GetView());
      _text.Append(_formatted ? ": " : ":");
      RETURN_IF_ERROR(WriteValue(member.value, depth));
    }
    if (dictionary.IsPopulated())
      BreakLine(depth - 1);
    _text.Append('}');
    return {};
  }

  void WriteInt(Int value)
  {
    Char* const digits = _text.MakeRoom(kLongestNumber);
    _text.Use(static_cast<size_t>(std::to_chars(digits, digits + kLongestNumber, value).ptr - digits));
  }

  Result<void> WriteFloat(Float value, Bool single)
  {
    // A number beyond the 32-bit ones is none of them, whatever its maker said.
    const Float32 rounded = single ? static_cast<Float32>(value) : 0;
    if (!std::isfinite(value) || !std::isfinite(rounded))
      return MAKE_ERROR(ErrorClass::kIllegalArgument, "JSON has no number that is not finite."_s);
    Char* const digits = _text.MakeRoom(kLongestNumber);
    Char* const room = digits + kLongestNumber;
    Char* end = single ? std::to_chars(digits, room, rounded).ptr : std::to_chars(digits, room, value).ptr;
    // A float always shows that it is one.
    if (std::none_of(digits, end, [](Char digit) { return digit == '.' || digit == 'e'; }))
    {
      *end++ = '.';
      *end++ = '0';
    }
    _text.Use(static_cast<size_t>(end - digits));
    return {};
  }

  void WriteString(std::string_view text)
  {
    _text.Append('"');
    if (simdjson::validate_utf8(text.data(), text.size()))
      WriteEscaped(text);
    else
      WriteRepaired(text);
    _text.Append('"');
  }

  void WriteEscaped(std::string_view text)
  {
    while (!text.empty())
    {
      const size_t plain = GetUnescapedLength(text);
      _text.Append(text.substr(0, plain));
      if (plain == text.size())
        return;
      WriteEscape(text[plain]);
      text.remove_prefix(plain + 1);
    }
  }

  /// For names of files, which may be any bytes.
  void WriteRepaired(std::string_view text)
  {
    while (!text.empty())
    {
      const size_t length = GetCharacterLength(text);
      WriteEscaped(length ? text.substr(0, length) : kReplacementCharacter);
      text.remove_prefix(length ? length : 1);
    }
  }

  void WriteEscape(char byte)
  {
    static constexpr char kDigits[] = "0123456789abcdef";
    switch (byte)
    {
      case '"': _text.Append("\\\""); return;
      case '\\': _text.Append("\\\\"); return;
      case '\n': _text.Append("\\n"); return;
      case '\r': _text.Append("\\r"); return;
      case '\t': _text.Append("\\t"); return;
      default:
        _text.Append("\\u00");
        _text.Append(kDigits[byte >> 4]);
        _text.Append(kDigits[byte & 15]);
    }
  }

  Bool _formatted;
  HostJobs* _jobs;  // not owned
  GrowingText _text;
  Result<void> _partResult;
};

}  // namespace

Result<String> WriteJson(const Data& value, Bool formatted, HostJobs* jobs) noexcept
{
  try
  {
    JsonWriter writer(formatted, jobs);
    RETURN_IF_ERROR(writer.WriteValue(value, 0));
    return writer.Finish();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<String> HeadlessJson::Write(const DataDictionary& dictionary, Bool formatted) noexcept
{
  return WriteJson(Data(dictionary), formatted, _jobs);
}

}  // namespace q7z
