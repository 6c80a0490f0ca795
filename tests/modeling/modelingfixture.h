#pragma once

// ModelingTest: the scene with the modeling commands, and a mesh to try them on, written down as text before and after.

#include "host/modeling/modelingtable.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "tests/host/scenefixture.h"

namespace q7z::test
{

class ModelingTest : public SceneTest
{
protected:
  ModelingTest() { _tables.modeling = &_modeling; }

  /// Points of the x 0, 1, 2, ... and these polygons, last at top level.
  HeadlessPolygonObject& AddGrid(Int32 pointCount, const std::vector<HostPolygon>& polygons);
  /// 7 points, of which 3 is unused; the polygons (0 1 2 4), (2 1 5 5) and (4 2 5 6), of which the first and the last are
  /// selected.
  HeadlessPolygonObject& AddSample();

  /// Runs a command with the mode of the polygon selection.
  Bool Send(Int32 command, HeadlessObject* object);
  /// Splits and gives the part to the test; null when that failed.
  HeadlessPolygonObject* Split(HeadlessPolygonObject& mesh);

  HostModelingData _data;

private:
  ModelingTable _modeling;
  std::vector<HeadlessOwner<HeadlessPolygonObject>> _parts;
};

// Data to add to the sample. Corner c of polygon p has the number 10 p + c, point i the number i (+ 100, 200, 300 in shapes).
HeadlessCornerTag& AddCorners(HeadlessPolygonObject& mesh, Int32 type, Int32 polygonCount, Bool asDoubles);
void AddColors(HeadlessPolygonObject& mesh, Bool perPoint, Int32 count);
void AddSelection(HeadlessPolygonObject& mesh, std::initializer_list<SelectionRange> ranges);
/// Joint A has weights of the points 0, 2, 3 and 6, joint B of point 5: one more than the point's number.
void AddWeights(HeadlessPolygonObject& mesh, HeadlessObject* jointA, HeadlessObject* jointB);
/// A shape of its own with ownCount points from 100 on, and a link to the target.
void AddMorphs(HeadlessPolygonObject& mesh, Int32 ownCount, HeadlessPolygonObject& target);
/// A key without points, and one that stores points from 300 on.
void AddPointTrack(HeadlessPolygonObject& mesh);

/// "0 1 2 4": the x of points.
std::string DumpPoints(const HostArray<Vector>& points);
/// "0 1 2 | 0,1,2,2": points and polygons.
std::string DumpGeometry(const HeadlessPolygonObject& mesh);
std::string DumpSelection(const HeadlessSelection& selection);
/// The data of the mesh's tags and of its point track, tag by tag.
std::string DumpData(const HeadlessPolygonObject& mesh);

}  // namespace q7z::test
