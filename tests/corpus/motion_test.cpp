// Real files, one animation of them at a time, converted twice: a viewer of what was saved sees every node and every triangle where
// it was, at every time. What a conversion changes on purpose is done to the original first.

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>

#include <gtest/gtest.h>

#include "host/headlesshost.h"
#include "plugin/document/gltfexportoptions.h"
#include "tests/corpus/loader.h"
#include "tests/corpus/motionclips.h"

namespace q7z::test
{
namespace
{

constexpr int kNodeTimes = 60;
constexpr int kTriangleTimes = 20;
constexpr double kNodeTolerance = 1e-4;  // of the model's size, or of an axis
constexpr double kLooseTolerance = 1e-3;
constexpr double kTriangleTolerance = 1e-3;

std::string NameClip(const testing::TestParamInfo<Clip>& info)
{
  std::string name = std::filesystem::path(info.param.file).stem().string() +
                     (info.param.animation < 0 ? "" : "_" + std::to_string(info.param.animation));
  std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
}

/// Nodes of the original, and what they are in a saved file: each save puts a node for the scene above them and leaves out those that
/// show nothing.
class NodeMap
{
public:
  NodeMap(const GltfViewer& original, const GltfViewer& saved, int sceneNodes) : _original(original), _saved(saved)
  {
    std::vector<int> roots = saved.GetRoots();
    for (int i = 0; i < sceneNodes; ++i)
      roots = saved.GetNodes().at(static_cast<size_t>(roots.at(0))).children;
    Match(original.GetRoots(), roots);
  }
  const std::map<size_t, size_t>& Get() const { return _matches; }

private:
  /// Siblings are in the same order.
  void Match(const std::vector<int>& children, const std::vector<int>& candidates)
  {
    auto next = candidates.begin();
    for (const int child : children)
    {
      const GltfNode& node = _original.GetNodes().at(static_cast<size_t>(child));
      const std::string name = !node.name.empty() ? node.name : node.mesh >= 0 ? "Mesh" : "Node_" + std::to_string(child);
      const auto found =
        std::find_if(next, candidates.end(), [&](int i) { return _saved.GetNodes().at(static_cast<size_t>(i)).name == name; });
      EXPECT_TRUE(found != candidates.end() || !IsKept(child)) << "node " << child << " \"" << name << "\" is missing";
      if (found == candidates.end())
        continue;
      next = found + 1;
      _matches[static_cast<size_t>(child)] = static_cast<size_t>(*found);
      Match(node.children, _saved.GetNodes().at(static_cast<size_t>(*found)).children);
    }
  }

  bool IsKept(int index) const
  {
    const GltfNode& node = _original.GetNodes().at(static_cast<size_t>(index));
    return node.mesh >= 0 || node.isCamera || _original.IsJoint(index) ||
           std::any_of(node.children.begin(), node.children.end(), [&](int child) { return IsKept(child); });
  }

