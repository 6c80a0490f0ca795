#pragma once

// The keys of one sampler on their way from the host's curves into a file. Flat arrays: one allocation however many keys there are.
// They live for the writing of one sampler.

#include "framework/basearray.h"

namespace q7z
{

/// The numbers of one key, owned by the list that they stand in.
class KeyNumbers
{
public:
  KeyNumbers(const Float* numbers, Int count) noexcept : _numbers(numbers), _count(count) {}
  Int GetCount() const noexcept { return _count; }
  Float operator[](Int index) const noexcept { return _numbers[index]; }

private:
  const Float* _numbers;
  Int _count;
};

/// A key's time in seconds and its values.
struct Keyframe
{
  Float first;
  KeyNumbers second;
};

class Keyframes
{
public:
  Int GetCount() const noexcept { return _seconds.GetCount(); }
  Bool IsPopulated() const noexcept { return _seconds.IsPopulated(); }
  Keyframe operator[](Int key) const noexcept { return {_seconds[key], {_values.GetFirst() + key * _valueCount, _valueCount}}; }
  Float GetSeconds(Int key) const noexcept { return _seconds[key]; }

  Result<void> Reserve(Int keyCount, Int valueCount) noexcept
  {
    RETURN_IF_ERROR(_seconds.Reserve(keyCount));
    return _values.Reserve(keyCount * valueCount);
  }
  void Clear() noexcept
  {
    _seconds.Truncate(0);
    _values.Truncate(0);
  }
  /// @param count  the same for every key of a list.
  Result<void> Append(Float seconds, const Float* values, Int count) noexcept
  {
    _valueCount = count;
    RETURN_IF_ERROR(_values.AppendCopies(values, count));
    return _seconds.Append(seconds);
  }

private:
  BaseArray<Float> _seconds;
  BaseArray<Float> _values;
  Int _valueCount = 0;  // of one key
};

/// The left and right tangent values of a key, one number for each curve.
struct KeyTangents
{
  KeyNumbers first;
  KeyNumbers second;
};

class TangentList
{
public:
  Bool IsPopulated() const noexcept { return _left.IsPopulated(); }
  KeyTangents operator[](Int key) const noexcept
  {
    return {{_left.GetFirst() + key * _curveCount, _curveCount}, {_right.GetFirst() + key * _curveCount, _curveCount}};
  }

  /// Room for what is set below; all zero.
  Result<void> Resize(Int keyCount, Int curveCount) noexcept
  {
    _curveCount = curveCount;
    RETURN_IF_ERROR(_left.Resize(keyCount * curveCount));
    return _right.Resize(keyCount * curveCount);
  }
  void Set(Int key, Int curve, Float left, Float right) noexcept
  {
    _left[key * _curveCount + curve] = left;
    _right[key * _curveCount + curve] = right;
  }

private:
  BaseArray<Float> _left;
  BaseArray<Float> _right;
  Int _curveCount = 0;
};

}  // namespace q7z
