// Tags and polygon data: lists, bulk arrays, selections, weights, morphs, phong, neighbours.

#include <atomic>
#include <thread>

#include <gmock/gmock.h>

#include "host/scene/headlesstag.h"
#include "host/scene/headlessweighttag.h"
#include "tests/host/scenefixture.h"

namespace q7z::test
{
namespace
{

class SceneTag : public SceneTest
{};

TEST_F(SceneTag, CornersKeepTheirPrecisionUntilMoreIsAsked)
{
  HostOwner<HostNormalTag> tag(static_cast<HostNormalTag*>(HostTag::Alloc(kNormalTagType, 2)));
  HostCornerHandle handle = tag->GetHandleW();
  ASSERT_NE(handle.singles, nullptr);
  EXPECT_EQ(handle.Get(1).d, Vector()) << "starts as zeros";
  handle.Set(1, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {0.1, 11, 12}});
  EXPECT_EQ(tag->GetHandleR().singles[12 + 9], 0.1f);

  handle = tag->GetHandleW(true);
  ASSERT_NE(handle.doubles, nullptr);
  EXPECT_EQ(handle.Get(1).c, (Vector{7, 8, 9}));
  EXPECT_EQ(handle.Get(1).d.x, static_cast<Float>(0.1f)) << "what was lost stays lost";
  handle.Set(0, {{0.1, 0, 0}, {}, {}, {}});
  // Nobody who asks for less takes it back.
  EXPECT_EQ(tag->GetHandleW(false).Get(0).a.x, 0.1);
}

TEST_F(SceneTag, ColorsStartOpaqueAndPerPoint)
{
  HostPolygonObject* const mesh = AddMesh({{}, {}, {}}, {{}, {}});
  auto* const tag = static_cast<HostVertexColorTag*>(mesh->MakeTag(kVertexColorTagType, 3));
  EXPECT_EQ(tag->GetHandleW().GetPoint(2)[3], 1);
  tag->GetHandleW().SetPoint(2, {0.25f, 0.5f, 0.75f});
  EXPECT_TRUE(tag->SetPerPoint(true));
  EXPECT_EQ(tag->GetHandleR().GetPoint(2)[2], 0.75f) << "staying changes nothing";
  EXPECT_TRUE(tag->SetPerPoint(false));
  EXPECT_EQ(tag->GetHandleR().count, 2) << "polygons";
  EXPECT_EQ(tag->GetHandleR().GetCorner(1, 3)[3], 1);
}

const std::tuple<const char*, std::vector<SelectionRange>, std::vector<SelectionRange>, Int32> kSelections[] = {
  {"NextToEachOtherFromBehindJoin", {{2, 3}, {0, 1}}, {{0, 3}}, 4},
  {"InsideChangesNothing", {{0, 9}, {3, 4}}, {{0, 9}}, 10},
  {"CoversAll", {{2, 3}, {6, 7}, {0, 9}}, {{0, 9}}, 10},
  {"BridgesTwoOfFour", {{0, 0}, {2, 2}, {4, 4}, {6, 6}, {3, 3}}, {{0, 0}, {2, 4}, {6, 6}}, 5},
  {"UpToTheTop", {{INT32_MAX, INT32_MAX}, {INT32_MAX - 1, INT32_MAX - 1}}, {{INT32_MAX - 1, INT32_MAX}}, 2},
  {"AllThereIs", {{0, INT32_MAX}, {5, 6}}, {{0, INT32_MAX}}, INT32_MAX},
};

TEST_F(SceneTag, SelectionKeepsRangesApart)
{
  for (const auto& [name, added, expected, count] : kSelections)
  {
    SCOPED_TRACE(name);
    HeadlessSelection selection;
    for (const SelectionRange& range : added)
      EXPECT_TRUE(selection.SelectRange(range.first, range.last));
    EXPECT_FALSE(selection.SelectRange(-3, -1));
    EXPECT_FALSE(selection.SelectRange(-1, 3));
    EXPECT_FALSE(selection.SelectRange(4, 3));
    HeadlessSelection copy;
    EXPECT_TRUE(copy.SelectRange(100, 200));
    EXPECT_TRUE(copy.CopyFrom(selection));
    const BaseArray<SelectionRange>& ranges = copy.GetRanges();
    EXPECT_EQ(std::vector<SelectionRange>(ranges.begin(), ranges.end()), expected);
    EXPECT_EQ(selection.GetCount(), count);
    for (const auto& [first, last] : expected)
    {
      EXPECT_TRUE(selection.IsSelected(first) && selection.IsSelected(last));
      EXPECT_FALSE(selection.IsSelected(first - 1) || (last < INT32_MAX && selection.IsSelected(last + 1)));
    }
  }
}

TEST_F(SceneTag, WeightsAreFoundInAnyOrderOfSetting)
{
  HostPolygonObject* const mesh = AddMesh({{}, {}, {}, {}, {}, {}, {}, {}}, {});
  auto* const tag = static_cast<HostWeightTag*>(mesh->MakeTag(kWeightTagType));
  HostObject* const joint = Add("joint", nullptr, kJointObjectType);
  EXPECT_EQ(tag->AddJoint(joint), 0);
  EXPECT_EQ(tag->AddJoint(joint), 1) << "twice is twice";
  EXPECT_EQ(tag->AddJoint(nullptr), -1);
  for (const Int32 point : {2, 5, 1, 7, 0})
    EXPECT_TRUE(tag->SetWeight(1, point, 0.1 * point));
  EXPECT_TRUE(tag->SetWeight(1, 5, 0.9)) << "the later one counts";
  EXPECT_FALSE(tag->SetWeight(1, 8, 1));
  EXPECT_FALSE(tag->SetWeight(1, -1, 1));
  EXPECT_FALSE(tag->SetWeight(2, 0, 1));
  EXPECT_EQ(tag->GetWeight(1, 5), 0.9);
  EXPECT_EQ(tag->GetWeight(0, 5), 0);
  Float weights[3] = {9, 9, 9};
  tag->GetWeights(1, 4, 3, weights);
  EXPECT_THAT(weights, testing::ElementsAre(0, 0.9, 0));
  tag->GetWeights(1, 1, 2, weights);
  EXPECT_THAT(weights, testing::ElementsAre(0.1, 0.2, 0)) << "only two were asked for";
  tag->GetWeights(2, 0, 3, weights);
  EXPECT_THAT(weights, testing::ElementsAre(0, 0, 0)) << "no such joint";

  const BaseArray<PointWeight>& sorted = ToHeadless(tag)->GetWeights(1);
  const std::vector<PointWeight> expected = {{0, 0}, {1, 0.1}, {2, 0.2}, {5, 0.9}, {7, 0.7000000000000001}};
  EXPECT_EQ(std::vector<PointWeight>(sorted.begin(), sorted.end()), expected);
  EXPECT_TRUE(tag->SetWeight(1, 2, 0.5)) << "still open to change";
  EXPECT_EQ(tag->GetWeight(1, 2), 0.5);
}

TEST_F(SceneTag, WeightsMayBeReadFromSeveralThreads)
{
  constexpr Int32 kCount = 20000;
  HostOwner<HostWeightTag> tag(static_cast<HostWeightTag*>(HostTag::Alloc(kWeightTagType)));
  tag->AddJoint(Add("joint"));
  EXPECT_FALSE(tag->SetBindPose(Document())) << "on no object";
  for (const Int32 step : {7, 2, 1})  // each point three times, falling; the last one counts
    for (Int32 i = kCount; i-- > 0;)
      ASSERT_TRUE(tag->SetWeight(0, i, step * i));
  std::atomic<Int32> wrong{0};
  const auto read = [&]
  {
    for (Int32 i = 0; i < kCount; ++i)
      wrong += tag->GetWeight(0, i) == i ? 0 : 1;
  };
  std::thread other(read);
  read();
  other.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(SceneTag, MorphsRefuseWhatHasNoPoints)
{
  HostPolygonObject* const mesh = AddMesh({{}}, {});
  auto* const tag = static_cast<HostPoseMorphTag*>(mesh->MakeTag(kPoseMorphTagType));
  HostMorph* const morph = tag->AddMorph();
  EXPECT_FALSE(tag->StoreObject(morph, Document(), Add("null")));
  EXPECT_FALSE(tag->StoreObject(morph, Document(), nullptr));
  EXPECT_TRUE(tag->StoreObject(morph, Document(), mesh->Clone())) << "frees the clone";
  mesh->GetPointsW()[0] = {3, 3, 3};
  EXPECT_EQ(morph->GetPointNode()->GetPoints()[0], Vector());
  EXPECT_EQ(tag->GetMorph(1), nullptr);
  EXPECT_EQ(tag->GetMorph(-1), nullptr);
  EXPECT_FALSE(tag->SetParameter(HostPoseMorphTagGetStrengthId(tag, 0), HostValue("much"_s)));
}

// Neighbours and phong normals.

TEST_F(SceneTag, NeighboursRiseAndLeaveOutBrokenIndices)
{
  const HostPolygon polygons[] = {{0, 1, 2, 2}, {2, 1, 3, 3}, {-1, 4, 1, 2147483647}, {1, 1, 1, 1}};
  HostNeighbor* const neighbor = HostNeighbor::Alloc(4, polygons, 4);
  ASSERT_NE(neighbor, nullptr);
  const auto around = [&](Int32 point)
  {
    const Int32* first = nullptr;
    const Int32 count = neighbor->GetPointPolygons(point, &first);
    return std::vector<Int32>(first, first + count);
  };
  EXPECT_EQ(around(0), (std::vector<Int32>{0}));
  EXPECT_EQ(around(1), (std::vector<Int32>{0, 1, 2, 3}));
  EXPECT_EQ(around(3), (std::vector<Int32>{1}));
  EXPECT_EQ(around(4), (std::vector<Int32>{}));
  EXPECT_EQ(around(-1), (std::vector<Int32>{}));
  HostNeighbor::Free(neighbor);
  EXPECT_EQ(HostNeighbor::Alloc(-1, polygons, 1), nullptr);
}

class ScenePhong : public SceneTest
{
protected:
  HostCorners Normals(HostPolygonObject* mesh, Int polygon)
  {
    Float numbers[24] = {};
    HostCornerHandle target;
    target.doubles = numbers;
    target.polygonCount = 2;
    EXPECT_TRUE(_tables.phong->ComputeNormals(mesh, target));
    return target.Get(polygon);
  }
  static void ExpectNear(const Vector& actual, const Vector& expected)
  {
    for (int i = 0; i < 3; ++i)
      EXPECT_NEAR(actual[i], expected[i], 1e-12) << i;
  }
};

// A floor in the XZ plane, one unit large, and a wall in the YZ plane of twice its area, which meet at a right angle along the
// points 0 and 1. The floor's normal is (0, 1, 0), the wall's (1, 0, 0).
TEST_F(ScenePhong, NormalsAreWeightedByAreaUpToTheAngle)
{
  HostPolygonObject* const mesh =
    AddMesh({{0, 0, 0}, {0, 0, 1}, {1, 0, 1}, {1, 0, 0}, {0, 2, 0}, {0, 2, 1}}, {{0, 1, 2, 3}, {1, 0, 4, 5}});
  ExpectNear(Normals(mesh, 1).b, {1, 0, 0});
  ASSERT_TRUE(mesh->SetPhong(false, false, 3));
  ExpectNear(Normals(mesh, 0).a, {0, 1, 0});

  ASSERT_TRUE(mesh->SetPhong(true, false, 0));
  const Vector mean{2 / std::sqrt(5.0), 1 / std::sqrt(5.0), 0};
  ExpectNear(Normals(mesh, 0).a, mean);
  ExpectNear(Normals(mesh, 1).a, mean);
  ExpectNear(Normals(mesh, 0).c, {0, 1, 0});

  ASSERT_TRUE(mesh->SetPhong(true, true, 1.57));
  ExpectNear(Normals(mesh, 0).a, {0, 1, 0});
  ASSERT_TRUE(mesh->SetPhong(true, true, 3.141592653589793 / 2));  // the limit is within it
  ExpectNear(Normals(mesh, 0).a, mean);
  EXPECT_EQ(mesh->GetTagCount(kPhongTagType), 1) << "one tag, set anew";

  Float numbers[12] = {};
  HostCornerHandle target;
  target.doubles = numbers;
  target.polygonCount = 1;
  EXPECT_FALSE(_tables.phong->ComputeNormals(mesh, target)) << "two polygons";
  EXPECT_FALSE(_tables.phong->ComputeNormals(ToPoly(Add("null")), target));
}

TEST_F(ScenePhong, BrokenPolygonsHarmNobody)
{
  HostPolygonObject* const mesh = AddMesh({{0, 0, 0}, {0, 0, 1}, {1, 0, 1}}, {{0, 1, 2, 2}, {0, 7, -3, 1}});
  ASSERT_TRUE(mesh->SetPhong(true, true, 1));
  ExpectNear(Normals(mesh, 0).d, {0, 1, 0});
  ExpectNear(Normals(mesh, 1).b, {0, 0, 0});
}

}  // namespace
}  // namespace q7z::test
