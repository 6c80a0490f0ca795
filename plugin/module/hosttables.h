#pragma once

// HostTables: what the host hands over with the attach message: its version, then one pointer for each family of operations.
// The tables live as long as the module is attached. A test swaps single pointers.

#include "plugin/module/hostfwd.h"

namespace q7z
{

inline constexpr UInt32 kMinimumHostVersion = 2025100;

struct HostTables
{
  UInt32 version = 0;

  HostRegistrationTable* registration = nullptr;
  HostResourceTable* resource = nullptr;
  HostDescriptionTable* description = nullptr;
  HostDocumentTable* document = nullptr;
  HostNodeTable* node = nullptr;
  HostObjectTable* object = nullptr;
  HostHierarchyTable* hierarchy = nullptr;
  HostTransformTable* transform = nullptr;
  HostVisibilityTable* visibility = nullptr;
  HostParameterTable* parameter = nullptr;
  HostContainerTable* container = nullptr;
  HostUnitTable* unit = nullptr;
  HostInstanceTable* instance = nullptr;
  HostModelingTable* modeling = nullptr;
  HostAliasTable* alias = nullptr;
  HostPolygonTable* polygon = nullptr;
  HostPhongTable* phong = nullptr;
  HostTagTable* tag = nullptr;
  HostNormalTable* normal = nullptr;
  HostUvwTable* uvw = nullptr;
  HostVertexColorTable* vertexColor = nullptr;
  HostSelectionTable* selection = nullptr;
  HostNeighborTable* neighbor = nullptr;
  HostWeightTable* weight = nullptr;
  HostPoseMorphTable* poseMorph = nullptr;
  HostTextureTable* texture = nullptr;
  HostNodeMasterTable* nodeMaster = nullptr;
  HostTrackTable* track = nullptr;
  HostCurveTable* curve = nullptr;
  HostKeyTable* key = nullptr;
  HostTakeTable* take = nullptr;
  HostLayerTable* layer = nullptr;
  HostMaterialTable* material = nullptr;
  HostBitmapTable* bitmap = nullptr;
  HostFileTable* file = nullptr;
  HostDialogTable* dialog = nullptr;
  HostConsoleTable* console = nullptr;
};

inline constexpr int kHostTableCount = 37;
static_assert(sizeof(HostTables) == (kHostTableCount + 1) * sizeof(void*));

/// The tables of the attached host, null before attach and after detach. Defined by the module shell; set by attach alone (and
/// by tests). Wrappers use it without a test: nothing of the plug-in runs while it is null.
extern const HostTables* g_hostTables;

}  // namespace q7z
