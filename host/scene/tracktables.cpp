#include <algorithm>
#include <utility>

#include "host/scene/headlesstrack.h"
#include "host/scene/tablefamilies.h"

namespace q7z
{

namespace
{

class SceneTrackTable final : public HostTrackTable
{
public:
  HostTrack* Find(const HostNode* node, const HostDescId& id) noexcept override
  {
    const HeadlessTrackList* const tracks = ToHeadless(node)->GetTracks();
    return tracks ? ToHost(tracks->Find(id)) : nullptr;
  }
  HostTrack* Alloc(HostNode* node, const HostDescId& id) noexcept override
  {
    const Bool mayHaveTracks = node && ToHeadless(node)->GetTracks() && id.GetDepth() > 0;
    return mayHaveTracks ? ToHost(HeadlessTrack::Create(id)) : nullptr;
  }
  void Insert(HostNode* node, HostTrack* track) noexcept override { ToHeadless(track)->InsertInto(ToHeadless(node)); }
  void Remove(HostTrack* track) noexcept override { ToHeadless(track)->Remove(); }
  HostTrack* Clone(const HostTrack* track, HostNode*) noexcept override { return ToHost(ToHeadless(track)->Clone()); }
  HostDescId GetDescId(const HostTrack* track) noexcept override { return ToHeadless(track)->GetId(); }
  HostCurve* GetCurve(HostTrack* track, Bool create) noexcept override
  {
    return ToHost(create ? ToHeadless(track)->FindOrMakeCurve() : ToHeadless(track)->GetCurve());
  }
};

class SceneCurveTable final : public HostCurveTable
{
public:
  Int32 GetKeyCount(const HostCurve* curve) noexcept override { return static_cast<Int32>(ToHeadless(curve)->GetKeyCount()); }
  /// Maybe a key that copies of the curve share; what changes it sees to that.
  HostKey* GetKey(HostCurve* curve, Int32 index) noexcept override
  {
    return ToHost(const_cast<HeadlessKey*>(ToHeadless(curve)->ApproachKey(index)));
  }
  Int32 CopyKeys(const HostCurve* curve, Int32 first, Int32 count, HostKeyCopy* copies) noexcept override
  {
    const HeadlessCurve& source = *ToHeadless(curve);
    if (first < 0)
      return 0;
    const Int end = std::min(source.GetKeyCount(), Int(first) + count);
    for (Int i = first; i < end; ++i)
    {
      const HeadlessKey& key = *source.GetKey(i);
      *copies++ = {key.GetTime(), key.GetValue(), key.GetInterpolation()};
    }
    return static_cast<Int32>(std::max(end - first, Int(0)));
  }
  HostKey* AddKey(HostCurve* curve, const HostTime& time, Int32* index) noexcept override
  {
    HeadlessCurve& target = *ToHeadless(curve);
    if (target.GetKeyCount() >= INT32_MAX)
      return nullptr;
    Int place = 0;
    HeadlessKey* const key = target.AddKey(time, &place);
    if (key && index)
      *index = static_cast<Int32>(place);
    return ToHost(key);
  }
  Int AddKeysBehind(HostCurve* curve, const HostKey* like, const HostKeyRun& run) noexcept override
  {
    HeadlessCurve& target = *ToHeadless(curve);
    return run.count > INT32_MAX - target.GetKeyCount() ? 0 : target.AddKeysBehind(*ToHeadless(like), run);
  }
  HostKey* AddKeyAdapted(HostCurve* curve, const HostTime& time) noexcept override
  {
    return ToHost(ToHeadless(curve)->AddKeyAdapted(time));
  }
  HostTangents GetTangents(const HostCurve* curve, Int32 index) noexcept override
  {
    const HeadlessKey* const key = ToHeadless(curve)->GetKey(index);
    if (!key)
      return {};
    const KeyTangent left = key->GetLeftTangent();
    const KeyTangent right = key->GetRightTangent();
    return {left.value, right.value, left.time, right.time};
  }
  Float GetValue(const HostCurve* curve, const HostTime& time) noexcept override { return ToHeadless(curve)->GetValue(time); }
};

/// Without memory for what a change needs, the key stays as it is.
class SceneKeyTable final : public HostKeyTable
{
public:
  HostTime GetTime(const HostKey* key) noexcept override { return ToHeadless(key)->GetTime(); }
  Float GetValue(const HostKey* key) noexcept override { return ToHeadless(key)->GetValue(); }
  Bool SetParameter(HostKey* key, HostCurve* curve, const HostDescId& id, const HostValue& value, Int32) noexcept override
  {
    HeadlessKey* const own = FindOwn(key, curve);
    return own && own->SetParameter(id, value);
  }
  void SetValue(HostKey* key, HostCurve* curve, Float value) noexcept override
  {
    if (HeadlessKey* const own = FindOwn(key, curve))
      own->SetValue(value);
  }
  InterpolationMode GetInterpolation(const HostKey* key) noexcept override { return ToHeadless(key)->GetInterpolation(); }
  /// A number that is no mode changes nothing.
  void SetInterpolation(HostKey* key, HostCurve* curve, InterpolationMode mode) noexcept override
  {
    const Bool isMode = mode >= InterpolationMode::Spline && mode <= InterpolationMode::Step;
    if (HeadlessKey* const own = isMode ? FindOwn(key, curve) : nullptr)
      own->SetInterpolation(mode);
  }
  void SetLeftTangent(HostKey* key, HostCurve* curve, const HostTime& time, Float value) noexcept override
  {
    if (HeadlessKey* const own = FindOwn(key, curve))
      own->SetLeftTangent(time, value);
  }
  void SetRightTangent(HostKey* key, HostCurve* curve, const HostTime& time, Float value) noexcept override
  {
    if (HeadlessKey* const own = FindOwn(key, curve))
      own->SetRightTangent(time, value);
  }
  void SetRotationMode(HostKey* key, HostCurve* curve, Int32 mode, Bool first, Bool second) noexcept override
  {
    if (HeadlessKey* const own = FindOwn(key, curve))
      own->SetRotationMode({mode, first, second});
  }
  void SetAuxiliaryMode(HostKey* key, HostCurve* curve, Int32 mode) noexcept override
  {
    if (HeadlessKey* const own = FindOwn(key, curve))
      own->SetAuxiliaryMode(mode);
  }
  Int32 GetPoints(const HostKey* key, const Vector** points) noexcept override
  {
    const HostArray<Vector>& kept = ToHeadless(key)->GetPoints();
    *points = kept.GetR();
    return static_cast<Int32>(kept.GetCount());
  }

private:
  /// Null without memory.
  static HeadlessKey* FindOwn(HostKey* key, HostCurve* curve) noexcept
  {
    return curve ? ToHeadless(curve)->FindOwn(ToHeadless(key)) : ToHeadless(key);
  }
};

}  // namespace

void FillTrackTables(HostTables& tables) noexcept
{
  static SceneTrackTable track;
  static SceneCurveTable curve;
  static SceneKeyTable key;
  tables.track = &track;
  tables.curve = &curve;
  tables.key = &key;
}

}  // namespace q7z
