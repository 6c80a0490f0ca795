// HeadlessHost as its users see it: how it starts a module and drives it, what a load reports, and what is refused with which words.

#include "tests/host/servicesmodule.h"

#include "plugin/module/hostconsole.h"
#include "plugin/module/hostdialog.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostmaterial.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

using testing::TestWithParam;

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
  LoadReport Load(LoadRequest request)
  {
    job = std::make_unique<HeadlessJob>();
    return host->Load(request, *document, *job);
  }
  LoadReport Load(const std::string& path)
  {
    LoadRequest request;
    request.path = path;
    return Load(std::move(request));
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
  EXPECT_EQ(module.calls, (std::vector<std::string>{"1", "6", "2"}));
  EXPECT_EQ(module.path, "folder/fake.so");
  EXPECT_EQ(module.tables->version, 2025100u);
  EXPECT_EQ(host->GetRegisteredIds(), std::vector<int>{1060210});
  host.reset();
  EXPECT_EQ(module.calls, (std::vector<std::string>{"1", "6", "2", "3"}));
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
}

TEST_F(HostFacade, LetsTestsReplaceServicesAndTables)
{
  Start();
  int mine = 0;
  host->ReplaceService(HostJson::kId, &mine);
  EXPECT_EQ(module.hook.services->Find(HostJson::kId), &mine);
  host->ReplaceService(HostJson::kId, nullptr);
  EXPECT_FALSE(module.hook.services->Find(HostJson::kId));
  host->GetTables().bitmap = nullptr;
  EXPECT_FALSE(module.tables->bitmap);
}

struct RefusalRow
{
  const char* name;
  int message;
  const char* error;
  std::vector<std::string> calls;
};

const RefusalRow kRefusals[] = {
  {"Attach", 1, "the plug-in \"folder/fake.so\" refused to attach to host version 2025100", {"1", "3"}},
  {"Resources", 6, "the plug-in \"folder/fake.so\" could not load its texts", {"1", "6", "3"}},
  {"Start", 2, "the plug-in \"folder/fake.so\" did not start", {"1", "6", "2", "3"}},
};

class HostRefusal : public TestWithParam<RefusalRow>
{};

