// The words of the module: every message whose text is settled, looked up in the bytes of the built library.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "host/platform/platform.h"

namespace q7z::test
{
namespace
{

// Conditions of "Illegal state: Condition ... not fulfilled. ", with the trailing blank.
const char* const kStates[] = {
  // Document model.
  "callback(dataValue, idx)", "_gltfData", "jsonGLTF.IsPopulated()", "_sceneLoader",
  // Loader driver.
  "importer && fileUrl.IsPopulated()", "FillInLoadedData(jsonGLTF)", "ResolveAssets(backgroundJob)", "jsonArray.IsPopulated()",
  // GLB container.
  "glbFile->Open(glbFilename, FILEOPEN::READ, FILEDIALOG::IGNOREOPEN, BYTEORDER::V_INTEL)", "glbFile->Seek(12)",
  "glbFile->ReadUInt32(&chunkLength)", "glbFile->ReadUInt32(&chunkType)",
  "(firstChunk && isGltfChunk) || (!firstChunk && !isGltfChunk)",
  "glbFile->ReadBytes(gltfChunkBytes.GetFirst(), chunkLength) == chunkLength", "glbFile->Seek(chunkLength)",
  "glbFile->Seek(chunkLength % 4)",
  // Buffers.
  "assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE", "GeFExist(fileName)",
  "file->Open(fileName)", "file->Close()", "bytesRead == _buffer.GetCount()", "_buffer.GetCount() >= (Int)_byteLength",
  "(offset >= 0 && offset < _byteLength - byteCount + 1)",
  "(static_cast<Int>(offset) >= 0 && static_cast<Int>(offset) < _buffer.GetCount() - byteCount + 1)",
  "(idx >= 0 && idx < _byteLength - byteCount + 1)", "_buffer",
  // Accessors.
  "_type == \"SCALAR\"_s", "(idx >= 0 && idx < _count)", "!IsNonIndexed()", "componentCount && componentTypeSize", "accessor",
  "nonIndexedAllowed", "accessor->IsOfType({\"SCALAR\"_s})", "bView", "buff", "_elementByteCount",
  "!IsNonIndexed() && _bufferView",
  // Nodes and skins.
  "16 == matrixArray.GetCount()", "4 == rotationArray.GetCount()", "3 == scaleArray.GetCount()",
  "3 == translationArray.GetCount()",
  // Import.
  "description->LoadDescription(\"fgltfimporter\")", "node && doc && error", "_doc", "sceneParent", "LoadMetaInfo()",
  "addNodeIndicesToImport(nodeIndices, parent)", "node", "opMain", "meshPtr && meshPtr->IsValid()", "meshPolys.GetCount()",
  "opMesh", "poly", "rootLayer", "polygonObjectOp",
  // Mesh records.
  "keyValid && valueValid", "_weights.IsEmpty() || prim.GetTargetsCount() <= _weights.GetCount()",
  "_targets.GetCount() == _targetsAccessors.GetCount()", "IsValid()", "posAcc", "result.first && result.second",
  // Mesh creation.
  "_options", "vertexCount", "polyCount",
  "(meshCreator.cursorPoints + vertexCount - 1 >= 0 && meshCreator.cursorPoints + vertexCount - 1 < poly->GetPointCount())",
  "(meshCreator.cursorPolygons + polyCount - 1 >= 0 && meshCreator.cursorPolygons + polyCount - 1 < poly->GetPolygonCount())",
  "AddMeshPositions(meshCreator, _primAccessors, nullptr, vertexCount, flipZMultiplier, options.GetScale())",
  "AddMeshPolygons(meshCreator, _primAccessors, polyCount, options.IsFlipZ())",
  "AddMeshNormals(meshCreator, _primAccessors, nullptr, polyCount, flipZMultiplier)",
  "AddMeshVertexColors(meshCreator, _primAccessors, nullptr, vertexCount)",
  "AddMeshUVs(meshCreator, _primAccessors, nullptr, polyCount)", "AddPolygonSelections(meshCreator, _primAccessors, polyCount)",
  "ptsAccessor", "ptsArray", "idxAccessor", "polys", "handle", "deltaAccessor", "polySelBSel", "meshCreator.mesh", "polySel",
  // Cameras.
  "cameraPtr", "src.IsPopulated()", "rd", "camera",
  // Skin weights.
  "gltfSkin", "q7zJointIdx != -1", "skinPtr", "skinCreator.IsValid()", "baseAccessors._skinJointsAccessors.IsPopulated()",
  "baseAccessors._skinJointsAccessors.GetCount() == baseAccessors._skinWeightsAccessors.GetCount()", "skinCreator._skinWeightTag",
  "skinCreator._mapJointIndicesGltfToQ7Z.IsPopulated()",
  "skinCreator._mapJointIndicesGltfToQ7Z.GetCount() == skinCreator._skinWeightTag->GetJointCount()", "weightsAccessorEntry",
  "q7zJointIdxEntry", "AddMeshSkinJointWeights(meshCreator, *skinCreator, _primAccessors, vertexCount, skinPtr)",
  // Morph targets.
  "poseMeshCreator.AllocatePolyAndTags(vertexCount, polyCount)", "_poseMorphTag->ExitEdit(doc, true)",
  "targetCreator._targetMeshCreators.GetCount() == GetTargetsCount()", "targetCreator._poseMorphTag",
  "targetCreator._meshCreator",
  ("(poseMeshCreator.cursorPoints + vertexCount - 1 >= 0 && poseMeshCreator.cursorPoints + vertexCount - 1 < "
   "poly->GetPointCount())"),
  ("(poseMeshCreator.cursorPolygons + polyCount - 1 >= 0 && poseMeshCreator.cursorPolygons + polyCount - 1 < "
   "poly->GetPolygonCount())"),
  ("AddMeshPositions(poseMeshCreator, _primAccessors, targetAccForPointsPointer, vertexCount, flipZMultiplier, "
   "options.GetScale())"),
  "AddMeshPolygons(poseMeshCreator, _primAccessors, polyCount, options.IsFlipZ())",
  "AddMeshNormals(poseMeshCreator, _primAccessors, &targetAccessors, polyCount, flipZMultiplier)",
  "AddMeshVertexColors(poseMeshCreator, _primAccessors, &targetAccessors, vertexCount)",
  "AddMeshUVs(poseMeshCreator, _primAccessors, &targetAccessors, polyCount)", "_meshCreator && _meshCreator->mesh",
  "_poseMorphTag", "_posesParentOp", "poseOp", "weights.GetCount() == _targetMeshCreators.GetCount()",
  // Materials.
  "_texture", "_sampler", "_source", "IsBase64() && _data.IsPopulated() || GetURIString().IsPopulated()", "_bufferView",
  "assetUrl.GetScheme() == URLSCHEME_FILESYSTEM", "_data.IsEmpty() || GetImageExtension().IsPopulated()",
  "_data.IsPopulated() || (_uri.IsPopulated() && IsBase64())",
  "bfOut->Open(TarnoConvert(url), FILEOPEN::WRITE, FILEDIALOG::NONE)", "bfOut->WriteBytes(_data.GetFirst(), _data.GetCount())",
  "bfOut->Close()", "IsInitialized()", "baseColorFactorArr.GetCount() == 4", "emissiveFactorArr.GetCount() == 3", "baseMaterial",
  "texFolderUrl.IsPopulated()", "ext.IsPopulated()", "gltfMatIdx > -1", "dupdetect", "sourceIndex", "reflection_layer",
  "material", "bmp", "materialTypeId == MATERIAL::PORTBUNDLE::GLTF::GetId()", "succeeded", "saveConvert()", "textureInfo",
  "bitmapFilenameKey < Bitmaps::BCOUNT", "parameterDataPtr != nullptr",
  // Animation import.
  "takeData", "mainTake", "take", "sampler", "_inputAccessor", "_inputAccessor->GetComponentType() == 5126",
  "minArray.GetCount() == 1", "maxArray.GetCount() == 1", "_options && _lookupNodes", "didCount == 1 || didCount == 3", "over",
  "outTrack", "track", "tagPoseMorph",
  // Saver and export driver.
  "node && description", "description->LoadDescription(1041129)", "exporter->_jsonDoc", "exporter->_doc", "_jsonDoc", "doc",
  // Scene preprocessor.
  "gltfContainer", "master", "root", "tTag", "restriction", "restriction->CopyTo(bsPolyS)", "SendModelingCommand(220, data)",
  "morph", "SendModelingCommand(245, data)", "data.result", "bakedRoot", "SendModelingCommand(221, data)",
  "SendModelingCommand(227, data)",
  // GLB writer.
  "bf->Open(filename, FILEOPEN::WRITE, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1')",
  "bf->Open(filename, FILEOPEN::APPEND, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1')",
  "bf->WriteBytes(this, sizeof(UInt32) * 3)", "bf->WriteBytes(this, sizeof(UInt32) * 2)",
  "bf->WriteBytes(chunkData.ToBlock().GetFirst(), sizeof(Char) * _chunkLength)", "bf->Close()",
  // Objects, skins and meshes of an export.
  "op", "jointEntry", "i < joints.GetCount()", "aliastrans && aliastrans->Init(tag->GetDocument())",
  "op && op->GetType() == 5100", "hash", "hashOp", "positions", "vertices_count > 0", "_isInitialized", "polygons",
  "!joints.IsPopulated()", "!weights.IsPopulated()", "!vertexColors.IsPopulated()", "morphTag", "morphNode",
  "positions.GetCount() == ToPoly(op)->GetPointCount()",
  // Animation export.
  "curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount()", "curves[dim] && curves[dim]->GetKeyCount() == bakedFrames", "key",
  "key[Dim::X] && key[Dim::Y] && key[Dim::Z]",
  "key[Dim::X]->GetTime() == key[Dim::Y]->GetTime() && key[Dim::Y]->GetTime() == key[Dim::Z]->GetTime()",
  "keyframes[i].second.GetCount() == Dim::COUNT", "tangents[i].first.GetCount() == Dim::COUNT",
  "tangents[i].second.GetCount() == Dim::COUNT", "keyframes[i].second.GetCount() == 4",
  "curves.GetCount() == pTag->GetMorphCount()", "pTag", "pTag->GetMorph(i)"};

// The same of an argument.
const char* const kArguments[] = {
  // Nodes and skins.
  "gltfData",
  // Import.
  "parent",
  // Cameras.
  "src.IsPopulated()",
  // Animation import.
  "gltfAnimationIdx > -1", "sampler", "dids", "_options", "tracks.GetCount() == 1 || tracks.GetCount() == 3",
  // Saver and export driver.
  "doc",
  // Scene preprocessor.
  "origRef", "newRef",
  // Objects, skins and meshes of an export.
  "op", "source",
  "(init_positions.GetCount() == 0 && !isTarget) || (init_positions.GetCount() == vertex_data.GetCount() && isTarget)",
  // Animation export.
  "!curves.IsPopulated()", "!tempTracks.IsPopulated()", "curves[i]", "curves.GetCount() == Dim::COUNT", "curves[dim]",
  ("curves[Dim::X]->GetKeyCount() == curves[Dim::Y]->GetKeyCount() && "
   "curves[Dim::Y]->GetKeyCount() == curves[Dim::Z]->GetKeyCount()"),
  "!keyframes.IsPopulated()", "!tangents.IsPopulated()", "curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount()",
  "i0->second.GetCount() == Dim::COUNT", "keys[i]", "keys[i]->GetTime() == keys[i - 1]->GetTime()"};

// Texts that are no conditions.
const char* const kTexts[] = {
  // Of loads.
  "JSON file couldn't be read", "Illegal state: Accessors without bufferView aren't supported yet",
  "Illegal state: Set duplication occured", "More than one node addresses same skin #@!", "Pose Morph Targets",
  "Couldn't load animations!", "No material importer found",
  // Of saves.
  "Illegal state: Could not split object '@'", "GLTFExporter Uninitialized.", "Illegal state: No source object found for '@'",
  "Could not Alloc Bitmap.", "Could not Init Bitmap.", "Could not Init Merge Bitmap.", "Could not Init Alpha Bitmap.",
  "MaterialDescriptor::GetBitmapFilename Index Out of Range", "Invalid TypedConstantParameter",
  "Material: @: | Channel: @ | Filename: @ | Size: @"};

void ExpectInModule(const std::string& text)
{
  static const std::string bytes = []
  {
    const std::filesystem::path path = std::filesystem::path(Q7Z_TEST_BIN_DIR) / (std::string("io_gltf") + kLibrarySuffix);
    std::string content(std::filesystem::file_size(path), '\0');
    std::ifstream(path, std::ios::binary).read(content.data(), static_cast<std::streamsize>(content.size()));
    return content;
  }();
  EXPECT_NE(bytes.find(text), std::string::npos) << text;
}

TEST(SettledMessages, AreInTheModule)
{
#ifdef __OPTIMIZE__
  GTEST_SKIP() << "a check that the optimiser sees never to fail goes, and its text with it";
#endif
  for (const std::string condition : kStates)
    ExpectInModule("Illegal state: Condition " + condition + " not fulfilled. ");
  for (const std::string condition : kArguments)
    ExpectInModule("Illegal argument: Condition " + condition + " not fulfilled. ");
  for (const char* const text : kTexts)
    ExpectInModule(text);
}

}  // namespace
}  // namespace q7z::test
