#pragma once

// Animation of parameters: tracks on objects, tags and overrides, a curve on each track, keys on the curve in time order.

#include "framework/hosttime.h"
#include "plugin/module/hostnode.h"

namespace q7z
{

/// A sampler's and a key's interpolation alike.
enum class InterpolationMode : Int32
{
  Spline = 1,  ///< with left and right tangents
  Linear = 2,
  Step = 3,  ///< holds
};

class HostTrackTable
{
public:
  virtual HostTrack* Find(const HostNode* node, const HostDescId& id) noexcept = 0;
  /// A track for a parameter of the node, not inserted; the caller owns it.
  virtual HostTrack* Alloc(HostNode* node, const HostDescId& id) noexcept = 0;
  /// Into the node's list, which stays sorted by id; the node owns the track then.
  virtual void Insert(HostNode* node, HostTrack* track) noexcept = 0;
  virtual void Remove(HostTrack* track) noexcept = 0;
  virtual HostTrack* Clone(const HostTrack* track, HostNode* node) noexcept = 0;
  virtual HostDescId GetDescId(const HostTrack* track) noexcept = 0;
  /// The track's curve; made when create is set. Owned by the track.
  virtual HostCurve* GetCurve(HostTrack* track, Bool create) noexcept = 0;

protected:
  ~HostTrackTable() = default;
};

/// The tangents of a spline key, relative to the key: value units and seconds.
struct HostTangents
{
  Float leftValue = 0;
  Float rightValue = 0;
  HostTime leftTime;
  HostTime rightTime;
};

/// What a key has but its tangents, to be read.
class HostKeyCopy
{
public:
  HostKeyCopy() noexcept = default;
  HostKeyCopy(const HostTime& time, Float value, InterpolationMode interpolation) noexcept
      : _time(time), _value(value), _interpolation(interpolation)
  {}
  const HostTime& GetTime() const noexcept { return _time; }
  Float GetValue() const noexcept { return _value; }
  InterpolationMode GetInterpolation() const noexcept { return _interpolation; }

private:
  HostTime _time;
  Float _value = 0;
  InterpolationMode _interpolation = InterpolationMode::Linear;
};

/// Keys to be made at one go: each has a time and, as its value, one component of a vector.
struct HostKeyRun
{
  const HostTime* times = nullptr;
  const Vector* values = nullptr;
  int component = 0;
  Int count = 0;
};

class HostCurveTable
{
public:
  virtual Int32 GetKeyCount(const HostCurve* curve) noexcept = 0;
  virtual HostKey* GetKey(HostCurve* curve, Int32 index) noexcept = 0;
  /// Copies the keys from first on, count at most. @return their number, 0 for a first that is no index.
  virtual Int32 CopyKeys(const HostCurve* curve, Int32 first, Int32 count, HostKeyCopy* copies) noexcept = 0;
  /// A key at a time, with a value to be set; where one stands already, that one. index is set to its place. Null without memory.
  virtual HostKey* AddKey(HostCurve* curve, const HostTime& time, Int32* index) noexcept = 0;
  /// Adds keys of a run from its start, as long as each is behind all that the curve has, with the interpolation, the modes and the
  /// parameters of one of its keys. @return their number. It may be any, also without memory; the next key can be added alone.
  virtual Int AddKeysBehind(HostCurve* curve, const HostKey* like, const HostKeyRun& run) noexcept = 0;
  /// A key without a value of its own, fitted into the curve's shape.
  virtual HostKey* AddKeyAdapted(HostCurve* curve, const HostTime& time) noexcept = 0;
  virtual HostTangents GetTangents(const HostCurve* curve, Int32 index) noexcept = 0;
  virtual Float GetValue(const HostCurve* curve, const HostTime& time) noexcept = 0;

protected:
  ~HostCurveTable() = default;
};

class HostKeyTable
{
public:
  virtual HostTime GetTime(const HostKey* key) noexcept = 0;
  virtual Float GetValue(const HostKey* key) noexcept = 0;
  /// @return false when the value's kind does not fit, or without memory.
  virtual Bool SetParameter(HostKey* key, HostCurve* curve, const HostDescId& id, const HostValue& value,
                            Int32 flags) noexcept = 0;
  virtual void SetValue(HostKey* key, HostCurve* curve, Float value) noexcept = 0;
  virtual InterpolationMode GetInterpolation(const HostKey* key) noexcept = 0;
  virtual void SetInterpolation(HostKey* key, HostCurve* curve, InterpolationMode mode) noexcept = 0;
  virtual void SetLeftTangent(HostKey* key, HostCurve* curve, const HostTime& time, Float value) noexcept = 0;
  virtual void SetRightTangent(HostKey* key, HostCurve* curve, const HostTime& time, Float value) noexcept = 0;
  /// For keys of rotations: asks that the way to the next key be one turn, the shorter way round, and not three angles. mode is 2 for
  /// linear keys, 3 for splines.
  virtual void SetRotationMode(HostKey* key, HostCurve* curve, Int32 mode, Bool first, Bool second) noexcept = 0;
  virtual void SetAuxiliaryMode(HostKey* key, HostCurve* curve, Int32 mode) noexcept = 0;
  /// The points that a key of a point track stores. @return their number, 0 for none.
  virtual Int32 GetPoints(const HostKey* key, const Vector** points) noexcept = 0;

protected:
  ~HostKeyTable() = default;
};

class HostKey
{
public:
  Bool SetParameter(HostCurve* curve, const HostDescId& id, const HostValue& value, Int32 flags) noexcept
  {
    return g_hostTables->key->SetParameter(this, curve, id, value, flags);
  }
  HostTime GetTime() const noexcept { return g_hostTables->key->GetTime(this); }
  Float GetValue() const noexcept { return g_hostTables->key->GetValue(this); }
  void SetValue(HostCurve* curve, Float value) noexcept { g_hostTables->key->SetValue(this, curve, value); }
  InterpolationMode GetInterpolation() const noexcept { return g_hostTables->key->GetInterpolation(this); }
  void SetInterpolation(HostCurve* curve, InterpolationMode mode) noexcept
  {
    g_hostTables->key->SetInterpolation(this, curve, mode);
  }
  void SetLeftTangent(HostCurve* curve, const HostTime& time, Float value) noexcept
  {
    g_hostTables->key->SetLeftTangent(this, curve, time, value);
  }
  void SetRightTangent(HostCurve* curve, const HostTime& time, Float value) noexcept
  {
    g_hostTables->key->SetRightTangent(this, curve, time, value);
  }
  Int32 GetPoints(const Vector** points) const noexcept { return g_hostTables->key->GetPoints(this, points); }

protected:
  HostKey() noexcept = default;
  ~HostKey() = default;
};

class HostCurve
{
public:
  Int32 GetKeyCount() const noexcept { return g_hostTables->curve->GetKeyCount(this); }
  HostKey* GetKey(Int32 index) noexcept { return g_hostTables->curve->GetKey(this, index); }
  Int32 CopyKeys(Int32 first, Int32 count, HostKeyCopy* copies) const noexcept
  {
    return g_hostTables->curve->CopyKeys(this, first, count, copies);
  }
  HostKey* AddKey(const HostTime& time, Int32* index = nullptr) noexcept
  {
    return g_hostTables->curve->AddKey(this, time, index);
  }
  Int AddKeysBehind(const HostKey* like, const HostKeyRun& run) noexcept
  {
    return g_hostTables->curve->AddKeysBehind(this, like, run);
  }
  HostTangents GetTangents(Int32 index) const noexcept { return g_hostTables->curve->GetTangents(this, index); }
  Float GetValue(const HostTime& time) const noexcept { return g_hostTables->curve->GetValue(this, time); }

protected:
  HostCurve() noexcept = default;
  ~HostCurve() = default;
};

class HostTrack : public HostNode
{
public:
  static HostTrack* Find(const HostNode* node, const HostDescId& id) noexcept { return g_hostTables->track->Find(node, id); }
  static HostTrack* Alloc(HostNode* node, const HostDescId& id) noexcept { return g_hostTables->track->Alloc(node, id); }
  void InsertInto(HostNode* node) noexcept { g_hostTables->track->Insert(node, this); }
  void Remove() noexcept { g_hostTables->track->Remove(this); }
  HostTrack* Clone(HostNode* node) const noexcept { return g_hostTables->track->Clone(this, node); }
  HostDescId GetDescId() const noexcept { return g_hostTables->track->GetDescId(this); }
  HostCurve* GetCurve(Bool create) noexcept { return g_hostTables->track->GetCurve(this, create); }

protected:
  HostTrack() noexcept = default;
  ~HostTrack() = default;
};

inline HostKey* HostCurveAddKeyAdapted(HostCurve* curve, const HostTime& time) noexcept
{
  return g_hostTables->curve->AddKeyAdapted(curve, time);
}
inline void HostKeySetRotationMode(HostKey* key, HostCurve* curve, Int32 mode, Bool first, Bool second) noexcept
{
  g_hostTables->key->SetRotationMode(key, curve, mode, first, second);
}
inline void HostKeySetAuxiliaryMode(HostKey* key, HostCurve* curve, Int32 mode) noexcept
{
  g_hostTables->key->SetAuxiliaryMode(key, curve, mode);
}

/// The parameters of an object's transform that have tracks: position, rotation and scale, three components each.
constexpr HostDescId MakeTransformTrackId(Int32 vector, Int32 component) noexcept
{
  return {HostDescLevel{vector, kVectorDataType}, HostDescLevel{component, kRealDataType}};
}
inline constexpr HostDescId kTransformTrackIds[9] = {
  MakeTransformTrackId(kPositionParameter, kComponentX), MakeTransformTrackId(kPositionParameter, kComponentY),
  MakeTransformTrackId(kPositionParameter, kComponentZ), MakeTransformTrackId(kRotationParameter, kComponentX),
  MakeTransformTrackId(kRotationParameter, kComponentY), MakeTransformTrackId(kRotationParameter, kComponentZ),
  MakeTransformTrackId(kScaleParameter, kComponentX),    MakeTransformTrackId(kScaleParameter, kComponentY),
  MakeTransformTrackId(kScaleParameter, kComponentZ),
};

}  // namespace q7z
