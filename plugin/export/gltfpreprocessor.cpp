#include "plugin/export/gltfpreprocessor.h"

#include "framework/check.h"
#include "plugin/export/gltfprogress.h"

namespace q7z
{

Result<Int32> GltfPreprocessor::Run(const ExportOptions& options) noexcept
{
  CHECK_STATE(_doc);
  _options = options;
  RETURN_IF_ERROR(SplitStage());
  RETURN_IF_ERROR(TagStage());
  if (_options.bakeAnimation && (_options.exportTransformAnimation || _options.exportMorphs))
    RETURN_IF_ERROR(BakeStage());
  RETURN_IF_ERROR(ConvertStage());
  RETURN_IF_ERROR(MarkHiddenStage());
  if (_options.exportSkins)
    RETURN_IF_ERROR(MarkJointsStage());
  RETURN_IF_ERROR(PruneStage());
  return _objectCount;
}

Int32 GltfPreprocessor::GetFrameRate() const noexcept
{
  HostValue rate;
  _doc->GetParameter(kDocumentRateParameter, rate);
  return rate.GetInt32();
}

void GltfPreprocessor::GoToFrame(Int32 frame) noexcept
{
  _doc->SetTime({static_cast<Float>(frame), static_cast<Float>(GetFrameRate())});
}

Result<void> GltfPreprocessor::TagStage() noexcept
{
  ProgressSetText(kTaggingText);
  ProgressAddTotal(_objectCount);
  const auto tag = [this](HostObject* op) -> Result<void>
  {
    RETURN_IF_ERROR(AddAuxTag(op, _lock));
    ProgressStep(_lock);
    return {};
  };
  return WalkWith(_doc, tag, _sequential, WalkAll);
}

Result<void> GltfPreprocessor::MarkHiddenStage() noexcept
{
  // A parent's mark is there before its children are looked at: levels follow one another.
  const auto mark = [](HostObject* op) -> Result<void>
  {
    HostObject* const parent = op->GetUp();
    const Bool hidden = parent && GetBoolMarker(parent, kHiddenObject);
    const Bool isHidden =
      op->GetVisibility(kEditorVisibility) == kHiddenMode && op->GetVisibility(kRenderVisibility) == kHiddenMode;
    return hidden || isHidden ? SetMarker(op, kHiddenObject, true) : Result<void>();
  };
  return WalkWith(_doc, mark, _sequential, IsDontExport);
}

namespace
{

/// Marks a joint and what stands above it. Above a marked object all is marked.
Result<void> MarkJoint(HostObject* joint) noexcept
{
  for (HostObject* op = joint; op && !GetBoolMarker(op, kNeededForJoints); op = op->GetUp())
    RETURN_IF_ERROR(SetMarker(op, kNeededForJoints, true));
  return {};
}

}  // namespace

Result<void> GltfPreprocessor::MarkJointsStage() noexcept
{
  const auto markJoints = [this](HostObject* op) -> Result<void>
  {
    for (HostTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext())
    {
      if (tag->GetType() != kWeightTagType)
        continue;
      const auto* const weights = static_cast<const HostWeightTag*>(tag);
      for (Int32 i = 0; i < weights->GetJointCount(); ++i)
        RETURN_IF_ERROR(MarkJoint(weights->GetJoint(i, _doc)));
    }
    return {};
  };
  return WalkWith(_doc, markJoints, true, WalkAll);
}

}  // namespace q7z
