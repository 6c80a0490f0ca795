// What a polygon object becomes in a file: indices, the interleaved vertices, their attributes, targets.

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/scene/headlesstag.h"
#include "tests/geometry/meshexportfixture.h"

namespace q7z::test
{

namespace
{

using testing::AllOf;
using testing::ElementsAre;
using testing::Each;
using testing::SizeIs;

const Float kInfinity = std::numeric_limits<Float>::infinity();
const Vector kUp = {0, 0, 1};
const HostCorners kUpCorners = {kUp, kUp, kUp, kUp};

/// Many points, all at 0, with a triangle of the first three.
std::vector<Vector> ManyPoints(size_t count)
{
  return std::vector<Vector>(count);
}

}  // namespace

TEST_F(MeshExport, BareTriangle)
{
  HostPolygonObject* const op = Make({{1, 2, 3}, {4, 5, 6}, {-1, 8, 9}}, {{0, 1, 2, 2}});
  op->SetName("tri"_s);
  const CollectedMesh mesh = Collect(op);
  ASSERT_EQ(mesh.error, "no error");
  EXPECT_EQ(Text(mesh.record.name), "tri");
  EXPECT_THAT(mesh.Indices(), ElementsAre(0, 1, 2));
  EXPECT_THAT(mesh.Positions(), ElementsAre(1, 2, 3, 4, 5, 6, -1, 8, 9));
  EXPECT_THAT(Min(mesh.record.positions), ElementsAre(-1, 2, 3));
  EXPECT_THAT(Max(mesh.record.positions), ElementsAre(4, 8, 9));
  EXPECT_THAT(Max(mesh.record.indices), ElementsAre(2));
  // Three 16-bit indices, two blanks, three positions.
  EXPECT_EQ(mesh.buffer.GetBytes().GetCount(), 8 + 36);
  EXPECT_EQ(mesh.buffer.GetBytes()[6], 32);
  EXPECT_EQ(mesh.buffer.GetBytes()[7], 32);
  EXPECT_EQ(mesh.record.vertexView.GetByteOffset(), 8);
  for (const MeshAccessor* const unused : {&mesh.record.normals, &mesh.record.uvs, &mesh.record.polygonColors,
                                           &mesh.record.vertexColors, &mesh.record.joints, &mesh.record.weights})
    EXPECT_FALSE(unused->isUsed);
}

TEST_F(MeshExport, BytesGoBehindThoseOfOtherMeshes)
{
  HostPolygonObject* const op = Make({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2, 2}});
  CollectedMesh mesh;
  ASSERT_EQ(ErrorText(mesh.buffer.AppendBytes("12345678", 8)), "no error");
  ASSERT_EQ(ErrorText(CollectMeshData(mesh.record, mesh.buffer, op, Document(), op->GetPointsR(), mesh.positions, _options,
                                      false)),
            "no error");
  EXPECT_EQ(mesh.record.indexView.GetByteOffset(), 8);
  EXPECT_EQ(mesh.record.indexView.GetByteLength(), 6);
  EXPECT_EQ(mesh.record.vertexView.GetByteOffset(), 16);
  EXPECT_THAT(mesh.Positions(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST_F(MeshExport, MirrorReversesTheListAndScalesLengths)
{
  _options.flipZ = true;
  _options.exportScale = 0.5;
  HostPolygonObject* const op = Make({{2, 0, 1}, {0, 4, 0}, {0, 0, -6}, {1, 1, 1}}, {{0, 1, 2, 2}, {2, 1, 3, 3}});
  AddNormals(op, {kUpCorners, kUpCorners});
  const CollectedMesh mesh = Collect(op);
  EXPECT_THAT(mesh.Indices(), ElementsAre(3, 1, 2, 2, 1, 0));
  EXPECT_THAT(mesh.Positions(), ElementsAre(1, 0, -0.5, 0, 2, 0, 0, 0, 3, 0.5, 0.5, -0.5));
  EXPECT_FALSE(std::signbit(mesh.Positions()[5])) << "0 became -0";
  EXPECT_THAT(mesh.Normals(), ElementsAre(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1));
}

struct IndexRow
{
  const char* name;
  size_t pointCount;
  Bool isSplit;
  UInt32 componentType;
  Int vertexOffset;
};

class IndexTypes : public MeshExport, public testing::WithParamInterface<IndexRow>
{};

TEST_P(IndexTypes, FollowTheNumberOfVertices)
{
  HostPolygonObject* const op = Make(ManyPoints(GetParam().pointCount), {{0, 1, 65535, 65535}, {0, 1, 2, 2}});
  if (GetParam().isSplit)
    AddNormals(op, {kUpCorners, {{1, 0, 0}, kUp, kUp, kUp}});
  const CollectedMesh mesh = Collect(op);
  ASSERT_EQ(mesh.error, "no error");
  EXPECT_EQ(mesh.record.indices.accessor.GetComponentType(), GetParam().componentType);
  EXPECT_EQ(mesh.record.vertexView.GetByteOffset(), GetParam().vertexOffset);
  EXPECT_EQ(mesh.Indices()[2], 65535);
  EXPECT_EQ(mesh.Indices()[3], GetParam().isSplit ? 65536 : 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, IndexTypes,
                         testing::Values(IndexRow{"Points65536", 65536, false, 5123, 12},
                                         IndexRow{"Points65537", 65537, false, 5125, 24},
                                         IndexRow{"Points65536AndACopy", 65536, true, 5125, 24}),
                         RowName());

struct LayoutRow
{
  const char* name;
  Bool hasNormals;
  Bool hasUvs;
  Bool hasColors;
  Int offsets[3];
  UInt32 stride;
};

class VertexLayout : public MeshExport, public testing::WithParamInterface<LayoutRow>
{};

TEST_P(VertexLayout, InterleavesWhatIsInUse)
{
  HostPolygonObject* const op = MakeQuad();
  if (GetParam().hasNormals)
    AddNormals(op, {kUpCorners, kUpCorners});
  if (GetParam().hasUvs)
    AddUvs(op, {{{1, 2, 0}, {3, 4, 0}, {5, 6, 0}, {9, 9, 9}}, {{5, 6, 0}, {3, 4, 0}, {7, 8, 0}, {9, 9, 9}}});
  if (GetParam().hasColors)
    AddColors(op, false);
  const CollectedMesh mesh = Collect(op);
  ASSERT_EQ(mesh.error, "no error");
  EXPECT_EQ(mesh.record.vertexView.GetByteStride(), GetParam().stride);
  EXPECT_EQ(mesh.record.vertexView.GetByteLength(), 4 * Int(GetParam().stride));
  const MeshAccessor* const attributes[] = {&mesh.record.normals, &mesh.record.uvs, &mesh.record.polygonColors};
  for (int i = 0; i < 3; ++i)
  {
    EXPECT_EQ(attributes[i]->isUsed, GetParam().offsets[i] != 0) << i;
    EXPECT_EQ(attributes[i]->accessor.GetByteOffset(), GetParam().offsets[i]) << i;
  }
  EXPECT_THAT(mesh.Positions(), ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0));
  if (GetParam().hasNormals)
  {
    EXPECT_THAT(mesh.Normals(), ElementsAre(0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1));
  }
  if (GetParam().hasUvs)
  {
    EXPECT_THAT(mesh.Uvs(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
  }
  if (GetParam().hasColors)
  {
    EXPECT_THAT(mesh.Colors(), ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1));
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, VertexLayout,
                         testing::Values(LayoutRow{"Bare", false, false, false, {0, 0, 0}, 12},
                                         LayoutRow{"Normals", true, false, false, {12, 0, 0}, 24},
                                         LayoutRow{"Uvs", false, true, false, {0, 12, 0}, 20},
                                         LayoutRow{"Colors", false, false, true, {0, 0, 12}, 28},
                                         LayoutRow{"NormalsUvs", true, true, false, {12, 24, 0}, 32},
                                         LayoutRow{"NormalsColors", true, false, true, {12, 0, 24}, 40},
                                         LayoutRow{"UvsColors", false, true, true, {0, 12, 20}, 36},
                                         LayoutRow{"All", true, true, true, {12, 24, 32}, 48}),
                         RowName());

TEST_F(MeshExport, SettingsLeaveNormalsAndUvsOut)
{
  _options.exportNormals = false;
  _options.exportUvs = false;
  HostPolygonObject* const op = MakeQuad();
  AddNormals(op, {kUpCorners, {{1, 0, 0}, kUp, kUp, kUp}});
  AddUvs(op, {kUpCorners, {{1, 0, 0}, kUp, kUp, kUp}});
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.record.vertexView.GetByteStride(), 12u);
  EXPECT_THAT(mesh.Indices(), ElementsAre(0, 1, 2, 2, 1, 3));
}

TEST_F(MeshExport, PhongTagAloneGivesZeroNormals)
{
  HostPolygonObject* const op = MakeQuad();
  ASSERT_TRUE(op->SetPhong(true, false, 0));
  const CollectedMesh mesh = Collect(op);
  EXPECT_TRUE(mesh.record.normals.isUsed);
  EXPECT_THAT(mesh.Normals(), AllOf(SizeIs(12), Each(0)));
}

TEST_F(MeshExport, NormalsGetUnitLength)
{
  for (const Bool asDoubles : {false, true})
  {
    HostPolygonObject* const op = Make(ManyPoints(3), {{0, 1, 2, 2}});
    AddNormals(op, {{{0, 0, 2}, {3, 0, -4}, {0, 0.25, 0}, {1, 1, 1}}}, asDoubles);
    EXPECT_THAT(Collect(op).Normals(), ElementsAre(0, 0, 1, 0.6f, 0, -0.8f, 0, 1, 0)) << asDoubles;
  }
}

TEST_F(MeshExport, MissingNormalIsTheMeanOfTheFacesAround)
{
  // The faces' normals are 3 along z and 4 along x; they meet at point 0.
  HostPolygonObject* const op = Make({{0, 0, 0}, {3, 0, 0}, {0, 1, 0}, {0, 4, 0}, {0, 0, 1}}, {{0, 1, 2, 2}, {3, 4, 0, 0}});
  AddNormals(op, {{}});  // none for the second polygon
  EXPECT_THAT(Collect(op).Normals(), ElementsAre(0.8f, 0, 0.6f, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0));
}

TEST_F(MeshExport, FacesThatCancelLeaveZero)
{
  HostPolygonObject* const op = Make({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2, 2}, {0, 2, 1, 1}});
  AddNormals(op, {{}, {}});
  EXPECT_THAT(Collect(op).Normals(), AllOf(SizeIs(9), Each(0)));
}

TEST_F(MeshExport, DataForFewerPolygonsThanThereAre)
{
  HostPolygonObject* const op = MakeQuad();
  AddUvs(op, {{{1, 1, 0}, {2, 2, 0}, {3, 3, 0}, {}}});
  const CollectedMesh mesh = Collect(op);
  EXPECT_THAT(mesh.Indices(), ElementsAre(0, 1, 2, 4, 5, 3));
  EXPECT_THAT(mesh.Uvs(), ElementsAre(1, 1, 2, 2, 3, 3, 0, 0, 0, 0, 0, 0));
  EXPECT_THAT(std::vector<Int32>(mesh.record.vertexPoints.begin(), mesh.record.vertexPoints.end()),
              ElementsAre(0, 1, 2, 3, 2, 1));
}

struct SplitRow
{
  const char* name;
  HostCorners second;
  Bool exportMorphs;
  std::vector<Float> indices;
};

class SplitQuad : public MeshExport, public testing::WithParamInterface<SplitRow>
{};

TEST_P(SplitQuad, MakesAVertexForEachSetOfValues)
{
  _options.exportMorphs = GetParam().exportMorphs;
  HostPolygonObject* const op = MakeQuad();
  AddUvs(op, {kUpCorners, GetParam().second});
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.Indices(), GetParam().indices);
  EXPECT_EQ(mesh.record.positions.accessor.GetCount(),
            *std::max_element(GetParam().indices.begin(), GetParam().indices.end()) + 1);
}

const SplitRow kSplit[] = {
  {"Equal", kUpCorners, false, {0, 1, 2, 2, 1, 3}},
  {"OneDiffers", {kUp, {1, 0, 1}, kUp, kUp}, false, {0, 1, 2, 2, 4, 3}},
  {"NaN", {kUp, {NAN, 0, 1}, kUp, kUp}, false, {0, 1, 2, 2, 4, 3}},
  {"WithMorphs", kUpCorners, true, {0, 1, 2, 4, 5, 3}},
};
INSTANTIATE_TEST_SUITE_P(Rows, SplitQuad, testing::ValuesIn(kSplit), RowName());

TEST_F(MeshExport, MorphsLeaveAnObjectWithoutAttributesUnsplit)
{
  _options.exportMorphs = true;
  EXPECT_THAT(Collect(MakeQuad()).Indices(), ElementsAre(0, 1, 2, 2, 1, 3));
}

struct TilingRow
{
  const char* name;
  Float lengthU;
  Float offsetU;
  std::vector<Float> us;
};

class TiledUvs : public MeshExport, public testing::WithParamInterface<TilingRow>
{};

TEST_P(TiledUvs, AreDividedAndMoved)
{
  HostPolygonObject* const op = Make(ManyPoints(3), {{0, 1, 2, 2}});
  AddUvs(op, {{{1, 5, 0}, {-2, 5, 0}, {0.5, 5, 0}, {}}});
  HostTag* const texture = AddTexture(op);
  texture->SetParameter(1002, GetParam().lengthU);
  texture->SetParameter(1000, GetParam().offsetU);
  const std::vector<Float> uvs = Collect(op).Uvs();
  ASSERT_EQ(uvs.size(), 6u);
  for (size_t i = 0; i < 3; ++i)
  {
    EXPECT_THAT(uvs[2 * i], testing::NanSensitiveDoubleEq(GetParam().us[i])) << i;
    EXPECT_EQ(uvs[2 * i + 1], 5) << i;
  }
}

const TilingRow kTiling[] = {
  {"Neutral", 1, 0, {1, -2, 0.5}},
  {"Doubled", 0.5, 0, {2, -4, 1}},
  {"Moved", 2, 0.5, {0.25, -1.25, 0}},
  {"NoLength", 0, 0.25, {-kInfinity, -kInfinity, -kInfinity}},
  {"NoLengthNoOffset", 0, 0, {NAN, NAN, NAN}},
};
INSTANTIATE_TEST_SUITE_P(Rows, TiledUvs, testing::ValuesIn(kTiling), RowName());

TEST_F(MeshExport, TilingOfVIsItsOwn)
{
  HostPolygonObject* const op = Make(ManyPoints(3), {{0, 1, 2, 2}});
  AddUvs(op, {{{1, 1, 0}, {1, 2, 0}, {1, 3, 0}, {}}});
  HostTag* const texture = AddTexture(op);
  texture->SetParameter(1003, 0.5);
  texture->SetParameter(1001, 0.25);
  EXPECT_THAT(Collect(op).Uvs(), ElementsAre(1, 1.5, 1, 3.5, 1, 5.5));
}

TEST_F(MeshExport, ColorsPerCornerSplitAndColorsPerPointDoNot)
{
  HostPolygonObject* const op = MakeQuad();
  const HostColorHandle corners = AddColors(op, false)->GetHandleW();
  corners.colors[16 + 4] = 0.5f;  // corner b of the second polygon, which is point 1
  const CollectedMesh split = Collect(op);
  EXPECT_THAT(split.Indices(), ElementsAre(0, 1, 2, 2, 4, 3));
  EXPECT_THAT(split.Colors(), ElementsAre(0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0.5, 0, 0, 1));
  EXPECT_FALSE(split.record.vertexColors.isUsed);

  HostPolygonObject* const other = MakeQuad();
  const HostColorHandle points = AddColors(other, true)->GetHandleW();
  points.SetPoint(1, {0.25f, 0.5f, 0.75f});
  AddUvs(other, {kUpCorners, {kUp, {1, 0, 1}, kUp, kUp}});
  const CollectedMesh mesh = Collect(other);
  EXPECT_FALSE(mesh.record.polygonColors.isUsed);
  EXPECT_TRUE(mesh.record.vertexColors.isUsed);
  EXPECT_THAT(mesh.VertexColors(), ElementsAre(0, 0, 0, 1, 0.25, 0.5, 0.75, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0.25, 0.5, 0.75, 1));
}

TEST_F(MeshExport, ColorsForFewerThanThereAre)
{
  HostPolygonObject* const op = MakeQuad();
  HostVertexColorTag* const tag = AddColors(op, false);
  for (const Bool perPoint : {false, true})
  {
    ASSERT_TRUE(ToHeadless(tag)->Resize(1, perPoint));  // one polygon, then one point
    tag->GetHandleW().colors[0] = 0.5f;
    const CollectedMesh mesh = Collect(op);
    EXPECT_THAT(perPoint ? mesh.VertexColors() : mesh.Colors(), ElementsAre(0.5, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1));
  }
}

TEST_F(MeshExport, TargetHoldsTheDistancesOfEveryVertex)
{
  _options.exportMorphs = true;
  _options.flipZ = true;
  _options.exportScale = 2;
  HostPolygonObject* const op = MakeQuad();
  AddNormals(op, {kUpCorners, kUpCorners});
  AddColors(op, true);
  static_cast<HostWeightTag*>(op->MakeTag(kWeightTagType))->AddJoint(AddJoint());
  const CollectedMesh mesh = Collect(op);
  ASSERT_EQ(mesh.positions.GetCount(), 6);
  // Points 1 and 2 move, and their copies 5 and 4 with them.
  const CollectedMesh target = CollectTarget(op, {{0, 0, 0}, {1, 0, 3}, {0, 1.5, 0}, {1, 1, 0}}, mesh);
  ASSERT_EQ(target.error, "no error");
  EXPECT_THAT(target.Positions(), ElementsAre(0, 0, 0, 0, 0, -6, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, -6));
  EXPECT_THAT(Min(target.record.positions), ElementsAre(0, 0, -6));
  EXPECT_EQ(target.record.vertexView.GetByteStride(), 12u);
  EXPECT_EQ(target.buffer.GetBytes().GetCount(), 72);
}

struct RefusedMeshRow
{
  const char* name;
  HostPolygon polygon;
  Bool hasNormals;
};

class CornersOutside : public MeshExport, public testing::WithParamInterface<RefusedMeshRow>
{};

TEST_P(CornersOutside, AreRefused)
{
  HostPolygonObject* const op = Make(ManyPoints(3), {{0, 1, 2, 2}, GetParam().polygon});
  if (GetParam().hasNormals)
    AddNormals(op, {{}, {}});  // so that all faces are looked at
  EXPECT_EQ(Collect(op).error,
            "Illegal argument: Condition (vertex_index >= 0 && vertex_index < _isProcessed.GetCount()) not fulfilled. ");
}

const RefusedMeshRow kOutside[] = {
  {"A", {3, 1, 2, 2}, false},
  {"B", {0, 3, 2, 2}, false},
  {"C", {0, 1, 3, 3}, false},
  {"Negative", {0, -1, 2, 2}, false},
  {"Smallest", {INT32_MIN, 1, 2, 2}, false},
  {"Largest", {0, INT32_MAX, 2, 2}, false},
  {"WithNormals", {0, 3, 2, 2}, true},
  {"NegativeWithNormals", {0, 1, -1, -1}, true},
};
INSTANTIATE_TEST_SUITE_P(Rows, CornersOutside, testing::ValuesIn(kOutside), RowName());

TEST_F(MeshExport, FourthCornerIsNeverLookedAt)
{
  HostPolygonObject* const op = Make({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2, 77}});
  AddNormals(op, {{}});
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.error, "no error");
  EXPECT_THAT(mesh.Indices(), ElementsAre(0, 1, 2));
  EXPECT_THAT(mesh.Normals(), ElementsAre(0, 0, 1, 0, 0, 1, 0, 0, 1));
}

