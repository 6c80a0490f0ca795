// JSON writing: ours, because 32-bit floats must come out in their own shortest form.

#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include "framework/check.h"
#include "host/services/headlessjson.h"

namespace q7z
{

namespace
{

constexpr int kIndent = 2;

class JsonWriter
{
public:
  explicit JsonWriter(Bool formatted) noexcept : _formatted(formatted) {}

  Result<void> WriteValue(const Data& value, int depth)
  {
    switch (value.GetKind())
    {
      case DataKind::kNil: _text += "null"; return {};
      case DataKind::kBool: _text += value.GetBool().GetValue() ? "true" : "false"; return {};
      case DataKind::kInt: _text += std::to_string(value.GetInt().GetValue()); return {};
      case DataKind::kFloat: return WriteFloat(value.GetFloat().GetValue(), value.IsSinglePrecision());
      case DataKind::kString: WriteString(value.GetString().GetValue().GetView()); return {};
      case DataKind::kArray: return WriteArray(value.GetArray().GetValue(), depth);
      case DataKind::kDictionary: return WriteDictionary(value.GetDictionary().GetValue(), depth);
    }
    return {};
  }

  const std::string& GetText() const noexcept { return _text; }

private:
  void BreakLine(int depth)
  {
    if (!_formatted)
      return;
    _text += '\n';
    _text.append(static_cast<size_t>(depth) * kIndent, ' ');
  }

  Result<void> WriteArray(const DataArrayView& elements, int depth)
  {
    _text += '[';
    for (const Data& element : elements)
    {
      if (&element != elements.begin())
        _text += ',';
      BreakLine(depth + 1);
      RETURN_IF_ERROR(WriteValue(element, depth + 1));
    }
    if (!elements.IsEmpty())
      BreakLine(depth);
    _text += ']';
    return {};
  }

  Result<void> WriteDictionary(const DataDictionary& dictionary, int depth)
  {
    _text += '{';
    for (const DataMember& member : dictionary)
    {
      if (&member != dictionary.begin())
        _text += ',';
      BreakLine(depth + 1);
      WriteString(member.key.GetName().GetView());
      _text += _formatted ? ": " : ":";
      RETURN_IF_ERROR(WriteValue(member.value, depth + 1));
    }
    if (dictionary.IsPopulated())
      BreakLine(depth);
    _text += '}';
    return {};
  }

  Result<void> WriteFloat(Float value, Bool single)
  {
    if (!std::isfinite(value))
      return MAKE_ERROR(ErrorClass::kIllegalArgument, "JSON has no number that is not finite."_s);
    char text[40];
    const std::to_chars_result result = single ? std::to_chars(text, text + sizeof(text), static_cast<Float32>(value))
                                               : std::to_chars(text, text + sizeof(text), value);
    const std::string_view number(text, static_cast<size_t>(result.ptr - text));
    _text += number;
    // A float always shows that it is one.
    if (number.find_first_of(".e") == std::string_view::npos)
      _text += ".0";
    return {};
  }

  void WriteString(std::string_view text)
  {
    _text += '"';
    for (const char byte : text)
    {
      if (byte == '"' || byte == '\\')
        (_text += '\\') += byte;
      else if (static_cast<unsigned char>(byte) < 0x20)
        WriteControl(byte);
      else
        _text += byte;
    }
    _text += '"';
  }

  void WriteControl(char byte)
  {
    static constexpr char kDigits[] = "0123456789abcdef";
    switch (byte)
    {
      case '\n': _text += "\\n"; return;
      case '\r': _text += "\\r"; return;
      case '\t': _text += "\\t"; return;
      default:
        _text += "\\u00";
        _text += kDigits[byte >> 4];
        _text += kDigits[byte & 15];
    }
  }

  Bool _formatted;
  std::string _text;
};

}  // namespace

Result<String> WriteJson(const Data& value, Bool formatted) noexcept
{
  try
  {
    JsonWriter writer(formatted);
    RETURN_IF_ERROR(writer.WriteValue(value, 0));
    return String::Create(writer.GetText());
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<String> HeadlessJson::Write(const DataDictionary& dictionary, Bool formatted) noexcept
{
  return WriteJson(Data(dictionary), formatted);
}

}  // namespace q7z
