// How a scene is prepared for its file: one mesh has one material, what is hidden or empty goes, points that something counts stay.

#include "host/scene/scenetables.h"
#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostobject.h"
#include "plugin/module/hosttag.h"
#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

/// Polygons of a name; none when the last is before the first.
struct Selection
{
  const char* name;
  int first;
  int last;
};

struct Binding
{
  const char* restriction;
  const char* material;  // null for none
};

/// "strip", four triangles with a camera under it.
struct SplitRow
{
  const char* name;
  std::vector<Selection> selections;
  std::vector<Binding> bindings;
  const char* outline;
};

/// Members of a document.
struct Strip
{
  std::string materials;
  std::string object;  // without the bracket that closes it
};

Strip MakeStrip(const SplitRow& row, const std::string& name = "strip", int id = 100)
{
  Strip strip;
  std::string tags;
  const auto next = [&id] { return "{\"id\": " + std::to_string(++id); };
  for (const Selection& selection : row.selections)
  {
    const std::string range = "[" + std::to_string(selection.first) + "," + std::to_string(selection.last) + "]";
    tags += (tags.empty() ? "" : ", ") + next() + R"(, "type": 5673, "name": ")" + selection.name + R"(", "polygons": [)" +
            (selection.first > selection.last ? "" : range) + "]}";
  }
  for (const Binding& binding : row.bindings)
  {
    std::string material;
    if (binding.material)
    {
      strip.materials += (strip.materials.empty() ? "" : ", ") + next() + R"(, "type": 5703, "name": ")" + binding.material +
                         R"(", "channels": {}})";
      material = R"(, "material": )" + std::to_string(id);
    }
    tags += (tags.empty() ? "" : ", ") + next() + R"(, "type": 5616, "name": "t", "parameters": {"1006": ")" +
            binding.restriction + "\"}" + material + "}";
  }
  strip.object = next();
  strip.object += R"(, "type": 5100, "name": ")" + name + R"(", "points": [0,0,0, 0,100,0, 100,0,0, 100,100,0, 200,0,0,
      200,100,0], "polygons": [0,1,2,2, 1,2,3,3, 2,3,4,4, 3,4,5,5], "tags": [)" +
                  tags + R"(], "children": [)";
  strip.object += next() + R"(, "type": 5103, "name": "eye", "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5}})";
  return strip;
}

std::string Scene(const Strip& strip, const std::string& more = "", const std::string& members = "")
{
  return R"("materials": [)" + strip.materials + "], " + Objects(strip.object + "]" + members + "}" + more);
}

class SavedSplit : public testing::TestWithParam<SplitRow>
{};

TEST_P(SavedSplit, IsCutByMaterial)
{
  EXPECT_EQ(WriteOutline(SavedFile(SceneText(Scene(MakeStrip(GetParam()))), {})), GetParam().outline);
}

const SplitRow kSplitRows[] = {
  {"SelectionThatIsNotThere", {{"a", 0, 0}}, {{"b", "red"}}, "strip#4[eye*]"},
  {"NoMaterial", {{"a", 0, 1}}, {{"a", nullptr}}, "strip#4[eye*]"},
  {"EmptySelection", {{"a", 0, -1}}, {{"a", "red"}}, "strip#4[eye*]"},
  {"AllButOne", {{"a", 0, 2}}, {{"a", "red"}}, "strip[strip#1, strip-red#3, eye*]"},
  {"RestTakesTheNameOfWhatItCarries",
   {{"a", 0, 2}},
   {{"a", "red"}, {"", nullptr}, {"", "blue"}},
   "strip[strip-blue#1, strip-red#3, eye*]"},
  {"AllOfIt", {{"a", 0, 3}}, {{"a", "red"}}, "strip[strip-red#4, eye*]"},
  {"TheLastTextureIsCutFirst",
   {{"a", 0, 1}, {"b", 2, 3}},
   {{"a", "red"}, {"b", "blue"}},
   "strip[strip-blue#2, strip-red#2, eye*]"},
  {"OverlapGoesToTheLast", {{"a", 0, 2}, {"b", 1, 3}}, {{"a", "red"}, {"b", "blue"}}, "strip[strip-blue#3, strip-red#1, eye*]"},
  {"NothingIsLeftForTheFirst", {{"a", 1, 2}, {"b", 0, 3}}, {{"a", "red"}, {"b", "blue"}}, "strip[strip-blue#4, eye*]"},
  {"ASelectionServesOnce", {{"a", 3, 3}}, {{"a", "red"}, {"a", "blue"}}, "strip[strip-red#3, strip-blue#1, eye*]"},
  {"EqualNamesServeInOrder",
   {{"a", 0, 0}, {"a", 1, 2}},
   {{"a", "red"}, {"a", "blue"}},
   "strip[strip#1, strip-blue#1, strip-red#2, eye*]"},
  {"NoNameAndNoRestrictionAreEqual", {{"", 0, 0}}, {{"", "red"}}, "strip[strip#3, strip-red#1, eye*]"},
};
INSTANTIATE_TEST_SUITE_P(Rows, SavedSplit, testing::ValuesIn(kSplitRows), RowName());