TEST_F(MeshExport, MissingPartsAreRefused)
{
  HostPolygonObject* const op = MakeQuad();
  HostPolygonObject* const bare = Make(ManyPoints(3), {});
  const Vector* const points = op->GetPointsR();
  CollectedMesh mesh;
  const auto collect = [&](HostPolygonObject* object, HostDocument* doc, const Vector* positions, Bool isTarget)
  { return ErrorText(CollectMeshData(mesh.record, mesh.buffer, object, doc, positions, mesh.positions, _options, isTarget)); };
  EXPECT_EQ(collect(nullptr, Document(), points, false), "Illegal state: Condition op not fulfilled. ");
  EXPECT_EQ(collect(op, nullptr, points, false), "Illegal state: Condition doc not fulfilled. ");
  EXPECT_EQ(collect(op, Document(), nullptr, false), "Illegal state: Condition positions not fulfilled. ");
  EXPECT_EQ(collect(bare, Document(), points, false), "Illegal state: Condition polygons not fulfilled. ");
  EXPECT_EQ(collect(Make({}, {}), Document(), points, false), "Illegal state: Condition vertices_count > 0 not fulfilled. ");
  const char* const message =
    "Illegal argument: Condition (init_positions.GetCount() == 0 && !isTarget) || (init_positions.GetCount() == "
    "vertex_data.GetCount() && isTarget) not fulfilled. ";
  EXPECT_EQ(collect(op, Document(), points, true), message);
  ASSERT_EQ(collect(op, Document(), points, false), "no error");
  EXPECT_EQ(collect(op, Document(), points, false), message);
}

TEST_F(MeshExport, FailingMemoryIsTold)
{
  HostPolygonObject* const op = MakeQuad();
  AddNormals(op, {{}, {}});
  AddUvs(op, {kUpCorners, {kUp, {1, 0, 1}, kUp, kUp}});
  AddColors(op, true);
  static_cast<HostWeightTag*>(op->MakeTag(kWeightTagType))->AddJoint(AddJoint());
  Int failAt = 1;
  for (Bool failed = true; failed; ++failAt)
  {
    CollectedMesh mesh;
    FailAllocation(failAt);
    const Result<void> result =
      CollectMeshData(mesh.record, mesh.buffer, op, Document(), op->GetPointsR(), mesh.positions, _options, false);
    failed = StopFailingAllocations() > 0;
    EXPECT_EQ(IsOutOfMemory(result), failed) << failAt << ": " << ErrorText(result);
  }
  EXPECT_GT(failAt, 20);
}

}  // namespace q7z::test
