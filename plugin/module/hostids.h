#pragma once

// The host's numbers that more than one subsystem uses. They stay numeric where a check quotes them.

#include "framework/string.h"
#include "framework/types.h"

namespace q7z
{

// Object types.
inline constexpr Int32 kPolygonObjectType = 5100;
inline constexpr Int32 kNullObjectType = 5140;
inline constexpr Int32 kCameraObjectType = 5103;
inline constexpr Int32 kRenderCameraObjectType = 1057516;
inline constexpr Int32 kJointObjectType = 1019362;
inline constexpr Int32 kSkinDeformerType = 1019363;
inline constexpr Int32 kInstanceObjectType = 5126;
inline constexpr Int32 kSecondInstanceObjectType = 1018957;

// Tag types.
inline constexpr Int32 kPointDataType = 5600;
inline constexpr Int32 kPolygonDataType = 5604;
inline constexpr Int32 kUvwTagType = 5671;
inline constexpr Int32 kNormalTagType = 5711;
inline constexpr Int32 kVertexColorTagType = 431000045;
inline constexpr Int32 kPolygonSelectionTagType = 5673;
inline constexpr Int32 kTextureTagType = 5616;
inline constexpr Int32 kPhongTagType = 5612;
inline constexpr Int32 kWeightTagType = 1019365;
inline constexpr Int32 kPoseMorphTagType = 1024237;
inline constexpr Int32 kNodeBasedTagType = 1001149;

inline constexpr Int32 kMaterialType = 5703;

// Data types of a parameter's levels and values.
inline constexpr Int32 kIntegerDataType = 15;
inline constexpr Int32 kRealDataType = 19;
inline constexpr Int32 kVectorDataType = 23;
inline constexpr Int32 kStringDataType = 130;
inline constexpr Int32 kUnitDataType = 200000275;

// Object parameters: three vectors with the components kComponentX .. kComponentZ as second level.
inline constexpr Int32 kPositionParameter = 903;
inline constexpr Int32 kRotationParameter = 904;
inline constexpr Int32 kScaleParameter = 905;
inline constexpr Int32 kComponentX = 1000;
inline constexpr Int32 kComponentY = 1001;
inline constexpr Int32 kComponentZ = 1002;
inline constexpr Int32 kPointTrackParameter = 100004812;

// Parameters of a camera: angles in radians, distances in host lengths.
inline constexpr Int32 kCameraZoom = 1000;
inline constexpr Int32 kCameraProjection = 1001;
inline constexpr Int32 kCameraHorizontalAngle = 1008;
inline constexpr Int32 kCameraNearDistance = 1122;
inline constexpr Int32 kCameraNearEnabled = 1123;
inline constexpr Int32 kCameraFarDistance = 1128;
inline constexpr Int32 kCameraFarEnabled = 1129;
inline constexpr Int32 kCameraVerticalAngle = 4600;

// Parameters of the render data: pixels.
inline constexpr Int32 kRenderWidth = 5008;
inline constexpr Int32 kRenderHeight = 5009;

// Document parameters.
inline constexpr Int32 kDocumentRateParameter = 1001;
inline constexpr Int32 kDocumentStartParameter = 1002;
inline constexpr Int32 kDocumentEndParameter = 1003;
inline constexpr Int32 kDocumentSecondStartParameter = 1004;
inline constexpr Int32 kDocumentSecondEndParameter = 1005;
inline constexpr Int32 kDocumentGeneratorParameter = 2000;  // what an import writes
inline constexpr Int32 kDocumentAuthorParameter = 2002;     // what an export reads as generator
inline constexpr Int32 kDocumentCopyrightParameter = 2007;
inline constexpr Int32 kDocumentUnitSetting = 2117;  // in the settings container

// Visibility.
inline constexpr Int32 kEditorVisibility = 0;
inline constexpr Int32 kRenderVisibility = 1;
inline constexpr Int32 kHiddenMode = 1;

// Flags of a scene load or save.
inline constexpr Int32 kLoadObjects = 1;
inline constexpr Int32 kLoadMaterials = 2;
inline constexpr Int32 kLoadDialogsAllowed = 8;
inline constexpr Int32 kLoadMerging = 32;

/// The node space in which materials are made by import and read by export.
inline constexpr String kStandardNodeSpace = "com.brenmoor3d.brenmoor4q7z.class.nodespace"_s;

}  // namespace q7z
