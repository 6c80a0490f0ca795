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

Result<String> AppendCause(const String& text, const Error& cause) noexcept
{
  ASSIGN_OR_RETURN(const String line, String::FromInt(cause.GetLine()));
  return String::Join({text, ", caused by: "_s, cause.GetMessage().Trim(), " ("_s, GetFileName(cause.GetFile()), ":"_s, line,
                       ")"_s});
}

Result<String> DescribeError(const String& what, const Error& error) noexcept
{
  ASSIGN_OR_RETURN(String text, String::Join({what, ": "_s, error.GetMessage().Trim()}));
  Error cause = error.GetCause();
  for (Int32 i = 0; cause && i < kMaximumCauses; ++i)
  {
    ASSIGN_OR_RETURN(text, AppendCause(text, cause));
    cause = cause.GetCause();
  }
  return text;
}

}  // namespace

void PrintError(const String& what, const Error& error) noexcept
{
  const Result<String> text = DescribeError(what, error);
  g_hostTables->console->Diagnostic(HostDiagnosticLevel::kDiagnostic, text.HasError() ? what : text.GetValue(), error.GetFile(),
                                    error.GetLine());
}

}  // namespace q7z