const SplitRow kHalf = {"", {{"a", 2, 3}, {"unused", 0, 0}}, {{"a", "red"}}, ""};

/// A triangle without the bracket that closes it.
std::string Triangle(int id, const std::string& name)
{
  return "{\"id\": " + std::to_string(id) + R"(, "name": ")" + name + "\", " + kTriangle;
}

const SavedCase kPreparedCases[] = {
  // The group stands where the object stood and moves as it moved; the parts stand at its origin, though the rest moves, too.
  {"GroupOfPartsTakesTheTransform",
   Scene(MakeStrip(kHalf), "", R"(, "position": [100,200,300], "scale": [1,-2,1], "tracks": [{"id": [[903,23,0],[1001,19,0]],
      "keys": [{"time": [0,1], "value": 200.0, "interpolation": 2}, {"time": [1,1], "value": 500.0, "interpolation": 2}]}])"),
   {{"nodes/0/translation", "[1.0,2.0,-3.0]"},
    {"nodes/0/scale", "[1.0,-2.0,1.0]"},
    {"nodes/1/name", "\"strip\""},
    {"nodes/1/translation", "[0.0,0.0,-0.0]"},
    {"nodes/2/name", "\"strip-red\""},
    {"nodes/2/translation", "-"},
    {"animations/0/channels/0/target/node", "0"},
    {"animations/0/channels/1/target/node", "1"},
    {"animations/0/channels/2", "-"}}},
  {"GroupOfPartsStandsOverABaseTransform",
   Scene(MakeStrip(kHalf), "", R"(, "position": [100,0,0],
      "base": {"offset": [1000,0,0], "axisX": [0,1,0], "axisY": [-1,0,0], "axisZ": [0,0,1]})"),
   {{"nodes/0/translation", "[10.0,1.0,-0.0]"}}},
  {"InstancesShowTheGroupOfParts",
   Scene(MakeStrip(kHalf), R"(, {"id": 1, "type": 5126, "name": "first", "reference": 105},
      {"id": 2, "type": 1018957, "name": "second", "reference": 105}, {"id": 3, "type": 5126, "name": "none"})"),
   {{"outline", "second[strip#2, strip-red#2, eye*], first[strip#2, strip-red#2, eye*], strip[strip#2, strip-red#2, eye*]"}}},
  {"WhatStandsUnderAPartIsCutToo",
   Scene({MakeStrip(kHalf).materials + ", " + MakeStrip(kHalf, "inner", 200).materials,
          MakeStrip(kHalf).object + ", " + MakeStrip(kHalf, "inner", 200).object + "]}"}),
   {{"outline", "strip[strip#2, strip-red#2, eye*, inner[inner#2, inner-red#2, eye*]]"}}},
  {"HiddenInBothViewsAlone",
   Objects(Triangle(1, "hidden") + R"(, "editor": 1, "render": 1, "children": [)" + Triangle(2, "child") + "}]}, " +
           Triangle(3, "editorOnly") + R"(, "editor": 1}, )" + Triangle(4, "otherMode") + R"(, "editor": 2, "render": 2}, )" +
           Triangle(5, "outer") + ", \"children\": [" + Triangle(6, "inner") + R"(, "editor": 1, "render": 1}]})"),
   {{"outline", "outer#1, otherMode#1, editorOnly#1"}}},
  {"CurrentFrame",
   R"("time": [1,1], )" +
     Objects(Triangle(1, "T") + R"(, "position": [100,0,0], "tracks": [{"id": [[903,23,0],[1000,19,0]], "keys": [
      {"time": [0,1], "value": 0.0, "interpolation": 2}, {"time": [2,1], "value": 200.0, "interpolation": 2}]}]})"),
   {{"nodes/0/translation", "[1.0,0.0,-0.0]"}},
   {{kExportFrameParameter, 15}}},
};
INSTANTIATE_TEST_SUITE_P(Preparation, SavedScene, testing::ValuesIn(kPreparedCases), RowName());

