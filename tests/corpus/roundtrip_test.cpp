// Real files, converted: the scene that comes back shows what the first one showed, and converting again changes nothing more.

#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>

#include <gtest/gtest.h>

#include "host/headlesshost.h"
#include "host/scene/headlesstag.h"
#include "plugin/document/gltfexportoptions.h"
#include "tests/corpus/gltffile.h"
#include "tests/corpus/worldtriangles.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{
namespace
{

struct Asset
{
  std::string file;  ///< below the folder of assets
  friend void PrintTo(const Asset& asset, std::ostream* out) { *out << asset.file; }
};

/// The valid files that load, from expected.tsv: the cases are the same whether the folder is there or not.
std::vector<Asset> ReadAssets()
{
  std::vector<Asset> assets;
  std::ifstream table(Q7Z_TEST_SOURCE_DIR "/tests/corpus/expected.tsv");
  for (std::string line; std::getline(table, line);)
  {
    const size_t tab = line.find('\t');
    if (line.starts_with("valid/") && line.compare(tab, 6, "\tnone\t") == 0)
      assets.push_back({line.substr(6, tab - 6)});
  }
  return assets;
}

std::string NameAsset(const testing::TestParamInfo<Asset>& info)
{
  std::string name = info.param.file;
  std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
}

/// What stands behind the JSON of a .glb file; empty when nothing does.
std::string ReadBinaryChunk(const std::string& path)
{
  const std::string bytes = ReadBytes(path);
  std::uint32_t jsonLength = 0;
  if (bytes.size() >= 20)
    std::memcpy(&jsonLength, bytes.data() + 12, 4);
  const size_t start = 20 + size_t(jsonLength) + 8;
  return bytes.size() > start ? bytes.substr(start) : "";
}

/// Whether the bytes are the same. Rotations of tracks go through angles, whose arc cosine costs the last digits: of a file with
/// animations, numbers that a quaternion can have may differ by as little as that.
bool AreBytesEqual(const std::string& a, const std::string& b, bool hasAnimations)
{
  if (a == b || !hasAnimations || a.size() != b.size())
    return a == b;
  for (size_t i = 0; i + 4 <= a.size(); i += 4)
  {
    float x = 0;
    float y = 0;
    std::memcpy(&x, a.data() + i, 4);
    std::memcpy(&y, b.data() + i, 4);
    const bool mayDiffer = std::fabs(x) > 1e-3F && std::fabs(x) <= 1 && std::fabs(x - y) < 1e-7F;
    if (!mayDiffer && std::memcmp(a.data() + i, b.data() + i, 4) != 0)
      return false;
  }
  return true;
}

bool HasAnimations(const HeadlessDocument& document)
{
  for (const HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    if (!object->GetTracks()->IsEmpty())
      return true;
  }
  return false;
}

std::vector<const HeadlessPolygonObject*> ListMeshes(const HeadlessDocument& document)
{
  std::vector<const HeadlessPolygonObject*> meshes;
  for (const HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    if (object->IsPolygonObject())
      meshes.push_back(object->AsPolygonObject());
  }
  return meshes;
}

template <typename T>
bool AreBitsEqual(const T* a, const T* b, Int count)
{
  return count == 0 || std::memcmp(a, b, sizeof(T) * static_cast<size_t>(count)) == 0;
}

/// Corner data, the polygons of the one in reverse order.
bool IsReverse(const HeadlessTag* tag, const HeadlessTag* otherTag)
{
  if (!tag || !otherTag)
    return !tag && !otherTag;
  const HostCornerHandle handle = static_cast<const HeadlessCornerTag*>(tag)->GetHandleR();
  const HostCornerHandle other = static_cast<const HeadlessCornerTag*>(otherTag)->GetHandleR();
  bool isReverse = handle.singles && other.singles && handle.polygonCount == other.polygonCount;
  for (Int i = 0; isReverse && i < handle.polygonCount; ++i)
    isReverse = AreBitsEqual(handle.singles + 12 * i, other.singles + 12 * (handle.polygonCount - 1 - i), 12);
  return isReverse;
}

bool AreColorsEqual(const HeadlessTag* tag, const HeadlessTag* otherTag)
{
  if (!tag || !otherTag)
    return !tag && !otherTag;
  const HostColorHandle handle = static_cast<const HeadlessVertexColorTag*>(tag)->GetHandleR();
  const HostColorHandle other = static_cast<const HeadlessVertexColorTag*>(otherTag)->GetHandleR();
  return handle.count == other.count && AreBitsEqual(handle.colors, other.colors, 4 * handle.count);
}

/// What is different between two meshes that hold the same, but for the order of their polygons; empty for nothing.
std::string CompareReversed(const HeadlessPolygonObject& mesh, const HeadlessPolygonObject& other)
{
  const Int count = mesh.GetPolygonCount();
  if (mesh.GetPointCount() != other.GetPointCount() || count != other.GetPolygonCount())
    return "other counts of points or polygons";
  if (!AreBitsEqual(mesh.GetPoints().GetR(), other.GetPoints().GetR(), mesh.GetPointCount()))
    return "other points";
  for (Int i = 0; i < count; ++i)
  {
    if (mesh.GetPolygons().GetR()[i] != other.GetPolygons().GetR()[count - 1 - i])
      return "polygon " + std::to_string(i) + " is not at its place from the end";
  }
  for (const Int32 type : {kNormalTagType, kUvwTagType})
  {
    if (!IsReverse(mesh.FindTag(type), other.FindTag(type)))
      return type == kNormalTagType ? "other normals" : "other UVs";
  }
  return AreColorsEqual(mesh.FindTag(kVertexColorTagType), other.FindTag(kVertexColorTagType)) ? "" : "other colours";
}

class RoundTrip : public testing::TestWithParam<Asset>
{
protected:
  void SetUp() override
  {
    const char* const folder = std::getenv("GLTF_ASSETS");
    if (!folder || !*folder)
      GTEST_SKIP() << "GLTF_ASSETS names no folder";
    _input = std::string(folder) + "/valid/" + GetParam().file;
    if (!std::filesystem::exists(_input))
      GTEST_SKIP() << "the folder has no such file";
    HostSettings settings;
    settings.pluginPath = Q7Z_TEST_BIN_DIR "/io_gltf.so";
    std::string error;
    _host = HeadlessHost::Create(settings, error);
    ASSERT_TRUE(_host) << error;
  }

