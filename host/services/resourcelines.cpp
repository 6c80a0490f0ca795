#include "host/services/resourcelines.h"

#include <simdjson.h>

#include <charconv>

namespace q7z
{

std::string_view TrimLine(std::string_view text) noexcept
{
  constexpr std::string_view kBlanks = " \t\r";
  const size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::vector<std::string_view> SplitLine(std::string_view line, char separator)
{
  std::vector<std::string_view> parts;
  for (;;)
  {
    const size_t end = line.find(separator);
    parts.push_back(TrimLine(line.substr(0, end)));
    if (end == std::string_view::npos)
      return parts;
    line.remove_prefix(end + 1);
  }
}

bool ReadNumber(std::string_view text, Int32& number) noexcept
{
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool IsValidUtf8(std::string_view text) noexcept
{
  return text.empty() || simdjson::validate_utf8(text.data(), text.size());
}

}  // namespace q7z