  const GltfViewer& _original;
  const GltfViewer& _saved;
  std::map<size_t, size_t> _matches;
};

double GetLargestAxis(const HostMatrix& m)
{
  return std::max({m.axisX.GetLength(), m.axisY.GetLength(), m.axisZ.GetLength()});
}

double GetAxisError(const HostMatrix& a, const HostMatrix& b)
{
  return std::max({(a.axisX - b.axisX).GetLength(), (a.axisY - b.axisY).GetLength(), (a.axisZ - b.axisZ).GetLength()});
}

/// The diagonal of the box around all triangles and nodes.
double GetSize(const GltfViewer& viewer, double time)
{
  Box box;
  for (const HostMatrix& world : viewer.GetWorldMatrices(time))
    box.Take(world.offset);
  for (const CornerTriangle& triangle : viewer.GetTriangles(time))
    std::for_each(triangle.begin(), triangle.end(), [&](const Vector& corner) { box.Take(corner); });
  return box.GetSize();
}

TrianglePaths CollectPaths(const GltfViewer& viewer, const std::vector<double>& times)
{
  TrianglePaths paths;
  for (const double time : times)
    paths.push_back(viewer.GetTriangles(time));
  return paths;
}

std::vector<double> ListTimes(const std::pair<double, double>& range, int count)
{
  std::vector<double> times = {range.first};
  for (int i = 1; i < count && range.first < range.second; ++i)
    times.push_back(range.first + (range.second - range.first) * i / (count - 1));
  return times;
}

/// How far a saved file is from the original, as parts of the model's size.
struct Errors
{
  double nodes = 0;
  double triangles = 0;
};

/// A node's axes are held to the longest that one of them has at any time.
double CompareNodes(const GltfViewer& original, const GltfViewer& saved, const NodeMap& map, const std::vector<double>& times)
{
  const double size = GetSize(original, times[0]);
  double worst = 0;
  std::map<size_t, double> axes;
  std::map<size_t, double> axisErrors;
  for (const double time : times)
  {
    const std::vector<HostMatrix> worlds = original.GetWorldMatrices(time);
    const std::vector<HostMatrix> others = saved.GetWorldMatrices(time);
    for (const auto& [node, other] : map.Get())
    {
      if (original.GetNodes()[node].skin >= 0)
        continue;  // what is skinned is where its joints are
      worst = std::max(worst, (worlds[node].offset - others[other].offset).GetLength() / size);
      axes[node] = std::max(axes[node], GetLargestAxis(worlds[node]));
      axisErrors[node] = std::max(axisErrors[node], GetAxisError(worlds[node], others[other]));
    }
  }
  for (const auto& [node, error] : axisErrors)
    worst = std::max(worst, error / axes[node]);
  return worst;
}

Errors Compare(const GltfViewer& original, const GltfViewer& saved, int sceneNodes, const std::vector<double>& nodeTimes,
               const std::vector<double>& triangleTimes)
{
  const double size = GetSize(original, nodeTimes[0]);
  return {CompareNodes(original, saved, NodeMap(original, saved, sceneNodes), nodeTimes),
          ComparePaths(CollectPaths(original, triangleTimes), CollectPaths(saved, triangleTimes), kTriangleTolerance * size) /
            size};
}

Errors Compare(const GltfViewer& original, const GltfViewer& saved, int sceneNodes, int triangleTimes)
{
  const std::pair<double, double> range = original.GetTimeRange();
  return Compare(original, saved, sceneNodes, ListTimes(range, kNodeTimes), ListTimes(range, triangleTimes));
}

/// Where each frame gets a key.
enum class Sampling
{
  kNone,
  kWhenLoaded,
  kWhenSaved,
};

class Motion : public testing::TestWithParam<Clip>
{
protected:
  void SetUp() override
  {
    _path = WriteClip(GetParam(), _folder);
    if (_path.empty())
      GTEST_SKIP() << "GLTF_ASSETS names no folder with such a file";
  }

  /// @return the path of what was saved.
  std::string Convert(const std::string& path, const std::string& name, Sampling sampling = Sampling::kNone)
  {
    const std::unique_ptr<HeadlessHost> host = MakeHost(sampling == Sampling::kWhenLoaded);
    const HeadlessOwner<HeadlessDocument> document = host->NewDocument();
    HeadlessJob job;
    LoadRequest load;
    load.path = path;
    load.texFolder = _folder.GetPath();
    EXPECT_EQ(host->Load(load, *document, job).status, "none");
    SaveRequest save;
    save.path = _folder / name;
    save.parameters = {{kFileFormatParameter, HostValue(name.ends_with(".glb") ? kGlbFormat : kGltfFormat)},
                       {kExportSkinsParameter, HostValue(true)},
                       {kBakeAnimationParameter, HostValue(sampling == Sampling::kWhenSaved)},
                       {kExportTexturesParameter, HostValue(false)}};
    const SaveReport saved = host->Save(save, *document);
    EXPECT_TRUE(saved.Succeeded()) << saved.error;
    return save.path;
  }

