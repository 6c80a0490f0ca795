// Splitting: one mesh has one material, whatever selections its textures are bound to.

#include "plugin/module/hostmaterial.h"
#include "tests/export/preprocessorfixture.h"

namespace q7z::test
{
namespace
{

struct Selection
{
  const char* name;
  std::vector<std::pair<int, int>> ranges;
};

struct Binding
{
  const char* restriction;
  const char* material;  // null for none
};

struct SplitRow
{
  const char* name;
  std::vector<Selection> selections;
  std::vector<Binding> bindings;
  const char* outline;  // of "strip", four triangles with a child "child" that shows a camera
};

const SplitRow kSplitRows[] = {
  {"NoSelections", {}, {{"a", "red"}}, "strip#4[eye*]"},
  {"SelectionThatIsNotThere", {{"a", {{0, 0}}}}, {{"b", "red"}}, "strip#4[eye*]"},
  {"NoMaterial", {{"a", {{0, 1}}}}, {{"a", nullptr}}, "strip#4[eye*]"},
  {"EmptySelection", {{"a", {}}}, {{"a", "red"}}, "strip#4[eye*]"},
  {"AllButOne", {{"a", {{0, 2}}}}, {{"a", "red"}}, "strip[strip#1, strip-red#3, eye*]"},
  {"RestTakesTheNameOfWhatItCarries",
   {{"a", {{0, 2}}}},
   {{"a", "red"}, {"", nullptr}, {"", "blue"}},
   "strip[strip-blue#1, strip-red#3, eye*]"},
  {"AllOfIt", {{"a", {{0, 3}}}}, {{"a", "red"}}, "strip[strip-red#4, eye*]"},
  {"TheLastTextureIsCutFirst",
   {{"a", {{0, 1}}}, {"b", {{2, 3}}}},
   {{"a", "red"}, {"b", "blue"}},
   "strip[strip-blue#2, strip-red#2, eye*]"},
  {"OneOfTwoIsNotThere", {{"a", {{1, 2}}}}, {{"a", "red"}, {"b", "blue"}}, "strip[strip-blue#2, strip-red#2, eye*]"},
  {"OverlapGoesToTheLast",
   {{"a", {{0, 2}}}, {"b", {{1, 3}}}},
   {{"a", "red"}, {"b", "blue"}},
   "strip[strip-blue#3, strip-red#1, eye*]"},
  {"NothingIsLeftForTheFirst", {{"a", {{1, 2}}}, {"b", {{0, 3}}}}, {{"a", "red"}, {"b", "blue"}}, "strip[strip-blue#4, eye*]"},
  {"ASelectionServesOnce", {{"a", {{3, 3}}}}, {{"a", "red"}, {"a", "blue"}}, "strip[strip-red#3, strip-blue#1, eye*]"},
  {"EqualNamesServeInOrder",
   {{"a", {{0, 0}}}, {"a", {{1, 2}}}},
   {{"a", "red"}, {"a", "blue"}},
   "strip[strip#1, strip-blue#1, strip-red#2, eye*]"},
  {"NoNameAndNoRestrictionAreEqual", {{"", {{0, 0}}}}, {{"", "red"}}, "strip[strip#3, strip-red#1, eye*]"},
};

class PreprocessorSplit : public PreprocessorTest
{
protected:
  HostPolygonObject* AddSplitStrip(const SplitRow& row)
  {
    HostPolygonObject* const op = AddStrip("strip", 4);
    for (const Selection& selection : row.selections)
    {
      Select(op, selection.name, {});
      auto* const tag = static_cast<HostPolygonSelectionTag*>(op->GetTag(kPolygonSelectionTagType,
                                                                         op->GetTagCount(kPolygonSelectionTagType) - 1));
      for (const auto& [first, last] : selection.ranges)
        tag->GetSelection()->SelectRange(first, last);
    }
    for (const Binding& binding : row.bindings)
      Texture(op, binding.restriction, binding.material ? AddMaterial(binding.material) : nullptr);
    Add("eye", op, kCameraObjectType);
    return op;
  }
};

class PreprocessorSplitRows : public PreprocessorSplit, public testing::WithParamInterface<SplitRow>
{};

TEST_P(PreprocessorSplitRows, CutsByMaterial)
{
  AddSplitStrip(GetParam());
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), GetParam().outline);
}

INSTANTIATE_TEST_SUITE_P(Rows, PreprocessorSplitRows, testing::ValuesIn(kSplitRows), RowName());

const SplitRow kHalf = {"", {{"a", {{2, 3}}}, {"unused", {{0, 0}}}}, {{"a", "red"}}, ""};

