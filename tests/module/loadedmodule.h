#pragma once

// The built module as a host meets it: loaded by the platform's loader and reached through its exported names alone. Each
// LoadedModule is a library of its own with fresh state, since it is loaded from a copy of the file.

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"

namespace q7z::test
{

class LoadedModule
{
public:
  LoadedModule()
  {
    static int count = 0;
    _file = std::filesystem::path(Q7Z_TEST_TEMP_DIR) /
            ("io_gltf-" + std::to_string(::getpid()) + "-" + std::to_string(count++) + ".so");
    std::filesystem::copy_file(std::filesystem::path(Q7Z_TEST_BIN_DIR) / "io_gltf.so", _file,
                               std::filesystem::copy_options::overwrite_existing);
    _library = dlopen(_file.c_str(), RTLD_NOW | RTLD_LOCAL);
    std::filesystem::remove(_file);
    if (!_library)
      throw std::runtime_error(dlerror());
    _entry = reinterpret_cast<HostEntryFunction>(dlsym(_library, "q7z_main"));
    hook = static_cast<TarnoHook*>(dlsym(_library, "g_tarno"));
    yield = static_cast<YieldFunction*>(dlsym(_library, "g_CpuYieldDelegate"));
    if (!_entry || !hook || !yield)
      throw std::runtime_error("the module lacks an export");
  }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule() { dlclose(_library); }

  Int32 Send(Int32 message, const void* argument1 = nullptr, void* argument2 = nullptr, const void* argument3 = nullptr)
  {
    return _entry(message, const_cast<void*>(argument1), argument2, const_cast<void*>(argument3));
  }

  TarnoHook* hook = nullptr;
  YieldFunction* yield = nullptr;

private:
  std::filesystem::path _file;
  void* _library = nullptr;
  HostEntryFunction _entry = nullptr;
};

}  // namespace q7z::test
