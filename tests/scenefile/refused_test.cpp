// Documents that are refused: each rule once, with the path and the words; and nothing is left of what was read.

#include <gtest/gtest.h>

#include "tests/scenefile/scenetext.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct RefusedRow
{
  const char* name;
  std::string text;
  const char* message;
};

void PrintTo(const RefusedRow& row, std::ostream* stream)
{
  *stream << row.text;
}

class RefusedScene : public testing::TestWithParam<RefusedRow>
{};

TEST_P(RefusedScene, SaysWhereAndWhy)
{
  const Int before = CountNodes();
  EXPECT_EQ(GetRefusal(GetParam().text), GetParam().message);
  EXPECT_EQ(CountNodes(), before);
}

RefusedRow Row(const char* name, std::string_view members, const char* message)
{
  return {name, MakeText(members), message};
}

/// Of one object, whose members stand behind its id.
RefusedRow ObjectRow(const char* name, std::string_view members, const char* message)
{
  return Row(name, R"("objects": [{"id": 1, )" + std::string(members) + "}]", message);
}

/// Of one tag on a square of four points and two polygons; its members stand behind its id.
RefusedRow TagRow(const char* name, std::string_view members, const char* message)
{
  return {name, MakeTagText(R"({"id": 2, )" + std::string(members) + "}"), message};
}

RefusedRow KeyRow(const char* name, std::string_view keys, const char* message)
{
  return ObjectRow(name, R"("type": 5140, "tracks": [{"id": [[1, 0, 0]], "keys": [)" + std::string(keys) + "]}]", message);
}

RefusedRow MaterialRow(const char* name, std::string_view members, const char* message)
{
  return Row(name, R"("materials": [{"id": 1, )" + std::string(members) + "}]", message);
}

RefusedRow TakeRow(const char* name, std::string_view takes, const char* message)
{
  return Row(name, R"("objects": [{"id": 1, "type": 5140}], "takes": [)" + std::string(takes) + "]", message);
}

