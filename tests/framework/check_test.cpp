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

constexpr Int kLimit = 5;
const Int* const g_missing = nullptr;

Bool IsOneOf(std::initializer_list<String>)
{
  return false;
}
Result<void> Fail(Bool fails = true)
{
  if (fails)
    return MAKE_ERROR(ErrorClass::kIo, "The disk is gone."_s);
  return {};
}
Result<Bool> Answer(Bool answer)
{
  return answer;
}
Result<std::unique_ptr<Int>> MakeOwner(Bool fails)
{
  if (fails)
    return MAKE_ERROR(ErrorClass::kIo, "No owner."_s);
  return std::make_unique<Int>(7);
}

// clang-format off
struct CheckCase
{
  Result<void> (*check)();
  const char* message;
  const char* cause;
};
const CheckCase kCheckCases[] = {
  {[]() -> Result<void> { CHECK_STATE(g_missing); return {}; }, "Illegal state: Condition g_missing not fulfilled. ", ""},
  {[]() -> Result<void> { CHECK_ARGUMENT(g_missing); return {}; }, "Illegal argument: Condition g_missing not fulfilled. ", ""},
  {[]() -> Result<void> { CHECK_STATE(IsOneOf({"VEC3"_s, "VEC4"_s})); return {}; },
    "Illegal state: Condition IsOneOf({\"VEC3\"_s, \"VEC4\"_s}) not fulfilled. ", ""},
  {[]() -> Result<void> { CHECK_STATE(kLimit==1); return {}; }, "Illegal state: Condition kLimit==1 not fulfilled. ", ""},
  // Blanks, line breaks and comments become one blank.
  {[]() -> Result<void> { CHECK_STATE(  kLimit   ==	1 ||
      kLimit /* really */ < 0  ); return {}; }, "Illegal state: Condition kLimit == 1 || kLimit < 0 not fulfilled. ", ""},
  {[]() -> Result<void> { CHECK_STATE(kLimit > INT32_MAX); return {}; },
    "Illegal state: Condition kLimit > INT32_MAX not fulfilled. ", ""},
  {[]() -> Result<void> { CHECK_STATE(kLimit % 5 && '\n' == '%'); return {}; },
    "Illegal state: Condition kLimit % 5 && '\\n' == '%' not fulfilled. ", ""},
  // The error of a tested result is the cause.
  {[]() -> Result<void> { CHECK_STATE(Fail()); return {}; }, "Illegal state: Condition Fail() not fulfilled. ", "The disk is gone."},
  {[]() -> Result<void> { CHECK_STATE(MakeOwner(true)); return {}; },
    "Illegal state: Condition MakeOwner(true) not fulfilled. ", "No owner."},
  {[]() -> Result<void> { CHECK_STATE(Answer(false)); return {}; }, "Illegal state: Condition Answer(false) not fulfilled. ", ""},
  {[]() -> Result<void> { CHECK_STATE(Answer(true)); CHECK_STATE(Fail(false)); return {}; }, "no error", ""},
};
// clang-format on

TEST(Check, MessageQuotesTheExpressionAndTheCauseIsKept)
{
  for (const CheckCase& row : kCheckCases)
  {
    const Result<void> result = row.check();
    EXPECT_EQ(ErrorText(result), row.message);
    const Bool hasCause = result.HasError() && result.GetError().GetCause();
    EXPECT_EQ(hasCause ? Text(result.GetError().GetCause().GetMessage()) : "", row.cause) << row.message;
  }
}

TEST(Check, ErrorTellsClassAndPlace)
{
  Int evaluations = 0;
  const auto check = [&](Bool first) -> Result<Int>
  {
    if (first)
      CHECK_STATE(++evaluations);
    else
      CHECK_ARGUMENT(std::unique_ptr<Int>());
    return evaluations;
  };
  const Int32 line = __LINE__ - 3;
  EXPECT_EQ(check(true).GetValue(), 1);
  const Error error = check(false).GetError();
  EXPECT_EQ(error.GetClass(), ErrorClass::kIllegalArgument);
  EXPECT_EQ(error.GetLine(), line);
  EXPECT_NE(std::strstr(error.GetFile(), "check_test.cpp"), nullptr);
  EXPECT_EQ(kCheckCases[0].check().GetError().GetClass(), ErrorClass::kIllegalState);
}

}  // namespace
}  // namespace q7z::test
