// The tree that people look at.

#include <gtest/gtest.h>

#include "host/scenefile/inspect.h"
#include "tests/scenefile/scenetext.h"

namespace q7z::test
{
namespace
{

std::string Print(const HeadlessDocument& document, Bool isUtf8 = true)
{
  StringSink sink;
  EXPECT_FALSE(PrintTree(document, {isUtf8}, sink).HasError());
  return sink.GetText();
}

constexpr std::string_view kTree = R"(document "Pier "é"": 25 fps, 0 s to 3.5 s, 2.5 m, at 0.75 s
├─ generator "generator"
├─ 2 layers
│  ├─ "Water"
│  └─ ""
├─ 2 materials
│  ├─ node material "Wood": net.tarno.material.portbundle.gltf
│  │  ├─ baseColorFactor (1, 0.5, 0.25, 1), emissiveFactor (0.1, 0.2, 0.3), alphaMode "MASK", other (1, 2.5, nothing, true, 1 member)
│  │  ├─ baseColorTexture <- tex/a%25b.png (missing)
│  │  ├─ normalTexture <- file:///x/y.png (missing)
│  │  └─ emissiveTexture <- 
│  └─ material ""
│     ├─ channel 0: on <- tex/a.png
│     ├─ channel 5: off
│     ├─ reflectance layer 526336, shader 3, shader 12 <- b.png
│     └─ reflectance layer 526592
├─ objects
│  ├─ polygon object "Square": 4 points, 2 polygons, position (1, 2, 3), rotation (5.7296, -11.4592, 171.887) deg, scale (2, 2, 0.5), base transform, hidden in editor, layer ""
│  │  ├─ normals "Normals": 2 polygons
│  │  │  └─ track 1: no curve
│  │  ├─ UVW: 2 polygons, 64 bit
│  │  ├─ colors: 4 points
│  │  ├─ selection "All": 2 polygons
│  │  ├─ texture: material ""
│  │  ├─ phong: off
│  │  ├─ weights: 3 joints, 3 weights, bind pose
│  │  ├─ pose morph: 2 morphs
│  │  │  ├─ morph 0 "Base": 1 point
│  │  │  └─ morph 1 "Smile" -> "Target", strength 0.5
│  │  ├─ tag 4242 "Of some other host": 2 parameters
│  │  ├─ track position.x: 2 keys, spline, 0 s to 0.5 s, values 1.5 to 2
│  │  ├─ track points: 1 key, linear, 0 s to 0 s, values 0 to 0
│  │  ├─ null ""
│  │  │  └─ instance "Again" -> "Square"
│  │  └─ joint "Joint"
│  ├─ object 777 "Unknown"
│  └─ polygon object "Target": 0 points, 0 polygons
│     └─ colors: 0 polygons
└─ 2 takes
   ├─ "Main", main
   └─ "Walk", current: 2 overrides
      ├─ for "Joint": 1 value
      │  └─ track rotation.z: no keys
      └─ for nothing
6 objects, 4 points, 2 polygons, 10 tags, 4 tracks, 3 keys, 2 materials, 2 takes
)";

TEST(SceneTree, ShowsEverything)
{
  const DocumentOwner document = Read(kEverything);
  ASSERT_TRUE(document);
  EXPECT_EQ(Print(*document), kTree);
}

TEST(SceneTree, NothingBeyondAsciiWhereItCannotBeShown)
{
  const DocumentOwner document = Read(MakeText(R"("name": "é", "objects": [{"id": 1, "type": 5140, "name": "a", "children":
    [{"id": 2, "type": 5140, "name": "b", "children": [{"id": 3, "type": 5140, "name": "c"}]}]}, {"id": 4, "type": 5140}])"));
  ASSERT_TRUE(document);
  EXPECT_EQ(Print(*document, false), "document \"\\xC3\\xA9\": 30 fps, 0 s to 3 s, 1 cm\n"
                                     "|- objects\n"
                                     "|  |- null \"a\"\n"
                                     "|  |  `- null \"b\"\n"
                                     "|  |     `- null \"c\"\n"
                                     "|  `- null \"\"\n"
                                     "`- 1 take\n"
                                     "   `- \"Main\", main, current\n"
                                     "4 objects, 0 points, 0 polygons, 0 tags, 0 tracks, 0 keys, 0 materials, 1 take\n");
}

// No text of a file may move the cursor, colour the terminal or break a line.
TEST(SceneTree, ControlCharactersAreEscaped)
{
  const DocumentOwner document(HeadlessDocument::Create());
  const String nasty = "a\x1B[2Jb\nc\x7F\xC2\x9B\xFF"_s;
  HeadlessObject* const object = HeadlessObject::Create(kNullObjectType);
  document->InsertObjectLast(object);
  HeadlessMaterial* const material = HeadlessMaterial::Create();
  document->InsertMaterial(material);
  HostMaterialExchangeData data;
  data.materialTypeId = nasty;
  HostExchangeTexture texture;
  texture.url = Url::FromPath(nasty).GetValue();
  ASSERT_FALSE(data.parameters.Set(nasty, {Data(nasty), true}).HasError());
  ASSERT_FALSE(data.textures.Set(nasty, std::move(texture)).HasError());
  ASSERT_TRUE(material->SetRecord(nasty, data) && material->SetName(nasty) && object->SetName(nasty) && document->SetName(nasty));
  ASSERT_TRUE(document->GetTakeData().AddTake(nasty) && document->GetLayerRoot().Add()->SetName(nasty));
  ASSERT_TRUE(document->GetParameters().Set(kDocumentCopyrightParameter, HostValue(nasty)));
  const std::string text = Print(*document);
  EXPECT_NE(text.find(R"(null "a\x1B[2Jb\x0Ac\x7F\xC2\x9B\xFF")"), std::string::npos) << text;
  EXPECT_EQ(text.find_first_of("\x1B\x7F\xFF"), std::string::npos) << text;
  EXPECT_EQ(text.find("\xC2\x9B"), std::string::npos) << text;
  EXPECT_EQ(text.find("b\n"), std::string::npos) << text;
}

const std::tuple<const char*, const char*, const char*, const char*, Bool> kLocales[] = {
  {"NothingSet", nullptr, nullptr, nullptr, false},
  {"Lang", nullptr, nullptr, "en_US.UTF-8", true},
  {"OtherCodeset", nullptr, nullptr, "de_DE.ISO-8859-1", false},
  {"CtypeBeforeLang", nullptr, "C", "en_US.UTF-8", false},
  {"AllBeforeCtype", "en_US.UTF-8", "C", nullptr, true},
  {"EmptyIsNotSet", "", "", "en_US.UTF-8", true},
};

TEST(TerminalLocale, FirstThatIsSetDecides)
{
  for (const auto& [name, lcAll, lcCtype, lang, isUtf8] : kLocales)
    EXPECT_EQ(IsUtf8Locale(lcAll, lcCtype, lang), isUtf8) << name;
}

}  // namespace
}  // namespace q7z::test
