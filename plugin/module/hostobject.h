#pragma once

// Scene objects: making, hierarchy, transforms, visibility, instances, cloning with links, modeling commands.

#include "framework/hostmatrix.h"
#include "framework/rotation.h"
#include "plugin/module/hostnode.h"

namespace q7z
{

class HostObjectTable
{
public:
  /// A new object of a type, in no document. Null for an unknown type or without memory. The caller owns it.
  virtual HostObject* Alloc(Int32 type) noexcept = 0;
  /// A new polygon object with that many points (all 0) and polygons (all indices 0); counts are 0 or more.
  virtual HostPolygonObject* AllocPolygonObject(Int32 pointCount, Int32 polygonCount) noexcept = 0;
  /// A copy with its tags, tracks and children, in no document. Links are carried by trans when one is given, else they keep
  /// leading where they led. Null without memory. The caller owns it.
  virtual HostObject* Clone(const HostObject* object, HostAliasTrans* trans) noexcept = 0;

protected:
  ~HostObjectTable() = default;
};

class HostHierarchyTable
{
public:
  virtual HostObject* GetNext(const HostObject* object) noexcept = 0;
  virtual HostObject* GetPrevious(const HostObject* object) noexcept = 0;
  virtual HostObject* GetUp(const HostObject* object) noexcept = 0;
  virtual HostObject* GetDown(const HostObject* object) noexcept = 0;
  /// Takes the object out of where it stands and puts it before / after other, among its siblings. The scene owns it then.
  virtual void InsertBefore(HostObject* object, HostObject* other) noexcept = 0;
  virtual void InsertAfter(HostObject* object, HostObject* other) noexcept = 0;
  /// As first / last child. A null parent leaves the object detached: it stands in no hierarchy any more, and when it came out
  /// of a document that document keeps it alive; otherwise the caller owns it.
  virtual void InsertUnder(HostObject* object, HostObject* parent) noexcept = 0;
  virtual void InsertUnderLast(HostObject* object, HostObject* parent) noexcept = 0;
  /// Detaches the object with its children; the caller owns it then.
  virtual void Remove(HostObject* object) noexcept = 0;

protected:
  ~HostHierarchyTable() = default;
};

class HostTransformTable
{
public:
  /// Relative to the parent.
  virtual HostMatrix GetLocalMatrix(const HostObject* object) noexcept = 0;
  /// Keeps the matrix as given; position, rotation and scale follow from it.
  virtual void SetLocalMatrix(HostObject* object, const HostMatrix& matrix) noexcept = 0;
  /// In world space.
  virtual HostMatrix GetGlobalMatrix(const HostObject* object) noexcept = 0;
  virtual void SetGlobalMatrix(HostObject* object, const HostMatrix& matrix) noexcept = 0;
  /// The fixed transform under the animated one, and its scale.
  virtual HostMatrix GetBaseMatrix(const HostObject* object) noexcept = 0;
  virtual Vector GetBaseScale(const HostObject* object) noexcept = 0;
  virtual Vector GetRelativePosition(const HostObject* object) noexcept = 0;
  virtual Vector GetRelativeRotation(const HostObject* object) noexcept = 0;  ///< radians, in the object's own order
  virtual Vector GetRelativeScale(const HostObject* object) noexcept = 0;
  virtual RotationOrder GetRotationOrder(const HostObject* object) noexcept = 0;

protected:
  ~HostTransformTable() = default;
};

class HostVisibilityTable
{
public:
  /// @param selector  kEditorVisibility or kRenderVisibility. @return the mode; kHiddenMode hides.
  virtual Int32 Get(const HostObject* object, Int32 selector) noexcept = 0;
  virtual void Set(HostObject* object, Int32 selector, Int32 mode) noexcept = 0;

protected:
  ~HostVisibilityTable() = default;
};

class HostInstanceTable
{
public:
  /// The object that an instance object shows, or null.
  virtual HostObject* GetReference(const HostObject* instance) noexcept = 0;
  virtual Bool SetReference(HostObject* instance, HostObject* shown) noexcept = 0;

protected:
  ~HostInstanceTable() = default;
};

/// What a modeling command works on and gives back.
struct HostModelingData
{
  HostDocument* document = nullptr;
  HostObject* object = nullptr;
  HostContainer* settings = nullptr;  ///< not owned; null for none
  Int32 mode = 0;                     ///< 0 all, 2 the polygon selection
  HostObject** results = nullptr;     ///< set by the command; owned by the host until the next command
  Int32 resultCount = 0;
};

class HostModelingTable
{
public:
  /// @return false when the command is unknown or failed; nothing has changed then.
  virtual Bool Send(Int32 command, HostModelingData& data) noexcept = 0;

protected:
  ~HostModelingTable() = default;
};

class HostAliasTable
{
public:
  virtual HostAliasTrans* Alloc() noexcept = 0;
  virtual void Free(HostAliasTrans* trans) noexcept = 0;
  virtual Bool Init(HostAliasTrans* trans, HostDocument* document) noexcept = 0;
  /// Maps links to objects inside the set cloned through trans onto their clones; leaves others alone.
  virtual void Translate(HostAliasTrans* trans) noexcept = 0;

protected:
  ~HostAliasTable() = default;
};

class HostObject : public HostNode
{
public:
  static HostObject* Alloc(Int32 type) noexcept { return g_hostTables->object->Alloc(type); }
  HostObject* Clone(HostAliasTrans* trans = nullptr) const noexcept { return g_hostTables->object->Clone(this, trans); }

