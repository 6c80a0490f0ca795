#include "host/scene/headlesstrack.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "framework/memory.h"
#include "host/scene/curvesegment.h"

namespace q7z
{

/// Room for keys, which are made in it one after the other.
struct HeadlessCurve::Chunk
{
  Chunk* next = nullptr;
  Int count = 0;
  Int capacity = 0;

  HeadlessKey* GetKeys() noexcept { return reinterpret_cast<HeadlessKey*>(this + 1); }
  static Int GetByteCount(Int capacity) noexcept
  {
    return static_cast<Int>(sizeof(Chunk)) + capacity * static_cast<Int>(sizeof(HeadlessKey));
  }
};

namespace
{

// Room for keys that come one by one.
constexpr Int kFirstChunk = 4;
constexpr Int kLargestChunk = 16;  // more would stand empty in most curves

}  // namespace

HeadlessCurve::Keys::~Keys()
{
  static_assert(sizeof(Chunk) % alignof(HeadlessKey) == 0);
  while (Chunk* const chunk = chunks)
  {
    chunks = chunk->next;
    std::destroy_n(chunk->GetKeys(), chunk->count);
    FreeMemory(chunk, Chunk::GetByteCount(chunk->capacity));
  }
}

Bool HeadlessCurve::Keys::AddChunk(Int capacity) noexcept
{
  void* const memory = AllocateMemory(Chunk::GetByteCount(capacity));
  if (!memory)
    return false;
  Chunk* const chunk = ::new (memory) Chunk;
  chunk->next = chunks;
  chunk->capacity = capacity;
  chunks = chunk;
  return true;
}

Bool HeadlessCurve::Keys::Reserve(Int keyCount) noexcept
{
  const Int missing = keyCount - places.GetCount();
  const Int free = chunks ? chunks->capacity - chunks->count : 0;
  if (missing <= 0)
    return true;
  return !places.Reserve(keyCount).HasError() && (missing <= free || AddChunk(missing));
}

Bool HeadlessCurve::Keys::ReserveRun(Int keyCount) noexcept
{
  if (keyCount <= kLargestChunk)
    return true;
  // Behind many keys the places grow by themselves, since many short runs may come.
  const Bool isMost = keyCount >= places.GetCount();
  if (isMost && places.Reserve(places.GetCount() + keyCount + kFirstChunk).HasError())
    return false;
  return AddChunk(keyCount);
}

/// After a run, to the room that was left before it.
void HeadlessCurve::Keys::TakeUpOldChunk() noexcept
{
  Chunk* const old = chunks->next;
  if (!old || old->count == old->capacity || chunks->count < chunks->capacity)
    return;
  chunks->next = old->next;
  old->next = chunks;
  chunks = old;
}

HeadlessKey* HeadlessCurve::Keys::Make(const HostTime& time) noexcept
{
  const Int count = places.GetCount();
  const Int grown = count < kFirstChunk ? kFirstChunk : count < kLargestChunk ? count : kLargestChunk;
  if ((!chunks || chunks->count == chunks->capacity) && !AddChunk(grown))
    return nullptr;
  HeadlessKey* const key = ::new (chunks->GetKeys() + chunks->count) HeadlessKey;
  if (!key->SetTime(time) || places.Append(key).HasError())
  {
    key->~HeadlessKey();
    return nullptr;
  }
  ++chunks->count;
  return key;
}

Bool HeadlessCurve::Keys::CopyFrom(const Keys& other) noexcept
{
  if (!Reserve(other.places.GetCount()))
    return false;
  for (const HeadlessKey* const source : other.places)
  {
    HeadlessKey* const key = Make(source->GetTime());
    if (!key || !key->CopyFrom(*source))
      return false;
  }
  lastSeconds = other.lastSeconds;
  return true;
}

void HeadlessCurve::Release() noexcept
{
  if (_keys && _keys->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
    delete _keys;
  _keys = nullptr;
}

/// Makes the keys this curve's alone. @return false without memory.
Bool HeadlessCurve::CopyKeys() noexcept
{
  std::unique_ptr<Keys> own(new (std::nothrow) Keys);
  if (!own || (_keys && !own->CopyFrom(*_keys)))
    return false;
  Release();
  _keys = own.release();
  return true;
}

HeadlessKey* HeadlessCurve::FindOwnPlace(HeadlessKey* key) noexcept
{
  if (!Own())
    return nullptr;
  Bool stands = false;
  const Int place = FindPlace(key->GetTime().GetSeconds(), stands);
  return stands ? _keys->places[place] : key;
}

Bool HeadlessCurve::Reserve(Int keyCount) noexcept
{
  return Own() && _keys->Reserve(keyCount);
}

void HeadlessCurve::CopyFrom(const HeadlessCurve& other) noexcept
{
  if (other._keys)
    other._keys->owners.fetch_add(1, std::memory_order_relaxed);
  Release();
  _keys = other._keys;
}

Int HeadlessCurve::SearchPlace(Float seconds, Bool& stands) const noexcept
{
  const BaseArray<HeadlessKey*>& places = _keys->places;
  const Int count = places.GetCount();
  const auto isBefore = [&](Int place) { return places[place]->GetTime().GetSeconds() < seconds; };
  const auto isFound = [&](Int place)
  { return place >= 0 && place < count && !isBefore(place) && (place == 0 || isBefore(place - 1)); };
  const Int near = _keys->lastPlace.load(std::memory_order_relaxed);
  const Int found = isFound(near) ? near : isFound(near + 1) ? near + 1 : isFound(near - 1) ? near - 1 : BisectPlaces(seconds);
  stands = found < count && places[found]->GetTime().GetSeconds() == seconds;
  _keys->NotePlace(found);
  return found;
}

Int HeadlessCurve::BisectPlaces(Float seconds) const noexcept
{
  const BaseArray<HeadlessKey*>& places = _keys->places;
  Int low = 0;
  Int high = places.GetCount();
  while (low < high)
  {
    const Int middle = (low + high) / 2;
    if (places[middle]->GetTime().GetSeconds() < seconds)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

/// The keys are this curve's alone.
HeadlessKey* HeadlessCurve::InsertKey(Int place, const HostTime& time, Float seconds) noexcept
{
  HeadlessKey* const key = _keys->Make(time);
  if (!key)
    return nullptr;
  BaseArray<HeadlessKey*>& places = _keys->places;
  const Int last = places.GetCount() - 1;
  if (place == last)
  {
    _keys->lastSeconds = seconds;
    return key;
  }
  std::copy_backward(places.begin() + place, places.begin() + last, places.end());
  places[place] = key;
  return key;
}

HeadlessKey* HeadlessCurve::AddKey(const HostTime& time, Int* index) noexcept
{
  const Float seconds = time.GetSeconds();
  if (!std::isfinite(seconds) || !Own())
    return nullptr;
  Bool stands = false;
  const Int place = FindPlace(seconds, stands);
  HeadlessKey* const key = stands ? _keys->places[place] : InsertKey(place, time, seconds);
  if (key && index)
    *index = place;
  return key;
}

Int HeadlessCurve::AddKeysBehind(const HeadlessKey& like, const HostKeyRun& run) noexcept
{
  if (!like.HasOnlySettings() || GetKeyCount() == 0 || !Own())
    return 0;
  Float last = _keys->lastSeconds;
  Int count = 0;
  for (; count < run.count; ++count)
  {
    const Float seconds = run.times[count].GetSeconds();
    if (!std::isfinite(seconds) || seconds <= last)
      break;
    last = seconds;
  }
  if (!_keys->ReserveRun(count))
    return 0;
  Int made = 0;
  for (; made < count; ++made)
  {
    HeadlessKey* const key = _keys->Make(run.times[made]);
    if (!key)
      break;
    key->CopySettingsFrom(like);
    key->SetValue(run.values[made][run.component]);
  }
  _keys->TakeUpOldChunk();
  if (made > 0)
    _keys->lastSeconds = run.times[made - 1].GetSeconds();
  return made;
}

namespace
{

CurveSegment MakeSegment(const HeadlessKey& left, const HeadlessKey& right) noexcept
{
  const CurvePoint start{left.GetTime().GetSeconds(), left.GetValue()};
  const CurvePoint end{right.GetTime().GetSeconds(), right.GetValue()};
  const KeyTangent leaving = left.GetRightTangent();
  const KeyTangent arriving = right.GetLeftTangent();
  return ClampTangentTimes({{start,
                             {start.time + leaving.time.GetSeconds(), start.value + leaving.value},
                             {end.time + arriving.time.GetSeconds(), end.value + arriving.value},
                             end}});
}

/// From the key's point to its handle. The time stays a fraction: rounding it would bend the curve.
KeyTangent MakeTangent(const CurvePoint& key, const CurvePoint& handle) noexcept
{
  return {{handle.time - key.time, 1}, handle.value - key.value, true};
}

Bool SetLeft(HeadlessKey& key, const KeyTangent& tangent) noexcept
{
  return key.SetLeftTangent(tangent.time, tangent.value);
}

Bool SetRight(HeadlessKey& key, const KeyTangent& tangent) noexcept
{
  return key.SetRightTangent(tangent.time, tangent.value);
}

Float EvaluateSegment(const HeadlessKey& left, const HeadlessKey& right, Float seconds) noexcept
{
  const Float start = left.GetTime().GetSeconds();
  switch (left.GetInterpolation())
  {
    case InterpolationMode::Step: return left.GetValue();
    case InterpolationMode::Linear:
    {
      const Float place = (seconds - start) / (right.GetTime().GetSeconds() - start);
      return left.GetValue() + (right.GetValue() - left.GetValue()) * place;
    }
    case InterpolationMode::Spline:
    {
      const CurveSegment segment = MakeSegment(left, right);
      return SplitSegment(segment, SolveSegmentTime(segment, seconds)).left.points[3].value;
    }
  }
  return left.GetValue();
}

}  // namespace

Float HeadlessCurve::GetValue(const HostTime& time) const noexcept
{
  if (GetKeyCount() == 0)
    return 0;
  const Float seconds = time.GetSeconds();
  Bool stands = false;
  const Int place = FindPlace(seconds, stands);
  if (stands || place == 0)
    return _keys->places[place]->GetValue();
  if (place == GetKeyCount())
    return _keys->places[place - 1]->GetValue();
  return EvaluateSegment(*_keys->places[place - 1], *_keys->places[place], seconds);
}

HeadlessKey* HeadlessCurve::AddKeyAdapted(const HostTime& time) noexcept
{
  const Float seconds = time.GetSeconds();
  if (!std::isfinite(seconds) || !Own())
    return nullptr;
  Bool stands = false;
  const Int place = FindPlace(seconds, stands);
  if (stands)
    return _keys->places[place];
  if (place == 0 || place == GetKeyCount())
    return ExtendOutside(place, time);
  const HeadlessKey& left = *_keys->places[place - 1];
  if (left.GetInterpolation() == InterpolationMode::Spline)
    return SplitSpline(place, time);
  const Float value = EvaluateSegment(left, *_keys->places[place], seconds);
  HeadlessKey* const key = InsertKey(place, time, seconds);
  if (key)
  {
    key->SetValue(value);
    key->SetInterpolation(left.GetInterpolation());
  }
  return key;
}

HeadlessKey* HeadlessCurve::SplitSpline(Int place, const HostTime& time) noexcept
{
  HeadlessKey& left = *_keys->places[place - 1];
  HeadlessKey& right = *_keys->places[place];
  const CurveSegment segment = MakeSegment(left, right);
  const SplitCurveSegment parts = SplitSegment(segment, SolveSegmentTime(segment, time.GetSeconds()));
  // All memory first: a segment that is half changed has another shape.
  if (!left.FindOrMakeDetails() || !right.FindOrMakeDetails())
    return nullptr;
  HeadlessKey spare;
  if (!spare.SetTime(time) || !SetLeft(spare, MakeTangent(parts.left.points[3], parts.left.points[2])))
    return nullptr;
  HeadlessKey* const key = InsertKey(place, time, time.GetSeconds());
  if (!key)
    return nullptr;
  std::swap(key->_details, spare._details);
  key->SetValue(parts.left.points[3].value);
  key->SetInterpolation(InterpolationMode::Spline);
  return SetRight(*key, MakeTangent(parts.right.points[0], parts.right.points[1])) &&
             SetRight(left, MakeTangent(parts.left.points[0], parts.left.points[1])) &&
             SetLeft(right, MakeTangent(parts.right.points[3], parts.right.points[2]))
           ? key
           : nullptr;
}

/// In front of the first key or behind the last the curve holds. A spline's handle that points outside had no effect so far and
/// loses its value, so that it holds on.
HeadlessKey* HeadlessCurve::ExtendOutside(Int place, const HostTime& time) noexcept
{
  HeadlessKey* const key = InsertKey(place, time, time.GetSeconds());
  if (!key || GetKeyCount() == 1)
    return key;
  HeadlessKey& nearest = *_keys->places[place == 0 ? 1 : place - 1];
  key->SetValue(nearest.GetValue());
  key->SetInterpolation(nearest.GetInterpolation());
  if (nearest._details)
    (place == 0 ? nearest._details->left : nearest._details->right) = KeyTangent();
  return key;
}

HeadlessTrack::HeadlessTrack(const HostDescId& id) noexcept : HeadlessNode(NodeKind::kTrack, 0), _id(id)
{
  GetSceneDiagnostics().liveTracks.fetch_add(1, std::memory_order_relaxed);
}

HeadlessTrack::~HeadlessTrack()
{
  GetSceneDiagnostics().liveTracks.fetch_sub(1, std::memory_order_relaxed);
}

HeadlessTrack* HeadlessTrack::Create(const HostDescId& id) noexcept
{
  return new (std::nothrow) HeadlessTrack(id);
}

HeadlessCurve* HeadlessTrack::FindOrMakeCurve() noexcept
{
  if (!_curve)
    _curve.reset(new (std::nothrow) HeadlessCurve);
  return _curve.get();
}

Bool HeadlessTrack::InsertInto(HeadlessNode* node) noexcept
{
  HeadlessTrackList* const tracks = node ? node->GetTracks() : nullptr;
  if (!tracks)
    return false;
  if (TakeOut())
    CountMistake(GetSceneDiagnostics().insertedTwice);
  tracks->Insert(node, this);
  return true;
}

void HeadlessTrack::Remove() noexcept
{
  TakeOut();
}

Bool HeadlessTrack::TakeOut() noexcept
{
  if (!_owner)
    return false;
  _owner->GetTracks()->Remove(this);
  return true;
}

HeadlessTrack* HeadlessTrack::Clone() const noexcept
{
  HeadlessOwner<HeadlessTrack> copy(Create(_id));
  if (!copy || !copy->CopyParametersFrom(*this))
    return nullptr;
  if (_curve && !copy->FindOrMakeCurve())
    return nullptr;
  if (_curve)
    copy->_curve->CopyFrom(*_curve);
  return copy.release();
}

}  // namespace q7z
