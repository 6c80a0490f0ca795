#pragma once

// GltfPreprocessor: turns the exporter's clone of the document into one that the export walk can read as it stands: plain polygon
// objects, nulls, joints and cameras, one material a mesh, animation sampled when asked, hidden things marked and empty ones gone.

#include "framework/basearray.h"
#include "framework/hashmap.h"
#include "framework/spinlock.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/export/hostwalk.h"
#include "plugin/export/objectmarkers.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

class GltfPreprocessor
{
public:
  /// @param doc  the clone, changed freely; not owned.
  void SetDocument(HostDocument* doc) noexcept { _doc = doc; }

  /// Prepares the document. @return the number of objects that are left. After an error the document is good for nothing.
  Result<Int32> Run(const ExportOptions& options) noexcept;

private:
  struct Split;
  struct InstanceLists;

  // Splitting objects by the selections that their materials are bound to.
  Result<void> SplitStage() noexcept;
  Result<void> ImportHookObject() noexcept;
  Result<void> CollectStage() noexcept;
  Result<void> CollectObject(HostObject* op) noexcept;
  Result<void> SplitCollected() noexcept;
  Result<HostObject*> SplitBySelections(HostObject* op, InstanceLists& instances) noexcept;
  Result<void> SplitOff(Split& split, HostTextureTag* tTag) noexcept;
  Result<HostOwner<HostObject>> CutSelected(Split& split, HostSelection* restriction) noexcept;
  Result<void> MovePart(Split& split, HostSelection* restriction, HostTextureTag* tTag) noexcept;
  Result<void> ReplaceByGroup(Split& split, InstanceLists& instances) noexcept;
  Result<void> ReplaceReferences(HostObject* origRef, HostObject* newRef, InstanceLists& instances) noexcept;

  Result<void> TagStage() noexcept;

  /// Samples every transform frame by frame and puts the samples in the place of the objects' own tracks.
  Result<void> BakeStage() noexcept;

  // Turning generators, deformers and instances into plain objects.
  Result<void> ConvertStage() noexcept;
  Result<void> CollectMorphObjects(HostObject* op) noexcept;
  Result<HostObject*> GroupAll() noexcept;
  Result<HostOwner<HostObject>> ConvertTree(HostObject* group) noexcept;
  Result<void> FinishConverted(HostObject* bakedRoot) noexcept;
  Result<void> OptimizeObject(HostObject* op) noexcept;
  Bool NeedsItsPoints(HostObject* op, HostObject* source) const noexcept;

  Result<void> MarkHiddenStage() noexcept;
  Result<void> MarkJointsStage() noexcept;

  // Removing what would be empty in the file.
  Result<void> PruneStage() noexcept;
  Result<void> MarkRemovable(HostObject* op) noexcept;
  Result<void> RemoveMarked() noexcept;

  /// Sets the time and has animation and expressions run.
  void GoToFrame(Int32 frame) noexcept;
  Int32 GetFrameRate() const noexcept;

  HostDocument* _doc = nullptr;
  ExportOptions _options;
  BaseArray<HostObject*> _instances;         // filled and used by SplitStage alone
  BaseArray<HostObject*> _splitObjects;      // the same
  HashMap<HostObject*, Bool> _morphObjects;  // used as a set, by ConvertStage alone
  Int32 _objectCount = 0;
  Bool _sequential = false;  // nothing ever sets it
  SpinLock _lock;
};

}  // namespace q7z
