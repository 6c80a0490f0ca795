#include "plugin/animation/gltfanimationimport.h"

#include <algorithm>

#include "framework/check.h"
#include "framework/rotation.h"
#include "plugin/module/configvariables.h"

namespace q7z
{

namespace
{

/// What converts transforms, the same for the whole process: the first import settles the mirror, and a later one with another
/// option keeps it, on purpose.
struct TransformSpace
{
  explicit TransformSpace(Bool flip) noexcept : flipZ(flip), positionMirror{1, 1, flip ? -1.0 : 1.0} {}
  const Bool flipZ;
  const Vector positionMirror;
};

const TransformSpace& GetTransformSpace(const ImportOptions& options) noexcept
{
  static const TransformSpace space(options.IsFlipZ());
  return space;
}

class TranslationConversion final : public ValueConversion<Vector>
{
public:
  TranslationConversion(const Vector& mirror, Float scale) noexcept : _mirror(mirror), _scale(scale) {}
  void Convert(const Vector* values, Int count, Vector* converted) const noexcept override
  {
    std::transform(values, values + count, converted, [&](const Vector& value) { return value.Scaled(_mirror) * _scale; });
  }

private:
  Vector _mirror;
  Float _scale;
};

/// Tangents take the same way as values, as if they were rotations: on purpose.
class RotationConversion final : public ValueConversion<Vector4>
{
public:
  explicit RotationConversion(Bool flipZ) noexcept : _flipZ(flipZ) {}
  void Convert(const Vector4* values, Int count, Vector* converted) const noexcept override
  {
    QuaternionsToAngles(values, count, _flipZ, converted);
  }

private:
  Bool _flipZ;
};

/// Neither mirrored nor scaled.
class ScaleConversion final : public ValueConversion<Vector>
{
public:
  void Convert(const Vector* values, Int count, Vector* converted) const noexcept override
  {
    std::copy_n(values, count, converted);
  }
};

/// Where the tracks of a vector begin in kTransformTrackIds.
constexpr Int kTranslationTracks = 0;
constexpr Int kRotationTracks = 3;
constexpr Int kScaleTracks = 6;

}  // namespace

Result<void> AnimationImporter::InitAnimationImporter(HostDocument* doc, const GltfData* gltfData, const ImportOptions* options,
                                                      const HashMap<Int, HostObject*>* lookupNodes) noexcept
{
  CHECK_ARGUMENT(doc);
  CHECK_ARGUMENT(gltfData);
  _doc = doc;
  _gltfData = gltfData;
  _options = options;
  _lookupNodes = lookupNodes;
  Int bufferByteCount = 0;
  for (const auto& entry : gltfData->buffers)
    bufferByteCount += entry.GetValue().GetBytes().GetCount();
  _keyBudget = KeyBudget(bufferByteCount);
  return gltfData->animations.IsPopulated() ? SetDocumentTimeRange(*doc, *gltfData) : Result<void>();
}

Result<void> AnimationImporter::ImportAnimation(const GltfAnimation& animation, HostTake* take, Bool addRestKeys) noexcept
{
  CHECK_STATE(_options && _lookupNodes);
  ChannelsByNode nodes;
  RETURN_IF_ERROR(GroupChannels(animation, nodes));
  static_cast<void>(GetTransformSpace(*_options));  // settled now, even if nothing moves
  for (const auto& entry : nodes)
    RETURN_IF_ERROR(ImportNode(FindObject(entry.GetKey()), entry.GetValue(), take, addRestKeys));
  return {};
}

HostObject* AnimationImporter::FindObject(Int nodeIndex) const noexcept
{
  HostObject* const* const found = _lookupNodes->Find(nodeIndex);
  return found ? *found : nullptr;
}

/// Nodes come in the order of their first channel.
Result<void> AnimationImporter::GroupChannels(const GltfAnimation& animation, ChannelsByNode& nodes) const noexcept
{
  for (const GltfChannel& channel : animation.channels)
  {
    if (!FindObject(channel.node))
      continue;
    ASSIGN_OR_RETURN(NodeChannels* const slots, nodes.FindOrInsert(channel.node));
    if (channel.path == "translation"_s)
      slots->translation = &channel;
    else if (channel.path == "rotation"_s)
      slots->rotation = &channel;
    else if (channel.path == "scale"_s)
      slots->scale = &channel;
    else if (channel.path == "weights"_s)
      slots->weights = &channel;
  }
  return {};
}

Result<void> AnimationImporter::ImportNode(HostObject* object, const NodeChannels& channels, HostTake* take,
                                           Bool addRestKeys) noexcept
{
  if (_options->IsAnimationTrs())
    RETURN_IF_ERROR(ImportTransform(object, channels, take, addRestKeys));
  if (_options->IsMorphTargets() && channels.weights)
    RETURN_IF_ERROR(ImportWeightTracks(object, *channels.weights, take, addRestKeys));
  return {};
}

/// What all kinds of tracks have in common; ids and rest value are to be set.
SamplerTracks AnimationImporter::DescribeTracks(HostObject* object, const GltfChannel& channel, HostTake* take,
                                                Bool addRestKeys) const noexcept
{
  SamplerTracks tracks;
  tracks.object = object;
  tracks.sampler = channel.sampler;
  tracks.take = take;
  tracks.mode = GetSamplerInterpolationMode(channel.sampler);
  tracks.bake = g_gltfImporterBakeSplineInterpolatedAnimation && tracks.mode == InterpolationMode::Spline;
  tracks.addRestKeys = addRestKeys;
  return tracks;
}

Result<void> AnimationImporter::ImportTransform(HostObject* object, const NodeChannels& channels, HostTake* take,
                                                Bool addRestKeys) noexcept
{
  const auto describe = [&](const GltfChannel& channel, Int firstTrack)
  {
    SamplerTracks tracks = DescribeTracks(object, channel, take, addRestKeys);
    tracks.dids = kTransformTrackIds + firstTrack;
    tracks.didCount = 3;
    return tracks;
  };
  if (channels.translation)
    RETURN_IF_ERROR(ImportTranslation(describe(*channels.translation, kTranslationTracks)));
  if (channels.rotation)
    RETURN_IF_ERROR(ImportRotation(describe(*channels.rotation, kRotationTracks)));
  if (channels.scale)
    RETURN_IF_ERROR(ImportScale(describe(*channels.scale, kScaleTracks)));
  return {};
}

Result<void> AnimationImporter::ImportTranslation(SamplerTracks tracks) noexcept
{
  tracks.restValue = tracks.object->GetRelativePosition();
  return ImportSamplerTracks(tracks, TranslationConversion(GetTransformSpace(*_options).positionMirror, _options->GetScale()));
}

Result<void> AnimationImporter::ImportRotation(SamplerTracks tracks) noexcept
{
  tracks.restValue = tracks.object->GetRelativeRotation();
  tracks.bake = tracks.bake || tracks.mode == InterpolationMode::Step;  // a rotation never gets keys that hold
  return ImportSamplerTracks(tracks, RotationConversion(GetTransformSpace(*_options).flipZ));
}

Result<void> AnimationImporter::ImportScale(SamplerTracks tracks) noexcept
{
  tracks.restValue = tracks.object->GetRelativeScale();
  return ImportSamplerTracks(tracks, ScaleConversion());
}

}  // namespace q7z
