#include "app/session.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "app/exitcode.h"
#include "app/memoryneed.h"
#include "host/platform/platform.h"
#include "host/platform/process.h"
#include "host/scenefile/scenefile.h"
#include "host/services/filereading.h"

namespace q7z::app
{

namespace
{

constexpr const char* kRed = "\x1b[31m";
constexpr const char* kGray = "\x1b[90m";

/// The library beside the program, or where it is installed.
std::string FindPlugin()
{
  const std::string program = GetProgramFolder();
  const std::string name = std::string("io_gltf") + kLibrarySuffix;
  std::string beside = program + "/" + name;
  std::string installed = GetFolderOf(program) + "/lib/q7z/" + name;
  const auto isThere = [](const std::string& path) { return GetFileSystemType(path) != HostFileSystemType::kNone; };
  return isThere(installed) && !isThere(beside) ? installed : beside;
}

int64_t CountOf(const HeadlessObject& object, Int32 type, Int32 (HeadlessPolygonObject::*count)() const)
{
  return object.GetType() == type ? (static_cast<const HeadlessPolygonObject&>(object).*count)() : 0;
}

/// The folder for images is there in each load of materials; one that got none goes again.
class ImageFolderGuard
{
public:
  explicit ImageFolderGuard(const std::string& parent) : _path(parent.empty() ? "" : parent + "/tex")
  {
    if (GetFileSystemType(_path) != HostFileSystemType::kNone)
      _path.clear();
  }
  ImageFolderGuard(const ImageFolderGuard&) = delete;
  ImageFolderGuard& operator=(const ImageFolderGuard&) = delete;
  ~ImageFolderGuard()
  {
    if (!_path.empty())
      RemoveEmptyFolder(_path);
  }

private:
  std::string _path;  // empty for nothing to do
};

}  // namespace

std::string GetFolder(const std::string& path)
{
  return path.find('/') == std::string::npos ? "" : GetFolderOf(path);
}

Session::Session(const Arguments& arguments)
    : _arguments(arguments),
      _color(UseColor(arguments.color)),
      _bar(!arguments.quiet && Applies(arguments.progress, IsTerminal(stderr))),
      _job([this](double overall, const std::string& stage) { _bar.Show(overall, stage); }),
      _interrupts(_job)
{
  _report.uri = arguments.input;
}

int Session::LoadInput()
{
  // The suffix lets a text in; a GLB file is known by its content.
  if (const int code = CheckInput("stdin.gltf"))
    return code;
  PrepareMemoryFor(_path);
  if (const int code = StartHost())
    return code;
  if (const int code = MakeDocument())
    return code;
  StartTimer();
  LoadRequest request;
  request.path = _path;
  request.parameters = _arguments.importParameters;
  request.allowOutside = _arguments.allowOutside;
  request.texFolder = ChooseImageFolder();
  const ImageFolderGuard imageFolder(request.texFolder);
  const LoadReport loaded = _host->Load(request, *_document, _job);
  StopTimer("load");
  _bar.Clear();
  TakeMessages();
  return JudgeLoad(loaded);
}

int Session::ReadScene()
{
  if (const int code = CheckInput("stdin.q7z.json"))
    return code;
  PrepareMemoryFor(_path);
  if (const int code = StartHost())
    return code;
  StartTimer();
  Result<HeadlessOwner<HeadlessDocument>> read = ReadSceneDocumentFile(String(_path.data(), static_cast<Int>(_path.size())));
  StopTimer("read");
  if (InterruptGuard::GetSignal() != 0)
    return FailInterrupted();
  if (!read.HasError())
  {
    _document = std::move(read.GetValue());
    _report.status = "none";
    CountObjects();
    return kDone;
  }
  const Error& error = read.GetError();
  const std::string reason(error.GetMessage().Trim().GetView());
  _report.status = error.GetClass() == ErrorClass::kIo ? "io_error" : "not_recognised";
  if (error.GetClass() == ErrorClass::kOutOfMemory)
    return Fail(kOutOfMemory, "\"" + _arguments.input + "\" needs more memory than there is");
  if (error.GetClass() == ErrorClass::kIo)
    return Fail(kNoAccess, reason);
  return Fail(kRefused, "\"" + _arguments.input + "\" is no scene document: " + reason);
}

/// A scene document finds its images beside it; all other output holds them itself, or names nothing that stays.
std::string Session::ChooseImageFolder() const
{
  if (!_arguments.texFolder.empty() || _arguments.verb != Verb::kImport || _arguments.output.empty() || _arguments.output == "-")
    return _arguments.texFolder;
  const std::string folder = GetFolder(_arguments.output);
  if (folder.empty())
    return ".";
  return GetFileSystemType(folder) == HostFileSystemType::kFolder ? folder : "";
}

std::string Session::GetImageFolder() const
{
  if (!_arguments.texFolder.empty())
    return "";
  const std::string& temporary = _host->GetTemporaryFolder();
  return temporary.empty() ? ChooseImageFolder() : temporary;
}

void Session::WarnOfLostImages()
{
  const std::string& temporary = _host->GetTemporaryFolder();
  const std::string images = temporary + "/tex";
  if (_arguments.output.empty() || temporary.empty() || GetFileSystemType(images) != HostFileSystemType::kFolder ||
      IsEmptyFolder(images))
    return;
  const std::string text = "the images that \"" + _arguments.input + "\" holds itself are not kept; --tex DIR keeps them";
  _report.issues.push_back({"IMAGES_NOT_KEPT", Severity::kWarning, text});
  SayWarning(text);
}

int Session::CheckInput(const std::string& stdinName)
{
  if (_arguments.input == "-")
  {
    const std::string failure = _stdinCopy.Read(stdinName);
    if (!failure.empty())
      return Fail(kNoAccess, failure);
    if (InterruptGuard::GetSignal() != 0)
      return FailInterrupted();
    _path = _stdinCopy.GetPath();
    return kDone;
  }
  _path = _arguments.input;
  const std::string name = "\"" + _path + "\"";
  const HostFileSystemType type = GetFileSystemType(_path);
  if (type == HostFileSystemType::kFolder)
    return Fail(kNoAccess, name + " is a folder; give a file");
  if (type == HostFileSystemType::kOther)
    return Fail(kNoAccess, name + " is no plain file; use - to read from stdin");
  if (type == HostFileSystemType::kNone || !IsReadable(_path))
    return Fail(kNoAccess, "cannot read " + name + ": " + GetSystemReason());
  if (!_arguments.output.empty() && _arguments.output != "-" && IsSameFile(_path, _arguments.output))
    return Fail(kUsage, "the output " + name + " is the input itself; give another name");
  return kDone;
}

Session::~Session()
{
  [[maybe_unused]] static HeadlessDocument* kept = nullptr;  // leak checkers find what something points to
  kept = _document.release();
}

int Session::StartHost()
{
  StartTimer();
  HostSettings settings;
  settings.pluginPath = _arguments.pluginPath.empty() ? FindPlugin() : _arguments.pluginPath;
  // A plain name is a file here, not one that the platform's loader looks for.
  if (settings.pluginPath.find('/') == std::string::npos)
    settings.pluginPath = "./" + settings.pluginPath;
  settings.nodeSpace = _arguments.nodeSpace;
  settings.configuration = _arguments.configuration;
  settings.onConsole = [this](const std::string& line) { Say("console", kGray, line); };
  settings.onMessageBox = settings.onConsole;
  if (_arguments.verbose)
    settings.onDiagnostic = [this](const std::string& line) { Say("diagnostic", kGray, line); };
  std::string error;
  _host = HeadlessHost::Create(settings, error);
  if (!_host)
    return Fail(error.find("configuration variable") == std::string::npos ? kNoAccess : kUsage, error);
  StopTimer("start");
  return kDone;
}

int Session::MakeDocument()
{
  _document = _host->NewDocument();
  if (!_document)
    return Fail(kOutOfMemory, "out of memory");
  bool set = true;
  if (_arguments.unit)
    set = _document->GetSettings().Set(kDocumentUnitSetting, *_arguments.unit);
  if (_arguments.framesPerSecond > 0)
    set = set && _document->SetParameter(kDocumentRateParameter, Int32(_arguments.framesPerSecond));
  return set ? kDone : Fail(kOutOfMemory, "out of memory");
}

int Session::JudgeLoad(const LoadReport& loaded)
{
  _report.status = loaded.recognised ? loaded.status : "not_recognised";
  _report.generator = loaded.generator;
  _report.details = loaded.details;
  const std::string name = "\"" + _arguments.input + "\"";
  if (!loaded.recognised)
    return Fail(kRefused, name + " is neither a GLB file (version 2) nor named .gltf; it is not loaded");
  if (loaded.status == "none")
  {
    CountObjects();
    return kDone;
  }
  const std::string reason = loaded.error.empty() ? "" : ": " + loaded.error;
  if (loaded.status == "user_break")
    return FailInterrupted();
  if (loaded.status == "out_of_memory")
    return Fail(kOutOfMemory, name + " needs more memory than there is, or goes over a limit" + reason);
  if (loaded.status == "io_error")
    return Fail(kNoAccess, "cannot read " + name + reason);
  return Fail(kRefused, name + " could not be loaded" + reason + (_arguments.verbose ? "" : " (--verbose tells more)"));
}

void Session::TakeMessages()
{
  for (const JobMessage& message : _job.GetMessages())
  {
    const bool isWarning = message.messageClass == HostMessageClass::kWarning;
    _report.issues.push_back({isWarning ? "IMPORT_WARNING" : "IMPORT_INFORMATION",
                              isWarning ? Severity::kWarning : Severity::kInfo, message.text});
    if (isWarning)
      SayWarning(message.text);
    if (!isWarning && _arguments.verbose)
      Say("note", kGray, message.text);
  }
}

void Session::CountObjects()
{
  int64_t objects = 0;
  int64_t points = 0;
  int64_t polygons = 0;
  for (const HeadlessObject* object = _document->GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    ++objects;
    points += CountOf(*object, kPolygonObjectType, &HeadlessPolygonObject::GetPointCount);
    polygons += CountOf(*object, kPolygonObjectType, &HeadlessPolygonObject::GetPolygonCount);
  }
  _report.counts = {{"objects", objects}, {"points", points}, {"polygons", polygons}};
}

int Session::GetInterruptCode()
{
  return InterruptGuard::GetSignal() == SIGTERM ? kTerminated : kInterrupted;
}

int Session::Fail(int code, const std::string& message)
{
  // A signal also ends what waits for room in a pipe, and then it is not the pipe that fails.
  if (code == kNoAccess && InterruptGuard::IsInterrupted())
    return FailInterrupted();
  _bar.Clear();
  Say("error", kRed, message);
  _report.issues.push_back({"ERROR", Severity::kError, message});
  return code;
}

int Session::FailInterrupted()
{
  _report.status = "user_break";
  return Fail(GetInterruptCode(), "interrupted");
}

int Session::Finish(int code)
{
  if (code == kDone && _arguments.strict && _report.CountIssues(Severity::kWarning) > 0)
    code = kStrictWarnings;
  _report.exitCode = code;
  if (_arguments.reportFile.empty())
    return code;
  const std::string text = _report.ToJson(_arguments.timings);
  if (_arguments.reportFile == "-")
  {
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return written || code ? code : Fail(kNoAccess, std::string("cannot write to stdout: ") + std::strerror(errno));
  }
  const std::string failure = WriteFileWhole(_arguments.reportFile, text.data(), text.size());
  return failure.empty() || code ? code : Fail(kNoAccess, failure);
}

void Session::Say(const char* kind, const char* color, const std::string& message)
{
  _bar.Clear();
  const std::string text = Escape(message);
  if (_color)
    std::fprintf(stderr, "q7z: %s%s:\x1b[0m %s\n", color, kind, text.c_str());
  else
    std::fprintf(stderr, "q7z: %s: %s\n", kind, text.c_str());
}

void Session::SayWarning(const std::string& message)
{
  if (!_arguments.quiet)
    Say("warning", "\x1b[33m", message);
}

void Session::StartTimer()
{
  _timer = std::chrono::steady_clock::now();
}

void Session::StopTimer(const std::string& name)
{
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - _timer;
  _report.timings.emplace_back(name, elapsed.count());
}

}  // namespace q7z::app
