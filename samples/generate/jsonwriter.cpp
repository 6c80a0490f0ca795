#include "samples/generate/jsonwriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace q7z::generate
{

namespace
{

template <typename T>
std::string_view NumberText(std::array<char, 32>& text, T value)
{
  const std::to_chars_result result = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), static_cast<std::size_t>(result.ptr - text.data())};
}

}  // namespace

void JsonWriter::Key(std::string_view key)
{
  Separate();
  Quote(key);
  _target.WriteText(":");
  _afterKey = true;
}

void JsonWriter::Value(std::string_view text)
{
  Separate();
  Quote(text);
}

void JsonWriter::Value(Int value)
{
  std::array<char, 32> text;
  Plain(NumberText(text, value));
}

void JsonWriter::Value(Float32 value)
{
  if (!std::isfinite(value))
    throw std::logic_error("a number that JSON cannot tell");
  std::array<char, 32> text;
  Plain(NumberText(text, value));
}

void JsonWriter::Value(std::span<const Float32> values)
{
  // Numbers of one vector stay on one line.
  Separate();
  std::array<char, 32> text;
  const char* before = "[";
  for (const Float32 value : values)
  {
    _target.WriteText(before);
    _target.WriteText(NumberText(text, value));
    before = ",";
  }
  _target.WriteText(values.empty() ? "[]" : "]");
}

void JsonWriter::LongValue(const std::function<void(ByteSink&)>& writeText)
{
  Separate();
  _target.WriteText("\"");
  writeText(_target);
  _target.WriteText("\"");
}

void JsonWriter::Open(char bracket)
{
  Separate();
  _target.Write(&bracket, 1);
  _hasElements.push_back(false);
}

void JsonWriter::Close(char bracket)
{
  const bool hadElements = _hasElements.back();
  _hasElements.pop_back();
  if (hadElements && static_cast<Int>(_hasElements.size()) < _lineDepth)
    BreakLine();
  _target.Write(&bracket, 1);
}

void JsonWriter::Separate()
{
  if (_afterKey)
  {
    _afterKey = false;
    return;
  }
  if (_hasElements.empty())
    return;
  if (_hasElements.back())
    _target.WriteText(",");
  _hasElements.back() = true;
  if (static_cast<Int>(_hasElements.size()) <= _lineDepth)
    BreakLine();
}

void JsonWriter::BreakLine()
{
  _target.WriteText("\n");
  for (std::size_t i = 0; i < _hasElements.size(); ++i)
    _target.WriteText("  ");
}

void JsonWriter::Plain(std::string_view text)
{
  Separate();
  _target.WriteText(text);
}

void JsonWriter::Quote(std::string_view text)
{
  _target.WriteText("\"");
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i)
  {
    const auto character = static_cast<unsigned char>(text[i]);
    if (character >= 0x20 && character != '"' && character != '\\')
      continue;
    static constexpr char kHex[] = "0123456789abcdef";
    const std::array<char, 6> escape = {'\\', 'u', '0', '0', kHex[character >> 4], kHex[character & 15]};
    _target.WriteText(text.substr(begin, i - begin));
    _target.Write(escape.data(), escape.size());
    begin = i + 1;
  }
  _target.WriteText(text.substr(begin));
  _target.WriteText("\"");
}

}  // namespace q7z::generate
