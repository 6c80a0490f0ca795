#include "host/scenefile/numbertext.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace q7z
{

namespace
{

// 7.038531e-26, the one 32-bit number (all were tried) whose shortest text, read as a 64-bit number and narrowed, is its
// neighbour: the 64-bit number lies exactly between the two.
constexpr UInt32 kMisreadBits = 0x15AE43FD;
constexpr UInt32 kSignBit = 0x80000000;

/// Makes text show that it is a float, when it does not yet. @return the new end.
char* AddPoint(char* text, char* end) noexcept
{
  for (const char* at = text; at != end; ++at)
  {
    if (*at == '.' || *at == 'e')
      return end;
  }
  *end++ = '.';
  *end++ = '0';
  return end;
}

}  // namespace

char* WriteFloatText(char* target, Float number) noexcept
{
  return AddPoint(target, std::to_chars(target, target + kNumberTextBytes, number).ptr);
}

char* WriteSingleText(char* target, Float32 number) noexcept
{
  if ((std::bit_cast<UInt32>(number) & ~kSignBit) == kMisreadBits)
    return std::to_chars(target, target + kNumberTextBytes, number, std::chars_format::scientific, 8).ptr;
  return AddPoint(target, std::to_chars(target, target + kNumberTextBytes, number).ptr);
}

char* WriteMarkedFloatText(char* target, Float number) noexcept
{
  char* const end = WriteFloatText(target, number);
  char* digitsEnd = target;
  Bool hasPoint = false;
  for (; digitsEnd != end && *digitsEnd != 'e'; ++digitsEnd)
    hasPoint |= *digitsEnd == '.';
  const std::string_view mark = hasPoint ? "0" : ".0";
  std::memmove(digitsEnd + mark.size(), digitsEnd, static_cast<size_t>(end - digitsEnd));
  std::memcpy(digitsEnd, mark.data(), mark.size());
  return end + mark.size();
}

Bool IsSingleText(std::string_view text, Float number) noexcept
{
  constexpr size_t kLongestSingleText = 15;  // such as -1.17549435e-38
  if (text.size() > kLongestSingleText || std::fabs(number) > kLargestSingle)
    return false;
  char single[kNumberTextBytes];
  const char* const end = WriteSingleText(single, static_cast<Float32>(number));
  return text == std::string_view(single, static_cast<size_t>(end - single));
}

Bool HasSingleText(Float number) noexcept
{
  char text[kNumberTextBytes];
  const char* const end = WriteFloatText(text, number);
  return IsSingleText({text, static_cast<size_t>(end - text)}, number);
}

}  // namespace q7z
