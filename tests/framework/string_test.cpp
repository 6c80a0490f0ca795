// Texts: formatting, cutting, numbers, comparison, sharing, and what happens without memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "framework/string.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

struct FormatCase
{
  const char* name;
  String pattern;
  std::initializer_list<String> parts;
  const char* text;
};
const FormatCase kFormatCases[] = {
  {"InOrder", "@ of @"_s, {"one"_s, "two"_s}, "one of two"},
  {"NoPlaceholder", "plain"_s, {"unused"_s}, "plain"},
  {"PlaceholderWithoutPartStays", "@-@-@"_s, {"a"_s}, "a-@-@"},
  {"PartWithPlaceholderIsNotFormattedAgain", "@ @"_s, {"x@y"_s, "z"_s}, "x@y z"},
  {"EmptyPart", "[@]"_s, {String()}, "[]"},
  {"OnlyPlaceholder", "@"_s, {"all"_s}, "all"},
  {"EmptyPattern", String(), {"a"_s}, ""},
  {"NoParts", "@"_s, {}, "@"},
};

TEST(String, FormatPutsPartsInPlaceInOrder)
{
  for (const FormatCase& row : kFormatCases)
    EXPECT_EQ(Text(String::Format(row.pattern, row.parts)), row.text) << row.name;
}

TEST(String, JoinPutsPartsBehindEachOther)
{
  EXPECT_EQ(Text(String::Join({"a"_s, String(), "b\0c"_s, "d"_s})), std::string("ab\0cd", 5));
  EXPECT_EQ(Text(String::Join({})), "");
}

struct PartCase
{
  const char* name;
  Int position;
  Int byteCount;
  const char* part;
};
const PartCase kPartCases[] = {
  {"Middle", 1, 3, "bcd"},
  {"All", 0, 6, "abcdef"},
  {"CountBeyondTheEnd", 4, 100, "ef"},
  {"LargestCount", 2, INT64_MAX, "cdef"},
  {"PositionAtTheEnd", 6, 1, ""},
  {"PositionBeyondTheEnd", 7, 1, ""},
  {"NegativePositionCountsFromTheStart", -2, 2, "ab"},
  {"NegativeCount", 2, -1, ""},
};

TEST(String, GetPartClampsToTheText)
{
  const String text = "abcdef"_s;
  for (const PartCase& row : kPartCases)
    EXPECT_EQ(Text(text.GetPart(row.position, row.byteCount)), row.part) << row.name;
  EXPECT_TRUE(String().GetPart(0, 1).IsEmpty());
}

struct CharactersCase
{
  const char* name;
  String text;
  Int count;
  const char* first;
};
const CharactersCase kCharactersCases[] = {
  {"OneToFourBytes", "a\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80z"_s, 4, "a\xC3\xA9\xE6\xBC\xA2\xF0\x9F\x98\x80"},
  {"StopsBeforeAWholeCharacter", "a\xC3\xA9z"_s, 1, "a"},
  {"BrokenBytesCountOneEach", "\xFF\xFE\xFDz"_s, 2, "\xFF\xFE"},
  {"StrayContinuationCountsOne", "\x80\x80z"_s, 1, "\x80"},
  {"CutCharacterAtTheEnd", "z\xE6\xBC"_s, 2, "z\xE6"},
  {"LeadByteBeforeAsciiCountsOne", "\xC3z"_s, 1, "\xC3"},
  {"MoreThanThereAre", "ab"_s, 9, "ab"},
  {"None", "ab"_s, 0, ""},
  {"Negative", "ab"_s, -1, ""},
};

TEST(String, GetFirstCharactersCountsUnicodeCharacters)
{
  for (const CharactersCase& row : kCharactersCases)
    EXPECT_EQ(Text(row.text.GetFirstCharacters(row.count)), row.first) << row.name;
}

TEST(String, TrimDropsWhiteSpaceAtTheEndsAlone)
{
  const std::pair<String, const char*> rows[] = {
    {" \t\r\na b\n"_s, "a b"}, {"a"_s, "a"}, {" \t "_s, ""}, {String(), ""}, {"\va\f"_s, "\va\f"},
  };
  for (const auto& [text, trimmed] : rows)
    EXPECT_EQ(Text(text.Trim()), trimmed);
}

struct IntCase
{
  String text;
  bool isNumber;
  Int value;
};
const IntCase kIntCases[] = {
  {"0"_s, true, 0},
  {"-7"_s, true, -7},
  {"007"_s, true, 7},
  {"9223372036854775807"_s, true, INT64_MAX},
  {"-9223372036854775808"_s, true, INT64_MIN},
  {"9223372036854775808"_s, false, 0},
  {"-9223372036854775809"_s, false, 0},
  {String(), false, 0},
  {"-"_s, false, 0},
  {"+1"_s, false, 0},
  {" 1"_s, false, 0},
  {"1 "_s, false, 0},
  {"1.0"_s, false, 0},
  {"1e3"_s, false, 0},
  {"0x10"_s, false, 0},
  {"1\0"_s, false, 0},
};

