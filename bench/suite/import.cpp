// Whole imports through the plug-in's entry, from a file to a document, the document's end included.

#include "bench/generate/inputs.h"
#include "bench/suite/sizes.h"
#include "host/headlesshost.h"
#include "plugin/module/moduleshell.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace q7z::bench
{

namespace
{

Int32 AnswerMessage(Int32 message, void* argument1, void* argument2, void* argument3)
{
  return AnswerModuleMessage(message, argument1, argument2, argument3);
}

HeadlessHost& GetHost()
{
  static const std::unique_ptr<HeadlessHost> host = []
  {
    HostSettings settings;
    settings.pluginPath = "io_gltf.so";
    settings.resourceFolder = Q7Z_BENCH_SOURCE_DIR "/plugin/resources";
    std::string error;
    auto made = HeadlessHost::CreateWithModule(settings, {AnswerMessage, &g_tarno, &g_CpuYieldDelegate}, error);
    if (!made)
      throw std::runtime_error(error);
    return made;
  }();
  return *host;
}

class TemporaryFile
{
public:
  TemporaryFile(const std::string& bytes, const std::string& suffix)
  {
    std::string name = "/tmp/q7z-bench-XXXXXX";
    if (!mkdtemp(name.data()))
      throw std::runtime_error("no temporary folder");
    _folder = name;
    _path = _folder + "/input." + suffix;
    std::FILE* const file = std::fopen(_path.c_str(), "wb");
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fclose(file) != 0)
      throw std::runtime_error("cannot write " + _path);
  }
  ~TemporaryFile()
  {
    unlink(_path.c_str());
    rmdir(_folder.c_str());
  }
  const std::string& GetPath() const { return _path; }

private:
  std::string _folder;
  std::string _path;
};

void ImportFile(benchmark::State& state, const generate::GltfFile& file, generate::FileForm form, Int itemCount)
{
  const std::string bytes = generate::FileBytes(file, form);
  const TemporaryFile input(bytes, form == generate::FileForm::kGlb ? "glb" : "gltf");
  LoadRequest request;
  request.path = input.GetPath();
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
