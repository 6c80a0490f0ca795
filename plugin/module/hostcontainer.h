#pragma once

// HostContainer: values by numeric id, with containers inside. Plug-in instances keep their options in one, documents their
// settings and render data.

#include "plugin/module/hosttables.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

class HostContainerTable
{
public:
  /// @return the value under id, or null. Valid until the container changes.
  virtual const HostValue* Find(const HostContainer* container, Int32 id) noexcept = 0;
  /// @return false without memory.
  virtual Bool Set(HostContainer* container, Int32 id, const HostValue& value) noexcept = 0;
  virtual void Erase(HostContainer* container, Int32 id) noexcept = 0;
  /// The container under id, made when create is set. Owned by the outer one. Null when there is none or without memory.
  virtual HostContainer* GetContainer(HostContainer* container, Int32 id, Bool create) noexcept = 0;

protected:
  ~HostContainerTable() = default;
};

class HostUnitTable
{
public:
  /// (from in metres) / (to in metres): 0.01 from 1 cm to 1 m. 1 when either is no usable unit.
  virtual Float GetConversionFactor(const HostUnitScale& from, const HostUnitScale& to) noexcept = 0;

protected:
  ~HostUnitTable() = default;
};

class HostContainer
{
public:
  const HostValue* Find(Int32 id) const noexcept { return g_hostTables->container->Find(this, id); }

  // A missing value, and one of a kind that does not convert, reads as the default.
  Bool GetBool(Int32 id, Bool defaultValue = false) const noexcept
  {
    const HostValue* value = Find(id);
    return value ? value->GetBool(defaultValue) : defaultValue;
  }
  Int32 GetInt32(Int32 id, Int32 defaultValue = 0) const noexcept
  {
    const HostValue* value = Find(id);
    return value ? value->GetInt32(defaultValue) : defaultValue;
  }
  Float GetFloat(Int32 id, Float defaultValue = 0) const noexcept
  {
    const HostValue* value = Find(id);
    return value ? value->GetFloat(defaultValue) : defaultValue;
  }
  String GetString(Int32 id, const String& defaultValue = String()) const noexcept
  {
    const HostValue* value = Find(id);
    return value ? value->GetString(defaultValue) : defaultValue;
  }
  /// @return whether there is a unit-scale value under id; unit is untouched otherwise.
  Bool GetUnit(Int32 id, HostUnitScale& unit) const noexcept
  {
    const HostValue* value = Find(id);
    if (!value || value->GetKind() != HostValueKind::kUnit)
      return false;
    unit = value->GetUnit();
    return true;
  }
  Bool Set(Int32 id, const HostValue& value) noexcept { return g_hostTables->container->Set(this, id, value); }
  void Erase(Int32 id) noexcept { g_hostTables->container->Erase(this, id); }
  HostContainer* GetContainer(Int32 id, Bool create = false) noexcept
  {
    return g_hostTables->container->GetContainer(this, id, create);
  }

protected:
  HostContainer() noexcept = default;
  ~HostContainer() = default;
};

inline Float HostUnitConversionFactor(const HostUnitScale& from, const HostUnitScale& to) noexcept
{
  return g_hostTables->unit->GetConversionFactor(from, to);
}

}  // namespace q7z
