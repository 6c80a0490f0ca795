// The words of the module: settled messages that no other test brings about, looked up in the bytes of the built library. (The
// others stand in the tests that do.)

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
const char* const kStates[] =
  {"callback(dataValue, idx)",
   "_gltfData",
   "_sceneLoader",
   "importer && fileUrl.IsPopulated()",
   "FillInLoadedData(jsonGLTF)",
   "ResolveAssets(backgroundJob)",
   "jsonArray.IsPopulated()",
   "glbFile->Open(glbFilename, FILEOPEN::READ, FILEDIALOG::IGNOREOPEN, BYTEORDER::V_INTEL)",
   "assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE",
   "(static_cast<Int>(offset) >= 0 && static_cast<Int>(offset) < _buffer.GetCount() - byteCount + 1)",
   "_buffer",
   "_type == \"SCALAR\"_s",
   "accessor->IsOfType({\"SCALAR\"_s})",
   "_elementByteCount",
   "!IsNonIndexed() && _bufferView",
   "16 == matrixArray.GetCount()",
   "4 == rotationArray.GetCount()",
   "3 == scaleArray.GetCount()",
   "3 == translationArray.GetCount()",
   "_doc",
   "sceneParent",
   "LoadMetaInfo()",
   "addNodeIndicesToImport(nodeIndices, parent)",
   "node",
   "opMain",
   "meshPtr && meshPtr->IsValid()",
   "meshPolys.GetCount()",
   "opMesh",
   "poly",
   "polygonObjectOp",
   "keyValid && valueValid",
   "_targets.GetCount() == _targetsAccessors.GetCount()",
   "_options",
   "vertexCount",
   "polyCount",
   "(meshCreator.cursorPoints + vertexCount - 1 >= 0 && meshCreator.cursorPoints + vertexCount - 1 < poly->GetPointCount())",
   "(meshCreator.cursorPolygons + polyCount - 1 >= 0 && meshCreator.cursorPolygons + polyCount - 1 < poly->GetPolygonCount())",
   "AddMeshPositions(meshCreator, _primAccessors, nullptr, vertexCount, flipZMultiplier, options.GetScale())",
   "AddMeshPolygons(meshCreator, _primAccessors, polyCount, options.IsFlipZ())",
   "AddMeshNormals(meshCreator, _primAccessors, nullptr, polyCount, flipZMultiplier)",
   "AddMeshVertexColors(meshCreator, _primAccessors, nullptr, vertexCount)",
   "AddMeshUVs(meshCreator, _primAccessors, nullptr, polyCount)",
   "AddPolygonSelections(meshCreator, _primAccessors, polyCount)",
   "ptsAccessor",
   "ptsArray",
   "idxAccessor",
   "polys",
   "handle",
   "deltaAccessor",
   "polySelBSel",
   "meshCreator.mesh",
   "polySel",
   "cameraPtr",
   "src.IsPopulated()",
   "rd",
   "camera",
   "gltfSkin",
   "q7zJointIdx != -1",
   "skinPtr",
   "skinCreator.IsValid()",
   "baseAccessors._skinJointsAccessors.IsPopulated()",
   "baseAccessors._skinJointsAccessors.GetCount() == baseAccessors._skinWeightsAccessors.GetCount()",
   "skinCreator._skinWeightTag",
   "skinCreator._mapJointIndicesGltfToQ7Z.IsPopulated()",
   "skinCreator._mapJointIndicesGltfToQ7Z.GetCount() == skinCreator._skinWeightTag->GetJointCount()",
   "weightsAccessorEntry",
   "q7zJointIdxEntry",
   "AddMeshSkinJointWeights(meshCreator, *skinCreator, _primAccessors, vertexCount, skinPtr)",
   "poseMeshCreator.AllocatePolyAndTags(vertexCount, polyCount)",
   "_poseMorphTag->ExitEdit(doc, true)",
   "targetCreator._targetMeshCreators.GetCount() == GetTargetsCount()",
   "targetCreator._poseMorphTag",
   "targetCreator._meshCreator",
   "(poseMeshCreator.cursorPoints + vertexCount - 1 >= 0 && poseMeshCreator.cursorPoints + vertexCount - 1 < "
   "poly->GetPointCount())",
   "(poseMeshCreator.cursorPolygons + polyCount - 1 >= 0 && poseMeshCreator.cursorPolygons + polyCount - 1 < "
   "poly->GetPolygonCount())",
   "AddMeshPositions(poseMeshCreator, _primAccessors, targetAccForPointsPointer, vertexCount, flipZMultiplier, "
   "options.GetScale())",
   "AddMeshPolygons(poseMeshCreator, _primAccessors, polyCount, options.IsFlipZ())",
   "AddMeshNormals(poseMeshCreator, _primAccessors, &targetAccessors, polyCount, flipZMultiplier)",
   "AddMeshVertexColors(poseMeshCreator, _primAccessors, &targetAccessors, vertexCount)",
   "AddMeshUVs(poseMeshCreator, _primAccessors, &targetAccessors, polyCount)",
   "_meshCreator && _meshCreator->mesh",
   "_poseMorphTag",
   "_posesParentOp",
   "poseOp",
   "weights.GetCount() == _targetMeshCreators.GetCount()",
   "baseMaterial",
   "texFolderUrl.IsPopulated()",
   "ext.IsPopulated()",
   "gltfMatIdx > -1",
   "sourceIndex",
   "material",
   "bitmapFilenameKey < Bitmaps::BCOUNT",
   "takeData",
   "mainTake",
   "take",
   "_inputAccessor",
   "_options && _lookupNodes",
   "didCount == 1 || didCount == 3",
   "over",
   "outTrack",
   "track",
   "tagPoseMorph",
   "node && description",
   "description->LoadDescription(1041129)",
   "exporter->_jsonDoc",
   "exporter->_doc",
   "_jsonDoc",
   "gltfContainer",
   "master",
   "root",
   "tTag",
   "restriction",
   "restriction->CopyTo(bsPolyS)",
   "morph",
   "bf->Open(filename, FILEOPEN::WRITE, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1')",
   "bf->Open(filename, FILEOPEN::APPEND, FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1')",
   "jointEntry",
   "i < joints.GetCount()",
   "aliastrans && aliastrans->Init(tag->GetDocument())",
   "op && op->GetType() == 5100",
   "hash",
   "hashOp",
   "!joints.IsPopulated()",
   "!weights.IsPopulated()",
   "!vertexColors.IsPopulated()",
   "morphTag",
   "curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount()",
   "curves[dim] && curves[dim]->GetKeyCount() == bakedFrames",
   "key",
   "key[Dim::X] && key[Dim::Y] && key[Dim::Z]",
   "key[Dim::X]->GetTime() == key[Dim::Y]->GetTime() && key[Dim::Y]->GetTime() == key[Dim::Z]->GetTime()",
   "keyframes[i].second.GetCount() == Dim::COUNT",
   "tangents[i].first.GetCount() == Dim::COUNT",
   "tangents[i].second.GetCount() == Dim::COUNT",
   "keyframes[i].second.GetCount() == 4",
   "curves.GetCount() == pTag->GetMorphCount()",
   "pTag",
   "pTag->GetMorph(i)"};

