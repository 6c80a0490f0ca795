#include "host/scene/scenetables.h"

#include "host/scene/tablefamilies.h"

namespace q7z
{

void FillSceneTables(HostTables& tables, HeadlessSceneState& state) noexcept
{
  FillNodeTables(tables);
  FillObjectTables(tables);
  FillPolygonTables(tables);
  FillTagTables(tables);
  FillSkinTables(tables);
  FillTrackTables(tables);
  FillTakeTables(tables);
  tables.document = &state.documentTable;
  tables.material = &state.materialTable;
}

}  // namespace q7z
