#include "host/modeling/skindeformers.h"

namespace q7z
{

/// Calls visit(first, root) for each tree: objects that are walked from first to the end of root, or of the top level for null.
template <typename Visit>
Bool SkinDeformers::VisitTrees(const HeadlessDocument* document, const HeadlessObject& root, Visit&& visit) noexcept
{
  const HeadlessObject* top = &root;
  while (top->GetUp())
    top = top->GetUp();
  const Bool isInDocument = document && top->GetDocument() == document;
  if (!isInDocument && !visit(top, top))
    return false;
  if (!document)
    return true;
  if (!visit(document->GetFirstObject(), nullptr))
    return false;
  for (const HeadlessObject* kept = document->GetFirstKept(); kept; kept = HeadlessDocument::GetNextKept(kept))
  {
    if (kept != top && !visit(kept, kept))
      return false;
  }
  return true;
}

Bool SkinDeformers::Collect(const HeadlessDocument* document, const HeadlessObject& root) noexcept
{
  const auto collectParents = [this](const HeadlessObject* first, const HeadlessObject* end)
  { return CollectParents(first, end); };
  const auto collectActed = [this](const HeadlessObject* first, const HeadlessObject* end) { return CollectActed(first, end); };
  if (!VisitTrees(document, root, collectParents))
    return false;
  return _parents.IsEmpty() || VisitTrees(document, root, collectActed);
}

Bool SkinDeformers::CollectParents(const HeadlessObject* first, const HeadlessObject* root) noexcept
{
  for (const HeadlessObject* object = first; object; object = object->GetNextInTree(root))
  {
    const Bool isDeformer = object->GetType() == kSkinDeformerType && object->GetUp();
    if (isDeformer && _parents.Set(object->GetUp(), {}).HasError())
      return false;
  }
  return true;
}

namespace
{

/// The first object behind all that is under this one; null at the end of root.
const HeadlessObject* GetNextBehind(const HeadlessObject* object, const HeadlessObject* root) noexcept
{
  for (; object && object != root; object = object->GetUp())
  {
    if (object->GetNext())
      return object->GetNext();
  }
  return nullptr;
}

}  // namespace

Bool SkinDeformers::CollectActed(const HeadlessObject* first, const HeadlessObject* root) noexcept
{
  Bool isInGroup = false;
  const HeadlessObject* groupEnd = nullptr;
  for (const HeadlessObject* object = first; object; object = object->GetNextInTree(root))
  {
    isInGroup = isInGroup && object != groupEnd;
    const Bool hasDeformer = _parents.Contains(object);
    if (object->IsPolygonObject())
    {
      if ((isInGroup || hasDeformer) && _acted.Set(object, {}).HasError())
        return false;
    }
    else if (hasDeformer && !isInGroup)
    {
      // Groups inside of it add nothing.
      isInGroup = true;
      groupEnd = GetNextBehind(object, root);
    }
  }
  return true;
}

}  // namespace q7z
