// HeadlessHost as its users see it: how it starts a module and drives it, what a load reports, and what is refused with which words.

#include <functional>
#include <new>

#include "host/headlesshost.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostdialog.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostfile.h"
#include "plugin/module/hostmaterial.h"
#include "tests/host/servicesupport.h"
#include "tests/support/sweep.h"

namespace q7z::test
{

namespace
{

using Calls = std::vector<std::string>;

/// Its entry records the messages, registers a loader and answers as the test wants. One at a time.
class FakeModule
{
public:
  FakeModule()
  {
    _entries[0] = {"g_first"_s, ""_s, 1, &firstSwitch, 0};
    _entries[1] = {"g_second"_s, ""_s, 1, &secondSwitch, 0};
    hook.configVariables = _entries;
    hook.configVariableCount = 2;
    _current = this;
  }

  ModuleHooks Hooks() { return {Answer, &hook, &yield}; }
  /// A host around it, with the shipped resources.
  std::unique_ptr<HeadlessHost> Start(std::string& error, HostSettings settings = {})
  {
    if (settings.pluginPath.empty())
      settings.pluginPath = "folder/fake.so";
    settings.resourceFolder = Q7Z_TEST_SOURCE_DIR "/plugin/resources";
    return HeadlessHost::CreateWithModule(settings, Hooks(), error);
  }
  template <typename Service>
  Service* Find()
  {
    return static_cast<Service*>(hook.services->Find(Service::kId));
  }
  void Record(const char* call, const std::string& detail = "")
  {
    if (recordsCalls)
      calls.push_back(call + detail);
  }

  Calls calls;  // messages, and what was called of the loader
  bool recordsCalls = true;
  int refusedMessage = 0;
  bool makesInstances = true;
  bool initSucceeds = true;
  /// The work of a load: given the name and the loader's options. Its answer is what Load returns.
  std::function<Int32(const HostFilename& name, HostContainer* options, String* error)> onLoad;

