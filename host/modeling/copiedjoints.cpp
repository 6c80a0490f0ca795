#include "host/modeling/copiedjoints.h"

#include "host/scene/headlesstag.h"

namespace q7z
{

namespace
{

/// Calls call(link, object) for each link of the tag that leads to an object, until it answers false; its last answer.
template <typename Call>
Bool VisitObjectLinks(HeadlessTag& tag, Call call) noexcept
{
  struct Context
  {
    Call& call;
    Bool goesOn = true;
  } context{call};
  tag.VisitLinks(
    [](void* given, WeakLink& link) noexcept
    {
      Context& inner = *static_cast<Context*>(given);
      HeadlessNamedNode* const target = link.Get();
      if (inner.goesOn && target && target->GetKind() == NodeKind::kObject)
        inner.goesOn = inner.call(link, static_cast<HeadlessObject&>(*target));
    },
    &context);
  return context.goesOn;
}

}  // namespace

Bool CopiedJoints::AddScope(Int32& scope) noexcept
{
  if (_outerScopes.GetCount() >= INT32_MAX - 1 || _outerScopes.Append(scope).HasError())
    return false;
  scope = static_cast<Int32>(_outerScopes.GetCount());
  return true;
}

Bool CopiedJoints::Add(const HeadlessObject& original, HeadlessObject& copy, Int32 scope, Bool hasItsTags) noexcept
{
  if (_objects.Append({&original, &copy, scope}).HasError())
    return false;
  for (HeadlessTag* tag = hasItsTags ? copy.GetFirstTag() : nullptr; tag; tag = tag->GetNext())
  {
    if (tag->GetType() == kWeightTagType && _tags.Append({tag, scope}).HasError())
      return false;
  }
  return true;
}

Bool CopiedJoints::MapLinks() noexcept
{
  if (_tags.IsPopulated() && !CollectCopies())
    return false;
  for (const ScopedTag& scoped : _tags)
  {
    const auto map = [&](WeakLink& link, HeadlessObject& object) noexcept
    {
      HeadlessObject* copy = nullptr;
      return FindCopy(object, scoped.scope, copy) && (!copy || link.Set(copy));
    };
    if (!VisitObjectLinks(*scoped.tag, map))
      return false;
  }
  return true;
}

/// Of all that was copied only what the tags link to is found again.
Bool CopiedJoints::CollectCopies() noexcept
{
  HashSet<const HeadlessObject*> joints;
  const auto collect = [&](WeakLink&, HeadlessObject& object) noexcept { return !joints.Set(&object, {}).HasError(); };
  for (const ScopedTag& scoped : _tags)
  {
    if (!VisitObjectLinks(*scoped.tag, collect))
      return false;
  }
  for (const CopiedObject& object : _objects)
  {
    const Place place{object.original, object.scope};
    const Bool isNew = joints.Contains(object.original) && !_copies.Contains(place);
    if (isNew && _copies.Set(place, object.copy).HasError())
      return false;
  }
  return true;
}

/// Remembers the answer in every scope that was asked, so that a deep nest of scopes is climbed once.
Bool CopiedJoints::FindCopy(const HeadlessObject& original, Int32 scope, HeadlessObject*& copy) noexcept
{
  copy = nullptr;
  Int32 asked = scope;
  for (;; asked = _outerScopes[asked - 1])
  {
    if (HeadlessObject* const* const found = _copies.Find({&original, asked}))
    {
      copy = *found;
      break;
    }
    if (asked == 0)
      break;
  }
  for (; scope != asked; scope = _outerScopes[scope - 1])
  {
    if (_copies.Set({&original, scope}, copy).HasError())
      return false;
  }
  return true;
}

}  // namespace q7z
