// Memory that runs out: every request of each operation fails once, and each time the operation says so and nothing is left over
// or half changed.

#include <atomic>

#include "host/scene/headlessalias.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "tests/host/scenefixture.h"
#include "tests/support/sweep.h"

namespace q7z::test
{
namespace
{

class SceneMemory : public SceneTest
{};

TEST_F(SceneMemory, NamesAndParametersStayAsTheyWere)
{
  HostObject* const object = Add("before");
  ASSERT_TRUE(object->SetParameter(5, HostValue("before"_s)));
  SweepUntilSuccess([&] { return object->SetName("after"_s); }, [&] { EXPECT_EQ(Text(object->GetName()), "before"); });
  SweepUntilSuccess([&] { return object->SetParameter(5, HostValue("after"_s)); },
                    [&]
                    {
                      HostValue value;
                      EXPECT_TRUE(object->GetParameter(5, value));
                      EXPECT_EQ(Text(value.GetString()), "before");
                    });
  HostObject* const target = Add("target");
  SweepUntilSuccess([&] { return object->SetParameter(6, HostValue::Link(target)); },
                    [&] { EXPECT_EQ(object->GetContainer()->Find(6), nullptr); });
  SweepUntilSuccess([&] { return object->GetContainer()->GetContainer(7, true) != nullptr; },
                    [&] { EXPECT_EQ(object->GetContainer()->GetContainer(7), nullptr); });
  SweepUntilSuccess([&] { return Document()->GetLayerRoot()->Add() != nullptr; },
                    [&] { EXPECT_EQ(Scene().GetLayerRoot().GetLayerCount(), 0); });
  HostTakeData* const takes = Document()->GetTakeData();
  HostTake* take = nullptr;
  SweepUntilSuccess([&] { return (take = takes->AddTake("t"_s)) != nullptr; },
                    [&] { EXPECT_EQ(Scene().GetTakeData().GetTakeCount(), 1); });
  SweepUntilSuccess([&] { return take->FindOrAddOverride(takes, object, HostDescId(1), HostValue(0.5)) != nullptr; });
  EXPECT_EQ(ToHeadless(take)->GetOverrideCount(), 1);
}

TEST_F(SceneMemory, BulkDataStaysAsItWas)
{
  HostPolygonObject* const mesh = AddMesh({{1, 1, 1}, {}}, {{}});
  HostOwner<HostPolygonObject> clone(ToPoly(mesh->Clone()));
  SweepUntilSuccess([&] { return clone->GetPointsW() != nullptr; }, [&] { EXPECT_EQ(clone->GetPointsR(), mesh->GetPointsR()); });
  EXPECT_NE(clone->GetPointsR(), mesh->GetPointsR());
  EXPECT_EQ(clone->GetPointsR()[0], (Vector{1, 1, 1}));
  clone->GetPolygonsW()[0].a = 7;
  EXPECT_EQ(mesh->GetPolygonsR()[0].a, 0);
  HostOwner<HostUvwTag> uvws(static_cast<HostUvwTag*>(HostTag::Alloc(kUvwTagType, 1)));
  SweepUntilSuccess([&] { return static_cast<Bool>(uvws->GetHandleW(true)); },
                    [&] { EXPECT_NE(uvws->GetHandleR().singles, nullptr); });
  EXPECT_NE(uvws->GetHandleR().doubles, nullptr);
  auto* const colors = static_cast<HostVertexColorTag*>(mesh->MakeTag(kVertexColorTagType, 2));
  SweepUntilSuccess([&] { return colors->SetPerPoint(false); },
                    [&] { EXPECT_TRUE(colors->IsPerPoint() && colors->GetHandleR().count == 2); });
  HostSelection* const selection = mesh->GetPolygonSelection();
  SweepUntilSuccess([&] { return selection->SelectRange(3, 5); }, [&] { EXPECT_EQ(selection->GetCount(), 0); });
}

TEST_F(SceneMemory, CurvesStayAsTheyWere)
{
  HostObject* const object = Add("a");
  HostTrack* track = nullptr;
  SweepUntilSuccess([&] { return (track = HostTrack::Alloc(object, HostDescId(903, 1000))) != nullptr; });
  ASSERT_NE(track, nullptr);
  track->InsertInto(object);
  SweepUntilSuccess([&] { return track->GetCurve(true) != nullptr; }, [&] { EXPECT_EQ(track->GetCurve(false), nullptr); });
  HostCurve* const curve = track->GetCurve(true);
  SweepUntilSuccess([&] { return curve->AddKey({0, 1}) != nullptr; }, [&] { EXPECT_EQ(curve->GetKeyCount(), 0); });
  curve->GetKey(0)->SetInterpolation(curve, InterpolationMode::Spline);
  curve->AddKey({1, 1});
  curve->GetKey(0)->SetRightTangent(curve, {1, 3}, 6);
  const Float middle = curve->GetValue({1, 2});
  // Fill the room that is there, so that every key asks for memory.
  curve->AddKey({2, 1});
  curve->AddKey({3, 1});
  SweepUntilSuccess([&] { return HostCurveAddKeyAdapted(curve, {1, 4}) != nullptr; },
                    [&]
                    {
                      EXPECT_EQ(curve->GetKeyCount(), 4);
                      EXPECT_EQ(curve->GetValue({1, 2}), middle);
                    });
  EXPECT_NEAR(curve->GetValue({1, 2}), middle, 1e-12);
  std::vector<HostTime> times;
  for (int i = 0; i < 30; ++i)
    times.push_back({10.0 + i, 1});
  const std::vector<Vector> values(times.size());
  SweepUntilSuccess([&] { return curve->AddKeysBehind(curve->GetKey(4), {times.data(), values.data(), 0, 30}) == 30; },
                    [&] { EXPECT_EQ(curve->GetKeyCount(), 5); });
}

TEST_F(SceneMemory, ClonesNeighboursAndPhongNormals)
{
  HostPolygonObject* const mesh = AddMesh({{}, {}, {}}, {{0, 1, 2, 2}});
  ASSERT_TRUE(mesh->SetPhong(true, false, 0));
  HostObject* const child = Add("child", mesh, kInstanceObjectType);
  child->SetReference(mesh);
  HostTrack::Alloc(child, HostDescId(903, 1000))->InsertInto(child);
  SweepUntilSuccess(
    [&]
    {
      HostAliasTrans* const trans = HostAliasTrans::Alloc();
      HostOwner<HostObject> copy(trans ? mesh->Clone(trans) : nullptr);
      HostAliasTrans::Free(trans);
      return copy != nullptr;
    });
  SweepUntilSuccess(
    [&]
    {
      HostNeighbor* const neighbor = HostNeighbor::Alloc(3, mesh->GetPolygonsR(), 1);
      HostNeighbor::Free(neighbor);
      return neighbor != nullptr;
    });
  Float numbers[12] = {};
  HostCornerHandle target;
  target.doubles = numbers;
  target.polygonCount = 1;
  SweepUntilSuccess([&] { return _tables.phong->ComputeNormals(mesh, target); });
}

// Big arrays pass operator new by.

std::atomic<Int> g_largestMapped{0};

TEST_F(SceneMemory, RefusedMappingIsAnsweredLikeAnyOther)
{
  constexpr Int32 kManyPoints = 1000000;  // 24 MB
  HostOwner<HostPolygonObject> mesh(HostPolygonObject::Alloc(kManyPoints, 0));
  ASSERT_TRUE(mesh);
  HostOwner<HostPolygonObject> clone(ToPoly(mesh->Clone()));
  SetMappedArrayGuard(
    [](Int byteCount) noexcept -> Bool
    {
      g_largestMapped = std::max<Int>(g_largestMapped, byteCount);
      return false;
    });
  EXPECT_TRUE(HostOwner<HostPolygonObject>(HostPolygonObject::Alloc(1000, 1000)));
  EXPECT_EQ(g_largestMapped, 0) << "small arrays are not mapped";
  EXPECT_EQ(HostPolygonObject::Alloc(kManyPoints, 0), nullptr);
  EXPECT_GE(g_largestMapped, Int(kManyPoints) * 24);
  EXPECT_EQ(HostPolygonObject::Alloc(0, kManyPoints), nullptr);
  EXPECT_EQ(HostTag::Alloc(kUvwTagType, kManyPoints), nullptr);
  EXPECT_EQ(HostTag::Alloc(kVertexColorTagType, kManyPoints), nullptr);
  EXPECT_EQ(clone->GetPointsW(), nullptr);
  EXPECT_EQ(clone->GetPointsR(), mesh->GetPointsR());
  SetMappedArrayGuard(nullptr);
  ASSERT_NE(clone->GetPointsW(), nullptr);
  clone->GetPointsW()[kManyPoints - 1].x = 9;
  EXPECT_EQ(mesh->GetPointsR()[kManyPoints - 1], Vector());
  HostArray<Vector> array;
  EXPECT_FALSE(array.Create(INT64_MAX / 24));
  EXPECT_FALSE(array.Create(INT64_MAX));
  EXPECT_FALSE(array.Create(-1));
}

}  // namespace
}  // namespace q7z::test
