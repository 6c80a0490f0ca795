#include "host/modeling/instancechains.h"

namespace q7z
{

Bool InstanceChains::Follow(const HeadlessObject& instance, ShownObject& shown) noexcept
{
  _path.Truncate(0);
  const HeadlessObject* object = &instance;
  for (; object && object->IsInstance() && !_links.Find(object); object = object->GetReference())
  {
    Link open;
    open.isOpen = true;
    if (_links.Set(object, open).HasError() || _path.Append(object).HasError())
      return false;
  }
  // What the last instance of the path shows: nothing, an object, or an instance that is known already.
  Link link;
  if (const Link* const known = object && object->IsInstance() ? _links.Find(object) : nullptr)
    link = *known;
  else
    link.shown.object = object;
  if (link.isOpen || link.isCircle)
  {
    link = Link();
    link.isCircle = true;
  }
  for (Int i = _path.GetCount(); i-- > 0;)
  {
    if (!link.isCircle && object && object->IsInstance() && object->GetDown())
      link.shown.nextWithChildren = object;
    object = _path[i];
    *_links.Find(object) = link;
  }
  shown = link.shown;
  return true;
}

}  // namespace q7z