  void TearDown() override { EXPECT_TRUE(_savedWarnings.empty() || !_inputWarnings.empty()) << _savedWarnings; }

  HeadlessOwner<HeadlessDocument> Load(const std::string& path)
  {
    HeadlessOwner<HeadlessDocument> document = _host->NewDocument();
    HeadlessJob job;
    LoadRequest request;
    request.path = path;
    request.texFolder = _folder / ("tex" + std::to_string(_loads++));
    std::filesystem::create_directory(request.texFolder);
    const LoadReport report = _host->Load(request, *document, job);
    EXPECT_EQ(report.status, "none") << path << ": " << report.error;
    for (const JobMessage& message : job.GetMessages())
    {
      if (message.messageClass == HostMessageClass::kWarning)
        (path == _input ? _inputWarnings : _savedWarnings) += message.text + "\n";
    }
    return document;
  }

  /// @return the path of what was saved.
  std::string Save(HeadlessDocument& document, const std::string& name, std::vector<std::pair<int, HostValue>> parameters)
  {
    SaveRequest request;
    request.path = _folder / name;
    request.parameters = std::move(parameters);
    const SaveReport report = _host->Save(request, document);
    EXPECT_TRUE(report.Succeeded()) << name << ": " << report.error;
    return request.path;
  }

  /// As q7z does: without the option for morphs, which costs a vertex for each corner, where there are none.
  std::string SaveGlb(HeadlessDocument& document, const std::string& name)
  {
    const std::vector<const HeadlessPolygonObject*> meshes = ListMeshes(document);
    const bool hasMorphs = std::any_of(meshes.begin(), meshes.end(),
                                       [](const HeadlessPolygonObject* mesh) { return mesh->FindTag(kPoseMorphTagType); });
    return Save(document, name, {{kFileFormatParameter, HostValue(kGlbFormat)}, {kExportMorphsParameter, HostValue(hasMorphs)}});
  }

  std::string _input;
  std::string _inputWarnings;
  std::string _savedWarnings;  // of loading what was saved
  TestFolder _folder;
  std::unique_ptr<HeadlessHost> _host;
  int _loads = 0;
};

TEST_P(RoundTrip, ShowsTheSameAgain)
{
  const HeadlessOwner<HeadlessDocument> document = Load(_input);
  const std::vector<Triangle> triangles = CollectTriangles(*document);
  for (const std::string& path : {Save(*document, "saved.gltf", {}), SaveGlb(*document, "saved.glb")})
  {
    const HeadlessOwner<HeadlessDocument> again = Load(path);
    const std::string difference = CompareTriangles(triangles, CollectTriangles(*again));
    EXPECT_TRUE(difference.empty()) << path << ":\n" << difference;
  }
}

// Saving mirrors Z, and with it reverses the whole list of indices: what was saved once has its triangles in reverse order after the
// second time and as they were after the third, and nothing else changes.
TEST_P(RoundTrip, ChangesNothingMore)
{
  const std::string first = SaveGlb(*Load(_input), "first.glb");
  const HeadlessOwner<HeadlessDocument> afterFirst = Load(first);
  const std::string second = SaveGlb(*afterFirst, "second.glb");
  const HeadlessOwner<HeadlessDocument> afterSecond = Load(second);
  const std::vector<const HeadlessPolygonObject*> meshes = ListMeshes(*afterFirst);
  const std::vector<const HeadlessPolygonObject*> others = ListMeshes(*afterSecond);
  ASSERT_EQ(others.size(), meshes.size());
  for (size_t i = 0; i < meshes.size(); ++i)
    EXPECT_EQ(CompareReversed(*meshes[i], *others[i]), "") << meshes[i]->GetName().GetView();
  const std::string third = SaveGlb(*afterSecond, "third.glb");
  EXPECT_TRUE(AreBytesEqual(ReadBinaryChunk(third), ReadBinaryChunk(first), HasAnimations(*afterFirst))) << "the bytes differ";
}

INSTANTIATE_TEST_SUITE_P(Valid, RoundTrip, testing::ValuesIn(ReadAssets()), NameAsset);

}  // namespace
}  // namespace q7z::test
