#include "tests/modeling/modelingfixture.h"

#include <sstream>

namespace q7z::test
{
namespace
{

HostArray<Vector> MakeShape(Int32 count, Int32 first)
{
  HostArray<Vector> points;
  EXPECT_TRUE(points.Create(count));
  Vector* const target = points.GetW();
  for (Int32 i = 0; i < count; ++i)
    target[i].x = first + i;
  return points;
}

}  // namespace

HeadlessPolygonObject& ModelingTest::AddGrid(Int32 pointCount, const std::vector<HostPolygon>& polygons)
{
  HeadlessPolygonObject* const mesh = HeadlessPolygonObject::Create(0, static_cast<Int32>(polygons.size()));
  std::copy(polygons.begin(), polygons.end(), mesh->GetPolygonsW());
  mesh->SetGeometry(MakeShape(pointCount, 0), mesh->GetPolygons());
  Scene().InsertObjectLast(mesh);
  return *mesh;
}

HeadlessPolygonObject& ModelingTest::AddSample()
{
  HeadlessPolygonObject& mesh = AddGrid(7, {{0, 1, 2, 4}, {2, 1, 5, 5}, {4, 2, 5, 6}});
  mesh.GetPolygonSelection().SelectRange(0, 0);
  mesh.GetPolygonSelection().SelectRange(2, 2);
  return mesh;
}

Bool ModelingTest::Send(Int32 command, HeadlessObject* object)
{
  _data.document = Document();
  _data.object = ToHost(object);
  _data.mode = kPolygonSelectionMode;
  return SendModelingCommand(command, _data);
}

HeadlessPolygonObject* ModelingTest::Split(HeadlessPolygonObject& mesh)
{
  if (!Send(kSplitPolygonsCommand, &mesh) || _data.resultCount != 1)
    return nullptr;
  _parts.emplace_back(ToHeadless(_data.results[0])->AsPolygonObject());
  return _parts.back().get();
}

namespace
{

template <typename T>
T& AddTag(HeadlessPolygonObject& mesh, Int32 type, Int32 count = 0)
{
  HeadlessTag* const tag = HeadlessTag::Create(type, count);
  tag->InsertInto(&mesh);
  return static_cast<T&>(*tag);
}

/// The numbers of all corners, or of all points, of which each begins a group of numbers that rise by a quarter.
template <typename T>
std::string DumpGroups(const T* numbers, Int groupCount, Int groupSize, Int perElement)
{
  std::ostringstream text;
  for (Int i = 0; i < groupCount; ++i)
  {
    text << (i == 0 ? "" : i % perElement == 0 ? " | " : " ") << numbers[i * groupSize];
    for (Int k = 1; k < groupSize; ++k)
      EXPECT_EQ(numbers[i * groupSize + k], numbers[i * groupSize] + T(k) / 4) << "group " << i;
  }
  return text.str();
}

template <typename T>
void FillGroups(T* numbers, Int groupCount, Int groupSize, Int perElement)
{
  for (Int i = 0; i < groupCount * groupSize; ++i)
  {
    const Int group = i / groupSize;
    const Int number = group / perElement * (perElement == 4 ? 10 : 1) + group % perElement;
    numbers[i] = T(number) + T(i % groupSize) / 4;
  }
}

std::string DumpWeights(const HeadlessWeightTag& tag)
{
  std::ostringstream text;
  for (Int32 joint = 0; joint < tag.GetJointCount(); ++joint)
  {
    text << (joint ? "; " : "") << Text(tag.GetJoint(joint)->GetName()) << ":";
    for (const PointWeight& weight : tag.GetWeights(joint))
      text << " " << weight.point << "=" << weight.weight;
  }
  return text.str();
}

std::string DumpMorphs(const HeadlessPoseMorphTag& tag)
{
  std::string text;
  for (Int32 i = 0; i < tag.GetMorphCount(); ++i)
  {
    const HeadlessMorph& morph = *tag.GetMorph(i);
    text += i ? "; " : "";
    text += morph.GetObject() ? "-> " + Text(morph.GetObject()->GetName()) : DumpPoints(morph.GetPointNode()->GetPoints());
  }
  return text;
}

std::string DumpTag(const HeadlessTag& tag)
{
  switch (tag.GetType())
  {
    case kNormalTagType:
    case kUvwTagType:
    {
      const HostCornerHandle corners = static_cast<const HeadlessCornerTag&>(tag).GetHandleR();
      return corners.doubles ? DumpGroups(corners.doubles, 4 * corners.polygonCount, 3, 4)
                             : DumpGroups(corners.singles, 4 * corners.polygonCount, 3, 4);
    }
    case kVertexColorTagType:
    {
      const auto& colors = static_cast<const HeadlessVertexColorTag&>(tag);
      const Int each = colors.IsPerPoint() ? 1 : 4;
      return DumpGroups(colors.GetHandleR().colors, each * colors.GetCount(), 4, each);
    }
    case kPolygonSelectionTagType: return DumpSelection(static_cast<const HeadlessSelectionTag&>(tag).GetSelection());
    case kWeightTagType: return DumpWeights(static_cast<const HeadlessWeightTag&>(tag));
    case kPoseMorphTagType: return DumpMorphs(static_cast<const HeadlessPoseMorphTag&>(tag));
    default: return "";
  }
}

}  // namespace

HeadlessCornerTag& AddCorners(HeadlessPolygonObject& mesh, Int32 type, Int32 polygonCount, Bool asDoubles)
{
  auto& tag = AddTag<HeadlessCornerTag>(mesh, type, polygonCount);
  const HostCornerHandle corners = tag.GetHandleW(asDoubles);
  if (asDoubles)
    FillGroups(corners.doubles, 4 * Int(polygonCount), 3, 4);
  else
    FillGroups(corners.singles, 4 * Int(polygonCount), 3, 4);
  return tag;
}

void AddColors(HeadlessPolygonObject& mesh, Bool perPoint, Int32 count)
{
  auto& tag = AddTag<HeadlessVertexColorTag>(mesh, kVertexColorTagType);
  EXPECT_TRUE(tag.Resize(count, perPoint));
  const Int each = perPoint ? 1 : 4;
  FillGroups(tag.GetHandleW().colors, each * count, 4, each);
}

void AddSelection(HeadlessPolygonObject& mesh, std::initializer_list<SelectionRange> ranges)
{
  auto& tag = AddTag<HeadlessSelectionTag>(mesh, kPolygonSelectionTagType);
  for (const SelectionRange& range : ranges)
    EXPECT_TRUE(tag.GetSelection().SelectRange(range.first, range.last));
}

void AddWeights(HeadlessPolygonObject& mesh, HeadlessObject* jointA, HeadlessObject* jointB)
{
  auto& tag = AddTag<HeadlessWeightTag>(mesh, kWeightTagType);
  tag.AddJoint(jointA);
  tag.AddJoint(jointB);
  for (const Int32 point : {6, 0, 3, 2})
    EXPECT_TRUE(tag.SetWeight(0, point, point + 1));
  EXPECT_TRUE(tag.SetWeight(1, 5, 6));
}

void AddMorphs(HeadlessPolygonObject& mesh, Int32 ownCount, HeadlessPolygonObject& target)
{
  auto& tag = AddTag<HeadlessPoseMorphTag>(mesh, kPoseMorphTagType);
  tag.AddMorph()->SetPoints(MakeShape(ownCount, 100));
  EXPECT_TRUE(tag.AddMorph()->SetObject(&target));
}

void AddPointTrack(HeadlessPolygonObject& mesh)
{
  HeadlessTrack* const track = HeadlessTrack::Create(kPointTrackParameter);
  HeadlessCurve& curve = *track->FindOrMakeCurve();
  curve.AddKey({0, 1}, nullptr);
  curve.AddKey({1, 1}, nullptr)->SetPoints(MakeShape(mesh.GetPointCount(), 300));
  track->InsertInto(&mesh);
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

std::string DumpData(const HeadlessPolygonObject& mesh)
{
  std::string text;
  for (const HeadlessTag* tag = mesh.GetFirstTag(); tag; tag = tag->GetNext())
    text += (text.empty() ? "" : "\n") + DumpTag(*tag);
  if (const HeadlessTrack* const track = mesh.GetTracks()->Find(kPointTrackParameter))
    text += DumpPoints(track->GetCurve()->GetKey(1)->GetPoints());
  return text;
}

}  // namespace q7z::test
