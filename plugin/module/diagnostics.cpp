#include "plugin/module/diagnostics.h"

#include <cstring>

#include "framework/result.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr Int32 kMaximumCauses = 16;

// The last component of a path that the compiler has put down.
String GetFileName(const Char* path) noexcept
{
  const String whole(path, static_cast<Int>(std::strlen(path)));
  return whole.GetPart(whole.FindLast('/') + 1, whole.GetByteCount());
}

Result<String> DescribeError(const String& what, const Error& error) noexcept
{
  String text = what;
  String separator = ": "_s;
  Int32 causes = 0;
  for (Error current = error; current && causes < kMaximumCauses; current = current.GetCause(), ++causes)
  {
    ASSIGN_OR_RETURN(const String line, String::FromInt(current.GetLine()));
    ASSIGN_OR_RETURN(text, String::Join({text, separator, current.GetMessage().Trim(), " ("_s, GetFileName(current.GetFile()),
                                         ":"_s, line, ")"_s}));
    separator = ", caused by: "_s;
  }
  return text;
}

}  // namespace

void PrintError(const String& what, const Error& error) noexcept
{
  const Result<String> text = DescribeError(what, error);
  HOST_DIAGNOSTIC(text.HasError() ? what : text.GetValue());
}

}  // namespace q7z
