#include "plugin/animation/gltfanimationexport.h"

#include <algorithm>
#include <new>

#include "framework/check.h"

namespace q7z
{

void AnimationSamplerWriter::BeginData(const GltfBuffer& buffer) noexcept
{
  _hasInput = true;
  _hasOutput = true;
  _view.AddByteOffset(buffer.GetBytes().GetCount());
}

Result<void> AnimationSamplerWriter::WriteTimes(GltfBuffer& buffer, const Keyframes& keyframes, const KeyRange& range) noexcept
{
  BaseArray<Float32> times;
  RETURN_IF_ERROR(times.ResizeForOverwrite(range.GetCount()));
  const Float start = keyframes.GetSeconds(range.first);
  for (Int i = 0; i < range.GetCount(); ++i)
    times[i] = static_cast<Float32>(keyframes.GetSeconds(range.first + i) - start);
  RETURN_IF_ERROR(_input.AppendElements(buffer, _view, times.GetFirst(), times.GetCount()));
  _output.SetByteOffset(_output.GetByteOffset() + times.GetCount() * static_cast<Int>(sizeof(Float32)));
  return {};
}

Result<void> AnimationSamplerWriter::WriteValues(GltfBuffer& buffer, const BaseArray<Float32>& values, Int count) noexcept
{
  return _output.AppendElements(buffer, _view, values.GetFirst(), count);
}

Result<std::unique_ptr<NodeAnimationSet>> NodeAnimationSet::Create() noexcept
{
  std::unique_ptr<NodeAnimationSet> set(new (std::nothrow) NodeAnimationSet);
  if (!set)
    return Error::OutOfMemory();
  set->_writers[0].reset(new (std::nothrow) TranslationSamplerWriter);
  set->_writers[1].reset(new (std::nothrow) RotationSamplerWriter);
  set->_writers[2].reset(new (std::nothrow) ScaleSamplerWriter);
  set->_writers[3].reset(new (std::nothrow) WeightsSamplerWriter);
  if (!std::all_of(std::begin(set->_writers), std::end(set->_writers), [](const auto& writer) { return writer != nullptr; }))
    return Error::OutOfMemory();
  return set;
}

Bool NodeAnimationSet::HasData() const noexcept
{
  return std::any_of(std::begin(_writers), std::end(_writers), [](const auto& writer) { return writer->HasData(); });
}

Result<void> WriteNodeAnimation(NodeAnimationSet& set, GltfBuffer& buffer, HostObject* op, Bool flipZ, HostDocument* doc,
                                const ExportOptions& options) noexcept
{
  CHECK_ARGUMENT(doc);
  CHECK_ARGUMENT(op);
  const TimeRange timeRange = GetTimeRange(*doc);
  // A joint's transform is written in any case.
  const Bool wantsTransform = options.exportTransformAnimation || op->GetType() == kJointObjectType;
  for (Int i = 0; i < NodeAnimationSet::kWriterCount; ++i)
  {
    const Bool isWanted = i < 3 ? wantsTransform : options.exportMorphs;
    if (!isWanted)
      continue;
    set.GetWriter(i).SetDocument(doc);
    RETURN_IF_ERROR(set.GetWriter(i).WriteTrack(buffer, op, flipZ, options, timeRange));
  }
  return {};
}

}  // namespace q7z
