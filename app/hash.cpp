#include "app/hash.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/exitcode.h"
#include "app/session.h"
#include "app/signals.h"

namespace q7z::app
{

namespace
{

// The command and the elements of its dialog.
constexpr Int32 kHasherCommand = 1063930;
constexpr Int32 kInputField = 1051;
constexpr Int32 kOutputField = 1052;
constexpr Int32 kOnlyHashesItem = 1053;

/// The dialog's field ends lines with CR LF.
constexpr const char* kFieldLineEnd = "\r\n";

std::string ReadStdin()
{
  std::string text;
  std::array<char, 1 << 16> block;
  for (size_t count = 1; count > 0 && InterruptGuard::GetSignal() == 0;)
  {
    count = std::fread(block.data(), 1, block.size(), stdin);
    text.append(block.data(), count);
  }
  return text;
}

/// Lines that end in LF or CR LF, joined as the field has them; the end of the last line is no line of its own.
std::string ToField(const std::string& text)
{
  std::string field;
  for (size_t start = 0; start < text.size();)
  {
    const size_t found = text.find('\n', start);
    const size_t end = found == std::string::npos ? text.size() : found;
    const size_t length = end > start && text[end - 1] == '\r' ? end - start - 1 : end - start;
    if (start > 0)
      field += kFieldLineEnd;
    field.append(text, start, length);
    start = end + 1;
  }
  return field;
}

std::string JoinNames(const std::vector<std::string>& names)
{
  std::string field;
  for (const std::string& name : names)
    field += (&name == &names.front() ? "" : kFieldLineEnd) + name;
  return field;
}

int Print(Session& session, std::string_view field)
{
  for (size_t start = 0; start < field.size();)
  {
    const size_t found = field.find(kFieldLineEnd, start);
    const size_t end = found == std::string_view::npos ? field.size() : found;
    std::fwrite(field.data() + start, 1, end - start, stdout);
    std::fputc('\n', stdout);
    start = end + 2;
  }
  if (std::fflush(stdout) == 0 && !std::ferror(stdout))
    return kDone;
  return session.Fail(kNoAccess, std::string("cannot write to stdout: ") + std::strerror(errno));
}

int Hash(Session& session, const Arguments& arguments)
{
  const std::string input = arguments.names.empty() ? ToField(ReadStdin()) : JoinNames(arguments.names);
  if (std::ferror(stdin))
    return session.Fail(kNoAccess, std::string("cannot read stdin: ") + std::strerror(errno));
  if (InterruptGuard::GetSignal() != 0)
    return session.Fail(Session::GetInterruptCode(), "interrupted");
  const DialogRequest request{kHasherCommand, kInputField, String(input.data(), static_cast<Int>(input.size())),
                              arguments.onlyHashes ? kOnlyHashesItem : 0, kOutputField};
  const Result<String> output = session.GetHost().RunDialog(request);
  if (output.HasError())
    return session.Fail(kRefused, "nothing could be hashed: " + std::string(output.GetError().GetMessage().Trim().GetView()));
  if (output.GetValue().IsEmpty() && !input.empty())
    return session.Fail(kOutOfMemory, "the names need more memory to be hashed than there is");
  session.GetReport().status = "none";
  return Print(session, output.GetValue().GetView());
}

}  // namespace

int RunHash(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "hash";
  int code = session.StartHost();
  if (code == kDone)
    code = Hash(session, arguments);
  return session.Finish(code);
}

}  // namespace q7z::app
