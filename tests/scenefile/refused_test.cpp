// Documents that are refused: each rule once, with the path and the words; and nothing is left of what was read.

#include <gtest/gtest.h>

#include "tests/scenefile/scenetext.h"

namespace q7z::test
{
namespace
{

/// Where the members of a row stand: the text before and behind them, and the path that the messages begin with.
struct Place
{
  std::string before;
  const char* behind;
  const char* path;
};
const Place kWhole = {"", "", ""};
const Place kTop = {R"({"format": "q7z scene", "version": 1, )", "}", ""};
const Place kObject = {kTop.before + R"("objects": [{"id": 1, )", "}]}", "objects[0]."};
const Place kTags = {kObject.before + R"("type": 5100, "points": [0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0],
                     "polygons": [0, 1, 2, 2, 0, 2, 3, 3], "tags": [)",
                     "]}]}", "objects[0]."};
const Place kTag = {kTags.before + R"({"id": 2, )", "}]}]}", "objects[0].tags[0]."};
const Place kKeys = {kObject.before + R"("type": 5140, "tracks": [{"id": [[1, 0, 0]], "keys": [)", "]}]}]}",
                     "objects[0].tracks[0]."};
const Place kMaterial = {kTop.before + R"("materials": [{"id": 1, "type": 5703, )", "}]}", "materials[0]."};
const Place kTakes = {kTop.before + R"("objects": [{"id": 1, "type": 5140}], "takes": [)", "]}", ""};

std::string Numbers(int count)
{
  std::string numbers = "[0";
  for (int i = 1; i < count; ++i)
    numbers += ", 0";
  return numbers + ']';
}

const std::tuple<Place, std::string, const char*> kRefused[] = {
  // The top level.
  {kWhole, "[]", "the document: an object expected"},
  {kWhole, "\xEF\xBB\xBF{}", "the document: the text begins with a byte order mark"},
  {kWhole, MakeText("") + " 1", "the document: text behind the end of the JSON value"},
  {kWhole, "{}", "format: missing"},
  {kWhole, R"({"format": "glTF", "version": 1})", "format: \"q7z scene\" expected"},
  {kWhole, R"({"format": "q7z scene", "version": 2})", "version: 1 expected, 2 found"},
  {kTop, R"("colour": 1)", "colour: not a member of a scene document"},
  {kTop, R"("name": "a", "name": "b")", "name: given twice"},
  {kTop, R"("time": [0, 1, 2])", "time: 2 numbers expected, 3 found"},
  {kTop, R"("time": [0, "1"])", "time[1]: a number expected, a text found"},
  {kTop, R"("layers": [{"id": 1}, true])", "layers[1]: an object expected, true found"},
  {kTop, R"("layers": [{"name": "a"}])", "layers[0].id: missing"},
  {kTop, R"("layers": [{"id": 7}], "objects": [{"id": 1, "type": 5140, "tags": [{"id": 7, "type": 1}]}])",
   "objects[0].tags[0].id: another node has the id 7"},
  // Tables of values.
  {kTop, R"("parameters": {"01": 1})", "parameters.01: the decimal id of a parameter expected"},
  {kTop, R"("parameters": {"1.2.3.4": 1})", "parameters.1.2.3.4: the decimal id of a parameter expected"},
  {kTop, R"("parameters": {"2147483648": 1})", "parameters.2147483648: the decimal id of a parameter expected"},
  {kObject, R"("type": 5140, "parameters": {"5": null})", "parameters.5: a value expected, null found"},
  {kTop, R"("settings": {"5": {"colour": [1, 2, 3]}})",
   "settings.5: one of time, vector, vector4, unit, link, container and float expected"},
  {kTop, R"("settings": {"5": {"float": "NaN"}})",
   "settings.5: one of time, vector, vector4, unit, link, container and float expected"},
  {kTop, R"("settings": {"5.6": {"container": {}}})", "settings.5.6: a container stands under an id of one level"},
  {kTop, R"("settings": {"5": {"link": 99}})", "settings.5.link: nothing has the id 99"},
  {kTop, R"("settings": {"5": 9223372036854775808})", "settings.5: 9223372036854775808 is no number that 64 bits hold"},
  {kTop, R"("settings": {"5": {"vector": [0, 1, 1e400]}})", "settings.5.vector[2]: 1e400 is no number that 64 bits hold"},
  // Objects.
  {kObject, R"("type": 5000000000)", "type: a whole number of 32 bits expected, 5000000000 found"},
  {kObject, R"("type": 5140, "colour": 1)", "colour: not a member of an object of type 5140"},
  {kObject, R"("type": 5140, "rotationOrder": 7)", "rotationOrder: 0 to 6 expected, 7 found"},
  {kObject, R"("type": 5140, "matrix": {"axisW": [0, 0, 0]})", "matrix.axisW: not a member of a matrix"},
  {kObject, R"("type": 5140, "layer": 1)", "layer: no layer has the id 1"},
  {kObject, R"("type": 5126, "reference": 2)", "reference: no object has the id 2"},
  {kObject, R"("type": 5100, "points": [1, 2, 3, 4, 5])", "points: a multiple of 3 numbers expected, 5 found"},
  {kObject, R"("type": 5100, "points": [1, 2, 3, 4, 5, 6], "polygons": [0, 1, 2, 0])",
   "polygons[2]: there is no point 2, the object has 2"},
  {kObject, R"("type": 5100, "points": [1, 2, 3], "polygons": [0, 0, 0, -1])",
   "polygons[3]: there is no point -1, the object has 1"},
  {kObject, R"("type": 5140, "children": [{"id": 2, "type": 5140}, {"id": 3, "type": 5140, "children": [{}]}])",
   "children[1].children[0].type: missing"},
  // Tags.
  {kTags, R"({"id": 2, "type": 5612}, {"id": 3, "type": 5612}, {"id": 4, "type": 5711, "normals": )" + Numbers(23) + "}",
   "tags[2].normals: 24 numbers expected, 23 found"},
  {kTag, R"("type": 5671, "uvws": [])", "uvws: 24 numbers expected, 0 found"},
  {kTag, R"("type": 5671, "normals": [])", "normals: not a member of a tag of type 5671"},
  {kTag, R"("type": 431000045, "colors": )" + Numbers(15), "colors: 16 numbers expected, 15 found"},
  {kTag, R"("type": 431000045, "perPoint": false, "colors": )" + Numbers(16), "colors: 32 numbers expected, 16 found"},
  {kTag, R"("type": 431000045, "colors": [1e39, )" + Numbers(15).substr(1), "colors[0]: too large for 32 bits"},
  {kTag, R"("type": 5673, "polygons": [[0, 1, 1]])", "polygons[0]: 2 polygons expected, 3 found"},
  {kTag, R"("type": 5673, "polygons": [[0, 0], [1, 0]])", "polygons[1]: the first polygon of a range stands behind its last"},
  {kTag, R"("type": 5673, "polygons": [[0, 2]])", "polygons[0][1]: there is no polygon 2, the object has 2"},
  {kTag, R"("type": 5616, "material": 1)", "material: no material has the id 1"},
  {kTag, R"("type": 5612, "on": 1)", "on: true or false expected, a whole number found"},
  {kTag, R"("type": 1019365, "joints": [1, 2])", "joints[1]: no object has the id 2"},
  {kTag, R"("type": 1019365, "joints": [1], "weights": [[[0.5, 0.5]]])",
   "weights[0][0][0]: a whole number expected, a float found"},
  {kTag, R"("type": 1019365, "joints": [1], "weights": [[[0, null]]])", "weights[0][0][1]: a number expected, null found"},
  {kTag, R"("type": 1019365, "joints": [1, 1], "weights": [[]])", "weights: 2 arrays expected, 1 found"},
  {kTag, R"("type": 1019365, "joints": [1], "weights": [[[0.5]]])", "weights[0][0]: 2 numbers expected, 1 found"},
  {kTag, R"("type": 1019365, "joints": [1], "weights": [[[0, 1.0], [4, 0.5]]])",
   "weights[0][1][0]: there is no point 4, the object has 4"},
  {kTag, R"("type": 1019365, "joints": [1], "weights": [[[1, 0.5], [1, 0.5]]])",
   "weights[0][1][0]: a larger point than the one before expected"},
  {kTag, R"("type": 1019365, "joints": [1], "bind": {"object": {}, "joints": []})", "bind.joints: 1 matrices expected, 0 found"},
  {kTag, R"("type": 1019365, "bind": {"joints": []})", "bind.object: missing"},
  {kTag, R"("type": 1024237, "morphs": [{"points": [], "object": 1}])", "morphs[0]: a morph has an object or points, not both"},
  // Tracks and keys.
  {kObject, R"("type": 5140, "tracks": [{"keys": []}])", "tracks[0].id: missing"},
  {kKeys, R"({"value": 1.0})", "keys[0].time: missing"},
  {kObject, R"("type": 5140, "tracks": [{"id": [[1,0,0], [2,0,0], [3,0,0], [4,0,0]]}])",
   "tracks[0].id: 1 to 3 levels expected, 4 found"},
  {kObject, R"("type": 5140, "tracks": [{"id": []}])", "tracks[0].id: 1 to 3 levels expected, 0 found"},
  {kObject, R"("type": 5140, "tracks": [{"id": [[2, 0, 0]]}, {"id": [[2, 5, 0]]}])",
   "tracks[1].id: a larger id than that of the track before expected"},
  {kKeys, R"({"time": [{"float": "nan"}, 1]})", "keys[0].time: a finite time expected"},
  {kKeys, R"({"time": [1, 2]}, {"time": [2, 4]})", "keys[1].time: a later time than that of the key before expected"},
  {kKeys, R"({"time": [0, 1], "interpolation": 0})", "keys[0].interpolation: 1 to 3 expected, 0 found"},
  {kKeys, R"({"time": [0, 1], "left": {"time": [0, 1]}})", "keys[0].left.value: missing"},
  {kKeys, R"({"time": [0, 1], "rotationMode": [1, true]})", "keys[0].rotationMode: 3 arguments expected, 2 found"},
  // Takes.
  {kTakes, "", "takes: the main take is missing"},
  {kTakes, R"({"main": false})", "takes[0].main: the first take is the main take, and no other"},
  {kTakes, R"({}, {"main": true})", "takes[1].main: the first take is the main take, and no other"},
  {kTakes, R"({"current": true}, {"current": true})", "takes[1].current: another take is current"},
  {kTakes, R"({"overrides": [{"target": 1}]})", "takes[0].overrides: the main take has no overrides"},
  {kTakes, R"({}, {"overrides": [{}]})", "takes[1].overrides[0].target: missing"},
  {kTakes, R"({}, {"overrides": [{"target": 3}]})", "takes[1].overrides[0].target: nothing has the id 3"},
  {kTakes, R"({}, {"overrides": [{"target": 1}, {"target": 1}]})",
   "takes[1].overrides[1].target: the take has an override for this node already"},
  // Materials.
  {kTop, R"("materials": [{"id": 1, "type": 5704}])", "materials[0].type: 5703 expected, 5704 found"},
  {kMaterial, R"("node": {}, "channels": {})", "channels: not a member of a node material"},
  {kMaterial, R"("node": {"parameters": {"a": {"constant": true}}})", "node.parameters.a.value: missing"},
  {kMaterial, R"("node": {"parameters": {"a": {"value": {"time": [0, 1]}}}})",
   "node.parameters.a.value: one of vector, vector4, container and float expected"},
  {kMaterial, R"("node": {"textures": {"a": "b%00"}})", "node.textures.a: no file has such a name"},
  {kMaterial, R"("layers": [{"shaders": {}}])", "layers[0].id: missing"},
  {kMaterial, R"("channels": {"color": {}})", "channels.color: a decimal number expected as name"},
  {kMaterial, R"("channels": {"0": {"shader": {"file": "a"}}})", "channels.0.shader.file: not a member of a shader"},
};

TEST(RefusedScene, SaysWhereAndWhy)
{
  const Int before = CountNodes();
  for (const auto& [place, members, message] : kRefused)
  {
    EXPECT_EQ(GetRefusal(place.before + members + place.behind), place.path + std::string(message)) << members;
    EXPECT_EQ(CountNodes(), before) << members;
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
