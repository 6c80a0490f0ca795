// Documents: defaults, parameters and containers, takes, layers, materials, units, copies of documents and objects.

#include "framework/result.h"
#include "host/scene/headlessalias.h"
#include "host/scene/headlesstrack.h"
#include "tests/host/scenefixture.h"

namespace q7z::test
{
namespace
{

class SceneDocument : public SceneTest
{
protected:
  static HostValue Parameter(const HostNode* node, const HostDescId& id)
  {
    HostValue value;
    node->GetParameter(id, value);
    return value;
  }
};

TEST_F(SceneDocument, NodeSpaceComesFromTheHostThenTheDocument)
{
  EXPECT_EQ(Text(HostGetActiveNodeSpace()), "com.brenmoor3d.brenmoor4q7z.class.nodespace");
  ASSERT_TRUE(Scene().SetNodeSpace("other.space"_s));
  EXPECT_EQ(Text(HostGetActiveNodeSpace()), "other.space");
  _state.nodeSpace = "given"_s;
  EXPECT_EQ(Text(HostGetActiveNodeSpace()), "given");
  _state.nodeSpace = {};
  _state.activeDocument = nullptr;
  EXPECT_EQ(Text(HostGetActiveNodeSpace()), "com.brenmoor3d.brenmoor4q7z.class.nodespace");
}

// Units.

TEST_F(SceneDocument, UnitsConvertBy)
{
  const std::tuple<HostUnitScale, HostUnitScale, Float> rows[] = {
    {{1, 3}, {1, 2}, 0.01},         // centimetres to metres
    {{1, 6}, {1, 2}, 0.000000001},  // nanometres
    {{1, 8}, {1, 9}, 3},            // yards to feet
    {{1, 9}, {1, 10}, 12},          // and to inches
    {{1, 10}, {1, 4}, 25.4},        // and to millimetres
    {{1, 3}, {1, 11}, 1},           // no such code
    {{0, 3}, {1, 2}, 1},            // no factor
    {{1e300, 1}, {1e-300, 6}, 1},   // out of reach
  };
  for (const auto& [from, to, factor] : rows)
    EXPECT_DOUBLE_EQ(HostUnitConversionFactor(from, to), factor) << from.unitCode << " to " << to.unitCode;
}

// Parameters and containers.

TEST_F(SceneDocument, ParametersAreKeptByIdReplacedAndErased)
{
  HostObject* const object = Add("a");
  const std::pair<HostDescId, HostValue> values[] = {
    {929, HostValue(Int32(1))}, {{10, 20}, HostValue(7.0)},    {HostDescId({10, 0, 0}, {20, 0, 0}, {30, 0, 0}), HostValue(8.0)},
    {10, HostValue(9.0)},       {11, HostValue::Link(object)}, {0, HostValue(HostTime{1, 30})},
    {-3, HostValue("text"_s)},  {931, HostValue(Int32(-16))},  {930, HostValue(Int32(111))},
    {-4, HostValue(Int32(5))},  {932, HostValue(Int32(112))},  {0x1000000, HostValue(Int32(6))},
  };
  for (const auto& [id, value] : values)
    EXPECT_TRUE(object->SetParameter(id, value));
  for (const auto& [id, value] : values)
    EXPECT_EQ(Parameter(object, id), value) << id[0].id;
  const HeadlessContainer& kept = ToHeadless(object)->GetParameters();
  ASSERT_EQ(kept.GetCount(), 12);
  for (Int i = 1; i < kept.GetCount(); ++i)
    EXPECT_TRUE(kept.GetEntry(i - 1).id < kept.GetEntry(i).id);
  HostValue untouched(1.5);
  EXPECT_FALSE(object->GetParameter(12, untouched));
  EXPECT_EQ(untouched, HostValue(1.5));
  // From one small number to another, to another kind, back, and away.
  for (const HostValue& value : {HostValue(Int32(2)), HostValue(0.5), HostValue(Int32(3)), HostValue()})
  {
    ASSERT_TRUE(object->SetParameter(929, value));
    EXPECT_EQ(Parameter(object, 929), value);
    EXPECT_EQ(kept.GetCount(), value.IsNil() ? 11 : 12);
    EXPECT_EQ(Parameter(object, 930), HostValue(Int32(111)));
    EXPECT_EQ(Parameter(object, 931), HostValue(Int32(-16)));
  }
  object->GetContainer()->Erase(10);
  EXPECT_EQ(object->GetContainer()->Find(10), nullptr);
  EXPECT_FALSE(object->SetParameter(HostDescId(), HostValue(1.0)));
  ASSERT_TRUE(object->SetParameter(2100, HostValue(Vector{1, 2, 3})));
  EXPECT_EQ(Parameter(object, {2100, 1002}), HostValue(3.0));
  ASSERT_TRUE(object->SetParameter({2100, 1000}, HostValue(Int32(9))));
  EXPECT_EQ(Parameter(object, 2100), HostValue(Vector{9, 2, 3}));
  EXPECT_FALSE(object->SetParameter({2100, 1000}, HostValue("no"_s)));
  HeadlessNode instance(1060210);
  EXPECT_FALSE(object->SetParameter(1, HostValue::Link(ToHost(&instance)))) << "links cannot lead to it";
  EXPECT_FALSE(ToHost(&instance)->SetName("n"_s));
}

TEST_F(SceneDocument, ContainersNest)
{
  HostContainer* const outer = Add("a")->GetContainer();
  EXPECT_EQ(outer->GetContainer(101), nullptr);
  HostContainer* const inner = outer->GetContainer(101, true);
  ASSERT_NE(inner, nullptr);
  for (Int32 i = 40; i < 60; ++i)
    outer->Set(2 * i, HostValue(0.5 * i));  // moves the entries about
  EXPECT_EQ(outer->GetContainer(101), inner);
  EXPECT_EQ(outer->Find(101), nullptr) << "is no value";
  ASSERT_TRUE(outer->Set(101, HostValue(Int32(1)))) << "gives way to one";
  EXPECT_EQ(outer->GetContainer(101), nullptr);
}

TEST_F(SceneDocument, TextsAreCopiedIn)
{
  char text[] = "before";
  const String borrowed(text, 6);  // as if it lay in a library that goes
  HostObject* const object = Add("x");
  ASSERT_TRUE(object->SetName(borrowed));
  ASSERT_TRUE(object->SetParameter(5, HostValue(borrowed)));
  HostMaterial* const material = HostMaterial::Alloc(kMaterialType);
  Document()->InsertMaterial(material);
  HostMaterialExchangeData record;
  record.materialTypeId = borrowed;
  ASSERT_FALSE(record.parameters.Set(borrowed, {Data(borrowed), true}).HasError());
  ASSERT_TRUE(ToHeadless(material)->SetRecord(borrowed, record));
  std::copy_n("behind", 6, text);

  EXPECT_EQ(Text(object->GetName()), "before");
  EXPECT_EQ(Text(Parameter(object, 5).GetString()), "before");
  const NodeMaterialRecord& kept = *ToHeadless(material)->GetRecord();
  EXPECT_EQ(Text(kept.space), "before");
  EXPECT_EQ(Text(kept.data.materialTypeId), "before");
  EXPECT_EQ(kept.data.parameters.Find("before"_s)->value, Data("before"_s));
}

TEST_F(SceneDocument, OverridesAreOnePerNodeWithTheirFirstValue)
{
  HostTakeData* const takes = Document()->GetTakeData();
  HostTake* const take = takes->AddTake("t"_s);
  HeadlessOwner<HeadlessDocument> other(HeadlessDocument::Create());
  takes->SetCurrentTake(take);
  takes->SetCurrentTake(ToHost(other->GetTakeData().GetMainTake()));
  EXPECT_EQ(ToHost(Scene().GetTakeData().GetCurrentTake()), take) << "the other is not of this document";
  HostObject* const a = Add("a");
  const HostDescId x(kPositionParameter, kComponentX);
  const HostDescId y(kPositionParameter, kComponentY);
  HostOverride* const over = take->FindOrAddOverride(takes, a, x, HostValue(1.0));
  ASSERT_NE(over, nullptr);
  EXPECT_EQ(take->FindOrAddOverride(takes, a, x, HostValue(2.0)), over);
  EXPECT_EQ(take->FindOrAddOverride(takes, a, y, HostValue(3.0)), over);
  EXPECT_EQ(takes->GetMainTake()->FindOrAddOverride(takes, a, x, HostValue(1.0)), nullptr);
  EXPECT_EQ(*ToHeadless(over)->GetParameters().Find(x), HostValue(1.0)) << "the first stays";
  EXPECT_EQ(*ToHeadless(over)->GetParameters().Find(y), HostValue(3.0));
  for (int i = 0; i < 50; ++i)  // some of these stand where a freed one stood
  {
    HostOwner<HostObject> object(HostAllocObject(kNullObjectType));
    HostOverride* const fresh = take->FindOrAddOverride(takes, object.get(), HostDescId(1), HostValue(Int32(i)));
    EXPECT_EQ(fresh->GetContainer()->GetInt32(1), i);
  }
  EXPECT_EQ(ToHeadless(take)->GetOverrideCount(), 51);
  EXPECT_EQ(Document()->GetLayerRoot()->Add()->Add(), nullptr) << "only the root holds layers";
}

TEST_F(SceneDocument, ShaderFileIsResolvedAgainstTheDocument)
{
  const std::tuple<const char*, const char*, const char*> rows[] = {
    {"/scenes/a", "tex/b.png", "/scenes/a/tex/b.png"},
    {"/", "b.png", "/b.png"},
    {"", "b.png", "b.png"},
    {"/scenes", "/x/b.png", "/x/b.png"},
    {"/scenes", "", ""},
    {"/scenes", "C:/x/b.png", "C:/x/b.png"},
  };
  for (const auto& [folder, file, path] : rows)
  {
    ASSERT_TRUE(Scene().SetFolder(MakeString(folder)));
    HeadlessOwner<HeadlessShader> shader(HeadlessShader::Create());
    shader->SetParameter(1002, HostValue(MakeString(file)));
    EXPECT_EQ(Text(_tables.material->ResolveShaderFile(ToHost(shader.get()), Document()).GetPath()), path);
  }
}

TEST_F(SceneDocument, CopyKeepsItsLinksToDetachedObjectsInside)
{
  HostObject* const kept = Add("kept");
  HostInsertUnder(kept, nullptr);
  Add("instance", nullptr, kInstanceObjectType)->SetReference(kept);
  HeadlessOwner<HeadlessDocument> copy(ToHeadless(Document()->Clone(0)));
  FreeDocument();
  EXPECT_EQ(copy->GetFirstObject()->GetReference(), copy->GetFirstKept());
  EXPECT_EQ(Text(copy->GetFirstKept()->GetName()), "kept");
}

TEST_F(SceneDocument, ObjectCloneLeavesLinksUnlessTranslated)
{
  HostObject* const outside = Add("outside");
  HostObject* const root = Add("root", nullptr, kInstanceObjectType);
  HostObject* const inner = Add("inner", root, kInstanceObjectType);
  root->SetReference(inner);
  inner->SetReference(outside);

  HostOwner<HostObject> plain(root->Clone());
  EXPECT_EQ(plain->GetReference(), inner);
  EXPECT_EQ(plain->GetDocument(), nullptr);
  HostAliasTrans* const trans = HostAliasTrans::Alloc();
  ASSERT_TRUE(trans->Init(Document()));
  HostOwner<HostObject> mapped(root->Clone(trans));
  HostOwner<HostObject> gone(root->Clone(trans));
  gone.reset();
  HostOwner<HostObject> last(root->Clone(trans));
  trans->Translate();
  HostAliasTrans::Free(trans);
  EXPECT_EQ(last->GetReference(), last->GetDown()) << "the latest clone counts";
  EXPECT_EQ(last->GetDown()->GetReference(), outside) << "not in the set";
  EXPECT_EQ(mapped->GetReference(), last->GetDown());
}

}  // namespace
}  // namespace q7z::test
