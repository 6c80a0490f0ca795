// Whole imports through the plug-in's entry, from a file to a document, the document's end included.

#include "bench/generate/inputs.h"
#include "bench/suite/benchhost.h"
#include "bench/suite/sizes.h"

#include <algorithm>
#include <benchmark/benchmark.h>

namespace q7z::bench
{

namespace
{

void ImportFile(benchmark::State& state, const generate::GltfFile& file, generate::FileForm form, Int itemCount)
{
  const std::string bytes = generate::FileBytes(file, form);
  const TemporaryFolder folder;
  LoadRequest request;
  request.path = folder.Write(form == generate::FileForm::kGlb ? "input.glb" : "input.gltf", bytes);
  for (auto _ : state)
  {
    HeadlessOwner<HeadlessDocument> document = GetHost().NewDocument();
    HeadlessJob job;
    if (!document || !GetHost().Load(request, *document, job).Succeeded())
    {
      state.SkipWithError("the file does not load");
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<Int>(bytes.size()));
  state.SetItemsProcessed(state.iterations() * itemCount);
}

void BM_ImportGridGlb(benchmark::State& state)
{
  ImportFile(state, generate::MakeGrid(state.range(0)), generate::FileForm::kGlb, state.range(0) * state.range(0));
}
BENCHMARK(BM_ImportGridGlb)->Apply(GridSides)->Unit(benchmark::kMillisecond);

void BM_ImportGridDataUri(benchmark::State& state)
{
  ImportFile(state, generate::MakeGrid(state.range(0)), generate::FileForm::kGltf, state.range(0) * state.range(0));
}
BENCHMARK(BM_ImportGridDataUri)->Apply(GridSides)->Unit(benchmark::kMillisecond);

void BM_ImportNodes(benchmark::State& state)
{
  const Int count = std::min<Int>(state.range(0) * state.range(0), 50000);
  ImportFile(state, generate::MakeNodes(count, 16), generate::FileForm::kGltf, count);
}
BENCHMARK(BM_ImportNodes)->Apply(GridSides)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace q7z::bench