std::string Repeat(std::string_view text, int count)
{
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

std::string Numbers(int count)
{
  return '[' + Repeat("0, ", count - 1) + "0]";
}

const RefusedRow kTopLevel[] = {
  {"NoObject", "[]", "the document: an object expected"},
  {"ByteOrderMark", "\xEF\xBB\xBF{}", "the document: the text begins with a byte order mark"},
  {"TextBehind", MakeText("") + " 1", "the document: text behind the end of the JSON value"},
  {"NoFormat", "{}", "format: missing"},
  {"OtherFormat", R"({"format": "glTF", "version": 1})", "format: \"q7z scene\" expected"},
  {"FormatIsNoText", R"({"format": 1, "version": 1})", "format: a text expected, a whole number found"},
  {"NoVersion", R"({"format": "q7z scene"})", "version: missing"},
  {"LaterVersion", R"({"format": "q7z scene", "version": 2})", "version: 1 expected, 2 found"},
  {"VersionIsNoWholeNumber", R"({"format": "q7z scene", "version": 1.0})", "version: a whole number expected, a float found"},
  Row("UnknownMember", R"("colour": 1)", "colour: not a member of a scene document"),
  Row("MemberTwice", R"("name": "a", "name": "b")", "name: given twice"),
  Row("InnerMemberTwice", R"("settings": {"1": {"container": {"2": 3, "2": 4}}})", "settings.1.container.2: given twice"),
  Row("NameIsNoText", R"("name": null)", "name: a text expected, null found"),
  Row("NodeSpaceIsNoText", R"("nodeSpace": false)", "nodeSpace: a text expected, false found"),
  Row("TimeOfThreeNumbers", R"("time": [0, 1, 2])", "time: 2 numbers expected, 3 found"),
  Row("TimeOfTexts", R"("time": [0, "1"])", "time[1]: a number expected, a text found"),
  Row("TimeIsNoArray", R"("time": {"a": 1})", "time: an array expected, an object found"),
  Row("RenderIsNoObject", R"("render": 5)", "render: an object expected, a whole number found"),
  Row("LayersAreNoArray", R"("layers": {})", "layers: an array expected, an object found"),
  Row("LayerIsNoObject", R"("layers": [{"id": 1}, true])", "layers[1]: an object expected, true found"),
  Row("LayersOfNumbers", R"("layers": [1, 2])", "layers[0]: an object or an array expected, a whole number found"),
  Row("LayerWithoutId", R"("layers": [{"name": "a"}])", "layers[0].id: missing"),
  Row("LayerWithMore", R"("layers": [{"id": 1, "on": true}])", "layers[0].on: not a member of a layer"),
  Row("IdIsNoWholeNumber", R"("layers": [{"id": 1.5}])", "layers[0].id: a whole number expected, a float found"),
  Row("IdTwice", R"("layers": [{"id": 7}, {"id": 7}])", "layers[1].id: another node has the id 7"),
  Row("IdTwiceOverKinds", R"("layers": [{"id": 7}], "objects": [{"id": 1, "type": 5140, "tags": [{"id": 7, "type": 1}]}])",
      "objects[0].tags[0].id: another node has the id 7"),
};
INSTANTIATE_TEST_SUITE_P(TopLevel, RefusedScene, testing::ValuesIn(kTopLevel), RowName());

const RefusedRow kTables[] = {
  Row("TableIsNoObject", R"("parameters": [])", "parameters: an object expected, an array found"),
  Row("IdIsAWord", R"("parameters": {"rate": 1})", "parameters.rate: the decimal id of a parameter expected"),
  Row("IdIsEmpty", R"("parameters": {"": 1})", "parameters.: the decimal id of a parameter expected"),
  Row("IdWithZeroBefore", R"("parameters": {"01": 1})", "parameters.01: the decimal id of a parameter expected"),
  Row("IdWithPlus", R"("parameters": {"+1": 1})", "parameters.+1: the decimal id of a parameter expected"),
  Row("IdEndsInPoint", R"("parameters": {"1.": 1})", "parameters.1.: the decimal id of a parameter expected"),
  Row("IdOfFourLevels", R"("parameters": {"1.2.3.4": 1})", "parameters.1.2.3.4: the decimal id of a parameter expected"),
  Row("IdBeyond32Bits", R"("parameters": {"2147483648": 1})", "parameters.2147483648: the decimal id of a parameter expected"),
  ObjectRow("NothingAsValue", R"("type": 5140, "parameters": {"5": null})",
            "objects[0].parameters.5: a value expected, null found"),
  Row("ArrayAsValue", R"("settings": {"5": [1]})", "settings.5: a value expected, an array found"),
  Row("UnknownKind", R"("settings": {"5": {"colour": [1, 2, 3]}})",
      "settings.5: one of time, vector, vector4, unit, link, container and float expected"),
  Row("TwoKinds", R"("settings": {"5": {"link": null, "time": [0, 1]}})",
      "settings.5: one of time, vector, vector4, unit, link, container and float expected"),
  Row("UnknownFloat", R"("settings": {"5": {"float": "NaN"}})",
      "settings.5: one of time, vector, vector4, unit, link, container and float expected"),
  Row("VectorOfTwo", R"("settings": {"5": {"vector": [1, 2]}})", "settings.5.vector: 3 numbers expected, 2 found"),
  Row("ColourOfThree", R"("settings": {"5": {"vector4": [1, 2, 3]}})", "settings.5.vector4: 4 numbers expected, 3 found"),
  Row("UnitOfFloats", R"("settings": {"5": {"unit": [1.0, 3.0]}})", "settings.5.unit[1]: a whole number expected, a float found"),
  Row("ContainerUnderTwoLevels", R"("settings": {"5.6": {"container": {}}})",
      "settings.5.6: a container stands under an id of one level"),
  Row("ContainerIsNoObject", R"("settings": {"5": {"container": 1}})",
      "settings.5.container: an object expected, a whole number found"),
  Row("LinkIsNoId", R"("settings": {"5": {"link": "a"}})", "settings.5.link: an id or null expected, a text found"),
  Row("LinkLeadsNowhere", R"("settings": {"5": {"link": 99}})", "settings.5.link: nothing has the id 99"),
  Row("WholeNumberBeyond64Bits", R"("settings": {"5": 9223372036854775808})",
      "settings.5: 9223372036854775808 is no number that 64 bits hold"),
  Row("FloatBeyond64Bits", R"("settings": {"5": {"vector": [0, 1, 1e400]}})",
      "settings.5.vector[2]: 1e400 is no number that 64 bits hold"),
};
INSTANTIATE_TEST_SUITE_P(Tables, RefusedScene, testing::ValuesIn(kTables), RowName());

const RefusedRow kObjects[] = {
  Row("ObjectIsNoObject", R"("objects": ["a"])", "objects[0]: an object expected, a text found"),
  Row("NoId", R"("objects": [{"type": 5140}])", "objects[0].id: missing"),
  ObjectRow("NoType", R"("name": "a")", "objects[0].type: missing"),
  ObjectRow("TypeBeyond32Bits", R"("type": 5000000000)", "objects[0].type: a whole number of 32 bits expected, 5000000000 found"),
  ObjectRow("UnknownMember", R"("type": 5140, "colour": 1)", "objects[0].colour: not a member of an object of type 5140"),
  ObjectRow("PointsOfANull", R"("type": 5140, "points": [])", "objects[0].points: not a member of an object of type 5140"),
  ObjectRow("ReferenceOfAMesh", R"("type": 5100, "reference": 1)",
            "objects[0].reference: not a member of an object of type 5100"),
  ObjectRow("ShortPosition", R"("type": 5140, "position": [1, 2])", "objects[0].position: 3 numbers expected, 2 found"),
  ObjectRow("RotationOrderBeyondSix", R"("type": 5140, "rotationOrder": 7)",
            "objects[0].rotationOrder: 0 to 6 expected, 7 found"),
  ObjectRow("MatrixWithMore", R"("type": 5140, "matrix": {"axisW": [0, 0, 0]})",
            "objects[0].matrix.axisW: not a member of a matrix"),
  ObjectRow("BaseIsNoMatrix", R"("type": 5140, "base": [1, 0, 0])", "objects[0].base: an object expected, an array found"),
  ObjectRow("VisibilityIsNoMode", R"("type": 5140, "editor": true)", "objects[0].editor: a whole number expected, true found"),
  ObjectRow("LayerIsAnObject", R"("type": 5140, "layer": 1)", "objects[0].layer: no layer has the id 1"),
  ObjectRow("ReferenceLeadsNowhere", R"("type": 5126, "reference": 2)", "objects[0].reference: no object has the id 2"),
  ObjectRow("PointsOfTwoNumbers", R"("type": 5100, "points": [1, 2, 3, 4, 5])",
            "objects[0].points: a multiple of 3 numbers expected, 5 found"),
  ObjectRow("PointIsNoNumber", R"("type": 5100, "points": [1, 2, null])", "objects[0].points[2]: a number expected, null found"),
  ObjectRow("PolygonOfFive", R"("type": 5100, "points": [1, 2, 3], "polygons": [0, 0, 0, 0, 0])",
            "objects[0].polygons: a multiple of 4 numbers expected, 5 found"),
  ObjectRow("PolygonOfFloats", R"("type": 5100, "points": [1, 2, 3], "polygons": [0, 0, 0, 0.0])",
            "objects[0].polygons[3]: a whole number expected, a float found"),
  ObjectRow("PointOneTooFar", R"("type": 5100, "points": [1, 2, 3, 4, 5, 6], "polygons": [0, 1, 2, 0])",
            "objects[0].polygons[2]: there is no point 2, the object has 2"),
  ObjectRow("NegativePoint", R"("type": 5100, "points": [1, 2, 3], "polygons": [0, 0, 0, -1])",
            "objects[0].polygons[3]: there is no point -1, the object has 1"),
  ObjectRow("ChildIsWrong", R"("type": 5140, "children": [{"id": 2, "type": 5140}, {"id": 3, "type": 5140, "children": [{}]}])",
            "objects[0].children[1].children[0].type: missing"),
};
INSTANTIATE_TEST_SUITE_P(Objects, RefusedScene, testing::ValuesIn(kObjects), RowName());

const RefusedRow kTags[] = {
  {"NormalsOneShort",
   MakeTagText(R"({"id": 2, "type": 5612}, {"id": 3, "type": 5612}, {"id": 4, "type": 5711, "normals": )" + Numbers(23) + "}"),
   "objects[0].tags[2].normals: 24 numbers expected, 23 found"},
  TagRow("UvwsTooMany", R"("type": 5671, "uvws": )" + Numbers(25), "objects[0].tags[0].uvws: 24 numbers expected, 25 found"),
  TagRow("UvwsEmpty", R"("type": 5671, "uvws": [])", "objects[0].tags[0].uvws: 24 numbers expected, 0 found"),
  TagRow("UvwIsNoNumber", R"("type": 5671, "uvws": [)" + Repeat("0.0, ", 23) + "false]",
         "objects[0].tags[0].uvws[23]: a number expected, false found"),
  TagRow("NormalsOfAnotherType", R"("type": 5671, "normals": [])",
         "objects[0].tags[0].normals: not a member of a tag of type 5671"),
  TagRow("NormalsOfAnUnknownType", R"("type": 99, "normals": [])",
         "objects[0].tags[0].normals: not a member of a tag of type 99"),
  TagRow("NoType", R"("name": "a")", "objects[0].tags[0].type: missing"),
  TagRow("ColorsOfPoints", R"("type": 431000045, "colors": )" + Numbers(15),
         "objects[0].tags[0].colors: 16 numbers expected, 15 found"),
  TagRow("ColorsOfCorners", R"("type": 431000045, "perPoint": false, "colors": )" + Numbers(16),
         "objects[0].tags[0].colors: 32 numbers expected, 16 found"),
  TagRow("ColorBeyond32Bits", R"("type": 431000045, "colors": [1e39)" + Repeat(", 0.0", 15) + "]",
         "objects[0].tags[0].colors[0]: too large for 32 bits"),
  TagRow("RangeOfThree", R"("type": 5673, "polygons": [[0, 1, 1]])",
         "objects[0].tags[0].polygons[0]: 2 polygons expected, 3 found"),
  TagRow("RangeBackwards", R"("type": 5673, "polygons": [[0, 0], [1, 0]])",
         "objects[0].tags[0].polygons[1]: the first polygon of a range stands behind its last"),
  TagRow("RangeOneTooFar", R"("type": 5673, "polygons": [[0, 2]])",
         "objects[0].tags[0].polygons[0][1]: there is no polygon 2, the object has 2"),
  TagRow("RangeOfFloats", R"("type": 5673, "polygons": [[0, 1.0]])",
         "objects[0].tags[0].polygons[0][1]: a whole number expected, a float found"),
  TagRow("RangesAreNumbers", R"("type": 5673, "polygons": [0, 1])",
         "objects[0].tags[0].polygons[0]: an object or an array expected, a whole number found"),
  TagRow("MaterialIsAnObject", R"("type": 5616, "material": 1)", "objects[0].tags[0].material: no material has the id 1"),
  TagRow("PhongIsANumber", R"("type": 5612, "on": 1)", "objects[0].tags[0].on: true or false expected, a whole number found"),
  TagRow("JointIsATag", R"("type": 1019365, "joints": [1, 2])", "objects[0].tags[0].joints[1]: no object has the id 2"),
  TagRow("JointIsAText", R"("type": 1019365, "joints": [1, "1"])",
         "objects[0].tags[0].joints[1]: an id or null expected, a text found"),
  TagRow("WeightsOfTooFewJoints", R"("type": 1019365, "joints": [1, 1], "weights": [[]])",
         "objects[0].tags[0].weights: 2 arrays expected, 1 found"),
  TagRow("WeightWithoutPoint", R"("type": 1019365, "joints": [1], "weights": [[[0.5]]])",
         "objects[0].tags[0].weights[0][0]: 2 numbers expected, 1 found"),
  TagRow("WeightOfPointOneTooFar", R"("type": 1019365, "joints": [1], "weights": [[[0, 1.0], [4, 0.5]]])",
         "objects[0].tags[0].weights[0][1][0]: there is no point 4, the object has 4"),
  TagRow("WeightOfHalfAPoint", R"("type": 1019365, "joints": [1], "weights": [[[0.5, 0.5]]])",
         "objects[0].tags[0].weights[0][0][0]: a whole number expected, a float found"),
  TagRow("WeightIsNoNumber", R"("type": 1019365, "joints": [1], "weights": [[[0, null]]])",
         "objects[0].tags[0].weights[0][0][1]: a number expected, null found"),
  TagRow("WeightsOutOfOrder", R"("type": 1019365, "joints": [1], "weights": [[[1, 0.5], [1, 0.5]]])",
         "objects[0].tags[0].weights[0][1][0]: a larger point than the one before expected"),
  TagRow("BindPoseOfTooFewJoints", R"("type": 1019365, "joints": [1], "bind": {"object": {}, "joints": []})",
         "objects[0].tags[0].bind.joints: 1 matrices expected, 0 found"),
  TagRow("BindPoseWithoutObject", R"("type": 1019365, "bind": {"joints": []})", "objects[0].tags[0].bind.object: missing"),
  TagRow("MorphIsBoth", R"("type": 1024237, "morphs": [{"points": [], "object": 1}])",
         "objects[0].tags[0].morphs[0]: a morph has an object or points, not both"),
  TagRow("MorphOfATag", R"("type": 1024237, "morphs": [{}, {"object": 2}])",
         "objects[0].tags[0].morphs[1].object: no object has the id 2"),
  TagRow("MorphOfTwoNumbers", R"("type": 1024237, "morphs": [{"points": [1, 2]}])",
         "objects[0].tags[0].morphs[0].points: a multiple of 3 numbers expected, 2 found"),
  TagRow("MorphWithMore", R"("type": 1024237, "morphs": [{"weight": 1}])",
         "objects[0].tags[0].morphs[0].weight: not a member of a morph"),
};
INSTANTIATE_TEST_SUITE_P(Tags, RefusedScene, testing::ValuesIn(kTags), RowName());

const RefusedRow kTracks[] = {
  ObjectRow("NoId", R"("type": 5140, "tracks": [{"keys": []}])", "objects[0].tracks[0].id: missing"),
  ObjectRow("IdWithoutLevel", R"("type": 5140, "tracks": [{"id": []}])",
            "objects[0].tracks[0].id: 1 to 3 levels expected, 0 found"),
  ObjectRow("IdOfFourLevels", R"("type": 5140, "tracks": [{"id": [[1,0,0], [2,0,0], [3,0,0], [4,0,0]]}])",
            "objects[0].tracks[0].id: 1 to 3 levels expected, 4 found"),
  ObjectRow("LevelOfTwo", R"("type": 5140, "tracks": [{"id": [[1, 0, 0], [2, 0]]}])",
            "objects[0].tracks[0].id[1]: 3 whole numbers expected, 2 found"),
  ObjectRow("LevelBeyond32Bits", R"("type": 5140, "tracks": [{"id": [[1, 0, 4294967296]]}])",
            "objects[0].tracks[0].id[0][2]: a whole number of 32 bits expected, 4294967296 found"),
  ObjectRow("OutOfOrder", R"("type": 5140, "tracks": [{"id": [[2, 0, 0]]}, {"id": [[1, 0, 0]]}])",
            "objects[0].tracks[1].id: a larger id than that of the track before expected"),
  ObjectRow("IdTwice", R"("type": 5140, "tracks": [{"id": [[2, 0, 0]]}, {"id": [[2, 5, 0]]}])",
            "objects[0].tracks[1].id: a larger id than that of the track before expected"),
  KeyRow("KeyWithoutTime", R"({"value": 1.0})", "objects[0].tracks[0].keys[0].time: missing"),
  KeyRow("KeyAtNoTime", R"({"time": [{"float": "nan"}, 1]})", "objects[0].tracks[0].keys[0].time: a finite time expected"),
  KeyRow("KeyBefore", R"({"time": [1, 2]}, {"time": [0, 1]})",
         "objects[0].tracks[0].keys[1].time: a later time than that of the key before expected"),
  KeyRow("KeyAtTheSameTime", R"({"time": [1, 2]}, {"time": [2, 4]})",
         "objects[0].tracks[0].keys[1].time: a later time than that of the key before expected"),
  KeyRow("UnknownInterpolation", R"({"time": [0, 1], "interpolation": 0})",
         "objects[0].tracks[0].keys[0].interpolation: 1 to 3 expected, 0 found"),
  KeyRow("TangentWithoutValue", R"({"time": [0, 1], "left": {"time": [0, 1]}})",
         "objects[0].tracks[0].keys[0].left.value: missing"),
  KeyRow("TangentWithMore", R"({"time": [0, 1], "right": {"angle": 1}})",
         "objects[0].tracks[0].keys[0].right.angle: not a member of a tangent"),
  KeyRow("RotationModeOfTwo", R"({"time": [0, 1], "rotationMode": [1, true]})",
         "objects[0].tracks[0].keys[0].rotationMode: 3 arguments expected, 2 found"),
  KeyRow("RotationModeOfNumbers", R"({"time": [0, 1], "rotationMode": [1, 0, 0]})",
         "objects[0].tracks[0].keys[0].rotationMode[1]: true or false expected, a whole number found"),
  KeyRow("KeyWithMore", R"({"time": [0, 1], "ease": 1})", "objects[0].tracks[0].keys[0].ease: not a member of a key"),
};
INSTANTIATE_TEST_SUITE_P(Tracks, RefusedScene, testing::ValuesIn(kTracks), RowName());

const RefusedRow kTakes[] = {
  TakeRow("None", "", "takes: the main take is missing"),
  TakeRow("MainIsNotFirst", R"({"name": "Main"}, {"main": true})",
          "takes[1].main: the first take is the main take, and no other"),
  TakeRow("FirstIsNotMain", R"({"main": false})", "takes[0].main: the first take is the main take, and no other"),
  TakeRow("TwoAreCurrent", R"({"current": true}, {"current": true})", "takes[1].current: another take is current"),
  TakeRow("MainHasOverrides", R"({"overrides": [{"target": 1}]})", "takes[0].overrides: the main take has no overrides"),
  TakeRow("OverrideWithoutTarget", R"({}, {"overrides": [{}]})", "takes[1].overrides[0].target: missing"),
  TakeRow("OverrideOfNothing", R"({}, {"overrides": [{"target": 3}]})", "takes[1].overrides[0].target: nothing has the id 3"),
  TakeRow("OverrideTwice", R"({}, {"overrides": [{"target": 1}, {"target": 1}]})",
          "takes[1].overrides[1].target: the take has an override for this node already"),
  TakeRow("TakeWithMore", R"({"id": 5})", "takes[0].id: not a member of a take"),
};
INSTANTIATE_TEST_SUITE_P(Takes, RefusedScene, testing::ValuesIn(kTakes), RowName());

const RefusedRow kMaterials[] = {
  MaterialRow("OtherType", R"("type": 5704)", "materials[0].type: 5703 expected, 5704 found"),
  MaterialRow("BothKinds", R"("type": 5703, "node": {}, "channels": {})",
              "materials[0].channels: not a member of a node material"),
  MaterialRow("ParameterWithoutValue", R"("type": 5703, "node": {"parameters": {"a": {"constant": true}}})",
              "materials[0].node.parameters.a.value: missing"),
  MaterialRow("ParameterIsBare", R"("type": 5703, "node": {"parameters": {"a": 1}})",
              "materials[0].node.parameters.a: an object expected, a whole number found"),
  MaterialRow("ValueOfUnknownKind", R"("type": 5703, "node": {"parameters": {"a": {"value": {"time": [0, 1]}}}})",
              "materials[0].node.parameters.a.value: one of vector, vector4, container and float expected"),
  MaterialRow("ColorOfThree", R"("type": 5703, "node": {"parameters": {"a": {"value": {"vector4": [0, 1, 2]}}}})",
              "materials[0].node.parameters.a.value.vector4: 4 numbers expected, 3 found"),
  MaterialRow("TextureIsNoText", R"("type": 5703, "node": {"textures": {"a": 1}})",
              "materials[0].node.textures.a: a text expected, a whole number found"),
  MaterialRow("TextureWithZeroByte", R"("type": 5703, "node": {"textures": {"a": "b%00"}})",
              "materials[0].node.textures.a: no file has such a name"),
  MaterialRow("ChannelIsAWord", R"("type": 5703, "channels": {"color": {}})",
              "materials[0].channels.color: a decimal number expected as name"),
  MaterialRow("ChannelWithMore", R"("type": 5703, "channels": {"0": {"strength": 1}})",
              "materials[0].channels.0.strength: not a member of a channel"),
  MaterialRow("ShaderWithMore", R"("type": 5703, "channels": {"0": {"shader": {"file": "a"}}})",
              "materials[0].channels.0.shader.file: not a member of a shader"),
  MaterialRow("LayerWithoutId", R"("type": 5703, "layers": [{"shaders": {}}])", "materials[0].layers[0].id: missing"),
};
INSTANTIATE_TEST_SUITE_P(Materials, RefusedScene, testing::ValuesIn(kMaterials), RowName());

// Broken JSON: the reason is the parser's own, the path is ours.
TEST(BrokenScene, PathLeadsToTheBreak)
{
  const std::string_view path = "objects[1].tags[0]";
  const std::string refusal = GetRefusal(MakeText(R"("objects": [{}, {"tags": [{"id" 1}]}])"));
  EXPECT_EQ(refusal.substr(0, path.size()), path) << refusal;
  EXPECT_NE(refusal.find(": the JSON text is broken: "), std::string::npos) << refusal;
}

TEST(BrokenScene, EveryCutIsRefused)
{
  for (size_t length = 0; length + 2 < kEverything.size(); ++length)
  {
    const Int before = CountNodes();
    EXPECT_NE(GetRefusal(kEverything.substr(0, length)), "") << length;
    EXPECT_EQ(CountNodes(), before) << length;
  }
}

TEST(BrokenScene, InvalidUtf8IsRefused)
{
  EXPECT_NE(GetRefusal(MakeText("\"name\": \"\xFF\"")), "");
}

// The document itself, `objects` and the objects and children below it take two levels for each object.
std::string MakeChain(int length)
{
  std::string text;
  for (int i = 1; i <= length; ++i)
    text += (i > 1 ? R"(, "children": [{"id": )" : R"({"id": )") + std::to_string(i) + R"(, "type": 5140)";
  for (int i = 1; i <= length; ++i)
    text += i > 1 ? "}]" : "";
  return MakeText("\"objects\": [" + text + "}]");
}

TEST(DeepScene, ReadsAsDeepAsJsonMayNest)
{
  const DocumentOwner document = Read(MakeChain(511));  // 1,023 levels
  ASSERT_TRUE(document);
  const HeadlessObject* object = document->GetFirstObject();
  for (int i = 1; i < 511; ++i)
  {
    ASSERT_NE(object->GetDown(), nullptr) << i;
    object = object->GetDown();
  }
}

TEST(DeepScene, DeeperIsRefusedWithAShortPath)
{
  const std::string refusal = GetRefusal(MakeChain(512));
  EXPECT_TRUE(refusal.starts_with("objects[0].children[0].children[0].")) << refusal;
  EXPECT_TRUE(refusal.ends_with(".children[0]: nested deeper than 1,024 levels; a hierarchy this deep cannot pass through a "
                                "scene document, convert the file directly"))
    << refusal;
  EXPECT_LT(refusal.size(), 500u);
}

}  // namespace
}  // namespace q7z::test