TEST(String, ParseIntTakesWholeDecimalNumbersAlone)
{
  for (const IntCase& row : kIntCases)
  {
    Int value = 42;
    EXPECT_EQ(row.text.ParseInt(value), row.isNumber) << Text(row.text);
    EXPECT_EQ(value, row.isNumber ? row.value : 42) << Text(row.text);
  }
}

TEST(String, NumbersHaveTheirShortestText)
{
  const std::pair<Float, const char*> rows[] = {
    {0.1, "0.1"},
    {1, "1"},
    {-0.0, "-0"},
    {1.0 / 3, "0.3333333333333333"},
    {0.1 + 0.2, "0.30000000000000004"},
    {1e21, "1e+21"},
    {-2.5e-7, "-2.5e-07"},
    {5e-324, "5e-324"},
    {std::numeric_limits<Float>::max(), "1.7976931348623157e+308"},
    {std::numeric_limits<Float>::quiet_NaN(), "nan"},
    {std::numeric_limits<Float>::infinity(), "inf"},
    {-std::numeric_limits<Float>::infinity(), "-inf"},
  };
  for (const auto& [number, text] : rows)
    EXPECT_EQ(Text(String::FromFloat(number)), text);
  EXPECT_EQ(Text(String::FromInt(INT64_MIN)), "-9223372036854775808");
  EXPECT_EQ(Text(String::FromInt(0)), "0");
}

struct CaseCase
{
  String a;
  String b;
  bool equal;
};
const CaseCase kCaseCases[] = {
  {"File"_s, "fILE"_s, true},
  {"z9_"_s, "Z9_"_s, true},
  {String(), String(), true},
  {"a"_s, "ab"_s, false},
  {"@"_s, "`"_s, false},                // 0x40 and 0x60, beside the letters
  {"["_s, "{"_s, false},                // 0x5B and 0x7B, behind them
  {"\xC3\x89"_s, "\xC3\xA9"_s, false},  // an accented letter in two cases
};

TEST(String, EqualsIgnoringCaseFoldsAsciiLettersAlone)
{
  for (const CaseCase& row : kCaseCases)
    EXPECT_EQ(row.a.EqualsIgnoringCase(row.b), row.equal) << Text(row.a) << " " << Text(row.b);
}

TEST(String, FindTellsTheFirstAndTheLastPlace)
{
  EXPECT_EQ("a/b/c"_s.FindFirst('/'), 1);
  EXPECT_EQ("a/b/c"_s.FindLast('/'), 3);
  EXPECT_EQ("abc"_s.FindFirst('/'), -1);
  EXPECT_EQ("abc"_s.FindLast('/'), -1);
  EXPECT_EQ(String().FindFirst('/'), -1);
  EXPECT_EQ("a\0b"_s.FindFirst('\0'), 1);
}

TEST(String, ComparesBytesWithoutSign)
{
  EXPECT_LT("z"_s, "\xC3\xA9"_s);
  EXPECT_LT("a"_s, "aa"_s);
  EXPECT_LT(String(), "\0"_s);
  EXPECT_EQ(Make("same"), "same"_s);
  EXPECT_NE("same"_s, "Same"_s);
}

TEST(String, HashIsTheSameEverywhere)
{
  // The 64-bit FNV-1a hash of "a" is 0xaf63dc4c8601ec8c; its upper half is mixed into the lower.
  static_assert("a"_s.GetHash() == 0xaf63dc4c296230c0u);
  EXPECT_EQ(Make("a").GetHash(), "a"_s.GetHash());
  EXPECT_NE("ab"_s.GetHash(), "ba"_s.GetHash());
}

TEST(String, PartOutlivesTheWhole)
{
  String part;
  {
    const String whole = Make("a long text with a tail");
    part = whole.GetPart(19, 4);
  }
  EXPECT_EQ(Text(part), "tail");
}

TEST(String, CopyIsIndependentOfItsSource)
{
  char library[] = "message";  // stands for the texts of a library that is unloaded
  const String text(library, 7);
  const String shared = text;
  const String copy = text.Copy().GetValue();
  library[0] = 'M';
  EXPECT_EQ(Text(shared), "Message");
  EXPECT_EQ(Text(copy), "message");
}

TEST(String, AssignmentToItselfKeepsTheText)
{
  String text = Make("kept");
  const String& alias = text;
  text = alias;
  EXPECT_EQ(Text(text), "kept");
}

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
}

TEST(StringBlock, RefusesImpossibleSizes)
{
  EXPECT_EQ(StringBlock::Create(-1), nullptr);
  EXPECT_EQ(StringBlock::Create(INT64_MAX), nullptr);
}

TEST(StringBlock, ServesManyTexts)
{
  StringBlock* const block = StringBlock::Create(6);
  ASSERT_NE(block, nullptr);
  std::copy_n("onetwo", 6, block->GetBytes());
  const String one(block, block->GetBytes(), 3);
  const String two(block, block->GetBytes() + 3, 3);
  block->Release();
  EXPECT_EQ(Text(one) + "," + Text(two), "one,two");
}

}  // namespace
}  // namespace q7z::test
