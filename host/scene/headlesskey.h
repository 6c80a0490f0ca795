#pragma once

// HeadlessKey: one key of a curve. Keys belong to their curve, which alone makes and frees them. They come by the million, so a key
// is four words: what few keys have lies elsewhere.

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>

#include "framework/hosttime.h"
#include "host/scene/headlesscontainer.h"
#include "host/scene/hostarray.h"
#include "plugin/module/hosttrack.h"

namespace q7z
{

/// The parameter that all keys of a load have, with a small number as its value.
inline constexpr Int32 kKeySettingParameter = 915;

/// One side of a spline key, relative to the key.
struct KeyTangent
{
  HostTime time;
  Float value = 0;
  Bool isSet = false;  ///< given by somebody; the numbers are 0 until then
};

/// The three arguments of a key's rotation mode.
struct KeyRotationMode
{
  Int32 mode = 0;
  Bool first = false;
  Bool second = false;
  friend Bool operator==(const KeyRotationMode&, const KeyRotationMode&) noexcept = default;
};

/// Setters that answer a Bool answer false without memory; the key is as it was then.
class HeadlessKey
{
public:
  HeadlessKey() noexcept = default;
  HeadlessKey(const HeadlessKey&) = delete;
  HeadlessKey& operator=(const HeadlessKey&) = delete;
  ~HeadlessKey() { delete _details; }

  HostTime GetTime() const noexcept
  {
    const Int denominator = _time & kDenominatorMask;
    return denominator ? HostTime{static_cast<Float>(_time >> kDenominatorBits), static_cast<Float>(denominator)}
                       : _details->rare->time;
  }
  Float GetValue() const noexcept { return _value; }
  void SetValue(Float value) noexcept { _value = value; }
  /// Linear for a new key.
  InterpolationMode GetInterpolation() const noexcept { return _settings.interpolation; }
  void SetInterpolation(InterpolationMode mode) noexcept { _settings.interpolation = mode; }

  KeyTangent GetLeftTangent() const noexcept { return _details ? _details->left : KeyTangent(); }
  KeyTangent GetRightTangent() const noexcept { return _details ? _details->right : KeyTangent(); }
  Bool SetLeftTangent(const HostTime& time, Float value) noexcept;
  Bool SetRightTangent(const HostTime& time, Float value) noexcept;

  Bool HasRotationMode() const noexcept { return _settings.hasRotationMode; }
  KeyRotationMode GetRotationMode() const noexcept
  {
    return {_settings.hasLongModes ? _details->rare->rotationMode : _settings.rotationMode, _settings.rotationFirst,
            _settings.rotationSecond};
  }
  Bool SetRotationMode(const KeyRotationMode& mode) noexcept
  {
    const Bool isShort = !_settings.hasLongModes && IsSmall(mode.mode);
    if (!isShort && !SetLongModes(mode.mode, GetAuxiliaryMode()))
      return false;
    if (isShort)
      _settings.rotationMode = static_cast<std::int8_t>(mode.mode);
    _settings.rotationFirst = mode.first;
    _settings.rotationSecond = mode.second;
    _settings.hasRotationMode = true;
    return true;
  }
  Bool HasAuxiliaryMode() const noexcept { return _settings.hasAuxiliaryMode; }
  Int32 GetAuxiliaryMode() const noexcept
  {
    return _settings.hasLongModes ? _details->rare->auxiliaryMode : _settings.auxiliaryMode;
  }
  Bool SetAuxiliaryMode(Int32 mode) noexcept
  {
    const Bool isShort = !_settings.hasLongModes && IsSmall(mode);
    if (!isShort && !SetLongModes(GetRotationMode().mode, mode))
      return false;
    if (isShort)
      _settings.auxiliaryMode = static_cast<std::int8_t>(mode);
    _settings.hasAuxiliaryMode = true;
    return true;
  }

  /// The points that a key of a point track stores; empty for others.
  const HostArray<Vector>& GetPoints() const noexcept;
  Bool SetPoints(HostArray<Vector> points) noexcept;

