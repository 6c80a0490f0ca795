#include "host/scene/headlessalias.h"
#include "host/scene/headlesstag.h"
#include "host/scene/tablefamilies.h"

namespace q7z
{

namespace
{

class SceneTagTable final : public HostTagTable
{
public:
  HostTag* Alloc(Int32 type, Int32 count) noexcept override
  {
    return HeadlessTag::IsKnownType(type) ? ToHost(HeadlessTag::Create(type, count)) : nullptr;
  }
  HostTag* Clone(const HostTag* tag, HostAliasTrans* trans) noexcept override
  {
    return ToHost(CloneTag(ToHeadless(tag), ToHeadless(trans)));
  }
  Bool Insert(HostObject* object, HostTag* tag) noexcept override
  {
    if (!object || !tag)
      return false;
    ToHeadless(tag)->InsertInto(ToHeadless(object));
    return true;
  }
  void Remove(HostTag* tag) noexcept override { ToHeadless(tag)->Remove(); }
  HostTag* GetFirst(const HostObject* object) noexcept override { return ToHost(ToHeadless(object)->GetFirstTag()); }
  HostTag* GetNext(const HostTag* tag) noexcept override { return ToHost(ToHeadless(tag)->GetNext()); }
  HostTag* Find(const HostObject* object, Int32 type, Int32 index) noexcept override
  {
    return ToHost(ToHeadless(object)->FindTag(type, index));
  }
  Int32 GetCount(const HostObject* object, Int32 type) noexcept override { return ToHeadless(object)->GetTagCount(type); }
  HostObject* GetObject(const HostTag* tag) noexcept override { return ToHost(ToHeadless(tag)->GetObject()); }
};

class SceneNormalTable final : public HostNormalTable
{
public:
  HostCornerHandle GetHandleW(HostNormalTag* tag, Bool needsDoubles) noexcept override
  {
    return ToHeadless(tag)->GetHandleW(needsDoubles);
  }
  HostCornerHandle GetHandleR(const HostNormalTag* tag) noexcept override { return ToHeadless(tag)->GetHandleR(); }
};

class SceneUvwTable final : public HostUvwTable
{
public:
  HostCornerHandle GetHandleW(HostUvwTag* tag, Bool needsDoubles) noexcept override
  {
    return ToHeadless(tag)->GetHandleW(needsDoubles);
  }
  HostCornerHandle GetHandleR(const HostUvwTag* tag) noexcept override { return ToHeadless(tag)->GetHandleR(); }
};

class SceneVertexColorTable final : public HostVertexColorTable
{
public:
  Bool IsPerPoint(const HostVertexColorTag* tag) noexcept override { return ToHeadless(tag)->IsPerPoint(); }
  Bool SetPerPoint(HostVertexColorTag* tag, Bool perPoint) noexcept override { return ToHeadless(tag)->SetPerPoint(perPoint); }
  HostColorHandle GetHandleW(HostVertexColorTag* tag) noexcept override { return ToHeadless(tag)->GetHandleW(); }
  HostColorHandle GetHandleR(const HostVertexColorTag* tag) noexcept override { return ToHeadless(tag)->GetHandleR(); }
};

class SceneSelectionTable final : public HostSelectionTable
{
public:
  HostSelection* GetTagSelection(HostPolygonSelectionTag* tag) noexcept override
  {
    return ToHost(&ToHeadless(tag)->GetSelection());
  }
  HostSelection* GetPolygonSelection(HostPolygonObject* object) noexcept override
  {
    return ToHost(&ToHeadless(object)->GetPolygonSelection());
  }
  Bool SelectRange(HostSelection* selection, Int32 first, Int32 last) noexcept override
  {
    return ToHeadless(selection)->SelectRange(first, last);
  }
  Bool CopyTo(const HostSelection* selection, HostSelection* target) noexcept override
  {
    return ToHeadless(target)->CopyFrom(*ToHeadless(selection));
  }
  Int32 GetCount(const HostSelection* selection) noexcept override { return ToHeadless(selection)->GetCount(); }
  Bool IsSelected(const HostSelection* selection, Int32 index) noexcept override
  {
    return ToHeadless(selection)->IsSelected(index);
  }
};

class SceneTextureTable final : public HostTextureTable
{
public:
  HostMaterial* GetMaterial(const HostTextureTag* tag) noexcept override { return ToHost(ToHeadless(tag)->GetMaterial()); }
  /// Without memory for the link the tag keeps its material.
  void SetMaterial(HostTextureTag* tag, HostMaterial* material) noexcept override
  {
    ToHeadless(tag)->SetMaterial(ToHeadless(material));
  }
};

/// A node-based tag is its own node master and the root of it: what is set on the root are the tag's parameters.
class SceneNodeMasterTable final : public HostNodeMasterTable
{
public:
  HostNodeMaster* GetMaster(const HostTag* tag) noexcept override
  {
    const Bool isNodeBased = tag && ToHeadless(tag)->GetType() == kNodeBasedTagType;
    return isNodeBased ? reinterpret_cast<HostNodeMaster*>(const_cast<HostTag*>(tag)) : nullptr;
  }
  HostNode* GetRoot(const HostNodeMaster* master) noexcept override
  {
    return const_cast<HostNode*>(reinterpret_cast<const HostNode*>(master));
  }
};

}  // namespace

void FillTagTables(HostTables& tables) noexcept
{
  static SceneTagTable tag;
  static SceneNormalTable normal;
  static SceneUvwTable uvw;
  static SceneVertexColorTable vertexColor;
  static SceneSelectionTable selection;
  static SceneTextureTable texture;
  static SceneNodeMasterTable nodeMaster;
  tables.tag = &tag;
  tables.normal = &normal;
  tables.uvw = &uvw;
  tables.vertexColor = &vertexColor;
  tables.selection = &selection;
  tables.texture = &texture;
  tables.nodeMaster = &nodeMaster;
}

}  // namespace q7z
