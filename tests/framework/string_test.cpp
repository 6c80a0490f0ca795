// Texts: formatting, cutting, numbers, comparison, and what happens without memory.

#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "framework/string.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

TEST(String, OperationsGiveTheseTexts)
{
  const String text = "abcdef"_s;
  const std::pair<Result<String>, const char*> rows[] = {
    {String::Format("@ of @"_s, {"one"_s, "two"_s}), "one of two"},
    {String::Format("@-@-@"_s, {"a"_s}), "a-@-@"},
    {String::Format("@ @"_s, {"x@y"_s, "z"_s}), "x@y z"},  // a part is not formatted again
    {text.GetPart(1, 3), "bcd"},
    {text.GetPart(2, INT64_MAX), "cdef"},
    {text.GetPart(7, 1), ""},
    {text.GetPart(-2, 2), "ab"},  // a negative position is the start
    {text.GetPart(2, -1), ""},
    {text.GetFirstCharacters(-1), ""},
    {"a\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80z"_s.GetFirstCharacters(4), "a\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80"},
    {"\xFF\xFE\xFDz"_s.GetFirstCharacters(2), "\xFF\xFE"},  // broken bytes count one each
    {"\x80\x80z"_s.GetFirstCharacters(1), "\x80"},
    {"z\xE6\xBC"_s.GetFirstCharacters(2), "z\xE6"},
    {"\xC3z"_s.GetFirstCharacters(1), "\xC3"},
    {" \t\r\na b\n"_s.Trim(), "a b"},
    {" \t "_s.Trim(), ""},
    {"\va\f"_s.Trim(), "\va\f"},
    // Numbers have their shortest text.
    {String::FromInt(INT64_MIN), "-9223372036854775808"},
    {String::FromFloat(-0.0), "-0"},
    {String::FromFloat(0.1 + 0.2), "0.30000000000000004"},
    {String::FromFloat(1e21), "1e+21"},
    {String::FromFloat(std::numeric_limits<Float>::quiet_NaN()), "nan"},
    {String::FromFloat(std::numeric_limits<Float>::infinity()), "inf"},
  };
  for (const auto& [actual, expected] : rows)
    EXPECT_EQ(Text(actual), expected);
}

TEST(String, ParseIntTakesWholeDecimalNumbersAlone)
{
  const std::pair<String, std::optional<Int>> rows[] = {
    {"007"_s, 7},
    {"-9223372036854775808"_s, INT64_MIN},
    {"9223372036854775808"_s, std::nullopt},
    {"-9223372036854775809"_s, std::nullopt},
    {String(), std::nullopt},
    {"-"_s, std::nullopt},
    {"+1"_s, std::nullopt},
    {"1.0"_s, std::nullopt},
    {"1\0"_s, std::nullopt},
  };
  for (const auto& [text, expected] : rows)
  {
    Int value = 42;
    EXPECT_EQ(text.ParseInt(value), expected.has_value()) << Text(text);
    EXPECT_EQ(value, expected.value_or(42)) << Text(text);
  }
}

TEST(String, EqualsIgnoringCaseFoldsAsciiLettersAlone)
{
  EXPECT_TRUE("File_az"_s.EqualsIgnoringCase("fILE_AZ"_s));
  EXPECT_FALSE("a"_s.EqualsIgnoringCase("ab"_s));
  EXPECT_FALSE("@"_s.EqualsIgnoringCase("`"_s));                // 0x40 and 0x60, beside the letters
  EXPECT_FALSE("["_s.EqualsIgnoringCase("{"_s));                // 0x5B and 0x7B, behind them
  EXPECT_FALSE("\xC3\x89"_s.EqualsIgnoringCase("\xC3\xA9"_s));  // an accented letter in two cases
}

TEST(String, ComparesBytesWithoutSign)
{
  EXPECT_LT("z"_s, "\xC3\xA9"_s);
  EXPECT_LT("a"_s, "aa"_s);
}

// The 64-bit FNV-1a hash of "a" is 0xaf63dc4c8601ec8c; its upper half is mixed into the lower.
static_assert("a"_s.GetHash() == 0xaf63dc4c296230c0u);

TEST(String, WithoutMemoryEveryMakerSaysSo)
{
  const String text = "text"_s;
  const auto failing = [](auto make)
  {
    FailAllocation(1);
    const Result<String> result = make();
    return StopFailingAllocations() == 1 && IsOutOfMemory(result);
  };
  EXPECT_TRUE(failing([&] { return String::Create("bytes"); }));
  EXPECT_TRUE(failing([&] { return String::FromInt(1); }));
  EXPECT_TRUE(failing([&] { return String::FromFloat(1); }));
  EXPECT_TRUE(failing([&] { return String::Join({text, text}); }));
  EXPECT_TRUE(failing([&] { return String::Format("@"_s, {text}); }));
  EXPECT_TRUE(failing([&] { return text.Copy(); }));
  EXPECT_EQ(StringBlock::Create(-1), nullptr);
  EXPECT_EQ(StringBlock::Create(INT64_MAX), nullptr);
}

}  // namespace
}  // namespace q7z::test
