#include "host/scene/headlessalias.h"

#include <new>

#include "host/scene/headlesstag.h"

namespace q7z
{

namespace
{

/// Where links to originals are to lead.
struct LinkMap
{
  HashMap<const HeadlessNamedNode*, HeadlessNamedNode*> clones;
  Bool failed = false;
};

/// Leads a link to the clone of what it leads to; others stay.
void MapLink(void* context, WeakLink& link) noexcept
{
  LinkMap& map = *static_cast<LinkMap*>(context);
  HeadlessNamedNode* const target = link.Get();
  HeadlessNamedNode* const* const found = target ? map.clones.Find(target) : nullptr;
  if (found && !link.Set(*found))
    map.failed = true;
}

void MapLinksOf(HeadlessNode& node, LinkMap& map) noexcept
{
  node.VisitLinks(MapLink, &map);
}

/// Copies an object alone and calls remember(original, clone) for it and each of its tags; false of that ends the copy.
template <typename Remember>
HeadlessOwner<HeadlessObject> CopyAlone(const HeadlessObject& object, Remember& remember) noexcept
{
  HeadlessOwner<HeadlessObject> copy(object.CloneAlone());
  if (!copy || !remember(object, *copy))
    return nullptr;
  HeadlessTag* tagCopy = copy->GetFirstTag();
  for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext(), tagCopy = tagCopy->GetNext())
  {
    if (!remember(*tag, *tagCopy))
      return nullptr;
  }
  return copy;
}

/// The same for an object with all below it; walks both trees side by side.
template <typename Remember>
HeadlessOwner<HeadlessObject> CopyTree(const HeadlessObject& root, Remember& remember) noexcept
{
  HeadlessOwner<HeadlessObject> rootCopy = CopyAlone(root, remember);
  const HeadlessObject* object = &root;
  HeadlessObject* parentCopy = rootCopy.get();
  while (rootCopy)
  {
    if (object->GetDown())
      object = object->GetDown();
    else
    {
      for (; object != &root && !object->GetNext(); object = object->GetUp())
        parentCopy = parentCopy->GetUp();
      if (object == &root)
        break;
      object = object->GetNext();
      parentCopy = parentCopy->GetUp();
    }
    HeadlessOwner<HeadlessObject> copy = CopyAlone(*object, remember);
    if (!copy)
      return nullptr;
    copy->InsertUnderLast(parentCopy);
    parentCopy = copy.release();
  }
  return rootCopy;
}

class DocumentCloner
{
public:
  explicit DocumentCloner(const HeadlessDocument& source) noexcept : _source(source), _copy(HeadlessDocument::Create()) {}

  HeadlessDocument* Run() noexcept
  {
    const Bool done =
      _copy && _copy->CopySettingsFrom(_source) && CopyLayers() && CopyMaterials() && CopyObjects() && CopyTakes();
    if (!done || !MapLinks())
      return nullptr;
    return _copy.release();
  }

  /// Only what links lead to has to be found again.
  Bool operator()(const HeadlessNamedNode& original, HeadlessNamedNode& clone) noexcept
  {
    return !original.HasAnchor() || !_map.clones.Set(&original, &clone).HasError();
  }

private:
  Bool CopyLayers() noexcept
  {
    const HeadlessLayer& source = _source.GetLayerRoot();
    HeadlessLayer& copy = _copy->GetLayerRoot();
    if (!copy.CopyFrom(source))
      return false;
    for (Int i = 0; i < source.GetLayerCount(); ++i)
    {
      if (!(*this)(*source.GetLayer(i), *copy.GetLayer(i)))
        return false;
    }
    return true;
  }

  Bool CopyMaterials() noexcept
  {
    for (const HeadlessMaterial* material = _source.GetFirstMaterial(); material; material = material->GetNext())
    {
      HeadlessMaterial* const copy = material->Clone();
      if (!copy)
        return false;
      _copy->InsertMaterial(copy);
      if (!(*this)(*material, *copy))
        return false;
    }
    return true;
  }

