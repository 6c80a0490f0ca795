// The smallest host: loads the module, asks for its interface version, and is refused for offering a version too old.
#include <dlfcn.h>

#include <cstdio>

#include "plugin/module/hostregistration.h"
#include "plugin/module/hosttables.h"

int main(int, char** arguments)
{
  void* module = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  const auto entry = module ? reinterpret_cast<q7z::HostEntryFunction>(dlsym(module, "q7z_main")) : nullptr;
  if (!entry)
  {
    std::printf("%s\n", dlerror());
    return 1;
  }
  q7z::HostTables tables;
  tables.version = q7z::kMinimumHostVersion - 1;
  const q7z::Int32 version = entry(q7z::kVersionMessage, nullptr, nullptr, nullptr);
  std::printf("interface %d, too old a host %d\n", version, entry(q7z::kAttachMessage, &tables, nullptr, nullptr));
  return 0;
}