// The same of an argument.
const char* const kArguments[] =
  {"gltfData",
   "parent",
   "src.IsPopulated()",
   "gltfAnimationIdx > -1",
   "dids",
   "_options",
   "tracks.GetCount() == 1 || tracks.GetCount() == 3",
   "origRef",
   "newRef",
   "source",
   "(init_positions.GetCount() == 0 && !isTarget) || (init_positions.GetCount() == vertex_data.GetCount() && isTarget)",
   "!curves.IsPopulated()",
   "!tempTracks.IsPopulated()",
   "curves[i]",
   "curves.GetCount() == Dim::COUNT",
   "curves[dim]",
   "curves[Dim::X]->GetKeyCount() == curves[Dim::Y]->GetKeyCount() && curves[Dim::Y]->GetKeyCount() == "
   "curves[Dim::Z]->GetKeyCount()",
   "!keyframes.IsPopulated()",
   "!tangents.IsPopulated()",
   "curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount()",
   "i0->second.GetCount() == Dim::COUNT",
   "keys[i]",
   "keys[i]->GetTime() == keys[i - 1]->GetTime()"};

// Texts that are no conditions.
const char* const kTexts[] = {"More than one node addresses same skin #@!",
                              "No material importer found",
                              "Illegal state: Could not split object '@'",
                              "GLTFExporter Uninitialized.",
                              "Illegal state: No source object found for '@'",
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
