#include "tests/corpus/loader.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "tests/support/scenecounts.h"

namespace q7z::test
{

namespace
{

void TakeMessage(const JobMessage& message, LoadResult& result)
{
  result.text += message.text + "\n";
  if (message.messageClass != HostMessageClass::kWarning)
    return;
  if (message.text.starts_with("The node with the index "))
    ++result.nodeWarnings;
  else if (message.text.starts_with("This data of the file could not be decoded: "))
    ++result.dataWarnings;
  else if (message.text.starts_with("Something that the file refers to could not be loaded"))
    ++result.assetWarnings;
}

void CountObjects(const HeadlessDocument& document, LoadResult& result)
{
  for (const HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    ++result.objects;
    if (object->GetType() != kPolygonObjectType)
      continue;
    result.points += static_cast<const HeadlessPolygonObject*>(object)->GetPointCount();
    result.polygons += static_cast<const HeadlessPolygonObject*>(object)->GetPolygonCount();
  }
}

}  // namespace

std::unique_ptr<HeadlessHost> MakeHost(bool bakesSplines)
{
  HostSettings settings;
  settings.pluginPath = Q7Z_TEST_BIN_DIR "/io_gltf.so";
  if (bakesSplines)
    settings.configuration = {{"g_gltfImporterBakeSplineInterpolatedAnimation", "true"}};
  std::string error;
  std::unique_ptr<HeadlessHost> host = HeadlessHost::Create(settings, error);
  if (!host)
    throw std::runtime_error(error);
  return host;
}

LoadResult Loader::Load(const std::string& path, const std::map<int, bool>& parameters)
{
  LoadResult result;
  const SceneCounts before;
  {
    HeadlessOwner<HeadlessDocument> document = _host->NewDocument();
    HeadlessJob job;
    LoadRequest request;
    request.path = path;
    request.texFolder = _folder.GetPath();
    for (const auto& [id, value] : parameters)
      request.parameters.emplace_back(id, HostValue(value));
    const LoadReport report = _host->Load(request, *document, job);
    result.status = report.recognised ? report.status : "not_recognised";
    result.text = report.error + "\n";
    for (const JobMessage& message : job.GetMessages())
      TakeMessage(message, result);
    CountObjects(*document, result);
  }
  const SceneCounts after;
  result.leftover = after.nodes - before.nodes + after.tracks - before.tracks;
  result.mistakes = after.mistakes - before.mistakes;
  return result;
}

LoadResult Loader::LoadBytes(const std::string& name, const std::string& bytes)
{
  return Load(_folder.Write(name, bytes));
}

bool IsStatusWord(const std::string& status)
{
  static constexpr std::array kWords = {"none", "user_break", "io_error", "out_of_memory", "unexpected_error", "unknown_error"};
  return std::find(kWords.begin(), kWords.end(), status) != kWords.end();
}

}  // namespace q7z::test
