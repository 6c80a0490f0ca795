#include "app/run.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/exitcode.h"
#include "app/options.h"
#include "app/session.h"
#include "host/scenefile/inspect.h"
#include "host/scenefile/scenefile.h"

namespace q7z::app
{

namespace
{

int WriteDocument(Session& session, const std::string& path)
{
  std::string error;
  const bool written = path == "-" ? WriteSceneDocument(session.GetDocument(), stdout, error)
                                   : WriteSceneDocumentFile(session.GetDocument(), path, error);
  return written ? kDone : session.Fail(kNoAccess, error);
}

int RunImport(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "import";
  int code = session.LoadInput();
  if (code == kDone && !arguments.output.empty())
    code = WriteDocument(session, arguments.output);
  return session.Finish(code);
}

int RunInspect(const Arguments& arguments)
{
  Session session(arguments);
  session.GetReport().verb = "inspect";
  int code = session.LoadInput();
  if (code == kDone && arguments.json)
    code = WriteDocument(session, "-");
  else if (code == kDone)
    code = PrintTree(session.GetDocument(), stdout)
             ? kDone
             : session.Fail(kNoAccess, std::string("cannot write to stdout: ") + std::strerror(errno));
  return session.Finish(code);
}

int RunOptions()
{
  std::printf("Import options (--import KEY=VALUE):\n\n");
  std::printf("  %-30s %5s  %-8s %-8s %s\n", "KEY", "ID", "TYPE", "DEFAULT", "MEANING");
  for (const ImportOption& option : GetImportOptions())
  {
    std::printf("  %-30s %5d  %-8s %-8s %s\n", std::string(option.key).c_str(), option.parameterId,
                std::string(GetTypeName(option.type)).c_str(), std::string(option.defaultText).c_str(),
                std::string(option.meaning).c_str());
  }
  return std::fflush(stdout) == 0 ? kDone : kNoAccess;
}

}  // namespace

int Run(const Arguments& arguments)
{
  switch (arguments.verb)
  {
    case Verb::kImport: return RunImport(arguments);
    case Verb::kInspect: return RunInspect(arguments);
    case Verb::kOptions: return RunOptions();
  }
  return kUsage;
}

}  // namespace q7z::app
