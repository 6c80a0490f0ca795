// Morph targets: the pose objects that targets become, the tag that keeps them, its strengths, and the files that are refused.

#include "host/modeling/deformation.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "tests/deform/deformfixture.h"

namespace q7z::test
{
namespace
{

struct Attribute
{
  std::string name;
  Numbers values;
  std::string type = "VEC3";
};

using Attributes = std::vector<Attribute>;

std::string WriteAttributes(GltfJson& file, const Attributes& attributes)
{
  std::string text;
  for (const Attribute& attribute : attributes)
    text +=
      (text.empty() ? "\"" : ",\"") + attribute.name + "\":" + std::to_string(file.Floats(attribute.values, attribute.type));
  return "{" + text + "}";
}

/// A triangle at z = 1 with further attributes, and its targets.
std::string MakePrimitive(GltfJson& file, const Attributes& attributes, const std::vector<Attributes>& targets)
{
  Attributes all = {{"POSITION", {0, 0, 1, 1, 0, 1, 0, 1, 1}}};
  all.insert(all.end(), attributes.begin(), attributes.end());
  std::string text = R"({"attributes":)" + WriteAttributes(file, all) + R"(,"targets":[)";
  for (size_t i = 0; i < targets.size(); ++i)
    text += (i ? "," : "") + WriteAttributes(file, targets[i]);
  return text + "]}";
}

const Attribute kNormals = {"NORMAL", {0, 0, 1, 0, 0, 1, 0, 0, 1}};
const Attribute kUvs = {"TEXCOORD_0", {0, 0, 1, 0, 0, 1}, "VEC2"};
const Attribute kColors = {"COLOR_0", {1, 0, 0, 0, 1, 0, 0, 0, 1}};
const Attribute kOneBack = {"POSITION", {0, 0, 1, 0, 0, 1, 0, 0, 1}};
const Attribute kOneUp = {"POSITION", {0, 1, 0, 0, 1, 0, 0, 1, 0}};

class MorphTargets : public DeformTest
{
protected:
  using MakePrimitives = std::function<std::string(GltfJson&)>;

  std::string LoadPrimitives(const MakePrimitives& makePrimitives, const std::string& more = "")
  {
    GltfJson file;
    file.Add("meshes", R"({"primitives":[)" + makePrimitives(file) + "]" + more + "}");
    return Load(R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","mesh":0}])", file);
  }
  std::string LoadTwoTargets(const std::string& more = "")
  {
    return LoadPrimitives([](GltfJson& file) { return MakePrimitive(file, {}, {{kOneBack}, {kOneUp}}); }, more);
  }

  HeadlessPolygonObject* Mesh(const std::string& name = "A")
  {
    HeadlessObject* const op = Find(name);
    return op ? op->AsPolygonObject() : nullptr;
  }
  HeadlessPoseMorphTag* Tag(const std::string& name = "A")
  {
    return Mesh(name) ? static_cast<HeadlessPoseMorphTag*>(Mesh(name)->FindTag(kPoseMorphTagType)) : nullptr;
  }

  std::string WriteStrengths()
  {
    std::string text;
    for (Int32 i = 0; Tag() && i < Tag()->GetMorphCount(); ++i)
      text += (i ? " " : "") + WriteNumber(Tag()->GetMorph(i)->GetStrength());
    return text;
  }