  const HostTables* tables = nullptr;
  std::string path;  // of the module, as told with the attach message
  TarnoHook hook;
  YieldFunction yield = nullptr;
  bool firstSwitch = false;
  bool secondSwitch = false;

private:
  static Int32 Answer(Int32 message, void* argument1, void* argument2, void* argument3);
  bool Register();
  static inline FakeModule* _current = nullptr;
  ConfigVariableEntry _entries[2];
};

class FakeLoader final : public HostSceneLoader
{
public:
  explicit FakeLoader(FakeModule& module) : _module(module) {}
  ~FakeLoader() override { _module.Record("~loader"); }
  Bool Init(HostNode* node) noexcept override
  {
    _module.Record("init");
    HostContainer* const options = _module.tables->node->GetContainer(node);
    return _module.initSucceeds && _module.tables->container->Set(options, 1, HostValue(Int32(11))) &&
           _module.tables->container->Set(options, 2, HostValue(Int32(22)));
  }
  Bool GetDescription(HostNode*, HostDescription*, Int32&) noexcept override { return true; }
  Bool GetEnabling(HostNode*, const HostDescId&) noexcept override { return true; }
  Bool Identify(HostNode*, const HostFilename& name, const Byte* probe, Int32 probeSize) noexcept override
  {
    if (_module.recordsCalls)
      _module.Record("identify ", std::string(reinterpret_cast<const char*>(probe), static_cast<size_t>(probeSize)));
    return name.GetPath().GetView().ends_with(".gltf");
  }
  Int32 Load(HostNode* node, const HostFilename& name, HostDocument*, Int32 flags, String* error) noexcept override
  {
    _module.Record("load ", std::to_string(flags));
    HostContainer* const options = _module.tables->node->GetContainer(node);
    return _module.onLoad ? _module.onLoad(name, options, error) : 0;
  }

private:
  FakeModule& _module;
};

bool FakeModule::Register()
{
  HostRegistrationTable& registration = *tables->registration;
  const String name = tables->resource->GetString(10000);
  const HostPluginRecord loader = {kSceneLoaderKind,
                                   1060210,
                                   name,
                                   0,
                                   "fgltfimporter"_s,
                                   String(),
                                   []() -> HostPluginInstance*
                                   { return _current->makesInstances ? new (std::nothrow) FakeLoader(*_current) : nullptr; }};
  return registration.RegisterDescription(loader.id, loader.description) && registration.RegisterPlugin(loader);
}

Int32 FakeModule::Answer(Int32 message, void* argument1, void* argument2, void* argument3)
{
  FakeModule& self = *_current;
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

class HostFacade : public testing::Test
{
protected:
  /// Starts the module and makes a document.
  void Start(HostSettings settings = {})
  {
    std::string error;
    host = module.Start(error, std::move(settings));
    ASSERT_TRUE(host) << error;
    document = host->NewDocument();
    ASSERT_TRUE(document);
    module.calls.clear();
  }
  void End()
  {
    document.reset();
    host.reset();
  }
  LoadReport Load(const LoadRequest& request)
  {
    job = std::make_unique<HeadlessJob>();
    return host->Load(request, *document, *job);
  }
  LoadReport Load(const std::string& path)
  {
    LoadRequest request;
    request.path = path;
    return Load(request);
  }
  /// Sends the event that a load ends with.
  void SendEvent(std::initializer_list<std::pair<const char*, const char*>> entries)
  {
    DataDictionary event;
    for (const auto& [name, value] : entries)
      EXPECT_FALSE(event.Set(DataKey(MakeString(name)), MakeString(value)).HasError());
    EXPECT_FALSE(module.Find<HostUsageReport>()->Send("net.tarno.analytics.exchange"_s, event).HasError());
  }

  TestFolder folder;
  FakeModule module;
  std::unique_ptr<HeadlessHost> host;
  HeadlessOwner<HeadlessDocument> document;  // goes before the host
  std::unique_ptr<HeadlessJob> job;
};

TEST_F(HostFacade, SendsTheMessagesInOrder)
{
  std::string error;
  host = module.Start(error);
  ASSERT_TRUE(host) << error;
  EXPECT_EQ(module.calls, (Calls{"1", "6", "2"}));
  EXPECT_EQ(module.path, "folder/fake.so");
  EXPECT_EQ(module.tables->version, 2025100u);
  EXPECT_EQ(host->GetRegisteredIds(), std::vector<int>{1060210});
  host.reset();
  EXPECT_EQ(module.calls, (Calls{"1", "6", "2", "3"}));
  EXPECT_FALSE(module.hook.services);
}

TEST_F(HostFacade, NamesThePluginThatRefuses)
{
  const std::tuple<int, const char*, Calls> rows[] = {
    {1, "the plug-in \"folder/fake.so\" refused to attach to host version 2025100", {"1", "3"}},
    {6, "the plug-in \"folder/fake.so\" could not load its texts", {"1", "6", "3"}},
    {2, "the plug-in \"folder/fake.so\" did not start", {"1", "6", "2", "3"}},
  };
  for (const auto& [message, expected, calls] : rows)
  {
    std::string error;
    module.calls.clear();
    module.refusedMessage = message;
    EXPECT_FALSE(module.Start(error));
    EXPECT_EQ(error, expected);
    EXPECT_EQ(module.calls, calls);
  }
}

TEST_F(HostFacade, SetsSwitchesBeforeTheFirstMessage)
{
  module.secondSwitch = true;
  HostSettings settings;
  settings.configuration = {{"g_first", "true"}, {"g_second", "false"}, {"g_third", "true"}};
  std::string error;
  EXPECT_FALSE(module.Start(error, settings));
  EXPECT_EQ(error, "there is no configuration variable \"g_third\"; there are g_first, g_second");
  EXPECT_TRUE(module.calls.empty());
  EXPECT_TRUE(module.firstSwitch);
  EXPECT_FALSE(module.secondSwitch);
  // A bare name is a file of the current folder, never one of the system's libraries.
  settings.pluginPath = "libc.so.6";
  EXPECT_FALSE(HeadlessHost::Create(settings, error));
  EXPECT_EQ(error.rfind("cannot load the plug-in \"libc.so.6\": ", 0), 0u) << error;
}

TEST_F(HostFacade, ReportsALoad)
{
  Start();
  module.onLoad = [&](const HostFilename& name, HostContainer*, String*)
  {
    EXPECT_EQ(name.GetBackgroundJob(), job.get());
    EXPECT_EQ(module.tables->document->GetActiveDocument(), ToHost(document.get()));
    name.GetBackgroundJob()->AddMessage(HostMessageClass::kWarning, "careful"_s);
    SendEvent({{"error", "none"}, {"extension", "gltf"}, {"generator", "a"}, {"file_id", "12"}, {"nodespace", "space"}});
    return 0;
  };
  const LoadReport report = Load(folder.Write("a.gltf", std::string(100, 'x')));
  EXPECT_TRUE(report.recognised && report.Succeeded());
  EXPECT_EQ(report.extension + report.generator + report.fileId + report.nodeSpace, "gltfa12space");
  ASSERT_EQ(job->GetMessages().size(), 1u);
  EXPECT_EQ(job->GetMessages()[0].text, "careful");
  EXPECT_EQ(module.calls, (Calls{"init", "identify " + std::string(64, 'x'), "load 3", "~loader"}));

  // Nothing of it comes back in the next one, which tells nothing.
  module.onLoad = [](const HostFilename&, HostContainer*, String*) { return -3; };
  const LoadReport silent = Load(folder.Write("a.gltf", ""));
  EXPECT_TRUE(silent.recognised && !silent.Succeeded());
  EXPECT_EQ(silent.status + silent.generator, "");
  EXPECT_EQ(silent.returnValue, -3);
  module.calls.clear();
  EXPECT_FALSE(Load(folder / "missing.obj").recognised);
  EXPECT_EQ(module.calls, (Calls{"init", "identify ", "~loader"}));
}

TEST_F(HostFacade, TellsSuccessByTheStatusWordAlone)
{
  Start();
  const std::string path = folder.Write("a.gltf", "");
  module.onLoad = [&](const HostFilename&, HostContainer*, String* error)
  {
    *error = "what failed"_s;
    SendEvent({{"error", "unknown_error"}});
    return 0;
  };
  const LoadReport report = Load(path);
  EXPECT_FALSE(report.Succeeded());
  EXPECT_EQ(report.error, "what failed");
  // An event whose status word found no memory, a loader that did not, and one that cannot begin.
  module.onLoad = [&](const HostFilename&, HostContainer*, String*)
  {
    SendEvent({});
    return 0;
  };
  EXPECT_EQ(Load(path).status, "out_of_memory");
  module.makesInstances = false;
  EXPECT_EQ(Load(path).status, "out_of_memory");
  module.makesInstances = true;
  module.initSucceeds = false;
  EXPECT_EQ(Load(path).status, "out_of_memory");
  EXPECT_EQ(Load(path).error, "out of memory");
}

TEST_F(HostFacade, GivesParametersAndSideFilesToOneLoadAlone)
{
  Start();
  const std::string outside = folder.Write("outside.bin", "x");
  std::vector<int> seen;
  std::vector<bool> readable;
  std::string base;
  module.onLoad = [&](const HostFilename&, HostContainer* options, String*)
  {
    for (const int id : {1, 2, 3})
    {
      const HostValue* const value = module.tables->container->Find(options, id);
      seen.push_back(value ? value->GetInt32() : -1);
    }
    readable.push_back(module.tables->file->Exists(HostFilename(MakeString(outside))));
    base = Text(module.Find<HostUrlService>()->GetBaseFolder().GetValue().GetPath());
    return 0;
  };
  LoadRequest request;
  request.path = folder.Write("in/a.gltf", "");
  request.parameters = {{2, HostValue(Int32(220))}, {3, HostValue(Int32(33))}};
  request.flags = kLoadObjects | kLoadMerging;
  request.texFolder = folder / "out";
  request.allowOutside = true;
  Load(request);
  EXPECT_EQ(module.calls[2], "load 33");
  EXPECT_EQ(base, request.texFolder);
  EXPECT_TRUE(job->GetMessages().empty());
  Load(request.path);  // nothing stays of the load before
  EXPECT_EQ(seen, (std::vector<int>{11, 220, 33, 11, 22, -1}));
  EXPECT_EQ(readable, (std::vector<bool>{true, false}));
  ASSERT_EQ(job->GetMessages().size(), 1u);
  EXPECT_TRUE(module.tables->file->Exists(HostFilename(MakeString(outside)))) << "without a load";
  EXPECT_TRUE(std::filesystem::is_directory(base));
  End();
  EXPECT_FALSE(std::filesystem::exists(base));
}

TEST_F(HostFacade, HandsLinesToItsSinks)
{
  Calls lines;
  HostSettings settings;
  settings.onConsole = [&](const std::string& line) { lines.push_back("console " + line); };
  settings.onDiagnostic = [&](const std::string& line) { lines.push_back("diagnostic " + line); };
  settings.onMessageBox = [&](const std::string& line) { lines.push_back("box " + line); };
  settings.nodeSpace = "my.space";
  const auto print = [&]
  {
    module.tables->console->Print("one"_s);
    module.tables->console->Diagnostic(HostDiagnosticLevel::kDiagnostic, "two"_s, "a/b/source.cpp", 7);
    module.tables->console->Diagnostic(HostDiagnosticLevel::kCritical, "three"_s, nullptr, 8);
    module.tables->dialog->ShowMessage("four"_s);
  };
  Start(settings);
  EXPECT_EQ(Text(module.tables->document->GetActiveNodeSpace()), "my.space");
  print();
  EXPECT_EQ(lines, (Calls{"console one", "diagnostic two [source.cpp:7]", "diagnostic critical: three [:8]", "box four"}));
  End();
  settings.onConsole = settings.onDiagnostic =
    settings.onMessageBox = [](const std::string&) { throw std::runtime_error("the sink is broken"); };
  Start(settings);
  print();
  End();
  Start();
  print();
}

TEST_F(HostFacade, TakesLoadersAndSaversThatCanBeMade)
{
  Start();
  const auto makeNone = []() -> HostPluginInstance* { return nullptr; };
  for (const auto& [kind, isTaken] : {std::pair(15, true), {16, true}, {17, false}})
    EXPECT_EQ(module.tables->registration->RegisterPlugin({kind, 77, {}, 0, {}, {}, makeNone}), isTaken) << kind;
  EXPECT_FALSE(module.tables->registration->RegisterPlugin({15, 77, {}, 0, {}, {}, nullptr}));
  EXPECT_FALSE(module.tables->registration->RegisterCommand(1, "name"_s, 0, nullptr, "help"_s, nullptr));
}

TEST_F(HostFacade, StartsNotOrWhollyWithoutMemory)
{
  module.calls.reserve(16);
  HostSettings settings;
  settings.pluginPath = "folder/fake.so";
  settings.resourceFolder = Q7Z_TEST_SOURCE_DIR "/plugin/resources";
  std::string error;
  SweepAllocations([&] { host = HeadlessHost::CreateWithModule(settings, module.Hooks(), error); },
                   [&](bool failed)
                   {
                     EXPECT_EQ(host == nullptr, failed);
                     EXPECT_EQ(error.empty(), !failed);
                     host.reset();
                     EXPECT_TRUE(module.calls.empty() || module.calls.back() == "3");
                     module.calls.clear();
                     error.clear();
                   });
}

TEST_F(HostFacade, TellsByTheStatusThatALoadFoundNoMemory)
{
  module.calls.reserve(2000);
  module.recordsCalls = false;
  Start();
  DataDictionary event;
  ASSERT_FALSE(event.Set(DataKey("error"), "none"_s).HasError());
  module.onLoad = [&](const HostFilename& name, HostContainer*, String*)
  {
    // A file that is refused, with its warning; what is lost of it is told.
    EXPECT_FALSE(module.tables->file->Exists(HostFilename("/etc/passwd"_s)));
    name.GetBackgroundJob()->AddStage(1, "a stage with a title that needs memory"_s);
    return module.Find<HostUsageReport>()->Send("event"_s, event).HasError() ? -1 : 0;
  };
  LoadRequest request;
  request.path = folder.Write("a.gltf", "");
  LoadReport report;
  SweepAllocations(
    [&]
    {
      HeadlessJob unseen;
      report = host->Load(request, *document, unseen);
    },
    [&](bool failed) { EXPECT_TRUE(report.status == "none" || (failed && report.status == "out_of_memory")) << report.status; });
}

}  // namespace

}  // namespace q7z::test
