// What a polygon object becomes in a file: indices, the interleaved vertices and their attributes, joints and weights, targets.

#include <cmath>
#include <cstring>
#include <sstream>

#include <gtest/gtest.h>

#include "host/scene/headlesstag.h"
#include "plugin/geometry/gltfmeshexport.h"
#include "plugin/module/hostids.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"
#include "tests/support/testhost.h"

namespace q7z::test
{
namespace
{

using Points = std::vector<Vector>;
using Polygons = std::vector<HostPolygon>;
using Corners = std::vector<HostCorners>;

const Vector kUp = {0, 0, 1};
const HostCorners kUpCorners = {kUp, kUp, kUp, kUp};
/// (0 1 2) and (2 1 3) in the plane z = 0.
const Points kQuadPoints = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}};
const Polygons kQuad = {{0, 1, 2, 2}, {2, 1, 3, 3}};

Float ReadNumber(const Byte* bytes, UInt32 componentType)
{
  Float32 number = 0;
  UInt32 index = 0;
  UInt16 shortIndex = 0;
  switch (componentType)
  {
    case 5126: std::memcpy(&number, bytes, 4); return std::isnan(number) ? NAN : number;
    case 5125: std::memcpy(&index, bytes, 4); return index;
    default: std::memcpy(&shortIndex, bytes, 2); return shortIndex;
  }
}

/// "positions@0 0 0 1, 0 1 0": the numbers of all elements, behind the place of the first in its view.
std::string WriteElements(const char* name, const MeshAccessor& attribute, const GltfBufferView& view, const GltfBuffer& buffer)
{
  if (!attribute.isUsed)
    return "";
  const GltfAccessor& accessor = attribute.accessor;
  const Int componentBytes = accessor.GetComponentType() == 5123 ? 2 : 4;
  const Int stride = view.GetByteStride() ? view.GetByteStride() : componentBytes * accessor.GetComponentCount();
  std::ostringstream text;
  text << name << "@" << accessor.GetByteOffset();
  for (Int i = 0; i < accessor.GetCount(); ++i)
  {
    for (Int c = 0; c < accessor.GetComponentCount(); ++c)
    {
      const Int inView = accessor.GetByteOffset() + i * stride + c * componentBytes;
      const Int inBuffer = view.GetByteOffset() + inView;
      if (inView + componentBytes > view.GetByteLength() || inBuffer + componentBytes > buffer.GetBytes().GetCount())
        return text.str() + " outside\n";
      text << (i > 0 && c == 0 ? ", " : " ") << ReadNumber(buffer.GetBytes().begin() + inBuffer, accessor.GetComponentType());
    }
  }
  return text.str() + "\n";
}

struct CollectedMesh
{
  MeshData record;
  GltfBuffer buffer;
  BaseArray<Vector> positions;  ///< given to targets

  std::string Indices() const { return WriteElements("indices", record.indices, record.indexView, buffer); }
  std::string Positions() const { return WriteElements("positions", record.positions, record.vertexView, buffer); }
  std::string Normals() const { return WriteElements("normals", record.normals, record.vertexView, buffer); }
  std::string Uvs() const { return WriteElements("uvs", record.uvs, record.vertexView, buffer); }
  std::string Colors() const
  {
    return WriteElements("corner colors", record.polygonColors, record.vertexView, buffer) +
           WriteElements("point colors", record.vertexColors, record.colorView, buffer);
  }
  std::string Joints() const { return WriteElements("joints", record.joints, record.jointView, buffer); }
  std::string Weights() const { return WriteElements("weights", record.weights, record.weightView, buffer); }
  std::string All() const
  {
    return "stride " + std::to_string(record.vertexView.GetByteStride()) + "\n" + Indices() + Positions() + Normals() + Uvs() +
           Colors() + Joints() + Weights();
  }
};

std::string WriteBound(const Result<Data>& bound)
{
  std::string text;
  const Result<DataArrayView> values = bound.GetValue().GetArray();
  for (const Data& value : values.GetValue())
    text += std::to_string(Int(value.GetFloat().GetValue())) + " ";
  return text;
}

