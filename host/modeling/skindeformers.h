#pragma once

// SkinDeformers: which objects the skin deformers of a scene act on. Holds while the scene stays as it is.

#include "framework/hashmap.h"
#include "host/scene/headlessdocument.h"

namespace q7z
{

class SkinDeformers
{
public:
  /// Looks for deformers in the document, which may be null, and in the tree that root stands in. A deformer acts on its parent,
  /// or, where that is no polygon object, on all polygon objects beneath the parent. However many act on an object, they count
  /// as one. @return false without memory.
  Bool Collect(const HeadlessDocument* document, const HeadlessObject& root) noexcept;
  Bool ActOn(const HeadlessObject& object) const noexcept { return _acted.Contains(&object); }

private:
  Bool CollectParents(const HeadlessObject* first, const HeadlessObject* root) noexcept;
  Bool CollectActed(const HeadlessObject* first, const HeadlessObject* root) noexcept;
  template <typename Visit>
  static Bool VisitTrees(const HeadlessDocument* document, const HeadlessObject& root, Visit&& visit) noexcept;

  HashSet<const HeadlessObject*> _parents;  // of deformers
  HashSet<const HeadlessObject*> _acted;
};

}  // namespace q7z
