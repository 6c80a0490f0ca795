#pragma once

// HeadlessSelection: a set of element numbers as inclusive ranges that rise, do not touch and do not overlap.

#include "framework/basearray.h"

namespace q7z
{

struct SelectionRange
{
  Int32 first = 0;
  Int32 last = 0;  ///< included
  friend Bool operator==(const SelectionRange&, const SelectionRange&) noexcept = default;
};

class HeadlessSelection
{
public:
  /// Adds first to last, both included. @return false for first > last, a negative number, or without memory: nothing has
  /// changed then.
  Bool SelectRange(Int32 first, Int32 last) noexcept;
  void Clear() noexcept { _ranges.Reset(); }
  /// @return false without memory: nothing has changed then.
  Bool CopyFrom(const HeadlessSelection& other) noexcept;

  /// Gives the elements new numbers in place, without a need for memory. start(n), for a 64-bit n, is how many new elements those
  /// before n become; it never falls.
  template <typename Start>
  void Renumber(Start&& start) noexcept
  {
    Int kept = 0;
    for (Int i = 0; i < _ranges.GetCount(); ++i)
    {
      const Int32 first = start(Int(_ranges[i].first));
      const Int32 end = start(Int(_ranges[i].last) + 1);
      if (first == end)
        continue;
      if (kept > 0 && _ranges[kept - 1].last == first - 1)
        _ranges[kept - 1].last = end - 1;
      else
        _ranges[kept++] = {first, end - 1};
    }
    _ranges.Truncate(kept);
  }

  const BaseArray<SelectionRange>& GetRanges() const noexcept { return _ranges; }
  Bool IsEmpty() const noexcept { return _ranges.IsEmpty(); }
  Bool IsSelected(Int32 index) const noexcept;
  /// The number of selected elements, at most the largest 32-bit number.
  Int32 GetCount() const noexcept;

private:
  BaseArray<SelectionRange> _ranges;
};

}  // namespace q7z
