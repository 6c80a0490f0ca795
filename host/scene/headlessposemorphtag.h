#pragma once

// HeadlessPoseMorphTag, type 1024237: other shapes of the object that it is on. A morph either keeps points of its own or links
// to an object of the document. The strengths are parameters of the tag, with the ids (4000, morph index * 100 + 1001).

#include "host/scene/headlesstag.h"

namespace q7z
{

/// The points that a morph keeps.
class HeadlessPointNode
{
public:
  const HostArray<Vector>& GetPoints() const noexcept { return _points; }
  void SetPoints(HostArray<Vector> points) noexcept { _points = std::move(points); }

private:
  HostArray<Vector> _points;
};

class HeadlessMorph
{
public:
  HeadlessMorph(const HeadlessPoseMorphTag* tag, Int32 index) noexcept : _tag(tag), _index(index) {}

  const HeadlessPoseMorphTag* GetTag() const noexcept { return _tag; }
  Int32 GetIndex() const noexcept { return _index; }
  const String& GetName() const noexcept { return _name; }
  /// Keeps a copy. @return false without memory.
  Bool SetName(const String& name) noexcept;
  Float GetStrength() const noexcept { return _strength; }
  void SetStrength(Float strength) noexcept { _strength = strength; }

  /// The object whose points the morph shows; null for a morph that keeps its own, and when that object was freed.
  HeadlessObject* GetObject() const noexcept;
  /// Links to the object and drops points of its own. @return false without memory.
  Bool SetObject(HeadlessObject* object) noexcept;
  /// Null for a morph without points of its own.
  HeadlessPointNode* GetPointNode() noexcept { return _hasPoints ? &_pointNode : nullptr; }
  const HeadlessPointNode* GetPointNode() const noexcept { return _hasPoints ? &_pointNode : nullptr; }
  /// Keeps the points and drops the link.
  void SetPoints(HostArray<Vector> points) noexcept;

  WeakLink& GetLink() noexcept { return _object; }
  void CopyFrom(const HeadlessMorph& other) noexcept;

private:
  const HeadlessPoseMorphTag* _tag;  // not owned
  Int32 _index;
  String _name;
  Float _strength = 0;
  WeakLink _object;
  HeadlessPointNode _pointNode;
  Bool _hasPoints = false;
};

class HeadlessPoseMorphTag final : public HeadlessTag
{
public:
  static constexpr Int32 kStrengthParameter = 4000;

  explicit HeadlessPoseMorphTag(Int32 type) noexcept : HeadlessTag(type) {}

  /// With the base pose, morph 0.
  Int32 GetMorphCount() const noexcept { return static_cast<Int32>(_morphs.GetCount()); }
  /// Null for an index out of range.
  HeadlessMorph* GetMorph(Int32 index) const noexcept;
  /// At the end. Null without memory.
  HeadlessMorph* AddMorph() noexcept;

  /// Into morph 0: takes the object's points over and frees the object. Into another: links to the object.
  /// @return false when the morph is not the tag's, the object no polygon object, or without memory; nothing has changed then.
  Bool StoreObject(HeadlessMorph* morph, HeadlessObject* object) noexcept;

  /// The id of a morph's strength, with data types.
  static HostDescId GetStrengthId(Int32 index) noexcept;

  void EnterEdit() noexcept { _editing = true; }
  /// @return false when nobody was editing.
  Bool ExitEdit() noexcept { return std::exchange(_editing, false); }

  void VisitLinks(LinkVisitor visit, void* context) noexcept override;

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;
  ParameterAnswer GetOwnParameter(const HostDescId& id, HostValue& value) const noexcept override;
  ParameterAnswer SetOwnParameter(const HostDescId& id, const HostValue& value) noexcept override;

private:
  HeadlessMorph* FindByStrengthId(const HostDescId& id) const noexcept;

  BaseArray<std::unique_ptr<HeadlessMorph>> _morphs;
  Bool _editing = false;
};

}  // namespace q7z
