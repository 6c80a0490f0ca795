// The weights of skinned meshes: which point gets which joint's weight, which files are refused, and what the host makes of a
// bound skin.

#include "host/modeling/deformation.h"
#include "host/scene/headlessweighttag.h"
#include "tests/deform/deformfixture.h"

namespace q7z::test
{
namespace
{

/// Four joints and four weights for each vertex.
struct WeightSet
{
  Numbers joints;
  Numbers weights;
  int jointType = 5121;
  int weightType = 5126;
  const char* more = "";  // of the weights
  std::string type = "VEC4";
};

/// A primitive of one triangle; the first set's attributes are numbered 0, the second's 1.
std::string MakePrimitive(GltfJson& file, const std::vector<WeightSet>& sets, const std::string& more = "")
{
  std::string attributes = R"("POSITION":)" + std::to_string(file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3"));
  for (size_t i = 0; i < sets.size(); ++i)
  {
    const int joints = file.Numbers(sets[i].joints, sets[i].jointType, sets[i].type);
    const int weights = file.Numbers(sets[i].weights, sets[i].weightType, "VEC4", sets[i].more);
    attributes += ",\"JOINTS_" + std::to_string(i) + "\":" + std::to_string(joints);
    attributes += ",\"WEIGHTS_" + std::to_string(i) + "\":" + std::to_string(weights);
  }
  return R"({"attributes":{)" + attributes + more + "}}";
}

/// Three joints J, K and L beside the skinned mesh A.
const std::string kMembers = R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1,2,3]}],
  "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J","children":[2]},{"name":"K","children":[3]},{"name":"L"}])";

class SkinWeights : public DeformTest
{
protected:
  std::string LoadPrimitives(const std::function<std::string(GltfJson&)>& makePrimitives, const std::string& members = kMembers)
  {
    GltfJson file;
    file.Add("meshes", R"({"primitives":[)" + makePrimitives(file) + "]}");
    return Load(members, file);
  }

  HeadlessWeightTag* Tag()
  {
    HeadlessObject* const op = Find("A");
    return op ? static_cast<HeadlessWeightTag*>(op->FindTag(kWeightTagType)) : nullptr;
  }

  /// The weights that were set, by joint: "0: p0 1, p1 0.5; 2: p1 0.5".
  std::string WriteWeights()
  {
    std::string text;
    for (Int32 j = 0; Tag() && j < Tag()->GetJointCount(); ++j)
    {
      if (Tag()->GetWeights(j).IsPopulated())
        text += (text.empty() ? "" : "; ") + std::to_string(j) + ":";
      for (const PointWeight& entry : Tag()->GetWeights(j))
        text += (text.back() == ':' ? " p" : ", p") + std::to_string(entry.point) + " " + WriteNumber(entry.weight);
    }
    return text;
  }
};

struct WeightCase
{
  const char* name;
  std::vector<WeightSet> sets;
  const char* weights;
};

constexpr const char* kNormalized = R"("normalized":true)";
const Numbers kWholeWeights = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