  TestFolder _folder;
  std::string _path;
};

TEST_P(Motion, StaysInSavedFiles)
{
  const Change change = GetParam().change;
  const bool hasLostSkin = change == Change::kSkinLost;
  const int triangleTimes = hasLostSkin || change == Change::kBentSkin ? 1 : kTriangleTimes;
  const GltfFile file(_path);
  GltfViewer original(file);
  int sceneNodes = GetElements(file.GetRoot(), "scenes").empty() ? 0 : 1;
  for (const char* const name : {"saved.glb", "again.gltf"})
  {
    SCOPED_TRACE(name);
    ApplyChange(change, original);
    _path = Convert(_path, name);
    const GltfFile savedFile(_path);
    const Errors errors = Compare(original, GltfViewer(savedFile), sceneNodes++, triangleTimes);
    EXPECT_LE(errors.nodes, change == Change::kQuaternions ? kLooseTolerance : kNodeTolerance);
    EXPECT_NE(errors.triangles <= kTriangleTolerance, hasLostSkin) << errors.triangles;
    if (hasLostSkin)
      break;  // joints without a skin are nodes like any other, and may not be kept
  }
}

/// The whole frames of an animation that its saved times reach, as times of a file.
std::vector<double> ListFrames(const std::pair<double, double>& range)
{
  std::vector<double> frames;
  const long last = std::lround(std::floor(std::floor(range.second * 1000 + 0.5) * 30 / 1000));
  for (long frame = std::lround(std::ceil(30 * range.first)); frame <= last; ++frame)
    frames.push_back(static_cast<float>(static_cast<double>(frame) / 30));
  return frames;
}

TEST_P(Motion, StaysAtFramesThatTheSaverSamples)
{
  const Change change = GetParam().change;
  const GltfFile file(_path);
  GltfViewer original(file);
  const std::vector<double> frames = ListFrames(original.GetTimeRange());
  ApplyChange(change == Change::kSplines ? Change::kNone : change, original);
  const GltfFile savedFile(Convert(_path, "saved.glb", Sampling::kWhenSaved));
  const GltfViewer saved(savedFile);
  const NodeMap map(original, saved, GetElements(file.GetRoot(), "scenes").empty() ? 0 : 1);
  // A spline's tangents end on a millisecond.
  const bool isLoose = change == Change::kQuaternions || change == Change::kSplines;
  EXPECT_LE(CompareNodes(original, saved, map, frames), isLoose ? kLooseTolerance : kNodeTolerance);
}

class SplineMotion : public Motion
{};

TEST_P(SplineMotion, StaysAtFramesThatTheLoaderSamples)
{
  const GltfFile file(_path);
  const GltfViewer original(file);
  const std::vector<double> frames = ListFrames(original.GetTimeRange());
  const GltfFile savedFile(Convert(_path, "saved.glb", Sampling::kWhenLoaded));
  GltfViewer saved(savedFile);
  for (GltfSampler& sampler : saved.GetSamplers())
  {
    for (double& time : sampler.times)
      time = static_cast<float>(std::round(30 * time) / 30);  // it was rounded to milliseconds
  }
  const Errors errors = Compare(original, saved, 1, frames, frames);
  EXPECT_LE(errors.nodes, kNodeTolerance);
  EXPECT_LE(errors.triangles, kTriangleTolerance);
}

std::vector<Clip> ListSplines()
{
  std::vector<Clip> clips = ListClips();
  std::erase_if(clips, [](const Clip& clip) { return clip.change != Change::kSplines; });
  return clips;
}

INSTANTIATE_TEST_SUITE_P(Clips, Motion, testing::ValuesIn(ListClips()), NameClip);
INSTANTIATE_TEST_SUITE_P(Clips, SplineMotion, testing::ValuesIn(ListSplines()), NameClip);

}  // namespace
}  // namespace q7z::test
