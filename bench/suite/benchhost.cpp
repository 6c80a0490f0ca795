#include "bench/suite/benchhost.h"

#include "plugin/module/moduleshell.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace q7z::bench
{

namespace
{

Int32 AnswerMessage(Int32 message, void* argument1, void* argument2, void* argument3)
{
  return AnswerModuleMessage(message, argument1, argument2, argument3);
}

}  // namespace

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

TemporaryFolder::TemporaryFolder()
{
  std::string name = "/tmp/q7z-bench-XXXXXX";
  if (!mkdtemp(name.data()))
    throw std::runtime_error("no temporary folder");
  _path = name;
}

TemporaryFolder::~TemporaryFolder()
{
  std::error_code error;
  std::filesystem::remove_all(_path, error);
}

std::string TemporaryFolder::Write(const std::string& name, const std::string& bytes) const
{
  const std::string path = *this / name;
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fclose(file) != 0)
    throw std::runtime_error("cannot write " + path);
  return path;
}

}  // namespace q7z::bench
