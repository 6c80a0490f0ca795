// The strengths of morphs: one sampler moves all targets of a mesh, and each gets a track on the pose morph tag.

#include <algorithm>

#include "framework/check.h"
#include "plugin/animation/gltfanimationimport.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

namespace
{

class WeightConversion final : public ValueConversion<Float>
{
public:
  void Convert(const Float* values, Int count, Vector* converted) const noexcept override
  {
    std::transform(values, values + count, converted, [](Float value) { return Vector{value, 0, 0}; });
  }
};

}  // namespace

Result<void> AnimationImporter::ImportWeightTracks(HostObject* object, const GltfChannel& channel, HostTake* take,
                                                   Bool addRestKeys) noexcept
{
  SamplerTracks tracks = DescribeTracks(object, channel, take, addRestKeys);
  auto* const tagPoseMorph = static_cast<HostPoseMorphTag*>(object->GetTag(kPoseMorphTagType));
  CHECK_STATE(tagPoseMorph);
  tracks.target = tagPoseMorph;
  tracks.didCount = 1;

  const Int32 count = tagPoseMorph->GetMorphCount();
  for (Int32 i = 1; i < count; ++i)  // morph 0 is the base
  {
    const HostDescId id = HostPoseMorphTagGetStrengthId(tagPoseMorph, i);
    HostValue strength;
    tagPoseMorph->GetParameter(id, strength);
    tracks.dids = &id;
    tracks.restValue = {strength.GetFloat(), 0, 0};
    tracks.layout = {count - 1, i - 1};  // the numbers of all targets of a key lie together
    RETURN_IF_ERROR(ImportSamplerTracks(tracks, WeightConversion()));
  }
  return {};
}

}  // namespace q7z