struct PruneRow
{
  const char* name;
  const char* leaf;  // its type and more
  bool exportCameras;
  bool exportSkins;
  const char* mark;  // null for a leaf that goes
};

class SavedBranches : public testing::TestWithParam<PruneRow>
{};

// A leaf under two groups decides about both; so does one at the top.
TEST_P(SavedBranches, StayForTheirContent)
{
  const PruneRow& row = GetParam();
  const auto leaf = [&](const char* id) { return "{\"id\": " + std::string(id) + R"(, "name": "leaf", )" + row.leaf + "}"; };
  const auto group = [](const char* id, const std::string& name, const std::string& children)
  { return "{\"id\": " + std::string(id) + R"(, "type": 5140, "name": ")" + name + R"(", "children": [)" + children + "]}"; };
  const std::string inner = group("2", "inner", leaf("3"));
  const std::string empty = group("5", "empty", group("6", "alsoEmpty", ""));
  const SavedFile file(SceneText(Objects(group("1", "outer", inner + ", " + Triangle(4, "other") + "}, " + empty) + ", " +
                                         leaf("7"))),
                       {{kExportCamerasParameter, row.exportCameras}, {kExportSkinsParameter, row.exportSkins}});
  const std::string kept = "leaf" + std::string(row.mark ? row.mark : "");
  EXPECT_EQ(WriteOutline(file), row.mark ? kept + ", outer[inner[" + kept + "], other#1]" : "outer[other#1]");
}

constexpr const char* kCamera = R"("type": 5103, "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5})";
constexpr const char* kRenderCamera =
  R"("type": 1057516, "parameters": {"1001": 1, "1000": 2.0, "1123": true, "1122": 50.0, "1129": true, "1128": 1000.0})";

const PruneRow kPruneRows[] = {
  {"Group", R"("type": 5140)", true, true, nullptr},
  {"Mesh", R"("type": 5100, "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2])", false, false, "#1"},
  {"MeshWithoutPolygons", R"("type": 5100, "points": [0,0,0], "polygons": [])", true, true, nullptr},
  {"Camera", kCamera, true, false, "*"},
  {"CameraLeftOut", kCamera, false, true, nullptr},
  {"RenderCamera", kRenderCamera, true, false, "*"},
  {"Joint", R"("type": 1019362)", false, true, ""},
  {"JointLeftOut", R"("type": 1019362)", true, false, nullptr},
};
INSTANTIATE_TEST_SUITE_P(Rows, SavedBranches, testing::ValuesIn(kPruneRows), RowName());