TEST_F(PreprocessorSplit, PartsHaveTheirMaterialAlone)
{
  AddSplitStrip(kHalf);
  ASSERT_EQ(Run(), "");
  HostObject* const part = Find("strip-red");
  ASSERT_TRUE(part);
  EXPECT_EQ(part->GetTagCount(kTextureTagType), 1);
  EXPECT_EQ(part->GetTagCount(kPolygonSelectionTagType), 0);
  const auto* const texture = static_cast<HostTextureTag*>(part->GetTag(kTextureTagType));
  EXPECT_EQ(Text(texture->GetMaterial()->GetName()), "red");
  HostValue restriction;
  EXPECT_TRUE(texture->GetParameter(1006, restriction));
  EXPECT_EQ(Text(restriction.GetString()), "");
  HostObject* const rest = FindOriginal("strip")->GetDown();
  EXPECT_EQ(rest->GetTagCount(kTextureTagType), 0);
  EXPECT_EQ(rest->GetTagCount(kPolygonSelectionTagType), 1);
}

// The group stands where the object stood and moves as it moved; the parts stand at its origin.
TEST_F(PreprocessorSplit, TheGroupTakesTheTransform)
{
  HostObject* const parent = Add("parent");
  HostPolygonObject* const op = AddSplitStrip(kHalf);
  op->InsertUnderLast(parent);
  op->SetParameter(kPositionParameter, Vector{1, 2, 3});
  op->SetParameter(kRotationParameter, Vector{7, 0, 0});  // more than one turn stays so
  op->SetParameter(kScaleParameter, Vector{1, -2, 1});
  Animate(op, {kPositionParameter, kComponentY}, {{0, 2}, {1, 5}});
  const HostMatrix matrix = op->GetLocalMatrix();
  ASSERT_EQ(Run(), "");
  HostObject* const group = FindOriginal("strip");
  EXPECT_EQ(group->GetType(), kNullObjectType);
  EXPECT_EQ(group->GetLocalMatrix(), matrix);
  EXPECT_EQ(group->GetRelativeRotation(), (Vector{7, 0, 0}));
  EXPECT_EQ(group->GetRelativeScale(), (Vector{1, -2, 1}));
  EXPECT_EQ(Values(group, {kPositionParameter, kComponentY}), "2, 5");
  HostObject* const rest = group->GetDown();
  HostObject* const part = rest->GetNext();
  EXPECT_EQ(part->GetLocalMatrix(), HostMatrix());
  EXPECT_FALSE(HasTransformTracks(part));
  EXPECT_EQ(rest->GetLocalMatrix(), HostMatrix());
  EXPECT_EQ(Values(rest, {kPositionParameter, kComponentY}), "2, 5");
}

TEST_F(PreprocessorSplit, TheGroupStandsRightOverABaseTransformToo)
{
  HostPolygonObject* const op = AddSplitStrip(kHalf);
  HeadlessObject* const scene = ToHeadless(static_cast<HostObject*>(op));
  scene->SetBase({HostMatrix{{10, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}, {1, 1, 1}});
  scene->SetVectors({{1, 0, 0}, {0, 0, 0}, {1, 1, 1}});
  ASSERT_EQ(op->GetLocalMatrix().offset, (Vector{10, 1, 0}));
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(FindOriginal("strip")->GetLocalMatrix(), (HostMatrix{{10, 1, 0}, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}));
}

TEST_F(PreprocessorSplit, InstancesShowTheGroup)
{
  HostPolygonObject* const op = AddSplitStrip(kHalf);
  HostObject* const other = AddStrip("other", 1);
  for (const auto& [name, type, shown] : {std::tuple{"first", kInstanceObjectType, static_cast<HostObject*>(op)},
                                          {"second", kSecondInstanceObjectType, static_cast<HostObject*>(op)},
                                          {"third", kInstanceObjectType, other}})
    Add(name, nullptr, type)->SetReference(shown);
  Add("fourth", nullptr, kInstanceObjectType);
  ASSERT_EQ(Run(), "");
  HostObject* const group = FindOriginal("strip");
  ASSERT_EQ(group->GetType(), kNullObjectType);
  EXPECT_EQ(FindOriginal("first")->GetReference(), group);
  EXPECT_EQ(FindOriginal("second")->GetReference(), group);
  EXPECT_EQ(FindOriginal("third")->GetReference(), other);
  EXPECT_EQ(FindOriginal("fourth")->GetReference(), nullptr);
  EXPECT_EQ(Outline(), "third#1, second[strip#2, strip-red#2, eye*], first[strip#2, strip-red#2, eye*], other#1, "
                       "strip[strip#2, strip-red#2, eye*]");
}

TEST_F(PreprocessorSplit, AnObjectAndWhatStandsUnderItAreBothCut)
{
  HostPolygonObject* const outer = AddSplitStrip(kHalf);
  HostPolygonObject* const inner = AddSplitStrip(kHalf);
  inner->SetName("inner"_s);
  inner->InsertUnderLast(outer);
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "strip[strip#2, strip-red#2, eye*, inner[inner#2, inner-red#2, eye*]]");
}