class MeshExport : public testing::Test
{
protected:
  HostPolygonObject* Make(const Points& points = kQuadPoints, const Polygons& polygons = kQuad)
  {
    HostPolygonObject* const op =
      HostPolygonObject::Alloc(static_cast<Int32>(points.size()), static_cast<Int32>(polygons.size()));
    std::copy(points.begin(), points.end(), op->GetPointsW());
    std::copy(polygons.begin(), polygons.end(), op->GetPolygonsW());
    Document()->InsertObject(op, nullptr, nullptr);
    return op;
  }
  /// For fewer polygons than the object has is allowed.
  static void AddNormals(HostPolygonObject* op, const Corners& corners, Bool asDoubles = false)
  {
    auto* const tag = static_cast<HostNormalTag*>(op->MakeTag(kNormalTagType, static_cast<Int32>(corners.size())));
    for (size_t i = 0; i < corners.size(); ++i)
      tag->GetHandleW(asDoubles).Set(static_cast<Int>(i), corners[i]);
  }
  static void AddUvs(HostPolygonObject* op, const Corners& corners)
  {
    auto* const tag = static_cast<HostUvwTag*>(op->MakeTag(kUvwTagType, static_cast<Int32>(corners.size())));
    for (size_t i = 0; i < corners.size(); ++i)
      tag->GetHandleW().Set(static_cast<Int>(i), corners[i]);
  }
  static HostVertexColorTag* AddColors(HostPolygonObject* op, Bool perPoint)
  {
    auto* const tag = static_cast<HostVertexColorTag*>(op->MakeTag(kVertexColorTagType, op->GetPointCount()));
    tag->SetPerPoint(perPoint);
    return tag;
  }
  HostWeightTag* AddJoints(HostPolygonObject* op, const std::vector<Int32>& types)
  {
    auto* const tag = static_cast<HostWeightTag*>(op->MakeTag(kWeightTagType));
    for (const Int32 type : types)
    {
      HostObject* const joint = HostObject::Alloc(type);
      Document()->InsertObject(joint, nullptr, nullptr);
      tag->AddJoint(joint);
    }
    return tag;
  }

  /// Without the mirror and without morphs, so that vertices are shared, unless a test says otherwise.
  std::string Collect(HostPolygonObject* op, CollectedMesh& mesh, HostDocument* doc, const Vector* positions,
                      Bool isTarget = false)
  {
    return ErrorText(CollectMeshData(mesh.record, mesh.buffer, op, doc, positions, mesh.positions, _options, isTarget));
  }
  CollectedMesh Collect(HostPolygonObject* op)
  {
    CollectedMesh mesh;
    EXPECT_EQ(Collect(op, mesh, Document(), op->GetPointsR()), "no error");
    return mesh;
  }
  HostDocument* Document() { return _host.Document(); }

  ExportOptions _options = []
  {
    ExportOptions options;
    options.flipZ = false;
    options.exportMorphs = false;
    return options;
  }();

private:
  TestHost _host;
};

const HostCorners kOneDiffers = {kUp, {1, 0, 1}, kUp, kUp};

// Points, polygons, normals and UVs.

TEST_F(MeshExport, CornersShareAVertexWhereAllIsEqual)
{
  HostPolygonObject* const op = Make();
  AddNormals(op, {kUpCorners, kUpCorners});
  AddUvs(op, {kUpCorners, kOneDiffers});
  EXPECT_EQ(Collect(op).All(), "stride 32\nindices@0 0, 1, 2, 2, 4, 3\npositions@0 0 0 0, 1 0 0, 0 1 0, 1 1 0, 1 0 0\n"
                               "normals@12 0 0 1, 0 0 1, 0 0 1, 0 0 1, 0 0 1\nuvs@24 0 0, 0 0, 0 0, 0 0, 1 0\n");
}

