#include "app/run.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/exitcode.h"
#include "app/hash.h"
#include "app/options.h"
#include "app/session.h"
#include "framework/check.h"
#include "host/platform/process.h"
#include "host/scenefile/inspect.h"
#include "host/scenefile/scenefile.h"
#include "host/services/wholefile.h"

namespace q7z::app
{

namespace
{

/// A stream that takes no more once the run was interrupted.
class RunSink final : public ByteSink
{
public:
  explicit RunSink(std::FILE* stream) noexcept : _stream(stream) {}
  Result<void> Write(std::string_view bytes) noexcept override
  {
    if (InterruptGuard::GetSignal() != 0)
      return MAKE_ERROR(ErrorClass::kOperationCancelled, "interrupted"_s);
    return _stream.Write(bytes);
  }

private:
  StreamSink _stream;
};

int Judge(Session& session, const Result<void>& written)
{
  if (!written.HasError())
    return kDone;
  const Error& error = written.GetError();
  const std::string message(error.GetMessage().Trim().GetView());
  if (error.GetClass() == ErrorClass::kOperationCancelled)
    return session.Fail(session.GetInterruptCode(), message);
  return session.Fail(error.GetClass() == ErrorClass::kOutOfMemory ? kOutOfMemory : kNoAccess, message);
}

int FlushStdout(Session& session)
{
  return std::fflush(stdout) == 0 ? kDone
                                  : session.Fail(kNoAccess, std::string("cannot write to stdout: ") + std::strerror(errno));
}

/// To stdout for "-", else to a file that appears whole or not at all.
int WriteDocument(Session& session, const std::string& path)
{
  if (path == "-")
  {
    RunSink sink(stdout);
    const int code = Judge(session, WriteSceneDocument(session.GetDocument(), "", sink, session.GetImageFolder()));
    return code ? code : FlushStdout(session);
  }
  WholeFile file;
  if (const std::string failure = file.Open(path); !failure.empty())
    return session.Fail(kNoAccess, failure);
  RunSink sink(file.GetStream());
  if (const int code = Judge(session, WriteSceneDocument(session.GetDocument(), GetFolder(path), sink, session.GetImageFolder())))
    return code;
  const std::string failure = file.Commit();
  return failure.empty() ? kDone : session.Fail(kNoAccess, failure);
}

int ShowTree(Session& session)
{
  RunSink sink(stdout);
  const std::string imageFolder = session.GetImageFolder();
  const bool isUtf8 = kIsAlwaysUtf8 || IsUtf8Locale(std::getenv("LC_ALL"), std::getenv("LC_CTYPE"), std::getenv("LANG"));
  const TreeSettings settings{.isUtf8 = isUtf8, .imageFolder = imageFolder};
  const int code = Judge(session, PrintTree(session.GetDocument(), settings, sink));
  return code ? code : FlushStdout(session);
}

int RunImport(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "import";
  int code = session.LoadInput();
  if (code == kDone && !arguments.output.empty())
    code = WriteDocument(session, arguments.output);
  if (code == kDone)
    session.WarnOfLostImages();
  return session.Finish(code);
}

int RunInspect(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "inspect";
  int code = session.LoadInput();
  if (code == kDone)
    code = arguments.json ? WriteDocument(session, "-") : ShowTree(session);
  return session.Finish(code);
}

int RunExport(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "export";
  int code = session.ReadScene();
  if (code == kDone)
    code = session.SaveOutput();
  return session.Finish(code);
}

int RunConvert(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "convert";
  int code = session.LoadInput();
  if (code == kDone)
    code = session.SaveOutput();
  return session.Finish(code);
}

void PrintOptions(const OptionTable& table, const char* title)
{
  std::printf("%s:\n\n", title);
  std::printf("  %-30s %5s  %-8s %-8s %s\n", "KEY", "ID", "TYPE", "DEFAULT", "MEANING");
  for (const Option& option : table.options)
  {
    std::printf("  %-30s %5d  %-8s %-8s %s\n", std::string(option.key).c_str(), option.parameterId,
                std::string(GetTypeName(option.type)).c_str(), std::string(option.defaultText).c_str(),
                std::string(option.meaning).c_str());
  }
}

int RunOptions()
{
  PrintOptions(GetImportOptions(), "Import options (--import KEY=VALUE)");
  std::printf("\n");
  PrintOptions(GetExportOptions(), "Export options (--export FIELD=VALUE)");
  if (std::fflush(stdout) == 0 && !std::ferror(stdout))
    return kDone;
  std::fprintf(stderr, "q7z: cannot write to stdout: %s\n", std::strerror(errno));
  return kNoAccess;
}

}  // namespace

int Run(const Arguments& arguments)
{
  switch (arguments.verb)
  {
    case Verb::kImport: return RunImport(arguments);
    case Verb::kExport: return RunExport(arguments);
    case Verb::kConvert: return RunConvert(arguments);
    case Verb::kInspect: return RunInspect(arguments);
    case Verb::kHash: return RunHash(arguments);
    case Verb::kOptions: return RunOptions();
  }
  return kUsage;
}

}  // namespace q7z::app
