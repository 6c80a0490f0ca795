// The words of the module: every message whose text is settled, looked up in the bytes of the built library. A row is pending
// until the subsystem that says it is built; whoever builds it turns the row over, and a message that appears before that fails.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "framework/types.h"
#include "host/platform/platform.h"

namespace q7z::test
{
namespace
{

enum Status
{
  kBuilt,
  kPending,
};

enum Kind
{
  kState,     // "Illegal state: Condition ... not fulfilled. ", with the trailing blank
  kArgument,  // the same of an argument
  kText,      // a text of its own
};

struct SettledMessage
{
  Status status;
  Kind kind;
  const char* text;
};

// clang-format off
const SettledMessage kSettledMessages[] = {
  // Document model.
  {kBuilt, kState, "callback(dataValue, idx)"},
  {kBuilt, kState, "_gltfData"},
  {kBuilt, kState, "jsonGLTF.IsPopulated()"},
  {kBuilt, kState, "_sceneLoader"},
  // Loader driver.
  {kBuilt, kState, "importer && fileUrl.IsPopulated()"},
  {kBuilt, kState, "FillInLoadedData(jsonGLTF)"},
  {kBuilt, kState, "ResolveAssets(backgroundJob)"},
  {kBuilt, kState, "jsonArray.IsPopulated()"},
  // GLB container.
  {kBuilt, kState, "glbFile->Open(glbFilename, FILEOPEN::READ, FILEDIALOG::IGNOREOPEN, BYTEORDER::V_INTEL)"},
  {kBuilt, kState, "glbFile->Seek(12)"},
  {kBuilt, kState, "glbFile->ReadUInt32(&chunkLength)"},
  {kBuilt, kState, "glbFile->ReadUInt32(&chunkType)"},
  {kBuilt, kState, "(firstChunk && isGltfChunk) || (!firstChunk && !isGltfChunk)"},
  {kBuilt, kState, "glbFile->ReadBytes(gltfChunkBytes.GetFirst(), chunkLength) == chunkLength"},
  {kBuilt, kState, "glbFile->Seek(chunkLength)"},
  {kBuilt, kState, "glbFile->Seek(chunkLength % 4)"},
  // Buffers.
  {kBuilt, kState, "assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE"},
  {kBuilt, kState, "GeFExist(fileName)"},
  {kBuilt, kState, "file->Open(fileName)"},
  {kBuilt, kState, "file->Close()"},
  {kBuilt, kState, "bytesRead == _buffer.GetCount()"},
  {kBuilt, kState, "_buffer.GetCount() >= (Int)_byteLength"},
  {kBuilt, kState, "(offset >= 0 && offset < _byteLength - byteCount + 1)"},
  {kBuilt, kState, "(static_cast<Int>(offset) >= 0 && static_cast<Int>(offset) < _buffer.GetCount() - byteCount + 1)"},
  {kBuilt, kState, "(idx >= 0 && idx < _byteLength - byteCount + 1)"},
  {kBuilt, kState, "_buffer"},
  // Accessors.
  {kBuilt, kState, "_type == \"SCALAR\"_s"},
  {kBuilt, kState, "(idx >= 0 && idx < _count)"},
  {kBuilt, kState, "!IsNonIndexed()"},
  {kBuilt, kState, "componentCount && componentTypeSize"},
  {kBuilt, kState, "accessor"},
  {kBuilt, kState, "nonIndexedAllowed"},
  {kBuilt, kState, "accessor->IsOfType({\"SCALAR\"_s})"},
  {kBuilt, kState, "bView"},
  {kBuilt, kState, "buff"},
  {kBuilt, kState, "_elementByteCount"},
  {kBuilt, kState, "!IsNonIndexed() && _bufferView"},
  {kPending, kState, "GetComponentCount() == vals.GetCount()"},
  // Nodes and skins.
  {kBuilt, kState, "16 == matrixArray.GetCount()"},
  {kBuilt, kState, "4 == rotationArray.GetCount()"},
  {kBuilt, kState, "3 == scaleArray.GetCount()"},
  {kBuilt, kState, "3 == translationArray.GetCount()"},
  {kBuilt, kArgument, "gltfData"},
  // Import.
  {kBuilt, kState, "description->LoadDescription(\"fgltfimporter\")"},
  {kBuilt, kState, "node && doc && error"},
  {kBuilt, kState, "_doc"},
  {kBuilt, kState, "sceneParent"},
  {kBuilt, kState, "LoadMetaInfo()"},
  {kBuilt, kArgument, "parent"},
  {kBuilt, kState, "addNodeIndicesToImport(nodeIndices, parent)"},
  {kBuilt, kState, "node"},
  {kBuilt, kState, "opMain"},
  {kBuilt, kState, "meshPtr && meshPtr->IsValid()"},
  {kBuilt, kState, "meshPolys.GetCount()"},
  {kBuilt, kState, "opMesh"},
  {kBuilt, kState, "poly"},
  {kBuilt, kState, "rootLayer"},
  {kBuilt, kState, "polygonObjectOp"},
  // Mesh records.
  {kBuilt, kState, "keyValid && valueValid"},
  {kBuilt, kState, "_weights.IsEmpty() || prim.GetTargetsCount() <= _weights.GetCount()"},
  {kBuilt, kState, "_targets.GetCount() == _targetsAccessors.GetCount()"},
  {kBuilt, kState, "IsValid()"},
  {kBuilt, kState, "posAcc"},
  {kBuilt, kState, "result.first && result.second"},
  // Mesh creation.
  {kBuilt, kState, "_options"},
  {kBuilt, kState, "vertexCount"},
  {kBuilt, kState, "polyCount"},
  {kBuilt, kState, "(meshCreator.cursorPoints + vertexCount - 1 >= 0 && meshCreator.cursorPoints + vertexCount - 1 < poly->GetPointCount())"},
  {kBuilt, kState, "(meshCreator.cursorPolygons + polyCount - 1 >= 0 && meshCreator.cursorPolygons + polyCount - 1 < poly->GetPolygonCount())"},
  {kBuilt, kState, "AddMeshPositions(meshCreator, _primAccessors, nullptr, vertexCount, flipZMultiplier, options.GetScale())"},
  {kBuilt, kState, "AddMeshPolygons(meshCreator, _primAccessors, polyCount, options.IsFlipZ())"},
  {kBuilt, kState, "AddMeshNormals(meshCreator, _primAccessors, nullptr, polyCount, flipZMultiplier)"},
  {kBuilt, kState, "AddMeshVertexColors(meshCreator, _primAccessors, nullptr, vertexCount)"},
  {kBuilt, kState, "AddMeshUVs(meshCreator, _primAccessors, nullptr, polyCount)"},
  {kBuilt, kState, "AddPolygonSelections(meshCreator, _primAccessors, polyCount)"},
  {kBuilt, kState, "ptsAccessor"},
  {kBuilt, kState, "ptsArray"},
  {kBuilt, kState, "idxAccessor"},
  {kBuilt, kState, "polys"},
  {kBuilt, kState, "handle"},
  {kBuilt, kState, "deltaAccessor"},
  {kBuilt, kState, "polySelBSel"},
  {kBuilt, kState, "meshCreator.mesh"},
  {kBuilt, kState, "polySel"},
  // Cameras.
  {kBuilt, kState, "cameraPtr"},
  {kBuilt, kState, "src.IsPopulated()"},
  {kBuilt, kArgument, "src.IsPopulated()"},
  {kBuilt, kState, "rd"},
  {kBuilt, kState, "camera"},
  // Skin weights.
  {kBuilt, kState, "gltfSkin"},
  {kBuilt, kState, "q7zJointIdx != -1"},
  {kBuilt, kState, "skinPtr"},
  {kBuilt, kState, "skinCreator.IsValid()"},
  {kBuilt, kState, "baseAccessors._skinJointsAccessors.IsPopulated()"},
  {kBuilt, kState, "baseAccessors._skinJointsAccessors.GetCount() == baseAccessors._skinWeightsAccessors.GetCount()"},
  {kBuilt, kState, "skinCreator._skinWeightTag"},
  {kBuilt, kState, "skinCreator._mapJointIndicesGltfToQ7Z.IsPopulated()"},
  {kBuilt, kState, "skinCreator._mapJointIndicesGltfToQ7Z.GetCount() == skinCreator._skinWeightTag->GetJointCount()"},
  {kBuilt, kState, "weightsAccessorEntry"},
  {kBuilt, kState, "q7zJointIdxEntry"},
  {kBuilt, kState, "AddMeshSkinJointWeights(meshCreator, *skinCreator, _primAccessors, vertexCount, skinPtr)"},
  // Morph targets.
  {kBuilt, kState, "poseMeshCreator.AllocatePolyAndTags(vertexCount, polyCount)"},
  {kBuilt, kState, "_poseMorphTag->ExitEdit(doc, true)"},
  {kBuilt, kState, "targetCreator._targetMeshCreators.GetCount() == GetTargetsCount()"},
  {kBuilt, kState, "targetCreator._poseMorphTag"},
  {kBuilt, kState, "targetCreator._meshCreator"},
  {kBuilt, kState, "(poseMeshCreator.cursorPoints + vertexCount - 1 >= 0 && poseMeshCreator.cursorPoints + vertexCount - 1 < poly->GetPointCount())"},
  {kBuilt, kState, "(poseMeshCreator.cursorPolygons + polyCount - 1 >= 0 && poseMeshCreator.cursorPolygons + polyCount - 1 < poly->GetPolygonCount())"},
  {kBuilt, kState, "AddMeshPositions(poseMeshCreator, _primAccessors, targetAccForPointsPointer, vertexCount, flipZMultiplier, options.GetScale())"},
  {kBuilt, kState, "AddMeshPolygons(poseMeshCreator, _primAccessors, polyCount, options.IsFlipZ())"},
  {kBuilt, kState, "AddMeshNormals(poseMeshCreator, _primAccessors, &targetAccessors, polyCount, flipZMultiplier)"},
  {kBuilt, kState, "AddMeshVertexColors(poseMeshCreator, _primAccessors, &targetAccessors, vertexCount)"},
  {kBuilt, kState, "AddMeshUVs(poseMeshCreator, _primAccessors, &targetAccessors, polyCount)"},
  {kBuilt, kState, "_meshCreator && _meshCreator->mesh"},
  {kBuilt, kState, "_poseMorphTag"},
  {kBuilt, kState, "_posesParentOp"},
  {kBuilt, kState, "poseOp"},
  {kBuilt, kState, "weights.GetCount() == _targetMeshCreators.GetCount()"},
  // Materials.
  {kBuilt, kState, "_texture"},
  {kBuilt, kState, "_sampler"},
  {kBuilt, kState, "_source"},
  {kBuilt, kState, "IsBase64() && _data.IsPopulated() || GetURIString().IsPopulated()"},
  {kBuilt, kState, "_bufferView"},
  {kBuilt, kState, "assetUrl.GetScheme() == URLSCHEME_FILESYSTEM"},
  {kBuilt, kState, "_data.IsEmpty() || GetImageExtension().IsPopulated()"},
  {kBuilt, kState, "_data.IsPopulated() || (_uri.IsPopulated() && IsBase64())"},
  {kBuilt, kState, "bfOut->Open(TarnoConvert(url), FILEOPEN::WRITE, FILEDIALOG::NONE)"},
  {kBuilt, kState, "bfOut->WriteBytes(_data.GetFirst(), _data.GetCount())"},
  {kBuilt, kState, "bfOut->Close()"},
  {kBuilt, kState, "IsInitialized()"},
  {kBuilt, kState, "baseColorFactorArr.GetCount() == 4"},
  {kBuilt, kState, "emissiveFactorArr.GetCount() == 3"},
  {kBuilt, kState, "baseMaterial"},
  {kBuilt, kState, "texFolderUrl.IsPopulated()"},
  {kBuilt, kState, "ext.IsPopulated()"},
  {kBuilt, kState, "gltfMatIdx > -1"},
  {kBuilt, kState, "dupdetect"},
  {kBuilt, kState, "sourceIndex"},
  {kBuilt, kState, "reflection_layer"},
  {kBuilt, kState, "material"},
  {kBuilt, kState, "bmp"},
  {kBuilt, kState, "materialTypeId == MATERIAL::PORTBUNDLE::GLTF::GetId()"},
  {kBuilt, kState, "succeeded"},
  {kBuilt, kState, "saveConvert()"},
  {kBuilt, kState, "textureInfo"},
  {kBuilt, kState, "bitmapFilenameKey < Bitmaps::BCOUNT"},
  {kBuilt, kState, "parameterDataPtr != nullptr"},
  // Animation import.
  {kBuilt, kState, "takeData"},
  {kBuilt, kState, "mainTake"},
  {kBuilt, kState, "take"},
  {kBuilt, kArgument, "gltfAnimationIdx > -1"},
  {kBuilt, kState, "sampler"},
  {kBuilt, kState, "_inputAccessor"},
  {kBuilt, kState, "_inputAccessor->GetComponentType() == 5126"},
  {kBuilt, kState, "minArray.GetCount() == 1"},
  {kBuilt, kState, "maxArray.GetCount() == 1"},
  {kBuilt, kState, "_options && _lookupNodes"},
  {kBuilt, kArgument, "sampler"},
  {kBuilt, kArgument, "dids"},
  {kBuilt, kArgument, "_options"},
  {kBuilt, kState, "didCount == 1 || didCount == 3"},
  {kBuilt, kState, "over"},
  {kBuilt, kState, "outTrack"},
  {kBuilt, kArgument, "tracks.GetCount() == 1 || tracks.GetCount() == 3"},
  {kBuilt, kState, "track"},
  {kBuilt, kState, "tagPoseMorph"},
  // Saver and export driver.
  {kBuilt, kState, "node && description"},
  {kBuilt, kState, "description->LoadDescription(1041129)"},
  {kBuilt, kState, "exporter->_jsonDoc"},
  {kBuilt, kState, "exporter->_doc"},
  {kBuilt, kState, "_jsonDoc"},
  {kBuilt, kArgument, "doc"},
  {kBuilt, kState, "doc"},
  // Scene preprocessor.
  {kBuilt, kState, "gltfContainer"},
  {kBuilt, kState, "master"},
  {kBuilt, kState, "root"},
  {kBuilt, kState, "tTag"},
  {kBuilt, kState, "restriction"},
  {kBuilt, kState, "restriction->CopyTo(bsPolyS)"},
  {kBuilt, kState, "SendModelingCommand(220, data)"},
  {kBuilt, kArgument, "origRef"},
  {kBuilt, kArgument, "newRef"},
  {kBuilt, kState, "morph"},
  {kBuilt, kState, "SendModelingCommand(245, data)"},
  {kBuilt, kState, "data.result"},
  {kBuilt, kState, "bakedRoot"},
  {kBuilt, kState, "SendModelingCommand(221, data)"},
  {kBuilt, kState, "SendModelingCommand(227, data)"},
  // GLB writer.
  {kBuilt, kState, "bf->Open(filename, FILEOPEN::WRITE, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1')"},
  {kBuilt, kState, "bf->Open(filename, FILEOPEN::APPEND, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1')"},
  {kBuilt, kState, "bf->WriteBytes(this, sizeof(UInt32) * 3)"},
  {kBuilt, kState, "bf->WriteBytes(this, sizeof(UInt32) * 2)"},
  {kBuilt, kState, "bf->WriteBytes(chunkData.ToBlock().GetFirst(), sizeof(Char) * _chunkLength)"},
  {kBuilt, kState, "bf->Close()"},
  // Objects, skins and meshes of an export.
  {kBuilt, kArgument, "op"},
  {kBuilt, kState, "op"},
  {kBuilt, kState, "jointEntry"},
  {kBuilt, kState, "i < joints.GetCount()"},
  {kBuilt, kState, "aliastrans && aliastrans->Init(tag->GetDocument())"},
  {kBuilt, kState, "op && op->GetType() == 5100"},
  {kBuilt, kState, "hash"},
  {kBuilt, kArgument, "source"},
  {kBuilt, kState, "hashOp"},
  {kBuilt, kState, "positions"},
  {kBuilt, kState, "vertices_count > 0"},
  {kBuilt, kState, "_isInitialized"},
  {kBuilt, kState, "polygons"},
  {kBuilt, kArgument, "(init_positions.GetCount() == 0 && !isTarget) || (init_positions.GetCount() == vertex_data.GetCount() && isTarget)"},
  {kBuilt, kState, "!joints.IsPopulated()"},
  {kBuilt, kState, "!weights.IsPopulated()"},
  {kBuilt, kState, "!vertexColors.IsPopulated()"},
  {kBuilt, kState, "morphTag"},
  {kBuilt, kState, "morphNode"},
  {kBuilt, kState, "positions.GetCount() == ToPoly(op)->GetPointCount()"},
  // Animation export.
  {kBuilt, kArgument, "!curves.IsPopulated()"},
  {kBuilt, kArgument, "!tempTracks.IsPopulated()"},
  {kBuilt, kArgument, "curves[i]"},
  {kBuilt, kState, "curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount()"},
  {kBuilt, kState, "curves[dim] && curves[dim]->GetKeyCount() == bakedFrames"},
  {kBuilt, kArgument, "curves.GetCount() == Dim::COUNT"},
  {kBuilt, kArgument, "curves[dim]"},
  {kBuilt, kArgument, "curves[Dim::X]->GetKeyCount() == curves[Dim::Y]->GetKeyCount() && curves[Dim::Y]->GetKeyCount() == curves[Dim::Z]->GetKeyCount()"},
  {kBuilt, kArgument, "!keyframes.IsPopulated()"},
  {kBuilt, kArgument, "!tangents.IsPopulated()"},
  {kBuilt, kArgument, "curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount()"},
  {kBuilt, kState, "key"},
  {kBuilt, kState, "key[Dim::X] && key[Dim::Y] && key[Dim::Z]"},
  {kBuilt, kState, "key[Dim::X]->GetTime() == key[Dim::Y]->GetTime() && key[Dim::Y]->GetTime() == key[Dim::Z]->GetTime()"},
  {kBuilt, kState, "keyframes[i].second.GetCount() == Dim::COUNT"},
  {kBuilt, kState, "tangents[i].first.GetCount() == Dim::COUNT"},
  {kBuilt, kState, "tangents[i].second.GetCount() == Dim::COUNT"},
  {kBuilt, kArgument, "i0->second.GetCount() == Dim::COUNT"},
  {kBuilt, kState, "keyframes[i].second.GetCount() == 4"},
  {kBuilt, kState, "curves.GetCount() == pTag->GetMorphCount()"},
  {kBuilt, kState, "pTag"},
  {kBuilt, kState, "pTag->GetMorph(i)"},
  {kBuilt, kArgument, "keys[i]"},
  {kBuilt, kArgument, "keys[i]->GetTime() == keys[i - 1]->GetTime()"},
  // Texts that are no conditions.
  {kBuilt, kText, "JSON file couldn't be read"},
  {kBuilt, kText, "Illegal state: Accessors without bufferView aren't supported yet"},
  {kBuilt, kText, "Illegal state: Set duplication occured"},
  {kBuilt, kText, "More than one node addresses same skin #@!"},
  {kBuilt, kText, "Pose Morph Targets"},
  {kBuilt, kText, "Couldn't load animations!"},
  {kBuilt, kText, "No material importer found"},
  {kBuilt, kText, "Illegal state: Could not split object '@'"},
  {kBuilt, kText, "GLTFExporter Uninitialized."},
  {kBuilt, kText, "Illegal state: No source object found for '@'"},
  {kBuilt, kText, "Could not Alloc Bitmap."},
  {kBuilt, kText, "Could not Init Bitmap."},
  {kBuilt, kText, "Could not Init Merge Bitmap."},
  {kBuilt, kText, "Could not Init Alpha Bitmap."},
  {kBuilt, kText, "MaterialDescriptor::GetBitmapFilename Index Out of Range"},
  {kBuilt, kText, "Invalid TypedConstantParameter"},
  {kBuilt, kText, "Material: @: | Channel: @ | Filename: @ | Size: @"},
};
// clang-format on

std::string WholeText(const SettledMessage& row)
{
  if (row.kind == kText)
    return row.text;
  return (row.kind == kState ? "Illegal state: Condition " : "Illegal argument: Condition ") + std::string(row.text) +
         " not fulfilled. ";
}

const std::string& ModuleBytes()
{
  static const std::string bytes = []
  {
    const std::filesystem::path path = std::filesystem::path(Q7Z_TEST_BIN_DIR) / (std::string("io_gltf") + kLibrarySuffix);
    std::string content(std::filesystem::file_size(path), '\0');
    std::ifstream(path, std::ios::binary).read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
  }();
  return bytes;
}

class SettledMessages : public testing::TestWithParam<SettledMessage>
{};

TEST_P(SettledMessages, AreInTheModuleOnceBuilt)
{
  ASSERT_FALSE(ModuleBytes().empty());
  const Bool found = ModuleBytes().find(WholeText(GetParam())) != std::string::npos;
#ifdef __OPTIMIZE__
  // A check that the optimiser sees never to fail goes, and its text with it.
  EXPECT_FALSE(found && GetParam().status == kPending) << WholeText(GetParam());
#else
  EXPECT_EQ(found, GetParam().status == kBuilt) << WholeText(GetParam());
#endif
}

std::string RowName(const testing::TestParamInfo<SettledMessage>& row)
{
  std::string name = std::to_string(row.index) + "_" + std::string(row.param.text).substr(0, 40);
  std::ranges::replace_if(name, [](unsigned char c) { return !std::isalnum(c); }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Rows, SettledMessages, testing::ValuesIn(kSettledMessages), RowName);

TEST(SettledMessageTable, HasNoRowTwice)
{
  std::set<std::string> texts;
  for (const SettledMessage& row : kSettledMessages)
    EXPECT_TRUE(texts.insert(WholeText(row)).second) << WholeText(row);
}

}  // namespace
}  // namespace q7z::test
