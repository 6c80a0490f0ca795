#include "plugin/document/gltfparse.h"

#include <cstring>
#include <limits>

#include "framework/check.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

Result<void> GltfParser::Init(GltfLoad* importer, const Url& fileUrl) noexcept
{
  CHECK_STATE(importer && fileUrl.IsPopulated());
  _sceneLoader = importer;
  _options = &importer->GetOptions();
  _gltfData = &importer->GetGltfData();
  _fileUrl = fileUrl;
  return _gltfData->Init();
}

Result<void> GltfParser::Load(HostBackgroundJob* backgroundJob) noexcept
{
  CHECK_STATE(_sceneLoader);
  CHECK_STATE(_options);
  const LoadProgress progress(backgroundJob, 0.1, 10017);
  // Beyond every scale, so that the first report reads as complete.
  RETURN_IF_ERROR(progress.Report(std::numeric_limits<Float>::max()));
  ASSIGN_OR_RETURN(DataDictionary jsonGLTF, ReadFile());
  RETURN_IF_ERROR(progress.Report(0.7));
  RETURN_IF_ERROR(ReadExtensions(jsonGLTF));
  // What is missing altogether is told by a message of its own, a walk that failed by the next.
  CHECK_STATE(_gltfData);
  CHECK_STATE(jsonGLTF.IsPopulated());
  CHECK_STATE(FillInLoadedData(jsonGLTF));
  jsonGLTF = DataDictionary();  // the records have what they need, and the buffers are still to come
  RETURN_IF_ERROR(progress.Report(0.9));
  CHECK_STATE(ResolveAssets(backgroundJob));
  return progress.Report(1.0);
}

Result<Bool> GltfParser::FillInLoadedData(const DataDictionary& jsonGLTF) noexcept
{
  return q7z::FillInLoadedData(_gltfData, jsonGLTF, *_options);
}

Result<DataDictionary> GltfParser::ReadFile() noexcept
{
  CHECK_STATE(_sceneLoader);
  HostUrlService* const urls = FindService<HostUrlService>();
  if (!urls)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no URL service."_s);
  if (urls->GetType(_fileUrl) != HostFileSystemType::kFile)
    return MAKE_ERROR(ErrorClass::kIo, "The document is no plain file."_s);
  return _sceneLoader->IsGlb() ? ReadGlbFile() : ReadJsonFile();
}

Result<DataDictionary> GltfParser::ReadJsonFile() noexcept
{
  ASSIGN_OR_RETURN(const BaseArray<Data> jsonArray, ParseJsonFile(_fileUrl));
  return GetRootDictionary(jsonArray);
}

}  // namespace q7z