const WeightCase kWeightCases[] = {
  {"OneSet",
   {{{0, 1, 0, 0, 1, 2, 0, 0, 2, 0, 0, 0}, {0.75, 0.25, 0, 0, 0.5, 0.5, 0, 0, 1, 0, 0, 0}}},
   "0: p0 0.75; 1: p0 0.25, p1 0.5; 2: p1 0.5, p2 1"},
  {"NormalisedBytes",
   {{{0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {204, 51, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0}, 5121, 5121, kNormalized}},
   "0: p0 0.8, p1 1, p2 1; 1: p0 0.2"},
  {"NormalisedShorts",
   {{{0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {13107, 52428, 0, 0, 65535, 0, 0, 0, 65535, 0, 0, 0}, 5123, 5123, kNormalized}},
   "0: p0 0.2, p1 1, p2 1; 1: p0 0.8"},
  {"LaterOfTwoSetsReplaces",
   {{{0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0.5, 0.25, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}},
    {{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0.25, 0, 0, 0, 0.125, 0, 0, 0, 0, 0, 0, 0}}},
   "0: p0 0.5, p1 0.125, p2 1; 1: p0 0.25; 2: p0 0.25"},
  {"LaterComponentReplaces",
   {{{1, 1, 2, 2, 0, 0, 0, 0, 0, 0, 0, 0}, {0.5, 0.25, 0.0625, 0.125, 1, 0, 0, 0, 1, 0, 0, 0}}},
   "0: p1 1, p2 1; 1: p0 0.25; 2: p0 0.125"},
  // What has no weight need not name a joint of the skin.
  {"PaddingJoints",
   {{{0, 250, 99, 3, 1, 7, 7, 7, 2, 8, 8, 8}, {1, 0, 9e-11f, -0.5, 1, 0, 0, 0, 1, 0, 0, 0}}},
   "0: p0 1; 1: p1 1; 2: p2 1"},
  {"JointsOfThreeAreSkipped", {{{0, 0, 0, 1, 1, 1, 2, 2, 2}, kWholeWeights, 5121, 5126, "", "VEC3"}}, ""},
  {"SignedWeightsAreSkipped", {{kWholeWeights, kWholeWeights, 5121, 5120, kNormalized}}, ""},
  {"SkippedSetLeavesTheOther",
   {{kWholeWeights, kWholeWeights, 5126}, {{2, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0}, kWholeWeights}},
   "2: p0 1, p1 1, p2 1"},
};

class SkinWeightRows : public SkinWeights, public testing::WithParamInterface<WeightCase>
{};

TEST_P(SkinWeightRows, ReachTheTag)
{
  EXPECT_EQ(LoadPrimitives([](GltfJson& file) { return MakePrimitive(file, GetParam().sets); }), "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[~], J^[K^[L^]]]");
  ASSERT_TRUE(Tag());
  EXPECT_EQ(Tag()->GetJointCount(), 3);
  EXPECT_EQ(WriteWeights(), GetParam().weights);
}

INSTANTIATE_TEST_SUITE_P(Rows, SkinWeightRows, testing::ValuesIn(kWeightCases), RowName());

const WeightSet kAllOnFirst = {Numbers(12, 0), kWholeWeights};

TEST_F(SkinWeights, SecondPrimitiveBeginsBehindTheFirst)
{
  Host().Set(1018, true);  // split, which a skinned mesh is not
  const WeightSet onLast = {{2, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0}, kWholeWeights};
  EXPECT_EQ(LoadPrimitives([&](GltfJson& file)
                           { return MakePrimitive(file, {kAllOnFirst}) + "," + MakePrimitive(file, {onLast}); }),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[~], J^[K^[L^]]]");
  EXPECT_EQ(WriteWeights(), "0: p0 1, p1 1, p2 1; 2: p3 1, p4 1, p5 1");
}

// The joint of a node that is not there stands nowhere and goes with the load; its weights stay in the tag.
TEST_F(SkinWeights, JointsStandInTheSkinsOrder)
{
  const std::string members = R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[2,1,2,77]}],
    "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J","children":[2]},{"name":"K"}])";
  const WeightSet onEach = {{0, 3, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0}, {0.5, 0.5, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}};
  EXPECT_EQ(LoadPrimitives([&](GltfJson& file) { return MakePrimitive(file, {onEach}); }, members), "none");
  ASSERT_EQ(Tag()->GetJointCount(), 4);
  EXPECT_EQ(Tag()->GetJoint(0), Find("K"));
  EXPECT_EQ(Tag()->GetJoint(1), Find("J"));
  EXPECT_EQ(Tag()->GetJoint(2), Find("K"));
  EXPECT_EQ(Tag()->GetJoint(3), nullptr);
  EXPECT_EQ(WriteWeights(), "0: p0 0.5; 1: p1 1; 2: p2 1; 3: p0 0.5");
}

struct RefusedWeights
{
  const char* name;
  std::function<std::string(GltfJson&)> makePrimitives;
  const char* condition;
  std::string members = kMembers;
};

/// A primitive whose attributes besides the positions are given.
std::string MakeWith(GltfJson& file, const std::vector<std::string>& attributes)
{
  std::string more;
  for (const std::string& attribute : attributes)
    more += ",\"" + attribute + "\":" + std::to_string(file.Numbers(kWholeWeights, attribute[0] == 'J' ? 5121 : 5126, "VEC4"));
  return MakePrimitive(file, {}, more);
}

