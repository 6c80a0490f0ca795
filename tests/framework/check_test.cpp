// The checks and the macros that pass errors on. The text of a message is the tested expression as it is spelled, so nothing in
// the first table may be formatted.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "framework/check.h"
#include "tests/framework/text.h"

namespace q7z::test
{
namespace
{

struct Accessor
{
  Bool IsOfType(std::initializer_list<String>) const { return false; }
  Int count = 0;
};

constexpr Int kLimit = 5;
const Accessor g_accessor;
const Accessor* const g_missing = nullptr;

// clang-format off
struct SpellingCase
{
  const char* name;
  Result<void> (*check)();
  const char* message;
};
const SpellingCase kSpellingCases[] = {
  {"Name", []() -> Result<void> { const Int* _doc = nullptr; CHECK_STATE(_doc); return {}; },
    "Illegal state: Condition _doc not fulfilled. "},
  {"Argument", []() -> Result<void> { const Int* op = nullptr; CHECK_ARGUMENT(op); return {}; },
    "Illegal argument: Condition op not fulfilled. "},
  {"CommasInBraces", []() -> Result<void> { CHECK_STATE(g_accessor.IsOfType({"VEC3"_s, "VEC4"_s})); return {}; },
    "Illegal state: Condition g_accessor.IsOfType({\"VEC3\"_s, \"VEC4\"_s}) not fulfilled. "},
  {"CommasWithoutBlanks", []() -> Result<void> { CHECK_STATE(g_accessor.IsOfType({"A"_s,"B"_s})); return {}; },
    "Illegal state: Condition g_accessor.IsOfType({\"A\"_s,\"B\"_s}) not fulfilled. "},
  {"BlanksAroundTheSign", []() -> Result<void> { CHECK_STATE(g_accessor.count == 1); return {}; },
    "Illegal state: Condition g_accessor.count == 1 not fulfilled. "},
  {"NoBlanks", []() -> Result<void> { CHECK_STATE(g_accessor.count==1); return {}; },
    "Illegal state: Condition g_accessor.count==1 not fulfilled. "},
  {"WideBlanks", []() -> Result<void> { CHECK_STATE(  g_accessor.count   ==	1  ); return {}; },
    "Illegal state: Condition g_accessor.count == 1 not fulfilled. "},
  {"LineBreak", []() -> Result<void> { CHECK_STATE(g_accessor.count > 0 ||
      g_accessor.count < 0); return {}; },
    "Illegal state: Condition g_accessor.count > 0 || g_accessor.count < 0 not fulfilled. "},
  {"CommentInside", []() -> Result<void> { CHECK_STATE(g_accessor.count /* of elements */ > 0); return {}; },
    "Illegal state: Condition g_accessor.count > 0 not fulfilled. "},
  {"MacroIsNotExpanded", []() -> Result<void> { CHECK_STATE(g_accessor.count > INT32_MAX); return {}; },
    "Illegal state: Condition g_accessor.count > INT32_MAX not fulfilled. "},
  {"Parentheses", []() -> Result<void> { CHECK_STATE((kLimit < 5 && g_missing) || (!g_missing && kLimit > 5)); return {}; },
    "Illegal state: Condition (kLimit < 5 && g_missing) || (!g_missing && kLimit > 5) not fulfilled. "},
  {"PercentAndBackslash", []() -> Result<void> { CHECK_STATE(kLimit % 5 && '\n' == '%'); return {}; },
    "Illegal state: Condition kLimit % 5 && '\\n' == '%' not fulfilled. "},
};
// clang-format on

TEST(Check, MessageQuotesTheExpressionAsItIsSpelled)
{
  for (const SpellingCase& row : kSpellingCases)
    EXPECT_EQ(ErrorText(row.check()), row.message) << row.name;
}

TEST(Check, ErrorTellsClassAndPlace)
{
  const auto state = []() -> Result<void>
  {
    CHECK_STATE(g_missing);
    return {};
  };
  const Int32 line = __LINE__ - 3;
  const Result<void> failed = state();
  ASSERT_TRUE(failed.HasError());
  EXPECT_EQ(failed.GetError().GetClass(), ErrorClass::kIllegalState);
  EXPECT_EQ(failed.GetError().GetLine(), line);
  EXPECT_NE(std::strstr(failed.GetError().GetFile(), "check_test.cpp"), nullptr);
  EXPECT_FALSE(failed.GetError().GetCause());

  const auto argument = []() -> Result<Int>
  {
    CHECK_ARGUMENT(g_missing);
    return Int(1);
  };
  EXPECT_EQ(argument().GetError().GetClass(), ErrorClass::kIllegalArgument);
}

Result<void> Succeed()
{
  return {};
}
Result<void> Fail()
{
  return MAKE_ERROR(ErrorClass::kIo, "The disk is gone."_s);
}
Result<Bool> Answer(Bool answer)
{
  return answer;
}
Result<Int> FailWithoutNumber()
{
  return MAKE_ERROR(ErrorClass::kUnexpected, "No number."_s);
}

struct ResultCase
{
  const char* name;
  Result<void> (*check)();
  const char* message;
  const char* cause;
};
const ResultCase kResultCases[] = {
  {"FailedResult",
   []() -> Result<void>
   {
     CHECK_STATE(Fail());
     return {};
   },
   "Illegal state: Condition Fail() not fulfilled. ", "The disk is gone."},
  {"FailedValue",
   []() -> Result<void>
   {
     CHECK_STATE(FailWithoutNumber());
     return {};
   },
   "Illegal state: Condition FailWithoutNumber() not fulfilled. ", "No number."},
  {"FalseAnswerHasNoCause",
   []() -> Result<void>
   {
     CHECK_STATE(Answer(false));
     return {};
   },
   "Illegal state: Condition Answer(false) not fulfilled. ", ""},
  {"TrueAnswer",
   []() -> Result<void>
   {
     CHECK_STATE(Answer(true));
     return {};
   },
   "no error", ""},
  {"Success",
   []() -> Result<void>
   {
     CHECK_STATE(Succeed());
     return {};
   },
   "no error", ""},
};

TEST(Check, ErrorOfATestedResultBecomesTheCause)
{
  for (const ResultCase& row : kResultCases)
  {
    const Result<void> result = row.check();
    EXPECT_EQ(ErrorText(result), row.message) << row.name;
    const Bool hasCause = result.HasError() && result.GetError().GetCause();
    EXPECT_EQ(hasCause ? Text(result.GetError().GetCause().GetMessage()) : "", row.cause) << row.name;
  }
}

TEST(Check, EvaluatesItsExpressionOnceAndStandsUnderAnIf)
{
  Int evaluations = 0;
  const auto check = [&](Bool first) -> Result<void>
  {
    if (first)
      CHECK_STATE(++evaluations);
    else
      CHECK_STATE(std::unique_ptr<Int>());
    return {};
  };
  EXPECT_FALSE(check(true).HasError());
  EXPECT_EQ(evaluations, 1);
  EXPECT_TRUE(check(false).HasError());
}

Result<std::unique_ptr<Int>> MakeOwner(Bool fail)
{
  if (fail)
    return MAKE_ERROR(ErrorClass::kIo, "No owner."_s);
  return std::make_unique<Int>(7);
}

Result<Int> AddUp(Bool failFirst, Bool failSecond, Int& reached)
{
  RETURN_IF_ERROR(failFirst ? Fail() : Succeed());
  reached = 1;
  ASSIGN_OR_RETURN(std::unique_ptr<Int> a, MakeOwner(false));
  ASSIGN_OR_RETURN(const std::unique_ptr<Int> b, MakeOwner(failSecond));
  reached = 2;
  return *a + *b;
}

TEST(Result, MacrosPassTheFirstErrorOnAndTakeTheValue)
{
  Int reached = 0;
  EXPECT_EQ(ErrorText(AddUp(true, true, reached)), "The disk is gone.");
  EXPECT_EQ(reached, 0);
  EXPECT_EQ(ErrorText(AddUp(false, true, reached)), "No owner.");
  EXPECT_EQ(reached, 1);
  EXPECT_EQ(AddUp(false, false, reached).GetValue(), 14);
}

TEST(Result, MovesItsValueAndItsError)
{
  Result<std::unique_ptr<Int>> first = MakeOwner(false);
  Result<std::unique_ptr<Int>> second = MakeOwner(true);
  std::swap(first, second);
  EXPECT_EQ(ErrorText(first), "No owner.");
  ASSERT_FALSE(second.HasError());
  EXPECT_EQ(*second.GetValue(), 7);
}

}  // namespace
}  // namespace q7z::test