TEST_F(MeshExport, MissingNormalIsTheMeanOfTheFacesAround)
{
  // The faces' normals are 3 along z and 4 along x; they meet at point 0. Those of the points 5 to 7 cancel. A fourth corner is never
  // looked at, and the tag has no normals for the last polygons.
  const Points points = {{0, 0, 0}, {3, 0, 0}, {0, 1, 0}, {0, 4, 0}, {0, 0, 1}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  HostPolygonObject* const op = Make(points, {{0, 1, 2, 77}, {3, 4, 0, 0}, {5, 6, 7, 7}, {5, 7, 6, 6}});
  AddNormals(op, {{}});
  EXPECT_EQ(Collect(op).Normals(), "normals@12 0.8 0 0.6, 0 0 1, 0 0 1, 1 0 0, 1 0 0, 0 0 0, 0 0 0, 0 0 0\n");
}

TEST_F(MeshExport, UvsOfFewerPolygonsThanThereAre)
{
  HostPolygonObject* const op = Make();
  AddUvs(op, {{{1, 1, 0}, {2, 2, 0}, {3, 3, 0}, {}}});
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.Indices(), "indices@0 0, 1, 2, 4, 5, 3\n");
  EXPECT_EQ(mesh.Uvs(), "uvs@12 1 1, 2 2, 3 3, 0 0, 0 0, 0 0\n");
}

TEST_F(MeshExport, BytesGoBehindThoseOfOtherMeshes)
{
  HostPolygonObject* const op = Make({{1, 2, 3}, {4, 5, 6}, {-1, 8, 9}}, {{0, 1, 2, 2}});
  CollectedMesh mesh;
  ASSERT_EQ(ErrorText(mesh.buffer.AppendBytes("12345678", 8)), "no error");
  ASSERT_EQ(Collect(op, mesh, Document(), op->GetPointsR()), "no error");
  EXPECT_EQ(mesh.record.indexView.GetByteOffset(), 8);
  EXPECT_EQ(mesh.record.indexView.GetByteLength(), 6);
  EXPECT_EQ(mesh.buffer.GetBytes()[14], ' ') << "two blanks between indices and vertices";
  EXPECT_EQ(mesh.record.vertexView.GetByteOffset(), 16);
  EXPECT_EQ(mesh.All(), "stride 12\nindices@0 0, 1, 2\npositions@0 1 2 3, 4 5 6, -1 8 9\n");
  EXPECT_EQ(WriteBound(mesh.record.positions.accessor.MakeMin()), "-1 2 3 ");
  EXPECT_EQ(WriteBound(mesh.record.positions.accessor.MakeMax()), "4 8 9 ");
  EXPECT_EQ(WriteBound(mesh.record.indices.accessor.MakeMax()), "2 ");
}

TEST_F(MeshExport, MirrorReversesTheListAndLengthsAreScaled)
{
  _options.flipZ = true;
  _options.exportScale = 0.5;
  for (const Bool asDoubles : {false, true})
  {
    HostPolygonObject* const op = Make({{2, 0, 1}, {0, 4, 0}, {0, 0, -6}, {1, 1, 1}});
    AddNormals(op, {{{0, 0, 2}, {3, 0, -4}, {0, 0.25, 0}, {}}, {{0, 0.25, 0}, {3, 0, -4}, kUp, {}}}, asDoubles);
    EXPECT_EQ(Collect(op).All(), "stride 24\nindices@0 3, 1, 2, 2, 1, 0\npositions@0 1 0 -0.5, 0 2 0, 0 0 3, 0.5 0.5 -0.5\n"
                                 "normals@12 0 0 -1, 0.6 0 0.8, 0 1 0, 0 0 -1\n");
  }
}

TEST_F(MeshExport, IndicesAreShortForUpTo65536Vertices)
{
  const auto collect = [this](size_t pointCount, Bool isSplit)
  {
    HostPolygonObject* const op = Make(Points(pointCount), {{0, 1, 65535, 65535}, {0, 1, 2, 2}});
    if (isSplit)
      AddNormals(op, {kUpCorners, {{1, 0, 0}, kUp, kUp, kUp}});
    const CollectedMesh mesh = Collect(op);
    return std::to_string(mesh.record.indices.accessor.GetComponentType()) + " " + mesh.Indices();
  };
  EXPECT_EQ(collect(65536, false), "5123 indices@0 0, 1, 65535, 0, 1, 2\n");
  EXPECT_EQ(collect(65537, false), "5125 indices@0 0, 1, 65535, 0, 1, 2\n");
  EXPECT_EQ(collect(65536, true), "5125 indices@0 0, 1, 65535, 65536, 1, 2\n");
}

