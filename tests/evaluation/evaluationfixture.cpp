#include "tests/evaluation/evaluationfixture.h"

#include <algorithm>

namespace q7z::test
{

HeadlessCurve& EvaluationTest::AddTrack(HeadlessNode& node, const HostDescId& id, std::initializer_list<TimedValue> keys,
                                        InterpolationMode mode)
{
  HeadlessTrack* const track = HeadlessTrack::Create(id);
  track->InsertInto(&node);
  HeadlessCurve& curve = *track->FindOrMakeCurve();
  for (const TimedValue& key : keys)
  {
    HeadlessKey* const added = curve.AddKey({key.seconds, 1}, nullptr);
    added->SetValue(key.value);
    added->SetInterpolation(mode);
  }
  return curve;
}

HeadlessObject& EvaluationTest::AddObject(const char* name, HeadlessObject* parent, Int32 type)
{
  return *ToHeadless(Add(name, ToHost(parent), type));
}

HeadlessPolygonObject& EvaluationTest::AddPoints(std::initializer_list<Vector> points)
{
  return *ToHeadless(AddMesh(points, {}));
}

HostArray<Vector> EvaluationTest::MakeArray(std::initializer_list<Vector> points)
{
  HostArray<Vector> array;
  EXPECT_TRUE(array.Create(static_cast<Int>(points.size())));
  std::copy(points.begin(), points.end(), array.GetW());
  return array;
}

std::vector<Vector> EvaluationTest::PointsOf(const HeadlessObject& object)
{
  const HostArray<Vector>& points = object.AsPolygonObject()->GetPoints();
  return {points.GetR(), points.GetR() + points.GetCount()};
}

HostMatrix EvaluationTest::Offset(const Vector& offset)
{
  HostMatrix matrix;
  matrix.offset = offset;
  return matrix;
}

}  // namespace q7z::test
