// Documents that are refused: each rule once, with the path and the words; and nothing is left of what was read.

#include <gtest/gtest.h>

#include "tests/scenefile/scenetext.h"

namespace q7z::test
{
namespace
{

/// One object, whose members stand behind its id.
std::string Object(std::string_view members)
{
  return MakeText(R"("objects": [{"id": 1, )" + std::string(members) + "}]");
}
/// One tag on a square of four points and two polygons; its members stand behind its id.
std::string Tag(std::string_view members)
{
  return MakeTagText(R"({"id": 2, )" + std::string(members) + "}");
}
std::string Key(std::string_view keys)
{
  return Object(R"("type": 5140, "tracks": [{"id": [[1, 0, 0]], "keys": [)" + std::string(keys) + "]}]");
}
std::string Material(std::string_view members)
{
  return MakeText(R"("materials": [{"id": 1, "type": 5703, )" + std::string(members) + "}]");
}
std::string Takes(std::string_view takes)
{
  return MakeText(R"("objects": [{"id": 1, "type": 5140}], "takes": [)" + std::string(takes) + "]");
}
std::string Numbers(int count)
{
  std::string numbers = "[0";
  for (int i = 1; i < count; ++i)
    numbers += ", 0";
  return numbers + ']';
}

const std::pair<std::string, const char*> kRefused[] = {
  // The top level.
  {"[]", "the document: an object expected"},
  {"\xEF\xBB\xBF{}", "the document: the text begins with a byte order mark"},
  {MakeText("") + " 1", "the document: text behind the end of the JSON value"},
  {"{}", "format: missing"},
  {R"({"format": "glTF", "version": 1})", "format: \"q7z scene\" expected"},
  {R"({"format": "q7z scene", "version": 2})", "version: 1 expected, 2 found"},
  {MakeText(R"("colour": 1)"), "colour: not a member of a scene document"},
  {MakeText(R"("name": "a", "name": "b")"), "name: given twice"},
  {MakeText(R"("time": [0, 1, 2])"), "time: 2 numbers expected, 3 found"},
  {MakeText(R"("time": [0, "1"])"), "time[1]: a number expected, a text found"},
  {MakeText(R"("layers": [{"id": 1}, true])"), "layers[1]: an object expected, true found"},
  {MakeText(R"("layers": [{"name": "a"}])"), "layers[0].id: missing"},
  {MakeText(R"("layers": [{"id": 7}], "objects": [{"id": 1, "type": 5140, "tags": [{"id": 7, "type": 1}]}])"),
   "objects[0].tags[0].id: another node has the id 7"},
  // Tables of values.
  {MakeText(R"("parameters": {"01": 1})"), "parameters.01: the decimal id of a parameter expected"},
  {MakeText(R"("parameters": {"1.2.3.4": 1})"), "parameters.1.2.3.4: the decimal id of a parameter expected"},
  {MakeText(R"("parameters": {"2147483648": 1})"), "parameters.2147483648: the decimal id of a parameter expected"},
  {Object(R"("type": 5140, "parameters": {"5": null})"), "objects[0].parameters.5: a value expected, null found"},
  {MakeText(R"("settings": {"5": {"colour": [1, 2, 3]}})"),
   "settings.5: one of time, vector, vector4, unit, link, container and float expected"},
  {MakeText(R"("settings": {"5": {"float": "NaN"}})"),
   "settings.5: one of time, vector, vector4, unit, link, container and float expected"},
  {MakeText(R"("settings": {"5.6": {"container": {}}})"), "settings.5.6: a container stands under an id of one level"},
  {MakeText(R"("settings": {"5": {"link": 99}})"), "settings.5.link: nothing has the id 99"},
  {MakeText(R"("settings": {"5": 9223372036854775808})"), "settings.5: 9223372036854775808 is no number that 64 bits hold"},
  {MakeText(R"("settings": {"5": {"vector": [0, 1, 1e400]}})"), "settings.5.vector[2]: 1e400 is no number that 64 bits hold"},
  // Objects.
  {Object(R"("type": 5000000000)"), "objects[0].type: a whole number of 32 bits expected, 5000000000 found"},
  {Object(R"("type": 5140, "colour": 1)"), "objects[0].colour: not a member of an object of type 5140"},
  {Object(R"("type": 5140, "rotationOrder": 7)"), "objects[0].rotationOrder: 0 to 6 expected, 7 found"},
  {Object(R"("type": 5140, "matrix": {"axisW": [0, 0, 0]})"), "objects[0].matrix.axisW: not a member of a matrix"},
  {Object(R"("type": 5140, "layer": 1)"), "objects[0].layer: no layer has the id 1"},
  {Object(R"("type": 5126, "reference": 2)"), "objects[0].reference: no object has the id 2"},
  {Object(R"("type": 5100, "points": [1, 2, 3, 4, 5])"), "objects[0].points: a multiple of 3 numbers expected, 5 found"},
  {Object(R"("type": 5100, "points": [1, 2, 3, 4, 5, 6], "polygons": [0, 1, 2, 0])"),
   "objects[0].polygons[2]: there is no point 2, the object has 2"},
  {Object(R"("type": 5100, "points": [1, 2, 3], "polygons": [0, 0, 0, -1])"),
   "objects[0].polygons[3]: there is no point -1, the object has 1"},
  {Object(R"("type": 5140, "children": [{"id": 2, "type": 5140}, {"id": 3, "type": 5140, "children": [{}]}])"),
   "objects[0].children[1].children[0].type: missing"},
  // Tags.
  {MakeTagText(R"({"id": 2, "type": 5612}, {"id": 3, "type": 5612}, {"id": 4, "type": 5711, "normals": )" + Numbers(23) + "}"),
   "objects[0].tags[2].normals: 24 numbers expected, 23 found"},
  {Tag(R"("type": 5671, "uvws": [])"), "objects[0].tags[0].uvws: 24 numbers expected, 0 found"},
  {Tag(R"("type": 5671, "normals": [])"), "objects[0].tags[0].normals: not a member of a tag of type 5671"},
  {Tag(R"("type": 431000045, "colors": )" + Numbers(15)), "objects[0].tags[0].colors: 16 numbers expected, 15 found"},
  {Tag(R"("type": 431000045, "perPoint": false, "colors": )" + Numbers(16)),
   "objects[0].tags[0].colors: 32 numbers expected, 16 found"},
  {Tag(R"("type": 431000045, "colors": [1e39, )" + Numbers(15).substr(1)), "objects[0].tags[0].colors[0]: too large for 32 bits"},
  {Tag(R"("type": 5673, "polygons": [[0, 1, 1]])"), "objects[0].tags[0].polygons[0]: 2 polygons expected, 3 found"},
  {Tag(R"("type": 5673, "polygons": [[0, 0], [1, 0]])"),
   "objects[0].tags[0].polygons[1]: the first polygon of a range stands behind its last"},
  {Tag(R"("type": 5673, "polygons": [[0, 2]])"), "objects[0].tags[0].polygons[0][1]: there is no polygon 2, the object has 2"},
  {Tag(R"("type": 5616, "material": 1)"), "objects[0].tags[0].material: no material has the id 1"},
  {Tag(R"("type": 5612, "on": 1)"), "objects[0].tags[0].on: true or false expected, a whole number found"},
  {Tag(R"("type": 1019365, "joints": [1, 2])"), "objects[0].tags[0].joints[1]: no object has the id 2"},
  {Tag(R"("type": 1019365, "joints": [1], "weights": [[[0.5, 0.5]]])"),
   "objects[0].tags[0].weights[0][0][0]: a whole number expected, a float found"},
  {Tag(R"("type": 1019365, "joints": [1], "weights": [[[0, null]]])"),
   "objects[0].tags[0].weights[0][0][1]: a number expected, null found"},
  {Tag(R"("type": 1019365, "joints": [1, 1], "weights": [[]])"), "objects[0].tags[0].weights: 2 arrays expected, 1 found"},
  {Tag(R"("type": 1019365, "joints": [1], "weights": [[[0.5]]])"),
   "objects[0].tags[0].weights[0][0]: 2 numbers expected, 1 found"},
  {Tag(R"("type": 1019365, "joints": [1], "weights": [[[0, 1.0], [4, 0.5]]])"),
   "objects[0].tags[0].weights[0][1][0]: there is no point 4, the object has 4"},
  {Tag(R"("type": 1019365, "joints": [1], "weights": [[[1, 0.5], [1, 0.5]]])"),
   "objects[0].tags[0].weights[0][1][0]: a larger point than the one before expected"},
  {Tag(R"("type": 1019365, "joints": [1], "bind": {"object": {}, "joints": []})"),
   "objects[0].tags[0].bind.joints: 1 matrices expected, 0 found"},
  {Tag(R"("type": 1019365, "bind": {"joints": []})"), "objects[0].tags[0].bind.object: missing"},
  {Tag(R"("type": 1024237, "morphs": [{"points": [], "object": 1}])"),
   "objects[0].tags[0].morphs[0]: a morph has an object or points, not both"},
  // Tracks and keys.
  {Object(R"("type": 5140, "tracks": [{"keys": []}])"), "objects[0].tracks[0].id: missing"},
  {Key(R"({"value": 1.0})"), "objects[0].tracks[0].keys[0].time: missing"},
  {Object(R"("type": 5140, "tracks": [{"id": [[1,0,0], [2,0,0], [3,0,0], [4,0,0]]}])"),
   "objects[0].tracks[0].id: 1 to 3 levels expected, 4 found"},
  {Object(R"("type": 5140, "tracks": [{"id": []}])"), "objects[0].tracks[0].id: 1 to 3 levels expected, 0 found"},
  {Object(R"("type": 5140, "tracks": [{"id": [[2, 0, 0]]}, {"id": [[2, 5, 0]]}])"),
   "objects[0].tracks[1].id: a larger id than that of the track before expected"},
  {Key(R"({"time": [{"float": "nan"}, 1]})"), "objects[0].tracks[0].keys[0].time: a finite time expected"},
  {Key(R"({"time": [1, 2]}, {"time": [2, 4]})"),
   "objects[0].tracks[0].keys[1].time: a later time than that of the key before expected"},
  {Key(R"({"time": [0, 1], "interpolation": 0})"), "objects[0].tracks[0].keys[0].interpolation: 1 to 3 expected, 0 found"},
  {Key(R"({"time": [0, 1], "left": {"time": [0, 1]}})"), "objects[0].tracks[0].keys[0].left.value: missing"},
  {Key(R"({"time": [0, 1], "rotationMode": [1, true]})"),
   "objects[0].tracks[0].keys[0].rotationMode: 3 arguments expected, 2 found"},
  // Takes.
  {Takes(""), "takes: the main take is missing"},
  {Takes(R"({"main": false})"), "takes[0].main: the first take is the main take, and no other"},
  {Takes(R"({"current": true}, {"current": true})"), "takes[1].current: another take is current"},
  {Takes(R"({"overrides": [{"target": 1}]})"), "takes[0].overrides: the main take has no overrides"},
  {Takes(R"({}, {"overrides": [{}]})"), "takes[1].overrides[0].target: missing"},
  {Takes(R"({}, {"overrides": [{"target": 3}]})"), "takes[1].overrides[0].target: nothing has the id 3"},
  {Takes(R"({}, {"overrides": [{"target": 1}, {"target": 1}]})"),
   "takes[1].overrides[1].target: the take has an override for this node already"},
  // Materials.
  {MakeText(R"("materials": [{"id": 1, "type": 5704}])"), "materials[0].type: 5703 expected, 5704 found"},
  {Material(R"("node": {}, "channels": {})"), "materials[0].channels: not a member of a node material"},
  {Material(R"("node": {"parameters": {"a": {"constant": true}}})"), "materials[0].node.parameters.a.value: missing"},
  {Material(R"("node": {"parameters": {"a": {"value": {"time": [0, 1]}}}})"),
   "materials[0].node.parameters.a.value: one of vector, vector4, container and float expected"},
  {Material(R"("node": {"textures": {"a": "b%00"}})"), "materials[0].node.textures.a: no file has such a name"},
  {Material(R"("layers": [{"shaders": {}}])"), "materials[0].layers[0].id: missing"},
  {Material(R"("channels": {"color": {}})"), "materials[0].channels.color: a decimal number expected as name"},
  {Material(R"("channels": {"0": {"shader": {"file": "a"}}})"), "materials[0].channels.0.shader.file: not a member of a shader"},
};

TEST(RefusedScene, SaysWhereAndWhy)
{
  const Int before = CountNodes();
  for (const auto& [text, message] : kRefused)
  {
    EXPECT_EQ(GetRefusal(text), message) << text;
    EXPECT_EQ(CountNodes(), before) << text;
  }
}

// Broken JSON: the reason is the parser's own, the path is ours.
TEST(BrokenScene, PathLeadsToTheBreak)
{
  const std::string_view path = "objects[1].tags[0]";
  const std::string refusal = GetRefusal(MakeText(R"("objects": [{}, {"tags": [{"id" 1}]}])"));
  EXPECT_EQ(refusal.substr(0, path.size()), path) << refusal;
  EXPECT_NE(refusal.find(": the JSON text is broken: "), std::string::npos) << refusal;
  EXPECT_NE(GetRefusal(MakeText("\"name\": \"\xFF\"")), "");
}

TEST(BrokenScene, EveryCutIsRefused)
{
  const Int before = CountNodes();
  for (size_t length = 0; length + 2 < kEverything.size(); ++length)
    EXPECT_NE(GetRefusal(kEverything.substr(0, length)), "") << length;
  EXPECT_EQ(CountNodes(), before);
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
  int count = 0;
  for (const HeadlessObject* object = document->GetFirstObject(); object; object = object->GetDown())
    ++count;
  EXPECT_EQ(count, 511);
  const std::string refusal = GetRefusal(MakeChain(512));
  EXPECT_TRUE(refusal.starts_with("objects[0].children[0].children[0].")) << refusal;
  EXPECT_TRUE(refusal.ends_with(".children[0]: nested deeper than 1,024 levels; a hierarchy this deep cannot pass through a "
                                "scene document, convert the file directly"))
    << refusal;
  EXPECT_LT(refusal.size(), 500u);
}

}  // namespace
}  // namespace q7z::test