TEST_F(MeshExport, OptionsLeaveNormalsAndUvsOut)
{
  _options.exportNormals = false;
  _options.exportUvs = false;
  HostPolygonObject* const op = Make();
  AddNormals(op, {kUpCorners, kOneDiffers});
  AddUvs(op, {kUpCorners, kOneDiffers});
  EXPECT_EQ(Collect(op).All(), "stride 12\nindices@0 0, 1, 2, 2, 1, 3\npositions@0 0 0 0, 1 0 0, 0 1 0, 1 1 0\n");
}

TEST_F(MeshExport, TagsWithoutDataGiveZeroNormalsAndNoSkin)
{
  HostPolygonObject* const op = Make();
  AddJoints(op, {});
  ASSERT_TRUE(op->SetPhong(true, false, 0));
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.Normals(), "normals@12 0 0 0, 0 0 0, 0 0 0, 0 0 0\n");
  EXPECT_EQ(mesh.Joints() + mesh.Weights(), "");
}

TEST_F(MeshExport, MorphsSplitAllCornersOfAnObjectWithAttributes)
{
  _options.exportMorphs = true;
  HostPolygonObject* const op = Make();
  EXPECT_EQ(Collect(op).Indices(), "indices@0 0, 1, 2, 2, 1, 3\n");
  AddUvs(op, {kUpCorners, kUpCorners});
  EXPECT_EQ(Collect(op).Indices(), "indices@0 0, 1, 2, 4, 5, 3\n");
}

TEST_F(MeshExport, TiledUvsAreDividedAndMoved)
{
  const auto tile = [this](Float lengthU, Float offsetU, Float lengthV, Float offsetV)
  {
    HostPolygonObject* const op = Make(Points(3), {{0, 1, 2, 2}});
    AddUvs(op, {{{1, 1, 0}, {-2, -2, 0}, {0.5, 0.5, 0}, {}}});
    HostTag* const texture = op->MakeTag(kTextureTagType, 0);
    texture->SetParameter(1000, offsetU);
    texture->SetParameter(1001, offsetV);
    texture->SetParameter(1002, lengthU);
    texture->SetParameter(1003, lengthV);
    return Collect(op).Uvs();
  };
  EXPECT_EQ(tile(1, 0, 1, 0), "uvs@12 1 1, -2 -2, 0.5 0.5\n");
  EXPECT_EQ(tile(0.5, 0, 2, 0.5), "uvs@12 2 0.25, -4 -1.25, 1 0\n");
  EXPECT_EQ(tile(2, 0.5, 0.5, 0), "uvs@12 0.25 2, -1.25 -4, 0 1\n");
  EXPECT_EQ(tile(0, 0.25, 0, 0), "uvs@12 -inf nan, -inf nan, -inf nan\n");
}

// Colours, joints and weights.

TEST_F(MeshExport, ColorsOfCornersSplitAndStandBehindNormalsAndUvs)
{
  HostPolygonObject* const op = Make();
  AddColors(op, false)->GetHandleW().colors[16 + 4] = 0.5f;  // corner b of the second polygon, which is point 1
  const CollectedMesh split = Collect(op);
  EXPECT_EQ(split.Indices(), "indices@0 0, 1, 2, 2, 4, 3\n");
  EXPECT_EQ(split.Colors(), "corner colors@12 0 0 0 1, 0 0 0 1, 0 0 0 1, 0 0 0 1, 0.5 0 0 1\n");
  AddNormals(op, {kUpCorners, kUpCorners});
  AddUvs(op, {kUpCorners, kUpCorners});
  EXPECT_EQ(Collect(op).Colors(), "corner colors@32 0 0 0 1, 0 0 0 1, 0 0 0 1, 0 0 0 1, 0.5 0 0 1\n");
}

