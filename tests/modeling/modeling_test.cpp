// What the modeling commands make of points, polygons and the data that belongs to them, what they refuse, and what they leave
// untouched.

#include <sstream>

#include "host/modeling/modelingtable.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "tests/host/scenefixture.h"
#include "tests/support/sweep.h"

namespace q7z::test
{
namespace
{

using Polygons = std::vector<HostPolygon>;
using Ranges = std::vector<SelectionRange>;

/// Points of the x first, first + 1, ...
HostArray<Vector> MakePoints(Int32 count, Int32 first)
{
  HostArray<Vector> points;
  EXPECT_TRUE(points.Create(count));
  for (Int32 i = 0; i < count; ++i)
    points.GetW()[i].x = first + i;
  return points;
}

template <typename T>
T& AddTag(HeadlessPolygonObject& mesh, Int32 type, Int32 count = 0)
{
  HeadlessTag* const tag = HeadlessTag::Create(type, count);
  tag->InsertInto(&mesh);
  return static_cast<T&>(*tag);
}

/// Corner c of polygon p has the x 10 p + c.
void AddCorners(HeadlessPolygonObject& mesh, Int32 type, Int32 polygonCount, Bool asDoubles)
{
  const HostCornerHandle handle = AddTag<HeadlessCornerTag>(mesh, type, polygonCount).GetHandleW(asDoubles);
  for (Int32 p = 0; p < polygonCount; ++p)
    handle.Set(p, {{10. * p, 0, 1}, {10. * p + 1, 0, 1}, {10. * p + 2, 0, 1}, {10. * p + 3, 0, 1}});
}

/// Element i has the red 10 i, and 1 more for each further corner.
void AddColors(HeadlessPolygonObject& mesh, Bool perPoint, Int32 count)
{
  auto& tag = AddTag<HeadlessVertexColorTag>(mesh, kVertexColorTagType);
  EXPECT_TRUE(tag.Resize(count, perPoint));
  const Int32 corners = perPoint ? 1 : 4;
  for (Int32 i = 0; i < count * corners; ++i)
    tag.GetHandleW().colors[4 * i] = static_cast<Float32>(i / corners * 10 + i % corners);
}

void AddSelection(HeadlessPolygonObject& mesh, const Ranges& ranges)
{
  auto& tag = AddTag<HeadlessSelectionTag>(mesh, kPolygonSelectionTagType);
  for (const SelectionRange& range : ranges)
    EXPECT_TRUE(tag.GetSelection().SelectRange(range.first, range.last));
}

std::string DumpPoints(const HostArray<Vector>& points)
{
  std::ostringstream text;
  for (Int i = 0; i < points.GetCount(); ++i)
    text << (i ? " " : "") << points.GetR()[i].x;
  return text.str();
}

std::string DumpGeometry(const HeadlessPolygonObject& mesh)
{
  std::ostringstream text;
  text << DumpPoints(mesh.GetPoints()) << " |";
  for (Int i = 0; i < mesh.GetPolygonCount(); ++i)
  {
    const HostPolygon& polygon = mesh.GetPolygons().GetR()[i];
    text << " " << polygon.a << "," << polygon.b << "," << polygon.c << "," << polygon.d;
  }
  return text.str();
}

std::string DumpSelection(const HeadlessSelection& selection)
{
  std::ostringstream text;
  for (const SelectionRange& range : selection.GetRanges())
    text << (text.tellp() ? " " : "") << range.first << "-" << range.last;
  return text.str();
}

template <typename T>
void DumpGroups(std::ostream& text, const T* numbers, Int groupCount, Int groupSize, Int perElement)
{
  for (Int i = 0; i < groupCount; ++i)
    text << (i == 0 ? "" : i % perElement == 0 ? " | " : " ") << numbers[i * groupSize];
}

void DumpTag(std::ostream& text, const HeadlessTag& tag)
{
  if (tag.GetType() == kNormalTagType || tag.GetType() == kUvwTagType)
  {
    const HostCornerHandle corners = static_cast<const HeadlessCornerTag&>(tag).GetHandleR();
    if (corners.doubles)
      DumpGroups(text, corners.doubles, 4 * corners.polygonCount, 3, 4);
    else
      DumpGroups(text, corners.singles, 4 * corners.polygonCount, 3, 4);
  }
  else if (tag.GetType() == kVertexColorTagType)
  {
    const auto& colors = static_cast<const HeadlessVertexColorTag&>(tag);
    const Int each = colors.IsPerPoint() ? 1 : 4;
    DumpGroups(text, colors.GetHandleR().colors, each * colors.GetCount(), 4, each);
  }
  else if (tag.GetType() == kPolygonSelectionTagType)
  {
    text << DumpSelection(static_cast<const HeadlessSelectionTag&>(tag).GetSelection());
  }
  else if (tag.GetType() == kWeightTagType)
  {
    const auto& weights = static_cast<const HeadlessWeightTag&>(tag);
    for (Int32 joint = 0; joint < weights.GetJointCount(); ++joint)
    {
      text << (joint ? "; " : "") << Text(weights.GetJoint(joint)->GetName()) << ":";
      for (const PointWeight& weight : weights.GetWeights(joint))
        text << " " << weight.point << "=" << weight.weight;
    }
  }
  else if (tag.GetType() == kPoseMorphTagType)
  {
    const auto& morphs = static_cast<const HeadlessPoseMorphTag&>(tag);
    for (Int32 i = 0; i < morphs.GetMorphCount(); ++i)
    {
      const HeadlessMorph& morph = *morphs.GetMorph(i);
      text << (i ? "; " : "")
           << (morph.GetObject() ? "-> " + Text(morph.GetObject()->GetName()) : DumpPoints(morph.GetPointNode()->GetPoints()));
    }
  }
  text << "\n";
}

/// Points and polygons, the selection, then a line for each tag and one for the point track.
std::string Dump(const HeadlessPolygonObject& mesh)
{
  std::ostringstream text;
  text << DumpGeometry(mesh) << "\n" << DumpSelection(mesh.GetPolygonSelection()) << "\n";
  for (const HeadlessTag* tag = mesh.GetFirstTag(); tag; tag = tag->GetNext())
    DumpTag(text, *tag);
  if (const HeadlessTrack* const track = mesh.GetTracks()->Find(kPointTrackParameter))
    text << DumpPoints(track->GetCurve()->GetKey(1)->GetPoints()) << "\n";
  return text.str();
}

class Modeling : public SceneTest
{
protected:
  Modeling() { _tables.modeling = &_modeling; }

