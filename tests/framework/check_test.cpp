// Errors, the checks that make them, and the macros that pass them on. The text of a message is the tested expression as it is
// spelled, so nothing in the table of checks may be formatted.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "framework/check.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

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

// Errors.

TEST(Error, EveryClassHasItsId)
{
  const std::pair<ErrorClass, const char*> rows[] = {
    {ErrorClass::kIllegalState, "net.tarno.error.illegalstate"},
    {ErrorClass::kIllegalArgument, "net.tarno.error.illegalargument"},
    {ErrorClass::kNullPtr, "net.tarno.error.nullptr"},
    {ErrorClass::kOutOfMemory, "net.tarno.error.outofmemory"},
    {ErrorClass::kIo, "net.tarno.error.io"},
    {ErrorClass::kUnexpected, "net.tarno.error.unexpected"},
    {ErrorClass::kUnsupportedOperation, "net.tarno.error.unsupportedoperation"},
    {ErrorClass::kFunctionNotImplemented, "net.tarno.error.functionnotimplemented"},
    {ErrorClass::kOperationCancelled, "net.tarno.error.OperationCancelledError"},
  };
  for (const auto& [errorClass, id] : rows)
    EXPECT_STREQ(GetErrorClassId(errorClass), id);
  EXPECT_EQ(std::size(rows), static_cast<size_t>(ErrorClass::kOperationCancelled) + 1);
}

TEST(Error, MessageOutlivesTheTextItWasMadeFrom)
{
  char library[] = "message";  // stands for the texts of a library that is unloaded
  const Error error = MAKE_ERROR(ErrorClass::kIo, String(library, 7));
  library[0] = '?';
  EXPECT_EQ(Text(error.GetMessage()), "message");
}

TEST(Error, WithoutMemoryItIsOutOfMemoryOrKeepsItsText)
{
  const std::pair<ErrorClass, const char*> rows[] = {{ErrorClass::kOutOfMemory, "Out of memory. "}, {ErrorClass::kIo, "kept"}};
  for (Int i = 0; i < 2; ++i)
  {
    FailAllocation(1 + i);  // the record, then the copy of the text
    const Error error = MAKE_ERROR(ErrorClass::kIo, "kept"_s);
    EXPECT_EQ(StopFailingAllocations(), 1);
    EXPECT_EQ(error.GetClass(), rows[i].first);
    EXPECT_EQ(Text(error.GetMessage()), rows[i].second);
  }
}

TEST(Error, LongChainOfCausesGoesWithoutRecursion)
{
  Error error = MAKE_ERROR(ErrorClass::kIo, "root"_s);
  const Error root = error;
  for (int i = 0; i < 300000; ++i)
    error = Error::Make(ErrorClass::kIllegalState, "link"_s, __FILE__, __LINE__, error);
  error = Error();
  EXPECT_EQ(Text(root.GetMessage()), "root");
}

}  // namespace
}  // namespace q7z::test
