// What the commands make of points and polygons, what they refuse, and what they leave untouched.

#include "tests/modeling/modelingfixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct SplitRow
{
  const char* name;
  Int32 pointCount;
  std::vector<HostPolygon> polygons;
  std::vector<SelectionRange> selected;
  const char* part;
  const char* rest;
};

class SplitGeometry : public ModelingTest, public testing::WithParamInterface<SplitRow>
{};

TEST_P(SplitGeometry, TakesThePolygonsAndThePointsThatAreTheirsAlone)
{
  HeadlessPolygonObject& mesh = AddGrid(GetParam().pointCount, GetParam().polygons);
  for (const SelectionRange& range : GetParam().selected)
    mesh.GetPolygonSelection().SelectRange(range.first, range.last);
  const HeadlessPolygonObject* const part = Split(mesh);
  ASSERT_TRUE(part);
  EXPECT_EQ(DumpGeometry(*part), GetParam().part);
  EXPECT_EQ(DumpGeometry(mesh), GetParam().rest);
  EXPECT_TRUE(mesh.GetPolygonSelection().IsEmpty());
  EXPECT_EQ(part->GetPolygonSelection().GetCount(), part->GetPolygonCount());
}

const SplitRow kSplits[] = {
  {"FirstAndLastOfThree",
   7,
   {{0, 1, 2, 4}, {2, 1, 5, 5}, {4, 2, 5, 6}},
   {{0, 0}, {2, 2}},
   "0 1 2 4 5 6 | 0,1,2,3 3,2,4,5",
   "1 2 3 5 | 1,0,3,3"},
  {"SharedPointsStayOnBothSides", 4, {{0, 1, 2, 2}, {0, 2, 3, 3}}, {{1, 1}}, "0 2 3 | 0,1,2,2", "0 1 2 | 0,1,2,2"},
  {"AllOfThem", 5, {{4, 2, 1, 1}, {1, 2, 3, 3}}, {{0, 1}}, "1 2 3 4 | 3,1,0,0 0,1,2,2", "0 |"},
  {"AllPointsOnBothSides", 3, {{0, 1, 2, 2}, {2, 1, 0, 0}}, {{0, 0}}, "0 1 2 | 0,1,2,2", "0 1 2 | 2,1,0,0"},
  {"SelectionReachesBeyond", 4, {{0, 1, 2, 2}, {1, 2, 3, 3}}, {{1, INT32_MAX}}, "1 2 3 | 0,1,2,2", "0 1 2 | 0,1,2,2"},
  {"IndicesOutsideStayOutside",
   5,
   {{-1, 4, 7, 7}, {3, 5, INT32_MIN, INT32_MAX}},
   {{0, 0}},
   "4 | -1,0,7,7",
   "0 1 2 3 | 3,5,-2147483648,2147483647"},
};
INSTANTIATE_TEST_SUITE_P(Rows, SplitGeometry, testing::ValuesIn(kSplits), RowName());

struct InPlaceRow
{
  const char* name;
  Int32 command;
  Int32 pointCount;
  std::vector<HostPolygon> polygons;
  const char* expected;
};

class InPlaceGeometry : public ModelingTest, public testing::WithParamInterface<InPlaceRow>
{};

TEST_P(InPlaceGeometry, IsAsExpected)
{
  HeadlessPolygonObject& mesh = AddGrid(GetParam().pointCount, GetParam().polygons);
  ASSERT_TRUE(Send(GetParam().command, &mesh));
  EXPECT_EQ(DumpGeometry(mesh), GetParam().expected);
  EXPECT_EQ(_data.results, nullptr);
  EXPECT_EQ(_data.resultCount, 0);
}

const InPlaceRow kInPlace[] = {
  {"QuadsBecomeTwoTriangles",
   kTriangulateCommand,
   7,
   {{0, 1, 2, 4}, {2, 1, 5, 5}, {4, 2, 5, 6}},
   "0 1 2 3 4 5 6 | 0,1,2,2 0,2,4,4 2,1,5,5 4,2,5,5 4,5,6,6"},
  {"QuadOutsideTheObject", kTriangulateCommand, 1, {{-1, 0, 9, 8}}, "0 | -1,0,9,9 -1,9,8,8"},
  {"TrianglesStay", kTriangulateCommand, 3, {{0, 1, 2, 2}}, "0 1 2 | 0,1,2,2"},
  {"NoPolygonsToTriangulate", kTriangulateCommand, 2, {}, "0 1 |"},
  {"UnusedPointsGo", kRemoveUnusedPointsCommand, 8, {{1, 2, 4, 4}, {6, 4, 1, 2}}, "1 2 4 6 | 0,1,2,2 3,2,0,1"},
  {"PointsUsedFromOutsideStayOutside", kRemoveUnusedPointsCommand, 4, {{3, -5, 4, 4}}, "3 | 0,-5,4,4"},
  {"AllPointsGo", kRemoveUnusedPointsCommand, 3, {}, " |"},
  {"NoPoints", kRemoveUnusedPointsCommand, 0, {{0, 1, 2, 3}}, " | 0,1,2,3"},
};
INSTANTIATE_TEST_SUITE_P(Rows, InPlaceGeometry, testing::ValuesIn(kInPlace), RowName());

