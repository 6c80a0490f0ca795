#include "tests/host/servicesmodule.h"

#include <new>

#include "plugin/module/hostconsole.h"

namespace q7z::test
{

namespace
{

FakeModule* g_module = nullptr;

constexpr Int32 kLoaderId = 1060210;

class FakeLoader final : public HostSceneLoader
{
public:
  ~FakeLoader() override { GetFakeModule().Record("~loader"); }
  Bool Init(HostNode* node) noexcept override
  {
    GetFakeModule().Record("init");
    HostContainer* const options = GetFakeModule().tables->node->GetContainer(node);
    return GetFakeModule().initSucceeds && GetFakeModule().tables->container->Set(options, 1, HostValue(Int32(11))) &&
           GetFakeModule().tables->container->Set(options, 2, HostValue(Int32(22)));
  }
  Bool GetDescription(HostNode*, HostDescription*, Int32&) noexcept override { return true; }
  Bool GetEnabling(HostNode*, const HostDescId&) noexcept override { return true; }
  Bool Identify(HostNode*, const HostFilename& name, const Byte* probe, Int32 probeSize) noexcept override
  {
    if (GetFakeModule().recordsCalls)
      GetFakeModule().Record("identify ", std::string(reinterpret_cast<const char*>(probe), static_cast<size_t>(probeSize)));
    return name.GetPath().GetView().ends_with(GetFakeModule().suffix);
  }
  Int32 Load(HostNode* node, const HostFilename& name, HostDocument*, Int32 flags, String* error) noexcept override
  {
    GetFakeModule().Record("load ", std::to_string(flags));
    HostContainer* const options = GetFakeModule().tables->node->GetContainer(node);
    return GetFakeModule().onLoad ? GetFakeModule().onLoad(name, options, error) : 0;
  }
};

}  // namespace

FakeModule& GetFakeModule()
{
  return *g_module;
}

FakeModule::FakeModule()
{
  _entries[0] = {"g_first"_s, ""_s, 1, &firstSwitch, 0};
  _entries[1] = {"g_second"_s, ""_s, 1, &secondSwitch, 0};
  hook.configVariables = _entries;
  hook.configVariableCount = 2;
  g_module = this;
}

FakeModule::~FakeModule()
{
  g_module = nullptr;
}

std::unique_ptr<HeadlessHost> FakeModule::Start(std::string& error, HostSettings settings)
{
  if (settings.pluginPath.empty())
    settings.pluginPath = "folder/fake.so";
  if (settings.resourceFolder.empty())
    settings.resourceFolder = Q7Z_TEST_SOURCE_DIR "/plugin/resources";
  return HeadlessHost::CreateWithModule(settings, Hooks(), error);
}

void FakeModule::Record(const char* call, const std::string& detail)
{
  if (recordsCalls)
    calls.push_back(call + detail);
}

bool FakeModule::Register()
{
  HostRegistrationTable& registration = *tables->registration;
  const String name = tables->resource->GetString(10000);
  const HostPluginRecord loader = {kSceneLoaderKind,
                                   kLoaderId,
                                   name,
                                   0,
                                   "fgltfimporter"_s,
                                   String(),
                                   []() -> HostPluginInstance*
                                   { return GetFakeModule().makesInstances ? new (std::nothrow) FakeLoader : nullptr; }};
  return registration.RegisterDescription(loader.id, loader.description) && registration.RegisterPlugin(loader);
}

Int32 FakeModule::Answer(Int32 message, void* argument1, void* argument2, void* argument3)
{
  FakeModule& self = GetFakeModule();
  self.calls.push_back(std::to_string(message));
  if (message == self.refusedMessage)
    return message == kStartMessage ? 0 : -1;
  if (message == kAttachMessage)
  {
    // What must stand before the first message.
    EXPECT_TRUE(self.hook.services);
    self.tables = static_cast<const HostTables*>(argument1);
    self.path = static_cast<const HostFilename*>(argument3)->GetPath().GetView();
  }
  if (message == kResourceMessage)
  {
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(argument1), 1);
    if (!self.tables->resource->Load())
      return -1;
    static_cast<HostResourceRecord*>(argument2)->pointer = nullptr;
  }
  return message == kStartMessage ? self.Register() : 1;
}

}  // namespace q7z::test
