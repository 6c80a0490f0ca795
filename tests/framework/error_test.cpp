// Errors: ids, and what is left of one without memory.

#include <gtest/gtest.h>

#include "framework/check.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

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
