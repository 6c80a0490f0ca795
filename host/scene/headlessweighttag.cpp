#include "host/scene/headlessweighttag.h"

#include <algorithm>
#include <new>

#include "host/scene/headlessobject.h"

namespace q7z
{

namespace
{

constexpr Int kFewUnsorted = 64;

// More than there are sorted ones, too, and they are sorted while setting: they may all be of the same few points.
constexpr Int kManyUnsorted = 4096;

Bool IsBefore(const PointWeight& a, const PointWeight& b) noexcept
{
  return a.point != b.point ? a.point < b.point : a.order < b.order;
}

}  // namespace

PointWeight* JointWeights::FindSorted(Int32 point) const noexcept
{
  PointWeight* const end = _entries.begin() + _sortedCount;
  PointWeight* const found = std::lower_bound(_entries.begin(), end, PointWeight{point, 0}, IsBefore);
  return found != end && found->point == point ? found : nullptr;
}

Bool JointWeights::Set(Int32 point, Float weight) noexcept
{
  if (_entries.GetCount() - _sortedCount > std::max(kManyUnsorted, _sortedCount))
    SettleLocked();  // nobody reads meanwhile
  const Int count = _entries.GetCount();
  const Bool isSorted = _sortedCount == count;
  const Bool isBehind = isSorted && (count == 0 || _entries.GetLast().point < point);
  if (isSorted && !isBehind)
  {
    if (PointWeight* const found = FindSorted(point))
    {
      found->weight = weight;
      return true;
    }
  }
  if (count >= INT32_MAX || _entries.Append({point, weight}).HasError())
    return false;
  if (isBehind)
  {
    ++_sortedCount;
    return true;
  }
  _entries.GetLast().order = static_cast<Int32>(count - _sortedCount + 1);
  _settled.store(false, std::memory_order_release);
  return true;
}

Float JointWeights::Get(Int32 point) const noexcept
{
  if (!_settled.load(std::memory_order_acquire))
    return GetUnsettled(point);
  const PointWeight* const found = FindSorted(point);
  return found ? found->weight : 0;
}

/// While few weights wait to be sorted they are looked through, so that setting and getting in turns stays cheap.
Float JointWeights::GetUnsettled(Int32 point) const noexcept
{
  const SpinLockGuard guard(_lock);
  if (_entries.GetCount() - _sortedCount > kFewUnsorted)
    SettleLocked();
  // Of several weights of a point the one that was set last counts.
  for (Int i = _entries.GetCount(); i > _sortedCount; --i)
  {
    if (_entries[i - 1].point == point)
      return _entries[i - 1].weight;
  }
  const PointWeight* const found = FindSorted(point);
  return found ? found->weight : 0;
}

const BaseArray<PointWeight>& JointWeights::GetSorted() const noexcept
{
  if (!_settled.load(std::memory_order_acquire))
  {
    const SpinLockGuard guard(_lock);
    SettleLocked();
  }
  return _entries;
}

void JointWeights::SettleLocked() const noexcept
{
  std::sort(_entries.begin(), _entries.end(), IsBefore);  // in place, since this must not fail
  Int kept = 0;
  for (Int i = 0; i < _entries.GetCount(); ++i)
  {
    // Of several weights of a point the one that was set last counts.
    if (i + 1 < _entries.GetCount() && _entries[i + 1].point == _entries[i].point)
      continue;
    _entries[kept] = _entries[i];
    _entries[kept++].order = 0;
  }
  _entries.Truncate(kept);
  _sortedCount = kept;
  _settled.store(true, std::memory_order_release);
}

Bool JointWeights::CopyFrom(const JointWeights& other) noexcept
{
  if (_entries.CopyFrom(other.GetSorted()).HasError())
    return false;
  _sortedCount = _entries.GetCount();
  return true;
}

void JointWeights::SetSorted(BaseArray<PointWeight> entries) noexcept
{
  _entries = std::move(entries);
  _sortedCount = _entries.GetCount();
  _settled.store(true, std::memory_order_release);
}

HeadlessWeightTag::Joint* HeadlessWeightTag::FindJoint(Int32 jointIndex) const noexcept
{
  return jointIndex >= 0 && jointIndex < GetJointCount() ? _joints[jointIndex].get() : nullptr;
}

Int32 HeadlessWeightTag::AddJoint(HeadlessObject* joint) noexcept
{
  std::unique_ptr<Joint> added(joint ? new (std::nothrow) Joint : nullptr);
  if (!added || !added->object.Set(joint) || _joints.GetCount() >= INT32_MAX)
    return -1;
  if (_joints.Append(std::move(added)).HasError())
    return -1;
  return GetJointCount() - 1;
}

HeadlessObject* HeadlessWeightTag::GetJoint(Int32 jointIndex) const noexcept
{
  const Joint* const joint = FindJoint(jointIndex);
  return joint ? joint->object.GetAs<HeadlessObject>() : nullptr;
}

Float HeadlessWeightTag::GetWeight(Int32 jointIndex, Int32 pointIndex) const noexcept
{
  const Joint* const joint = FindJoint(jointIndex);
  return joint ? joint->weights.Get(pointIndex) : 0;
}

void HeadlessWeightTag::CopyWeights(Int32 jointIndex, Int32 firstPoint, Int32 count, Float* weights) const noexcept
{
  std::fill_n(weights, count, 0.0);
  const Joint* const joint = FindJoint(jointIndex);
  if (!joint)
    return;
  const BaseArray<PointWeight>& sorted = joint->weights.GetSorted();
  const PointWeight* entry = std::lower_bound(sorted.begin(), sorted.end(), PointWeight{firstPoint, 0}, IsBefore);
  for (; entry != sorted.end() && entry->point - firstPoint < count; ++entry)
    weights[entry->point - firstPoint] = entry->weight;
}

Bool HeadlessWeightTag::SetWeight(Int32 jointIndex, Int32 pointIndex, Float weight) noexcept
{
  const HostPointWeight entry{jointIndex, pointIndex, weight};
  return SetWeights(&entry, 1);
}

Bool HeadlessWeightTag::SetWeights(const HostPointWeight* weights, Int32 count) noexcept
{
  const HeadlessPolygonObject* const object = GetObject() ? GetObject()->AsPolygonObject() : nullptr;
  const Int pointEnd = object ? Int(object->GetPointCount()) : Int(INT32_MAX) + 1;
  for (Int32 i = 0; i < count; ++i)
  {
    const HostPointWeight& entry = weights[i];
    Joint* const joint = FindJoint(entry.joint);
    if (!joint || entry.point < 0 || entry.point >= pointEnd || !joint->weights.Set(entry.point, entry.weight))
      return false;
  }
  return true;
}

HostMatrix HeadlessWeightTag::GetJointBindMatrix(Int32 jointIndex) const noexcept
{
  const Joint* const joint = FindJoint(jointIndex);
  return joint ? joint->bind : HostMatrix();
}

Bool HeadlessWeightTag::SetBindPose(const HostMatrix& object, const HostMatrix* joints, Int jointCount) noexcept
{
  if (jointCount != GetJointCount())
    return false;
  for (Int i = 0; i < jointCount; ++i)
    _joints[i]->bind = joints[i];
  _objectBind = object;
  _hasBindPose = true;
  return true;
}

Bool HeadlessWeightTag::TakeBindPose() noexcept
{
  if (!GetObject())
    return false;
  for (const std::unique_ptr<Joint>& joint : _joints)
  {
    const HeadlessObject* const object = joint->object.GetAs<HeadlessObject>();
    joint->bind = object ? object->GetGlobalMatrix() : HostMatrix();
  }
  _objectBind = GetObject()->GetGlobalMatrix();
  _hasBindPose = true;
  return true;
}

void HeadlessWeightTag::VisitLinks(LinkVisitor visit, void* context) noexcept
{
  HeadlessNode::VisitLinks(visit, context);
  for (const std::unique_ptr<Joint>& joint : _joints)
    visit(context, joint->object);
}

Bool HeadlessWeightTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  const auto& source = static_cast<const HeadlessWeightTag&>(other);
  for (const std::unique_ptr<Joint>& joint : source._joints)
  {
    std::unique_ptr<Joint> copy(new (std::nothrow) Joint);
    if (!copy || !copy->weights.CopyFrom(joint->weights))
      return false;
    copy->object = joint->object;
    copy->bind = joint->bind;
    if (_joints.Append(std::move(copy)).HasError())
      return false;
  }
  _objectBind = source._objectBind;
  _hasBindPose = source._hasBindPose;
  return true;
}

}  // namespace q7z
