#include "host/scene/headlesskey.h"

#include <new>
#include <utility>

namespace q7z
{

HeadlessKey::Details* HeadlessKey::FindOrMakeDetails() noexcept
{
  if (!_details)
    _details = new (std::nothrow) Details;
  return _details;
}

HeadlessKey::Rare* HeadlessKey::FindOrMakeRare() noexcept
{
  Details* const details = FindOrMakeDetails();
  if (details && !details->rare)
    details->rare.reset(new (std::nothrow) Rare);
  return details ? details->rare.get() : nullptr;
}

Bool HeadlessKey::SetLongTime(const HostTime& time) noexcept
{
  Rare* const rare = FindOrMakeRare();
  if (!rare)
    return false;
  rare->time = time;
  _time = 0;
  return true;
}

Bool HeadlessKey::SetLeftTangent(const HostTime& time, Float value) noexcept
{
  Details* const details = FindOrMakeDetails();
  if (details)
    details->left = {time, value, true};
  return details != nullptr;
}

Bool HeadlessKey::SetRightTangent(const HostTime& time, Float value) noexcept
{
  Details* const details = FindOrMakeDetails();
  if (details)
    details->right = {time, value, true};
  return details != nullptr;
}

/// For both modes, once one of them is too large for the key itself.
Bool HeadlessKey::SetLongModes(Int32 rotationMode, Int32 auxiliaryMode) noexcept
{
  Rare* const rare = FindOrMakeRare();
  if (!rare)
    return false;
  rare->rotationMode = rotationMode;
  rare->auxiliaryMode = auxiliaryMode;
  _settings.hasLongModes = true;
  return true;
}

const HostArray<Vector>& HeadlessKey::GetPoints() const noexcept
{
  static const HostArray<Vector> none;
  const Rare* const rare = FindRare();
  return rare ? rare->points : none;
}

Bool HeadlessKey::SetPoints(HostArray<Vector> points) noexcept
{
  if (!FindRare() && points.IsEmpty())
    return true;
  Rare* const rare = FindOrMakeRare();
  if (rare)
    rare->points = std::move(points);
  return rare != nullptr;
}

Bool HeadlessKey::GetParameter(const HostDescId& id, HostValue& value) const noexcept
{
  if (_settings.parameter != kNoNumber && IsSetting(id))
  {
    value = HostValue(Int(_settings.parameter));
    return true;
  }
  const Rare* const rare = FindRare();
  const HostValue* const found = rare ? rare->parameters.Find(id) : nullptr;
  if (found)
    value = *found;
  return found != nullptr;
}

Bool HeadlessKey::SetInTable(const HostDescId& id, const HostValue& value) noexcept
{
  HeadlessContainer* const parameters = FindOrMakeParameters();
  return parameters && parameters->Set(id, value);
}

HeadlessContainer* HeadlessKey::FindOrMakeParameters() noexcept
{
  Rare* const rare = FindOrMakeRare();
  if (!rare || !CopyParametersTo(rare->parameters))
    return nullptr;
  _settings.parameter = kNoNumber;
  return &rare->parameters;
}

Bool HeadlessKey::CopyParametersTo(HeadlessContainer& table) const noexcept
{
  if (_settings.parameter != kNoNumber)
    return table.Set(HostDescId(kKeySettingParameter), HostValue(Int(_settings.parameter)));
  const Rare* const rare = FindRare();
  return !rare || &rare->parameters == &table || table.CopyFrom(rare->parameters);
}

Bool HeadlessKey::CopyFrom(const HeadlessKey& other) noexcept
{
  if (other._details)
  {
    if (!FindOrMakeDetails())
      return false;
    _details->left = other._details->left;
    _details->right = other._details->right;
  }
  if (const Rare* const rare = other.FindRare())
  {
    if (!SetLongModes(rare->rotationMode, rare->auxiliaryMode) || !SetPoints(rare->points) ||
        !_details->rare->parameters.CopyFrom(rare->parameters))
      return false;
  }
  _value = other._value;
  _settings = other._settings;
  return true;
}

}  // namespace q7z
