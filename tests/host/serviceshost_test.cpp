// HeadlessHost as its users see it: how it starts a module and drives it, what a load reports, and what is refused with which words.

#include "tests/host/servicesmodule.h"

#include "plugin/module/hostconsole.h"
#include "plugin/module/hostdialog.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostmaterial.h"

namespace q7z::test
{

namespace
{

using Calls = std::vector<std::string>;

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

TEST_F(HostFacade, OffersAllTablesAndServices)
{
  Start();
  void* const* const pointers = reinterpret_cast<void* const*>(module.tables);
  for (int i = 1; i <= kHostTableCount; ++i)
    EXPECT_TRUE(pointers[i]) << "table " << i;
  for (const char* const id : {HostJson::kId, HostBase64Decoder::kId, HostBase64Encoder::kId, HostUrlPathDecoder::kId,
                               HostUrlService::kId, HostHash::kId, HostUsageReport::kId, HostJobs::kId})
    EXPECT_TRUE(module.hook.services->Find(id)) << id;
  EXPECT_FALSE(module.hook.services->Find("net.tarno.unknown"));
  EXPECT_EQ(host->Save({}, *document).error, "the plug-in offers no saver");
  Int32 result = 5;
  EXPECT_FALSE(module.tables->dialog->MayShowDialog());
  EXPECT_FALSE(module.tables->dialog->RunWorkerDialog(nullptr, &result));
  EXPECT_EQ(result, 5);
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
  EXPECT_TRUE(report.recognised);
  EXPECT_TRUE(report.Succeeded());
  EXPECT_EQ(report.status, "none");
  EXPECT_EQ(report.error, "");
  EXPECT_EQ(report.extension + report.generator + report.fileId + report.nodeSpace, "gltfa12space");
  ASSERT_EQ(job->GetMessages().size(), 1u);
  EXPECT_EQ(job->GetMessages()[0].text, "careful");
  EXPECT_EQ(module.calls, (Calls{"init", "identify " + std::string(64, 'x'), "load 3", "~loader"}));

  // Nothing of it comes back in the next one, which tells nothing.
  module.onLoad = [](const HostFilename&, HostContainer*, String*) { return -3; };
  const LoadReport silent = Load(folder.Write("a.gltf", ""));
  EXPECT_TRUE(silent.recognised);
  EXPECT_FALSE(silent.Succeeded());
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
  EXPECT_EQ(report.returnValue, 0);
  EXPECT_FALSE(report.Succeeded());
  EXPECT_EQ(report.status, "unknown_error");
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
  HostRegistrationTable& registration = *module.tables->registration;
  HostPluginRecord record;
  record.id = 77;
  EXPECT_FALSE(registration.RegisterPlugin(record)) << "without a factory";
  record.factory = []() -> HostPluginInstance* { return nullptr; };
  for (const auto& [kind, accepted] : {std::pair(15, true), {16, true}, {17, false}})
  {
    record.kind = kind;
    EXPECT_EQ(registration.RegisterPlugin(record), accepted) << kind;
  }
  EXPECT_FALSE(registration.RegisterCommand(1, "name"_s, 0, nullptr, "help"_s, nullptr));
}

}  // namespace

}  // namespace q7z::test
