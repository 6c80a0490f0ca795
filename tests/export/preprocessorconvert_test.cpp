// Conversion: the copies that are written, and the objects as they stood, to which links lead.

#include "plugin/module/hostmaterial.h"
#include "tests/export/preprocessorfixture.h"

namespace q7z::test
{
namespace
{

using Fault = RecordingModeling::Fault;

class PreprocessorConvert : public PreprocessorTest
{
protected:
  /// The commands that a mesh was given, "221 227".
  std::string CommandsFor(const std::string& name)
  {
    std::string text;
    for (const auto& [command, object] : Modeling().sent)
      text += object == name ? (text.empty() ? "" : " ") + std::to_string(command) : "";
    return text;
  }

  HostPoseMorphTag* AddMorphs(HostObject* op, std::initializer_list<HostObject*> targets)
  {
    auto* const tag = static_cast<HostPoseMorphTag*>(op->MakeTag(kPoseMorphTagType));
    HostPolygonObject* const base = AddStrip("base", 2);
    tag->StoreObject(tag->AddMorph(), Document(), base);
    for (HostObject* const target : targets)
      tag->StoreObject(tag->AddMorph(), Document(), target);
    return tag;
  }
};

// The order at the top level is reversed, and only there.
TEST_F(PreprocessorConvert, TheDocumentBeginsWithWhatIsKeptForLinks)
{
  HostObject* const first = Add("first");
  AddStrip("a", 1, first);
  AddStrip("b", 2, first);
  AddStrip("second", 3);
  AddStrip("third", 4);
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "third#4, second#3, first[a#1, b#2]");
  EXPECT_EQ(_count, 5);
  HostObject* const kept = Document()->GetFirstObject();
  EXPECT_EQ(Text(kept->GetName()), "dontexport");
  EXPECT_EQ(kept->GetVisibility(kEditorVisibility), kHiddenMode);
  EXPECT_EQ(kept->GetVisibility(kRenderVisibility), kHiddenMode);
  HostObject* const group = kept->GetDown();
  ASSERT_TRUE(group);
  EXPECT_EQ(group->GetNext(), nullptr);
  EXPECT_EQ(Text(group->GetDown()->GetName()), "first");
  EXPECT_EQ(Text(group->GetDown()->GetNext()->GetName()), "second");
  EXPECT_EQ(Modeling().settings, "11");
}

TEST_F(PreprocessorConvert, AnEmptyDocumentStaysEmpty)
{
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "");
  EXPECT_EQ(_count, 0);
}

TEST_F(PreprocessorConvert, NoDocumentNoRun)
{
  GltfPreprocessor preprocessor;
  const Result<Int32> result = preprocessor.Run(_options);
  ASSERT_TRUE(result.HasError());
  EXPECT_EQ(Text(result.GetError().GetMessage()), "Illegal state: Condition _doc not fulfilled. ");
}

TEST_F(PreprocessorConvert, CopiesLeadToTheObjectsAsTheyStood)
{
  HostObject* const null = Add("null");
  HostObject* const mesh = AddStrip("mesh", 2, null);
  HostObject* const camera = Add("camera", mesh, kCameraObjectType);
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(GetAuxSource(Find("null")), null);
  EXPECT_EQ(GetAuxSource(Find("mesh")), mesh);
  EXPECT_EQ(GetAuxSource(Find("camera")), camera);
  EXPECT_EQ(GetAuxSource(mesh), mesh);
  EXPECT_EQ(GetAuxSource(Document()->GetFirstObject()), nullptr);
  const HostTag* const tag = mesh->GetTag(kNodeBasedTagType);
  EXPECT_EQ(Text(tag->GetName()), "glTFAuxTag");
  HostValue value;
  EXPECT_TRUE(HostNodeMaster::Of(tag)->GetRoot()->GetParameter(1001, value));
  EXPECT_EQ(value.GetInt32(), 1);
}

