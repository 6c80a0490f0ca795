// Real files, converted: the scene that comes back shows what the first one showed, and converting again changes nothing more.

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>

#include <gtest/gtest.h>

#include "host/headlesshost.h"
#include "plugin/document/gltfexportoptions.h"
#include "tests/corpus/gltffile.h"
#include "tests/corpus/loader.h"
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

template <typename Takes>
bool AnyObject(const HeadlessDocument& document, Takes takes)
{
  const HeadlessObject* object = document.GetFirstObject();
  while (object && !takes(*object))
    object = HeadlessDocument::GetNextInDocument(object);
  return object;
}

bool HasAnimations(const HeadlessDocument& document)
{
  return AnyObject(document, [](const HeadlessObject& object) { return !object.GetTracks()->IsEmpty(); });
}

bool HasMorphs(const HeadlessDocument& document)
{
  return AnyObject(document, [](const HeadlessObject& object) { return object.FindTag(kPoseMorphTagType); });
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
    _host = MakeHost();
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
    return Save(document, name,
                {{kFileFormatParameter, HostValue(kGlbFormat)}, {kExportMorphsParameter, HostValue(HasMorphs(document))}});
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
  if (HasMorphs(*document) || AnyObject(*document, [](const HeadlessObject& object) { return object.FindTag(kWeightTagType); }))
    GTEST_SKIP() << "what is deformed is looked at with what moves";
  const TrianglePaths triangles = CollectTriangles(*document);
  for (const std::string& path : {Save(*document, "saved.gltf", {}), SaveGlb(*document, "saved.glb")})
  {
    const HeadlessOwner<HeadlessDocument> again = Load(path);
    const std::string difference = CompareTriangles(triangles, CollectTriangles(*again));
    EXPECT_EQ(difference, "") << path;
  }
}

// Saving mirrors Z, and with it reverses the whole list of indices: what was saved once has its triangles in reverse order after the
// second time and as they were after the third, and nothing else changes.
TEST_P(RoundTrip, ChangesNothingMore)
{
  const std::string first = SaveGlb(*Load(_input), "first.glb");
  const HeadlessOwner<HeadlessDocument> afterFirst = Load(first);
  const std::string second = SaveGlb(*afterFirst, "second.glb");
  EXPECT_EQ(ReadBinaryChunk(second).size(), ReadBinaryChunk(first).size());
  const std::string third = SaveGlb(*Load(second), "third.glb");
  EXPECT_TRUE(AreBytesEqual(ReadBinaryChunk(third), ReadBinaryChunk(first), HasAnimations(*afterFirst))) << "the bytes differ";
}

INSTANTIATE_TEST_SUITE_P(Valid, RoundTrip, testing::ValuesIn(ReadAssets()), NameAsset);

}  // namespace
}  // namespace q7z::test
