// q7z_bench [--tiny | GOOGLE BENCHMARK'S OPTIONS]: how fast the parts of an import and an export are, with inputs made in memory.
// With --tiny each benchmark runs once with its smallest size, to see that it works.

#include "bench/suite/revision.h"
#include "bench/suite/sizes.h"
#include "host/platform/process.h"

#include <benchmark/benchmark.h>
#include <string>
#include <string_view>
#include <vector>

int main(int argc, char** argv)
{
  std::vector<std::string> words(argv, argv + argc);
  if (argc == 2 && words[1] == "--tiny")
    words = {words[0], "--benchmark_min_time=0", "--benchmark_filter=:" + std::to_string(q7z::bench::kTinySide) + "$"};
  std::vector<char*> arguments;
  for (std::string& word : words)
    arguments.push_back(word.data());
  int count = static_cast<int>(arguments.size());

  q7z::StartFetchingPages();  // as q7z does
  benchmark::AddCustomContext("compiler", Q7Z_COMPILER);
  benchmark::AddCustomContext("build type", Q7Z_BUILD_TYPE);
  benchmark::AddCustomContext("revision", q7z::bench::kRevision);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
    return 2;
  const bool ran = benchmark::RunSpecifiedBenchmarks() > 0;
  benchmark::Shutdown();
  return ran ? 0 : 1;
}
