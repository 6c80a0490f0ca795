#pragma once

// HeadlessWeightTag, type 1019365: joints by link, for each the weights of points, and the bind pose.

#include "framework/hostmatrix.h"
#include "framework/spinlock.h"
#include "host/scene/headlesstag.h"

namespace q7z
{

struct PointWeight
{
  Int32 point = 0;
  Int32 order = 0;  ///< of setting, among the weights that are not sorted yet; 0 for those that are
  Float weight = 0;

  constexpr PointWeight() noexcept = default;
  constexpr PointWeight(Int32 thePoint, Float theWeight) noexcept : point(thePoint), weight(theWeight) {}
  friend Bool operator==(const PointWeight& a, const PointWeight& b) noexcept
  {
    return a.point == b.point && a.weight == b.weight;
  }
};

/// The weights of one joint. Weights set in rising order of points are appended; others wait unsorted behind them until somebody
/// reads, so that any order costs little.
class JointWeights
{
public:
  /// @return false without memory.
  Bool Set(Int32 point, Float weight) noexcept;
  Float Get(Int32 point) const noexcept;
  /// One entry a point, in rising order; weights of 0 may be among them.
  const BaseArray<PointWeight>& GetSorted() const noexcept;
  Bool CopyFrom(const JointWeights& other) noexcept;
  /// Replaces all weights; one entry a point, in rising order.
  void SetSorted(BaseArray<PointWeight> entries) noexcept;

private:
  PointWeight* FindSorted(Int32 point) const noexcept;
  Float GetUnsettled(Int32 point) const noexcept;
  void SettleLocked() const noexcept;

  mutable BaseArray<PointWeight> _entries;
  mutable Int _sortedCount = 0;              // entries from here on are in the order of their setting
  mutable std::atomic<Bool> _settled{true};  // there are none of those
  mutable SpinLock _lock;                    // of settling by one of several readers
};

class HeadlessWeightTag final : public HeadlessTag
{
public:
  explicit HeadlessWeightTag(Int32 type) noexcept : HeadlessTag(type) {}

  /// @return the joint's index, or -1 without memory or for null. A joint that is added twice is there twice.
  Int32 AddJoint(HeadlessObject* joint) noexcept;
  Int32 GetJointCount() const noexcept { return static_cast<Int32>(_joints.GetCount()); }
  /// Null for an index out of range, and for a joint that was freed.
  HeadlessObject* GetJoint(Int32 jointIndex) const noexcept;

  Float GetWeight(Int32 jointIndex, Int32 pointIndex) const noexcept;
  /// The weights of count points from firstPoint on.
  void CopyWeights(Int32 jointIndex, Int32 firstPoint, Int32 count, Float* weights) const noexcept;
  /// @return false for an index out of range (points are those of the object that the tag is on) or without memory.
  Bool SetWeight(Int32 jointIndex, Int32 pointIndex, Float weight) noexcept;
  /// The same for many, in their order; the first that fails ends it.
  Bool SetWeights(const HostPointWeight* weights, Int32 count) noexcept;
  /// The joint's weights in point order, those of 0 included; jointIndex is in range.
  const BaseArray<PointWeight>& GetWeights(Int32 jointIndex) const noexcept { return _joints[jointIndex]->weights.GetSorted(); }

  /// Replaces the weights of a joint in range; one entry a point, in rising order.
  void SetWeights(Int32 jointIndex, BaseArray<PointWeight> sorted) noexcept
  {
    _joints[jointIndex]->weights.SetSorted(std::move(sorted));
  }

  Bool HasBindPose() const noexcept { return _hasBindPose; }
  const HostMatrix& GetObjectBindMatrix() const noexcept { return _objectBind; }
  /// The identity for an index out of range.
  HostMatrix GetJointBindMatrix(Int32 jointIndex) const noexcept;
  /// Global matrices of the object and of each joint, as many as there are joints. @return false for another number.
  Bool SetBindPose(const HostMatrix& object, const HostMatrix* joints, Int jointCount) noexcept;
  /// Takes the present state; false when the tag is on no object. A joint that was freed counts as the identity.
  Bool TakeBindPose() noexcept;

  void VisitLinks(LinkVisitor visit, void* context) noexcept override;

protected:
  Bool CopyDataFrom(const HeadlessTag& other) noexcept override;

private:
  struct Joint
  {
    WeakLink object;
    JointWeights weights;
    HostMatrix bind;
  };
  Joint* FindJoint(Int32 jointIndex) const noexcept;

  BaseArray<std::unique_ptr<Joint>> _joints;
  HostMatrix _objectBind;
  Bool _hasBindPose = false;
};

}  // namespace q7z