class ModelingCommands : public ModelingTest
{};

TEST_F(ModelingCommands, PartIsLikeItsSource)
{
  HeadlessPolygonObject& mesh = AddSample();
  mesh.SetName("mesh"_s);
  mesh.SetRotationOrder(0);
  mesh.SetBase({HostMatrix(Vector{1, 2, 3}, Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}), {1, 1, 1}});
  mesh.SetVectors({{4, 5, 6}, {0.5, 0, 0}, {2, 2, 2}});
  mesh.SetVisibility(kEditorVisibility, kHiddenMode);
  mesh.SetLayer(Scene().GetLayerRoot().Add());
  mesh.SetParameter(77, HostValue(5));
  AddPointTrack(mesh);
  Add("child", ToHost(static_cast<HeadlessObject*>(&mesh)));
  AddSelection(mesh, {{0, 0}});
  HeadlessTag* const texture = HeadlessTag::Create(kTextureTagType);
  texture->SetName("texture"_s);
  texture->InsertInto(&mesh);
  AddColors(mesh, true, 7);

  const HeadlessPolygonObject* const part = Split(mesh);
  ASSERT_TRUE(part);
  EXPECT_EQ(part->GetType(), kPolygonObjectType);
  EXPECT_EQ(Text(part->GetName()), "mesh");
  EXPECT_EQ(part->GetRotationOrder(), 0);
  EXPECT_EQ(part->GetBase(), mesh.GetBase());
  EXPECT_EQ(part->GetVectors(), mesh.GetVectors());
  EXPECT_EQ(part->GetLocalMatrix(), mesh.GetLocalMatrix());
  EXPECT_EQ(part->GetVisibility(kEditorVisibility), kHiddenMode);
  EXPECT_EQ(part->GetLayer(), mesh.GetLayer());
  EXPECT_NE(part->GetTracks()->GetFirst(), nullptr);
  EXPECT_EQ(part->GetDocument(), nullptr);
  EXPECT_EQ(part->GetUp(), nullptr);
  EXPECT_EQ(part->GetDown(), nullptr);
  HostValue parameter;
  EXPECT_TRUE(part->GetParameter(77, parameter) && parameter.GetInt() == 5);
  std::vector<Int32> types;
  for (const HeadlessTag* tag = part->GetFirstTag(); tag; tag = tag->GetNext())
    types.push_back(tag->GetType());
  EXPECT_EQ(types, (std::vector<Int32>{kPolygonSelectionTagType, kTextureTagType, kVertexColorTagType}));
  EXPECT_EQ(Text(part->FindTag(kTextureTagType)->GetName()), "texture");
  EXPECT_EQ(mesh.FindTag(kTextureTagType), texture);
  EXPECT_NE(mesh.GetDown(), nullptr);
}

TEST_F(ModelingCommands, NothingToDoTouchesNothing)
{
  HeadlessPolygonObject& mesh = AddGrid(3, {{0, 1, 2, 2}});
  const auto& corners = AddCorners(mesh, kUvwTagType, 1, false);
  const HeadlessOwner<HeadlessObject> clone(mesh.CloneAlone());
  EXPECT_TRUE(Send(kTriangulateCommand, &mesh));
  EXPECT_TRUE(Send(kRemoveUnusedPointsCommand, &mesh));
  const HeadlessPolygonObject& copy = *clone->AsPolygonObject();
  EXPECT_EQ(mesh.GetPoints().GetR(), copy.GetPoints().GetR());
  EXPECT_EQ(mesh.GetPolygons().GetR(), copy.GetPolygons().GetR());
  EXPECT_EQ(corners.GetHandleR().singles, static_cast<const HeadlessCornerTag*>(copy.FindTag(kUvwTagType))->GetHandleR().singles);
}

TEST_F(ModelingCommands, RefusedWithoutAChange)
{
  HeadlessPolygonObject& mesh = AddSample();
  HeadlessObject* const null = ToHeadless(Add("null"));
  const std::string before = DumpGeometry(mesh);
  ASSERT_TRUE(Split(AddSample()));  // leaves a result to be taken back
  for (const Int32 command : {kSplitPolygonsCommand, kTriangulateCommand, kRemoveUnusedPointsCommand})
  {
    EXPECT_FALSE(Send(command, nullptr)) << command;
    EXPECT_FALSE(Send(command, null)) << command;
    EXPECT_EQ(_data.results, nullptr);
    EXPECT_EQ(_data.resultCount, 0);
  }
  EXPECT_FALSE(Send(0, &mesh));
  _data.mode = 0;
  EXPECT_FALSE(SendModelingCommand(kSplitPolygonsCommand, _data)) << "all polygons";
  mesh.GetPolygonSelection().Clear();
  EXPECT_FALSE(Send(kSplitPolygonsCommand, &mesh)) << "nothing selected";
  mesh.GetPolygonSelection().SelectRange(3, 9);
  EXPECT_FALSE(Send(kSplitPolygonsCommand, &mesh)) << "nothing of the object selected";
  EXPECT_EQ(DumpGeometry(mesh), before);
}

}  // namespace
}  // namespace q7z::test