  /// Which of the tag's parameters are 1; those that are not set are left out.
  std::string WriteParameters()
  {
    std::string text;
    for (const Int32 id : {1009, 1001, 1017, 1053, 1023})
    {
      const HostValue* const value = Tag()->GetParameters().Find(id);
      text += value ? (text.empty() ? "" : " ") + std::to_string(id) + "=" + std::to_string(value->GetInt()) : "";
    }
    return text;
  }
};

std::string WriteVector(const Vector& v)
{
  return "(" + WriteNumber(v.x) + " " + WriteNumber(v.y) + " " + WriteNumber(v.z) + ")";
}

/// Points in order, then the corners a, b and c of the first polygon: "(0 0 0) ... normals ... uvs ... colors ...".
std::string WriteShape(HeadlessPolygonObject* op)
{
  if (!op)
    return "none";
  std::string text;
  for (Int i = 0; i < op->GetPointCount(); ++i)
    text += (i ? " " : "") + WriteVector(op->GetPoints().GetR()[i]);
  for (const Int32 type : {kNormalTagType, kUvwTagType})
  {
    const auto* const tag = static_cast<const HeadlessCornerTag*>(op->FindTag(type));
    if (!tag)
      continue;
    const HostCorners corners = tag->GetHandleR().Get(0);
    text += (type == kNormalTagType ? " normals " : " uvs ") + WriteVector(corners.a) + " " + WriteVector(corners.b) + " " +
            WriteVector(corners.c);
    EXPECT_EQ(corners.d, corners.c);
  }
  if (const auto* const tag = static_cast<const HeadlessVertexColorTag*>(op->FindTag(kVertexColorTagType)))
  {
    text += " colors";
    for (Int i = 0; i < op->GetPointCount(); ++i)
    {
      const Float32* const color = tag->GetHandleR().GetPoint(i);
      text += " (" + WriteNumber(color[0]) + " " + WriteNumber(color[1]) + " " + WriteNumber(color[2]) + " " +
              WriteNumber(color[3]) + ")";
    }
  }
  return text;
}

struct PoseCase
{
  const char* name;
  Attributes attributes;  // besides the positions
  Attributes target;
  const char* shape;
  const char* parameters;
};

// The mirror applies to the sum: z = 1 and a delta of 1 make -2. The polygon is (2, 1, 0).
const PoseCase kPoseCases[] = {
  {"Positions", {}, {{"POSITION", {0, 0, 1, 2, 0, 0, 0, 3, 0}}}, "(0 0 -2) (3 0 -1) (0 4 -1)", "1009=0 1001=1 1017=1"},
  {"NothingAtAll", {kNormals, kUvs, kColors}, {}, "(0 0 -1) (1 0 -1) (0 1 -1)", "1009=0 1001=1"},
  {"NormalsAlone",
   {kNormals},
   {{"NORMAL", {0, 1, 0, 0, 2, 0, 0, 0, 2}}},
   "(0 0 -1) (1 0 -1) (0 1 -1) normals (0 0 -3) (0 2 -1) (0 1 -1)",
   "1009=0 1001=1 1053=1"},
  {"Uvs",
   {kUvs},
   {{"TEXCOORD_0", {0.5, 0, 0.25, 0, 0, 0.125}, "VEC2"}},
   "(0 0 -1) (1 0 -1) (0 1 -1) uvs (0 1.125 1) (1.25 0 1) (0.5 0 1)",
   "1009=0 1001=1 1023=1"},
  // Colours are mixed without a switch of their own.
  {"Colors",
   {{"COLOR_0", {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0.5}, "VEC4"}},
   {{"COLOR_0", {0, 0, 0, -0.5, 0, 0, 0, 0, 0, 0, 0, 0.25}, "VEC4"}},
   "(0 0 -1) (1 0 -1) (0 1 -1) colors (1 0 0 0.5) (0 1 0 1) (0 0 1 0.75)",
   "1009=0 1001=1"},
};

class Poses : public MorphTargets, public testing::WithParamInterface<PoseCase>
{};

TEST_P(Poses, AreBaseAndTargetTogether)
{
  const PoseCase& row = GetParam();
  EXPECT_EQ(LoadPrimitives([&](GltfJson& file) { return MakePrimitive(file, row.attributes, {row.target}); }), "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[Poses[Target 0#!]]]");
  EXPECT_EQ(WriteShape(Mesh("Target 0")), row.shape);
  ASSERT_TRUE(Mesh("Target 0"));
  EXPECT_EQ(Mesh("Target 0")->GetPolygons().GetR()[0], (HostPolygon{2, 1, 0, 0}));
  EXPECT_EQ(WriteParameters(), row.parameters);
}

INSTANTIATE_TEST_SUITE_P(Rows, Poses, testing::ValuesIn(kPoseCases), RowName());

TEST_F(MorphTargets, StandInTheTagBehindTheBase)
{
  EXPECT_EQ(LoadTwoTargets(), "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[Poses[Target 0#!, Target 1#!]]]");
  ASSERT_TRUE(Tag());
  ASSERT_EQ(Tag()->GetMorphCount(), 3);
  EXPECT_EQ(Tag()->GetMorph(0)->GetName().GetView(), "Default");
  ASSERT_TRUE(Tag()->GetMorph(0)->GetPointNode());
  EXPECT_EQ(Tag()->GetMorph(0)->GetPointNode()->GetPoints().GetR()[1], (Vector{1, 0, -1}));
  for (Int32 i = 1; i < 3; ++i)
  {
    const std::string name = "Target " + std::to_string(i - 1);
    EXPECT_EQ(Tag()->GetMorph(i)->GetName().GetView(), name);
    EXPECT_EQ(Tag()->GetMorph(i)->GetObject(), Find(name));
  }
  EXPECT_EQ(WriteStrengths(), "0 0 0");
  EXPECT_EQ(Host().Scene().GetLayerRoot().GetLayerCount(), 1);
}

TEST_F(MorphTargets, WithoutTheMirrorTheSumStaysAndLengthsScaleIt)
{
  Host().Set(1012, false);
  Host().Set(1002, HostUnitScale{2, 3});
  EXPECT_EQ(LoadTwoTargets(), "none");
  EXPECT_EQ(WriteShape(Mesh("Target 0")), "(0 0 4) (2 0 4) (0 2 4)");
  EXPECT_EQ(Mesh("Target 0")->GetPolygons().GetR()[0], (HostPolygon{0, 1, 2, 2}));
}

TEST_F(MorphTargets, FirstPrimitiveAloneDecides)
{
  EXPECT_EQ(LoadPrimitives([](GltfJson& file)
                           { return MakePrimitive(file, {}, {}) + "," + MakePrimitive(file, {}, {{kOneUp}}); }),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A#]");
}

// The second primitive has no normals to move, so its polygon keeps the tag's zeros.
TEST_F(MorphTargets, PrimitivesFollowEachOtherInAPose)
{
  EXPECT_EQ(
    LoadPrimitives([](GltfJson& file)
                   { return MakePrimitive(file, {kNormals}, {{kOneUp, kNormals}}) + "," + MakePrimitive(file, {}, {{}}); }),
    "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[Poses[Target 0#!]]]");
  HeadlessPolygonObject* const pose = Mesh("Target 0");
  ASSERT_TRUE(pose);
  EXPECT_EQ(WriteShape(pose), "(0 1 -1) (1 1 -1) (0 2 -1) (0 0 -1) (1 0 -1) (0 1 -1) normals (0 0 -2) (0 0 -2) (0 0 -2)");
  EXPECT_EQ(pose->GetPolygons().GetR()[1], (HostPolygon{5, 4, 3, 3}));
  EXPECT_EQ(static_cast<const HeadlessCornerTag*>(pose->FindTag(kNormalTagType))->GetHandleR().Get(1).a, Vector());
}

TEST_F(MorphTargets, SplitPrimitivesHaveATagEach)
{
  Host().Set(1018, true);
  EXPECT_EQ(LoadPrimitives([](GltfJson& file)
                           { return MakePrimitive(file, {}, {{kOneUp}}) + "," + MakePrimitive(file, {}, {{kOneBack}}); },
                           R"(,"weights":[0.25])"),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A[Prim 1#[Poses[Target 0#!]], Prim 0#[Poses[Target 0#!]]]]");
  for (const char* name : {"Prim 0", "Prim 1"})
  {
    ASSERT_TRUE(Tag(name));
    EXPECT_EQ(Tag(name)->GetMorphCount(), 2);
    EXPECT_EQ(Tag(name)->GetMorph(1)->GetStrength(), 0.25);
  }
}

struct RefusedCase
{
  const char* name;
  std::function<std::string(GltfJson&)> makePrimitives;
  std::vector<const char*> conditions;
};

const char* const kTargetCounts = "targetCreator._targetMeshCreators.GetCount() == GetTargetsCount()";
const char* const kRange = "(idx >= 0 && idx < _count)";

const RefusedCase kRefusedCases[] = {
  {"FewerTargetsInTheSecond",
   [](GltfJson& file) { return MakePrimitive(file, {}, {{kOneUp}, {kOneUp}}) + "," + MakePrimitive(file, {}, {{kOneUp}}); },
   {kTargetCounts}},
  {"FewerPositionsThanTheBase",
   [](GltfJson& file) { return MakePrimitive(file, {}, {{{"POSITION", {0, 0, 1, 0, 0, 1}}}}); },
   {"AddMeshPositions(poseMeshCreator, _primAccessors, targetAccForPointsPointer, vertexCount, flipZMultiplier, "
    "options.GetScale())",
    kRange}},
  {"FewerNormalsThanTheBase",
   [](GltfJson& file) { return MakePrimitive(file, {kNormals}, {{{"NORMAL", {0, 0, 1, 0, 0, 1}}}}); },
   {"AddMeshNormals(poseMeshCreator, _primAccessors, &targetAccessors, polyCount, flipZMultiplier)", kRange}},
  {"NormalsOfTwo",
   [](GltfJson& file) { return MakePrimitive(file, {kNormals}, {{{"NORMAL", {0, 0, 1, 0, 0, 1}, "VEC2"}}}); },
   {"AddMeshNormals(poseMeshCreator, _primAccessors, &targetAccessors, polyCount, flipZMultiplier)"}},
  {"ColorsOfAnotherSet",
   [](GltfJson& file) { return MakePrimitive(file, {kColors}, {{{"COLOR_1", kColors.values}}}); },
   {"AddMeshVertexColors(poseMeshCreator, _primAccessors, &targetAccessors, vertexCount)", "deltaAccessor"}},
  {"UvsOfAnotherSet",
   [](GltfJson& file) { return MakePrimitive(file, {kUvs}, {{{"TEXCOORD_1", kUvs.values, "VEC2"}}}); },
   {"AddMeshUVs(poseMeshCreator, _primAccessors, &targetAccessors, polyCount)", "deltaAccessor"}},
};

class RefusedTargets : public MorphTargets, public testing::WithParamInterface<RefusedCase>
{};

TEST_P(RefusedTargets, LeaveTheNodeOut)
{
  EXPECT_EQ(LoadPrimitives(GetParam().makePrimitives), "none");
  EXPECT_EQ(Outline(), "Scene 0");
  EXPECT_EQ(FailedNodes(), std::vector<int>{0});
  for (const char* condition : GetParam().conditions)
    EXPECT_TRUE(WasSaid(Condition(condition))) << condition;
}

INSTANTIATE_TEST_SUITE_P(Rows, RefusedTargets, testing::ValuesIn(kRefusedCases), RowName());

// Counts updates, and fails what it is told to.
class FaultyMorphs final : public HostPoseMorphTable
{
public:
  explicit FaultyMorphs(HostPoseMorphTable* base) noexcept : _base(base) {}
  Int32 GetMorphCount(const HostPoseMorphTag* tag) noexcept override { return _base->GetMorphCount(tag); }
  HostMorph* GetMorph(const HostPoseMorphTag* tag, Int32 index) noexcept override { return _base->GetMorph(tag, index); }
  HostMorph* AddMorph(HostPoseMorphTag* tag) noexcept override { return _base->AddMorph(tag); }
  String GetMorphName(const HostMorph* morph) noexcept override { return _base->GetMorphName(morph); }
  Bool SetMorphName(HostMorph* morph, const String& name) noexcept override { return _base->SetMorphName(morph, name); }
  Bool StoreObject(HostPoseMorphTag* tag, HostMorph* morph, HostDocument* document, HostObject* object) noexcept override
  {
    return stores++ != failingStore && _base->StoreObject(tag, morph, document, object);
  }
  HostObject* GetObject(const HostMorph* morph) noexcept override { return _base->GetObject(morph); }
  HostPointNode* GetPointNode(const HostMorph* morph) noexcept override { return _base->GetPointNode(morph); }
  Int32 GetPointCount(const HostPointNode* node) noexcept override { return _base->GetPointCount(node); }
  const Vector* GetPoints(const HostPointNode* node) noexcept override { return _base->GetPoints(node); }
  Float GetStrength(const HostMorph* morph) noexcept override { return _base->GetStrength(morph); }
  HostDescId GetStrengthId(const HostPoseMorphTag* tag, Int32 index) noexcept override
  {
    return _base->GetStrengthId(tag, index);
  }
  void EnterEdit(HostPoseMorphTag* tag, HostDocument* document) noexcept override { _base->EnterEdit(tag, document); }
  Bool ExitEdit(HostPoseMorphTag* tag, HostDocument* document, Bool apply) noexcept override
  {
    return _base->ExitEdit(tag, document, apply) && apply && !failsToExit;
  }
  void Update(HostPoseMorphTag*, HostDocument*) noexcept override { ++updates; }

  Bool failsToExit = false;
  int failingStore = -1;  // counted from 0
  int stores = 0;
  int updates = 0;

private:
  HostPoseMorphTable* _base;
};

class MorphTag : public MorphTargets
{
protected:
  MorphTag() : _morphs(Host().Host().GetTables().poseMorph) { Host().Host().GetTables().poseMorph = &_morphs; }
  FaultyMorphs _morphs;
};

TEST_F(MorphTag, IsToldToUpdateOnceItsStrengthsMoveTheMesh)
{
  EXPECT_EQ(LoadTwoTargets(R"(,"weights":[0.5,1])"), "none");
  EXPECT_EQ(_morphs.updates, 1);
  EXPECT_EQ(WriteStrengths(), "0 0.5 1");
  ASSERT_TRUE(ApplyPoseMorphs(*Mesh()));
  EXPECT_EQ(WriteShape(Mesh()), "(0 1 -1.5) (1 1 -1.5) (0 2 -1.5)");
}

// More weights than targets pass when the file is read.
TEST_F(MorphTag, IsNotUpdatedWithTooManyWeightsOrAfterAFailure)
{
  for (const int failingStore : {-1, 2})
  {
    _morphs.stores = 0;
    _morphs.failingStore = failingStore;
    EXPECT_EQ(LoadTwoTargets(failingStore < 0 ? R"(,"weights":[0.5,1,1])" : R"(,"weights":[0.5,1])"), "none");
    EXPECT_EQ(WriteStrengths(), "0 0 0");
    EXPECT_EQ(_morphs.updates, 0);
    EXPECT_EQ(FailedNodes(), std::vector<int>());
  }
}

TEST_F(MorphTag, ThatCannotBeEditedFailsTheNode)
{
  _morphs.failsToExit = true;
  EXPECT_EQ(LoadTwoTargets(), "none");
  EXPECT_EQ(FailedNodes(), std::vector<int>{0});
  EXPECT_TRUE(WasSaid(Condition("_poseMorphTag->ExitEdit(doc, true)")));
}

}  // namespace
}  // namespace q7z::test