  HostObject* GetNext() const noexcept { return g_hostTables->hierarchy->GetNext(this); }
  HostObject* GetPrevious() const noexcept { return g_hostTables->hierarchy->GetPrevious(this); }
  HostObject* GetUp() const noexcept { return g_hostTables->hierarchy->GetUp(this); }
  HostObject* GetDown() const noexcept { return g_hostTables->hierarchy->GetDown(this); }
  void InsertBefore(HostObject* other) noexcept { g_hostTables->hierarchy->InsertBefore(this, other); }
  void InsertAfter(HostObject* other) noexcept { g_hostTables->hierarchy->InsertAfter(this, other); }
  void InsertUnder(HostObject* parent) noexcept { g_hostTables->hierarchy->InsertUnder(this, parent); }
  void InsertUnderLast(HostObject* parent) noexcept { g_hostTables->hierarchy->InsertUnderLast(this, parent); }
  void Remove() noexcept { g_hostTables->hierarchy->Remove(this); }

  HostMatrix GetLocalMatrix() const noexcept { return g_hostTables->transform->GetLocalMatrix(this); }
  void SetLocalMatrix(const HostMatrix& matrix) noexcept { g_hostTables->transform->SetLocalMatrix(this, matrix); }
  HostMatrix GetGlobalMatrix() const noexcept { return g_hostTables->transform->GetGlobalMatrix(this); }
  void SetGlobalMatrix(const HostMatrix& matrix) noexcept { g_hostTables->transform->SetGlobalMatrix(this, matrix); }
  Vector GetRelativePosition() const noexcept { return g_hostTables->transform->GetRelativePosition(this); }
  Vector GetRelativeRotation() const noexcept { return g_hostTables->transform->GetRelativeRotation(this); }
  Vector GetRelativeScale() const noexcept { return g_hostTables->transform->GetRelativeScale(this); }
  RotationOrder GetRotationOrder() const noexcept { return g_hostTables->transform->GetRotationOrder(this); }

  Int32 GetVisibility(Int32 selector) const noexcept { return g_hostTables->visibility->Get(this, selector); }
  void SetVisibility(Int32 selector, Int32 mode) noexcept { g_hostTables->visibility->Set(this, selector, mode); }

  HostObject* GetReference() const noexcept { return g_hostTables->instance->GetReference(this); }
  Bool SetReference(HostObject* shown) noexcept { return g_hostTables->instance->SetReference(this, shown); }

  inline HostTag* GetFirstTag() const noexcept;
  inline HostTag* GetTag(Int32 type, Int32 index = 0) const noexcept;
  inline Int32 GetTagCount(Int32 type) const noexcept;
  inline Bool InsertTag(HostTag* tag) noexcept;
  inline HostTag* MakeTag(Int32 type, Int32 count = 0) noexcept;
  inline Bool SetLayer(HostLayer* layer) noexcept;

protected:
  HostObject() noexcept = default;
  ~HostObject() = default;
};

inline HostMatrix HostObjectGetBaseMatrix(const HostObject* op) noexcept { return g_hostTables->transform->GetBaseMatrix(op); }
inline Vector HostObjectGetBaseScale(const HostObject* op) noexcept { return g_hostTables->transform->GetBaseScale(op); }
inline HostObject* HostAllocObject(Int32 type) noexcept { return HostObject::Alloc(type); }
inline void HostInsertUnder(HostObject* object, HostObject* parent) noexcept { object->InsertUnder(parent); }
inline void HostRemove(HostObject* object) noexcept { object->Remove(); }
inline Bool SendModelingCommand(Int32 command, HostModelingData& data) noexcept
{
  return g_hostTables->modeling->Send(command, data);
}

/// Carries links from originals to their clones over several clone calls.
class HostAliasTrans
{
public:
  static HostAliasTrans* Alloc() noexcept { return g_hostTables->alias->Alloc(); }
  static void Free(HostAliasTrans* trans) noexcept
  {
    if (trans)
      g_hostTables->alias->Free(trans);
  }
  Bool Init(HostDocument* document) noexcept { return g_hostTables->alias->Init(this, document); }
  void Translate() noexcept { g_hostTables->alias->Translate(this); }

protected:
  HostAliasTrans() noexcept = default;
  ~HostAliasTrans() = default;
};

}  // namespace q7z

#include "plugin/module/hosttag.h"
