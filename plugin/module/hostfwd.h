#pragma once

// Forward declarations of the host interface and the one way from plug-in code to the host's function tables. The entity classes
// are opaque here: the host makes the objects behind them, plug-in code sees pointers whose operations call a table.

#include "framework/types.h"

namespace q7z
{

// Entities.
class HostNode;
class HostDocument;
class HostObject;
class HostPolygonObject;
class HostTag;
class HostNormalTag;
class HostUvwTag;
class HostVertexColorTag;
class HostPolygonSelectionTag;
class HostTextureTag;
class HostWeightTag;
class HostPoseMorphTag;
class HostTrack;
class HostCurve;
class HostKey;
class HostTakeData;
class HostTake;
class HostOverride;
class HostLayer;
class HostMaterial;
class HostShader;
class HostBitmap;
class HostImage;
class HostFile;
class HostContainer;
class HostSelection;
class HostNeighbor;
class HostMorph;
class HostPointNode;
class HostAliasTrans;
class HostDescription;
class HostDialogBase;
class HostNodeMaster;

// Values.
class HostDescId;
class HostValue;
class HostFilename;

// Function tables, one per family of operations.
class HostRegistrationTable;
class HostResourceTable;
class HostDescriptionTable;
class HostDocumentTable;
class HostNodeTable;
class HostObjectTable;
class HostHierarchyTable;
class HostTransformTable;
class HostVisibilityTable;
class HostParameterTable;
class HostContainerTable;
class HostUnitTable;
class HostInstanceTable;
class HostModelingTable;
class HostAliasTable;
class HostPolygonTable;
class HostPhongTable;
class HostTagTable;
class HostNormalTable;
class HostUvwTable;
class HostVertexColorTable;
class HostSelectionTable;
class HostNeighborTable;
class HostWeightTable;
class HostPoseMorphTable;
class HostTextureTable;
class HostNodeMasterTable;
class HostTrackTable;
class HostCurveTable;
class HostKeyTable;
class HostTakeTable;
class HostLayerTable;
class HostMaterialTable;
class HostBitmapTable;
class HostFileTable;
class HostDialogTable;
class HostConsoleTable;

}  // namespace q7z