// A tag of the name that a scene brings along may lead to anything.
TEST_F(PreprocessorConvert, ATagOfTheSceneDoesNotLeadAstray)
{
  HostObject* const mesh = AddStrip("mesh", 1);
  HostTag* const tag = mesh->MakeTag(kNodeBasedTagType);
  tag->SetName("glTFAuxTag"_s);
  tag->SetParameter(1000, HostValue::Link(AddMaterial("no object")));
  mesh->MakeTag(kPhongTagType)->SetName("glTFAuxTag"_s);
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(GetAuxSource(Find("mesh")), mesh);
}

TEST_F(PreprocessorConvert, AuxTagsWithoutALinkLeadNowhere)
{
  HostObject* const op = Add("op");
  EXPECT_EQ(GetAuxSource(op), nullptr);
  HostTag* const tag = op->MakeTag(kNodeBasedTagType);
  tag->SetParameter(1000, HostValue::Link(op));
  EXPECT_EQ(GetAuxSource(op), nullptr);  // not its name
  tag->SetName("glTFAuxTag"_s);
  EXPECT_EQ(GetAuxSource(op), op);
  const HostOwner<HostObject> clone(op->Clone());
  EXPECT_EQ(GetAuxSource(clone.get()), op);
  op->MakeTag(kPhongTagType)->SetName("glTFAuxTag"_s);
  tag->Remove();
  HostNode::Free(tag);
  EXPECT_EQ(GetAuxSource(op), nullptr);  // no node master
}

TEST_F(PreprocessorConvert, CopiesHaveTheTracksOfTheirSources)
{
  HostObject* const mesh = AddStrip("mesh", 1);
  Animate(mesh, {kPositionParameter, kComponentX}, {{0, 1}, {1, 2}});
  Animate(mesh, {kScaleParameter, kComponentZ}, {{0, 1}, {1, 3}});
  EXPECT_EQ(Run(), "");
  HostObject* const copy = Find("mesh");
  EXPECT_EQ(Values(copy, {kPositionParameter, kComponentX}), "1, 2");
  EXPECT_EQ(Values(copy, {kScaleParameter, kComponentZ}), "1, 3");
  EXPECT_EQ(Values(copy, {kPositionParameter, kComponentY}), "none");
}

struct PointsRow
{
  const char* name;
  bool exportMorphs;
  bool exportSkins;
  const char* commands[5];  // of plain, skinned, morphed, target, pointAnimated
};

const PointsRow kPointRows[] = {
  {"Neither", false, false, {"221 227", "221 227", "221 227", "221 227", "221 227"}},
  {"Morphs", true, false, {"221 227", "221 227", "221", "221", "221"}},
  {"Skins", false, true, {"221 227", "221", "221 227", "221 227", "221 227"}},
  {"Both", true, true, {"221 227", "221", "221", "221", "221"}},
};

class PreprocessorConvertPoints : public PreprocessorConvert, public testing::WithParamInterface<PointsRow>
{};

// Every mesh becomes triangles; points that something counts are never thrown away.
TEST_P(PreprocessorConvertPoints, AreKeptWhereTheyAreCounted)
{
  AddStrip("plain", 2);
  Bind(AddStrip("skinned", 2), {Add("joint", nullptr, kJointObjectType)});
  AddMorphs(AddStrip("morphed", 2), {AddStrip("target", 2)});
  Animate(AddStrip("pointAnimated", 2), kPointTrackParameter, {});
  AddStrip("empty", 0);
  _options.exportMorphs = GetParam().exportMorphs;
  _options.exportSkins = GetParam().exportSkins;
  ASSERT_EQ(Run(), "");
  const char* const kNames[] = {"plain", "skinned", "morphed", "target", "pointAnimated"};
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(CommandsFor(kNames[i]), GetParam().commands[i]) << kNames[i];
  EXPECT_EQ(CommandsFor("empty"), "");
  EXPECT_EQ(Find("skinned")->GetTagCount(kWeightTagType), GetParam().exportSkins ? 1 : 0);
  EXPECT_EQ(FindOriginal("skinned")->GetTagCount(kWeightTagType), 1);
}

