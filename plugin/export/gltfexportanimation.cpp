// The one animation of a file: what a visited object adds to its samplers and channels.

#include "framework/check.h"
#include "plugin/camera/gltfcamera.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/export/gltfexporter.h"
#include "plugin/module/hostpolygon.h"
#include "plugin/module/hosttag.h"

namespace q7z
{

namespace
{

/// Whether a joint of op's skin moves.
Bool HasMovingJoint(const HostObject* op) noexcept
{
  const HostWeightTag* const tag = static_cast<const HostWeightTag*>(op->GetTag(kWeightTagType));
  const Int32 jointCount = tag ? tag->GetJointCount() : 0;
  for (Int32 i = 0; i < jointCount; ++i)
  {
    const HostObject* const joint = tag->GetJoint(i, op->GetDocument());
    if (joint && HasTransformTracks(joint))
      return true;
  }
  return false;
}

Bool HasAnimation(const HostObject* op) noexcept
{
  if (!op)
    return false;
  if (HasTransformTracks(op) || HostTrack::Find(op, HostDescId(kPointTrackParameter)))
    return true;
  const HostPoseMorphTag* const morphs = static_cast<const HostPoseMorphTag*>(op->GetTag(kPoseMorphTagType));
  return (morphs && morphs->GetMorph(1)) || HasMovingJoint(op);
}

/// Objects of other types, cameras of other projections among them, are nodes with a transform and nothing else.
Bool IsAnimatedType(const HostObject* op) noexcept
{
  const Int32 type = op->GetType();
  return type == kPolygonObjectType || type == kNullObjectType || type == kJointObjectType || IsExportableCamera(op);
}

}  // namespace

/// What moves is asked of the object as it was before the conversion, which took tracks away.
Result<void> GLTFExporter::SetAnimation(HostObject* op, HostObject* source, Int nodeIndex) noexcept
{
  if ((!_options.exportTransformAnimation && !_options.exportMorphs) || !IsAnimatedType(op) || !HasAnimation(source))
    return {};
  ASSIGN_OR_RETURN(const std::unique_ptr<NodeAnimationSet> set, NodeAnimationSet::Create());
  HostObject* const animated = source && _options.bakeAnimation ? source : op;
  GltfBuffer& buffer = _options.IsGlb() ? _glbBuffer : set->GetBuffer();
  RETURN_IF_ERROR(WriteNodeAnimation(*set, buffer, animated, _options.flipZ, _doc.get(), _options));
  return EmitNodeAnimation(*set, nodeIndex);
}

Result<void> GLTFExporter::EmitNodeAnimation(NodeAnimationSet& set, Int nodeIndex) noexcept
{
  if (!set.HasData())
    return {};
  Int bufferIndex = 0;
  if (!_options.IsGlb())
  {
    RETURN_IF_ERROR(EncodeBuffer(set.GetBuffer()));
    ASSIGN_OR_RETURN(bufferIndex, AddBuffer(set.GetBuffer()));
  }
  for (Int i = 0; i < NodeAnimationSet::kWriterCount; ++i)
  {
    if (set.GetWriter(i).HasData())
      RETURN_IF_ERROR(EmitSampler(set.GetWriter(i), bufferIndex, nodeIndex));
  }
  return {};
}

Result<void> GLTFExporter::EmitSampler(const AnimationSamplerWriter& writer, Int bufferIndex, Int nodeIndex) noexcept
{
  ASSIGN_OR_RETURN(const Int view, AddBufferView(writer.GetView(), bufferIndex, true));
  ASSIGN_OR_RETURN(const Int input, AddAccessor(writer.GetInput(), view));
  ASSIGN_OR_RETURN(const Int output, AddAccessor(writer.GetOutput(), view));
  DataDictionary sampler;
  RETURN_IF_ERROR(sampler.Set(keys::kInput, Data(input)));
  RETURN_IF_ERROR(sampler.Set(keys::kInterpolation, Data(writer.GetInterpolation())));
  RETURN_IF_ERROR(sampler.Set(keys::kOutput, Data(output)));
  RETURN_IF_ERROR(_animationSamplers.Append(Data(std::move(sampler))));
  DataDictionary target;
  RETURN_IF_ERROR(target.Set(keys::kNode, Data(nodeIndex)));
  RETURN_IF_ERROR(target.Set(keys::kPath, Data(writer.GetPath())));
  DataDictionary channel;
  RETURN_IF_ERROR(channel.Set(keys::kSampler, Data(_animationSamplers.GetCount() - 1)));
  RETURN_IF_ERROR(channel.Set(keys::kTarget, Data(std::move(target))));
  return _animationChannels.Append(Data(std::move(channel)));
}

}  // namespace q7z