  HeadlessPolygonObject& AddGrid(Int32 pointCount, const Polygons& polygons, const Ranges& selected = {})
  {
    HeadlessPolygonObject* const mesh = HeadlessPolygonObject::Create(0, static_cast<Int32>(polygons.size()));
    std::copy(polygons.begin(), polygons.end(), mesh->GetPolygonsW());
    mesh->SetGeometry(MakePoints(pointCount, 0), mesh->GetPolygons());
    for (const SelectionRange& range : selected)
      mesh->GetPolygonSelection().SelectRange(range.first, range.last);
    Scene().InsertObjectLast(mesh);
    return *mesh;
  }

  /// 7 points, of which 3 is unused, two of three polygons selected, and data of every kind.
  HeadlessPolygonObject& AddSample()
  {
    HeadlessPolygonObject& other = AddGrid(7, {});
    other.SetName("other"_s);
    HeadlessPolygonObject& small = AddGrid(6, {});
    small.SetName("small"_s);
    HeadlessPolygonObject& mesh = AddGrid(7, {{0, 1, 2, 4}, {2, 1, 5, 5}, {4, 2, 5, 6}}, {{0, 0}, {2, 2}});
    AddCorners(mesh, kNormalTagType, 3, false);
    AddCorners(mesh, kNormalTagType, 2, false);  // too few
    AddCorners(mesh, kUvwTagType, 4, true);      // too many
    AddColors(mesh, false, 3);
    AddColors(mesh, true, 7);
    AddColors(mesh, true, 4);  // too few
    AddSelection(mesh, {{0, 0}, {2, 2}});
    AddSelection(mesh, {{2, INT32_MAX}});
    auto& weights = AddTag<HeadlessWeightTag>(mesh, kWeightTagType);
    weights.AddJoint(&other);
    weights.AddJoint(&small);
    for (const Int32 point : {6, 0, 3, 2})
      EXPECT_TRUE(weights.SetWeight(0, point, point + 1));
    EXPECT_TRUE(weights.SetWeight(1, 5, 6));
    auto& morphs = AddTag<HeadlessPoseMorphTag>(mesh, kPoseMorphTagType);
    morphs.AddMorph()->SetPoints(MakePoints(7, 100));
    EXPECT_TRUE(morphs.AddMorph()->SetObject(&other));
    morphs.AddMorph()->SetPoints(MakePoints(4, 200));  // too few
    EXPECT_TRUE(morphs.AddMorph()->SetObject(&small));
    HeadlessTrack* const track = HeadlessTrack::Create(kPointTrackParameter);
    track->FindOrMakeCurve()->AddKey({0, 1}, nullptr);
    track->GetCurve()->AddKey({1, 1}, nullptr)->SetPoints(MakePoints(7, 300));
    track->InsertInto(&mesh);
    return mesh;
  }

