#pragma once

// A gently waving square surface, told row by row, so that one of millions of vertices takes no more memory than its edges.
// Benchmark inputs with much geometry are made of these.

#include "samples/generate/gltffile.h"
#include "samples/generate/primitive.h"

#include <array>
#include <vector>

namespace q7z::generate
{

class Heightfield
{
public:
  /// @param side    vertices along an edge, 2 or more
  /// @param center  of the surface, in metres; it is 10 m wide
  /// @param start   the phases of the waves follow from it
  Heightfield(Int side, const std::array<Float, 3>& center, UInt start);

  Int GetVertexCount() const { return _side * _side; }
  Int GetIndexCount() const { return (_side - 1) * (_side - 1) * 6; }

  /// Vertices stand row after row. Positions are three floats each, normals of length 1 too, texture coordinates two in 0 to 1.
  void WritePositions(ByteSink& target) const;
  void WriteNormals(ByteSink& target) const;
  void WriteUvs(ByteSink& target) const;

  /// Two triangles for each cell, as indices of 32 bits or of 16, which must hold the largest one.
  void WriteWideIndices(ByteSink& target) const;
  void WriteNarrowIndices(ByteSink& target) const;

private:
  // The surface is the sum of a wave along each axis and their product, so heights and slopes come from two tables.
  struct Wave
  {
    Float height = 0;
    Float slope = 0;
  };
  std::vector<Wave> MakeWaves(UInt start) const;
  template <typename Index>
  void WriteIndices(ByteSink& target) const;
  Float Place(Int i) const;  // of a row or column, from the surface's center

  Int _side = 0;
  std::array<Float, 3> _center{};
  std::vector<Wave> _columns;
  std::vector<Wave> _rows;
};

/// Adds the surface's accessors to the file; indices are of 32 bits where wanted or needed, else of 16.
Primitive AddHeightfield(GltfFile& file, Heightfield surface, bool wideIndices);

}  // namespace q7z::generate
