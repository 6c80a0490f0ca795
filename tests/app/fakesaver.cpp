// A plug-in with nothing but a saver, which does what the environment variable Q7Z_FAKE_SAVE says: a number is its answer; "large"
// writes a GLB file whose JSON declares more than the file's words can tell.

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <string>

#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"

using namespace q7z;

namespace
{

constexpr char kLargeFile[] = "glTF\x02\0\0\0\x44\0\0\0\x24\0\0\0JSON"
                              R"({"buffers":[{"byteLength":4294967300}]})";

class FakeSaver final : public HostSceneSaver
{
public:
  Bool Init(HostNode*) noexcept override { return true; }
  Bool GetDescription(HostNode*, HostDescription*, Int32&) noexcept override { return true; }
  Bool GetEnabling(HostNode*, const HostDescId&) noexcept override { return true; }
  Int32 Save(HostNode*, const HostFilename& name, HostDocument*, Int32) noexcept override
  {
    const char* const what = std::getenv("Q7Z_FAKE_SAVE");
    if (!what || std::strcmp(what, "large") != 0)
      return what ? std::atoi(what) : 0;
    std::ofstream(std::string(name.GetPath().GetView()), std::ios::binary).write(kLargeFile, sizeof(kLargeFile) - 1);
    return 0;
  }
};

Bool Register(const HostTables& tables)
{
  HostPluginRecord record;
  record.kind = kSceneSaverKind;
  record.id = 1041129;
  record.factory = []() -> HostPluginInstance* { return new (std::nothrow) FakeSaver; };
  return tables.registration->RegisterPlugin(record);
}

}  // namespace

#define EXPORT __attribute__((visibility("default")))

extern "C"
{

EXPORT YieldFunction g_CpuYieldDelegate = nullptr;
EXPORT TarnoHook g_tarno;

EXPORT Int32 q7z_main(Int32 message, void* argument1, void*, void*) noexcept
{
  static const HostTables* tables = nullptr;
  if (message == kAttachMessage)
    tables = static_cast<const HostTables*>(argument1);
  return message == kStartMessage ? Register(*tables) : 1;
}

}  // extern "C"
