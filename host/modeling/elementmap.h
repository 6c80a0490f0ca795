#pragma once

// ElementMap: what becomes of the points or of the polygons of an object when a modeling command gives them new numbers. The order
// of the elements stays; each may stay one, go, or become several that take its place. Built by a command and used while it runs.

#include <algorithm>

#include "host/scene/hostarray.h"

namespace q7z
{

class ElementMap
{
public:
  /// Maps each of count elements to itself.
  explicit ElementMap(Int32 count = 0) noexcept : _oldCount(count), _newCount(count) {}

  /// countOf(old) is the number of elements, 0 or more, that an element becomes; it is asked once for each, in rising order.
  /// @return false without memory, or when the elements are too many for 32 bits; of no use then.
  template <typename CountOf>
  [[nodiscard]] Bool Build(Int32 oldCount, CountOf&& countOf) noexcept
  {
    if (!_starts.Create(Int(oldCount) + 1))
      return false;
    Int32* const starts = _starts.GetW();
    Int total = 0;
    Bool isIdentity = true;
    for (Int32 old = 0; old < oldCount; ++old)
    {
      const Int count = countOf(old);
      isIdentity = isIdentity && count == 1;
      total += count;
      if (total > INT32_MAX)
        return false;
      starts[old + 1] = static_cast<Int32>(total);
    }
    _oldCount = oldCount;
    _newCount = static_cast<Int32>(total);
    if (isIdentity)
      _starts.Reset();
    return true;
  }

  Int32 GetOldCount() const noexcept { return _oldCount; }
  Int32 GetNewCount() const noexcept { return _newCount; }
  /// Whether every element stays and keeps its number.
  Bool IsIdentity() const noexcept { return _starts.IsEmpty(); }

  /// How many new elements those before old become; old may lie outside the object.
  Int32 GetStart(Int old) const noexcept
  {
    const Int inside = std::clamp<Int>(old, 0, _oldCount);
    return IsIdentity() ? static_cast<Int32>(inside) : _starts.GetR()[inside];
  }

  /// The (first) new number of an element, -1 for one that goes or lies outside the object.
  Int32 Find(Int32 old) const noexcept
  {
    if (old < 0 || old >= _oldCount)
      return -1;
    const Int32 start = GetStart(old);
    return GetStart(Int(old) + 1) > start ? start : -1;
  }

  /// Neighbours that become equally many elements each.
  struct Run
  {
    Int first;  ///< old number
    Int count;
    Int start;  ///< new number of the first
    Int32 each;
  };
  /// Calls visit(run) for the first oldCount elements in rising order; runs that go are left out.
  template <typename Visit>
  void VisitRuns(Int oldCount, Visit&& visit) const noexcept
  {
    const Int end = std::min<Int>(oldCount, _oldCount);
    if (IsIdentity())
    {
      if (end > 0)
        visit(Run{0, end, 0, 1});
      return;
    }
    const Int32* const starts = _starts.GetR();
    for (Int first = 0, next = 0; first < end; first = next)
    {
      const Int32 each = starts[first + 1] - starts[first];
      for (next = first + 1; next < end && starts[next + 1] - starts[next] == each; ++next)
      {}
      if (each > 0)
        visit(Run{first, next - first, starts[first], each});
    }
  }

private:
  HostArray<Int32> _starts;  // by old number, and the total behind; empty when every element keeps its number
  Int32 _oldCount;
  Int32 _newCount;
};

}  // namespace q7z