TEST_F(MeshExport, CopiesHaveTheColorsAndWeightsOfTheirPoint)
{
  HostPolygonObject* const op = Make();
  AddColors(op, true)->GetHandleW().SetPoint(1, {0.25f, 0.5f, 0.75f});
  AddUvs(op, {kUpCorners, kOneDiffers});
  AddJoints(op, {kJointObjectType, kJointObjectType})->SetWeight(1, 1, 0.75);
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.Colors(), "point colors@0 0 0 0 1, 0.25 0.5 0.75 1, 0 0 0 1, 0 0 0 1, 0.25 0.5 0.75 1\n");
  EXPECT_EQ(mesh.Joints(), "joints@0 1 0 0 0, 1 0 0 0, 1 0 0 0, 1 0 0 0, 1 0 0 0\n");
  EXPECT_EQ(mesh.Weights(), "weights@0 0 0 0 0, 0.75 0 0 0, 0 0 0 0, 0 0 0 0, 0.75 0 0 0\n");
}

TEST_F(MeshExport, ColorsForFewerThanThereAre)
{
  HostPolygonObject* const op = Make();
  HostVertexColorTag* const tag = AddColors(op, false);
  for (const Bool perPoint : {false, true})
  {
    ASSERT_TRUE(ToHeadless(tag)->Resize(1, perPoint));  // one polygon, then one point
    tag->GetHandleW().colors[0] = 0.5f;
    EXPECT_EQ(Collect(op).Colors(),
              std::string(perPoint ? "point colors@0" : "corner colors@12") + " 0.5 0 0 1, 0 0 0 1, 0 0 0 1, 0 0 0 1\n");
  }
}

struct InfluenceRow
{
  const char* name;
  std::vector<Float> weights;  ///< at every point, of one joint after the other
  const char* joints;
  const char* expected;
};

class Influences : public MeshExport, public testing::WithParamInterface<InfluenceRow>
{};

TEST_P(Influences, KeepTheStrongest)
{
  constexpr Int32 kCount = 300;  // more than are worked out at once
  HostPolygonObject* const op = Make(Points(kCount), {{0, 1, 2, 2}});
  HostWeightTag* const tag = AddJoints(op, std::vector<Int32>(GetParam().weights.size(), kJointObjectType));
  std::string joints = std::string("joints@0 ") + GetParam().joints;
  std::string expected = std::string("weights@0 ") + GetParam().expected;
  for (Int32 point = 0; point < kCount; ++point)
  {
    for (size_t i = 0; i < GetParam().weights.size(); ++i)
      tag->SetWeight(static_cast<Int32>(i), point, GetParam().weights[i]);
    joints += point ? std::string(", ") + GetParam().joints : "";
    expected += point ? std::string(", ") + GetParam().expected : "";
  }
  const CollectedMesh mesh = Collect(op);
  EXPECT_EQ(mesh.Joints(), joints + "\n");
  EXPECT_EQ(mesh.Weights(), expected + "\n");
}

const InfluenceRow kInfluences[] = {
  {"LargestFourOfFive", {0.5, 0.125, 2, 0.25, 1}, "2 4 0 3", "2 1 0.5 0.25"},
  {"SmallestLastIsDropped", {1, 0.5, 0.5, 0.25, 0.125}, "0 1 2 3", "1 0.5 0.5 0.25"},
  {"EqualToTheLastGoesBehind", {1, 0.5, 0.5}, "0 1 2 0", "1 0.5 0.5 0"},
  {"EqualToTheFirstGoesInFront", {1, 0.5, 1}, "2 0 1 0", "1 1 0.5 0"},
  {"EqualInTheMiddleGoesBeforeTheFirstOfItsKind", {1, 0.5, 0.25, 0.5}, "0 3 1 2", "1 0.5 0.5 0.25"},
  {"ZerosCount", {0, 0, 0, 0, 0}, "4 3 2 1", "0 0 0 0"},
};
INSTANTIATE_TEST_SUITE_P(Rows, Influences, testing::ValuesIn(kInfluences), RowName());

