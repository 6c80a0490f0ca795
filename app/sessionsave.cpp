// The saving half of a session.

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/exitcode.h"
#include "app/glblimit.h"
#include "app/options.h"
#include "app/session.h"
#include "host/platform/platform.h"
#include "host/services/wholefile.h"

namespace q7z::app
{

namespace
{

// What the saver answers.
constexpr Int32 kSaveOutOfMemory = -7;
constexpr Int32 kSaveCancelled = -8;

/// A folder of our own for a file that cannot be written where it goes; removed with all that is in it.
class TemporaryFolder
{
public:
  TemporaryFolder() : _path(MakeTemporaryFolder()) {}
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder()
  {
    if (!_path.empty())
      RemoveTree(_path);
  }
  const std::string& GetPath() const { return _path; }

private:
  std::string _path;
};

/// Copies a file to a stream. @return an empty text, or what went wrong.
std::string CopyToStream(const std::string& path, std::FILE* stream)
{
  PlatformFile file;
  if (!file.Open(path.c_str(), PlatformOpen::kRead))
    return "cannot read back what was saved: " + GetSystemReason();
  std::array<char, 1 << 16> block;
  for (Int position = 0;;)
  {
    const Int count = file.ReadAt(position, block.data(), static_cast<Int>(block.size()));
    if (count <= 0)
      return count < 0 ? "cannot read back what was saved: " + GetSystemReason() : "";
    if (InterruptGuard::IsInterrupted())
      return "interrupted";
    if (std::fwrite(block.data(), 1, static_cast<size_t>(count), stream) != static_cast<size_t>(count))
      return std::string("cannot write to stdout: ") + std::strerror(errno);
    position += count;
  }
}

bool HasMorphs(const HeadlessDocument& document)
{
  for (const HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    if (object->FindTag(kPoseMorphTagType) || object->GetTracks()->Find(HostDescId(kPointTrackParameter)))
      return true;
  }
  return false;
}

/// The saver keeps a vertex for each corner while it exports morphs, whether an object has any or not. A document without morphs is
/// saved without them unless they were asked for, so that corners share their vertices.
void LeaveMorphsOut(const HeadlessDocument& document, std::vector<std::pair<int, HostValue>>& parameters)
{
  const bool isChosen = std::any_of(parameters.begin(), parameters.end(),
                                    [](const auto& parameter) { return parameter.first == kExportMorphsOption; });
  if (!isChosen && !HasMorphs(document))
    parameters.emplace_back(kExportMorphsOption, HostValue(false));
}

/// The last choice counts.
bool IsGlb(const std::vector<std::pair<int, HostValue>>& parameters)
{
  const auto chosen = std::find_if(parameters.rbegin(), parameters.rend(),
                                   [](const auto& parameter) { return parameter.first == kFileFormatOption; });
  return chosen != parameters.rend() && chosen->second == HostValue(kGlbFileFormat);
}

}  // namespace

int Session::SaveOutput()
{
  if (_arguments.output == "-")
  {
    if (const int code = SaveThrough(stdout))
      return code;
    return std::fflush(stdout) == 0 ? kDone : Fail(kNoAccess, std::string("cannot write to stdout: ") + std::strerror(errno));
  }
  WholeFile file;
  if (const std::string failure = file.Open(_arguments.output); !failure.empty())
    return Fail(kNoAccess, failure);
  if (const int code = file.IsDevice() ? SaveThrough(file.GetStream()) : SaveInto(file.HandOver()))
    return code;
  const std::string failure = file.Commit();
  return failure.empty() ? kDone : Fail(kNoAccess, failure);
}

/// To a stream, which the saver cannot write to itself.
int Session::SaveThrough(std::FILE* stream)
{
  const TemporaryFolder folder;
  if (folder.GetPath().empty())
    return Fail(kNoAccess, "cannot make a temporary folder: " + GetSystemReason());
  const std::string path = folder.GetPath() + "/saved";
  if (const int code = SaveInto(path))
    return code;
  const std::string failure = CopyToStream(path, stream);
  return failure.empty() ? kDone : Fail(kNoAccess, failure);
}

int Session::SaveInto(const std::string& path)
{
  StartTimer();
  SaveRequest request;
  request.path = path;
  request.input = _path;
  request.allowOutside = _arguments.allowOutside;
  request.parameters = _arguments.exportParameters;
  LeaveMorphsOut(*_document, request.parameters);
  request.job = _bar.IsEnabled() ? &_job : nullptr;
  const SaveReport saved = _host->Save(request, *_document);
  StopTimer("save");
  _bar.Clear();
  TakeWarnings(saved);
  if (const int code = JudgeSave(saved))
    return code;
  return IsGlb(request.parameters) && !IsFarBelowGlbLimit(*_document) ? JudgeSize(path) : kDone;
}

void Session::TakeWarnings(const SaveReport& saved)
{
  for (const std::string& text : saved.warnings)
  {
    _report.issues.push_back({"EXPORT_WARNING", Severity::kWarning, text});
    SayWarning(text);
  }
}

int Session::JudgeSave(const SaveReport& saved)
{
  // Without a progress bar the saver cannot be stopped; what it has written is dropped.
  if (saved.returnValue == kSaveCancelled || InterruptGuard::GetSignal() != 0)
    return FailInterrupted();
  if (saved.Succeeded())
    return kDone;
  const std::string name = NameOutput();
  if (saved.returnValue == kSaveOutOfMemory)
  {
    _report.status = "out_of_memory";
    return Fail(kOutOfMemory, name + " needs more memory to be saved than there is");
  }
  if (!saved.writeFailure.empty())
  {
    _report.status = "io_error";
    return Fail(kNoAccess, "cannot write " + name + ": " + saved.writeFailure);
  }
  _report.status = "save_failed";
  return Fail(kRefused, name + " could not be saved: " + saved.error);
}

/// The saver does not see when a GLB file becomes too large for its own words.
int Session::JudgeSize(const std::string& path)
{
  switch (LookAtGlb(path))
  {
    case GlbLook::kFits: return kDone;
    case GlbLook::kUnreadable:
      _report.status = "io_error";
      return Fail(kNoAccess, "cannot read back what was saved: " + GetSystemReason());
    case GlbLook::kOutOfMemory:
      _report.status = "out_of_memory";
      return Fail(kOutOfMemory, NameOutput() + " needs more memory to be saved than there is");
    case GlbLook::kTooLarge: break;
  }
  _report.status = "out_of_memory";
  return Fail(kOutOfMemory,
              NameOutput() + " would be larger than a GLB file can be, 4 GiB; save it as .gltf, or split the scene");
}

std::string Session::NameOutput() const
{
  return _arguments.output == "-" ? "the file" : "\"" + _arguments.output + "\"";
}

}  // namespace q7z::app
