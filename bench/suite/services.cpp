// The services that a load leans on: parsing JSON and decoding base64.

#include "bench/generate/inputs.h"
#include "bench/suite/sizes.h"
#include "host/services/base64.h"
#include "host/services/headlessjobs.h"
#include "host/services/headlessjson.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <string>

namespace q7z::bench
{

namespace
{

BaseArray<Byte> CopyBytes(const std::string& text)
{
  BaseArray<Byte> bytes;
  DropError(bytes.AppendCopies(reinterpret_cast<const Byte*>(text.data()),
                               static_cast<Int>(text.size())));  // the parse will tell
  return bytes;
}

void ParseText(benchmark::State& state, const std::string& text)
{
  HeadlessJobs jobs;
  HeadlessJson json{&jobs};
  for (auto _ : state)
  {
    state.PauseTiming();
    BaseArray<Byte> bytes = CopyBytes(text);
    state.ResumeTiming();
    const Result<BaseArray<Data>> values = json.ParseBytes(std::move(bytes));
    if (values.HasError() || values.GetValue().IsEmpty())
    {
      state.SkipWithError("the text does not parse");
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<Int>(text.size()));
}

// As many nodes as the grid has vertices, at most 50,000.
void BM_ParseNodes(benchmark::State& state)
{
  const Int count = std::min<Int>(state.range(0) * state.range(0), 50000);
  ParseText(state, generate::FileBytes(generate::MakeNodes(count, 16), generate::FileForm::kGltf));
}
BENCHMARK(BM_ParseNodes)->Apply(GridSides)->Unit(benchmark::kMicrosecond);

// Nearly all of this text is one data URI.
void BM_ParseGridWithDataUri(benchmark::State& state)
{
  ParseText(state, generate::FileBytes(generate::MakeGrid(state.range(0)), generate::FileForm::kGltf));
}
BENCHMARK(BM_ParseGridWithDataUri)->Apply(GridSides)->Unit(benchmark::kMicrosecond);

// 56 bytes a vertex, as the grid has them.
void BM_DecodeBase64(benchmark::State& state)
{
  const std::string bytes(static_cast<size_t>(56 * state.range(0) * state.range(0)), '\x5A');
  HeadlessBase64Encoder encoder;
  const Result<String> text =
    encoder.Encode(String(), reinterpret_cast<const Byte*>(bytes.data()), static_cast<Int>(bytes.size()));
  HeadlessBase64Decoder decoder;
  for (auto _ : state)
  {
    const Result<BaseArray<Byte>> decoded = decoder.Decode(text.GetValue());
    if (decoded.HasError() || decoded.GetValue().GetCount() != static_cast<Int>(bytes.size()))
    {
      state.SkipWithError("the text does not decode");
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * text.GetValue().GetByteCount());
}
BENCHMARK(BM_DecodeBase64)->Apply(GridSides)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace q7z::bench