TEST_F(MeshExport, GroupsAndLostJointsHaveNoNumber)
{
  HostPolygonObject* const op = Make(Points(1), {{0, 0, 0, 0}});
  HostWeightTag* const tag = AddJoints(op, {kNullObjectType, kJointObjectType, kJointObjectType, kJointObjectType});
  for (const Int32 joint : {0, 1, 2, 3})
    tag->SetWeight(joint, 0, 4 - joint);
  HostObject* const gone = tag->GetJoint(1, Document());
  gone->Remove();
  HostNode::Free(gone);
  EXPECT_EQ(Collect(op).Joints(), "joints@0 0 1 0 0\n");
  EXPECT_EQ(Collect(op).Weights(), "weights@0 2 1 0 0\n");
}

// Targets, and what is refused.

TEST_F(MeshExport, TargetHoldsTheDistancesOfEveryVertexAndNothingElse)
{
  _options.exportMorphs = true;
  _options.flipZ = true;
  _options.exportScale = 2;
  HostPolygonObject* const op = Make();
  AddNormals(op, {kUpCorners, kUpCorners});
  AddColors(op, true);
  AddJoints(op, {kJointObjectType});
  const CollectedMesh mesh = Collect(op);
  CollectedMesh target;
  ASSERT_EQ(ErrorText(target.positions.CopyFrom(mesh.positions)), "no error");
  // Points 1 and 2 move, and their copies 5 and 4 with them.
  const Points points = {{0, 0, 0}, {1, 0, 3}, {0, 1.5, 0}, {1, 1, 0}};
  ASSERT_EQ(Collect(op, target, Document(), points.data(), true), "no error");
  EXPECT_EQ(target.Positions(), "positions@0 0 0 0, 0 0 -6, 0 1 0, 0 0 0, 0 1 0, 0 0 -6\n");
  EXPECT_EQ(WriteBound(target.record.positions.accessor.MakeMin()), "0 0 -6 ");
  EXPECT_EQ(target.buffer.GetBytes().GetCount(), 72);
}

TEST_F(MeshExport, CornersOutsideAreRefused)
{
  for (const HostPolygon& polygon : Polygons{{3, 1, 2, 2}, {0, -1, 2, 2}, {0, 1, INT32_MAX, 2}, {INT32_MIN, 1, 2, 2}})
  {
    HostPolygonObject* const op = Make(Points(3), {{0, 1, 2, 2}, polygon});
    AddNormals(op, {{}, {}});  // so that all faces are looked at
    CollectedMesh mesh;
    EXPECT_EQ(Collect(op, mesh, Document(), op->GetPointsR()),
              "Illegal argument: Condition (vertex_index >= 0 && vertex_index < _isProcessed.GetCount()) not fulfilled. ");
  }
}

TEST_F(MeshExport, MissingPartsAreRefused)
{
  _options.exportMorphs = true;
  HostPolygonObject* const op = Make();
  const Vector* const points = op->GetPointsR();
  CollectedMesh mesh;
  EXPECT_EQ(Collect(nullptr, mesh, Document(), points), "Illegal state: Condition op not fulfilled. ");
  EXPECT_EQ(Collect(op, mesh, nullptr, points), "Illegal state: Condition doc not fulfilled. ");
  EXPECT_EQ(Collect(op, mesh, Document(), nullptr), "Illegal state: Condition positions not fulfilled. ");
  EXPECT_EQ(Collect(Make(Points(3), {}), mesh, Document(), points), "Illegal state: Condition polygons not fulfilled. ");
  EXPECT_EQ(Collect(Make({}, {}), mesh, Document(), points), "Illegal state: Condition vertices_count > 0 not fulfilled. ");
  const char* const message = "Illegal argument: Condition (init_positions.GetCount() == 0 && !isTarget) || "
                              "(init_positions.GetCount() == vertex_data.GetCount() && isTarget) not fulfilled. ";
  EXPECT_EQ(Collect(op, mesh, Document(), points, true), message);
  ASSERT_EQ(Collect(op, mesh, Document(), points), "no error");
  EXPECT_EQ(Collect(op, mesh, Document(), points), message);
}

TEST_F(MeshExport, FailingMemoryIsTold)
{
  HostPolygonObject* const op = Make();
  AddNormals(op, {{}, {}});
  AddUvs(op, {kUpCorners, kOneDiffers});
  AddColors(op, true);
  AddJoints(op, {kJointObjectType});
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

}  // namespace
}  // namespace q7z::test
