#pragma once

// Each source of tables sets the pointers of its families. For FillSceneTables alone.

#include "plugin/module/hosttables.h"

namespace q7z
{

void FillNodeTables(HostTables& tables) noexcept;     ///< nodes, parameters, containers, units
void FillObjectTables(HostTables& tables) noexcept;   ///< objects, hierarchy, transforms, visibility, instances, alias
void FillPolygonTables(HostTables& tables) noexcept;  ///< polygon data, phong, neighbours
void FillTagTables(HostTables& tables) noexcept;      ///< tags, corner data, colours, selections, textures, node masters
void FillSkinTables(HostTables& tables) noexcept;     ///< weights, pose morphs
void FillTrackTables(HostTables& tables) noexcept;    ///< tracks, curves, keys
void FillTakeTables(HostTables& tables) noexcept;     ///< takes, layers

}  // namespace q7z