// Points that no polygon uses go, but for those of meshes whose points something counts.
TEST(SavedPoints, StayWhereTheyAreCounted)
{
  const std::string mesh = R"(, "type": 5100, "points": [0,0,0, 100,0,0, 0,100,0, 9,9,9], "polygons": [0,1,2,2])";
  const auto object = [&](int id, const std::string& more)
  { return ", {\"id\": " + std::to_string(id) + R"(, "name": "T")" + mesh + more + "}"; };
  const std::string scene =
    SceneText(Objects(R"({"id": 1, "type": 1019362, "name": "J"})" + object(2, "") +
                      object(3, R"(, "tags": [{"id": 10, "type": 1019365, "joints": [1], "weights": [[[0,1.0]]]}])") +
                      object(4, R"(, "tags": [{"id": 11, "type": 1024237, "morphs": [
               {"name": "Default", "points": [0,0,0, 100,0,0, 0,100,0, 9,9,9]}, {"name": "P", "object": 5}]}])") +
                      object(5, "") + object(6, R"(, "tracks": [{"id": [[100004812,0,0]], "keys": [{"time": [0,1], "value": 0.0,
               "interpolation": 2, "points": [0,0,0, 100,0,0, 0,100,0, 9,9,9]}]}])")));
  const struct
  {
    bool morphs;
    bool skins;
    const char* counts;  // of the vertices of the last object to the second
  } rows[] = {{false, false, "33333"}, {true, false, "44433"}, {false, true, "33343"}, {true, true, "44443"}};
  for (const auto& row : rows)
  {
    const SavedFile file(scene, {{kExportMorphsParameter, row.morphs}, {kExportSkinsParameter, row.skins}});
    std::string counts;
    for (const char* const i : {"0", "1", "2", "3", "4"})
    {
      const std::string positions = file.At("meshes/" + std::string(i) + "/primitives/0/attributes/POSITION");
      counts += file.At("accessors/" + positions + "/count");
    }
    EXPECT_EQ(counts, row.counts) << row.morphs << row.skins;
  }
}

// Copies lead to what they were made of by tags; one of that name that a scene brings along may lead to anything.
TEST(SavedForeignTags, LeadNobodyAstray)
{
  TestHost host;
  const HeadlessOwner<HeadlessDocument> document =
    ReadScene(SceneText(Objects(R"({"id": 1, "type": 1019362, "name": "J"}, )" + Triangle(2, "T") +
                                R"(, "tags": [{"id": 3, "type": 1019365, "joints": [1], "weights": [[[0,1.0]]]}]})")));
  HostMaterial* const material = HostMaterial::Alloc(kMaterialType);
  ToHost(document.get())->InsertMaterial(material);
  HostObject* const joint = ToHost(document->GetFirstObject());
  HostTag* const tag = joint->MakeTag(kNodeBasedTagType);
  tag->SetName("glTFAuxTag"_s);
  tag->SetParameter(1000, HostValue::Link(material));
  joint->MakeTag(kPhongTagType)->SetName("glTFAuxTag"_s);
  const SaveFolder folder;
  EXPECT_EQ(folder.Save(host, *document, {{kExportSkinsParameter, true}}).error, "");
  EXPECT_EQ(SavedContent(folder.TakeBytes()).At("skins/0/joints"), "[1]");
}

// What a scene hook offers is copied, with links among the copies, and stands first.
class ObjectHook final : public SceneDocumentTable
{
public:
  ObjectHook(HostDocumentTable* base, HostObject* object) noexcept
      : SceneDocumentTable(*static_cast<SceneDocumentTable*>(base)), _object(object)
  {}
  HostNode* FindSceneHook(const HostDocument*, Int32 id) noexcept override { return id == 1054188 ? _object : nullptr; }
  Bool SendMessage(HostNode*, Int32 message, void* data) noexcept override
  {
    if (message == 180420109)
      *static_cast<HostObject**>(data) = offers ? _object : nullptr;
    return true;
  }

  bool offers = true;

private:
  HostObject* _object;
};

TEST(SavedHook, TheObjectOfAHookIsTakenIn)
{
  TestHost host;
  const HeadlessOwner<HeadlessDocument> document = ReadScene(SceneText(Objects(Triangle(1, "own") + "}")));
  const HeadlessOwner<HeadlessDocument> hooked =
    ReadScene(SceneText(Objects(R"({"id": 1, "type": 5140, "name": "offered", "children": [)" + Triangle(2, "shown") +
                                R"(}, {"id": 3, "type": 5126, "name": "instance", "reference": 2}]})")));
  HostTables& tables = host.Host().GetTables();
  ObjectHook hook(tables.document, ToHost(hooked->GetFirstObject()));
  tables.document = &hook;
  const SaveFolder folder;
  for (const bool offers : {true, false})
  {
    hook.offers = offers;
    EXPECT_EQ(folder.Save(host, *document, {}).error, "");
    EXPECT_EQ(WriteOutline(SavedContent(folder.TakeBytes())), offers ? "own#1, offered[shown#1, instance#1]" : "own#1");
  }
}

}  // namespace
}  // namespace q7z::test