INSTANTIATE_TEST_SUITE_P(Rows, PreprocessorConvertPoints, testing::ValuesIn(kPointRows), RowName());

TEST_F(PreprocessorConvert, QuadsBecomeTriangles)
{
  HostPolygonObject* const quad = AddStrip("quad", 2);
  quad->GetPolygonsW()[0] = {0, 1, 3, 2};
  quad->GetPolygonsW()[1] = {0, 1, 2, 2};
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "quad#3");
  const HostPolygonObject* const copy = ToPoly(Find("quad"));
  EXPECT_EQ(copy->GetPolygonsR()[0], (HostPolygon{0, 1, 3, 3}));
  EXPECT_EQ(copy->GetPolygonsR()[1], (HostPolygon{0, 3, 2, 2}));
}

TEST_F(PreprocessorConvert, PhongShadingBecomesNormals)
{
  HostPolygonObject* const smooth = AddStrip("smooth", 2);
  smooth->SetPhong(true, false, 1);
  AddStrip("flat", 2);
  HostPolygonObject* const own = AddStrip("own", 2);
  own->SetPhong(true, false, 1);
  static_cast<HostNormalTag*>(own->MakeTag(kNormalTagType, 2))->GetHandleW().Set(0, {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}});
  ASSERT_EQ(Run(), "");
  const auto* const made = static_cast<const HostNormalTag*>(Find("smooth")->GetTag(kNormalTagType));
  ASSERT_TRUE(made);
  EXPECT_EQ(made->GetHandleR().polygonCount, 2);
  EXPECT_EQ(std::abs(made->GetHandleR().Get(1).c.z), 1);
  EXPECT_EQ(FindOriginal("smooth")->GetTag(kNormalTagType), nullptr);
  EXPECT_EQ(Find("flat")->GetTag(kNormalTagType), nullptr);
  EXPECT_EQ(Find("own")->GetTagCount(kNormalTagType), 1);
  EXPECT_EQ(static_cast<const HostNormalTag*>(Find("own")->GetTag(kNormalTagType))->GetHandleR().Get(0).a, (Vector{1, 0, 0}));
}

struct FaultRow
{
  const char* name;
  Int32 command;
  Fault fault;
  const char* message;
};

const FaultRow kFaults[] = {
  {"SplitRefused", 220, Fault::kRefused, "Illegal state: Condition SendModelingCommand(220, data) not fulfilled. "},
  {"SplitEmpty", 220, Fault::kNoResult, "Illegal state: Could not split object 'cut'"},
  {"SplitNull", 220, Fault::kNullResult, "Illegal state: Could not split object 'cut'"},
  {"ConvertRefused", 245, Fault::kRefused, "Illegal state: Condition SendModelingCommand(245, data) not fulfilled. "},
  {"ConvertEmpty", 245, Fault::kNoResult, "Illegal state: Condition data.result not fulfilled. "},
  {"ConvertNull", 245, Fault::kNullResult, "Illegal state: Condition bakedRoot not fulfilled. "},
  {"TriangulateRefused", 221, Fault::kRefused, "Illegal state: Condition SendModelingCommand(221, data) not fulfilled. "},
  {"CleanUpRefused", 227, Fault::kRefused, "Illegal state: Condition SendModelingCommand(227, data) not fulfilled. "},
};

class PreprocessorFaults : public PreprocessorConvert, public testing::WithParamInterface<FaultRow>
{};

TEST_P(PreprocessorFaults, EndTheRun)
{
  HostPolygonObject* const op = AddStrip("cut", 3);
  Select(op, "half", {{0, 0}});
  Texture(op, "half", AddMaterial("red"));
  Add("child", op);
  Modeling().faultyCommand = GetParam().command;
  Modeling().fault = GetParam().fault;
  EXPECT_EQ(Run(), std::string("net.tarno.error.illegalstate ") + GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Rows, PreprocessorFaults, testing::ValuesIn(kFaults), RowName());

}  // namespace
}  // namespace q7z::test