  /// Runs a command with the mode of the polygon selection.
  Bool Send(Int32 command, HeadlessObject* object)
  {
    _data.document = Document();
    _data.object = ToHost(object);
    _data.mode = kPolygonSelectionMode;
    return SendModelingCommand(command, _data);
  }
  /// Runs a command that makes something of the mesh. @return what was split off, which goes with the test.
  const HeadlessPolygonObject* Run(Int32 command, HeadlessPolygonObject& mesh)
  {
    EXPECT_TRUE(Send(command, &mesh));
    EXPECT_EQ(_data.resultCount, command == kSplitPolygonsCommand);
    if (_data.resultCount == 0)
      return nullptr;
    _parts.emplace_back(ToHeadless(_data.results[0])->AsPolygonObject());
    return _parts.back().get();
  }

  HostModelingData _data;

private:
  ModelingTable _modeling;
  std::vector<HeadlessOwner<HeadlessPolygonObject>> _parts;
};

// Every kind of data that belongs to points or polygons follows them.

constexpr Int32 kSplit = kSplitPolygonsCommand;
constexpr Int32 kUnused = kRemoveUnusedPointsCommand;

const std::tuple<Int32, const char*, const char*> kDataRows[] = {
  {kSplit,
   "1 2 3 5 | 1,0,3,3\n\n"
   "10 11 12 13\n10 11 12 13\n10 11 12 13\n"
   "10 11 12 13\n10 | 20 | 30 | 50\n10 | 20 | 30\n"
   "\n\nother: 1=3 2=4; small: 3=6\n"
   "101 102 103 105; 1 2 3 5; 201 202 203; -> small\n"
   "301 302 303 305\n",
   "0 1 2 4 5 6 | 0,1,2,3 3,2,4,5\n0-1\n"
   "0 1 2 3 | 20 21 22 23\n0 1 2 3\n0 1 2 3 | 20 21 22 23\n"
   "0 1 2 3 | 20 21 22 23\n0 | 10 | 20 | 40 | 50 | 60\n0 | 10 | 20\n"
   "0-1\n1-1\nother: 0=1 2=3 5=7; small: 4=6\n"
   "100 101 102 104 105 106; 0 1 2 4 5 6; 200 201 202; -> small\n"
   "300 301 302 304 305 306\n"},
  {kTriangulateCommand,
   "0 1 2 3 4 5 6 | 0,1,2,2 0,2,4,4 2,1,5,5 4,2,5,5 4,5,6,6\n0-1 3-4\n"
   "0 1 2 2 | 0 2 3 3 | 10 11 12 13 | 20 21 22 22 | 20 22 23 23\n"
   "0 1 2 2 | 0 2 3 3 | 10 11 12 13\n"
   "0 1 2 2 | 0 2 3 3 | 10 11 12 13 | 20 21 22 22 | 20 22 23 23\n"
   "0 1 2 2 | 0 2 3 3 | 10 11 12 13 | 20 21 22 22 | 20 22 23 23\n"
   "0 | 10 | 20 | 30 | 40 | 50 | 60\n0 | 10 | 20 | 30\n"
   "0-1 3-4\n3-4\nother: 0=1 2=3 3=4 6=7; small: 5=6\n"
   "100 101 102 103 104 105 106; -> other; 200 201 202 203; -> small\n"
   "300 301 302 303 304 305 306\n",
   ""},
  {kUnused,
   "0 1 2 4 5 6 | 0,1,2,3 2,1,4,4 3,2,4,5\n0-0 2-2\n"
   "0 1 2 3 | 10 11 12 13 | 20 21 22 23\n0 1 2 3 | 10 11 12 13\n"
   "0 1 2 3 | 10 11 12 13 | 20 21 22 23 | 30 31 32 33\n"
   "0 1 2 3 | 10 11 12 13 | 20 21 22 23\n0 | 10 | 20 | 40 | 50 | 60\n0 | 10 | 20\n"
   "0-0 2-2\n2-2147483647\nother: 0=1 2=3 5=7; small: 4=6\n"
   "100 101 102 104 105 106; 0 1 2 4 5 6; 200 201 202; -> small\n"
   "300 301 302 304 305 306\n",
   ""},
};

TEST_F(Modeling, DataFollowsPointsAndPolygons)
{
  for (const auto& [command, left, split] : kDataRows)
  {
    HeadlessPolygonObject& mesh = AddSample();
    const HeadlessPolygonObject* const part = Run(command, mesh);
    EXPECT_EQ(Dump(mesh), left) << command;
    EXPECT_EQ(part ? Dump(*part) : "", split) << command;
  }
}

// Points and polygons alone.

const std::tuple<const char*, Int32, Int32, Polygons, Ranges, const char*, const char*> kGeometryRows[] = {
  {"AllOfThem", kSplit, 5, {{4, 2, 1, 1}, {1, 2, 3, 3}}, {{0, 1}}, "0 |", "1 2 3 4 | 3,1,0,0 0,1,2,2"},
  {"PointsOnBothSides", kSplit, 3, {{0, 1, 2, 2}, {2, 1, 0, 0}}, {{0, 0}}, "0 1 2 | 2,1,0,0", "0 1 2 | 0,1,2,2"},
  {"SelectedBeyond", kSplit, 4, {{0, 1, 2, 2}, {1, 2, 3, 3}}, {{1, INT32_MAX}}, "0 1 2 | 0,1,2,2", "1 2 3 | 0,1,2,2"},
  {"SplitOutside", kSplit, 5, {{-1, 4, 7, 7}, {3, 5, -9, 8}}, {{0, 0}}, "0 1 2 3 | 3,5,-9,8", "4 | -1,0,7,7"},
  {"QuadOutside", kTriangulateCommand, 1, {{-1, 0, 9, 8}}, {}, "0 | -1,0,9,9 -1,9,8,8", ""},
  {"NothingToTriangulate", kTriangulateCommand, 2, {}, {}, "0 1 |", ""},
  {"UsedFromOutside", kUnused, 4, {{3, -5, 4, 4}}, {}, "3 | 0,-5,4,4", ""},
  {"AllPointsGo", kUnused, 3, {}, {}, " |", ""},
  {"NoPoints", kUnused, 0, {{0, 1, 2, 3}}, {}, " | 0,1,2,3", ""},
};

TEST_F(Modeling, GeometryIsAsExpected)
{
  for (const auto& [name, command, pointCount, polygons, selected, left, split] : kGeometryRows)
  {
    HeadlessPolygonObject& mesh = AddGrid(pointCount, polygons, selected);
    const HeadlessPolygonObject* const part = Run(command, mesh);
    EXPECT_EQ(DumpGeometry(mesh), left) << name;
    EXPECT_EQ(part ? DumpGeometry(*part) : "", split) << name;
  }
}

TEST_F(Modeling, PartIsLikeItsSource)
{
  HeadlessPolygonObject& mesh = AddSample();
  mesh.SetName("mesh"_s);
  mesh.SetVectors({{4, 5, 6}, {0.5, 0, 0}, {2, 2, 2}});
  mesh.SetVisibility(kEditorVisibility, kHiddenMode);
  mesh.SetLayer(Scene().GetLayerRoot().Add());
  mesh.SetParameter(77, HostValue(5));
  Add("child", ToHost(static_cast<HeadlessObject*>(&mesh)));
  AddTag<HeadlessTag>(mesh, kTextureTagType).SetName("texture"_s);
  const HeadlessPolygonObject* const part = Run(kSplit, mesh);
  ASSERT_TRUE(part);
  EXPECT_EQ(Text(part->GetName()), "mesh");
  EXPECT_EQ(part->GetVectors(), mesh.GetVectors());
  EXPECT_EQ(part->GetVisibility(kEditorVisibility), kHiddenMode);
  EXPECT_EQ(part->GetLayer(), mesh.GetLayer());
  EXPECT_TRUE(!part->GetDocument() && !part->GetUp() && !part->GetDown());
  EXPECT_EQ(part->GetParameters().Find(77)->GetInt(), 5);
  EXPECT_EQ(Text(part->FindTag(kTextureTagType)->GetName()), "texture");
  EXPECT_TRUE(mesh.GetDown() && mesh.FindTag(kTextureTagType));
}

TEST_F(Modeling, RefusedWithoutAChange)
{
  HeadlessPolygonObject& mesh = AddSample();
  HeadlessObject* const null = ToHeadless(Add("null"));
  const std::string before = DumpGeometry(mesh);
  ASSERT_TRUE(Run(kSplit, AddSample()));  // leaves a result to be taken back
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
  mesh.GetPolygonSelection().SelectRange(3, 9);
  EXPECT_FALSE(Send(kSplitPolygonsCommand, &mesh)) << "nothing of the object selected";
  EXPECT_EQ(DumpGeometry(mesh), before);
}

TEST_F(Modeling, WithoutMemoryTheObjectIsAsItWas)
{
  for (const Int32 command : {kSplitPolygonsCommand, kTriangulateCommand, kRemoveUnusedPointsCommand})
  {
    HeadlessPolygonObject& mesh = AddSample();
    const std::string before = Dump(mesh);
    SweepUntilSuccess([&] { return Send(command, &mesh); }, [&] { EXPECT_EQ(Dump(mesh), before); });
    EXPECT_NE(Dump(mesh), before);
    if (_data.resultCount == 1)
      HostNode::Free(_data.results[0]);
  }
}

}  // namespace
}  // namespace q7z::test
