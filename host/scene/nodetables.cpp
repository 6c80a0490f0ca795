#include <cmath>

#include "host/scene/scenetables.h"
#include "host/scene/tablefamilies.h"

namespace q7z
{

namespace
{

class SceneNodeTable final : public HostNodeTable
{
public:
  Int32 GetType(const HostNode* node) noexcept override { return ToHeadless(node)->GetType(); }
  Bool IsInstanceOf(const HostNode* node, Int32 type) noexcept override { return ToHeadless(node)->GetType() == type; }
  String GetName(const HostNode* node) noexcept override { return ToHeadless(node)->GetName(); }
  Bool SetName(HostNode* node, const String& name) noexcept override { return ToHeadless(node)->SetName(name); }
  HostDocument* GetDocument(const HostNode* node) noexcept override { return ToHost(ToHeadless(node)->GetDocument()); }
  HostContainer* GetContainer(HostNode* node) noexcept override { return ToHost(&ToHeadless(node)->GetParameters()); }
  void Free(HostNode* node) noexcept override { HeadlessNode::Free(ToHeadless(node)); }
};

class SceneParameterTable final : public HostParameterTable
{
public:
  Bool Get(const HostNode* node, const HostDescId& id, HostValue& value, Int32) noexcept override
  {
    return ToHeadless(node)->GetParameter(id, value);
  }
  Bool Set(HostNode* node, const HostDescId& id, const HostValue& value, Int32) noexcept override
  {
    return ToHeadless(node)->SetParameter(id, value);
  }
};

class SceneContainerTable final : public HostContainerTable
{
public:
  const HostValue* Find(const HostContainer* container, Int32 id) noexcept override { return ToHeadless(container)->Find(id); }
  Bool Set(HostContainer* container, Int32 id, const HostValue& value) noexcept override
  {
    return ToHeadless(container)->Set(id, value);
  }
  void Erase(HostContainer* container, Int32 id) noexcept override { ToHeadless(container)->Erase(id); }
  HostContainer* GetContainer(HostContainer* container, Int32 id, Bool create) noexcept override
  {
    return ToHost(ToHeadless(container)->GetContainer(id, create));
  }
};

class SceneUnitTable final : public HostUnitTable
{
public:
  Float GetConversionFactor(const HostUnitScale& from, const HostUnitScale& to) noexcept override
  {
    return GetUnitConversionFactor(from, to);
  }
};

/// A unit scale in metres, or 0 for one that cannot be used.
Float GetMetres(const HostUnitScale& scale) noexcept
{
  // Kilometre, metre, centimetre, millimetre, micrometre, nanometre, mile, yard, foot, inch: codes 1 to 10.
  constexpr Float kMetres[] = {1000, 1, 0.01, 0.001, 1e-6, 1e-9, 1609.344, 0.9144, 0.3048, 0.0254};
  constexpr Int32 kCodeCount = sizeof(kMetres) / sizeof(kMetres[0]);
  const Bool isUsable = scale.unitCode >= 1 && scale.unitCode <= kCodeCount && scale.factor > 0 && std::isfinite(scale.factor);
  return isUsable ? scale.factor * kMetres[scale.unitCode - 1] : 0;
}

}  // namespace

Float GetUnitConversionFactor(const HostUnitScale& from, const HostUnitScale& to) noexcept
{
  const Float fromMetres = GetMetres(from);
  const Float toMetres = GetMetres(to);
  const Float factor = fromMetres > 0 && toMetres > 0 ? fromMetres / toMetres : 1;
  return factor > 0 && std::isfinite(factor) ? factor : 1;
}

void FillNodeTables(HostTables& tables) noexcept
{
  static SceneNodeTable node;
  static SceneParameterTable parameter;
  static SceneContainerTable container;
  static SceneUnitTable unit;
  tables.node = &node;
  tables.parameter = &parameter;
  tables.container = &container;
  tables.unit = &unit;
}

}  // namespace q7z
