#include "host/scene/headlessselection.h"

#include <algorithm>

namespace q7z
{

Bool HeadlessSelection::SelectRange(Int32 first, Int32 last) noexcept
{
  if (first < 0 || first > last)
    return false;
  // The ranges [begin, end) touch or overlap the new one: they become one with it. Differences avoid an overflow at the top.
  SelectionRange* const begin =
    std::lower_bound(_ranges.begin(), _ranges.end(), first,
                     [](const SelectionRange& range, Int32 value) { return range.last < value && value - range.last > 1; });
  SelectionRange* end = begin;
  while (end != _ranges.end() && (end->first <= last || end->first - last == 1))
    ++end;
  if (begin == end)
  {
    const Int place = begin - _ranges.begin();
    if (_ranges.Append({first, last}).HasError())
      return false;
    std::rotate(_ranges.begin() + place, _ranges.end() - 1, _ranges.end());
    return true;
  }
  begin->first = std::min(begin->first, first);
  begin->last = std::max((end - 1)->last, last);
  SelectionRange* const rest = std::move(end, _ranges.end(), begin + 1);
  _ranges.Truncate(rest - _ranges.begin());
  return true;
}

Bool HeadlessSelection::CopyFrom(const HeadlessSelection& other) noexcept
{
  return this == &other || !_ranges.CopyFrom(other._ranges).HasError();
}

Bool HeadlessSelection::IsSelected(Int32 index) const noexcept
{
  const SelectionRange* const found =
    std::lower_bound(_ranges.begin(), _ranges.end(), index,
                     [](const SelectionRange& range, Int32 value) { return range.last < value; });
  return found != _ranges.end() && found->first <= index;
}

Int32 HeadlessSelection::GetCount() const noexcept
{
  Int count = 0;
  for (const SelectionRange& range : _ranges)
    count += Int(range.last) - range.first + 1;
  return static_cast<Int32>(std::min<Int>(count, INT32_MAX));
}

}  // namespace q7z
