#pragma once

// Animation as the scene keeps it: a track for one parameter of a node, its curve, the curve's keys in time order. A track
// belongs to the node that it was inserted into; a curve to its track; keys to their curve, and they do not move in memory.

#include <atomic>

#include "framework/basearray.h"
#include "host/scene/headlesskey.h"
#include "host/scene/headlessnode.h"

namespace q7z
{

/// The keys of one parameter. Copies of a curve share its keys until one of them is changed.
class HeadlessCurve
{
public:
  HeadlessCurve() noexcept = default;
  HeadlessCurve(const HeadlessCurve&) = delete;
  HeadlessCurve& operator=(const HeadlessCurve&) = delete;
  ~HeadlessCurve() { Release(); }

  Int GetKeyCount() const noexcept { return _keys ? _keys->places.GetCount() : 0; }
  /// Null for an index out of range.
  const HeadlessKey* GetKey(Int index) const noexcept { return IsKey(index) ? _keys->places[index] : nullptr; }
  /// A key to be changed. Null also without memory for a copy of shared keys.
  HeadlessKey* GetKey(Int index) noexcept { return IsKey(index) && Own() ? _keys->places[index] : nullptr; }

  /// The same without the change, for a host call about one key, which others about it will follow.
  const HeadlessKey* ApproachKey(Int index) const noexcept
  {
    if (!IsKey(index))
      return nullptr;
    _keys->NotePlace(index);
    return _keys->places[index];
  }

  /// The key of this curve alone that stands where one stands that it shares, to be changed instead. Null without memory; a key of
  /// another curve stays what it is.
  HeadlessKey* FindOwn(HeadlessKey* key) noexcept { return IsAlone() && IsNear(key) ? key : FindOwnPlace(key); }

  /// Makes room for a known number of keys in all. @return false without memory.
  Bool Reserve(Int keyCount) noexcept;
  /// The key at a time, made when none stands there; index (may be null) is set to its place. Null without memory, or for a time
  /// that is not finite.
  HeadlessKey* AddKey(const HostTime& time, Int* index) noexcept;
  /// Adds keys from the start of a run, as long as each is behind all others, with all that a key has but its tangents. @return their
  /// number; 0 for a key with rare settings. Without memory, or at a time that is not finite, it ends early.
  Int AddKeysBehind(const HeadlessKey& like, const HostKeyRun& run) noexcept;
  /// The same, but a new key fits into the shape that the curve has: a spline segment is split, with the neighbours' tangents
  /// shortened; on a linear or held segment the new key has zero tangents. Null without memory: the curve is as it was then.
  HeadlessKey* AddKeyAdapted(const HostTime& time) noexcept;

  /// The place of the first key behind a time.
  Int FindPlaceBehind(Float seconds) const noexcept
  {
    Bool stands = false;
    const Int place = FindPlace(seconds, stands);
    return stands ? place + 1 : place;
  }
  /// Before the first key the first value, behind the last the last; 0 without keys.
  Float GetValue(const HostTime& time) const noexcept;

  void CopyFrom(const HeadlessCurve& other) noexcept;

private:
  struct Chunk;
  struct Keys
  {
    std::atomic<Int> owners = 1;
    BaseArray<HeadlessKey*> places;  // in time order; the keys lie in chunks
    Chunk* chunks = nullptr;         // the newest first
    Float lastSeconds = 0;           // the last key's time
    std::atomic<Int> lastPlace = 0;  // that somebody asked for: the next question is often near it
    ~Keys();
    void NotePlace(Int place) noexcept { lastPlace.store(place, std::memory_order_relaxed); }
    Bool AddChunk(Int capacity) noexcept;
    Bool Reserve(Int keyCount) noexcept;
    /// Room for that many more keys, and a few. @return false without memory, when it may be less.
    Bool ReserveRun(Int keyCount) noexcept;
    void TakeUpOldChunk() noexcept;
    /// Behind all others, or anywhere with the places moved by the caller; in a chunk that has room.
    HeadlessKey* Make(const HostTime& time) noexcept;
    Bool CopyFrom(const Keys& other) noexcept;
  };

  Bool IsKey(Int index) const noexcept { return index >= 0 && index < GetKeyCount(); }
  /// Whether a key is the last of the curve, or the one that was asked for last.
  Bool IsNear(const HeadlessKey* key) const noexcept
  {
    const Int count = _keys->places.GetCount();
    const Int place = _keys->lastPlace.load(std::memory_order_relaxed);
    return (count > 0 && _keys->places[count - 1] == key) || (place < count && _keys->places[place] == key);
  }
  Bool IsAlone() const noexcept { return _keys && _keys->owners.load(std::memory_order_acquire) == 1; }
  Bool Own() noexcept { return IsAlone() || CopyKeys(); }
  Bool CopyKeys() noexcept;
  HeadlessKey* FindOwnPlace(HeadlessKey* key) noexcept;
  void Release() noexcept;
  /// The place of the first key that is not before a time; stands tells whether it is at that time.
  Int FindPlace(Float seconds, Bool& stands) const noexcept
  {
    stands = false;
    const Int count = GetKeyCount();
    return count == 0 || _keys->lastSeconds < seconds ? count : SearchPlace(seconds, stands);  // keys mostly come in order
  }
  Int SearchPlace(Float seconds, Bool& stands) const noexcept;
  Int BisectPlaces(Float seconds) const noexcept;
  HeadlessKey* InsertKey(Int place, const HostTime& time, Float seconds) noexcept;
  HeadlessKey* SplitSpline(Int place, const HostTime& time) noexcept;
  HeadlessKey* ExtendOutside(Int place, const HostTime& time) noexcept;

  Keys* _keys = nullptr;  // null for none
};

class HeadlessTrack : public HeadlessNode
{
public:
  /// Null without memory.
  static HeadlessTrack* Create(const HostDescId& id) noexcept;
  ~HeadlessTrack() override;

  const HostDescId& GetId() const noexcept { return _id; }
  /// The node whose list the track is in, or null.
  HeadlessNode* GetOwner() const noexcept { return _owner; }
  HeadlessTrack* GetNext() const noexcept { return _next; }
  HeadlessDocument* GetDocument() const noexcept override { return _owner ? _owner->GetDocument() : nullptr; }

  /// Null for a track without a curve.
  HeadlessCurve* GetCurve() const noexcept { return _curve.get(); }
  /// Made when there is none. Null without memory.
  HeadlessCurve* FindOrMakeCurve() noexcept;

  /// Into the node's list, out of where it stands. @return false for a node that cannot have tracks.
  Bool InsertInto(HeadlessNode* node) noexcept;
  /// Out of the node's list; the caller owns the track then.
  void Remove() noexcept;
  /// A copy in no list. Null without memory.
  HeadlessTrack* Clone() const noexcept;

protected:
  Bool TakeOut() noexcept override;

private:
  friend class HeadlessTrackList;
  explicit HeadlessTrack(const HostDescId& id) noexcept;

  HostDescId _id;
  HeadlessNode* _owner = nullptr;  // not owned
  HeadlessTrack* _previous = nullptr;
  HeadlessTrack* _next = nullptr;
  std::unique_ptr<HeadlessCurve> _curve;
};

}  // namespace q7z
