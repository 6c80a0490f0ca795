#include "host/scene/headlessdocument.h"
#include "host/scene/tablefamilies.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

namespace
{

class SceneTakeTable final : public HostTakeTable
{
public:
  HostTakeData* GetTakeData(HostDocument* document) noexcept override { return ToHost(&ToHeadless(document)->GetTakeData()); }
  HostTake* GetMainTake(HostTakeData* takeData) noexcept override { return ToHost(ToHeadless(takeData)->GetMainTake()); }
  HostTake* AddTake(HostTakeData* takeData, const String& name) noexcept override
  {
    return ToHost(ToHeadless(takeData)->AddTake(name));
  }
  void SetCurrentTake(HostTakeData* takeData, HostTake* take) noexcept override
  {
    ToHeadless(takeData)->SetCurrentTake(ToHeadless(take));
  }
  HostOverride* FindOrAddOverride(HostTake* take, HostTakeData*, HostNode* node, const HostDescId& id,
                                  const HostValue& value) noexcept override
  {
    return ToHost(ToHeadless(take)->FindOrAddOverride(ToHeadless(node), id, value));
  }
  /// Overrides are read where they stand, so there is nothing to bring up to date.
  void UpdateOverride(HostOverride*, HostTakeData*, const HostDescId&) noexcept override {}
};

class SceneLayerTable final : public HostLayerTable
{
public:
  HostLayer* GetRoot(HostDocument* document) noexcept override { return ToHost(&ToHeadless(document)->GetLayerRoot()); }
  HostLayer* Add(HostLayer* root) noexcept override { return ToHost(ToHeadless(root)->Add()); }
  Bool SetOnObject(HostObject* object, HostLayer* layer) noexcept override
  {
    return ToHeadless(object)->SetLayer(ToHeadless(layer));
  }
};

}  // namespace

void FillTakeTables(HostTables& tables) noexcept
{
  static SceneTakeTable take;
  static SceneLayerTable layer;
  tables.take = &take;
  tables.layer = &layer;
}

}  // namespace q7z