const RefusedWeights kRefusedWeights[] = {
  {"PrimitiveWithoutJoints", [](GltfJson& file) { return MakePrimitive(file, {kAllOnFirst}) + "," + MakePrimitive(file, {}); },
   "baseAccessors._skinJointsAccessors.IsPopulated()"},
  {"MoreJointsThanWeights", [](GltfJson& file) { return MakeWith(file, {"JOINTS_0", "JOINTS_1", "WEIGHTS_0"}); },
   "baseAccessors._skinJointsAccessors.GetCount() == baseAccessors._skinWeightsAccessors.GetCount()"},
  {"WeightsOfAnotherSet", [](GltfJson& file) { return MakeWith(file, {"JOINTS_0", "WEIGHTS_1"}); }, "weightsAccessorEntry"},
  {"JointBeyondTheSkin", [](GltfJson& file)
   { return MakePrimitive(file, {{{0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0}, Numbers(12, 0.5f)}}); }, "q7zJointIdxEntry"},
  {"FewerJointsThanVertices", [](GltfJson& file) { return MakePrimitive(file, {{Numbers(8, 0), kWholeWeights}}); },
   "(idx >= 0 && idx < _count)"},
  {"SkinWithoutJoints", [](GltfJson& file) { return MakePrimitive(file, {kAllOnFirst}); }, "skinCreator.IsValid()",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])"},
};

class RefusedSkins : public SkinWeights, public testing::WithParamInterface<RefusedWeights>
{};

TEST_P(RefusedSkins, LeaveTheNodeOut)
{
  EXPECT_EQ(LoadPrimitives(GetParam().makePrimitives, GetParam().members), "none");
  EXPECT_EQ(FailedNodes(), std::vector<int>{0});
  EXPECT_FALSE(Find("A"));
  EXPECT_TRUE(WasSaid(Condition("AddMeshSkinJointWeights(meshCreator, *skinCreator, _primAccessors, vertexCount, skinPtr)")));
  EXPECT_TRUE(WasSaid(Condition(GetParam().condition)));
}

INSTANTIATE_TEST_SUITE_P(Rows, RefusedSkins, testing::ValuesIn(kRefusedWeights), RowName());

// What the points become by the format's own rule: joint * inverse bind matrix * point, whatever the mesh's node does.
TEST_F(SkinWeights, BoundSkinDeformsAsTheFormatSays)
{
  // J at (5, 0, 0), turned by a quarter about Z; its inverse bind matrix moves by (0, -2, 3). K below it stands at (0, 1, 0) of J,
  // bound at the origin.
  const std::string members = R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1,2],"inverseBindMatrices":0}],
    "nodes":[{"name":"A","mesh":0,"skin":0,"translation":[7,7,7]},{"name":"J","translation":[5,0,0],
    "rotation":[0,0,0.7071067811865476,0.7071067811865476],"children":[2]},{"name":"K","translation":[0,1,0]}])";
  GltfJson file;
  file.Floats({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -2, 3, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "MAT4");
  const WeightSet set = {{0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0}, {1, 0, 0, 0, 1, 0, 0, 0, 0.5, 0.5, 0, 0}};
  file.Add("meshes", R"({"primitives":[)" + MakePrimitive(file, {set}) + "]}");
  ASSERT_EQ(Load(members, file), "none");
  HeadlessPolygonObject& mesh = *Find("A")->AsPolygonObject();
  GlobalMatrices globals;
  ASSERT_TRUE(ApplySkin(*Tag(), globals, mesh));
  // Vertex 0 at the origin: moved to (0, -2, 3), turned to (2, 0, 3), put to (7, 0, 3). Vertex 1 at (1, 0, 0): K is at (4, 0, 0) and
  // turns it to (0, 1, 0). Vertex 2 at (0, 1, 0): halfway between J's (5, 0, 0) + (1, 0, 3) and K's (4, 0, 0) + (-1, 0, 0).
  const Vector expected[] = {{7, 0, -3}, {4, 1, 0}, {4.5, 0, -1.5}};
  for (int i = 0; i < 3; ++i)
  {
    const Vector point = mesh.GetGlobalMatrix() * mesh.GetPoints().GetR()[i];
    EXPECT_LT((point - expected[i]).GetLength(), 1e-9) << i << ": " << point.x << " " << point.y << " " << point.z;
  }
}

}  // namespace
}  // namespace q7z::test
