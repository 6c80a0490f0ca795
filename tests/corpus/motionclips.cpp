#include "tests/corpus/motionclips.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

namespace
{

namespace fs = std::filesystem;

constexpr double kFrameTime = 1.0 / 30;

struct Film
{
  const char* file;
  int animations;
  Change changes[9] = {};  // of each
};

// The files of the assets with animations, skins or morph targets that load, and how many of their animations are looked at.
const Film kFilms[] = {
  {"edge/AnimatedTriangle.gltf", 1},
  {"edge/modified_bone_animation_test.glb", 1, {Change::kSkinLost}},
  {"valid/animation/01_cs_rotate/01_cs_rotate.gltf", 1, {Change::kTurnSplines}},
  {"valid/animation/01_cs_scale/01_cs_scale.gltf", 1, {Change::kSplines}},
  {"valid/animation/01_cs_translate/01_cs_translate.gltf", 1, {Change::kSplines}},
  {"valid/animation/03_all_animations/03_all_animations.gltf", 3, {Change::kSplines, Change::kSplines}},
  {"valid/animation/06_parent-inverse-anim/06_parent-inverse-anim.gltf",
   5,
   {Change::kNone, Change::kTurnSplines, Change::kSplines, Change::kNone, Change::kSplines}},
  {"valid/animation/07_nla-anim/07_nla-anim.gltf", 3, {Change::kSplines, Change::kSplines, Change::kSplines}},
  {"valid/animation/CesiumMilkTruck.glb", 1},
  {"valid/animation/InterpolationTest/InterpolationTest.gltf",
   9,
   {Change::kNone, Change::kNone, Change::kSplines, Change::kSteps, Change::kTurnSplines, Change::kNone, Change::kNone,
    Change::kSplines}},
  {"valid/animation/SimpleAnimation.glb", 2},
  {"valid/animation/magnum-exported-animation.gltf", 3},
  {"valid/morphs/01_cs_morph/01_cs_morph.gltf", 1, {Change::kSplines}},
  {"valid/morphs/01_morphed_cube/01_morphed_cube.gltf", 1, {Change::kSplines}},
  {"valid/morphs/AnimatedMorphCube/AnimatedMorphCube.gltf", 1},
  {"valid/morphs/AnimatedMorphSphere/AnimatedMorphSphere.gltf", 1},
  {"valid/morphs/InconsistentMorphTargets_trick_fixed.glb", 0},
  {"valid/morphs/MorphStressTest.gltf", 3},
  {"valid/morphs/SimpleMorph/SimpleMorph.gltf", 1},
  {"valid/morphs/box-morph.gltf", 1},
  {"valid/skins/03_skinned_cylinder/03_skinned_cylinder.gltf", 1, {Change::kBentSkin}},
  {"valid/skins/Fox.glb", 2},
  {"valid/skins/MeshSkinnedToItself.glb", 0, {Change::kSkinLost}},
  {"valid/skins/MeshSkinnedToItselfAndOthersV2.glb", 1, {Change::kSkinLost}},
  {"valid/skins/duplicate_skinned_mesh_combined.glb", 1, {Change::kSkinLost}},
  {"valid/skins/generic-hand-left.glb", 0},
  {"valid/skins/greenman.glb", 2},
  {"valid/skins/magnum-skin.gltf", 0},
  {"valid/skins/robot.glb", 3},
  {"valid/skins/simple_skin.gltf", 1, {Change::kQuaternions}},
};

std::string ReplaceAnimations(const GltfFile& file, size_t animation)
{
  std::string text;
  for (const auto [key, value] : simdjson::dom::object(file.GetRoot()))
  {
    const bool isList = key == "animations";
    const Json kept = isList ? value.at(animation).value() : value;
    text += (text.empty() ? "{\"" : ",\"") + std::string(key) + (isList ? "\":[" : "\":") + simdjson::minify(kept) +
            (isList ? "]" : "");
  }
  return text + "}";
}

/// With the buffers that it names; images are not looked at.
std::string WriteOneAnimation(const std::string& path, int animation, const TestFolder& folder)
{
  const GltfFile file(path);
  if (GetElements(file.GetRoot(), "animations").size() < 2)
    return path;
  for (const Json buffer : GetElements(file.GetRoot(), "buffers"))
  {
    const std::string uri = GetText(buffer, "uri");
    if (!uri.empty() && !uri.starts_with("data:"))
      fs::copy_file(fs::path(path).parent_path() / uri, folder / uri);
  }
  const std::string text = ReplaceAnimations(file, static_cast<size_t>(animation));
  const std::string bytes = ReadBytes(path);
  if (!bytes.starts_with("glTF"))
    return folder.Write("clip.gltf", text);
  std::uint32_t jsonLength = 0;
  std::memcpy(&jsonLength, bytes.data() + 12, 4);
  return folder.Write("clip.glb", ToText(GlbBuilder().PaddedJson(text).Raw(ToBytes(bytes.substr(20 + jsonLength))).File()));
}

/// A tower of three squares: the lower joint holds the lowest, the upper one the highest, both the one between. The target twists
/// it; it bends, its weight rises and falls.
std::string WriteMorphsOnJoints(const TestFolder& folder)
{
  GltfJson json;
  const int positions =
    json.Floats({0, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 1, 0, 1, 0, 1, 1, 0, 1, 1, 1, 0, 1, 1, 0, 2, 0, 1, 2, 0, 1, 2, 1, 0, 2, 1},
                "VEC3");
  const int deltas = json.Floats({0,    0, 0, 0, 0, 0,    0,   0,   0, 0, 0,   0,   .2F,  0, .1F, 0, .3F, 0,
                                  -.2F, 0, 0, 0, 0, -.3F, .5F, .1F, 0, 0, .2F, .5F, -.5F, 0, .1F, 0, .3F, -.5F},
                                 "VEC3");
  const int joints = json.Values<uint8_t>({0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0,
                                           0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0},
                                          5121, "VEC4");
  const int weights = json.Floats({1,    0,    0, 0, 1,   0,   0, 0, 1, 0, 0, 0, 1, 0, 0, 0, .5F, .5F, 0, 0, .25F, .75F, 0, 0,
                                   .75F, .25F, 0, 0, .5F, .5F, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,   1,   0, 0, 0,    1,    0, 0},
                                  "VEC4");
  const int indices = json.Indices({0, 1, 5, 0, 5, 4, 1, 2, 6,  1, 6,  5, 2, 3, 7,  2, 7,  6,  3, 0, 4, 3, 4, 7,
                                    4, 5, 9, 4, 9, 8, 5, 6, 10, 5, 10, 9, 6, 7, 11, 6, 11, 10, 7, 4, 8, 7, 8, 11});
  // The joints stand at (2, 0, 0) and (2, 1, 0).
  const int bind =
    json.Floats({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -2, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -2, -1, 0, 1}, "MAT4");
  const int times = json.Values<float>({0, 1, 2}, 5126, "SCALAR", R"("min":[0],"max":[2])");
  const int turns = json.Floats({0, 0, 0, 1, .6F, 0, 0, .8F, 0, .36F, .48F, .8F}, "VEC4");
  const int strengths = json.Floats({.25F, 1, 0}, "SCALAR");
  const auto text = [](int index) { return std::to_string(index); };
  json.Add("meshes", R"({"weights":[0.25],"primitives":[{"attributes":{"POSITION":)" + text(positions) + R"(,"JOINTS_0":)" +
                       text(joints) + R"(,"WEIGHTS_0":)" + text(weights) + R"(},"indices":)" + text(indices) +
                       R"(,"targets":[{"POSITION":)" + text(deltas) + "}]}]}");
  json.Add("nodes", R"({"name":"Tower","mesh":0,"skin":0})");
  json.Add("nodes", R"({"name":"Lower","translation":[2,0,0],"children":[2]})");
  json.Add("nodes", R"({"name":"Upper","translation":[0,1,0]})");
  json.Add("skins", R"({"joints":[1,2],"inverseBindMatrices":)" + text(bind) + "}");
  json.Add(
    "animations",
    R"({"channels":[{"sampler":0,"target":{"node":2,"path":"rotation"}},{"sampler":1,"target":{"node":0,"path":"weights"}}],)"
    R"("samplers":[{"input":)" +
      text(times) + R"(,"output":)" + text(turns) + R"(},{"input":)" + text(times) + R"(,"output":)" + text(strengths) + "}]}");
  return folder.Write("clip.gltf", json.Text());
}

void RoundTimes(GltfSampler& sampler)
{
  for (double& time : sampler.times)
    time = std::floor(time * 1000 + 0.5) / 1000;
}

GltfSampler WithoutTangents(const GltfSampler& sampler)
{
  GltfSampler keys = sampler;
  keys.mode = GltfSampler::Mode::kLinear;
  keys.values.clear();
  for (size_t k = 0; k < sampler.times.size(); ++k)
  {
    const auto value = sampler.values.begin() + static_cast<std::ptrdiff_t>(sampler.GetPlace(k, 1));
    keys.values.insert(keys.values.end(), value, value + static_cast<std::ptrdiff_t>(sampler.GetWidth()));
  }
  return keys;
}

/// Tangents come in as a third of their interval long and mirrored, those at both ends not at all, and leave as they are then. Without
/// any the keys are joined by straight lines.
void ChangeSpline(GltfSampler& sampler)
{
  if (!sampler.IsSpline())
    return;
  const size_t width = sampler.GetWidth();
  const size_t last = sampler.times.size() - 1;
  bool hasTangents = false;
  for (size_t k = 0; k <= last; ++k)
  {
    for (size_t i = 0; i < width; ++i)
    {
      const double mirror = sampler.path == "translation" && i == 2 ? -1 : 1;
      double& in = sampler.values[sampler.GetPlace(k, 0) + i];
      double& out = sampler.values[sampler.GetPlace(k, 2) + i];
      in *= k == 0 ? 0 : -mirror * (sampler.times[k] - sampler.times[k - 1]) / 3;
      out *= k == last ? 0 : mirror * (sampler.times[k + 1] - sampler.times[k]) / 3;
      hasTangents = hasTangents || in != 0 || out != 0;
    }
  }
  if (!hasTangents)
    sampler = WithoutTangents(sampler);
}

/// Each key holds until a frame before the next.
void ChangeSteppedRotation(GltfSampler& sampler)
{
  if (!sampler.IsRotation() || sampler.mode != GltfSampler::Mode::kStep)
    return;
  GltfSampler turns = sampler;
  turns.mode = GltfSampler::Mode::kLinear;
  turns.times = {sampler.times[0]};
  turns.values.resize(4);
  for (size_t k = 1; k < sampler.times.size(); ++k)
  {
    turns.times.insert(turns.times.end(), {sampler.times[k] - kFrameTime, sampler.times[k]});
    const auto key = sampler.values.begin() + static_cast<std::ptrdiff_t>(4 * (k - 1));
    turns.values.insert(turns.values.end(), key, key + 8);
  }
  sampler = turns;
}

}  // namespace

std::vector<Clip> ListClips()
{
  std::vector<Clip> clips;
  for (const Film& film : kFilms)
  {
    for (int i = film.animations == 0 ? -1 : 0; i < film.animations; ++i)
      clips.push_back({film.file, i, film.changes[std::max(i, 0)]});
  }
  clips.push_back({kMadeHere, 0});
  return clips;
}

std::string WriteClip(const Clip& clip, const TestFolder& folder)
{
  if (clip.file == kMadeHere)
    return WriteMorphsOnJoints(folder);
  const char* const assets = std::getenv("GLTF_ASSETS");
  const std::string path = std::string(assets ? assets : "") + "/" + clip.file;
  return assets && fs::exists(path) ? WriteOneAnimation(path, clip.animation, folder) : "";
}

void ApplyChange(Change change, GltfViewer& original)
{
  for (GltfSampler& sampler : original.GetSamplers())
  {
    if (change == Change::kSplines)
      ChangeSpline(sampler);
    if (change == Change::kTurnSplines && sampler.IsSpline())
      sampler = WithoutTangents(sampler);
    if (change == Change::kSteps)
      ChangeSteppedRotation(sampler);
    RoundTimes(sampler);
  }
}

}  // namespace q7z::test
