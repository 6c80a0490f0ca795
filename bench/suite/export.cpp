// Whole saves through the plug-in's entry, from a document in memory to a file, and what the least of them would cost: welding,
// interleaving and writing from plain arrays.

#include "bench/generate/inputs.h"
#include "bench/suite/benchhost.h"
#include "bench/suite/sizes.h"
#include "plugin/document/gltfexportoptions.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <vector>

namespace q7z::bench
{

namespace
{

HeadlessOwner<HeadlessDocument> LoadScene(const generate::GltfFile& file, generate::FileForm form)
{
  const TemporaryFolder folder;
  LoadRequest request;
  request.path = folder.Write(form == generate::FileForm::kGlb ? "input.glb" : "input.gltf", generate::FileBytes(file, form));
  HeadlessOwner<HeadlessDocument> document = GetHost().NewDocument();
  HeadlessJob job;
  if (document && !GetHost().Load(request, *document, job).Succeeded())
    document.reset();
  return document;
}

/// Without morphs, as q7z saves a document that has none.
void SaveScene(benchmark::State& state, const generate::GltfFile& file, generate::FileForm form, Int itemCount)
{
  const HeadlessOwner<HeadlessDocument> document = LoadScene(file, form);
  const TemporaryFolder folder;
  const bool isGlb = form == generate::FileForm::kGlb;
  SaveRequest request;
  request.path = folder / (isGlb ? "output.glb" : "output.gltf");
  request.parameters = {{kFileFormatParameter, HostValue(isGlb ? kGlbFormat : kGltfFormat)},
                        {kExportMorphsParameter, HostValue(false)}};
  for (auto _ : state)
  {
    if (!document || !GetHost().Save(request, *document).Succeeded())
    {
      state.SkipWithError("the scene is not saved");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * itemCount);
}

void BM_ExportGridGlb(benchmark::State& state)
{
  SaveScene(state, generate::MakeGrid(state.range(0)), generate::FileForm::kGlb, state.range(0) * state.range(0));
}
BENCHMARK(BM_ExportGridGlb)->Apply(GridSides)->Unit(benchmark::kMillisecond);

void BM_ExportGridDataUri(benchmark::State& state)
{
  SaveScene(state, generate::MakeGrid(state.range(0)), generate::FileForm::kGltf, state.range(0) * state.range(0));
}
BENCHMARK(BM_ExportGridDataUri)->Apply(GridSides)->Unit(benchmark::kMillisecond);

void BM_ExportNodes(benchmark::State& state)
{
  const Int count = std::min<Int>(state.range(0) * state.range(0), 50000);
  SaveScene(state, generate::MakeNodes(count, 16), generate::FileForm::kGltf, count);
}
BENCHMARK(BM_ExportNodes)->Apply(GridSides)->Unit(benchmark::kMillisecond);

/// A grid as a host holds it.
struct PlainGrid
{
  explicit PlainGrid(int side)
  {
    for (int y = 0; y < side; ++y)
    {
      for (int x = 0; x < side; ++x)
        points.insert(points.end(), {double(x), double(y), 0.1 * ((x + y) % 7)});
    }
    for (int y = 0; y + 1 < side; ++y)
    {
      for (int x = 0; x + 1 < side; ++x)
      {
        const int a = y * side + x;
        AddTriangle(a, a + 1, a + side);
        AddTriangle(a + 1, a + side + 1, a + side);
      }
    }
  }

  std::vector<double> points;         // three each
  std::vector<std::int32_t> corners;  // four a triangle, the last one twice
  std::vector<float> normals;         // three a corner
  std::vector<float> uvs;             // two a corner

private:
  void AddTriangle(int a, int b, int c)
  {
    for (const int corner : {a, b, c, c})
    {
      corners.push_back(corner);
      normals.insert(normals.end(), {0.0F, 0.0F, 1.0F});
      uvs.insert(uvs.end(), {float(corner % 100) / 100, float(corner % 37) / 37});
    }
  }
};

using Vertex = std::array<float, 8>;  // position, normal, UV

/// Each corner becomes a vertex of its own unless its point has one like it: a list of variants for each point.
class Weld
{
public:
  explicit Weld(const PlainGrid& grid) : _grid(grid), _firstVariant(grid.points.size() / 3, -1) {}

  void Run()
  {
    const size_t cornerCount = _grid.corners.size();
    _indices.reserve(cornerCount / 4 * 3);
    _vertices.reserve(_firstVariant.size());
    for (size_t corner = 0; corner < cornerCount; ++corner)
    {
      if (corner % 4 != 3)
        _indices.push_back(FindOrAdd(corner));
    }
  }

  size_t Write(const std::string& path) const
  {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (!file)
      return 0;
    const size_t written = std::fwrite(_indices.data(), sizeof(std::uint32_t), _indices.size(), file) +
                           std::fwrite(_vertices.data(), sizeof(Vertex), _vertices.size(), file);
    std::fclose(file);
    return written;
  }

private:
  std::uint32_t FindOrAdd(size_t corner)
  {
    const size_t point = static_cast<size_t>(_grid.corners[corner]);
    Vertex vertex;
    for (size_t i = 0; i < 3; ++i)
      vertex[i] = static_cast<float>(_grid.points[3 * point + i]);
    std::memcpy(&vertex[3], &_grid.normals[3 * corner], 3 * sizeof(float));
    std::memcpy(&vertex[6], &_grid.uvs[2 * corner], 2 * sizeof(float));
    for (std::int32_t variant = _firstVariant[point]; variant >= 0; variant = _nextVariant[static_cast<size_t>(variant)])
    {
      if (_vertices[static_cast<size_t>(variant)] == vertex)
        return static_cast<std::uint32_t>(variant);
    }
    _nextVariant.push_back(_firstVariant[point]);
    _firstVariant[point] = static_cast<std::int32_t>(_vertices.size());
    _vertices.push_back(vertex);
    return static_cast<std::uint32_t>(_firstVariant[point]);
  }

  const PlainGrid& _grid;
  std::vector<std::int32_t> _firstVariant;  // by point; -1 for none
  std::vector<std::int32_t> _nextVariant;   // by vertex
  std::vector<Vertex> _vertices;
  std::vector<std::uint32_t> _indices;
};

void BM_WeldAndWritePlainGrid(benchmark::State& state)
{
  const PlainGrid grid(static_cast<int>(state.range(0)));
  const TemporaryFolder folder;
  for (auto _ : state)
  {
    Weld weld(grid);
    weld.Run();
    if (weld.Write(folder / "output.bin") == 0)
    {
      state.SkipWithError("the arrays are not written");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(0));
}
BENCHMARK(BM_WeldAndWritePlainGrid)->Apply(GridSides)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace q7z::bench
