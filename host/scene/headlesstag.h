#pragma once

// Tags: what all have in common, and the kinds with data of their own except weights and pose morphs. Tags of other types are
// plain HeadlessTags and keep their name and parameters.

#include "host/scene/headlessnode.h"
#include "host/scene/headlessselection.h"
#include "host/scene/hostarray.h"
#include "plugin/module/hosttag.h"

namespace q7z
{

class HeadlessTag : public HeadlessNamedNode
{
public:
  /// A tag in no list, of the class that fits its type. count: polygons for 5711 and 5671, points for 431000045, ignored for
  /// all others. Null without memory or for a negative count.
  static HeadlessTag* Create(Int32 type, Int32 count = 0) noexcept;
  /// Whether type is one of the tags that the interface names.
  static Bool IsKnownType(Int32 type) noexcept;

  HeadlessObject* GetObject() const noexcept { return _object; }
  HeadlessTag* GetNext() const noexcept { return _next; }
  HeadlessTag* GetPrevious() const noexcept { return _previous; }
  HeadlessDocument* GetDocument() const noexcept override;

  /// To the end of the object's list, out of where it stands; the object owns it then.
  void InsertInto(HeadlessObject* object) noexcept;
  /// Out of its list; the caller owns it then.
  void Remove() noexcept { TakeOut(); }

  /// A copy in no list; bulk data is shared until written; links lead where they led. Null without memory.
  HeadlessTag* Clone() const noexcept;

protected:
  explicit HeadlessTag(Int32 type) noexcept : HeadlessNamedNode(NodeKind::kTag, type) {}
  /// Takes over what a class adds to the common part. @return false without memory.
  virtual Bool CopyDataFrom(const HeadlessTag&) noexcept { return true; }
  Bool TakeOut() noexcept override;

private:
  friend class HeadlessObject;
  static HeadlessTag* MakeEmpty(Int32 type) noexcept;

  HeadlessObject* _object = nullptr;  // not owned
  HeadlessTag* _previous = nullptr;
  HeadlessTag* _next = nullptr;
};

/// 5711 and 5671: 12 numbers a polygon, kept in 32 bits until somebody asks for more.
class HeadlessCornerTag final : public HeadlessTag
{
public:
  explicit HeadlessCornerTag(Int32 type) noexcept : HeadlessTag(type) {}

  Int GetPolygonCount() const noexcept { return (IsDouble() ? _doubles.GetCount() : _singles.GetCount()) / 12; }
  Bool IsDouble() const noexcept { return !_doubles.IsEmpty(); }
  /// All numbers become 0. @return false without memory: nothing has changed then.
  Bool Resize(Int polygonCount, Bool asDoubles = false) noexcept;

  /// needsDoubles switches to 64 bits for good. No data without memory, or when there is none.
  HostCornerHandle GetHandleW(Bool needsDoubles) noexcept;
  /// For reading, though the handle could write.
  HostCornerHandle GetHandleR() const noexcept;
  /// Replaces all numbers, 12 a polygon; at most one of the two is not empty.
  void SetNumbers(HostArray<Float32> singles, HostArray<Float> doubles) noexcept;

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;

private:
  Bool SwitchToDoubles() noexcept;

  HostArray<Float32> _singles;  // one of the two is empty
  HostArray<Float> _doubles;
};

/// 431000045: four numbers a point, or sixteen a polygon.
class HeadlessVertexColorTag final : public HeadlessTag
{
public:
  explicit HeadlessVertexColorTag(Int32 type) noexcept : HeadlessTag(type) {}

  Bool IsPerPoint() const noexcept { return _perPoint; }
  /// Points or polygons.
  Int GetCount() const noexcept { return _colors.GetCount() / (_perPoint ? 4 : 16); }
  /// All colours become (0, 0, 0, 1). @return false without memory: nothing has changed then.
  Bool Resize(Int count, Bool perPoint) noexcept;
  /// Switching sizes the data for the object that the tag is on (for none when it is on no polygon object).
  Bool SetPerPoint(Bool perPoint) noexcept;

  HostColorHandle GetHandleW() noexcept;
  HostColorHandle GetHandleR() const noexcept;
  /// Replaces all colours; the mode stays.
  void SetColors(HostArray<Float32> colors) noexcept { _colors = std::move(colors); }

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;

private:
  HostArray<Float32> _colors;
  Bool _perPoint = true;
};

/// 5673.
class HeadlessSelectionTag final : public HeadlessTag
{
public:
  explicit HeadlessSelectionTag(Int32 type) noexcept : HeadlessTag(type) {}
  HeadlessSelection& GetSelection() noexcept { return _selection; }
  const HeadlessSelection& GetSelection() const noexcept { return _selection; }

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;

private:
  HeadlessSelection _selection;
};

/// 5616.
class HeadlessTextureTag final : public HeadlessTag
{
public:
  explicit HeadlessTextureTag(Int32 type) noexcept : HeadlessTag(type) {}
  HeadlessMaterial* GetMaterial() const noexcept;
  /// Null for none. @return false without memory.
  Bool SetMaterial(HeadlessMaterial* material) noexcept;
  void VisitLinks(LinkVisitor visit, void* context) noexcept override;

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;

private:
  WeakLink _material;
};

/// 5612.
struct PhongSettings
{
  Bool on = true;
  Bool limit = false;
  Float angleRadians = 0;
  friend Bool operator==(const PhongSettings&, const PhongSettings&) noexcept = default;
};

class HeadlessPhongTag final : public HeadlessTag
{
public:
  explicit HeadlessPhongTag(Int32 type) noexcept : HeadlessTag(type) {}
  const PhongSettings& GetSettings() const noexcept { return _settings; }
  void SetSettings(const PhongSettings& settings) noexcept { _settings = settings; }

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;

private:
  PhongSettings _settings;
};

}  // namespace q7z
