#include "app/hash.h"

#include <algorithm>
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

// A piece of stdin that is hashed at once.
constexpr size_t kPieceBytes = size_t(1) << 20;

/// Stdin in pieces of whole lines. The dialog takes an empty text for no text; so a piece that is not the first begins with a line
/// that is not empty.
class StdinPieces
{
public:
  /// @return false at the end, or when interrupted.
  bool Next(std::string& piece)
  {
    while (!_isAtEnd && InterruptGuard::GetSignal() == 0)
    {
      if (!Read())
        return false;
      const size_t cut = _isAtEnd ? _text.size() : FindCut();
      if (cut == 0)
        continue;
      piece.assign(_text, 0, cut);
      _text.erase(0, cut);
      return true;
    }
    return false;
  }

private:
  /// As much again as there is, so that looking for a cut costs constant time for a byte. @return false for what is cut short.
  bool Read()
  {
    const size_t before = _text.size();
    const size_t wanted = std::max(kPieceBytes, before);
    _text.resize(before + wanted);
    const size_t count = std::fread(_text.data() + before, 1, wanted, stdin);
    _text.resize(before + count);
    _isAtEnd = count < wanted;
    return !std::ferror(stdin) && InterruptGuard::GetSignal() == 0;
  }

  /// Where the last line begins that has an end and is not empty, if it is not the first; else 0.
  size_t FindCut() const
  {
    const size_t lineEnd = _text.rfind('\n');
    if (lineEnd == std::string::npos)
      return 0;
    const size_t last = _text.find_last_not_of("\r\n", lineEnd);
    const size_t before = last == std::string::npos ? last : _text.rfind('\n', last);
    return before == std::string::npos ? 0 : before + 1;
  }

  std::string _text;
  bool _isAtEnd = false;
};

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

/// @param menuItem  to be chosen before; 0 for none.
int HashField(Session& session, const std::string& field, Int32 menuItem)
{
  const DialogRequest request{kHasherCommand, kInputField, String(field.data(), static_cast<Int>(field.size())), menuItem,
                              kOutputField};
  const Result<String> output = session.GetHost().RunDialog(request);
  if (output.HasError())
    return session.Fail(kRefused, "nothing could be hashed: " + std::string(output.GetError().GetMessage().Trim().GetView()));
  if (output.GetValue().IsEmpty() && !field.empty())
    return session.Fail(kOutOfMemory, "the names need more memory to be hashed than there is");
  return Print(session, output.GetValue().GetView());
}

int HashStdin(Session& session, Int32 menuItem)
{
  StdinPieces pieces;
  int code = kDone;
  for (std::string piece; code == kDone && pieces.Next(piece); menuItem = 0)
    code = HashField(session, ToField(piece), menuItem);
  if (code == kDone && InterruptGuard::GetSignal() != 0)
    return session.Fail(Session::GetInterruptCode(), "interrupted");
  if (code == kDone && std::ferror(stdin))
    return session.Fail(kNoAccess, std::string("cannot read stdin: ") + std::strerror(errno));
  return code;
}

int Hash(Session& session, const Arguments& arguments)
{
  const Int32 menuItem = arguments.onlyHashes ? kOnlyHashesItem : 0;
  const int code =
    arguments.names.empty() ? HashStdin(session, menuItem) : HashField(session, JoinNames(arguments.names), menuItem);
  if (code == kDone)
    session.GetReport().status = "none";
  return code;
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
