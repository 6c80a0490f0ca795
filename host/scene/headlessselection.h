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

  const BaseArray<SelectionRange>& GetRanges() const noexcept { return _ranges; }
  Bool IsEmpty() const noexcept { return _ranges.IsEmpty(); }
  Bool IsSelected(Int32 index) const noexcept;
  /// The number of selected elements, at most the largest 32-bit number.
  Int32 GetCount() const noexcept;

private:
  BaseArray<SelectionRange> _ranges;
};

}  // namespace q7z
