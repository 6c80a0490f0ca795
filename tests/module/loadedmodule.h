#pragma once

// The built module as a host meets it: loaded by the platform's loader and reached through its exported names alone. Each
// LoadedModule is a library of its own with fresh state, since it is loaded from a copy of the file.

#include <filesystem>
#include <stdexcept>
#include <string>

#include "host/platform/platform.h"
#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{

class LoadedModule
{
public:
  LoadedModule()
  {
    const std::string name = std::string("io_gltf") + kLibrarySuffix;
    std::filesystem::copy_file(std::filesystem::path(Q7Z_TEST_BIN_DIR) / name, _folder / name);
    const std::string failure = _library.Load(_folder / name);
    if (!failure.empty())
      throw std::runtime_error(failure);
    _entry = reinterpret_cast<HostEntryFunction>(_library.Find("q7z_main"));
    hook = static_cast<TarnoHook*>(_library.Find("g_tarno"));
    yield = static_cast<YieldFunction*>(_library.Find("g_CpuYieldDelegate"));
    if (!_entry || !hook || !yield)
      throw std::runtime_error("the module lacks an export");
  }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  Int32 Send(Int32 message, const void* argument1 = nullptr, void* argument2 = nullptr, const void* argument3 = nullptr)
  {
    return _entry(message, const_cast<void*>(argument1), argument2, const_cast<void*>(argument3));
  }

  TarnoHook* hook = nullptr;
  YieldFunction* yield = nullptr;

private:
  TestFolder _folder;
  PlatformLibrary _library;
  HostEntryFunction _entry = nullptr;
};

}  // namespace q7z::test
