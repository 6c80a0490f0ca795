#pragma once

// MeshExport: a polygon object made by hand, what is collected from it, and its values read back from the bytes.

#include <initializer_list>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/geometry/gltfmeshexport.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

/// What came of one call.
struct CollectedMesh
{
  MeshData record;
  GltfBuffer buffer;
  BaseArray<Vector> positions;  ///< given to targets
  std::string error = "no error";

  /// The components of all elements, one element after the other. What lies outside of the view or the buffer is missing.
  std::vector<Float> Read(const MeshAccessor& attribute, const GltfBufferView& view) const;
  std::vector<Float> Indices() const { return Read(record.indices, record.indexView); }
  std::vector<Float> Positions() const { return Read(record.positions, record.vertexView); }
  std::vector<Float> Normals() const { return Read(record.normals, record.vertexView); }
  std::vector<Float> Uvs() const { return Read(record.uvs, record.vertexView); }
  std::vector<Float> Colors() const { return Read(record.polygonColors, record.vertexView); }
  std::vector<Float> VertexColors() const { return Read(record.vertexColors, record.colorView); }
  std::vector<Float> Joints() const { return Read(record.joints, record.jointView); }
  std::vector<Float> Weights() const { return Read(record.weights, record.weightView); }
};

/// The bounds that a file would have.
std::vector<Float> Min(const MeshAccessor& attribute);
std::vector<Float> Max(const MeshAccessor& attribute);

class MeshExport : public testing::Test
{
protected:
  MeshExport();

  HostPolygonObject* Make(const std::vector<Vector>& points, const std::vector<HostPolygon>& polygons);
  /// (0 1 2) and (2 1 3) in the plane z = 0.
  HostPolygonObject* MakeQuad();

  // Tags; data for fewer polygons than the object has is allowed.
  static void AddNormals(HostPolygonObject* op, const std::vector<HostCorners>& corners, Bool asDoubles = false);
  static void AddUvs(HostPolygonObject* op, const std::vector<HostCorners>& corners);
  static HostVertexColorTag* AddColors(HostPolygonObject* op, Bool perPoint);
  static HostTag* AddTexture(HostPolygonObject* op);
  HostObject* AddJoint(Int32 type = kJointObjectType);

  CollectedMesh Collect(HostPolygonObject* op);
  CollectedMesh CollectTarget(HostPolygonObject* op, const std::vector<Vector>& points, const CollectedMesh& mesh);

  HostDocument* Document() { return _host.Document(); }

  ExportOptions _options;  ///< without the mirror and without morphs, so that vertices are shared

private:
  TestHost _host;
};

}  // namespace q7z::test