TEST_P(HostRefusal, NamesThePluginAndEndsIt)
{
  FakeModule module;
  module.refusedMessage = GetParam().message;
  std::string error;
  EXPECT_FALSE(module.Start(error));
  EXPECT_EQ(error, GetParam().error);
  EXPECT_EQ(module.calls, GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostRefusal, testing::ValuesIn(kRefusals), RowName());

TEST_F(HostFacade, TellsWhichTextsAreMissing)
{
  std::string error;
  HostSettings settings;
  settings.pluginPath = (folder / "plugin.so").string();
  EXPECT_FALSE(HeadlessHost::CreateWithModule(settings, module.Hooks(), error));
  const std::string path = folder.Path().string();
  EXPECT_EQ(error, "the plug-in \"" + path + "/plugin.so\" could not load its texts: Cannot read \"" + path +
                     "/resources/strings_en.txt\": No such file or directory");
}

struct ConfigurationRow
{
  const char* name;
  std::vector<std::pair<std::string, std::string>> settings;
  const char* error;
  bool first;
  bool second;
};

const ConfigurationRow kConfigurations[] = {
  {"None", {}, "", false, true},
  {"On", {{"g_first", "true"}}, "", true, true},
  {"Off", {{"g_second", "false"}}, "", false, false},
  {"LastCounts", {{"g_first", "true"}, {"g_first", "false"}}, "", false, true},
  {"Unknown", {{"g_third", "true"}}, "there is no configuration variable \"g_third\"; there are g_first, g_second", false, true},
  {"Number", {{"g_first", "1"}}, "the configuration variable \"g_first\" wants true or false, not \"1\"", false, true},
  {"Nothing", {{"g_first", ""}}, "the configuration variable \"g_first\" wants true or false, not \"\"", false, true},
};

class HostConfiguration : public TestWithParam<ConfigurationRow>
{};

TEST_P(HostConfiguration, SetsSwitchesBeforeTheFirstMessage)
{
  FakeModule module;
  module.secondSwitch = true;
  HostSettings settings;
  settings.configuration = GetParam().settings;
  std::string error;
  const std::unique_ptr<HeadlessHost> host = module.Start(error, settings);
  EXPECT_EQ(error, GetParam().error);
  EXPECT_EQ(host == nullptr, !error.empty());
  EXPECT_EQ(module.calls.empty(), !error.empty());
  EXPECT_EQ(module.firstSwitch, GetParam().first);
  EXPECT_EQ(module.secondSwitch, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostConfiguration, testing::ValuesIn(kConfigurations), RowName());

TEST_F(HostFacade, NamesTheLibraryThatItCannotLoad)
{
  std::string error;
  HostSettings settings;
  settings.pluginPath = (folder / "missing.so").string();
  EXPECT_FALSE(HeadlessHost::Create(settings, error));
  EXPECT_EQ(error.rfind("cannot load the plug-in \"" + settings.pluginPath + "\": ", 0), 0u) << error;
  settings.pluginPath = folder.Write("text.so", "no library");
  EXPECT_FALSE(HeadlessHost::Create(settings, error));
  EXPECT_EQ(error.rfind("cannot load the plug-in \"" + settings.pluginPath + "\": ", 0), 0u) << error;
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
    SendEvent({{"error", "none"},
               {"extension", "gltf"},
               {"generator", "a generator"},
               {"file_id", "12"},
               {"nodespace", "space"},
               {"details", "{}"}});
    return 0;
  };
  const LoadReport report = Load(folder.Write("a.gltf", "0123456789"));
  EXPECT_TRUE(report.recognised);
  EXPECT_TRUE(report.Succeeded());
  EXPECT_EQ(report.returnValue, 0);
  EXPECT_EQ(report.status, "none");
  EXPECT_EQ(report.error, "");
  EXPECT_EQ(report.extension, "gltf");
  EXPECT_EQ(report.generator, "a generator");
  EXPECT_EQ(report.fileId, "12");
  EXPECT_EQ(report.nodeSpace, "space");
  EXPECT_EQ(report.details, "{}");
  ASSERT_EQ(job->GetMessages().size(), 1u);
  EXPECT_EQ(job->GetMessages()[0].text, "careful");
  EXPECT_EQ(module.calls, (std::vector<std::string>{"init", "identify 0123456789", "load 3", "~loader"}));
}

TEST_F(HostFacade, TellsSuccessByTheStatusWordAlone)
{
  Start();
  module.onLoad = [&](const HostFilename&, HostContainer*, String* error)
  {
    *error = "what failed"_s;
    SendEvent({{"error", "unknown_error"}});
    return 0;
  };
  const LoadReport report = Load(folder.Write("a.gltf", ""));
  EXPECT_EQ(report.returnValue, 0);
  EXPECT_FALSE(report.Succeeded());
  EXPECT_EQ(report.status, "unknown_error");
  EXPECT_EQ(report.error, "what failed");
}

TEST_F(HostFacade, TakesNothingFromAnEarlierLoad)
{
  Start();
  const std::string path = folder.Write("a.gltf", "");
  module.onLoad = [&](const HostFilename&, HostContainer*, String*)
  {
    SendEvent({{"error", "none"}, {"generator", "a generator"}});
    return 0;
  };
  EXPECT_TRUE(Load(path).Succeeded());
  module.onLoad = [](const HostFilename&, HostContainer*, String*) { return -3; };
  const LoadReport silent = Load(path);
  EXPECT_TRUE(silent.recognised);
  EXPECT_FALSE(silent.Succeeded());
  EXPECT_EQ(silent.status, "");
  EXPECT_EQ(silent.generator, "");
  EXPECT_EQ(silent.returnValue, -3);
  // An event whose status word found no memory.
  module.onLoad = [&](const HostFilename&, HostContainer*, String*)
  {
    SendEvent({});
    return 0;
  };
  EXPECT_EQ(Load(path).status, "out_of_memory");
}

TEST_F(HostFacade, LeavesAFileThatNoLoaderTakes)
{
  Start();
  const LoadReport report = Load(folder.Write("a.obj", "v 0 0 0"));
  EXPECT_FALSE(report.recognised);
  EXPECT_EQ(report.status, "");
  EXPECT_EQ(module.calls, (std::vector<std::string>{"init", "identify v 0 0 0", "~loader"}));
}

TEST_F(HostFacade, ShowsTheLoaderTheFirstBytes)
{
  Start();
  Load(folder.Write("a.obj", std::string(100, 'x')));
  EXPECT_EQ(module.calls[1], "identify " + std::string(64, 'x'));
  module.calls.clear();
  Load((folder / "missing.obj").string());
  EXPECT_EQ(module.calls[1], "identify ");
}

TEST_F(HostFacade, SetsParametersOverTheDefaults)
{
  Start();
  std::vector<int> seen;
  module.onLoad = [&](const HostFilename&, HostContainer* options, String*)
  {
    for (const int id : {1, 2, 3})
    {
      const HostValue* const value = module.tables->container->Find(options, id);
      seen.push_back(value ? value->GetInt32() : -1);
    }
    return 0;
  };
  LoadRequest request;
  request.path = folder.Write("a.gltf", "");
  request.parameters = {{2, HostValue(Int32(220))}, {3, HostValue(Int32(33))}};
  request.flags = kLoadObjects | kLoadMerging;
  Load(request);
  EXPECT_EQ(seen, (std::vector<int>{11, 220, 33}));
  EXPECT_EQ(module.calls[2], "load 33");
  request.parameters.clear();
  Load(request);  // nothing stays of the load before
  EXPECT_EQ(seen, (std::vector<int>{11, 220, 33, 11, 22, -1}));
}

TEST_F(HostFacade, CallsALoadWithoutALoaderInstanceOutOfMemory)
{
  Start();
  const std::string path = folder.Write("a.gltf", "");
  module.makesInstances = false;
  EXPECT_EQ(Load(path).status, "out_of_memory");
  module.makesInstances = true;
  module.initSucceeds = false;
  EXPECT_EQ(Load(path).status, "out_of_memory");
  EXPECT_EQ(Load(path).error, "out of memory");
}

/// Whether a side file can be opened during a load.
bool CanRead(const HostTables& tables, const std::string& path)
{
  HostFile* const file = tables.file->Alloc();
  const bool opened = tables.file->Open(file, HostFilename(MakeString(path)), FILEOPEN::READ, FILEDIALOG::NONE,
                                        BYTEORDER::V_INTEL, kFileType, kFileCreator);
  tables.file->Free(file);
  return opened;
}

TEST_F(HostFacade, KeepsSideFilesInTheInputsFolder)
{
  Start();
  const std::string outside = folder.Write("outside.bin", "x");
  const std::string inside = folder.Write("in/inside.bin", "x");
  std::vector<bool> readable;
  module.onLoad = [&](const HostFilename&, HostContainer*, String*)
  {
    readable.push_back(CanRead(*module.tables, inside));
    readable.push_back(CanRead(*module.tables, outside));
    return 0;
  };
  LoadRequest request;
  request.path = folder.Write("in/a.gltf", "");
  Load(request);
  EXPECT_EQ(readable, (std::vector<bool>{true, false}));
  ASSERT_EQ(job->GetMessages().size(), 1u);
  EXPECT_EQ(job->GetMessages()[0].messageClass, HostMessageClass::kWarning);
  EXPECT_EQ(job->GetMessages()[0].text,
            "\"" + outside + "\" lies outside the input's folder and is not read; --allow-outside permits it");
  request.allowOutside = true;
  Load(request);
  EXPECT_EQ(readable, (std::vector<bool>{true, false, true, true}));
  EXPECT_TRUE(job->GetMessages().empty());
  EXPECT_TRUE(CanRead(*module.tables, outside));  // and without a load
}

TEST_F(HostFacade, GivesTheTextureFolderToTheLoad)
{
  Start();
  std::string base;
  module.onLoad = [&](const HostFilename&, HostContainer*, String*)
  {
    base = Text(module.Find<HostUrlService>()->GetBaseFolder().GetValue().GetPath());
    return 0;
  };
  LoadRequest request;
  request.path = folder.Write("a.gltf", "");
  request.texFolder = (folder / "out").string();
  Load(request);
  EXPECT_EQ(base, request.texFolder);
  request.texFolder.clear();
  Load(request);
  EXPECT_TRUE(std::filesystem::is_directory(base));
  document.reset();
  host.reset();
  EXPECT_FALSE(std::filesystem::exists(base));
}

TEST_F(HostFacade, SaysSoWithoutASaver)
{
  Start();
  const SaveReport report = host->Save({}, *document);
  EXPECT_FALSE(report.available);
  EXPECT_EQ(report.error, "the plug-in offers no saver");
}

TEST_F(HostFacade, CallsTheSaver)
{
  module.registersSaver = true;
  Start();
  SaveRequest request;
  request.path = "out.gltf";
  SaveReport report = host->Save(request, *document);
  EXPECT_TRUE(report.available);
  EXPECT_EQ(report.returnValue, 0);
  EXPECT_EQ(report.error, "");
  EXPECT_EQ(module.calls, std::vector<std::string>{"save out.gltf 3"});
  module.saveAnswer = -8;
  report = host->Save(request, *document);
  EXPECT_EQ(report.returnValue, -8);
  EXPECT_EQ(report.error, "the plug-in answered -8");  // and told nothing
}

TEST_F(HostFacade, HandsLinesToItsSinks)
{
  std::vector<std::string> lines;
  HostSettings settings;
  settings.onConsole = [&](const std::string& line) { lines.push_back("console " + line); };
  settings.onDiagnostic = [&](const std::string& line) { lines.push_back("diagnostic " + line); };
  settings.onMessageBox = [&](const std::string& line) { lines.push_back("box " + line); };
  Start(settings);
  module.tables->console->Print("one"_s);
  module.tables->console->Diagnostic(HostDiagnosticLevel::kDiagnostic, "two"_s, "a/b/source.cpp", 7);
  module.tables->console->Diagnostic(HostDiagnosticLevel::kCritical, "three"_s, "source", 8);
  module.tables->dialog->ShowMessage("four"_s);
  EXPECT_EQ(lines, (std::vector<std::string>{"console one", "diagnostic two [source.cpp:7]",
                                             "diagnostic critical: three [source:8]", "box four"}));
}

TEST_F(HostFacade, LivesWithoutSinksAndWithFailingOnes)
{
  Start();
  module.tables->console->Print("unheard"_s);
  document.reset();
  host.reset();
  HostSettings settings;
  settings.onConsole = settings.onDiagnostic =
    settings.onMessageBox = [](const std::string&) { throw std::runtime_error("the sink is broken"); };
  Start(settings);
  module.tables->console->Print("lost"_s);
  module.tables->console->Diagnostic(HostDiagnosticLevel::kDiagnostic, "lost"_s, nullptr, 0);
  module.tables->dialog->ShowMessage("lost"_s);
}

TEST_F(HostFacade, OpensNoDialogs)
{
  Start();
  Int32 result = 5;
  EXPECT_FALSE(module.tables->dialog->MayShowDialog());
  EXPECT_FALSE(module.tables->dialog->RunWorkerDialog(nullptr, &result));
  EXPECT_EQ(result, 5);
  EXPECT_FALSE(module.tables->dialog->Alloc(nullptr));
}

TEST_F(HostFacade, AnswersTheNodeSpaceOfItsSettings)
{
  HostSettings settings;
  settings.nodeSpace = "my.space";
  Start(settings);
  EXPECT_EQ(Text(module.tables->document->GetActiveNodeSpace()), "my.space");
  document.reset();
  host.reset();
  Start();
  EXPECT_EQ(Text(module.tables->document->GetActiveNodeSpace()), "com.brenmoor3d.brenmoor4q7z.class.nodespace");
}

struct PluginRow
{
  const char* name;
  int kind;
  bool hasFactory;
  bool accepted;
};

const PluginRow kPlugins[] = {{"Loader", 15, true, true},
                              {"Saver", 16, true, true},
                              {"OtherKind", 17, true, false},
                              {"NoFactory", 15, false, false}};

class HostRegistration : public TestWithParam<PluginRow>
{};

TEST_P(HostRegistration, TakesLoadersAndSavers)
{
  FakeModule module;
  std::string error;
  const std::unique_ptr<HeadlessHost> host = module.Start(error);
  ASSERT_TRUE(host) << error;
  HostPluginRecord record;
  record.kind = GetParam().kind;
  record.id = 77;
  if (GetParam().hasFactory)
    record.factory = []() -> HostPluginInstance* { return nullptr; };
  EXPECT_EQ(module.tables->registration->RegisterPlugin(record), GetParam().accepted);
  EXPECT_EQ(host->GetRegisteredIds().size(), GetParam().accepted ? 2u : 1u);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostRegistration, testing::ValuesIn(kPlugins), RowName());

class CountedCommand final : public HostCommand
{
public:
  explicit CountedCommand(int& alive) : _alive(alive) { ++_alive; }
  ~CountedCommand() override { --_alive; }
  Bool Execute(HostDocument*) noexcept override { return true; }
  Bool RestoreLayout(void*) noexcept override { return false; }
  Int32 GetState(HostDocument*) noexcept override { return 0; }

private:
  int& _alive;
};

TEST_F(HostFacade, OwnsTheCommandsItTook)
{
  Start();
  int alive = 0;
  EXPECT_FALSE(module.tables->registration->RegisterCommand(1, "name"_s, 0, nullptr, "help"_s, nullptr));
  EXPECT_TRUE(module.tables->registration->RegisterCommand(1, "name"_s, 0, nullptr, "help"_s, new CountedCommand(alive)));
  EXPECT_EQ(alive, 1);
  document.reset();
  host.reset();
  EXPECT_EQ(alive, 0);
}

}  // namespace

}  // namespace q7z::test