TEST_F(PreprocessorSplit, AnObjectThatCannotBeCutEndsTheRun)
{
  AddSplitStrip(kHalf);
  Modeling().faultyCommand = 220;
  Modeling().fault = RecordingModeling::Fault::kNoResult;
  EXPECT_EQ(Run(), "net.tarno.error.illegalstate Illegal state: Could not split object 'strip'");
}

// What a scene hook offers is copied, with links among the copies, and stands first.
class ObjectHook final : public HostDocumentTable
{
public:
  ObjectHook(HostDocumentTable* base, HostObject* object) noexcept : _base(base), _object(object) {}
  HostNode* FindSceneHook(const HostDocument*, Int32 id) noexcept override { return id == 1054188 ? _object : nullptr; }
  Bool SendMessage(HostNode*, Int32 message, void* data) noexcept override
  {
    if (message == 180420109)
      *static_cast<HostObject**>(data) = offers ? _object : nullptr;
    return true;
  }
  HostDocument* Clone(const HostDocument* document, Int32 flags) noexcept override { return _base->Clone(document, flags); }
  void InsertObject(HostDocument* document, HostObject* object, HostObject* parent, HostObject* predecessor) noexcept override
  {
    _base->InsertObject(document, object, parent, predecessor);
  }
  void InsertMaterial(HostDocument* document, HostMaterial* material) noexcept override
  {
    _base->InsertMaterial(document, material);
  }
  HostObject* GetFirstObject(const HostDocument* document) noexcept override { return _base->GetFirstObject(document); }
  void SetTime(HostDocument* document, const HostTime& time) noexcept override { _base->SetTime(document, time); }
  HostTime GetTime(const HostDocument* document) noexcept override { return _base->GetTime(document); }
  void ExecutePasses(HostDocument* document) noexcept override { _base->ExecutePasses(document); }
  HostContainer* GetSettings(HostDocument* document) noexcept override { return _base->GetSettings(document); }
  HostContainer* GetActiveRenderData(HostDocument* document) noexcept override { return _base->GetActiveRenderData(document); }
  String GetActiveNodeSpace() noexcept override { return _base->GetActiveNodeSpace(); }
  HostDocument* GetActiveDocument() noexcept override { return _base->GetActiveDocument(); }

  bool offers = true;

private:
  HostDocumentTable* _base;
  HostObject* _object;
};

TEST_F(PreprocessorSplit, TheObjectOfAHookIsTakenIn)
{
  AddStrip("own", 1);
  const HostOwner<HostObject> offered(HostObject::Alloc(kNullObjectType));
  offered->SetName("offered"_s);
  HostObject* const shown = AddStrip("shown", 2, offered.get());
  HostObject* const instance = Add("instance", offered.get(), kInstanceObjectType);
  instance->SetReference(shown);
  HostTables& tables = Host().Host().GetTables();
  ObjectHook hook(tables.document, offered.get());
  tables.document = &hook;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "own#1, offered[shown#2, instance#2]");
  EXPECT_EQ(FindOriginal("instance")->GetReference(), FindOriginal("shown"));
  EXPECT_NE(FindOriginal("shown"), shown);
}

TEST_F(PreprocessorSplit, AHookMayOfferNothing)
{
  AddStrip("own", 1);
  const HostOwner<HostObject> offered(HostObject::Alloc(kNullObjectType));
  HostTables& tables = Host().Host().GetTables();
  ObjectHook hook(tables.document, offered.get());
  hook.offers = false;
  tables.document = &hook;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "own#1");
}

TEST_F(PreprocessorSplit, GoesToTheFrameThatIsAskedFor)
{
  Animate(AddStrip("mover", 1), {kPositionParameter, kComponentX}, {{0, 0}, {2, 20}});
  SetTimes(10, {0, 1}, {2, 1});
  _options.exportFrame = 5;
  _options.useCurrentFrame = false;
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(Document()->GetTime(), (HostTime{1, 2}));
  EXPECT_DOUBLE_EQ(Find("mover")->GetLocalMatrix().offset.x, 5);
}

TEST_F(PreprocessorSplit, StaysAtTheCurrentFrame)
{
  Animate(AddStrip("mover", 1), {kPositionParameter, kComponentX}, {{0, 0}, {2, 20}});
  Document()->SetTime({1, 1});
  _options.exportFrame = 5;
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(Document()->GetTime(), (HostTime{1, 1}));
  EXPECT_DOUBLE_EQ(Find("mover")->GetLocalMatrix().offset.x, 10);
}

}  // namespace
}  // namespace q7z::test
