#include "host/scene/headlessalias.h"
#include "host/scene/tablefamilies.h"

namespace q7z
{

namespace
{

class SceneObjectTable final : public HostObjectTable
{
public:
  HostObject* Alloc(Int32 type) noexcept override
  {
    return HeadlessObject::IsKnownType(type) ? ToHost(HeadlessObject::Create(type)) : nullptr;
  }
  HostPolygonObject* AllocPolygonObject(Int32 pointCount, Int32 polygonCount) noexcept override
  {
    return ToHost(HeadlessPolygonObject::Create(pointCount, polygonCount));
  }
  HostObject* Clone(const HostObject* object, HostAliasTrans* trans) noexcept override
  {
    return ToHost(CloneObject(ToHeadless(object), ToHeadless(trans)));
  }
};

class SceneHierarchyTable final : public HostHierarchyTable
{
public:
  HostObject* GetNext(const HostObject* object) noexcept override { return ToHost(ToHeadless(object)->GetNext()); }
  HostObject* GetPrevious(const HostObject* object) noexcept override { return ToHost(ToHeadless(object)->GetPrevious()); }
  HostObject* GetUp(const HostObject* object) noexcept override { return ToHost(ToHeadless(object)->GetUp()); }
  HostObject* GetDown(const HostObject* object) noexcept override { return ToHost(ToHeadless(object)->GetDown()); }
  void InsertBefore(HostObject* object, HostObject* other) noexcept override
  {
    ToHeadless(object)->InsertBefore(ToHeadless(other));
  }
  void InsertAfter(HostObject* object, HostObject* other) noexcept override
  {
    ToHeadless(object)->InsertAfter(ToHeadless(other));
  }
  void InsertUnder(HostObject* object, HostObject* parent) noexcept override
  {
    ToHeadless(object)->InsertUnder(ToHeadless(parent));
  }
  void InsertUnderLast(HostObject* object, HostObject* parent) noexcept override
  {
    ToHeadless(object)->InsertUnderLast(ToHeadless(parent));
  }
  void Remove(HostObject* object) noexcept override { ToHeadless(object)->Remove(); }
};

class SceneTransformTable final : public HostTransformTable
{
public:
  HostMatrix GetLocalMatrix(const HostObject* object) noexcept override { return ToHeadless(object)->GetLocalMatrix(); }
  void SetLocalMatrix(HostObject* object, const HostMatrix& matrix) noexcept override
  {
    ToHeadless(object)->SetLocalMatrix(matrix);
  }
  HostMatrix GetGlobalMatrix(const HostObject* object) noexcept override { return ToHeadless(object)->GetGlobalMatrix(); }
  void SetGlobalMatrix(HostObject* object, const HostMatrix& matrix) noexcept override
  {
    ToHeadless(object)->SetGlobalMatrix(matrix);
  }
  HostMatrix GetBaseMatrix(const HostObject* object) noexcept override { return ToHeadless(object)->GetBase().matrix; }
  Vector GetBaseScale(const HostObject* object) noexcept override { return ToHeadless(object)->GetBase().scale; }
  Vector GetRelativePosition(const HostObject* object) noexcept override { return ToHeadless(object)->GetVectors().position; }
  Vector GetRelativeRotation(const HostObject* object) noexcept override { return ToHeadless(object)->GetVectors().rotation; }
  Vector GetRelativeScale(const HostObject* object) noexcept override { return ToHeadless(object)->GetScale(); }
  RotationOrder GetRotationOrder(const HostObject* object) noexcept override { return ToHeadless(object)->GetRotationOrder(); }
};

class SceneVisibilityTable final : public HostVisibilityTable
{
public:
  Int32 Get(const HostObject* object, Int32 selector) noexcept override { return ToHeadless(object)->GetVisibility(selector); }
  void Set(HostObject* object, Int32 selector, Int32 mode) noexcept override
  {
    ToHeadless(object)->SetVisibility(selector, mode);
  }
};

class SceneInstanceTable final : public HostInstanceTable
{
public:
  HostObject* GetReference(const HostObject* instance) noexcept override { return ToHost(ToHeadless(instance)->GetReference()); }
  Bool SetReference(HostObject* instance, HostObject* shown) noexcept override
  {
    return ToHeadless(instance)->SetReference(ToHeadless(shown));
  }
};

class SceneAliasTable final : public HostAliasTable
{
public:
  HostAliasTrans* Alloc() noexcept override { return ToHost(HeadlessAliasTrans::Create()); }
  void Free(HostAliasTrans* trans) noexcept override { delete ToHeadless(trans); }
  Bool Init(HostAliasTrans*, HostDocument*) noexcept override { return true; }
  void Translate(HostAliasTrans* trans) noexcept override { ToHeadless(trans)->Translate(); }
};

}  // namespace

void FillObjectTables(HostTables& tables) noexcept
{
  static SceneObjectTable object;
  static SceneHierarchyTable hierarchy;
  static SceneTransformTable transform;
  static SceneVisibilityTable visibility;
  static SceneInstanceTable instance;
  static SceneAliasTable alias;
  tables.object = &object;
  tables.hierarchy = &hierarchy;
  tables.transform = &transform;
  tables.visibility = &visibility;
  tables.instance = &instance;
  tables.alias = &alias;
}

}  // namespace q7z
