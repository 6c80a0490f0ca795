#include "tests/corpus/motionchanges.h"

#include <algorithm>
#include <cmath>

namespace q7z::test
{

namespace
{

constexpr double kFrameTime = 1.0 / 30;

struct ChangedClip
{
  const char* file;
  int animation;  ///< -1 for all
  Change change;
};

const ChangedClip kChangedClips[] = {
  {"valid/animation/01_cs_rotate/01_cs_rotate.gltf", -1, Change::kTurnSplines},
  {"valid/animation/01_cs_scale/01_cs_scale.gltf", -1, Change::kSplines},
  {"valid/animation/01_cs_translate/01_cs_translate.gltf", -1, Change::kSplines},
  {"valid/animation/03_all_animations/03_all_animations.gltf", 0, Change::kSplines},
  {"valid/animation/03_all_animations/03_all_animations.gltf", 1, Change::kSplines},
  {"valid/animation/06_parent-inverse-anim/06_parent-inverse-anim.gltf", 1, Change::kTurnSplines},
  {"valid/animation/06_parent-inverse-anim/06_parent-inverse-anim.gltf", 2, Change::kSplines},
  {"valid/animation/06_parent-inverse-anim/06_parent-inverse-anim.gltf", 4, Change::kSplines},
  {"valid/animation/07_nla-anim/07_nla-anim.gltf", -1, Change::kSplines},
  {"valid/animation/InterpolationTest/InterpolationTest.gltf", 2, Change::kSplines},
  {"valid/animation/InterpolationTest/InterpolationTest.gltf", 3, Change::kSteps},
  {"valid/animation/InterpolationTest/InterpolationTest.gltf", 4, Change::kTurnSplines},
  {"valid/animation/InterpolationTest/InterpolationTest.gltf", 7, Change::kSplines},
  {"valid/morphs/01_morphed_cube/01_morphed_cube.gltf", -1, Change::kSplines},
  {"valid/morphs/01_cs_morph/01_cs_morph.gltf", -1, Change::kSplines},
  {"edge/modified_bone_animation_test.glb", -1, Change::kSkinLost},
  {"valid/skins/03_skinned_cylinder/03_skinned_cylinder.gltf", -1, Change::kBentSkin},
  {"valid/skins/MeshSkinnedToItself.glb", -1, Change::kSkinLost},
  {"valid/skins/MeshSkinnedToItselfAndOthersV2.glb", -1, Change::kSkinLost},
  {"valid/skins/duplicate_skinned_mesh_combined.glb", -1, Change::kSkinLost},
  {"valid/skins/quad_skin.glb", -1, Change::kFourJoints},
  {"valid/skins/simple_skin.gltf", -1, Change::kQuaternions},
};

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

Change FindChange(const Clip& clip)
{
  const auto* const row =
    std::find_if(std::begin(kChangedClips), std::end(kChangedClips), [&](const ChangedClip& changed)
                 { return changed.file == clip.file && (changed.animation < 0 || changed.animation == clip.animation); });
  return row == std::end(kChangedClips) ? Change::kNone : row->change;
}

void ApplyChange(Change change, GltfViewer& original)
{
  if (change == Change::kFourJoints)
    original.KeepFourJoints();
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