  /// @return false for a parameter that was not set; value is untouched then.
  Bool GetParameter(const HostDescId& id, HostValue& value) const noexcept;
  Bool SetParameter(const HostDescId& id, const HostValue& value) noexcept
  {
    const Bool isSmall = value.GetKind() == HostValueKind::kInt && IsSmall(value.GetInt());
    if (!isSmall || !IsSetting(id) || HasParameterTable())
      return SetInTable(id, value);
    _settings.parameter = static_cast<std::int8_t>(value.GetInt());
    return true;
  }
  /// Puts all parameters into a table. @return false without memory.
  Bool CopyParametersTo(HeadlessContainer& table) const noexcept;
  /// The table itself, which costs memory of its own. Null without memory.
  HeadlessContainer* FindOrMakeParameters() noexcept;

  /// For a new key: everything but the time.
  Bool CopyFrom(const HeadlessKey& other) noexcept;
  /// Whether all but its tangents is in the key itself.
  Bool HasOnlySettings() const noexcept { return !FindRare(); }
  /// For a new key: the settings of one that has nothing else.
  void CopySettingsFrom(const HeadlessKey& other) noexcept { _settings = other._settings; }

private:
  friend class HeadlessCurve;
  static constexpr std::int8_t kNoNumber = INT8_MIN;

  struct Settings
  {
    InterpolationMode interpolation : 8 = InterpolationMode::Linear;
    Bool hasRotationMode : 1 = false;
    Bool rotationFirst : 1 = false;
    Bool rotationSecond : 1 = false;
    Bool hasAuxiliaryMode : 1 = false;
    Bool hasLongModes : 1 = false;      // they stand among the rare
    std::int8_t parameter = kNoNumber;  // kKeySettingParameter, while it is the only one
    std::int8_t rotationMode = 0;
    std::int8_t auxiliaryMode = 0;
  };
  struct Rare
  {
    HostTime time;
    Int32 rotationMode = 0;
    Int32 auxiliaryMode = 0;
    HeadlessContainer parameters;
    HostArray<Vector> points;
  };
  struct Details
  {
    KeyTangent left;
    KeyTangent right;
    std::unique_ptr<Rare> rare;
  };

  static Bool IsSmall(Int number) noexcept { return number > kNoNumber && number <= INT8_MAX; }
  static Bool IsSetting(const HostDescId& id) noexcept { return id.GetDepth() == 1 && id[0].id == kKeySettingParameter; }
  /// Whether a whole number below limit stands for it without loss. The negative zero is none.
  static Bool IsWhole(Float number, Float limit) noexcept
  {
    return std::abs(number) < limit &&
           std::bit_cast<UInt>(static_cast<Float>(static_cast<Int>(number))) == std::bit_cast<UInt>(number);
  }

  /// The curve's: keys stand in the order of their times.
  Bool SetTime(const HostTime& time) noexcept
  {
    constexpr Float kNumerators = Float(Int(1) << (63 - kDenominatorBits));
    constexpr Float kDenominators = Float(Int(1) << kDenominatorBits);
    if (!IsWhole(time.numerator, kNumerators) || !IsWhole(time.denominator, kDenominators) || time.denominator < 1)
      return SetLongTime(time);
    _time = (static_cast<Int>(time.numerator) << kDenominatorBits) + static_cast<Int>(time.denominator);
    return true;
  }
  Bool SetLongTime(const HostTime& time) noexcept;
  Bool HasParameterTable() const noexcept { return FindRare() && !FindRare()->parameters.IsEmpty(); }
  Bool SetInTable(const HostDescId& id, const HostValue& value) noexcept;

  Details* FindOrMakeDetails() noexcept;
  Rare* FindOrMakeRare() noexcept;
  const Rare* FindRare() const noexcept { return _details ? _details->rare.get() : nullptr; }
  Bool SetLongModes(Int32 rotationMode, Int32 auxiliaryMode) noexcept;

  // A time of whole numbers that fit: the numerator before the denominator. Else 0, and it stands among the rare.
  static constexpr int kDenominatorBits = 16;
  static constexpr Int kDenominatorMask = (Int(1) << kDenominatorBits) - 1;

  Int _time = 1;
  Float _value = 0;
  Details* _details = nullptr;  // owned; null until something needs it
  Settings _settings;
};
static_assert(sizeof(HeadlessKey) == 32);

}  // namespace q7z