  Bool CopyObjects() noexcept
  {
    for (const HeadlessObject* object = _source.GetFirstObject(); object; object = object->GetNext())
    {
      HeadlessOwner<HeadlessObject> copy = CopyTree(*object, *this);
      if (!copy)
        return false;
      _copy->InsertObjectLast(copy.release());
    }
    for (const HeadlessObject* object = _source.GetFirstKept(); object; object = HeadlessDocument::GetNextKept(object))
    {
      HeadlessOwner<HeadlessObject> copy = CopyTree(*object, *this);
      if (!copy)
        return false;
      _copy->Keep(copy.release());
    }
    return true;
  }

  Bool CopyTakes() noexcept { return _copy->GetTakeData().CopyFrom(_source.GetTakeData()); }

  void MapObjectLinks(HeadlessObject* first, const HeadlessObject* root) noexcept
  {
    for (HeadlessObject* object = first; object; object = object->GetNextInTree(root))
    {
      MapLinksOf(*object, _map);
      for (HeadlessTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
        MapLinksOf(*tag, _map);
    }
  }

  Bool MapTakeLinks() noexcept
  {
    HeadlessTakeData& takes = _copy->GetTakeData();
    for (Int i = 0; i < takes.GetTakeCount(); ++i)
    {
      HeadlessTake& take = *takes.GetTake(i);
      MapLinksOf(take, _map);
      for (Int j = 0; j < take.GetOverrideCount(); ++j)
        MapLinksOf(*take.GetOverride(j), _map);
      if (!take.RefreshTargets())
        return false;
    }
    return true;
  }

  Bool MapLinks() noexcept
  {
    const auto mapLink = [this](WeakLink& link) { MapLink(&_map, link); };
    MapLinksOf(*_copy, _map);
    _copy->GetSettings().VisitLinks(mapLink);
    if (_copy->GetRenderData())
      _copy->GetRenderData()->VisitLinks(mapLink);
    MapObjectLinks(_copy->GetFirstObject(), nullptr);
    for (HeadlessObject* object = _copy->GetFirstKept(); object; object = HeadlessDocument::GetNextKept(object))
      MapObjectLinks(object, object);
    for (HeadlessMaterial* material = _copy->GetFirstMaterial(); material; material = material->GetNext())
      MapLinksOf(*material, _map);
    return MapTakeLinks() && !_map.failed;
  }

  const HeadlessDocument& _source;
  HeadlessOwner<HeadlessDocument> _copy;
  LinkMap _map;
};

/// Enters what is cloned into a translation, when there is one.
struct AliasEntry
{
  HeadlessAliasTrans* trans;

  Bool operator()(const HeadlessNamedNode& original, HeadlessNamedNode& clone) noexcept
  {
    return !trans || trans->Add(const_cast<HeadlessNamedNode*>(&original), &clone);
  }
};

}  // namespace

HeadlessAliasTrans* HeadlessAliasTrans::Create() noexcept
{
  return new (std::nothrow) HeadlessAliasTrans;
}

Bool HeadlessAliasTrans::Add(HeadlessNamedNode* original, HeadlessNamedNode* clone) noexcept
{
  Pair pair;
  return pair.original.Set(original) && pair.clone.Set(clone) && !_pairs.Append(std::move(pair)).HasError();
}

void HeadlessAliasTrans::Translate() noexcept
{
  LinkMap map;
  if (map.clones.Reserve(_pairs.GetCount()).HasError())
    return;  // without memory links keep leading to the originals
  for (const Pair& pair : _pairs)
  {
    if (pair.original.Get() && pair.clone.Get())
      DropError(map.clones.Set(pair.original.Get(), pair.clone.Get()));  // there is room
  }
  for (const Pair& pair : _pairs)
  {
    if (HeadlessNamedNode* const clone = pair.clone.Get())
      MapLinksOf(*clone, map);
  }
}

HeadlessObject* CloneObject(const HeadlessObject* object, HeadlessAliasTrans* trans) noexcept
{
  AliasEntry remember{trans};
  return CopyTree(*object, remember).release();
}

HeadlessTag* CloneTag(const HeadlessTag* tag, HeadlessAliasTrans* trans) noexcept
{
  HeadlessOwner<HeadlessTag> copy(tag->Clone());
  AliasEntry remember{trans};
  return copy && remember(*tag, *copy) ? copy.release() : nullptr;
}

HeadlessDocument* CloneDocument(const HeadlessDocument* document) noexcept
{
  return DocumentCloner(*document).Run();
}

}  // namespace q7z
