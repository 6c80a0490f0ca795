#include "host/headlesshost.h"

#include <map>
#include <mutex>
#include <set>

#include "framework/check.h"
#include "host/images/headlessbitmaps.h"
#include "host/images/materialexchange.h"
#include "host/images/mediasessions.h"
#include "host/modeling/modelingtable.h"
#include "host/scene/materialimport.h"
#include "host/scene/scenetables.h"
#include "host/services/base64.h"
#include "host/services/filereading.h"
#include "host/services/headlessdialogs.h"
#include "host/services/headlessfiles.h"
#include "host/services/headlesshash.h"
#include "host/services/headlessjobs.h"
#include "host/services/headlessjson.h"
#include "host/services/headlesstables.h"

namespace q7z
{

namespace
{

constexpr Int kProbeBytes = 64;
constexpr const char* kOutOfMemoryText = "out of memory";
constexpr Int32 kSaveOutOfMemory = -7;

/// Keeps the last event. Nothing leaves the process.
class HeadlessUsageReport final : public HostUsageReport
{
public:
  Result<void> Send(const String&, const DataDictionary& entries) noexcept override
  {
    _wasSent = true;
    _entries = entries;
    return {};
  }
  void Clear() noexcept
  {
    _wasSent = false;
    _entries = DataDictionary();
  }
  bool WasSent() const noexcept { return _wasSent; }
  /// Empty when there is no such entry.
  std::string GetEntry(const DataKey& key) const
  {
    const Data* const value = _entries.Find(key);
    const Result<String> text = value ? value->GetString() : Result<String>(String());
    return text.HasError() ? "" : ToStd(text.GetValue());
  }

private:
  bool _wasSent = false;
  DataDictionary _entries;
};

class ServiceRegistry final : public HostServiceRegistry
{
public:
  void Set(const std::string& id, void* service) { _services[id] = service; }
  void* Find(const Char* id) const noexcept override
  {
    for (const auto& entry : _services)
    {
      if (entry.first == id)
        return entry.second;
    }
    return nullptr;
  }

private:
  std::map<std::string, void*> _services;
};

/// Refused side files become warnings of the running load.
class JobWarnings final : public FileWarnings
{
public:
  HeadlessJob* job = nullptr;
  void AddWarning(const std::string& text) override
  {
    if (job)
      job->AddMessage(HostMessageClass::kWarning, String(text.data(), static_cast<Int>(text.size())));
  }
};

/// What a save leaves out. Told from several threads in any order, so that they are kept sorted.
class SaveWarnings final : public FileWarnings
{
public:
  void AddWarning(const std::string& text) override
  {
    const std::lock_guard lock(_mutex);
    _texts.insert(text);
  }
  void Clear() noexcept { _texts.clear(); }
  std::vector<std::string> Get() const { return {_texts.begin(), _texts.end()}; }

private:
  std::mutex _mutex;
  std::set<std::string> _texts;
};

/// The first bytes of a file; fewer when it is shorter, none when it cannot be read.
std::vector<Byte> ReadProbe(const std::string& path)
{
  std::vector<Byte> probe(kProbeBytes);
  PlatformFile file;
  const Int count = file.Open(path.c_str(), PlatformOpen::kRead) ? file.ReadAt(0, probe.data(), kProbeBytes) : 0;
  probe.resize(static_cast<size_t>(count > 0 ? count : 0));
  return probe;
}

/// A text that views text, which outlives it.
String View(const std::string& text)
{
  return String(text.data(), static_cast<Int>(text.size()));
}

std::string Explain(const std::string& reason)
{
  return reason.empty() ? "" : ": " + reason;
}

std::string SetConfiguration(TarnoHook& hook, const std::string& name, const std::string& value)
{
  if (value != "true" && value != "false")
    return "the configuration variable \"" + name + "\" wants true or false, not \"" + value + "\"";
  std::string known;
  for (Int32 i = 0; i < hook.configVariableCount; ++i)
  {
    const ConfigVariableEntry& entry = hook.configVariables[i];
    if (ToStd(entry.name) == name && entry.variable)
    {
      *entry.variable = value == "true";
      return "";
    }
    known += (i ? ", " : "") + ToStd(entry.name);
  }
  return "there is no configuration variable \"" + name + "\"; there are " + (known.empty() ? "none" : known);
}

/// One instance of a plug-in, with its options. Throws bad_alloc when one of the two cannot be made.
class PluginInstance
{
public:
  PluginInstance(const HeadlessPlugin& plugin, const std::vector<std::pair<int, HostValue>>& parameters)
      : _node(plugin.id), _instance(plugin.factory())
  {
    bool ready = _instance && _instance->Init(Node());
    for (const auto& [id, value] : parameters)
      ready = ready && _node.GetParameters().Set(id, value);
    if (!ready)
      throw std::bad_alloc();
  }
  HostNode* Node() noexcept { return ToHost(&_node); }
  /// The plug-in's kind tells the class.
  template <typename Kind>
  Kind& As() noexcept
  {
    return static_cast<Kind&>(*_instance);
  }

private:
  HeadlessNode _node;
  std::unique_ptr<HostPluginInstance> _instance;
};

/// A document without a folder gets that of the file it is loaded from; the current one is an empty text.
void TellFolder(const std::string& path, HeadlessDocument& document)
{
  const std::string folder = GetFolderOf(path);
  if (document.GetFolder().IsEmpty() && folder != "." && !document.SetFolder(View(folder)))
    throw std::bad_alloc();
}

void TakeUsageEvent(const HeadlessUsageReport& usageReport, LoadReport& report)
{
  report.status = usageReport.GetEntry(DataKey("error"));
  // Only for want of memory does an event come without its status word.
  if (report.status.empty() && usageReport.WasSent())
    report.status = "out_of_memory";
  report.extension = usageReport.GetEntry(DataKey("extension"));
  report.generator = usageReport.GetEntry(DataKey("generator"));
  report.fileId = usageReport.GetEntry(DataKey("file_id"));
  report.nodeSpace = usageReport.GetEntry(DataKey("nodespace"));
  report.details = usageReport.GetEntry(DataKey("details"));
}

}  // namespace

struct HeadlessHost::State
{
  explicit State(int threads) : jobs(threads) {}

  PlatformLibrary library;  // unloaded last
  ModuleHooks hooks;
  std::string modulePath;
  bool attached = false;

  HeadlessSceneState scene;
  ModelingTable modeling;
  FilePolicy policy;
  JobWarnings warnings;
  HeadlessFileTable files{policy};
  HeadlessDescriptions descriptions;
  HeadlessResources resources{descriptions};
  HeadlessRegistrations registrations{descriptions};
  HeadlessConsole console;
  HeadlessDialogs dialogs;

  HeadlessJobs jobs;
  HeadlessJson json{&jobs};
  HeadlessBase64Decoder base64Decoder;
  HeadlessBase64Encoder base64Encoder;
  HeadlessUrlPathDecoder urlPathDecoder;
  HeadlessUrlService urls;
  HeadlessHash hash;
  HeadlessUsageReport usageReport;
  HeadlessMaterialImport materialImport;

  SaveWarnings saveWarnings;
  ImageFiles imageFiles{policy};
  HeadlessBitmaps bitmaps{imageFiles, jobs};
  HeadlessMediaSessions mediaSessions;
  HeadlessMaterialExport materialExport{imageFiles, jobs};

  HostTables tables;
  ServiceRegistry services;

  void Assemble(const HostSettings& settings);
  void ExplainSave(SaveReport& report);
};

/// What holds during one load.
class HeadlessHost::LoadScope
{
public:
  LoadScope(State& state, const LoadRequest& request, HeadlessDocument& document, HeadlessJob& job) : _state(state)
  {
    state.scene.activeDocument = &document;
    state.usageReport.Clear();
    state.urls.SetBaseFolder(request.texFolder);
    state.materialImport.SetFolder(GetFolderOf(request.path));
    if (!request.allowOutside)
      state.policy.Restrict(request.path, &state.warnings);
    state.warnings.job = &job;  // last: what throws above leaves none behind
  }
  LoadScope(const LoadScope&) = delete;
  LoadScope& operator=(const LoadScope&) = delete;
  ~LoadScope()
  {
    _state.policy.Lift();
    _state.warnings.job = nullptr;
  }

private:
  State& _state;
};

/// What holds during one save.
class HeadlessHost::SaveScope
{
public:
  SaveScope(State& state, const SaveRequest& request, HeadlessDocument& document) : _state(state)
  {
    state.scene.activeDocument = &document;
    state.policy.Lift();
    if (!request.input.empty() && !request.allowOutside)
    {
      state.policy.Restrict(request.input, &state.saveWarnings);
      state.policy.Allow(state.urls.GetTexFolder());
    }
    state.imageFiles.SetWarnings(&state.saveWarnings);
    state.saveWarnings.Clear();
    state.dialogs.SetJob(request.job);
    static_cast<void>(state.console.TakeLastDiagnostic());
    static_cast<void>(state.files.TakeWriteFailure());
    static_cast<void>(state.urls.TakeWriteFailure());
  }
  SaveScope(const SaveScope&) = delete;
  SaveScope& operator=(const SaveScope&) = delete;
  ~SaveScope()
  {
    _state.policy.Lift();
    _state.imageFiles.SetWarnings(nullptr);
    _state.materialExport.Clear();
    _state.dialogs.SetJob(nullptr);
  }

private:
  State& _state;
};

/// Puts what failed into words: a saver answers with a number alone.
void HeadlessHost::State::ExplainSave(SaveReport& report)
{
  if (report.returnValue == 0)
  {
    // A progress dialog that did not open leaves the saver with nothing to tell.
    const std::string& failure = dialogs.GetFailure();
    report.error = failure.empty() ? "" : "the save could not be started: " + failure;
    return;
  }
  report.writeFailure = files.TakeWriteFailure();
  if (report.writeFailure.empty())
    report.writeFailure = urls.TakeWriteFailure();
  report.error = console.TakeLastDiagnostic();
  if (report.error.empty())
    report.error = "the plug-in answered " + std::to_string(report.returnValue);
}

void HeadlessHost::State::Assemble(const HostSettings& settings)
{
  const std::string folder =
    settings.resourceFolder.empty() ? GetFolderOf(settings.pluginPath) + "/resources" : settings.resourceFolder;
  resources.SetFolder(folder);
  descriptions.SetFolder(folder);
  console.onConsole = settings.onConsole;
  console.onDiagnostic = settings.onDiagnostic;
  dialogs.onMessage = settings.onMessageBox;
  if (!settings.nodeSpace.empty())
  {
    Result<String> nodeSpace = String::Create(settings.nodeSpace);
    if (nodeSpace.HasError())
      throw std::bad_alloc();
    scene.nodeSpace = nodeSpace.GetValue();
  }

  tables.version = kMinimumHostVersion;
  scene.jobs = &jobs;
  FillSceneTables(tables, scene);
  tables.modeling = &modeling;
  tables.registration = &registrations;
  tables.resource = &resources;
  tables.description = &descriptions;
  tables.bitmap = &bitmaps;
  tables.file = &files;
  tables.dialog = &dialogs;
  tables.console = &console;

  services.Set(HostJson::kId, static_cast<HostJson*>(&json));
  services.Set(HostBase64Decoder::kId, static_cast<HostBase64Decoder*>(&base64Decoder));
  services.Set(HostBase64Encoder::kId, static_cast<HostBase64Encoder*>(&base64Encoder));
  services.Set(HostUrlPathDecoder::kId, static_cast<HostUrlPathDecoder*>(&urlPathDecoder));
  services.Set(HostUrlService::kId, static_cast<HostUrlService*>(&urls));
  services.Set(HostHash::kId, static_cast<HostHash*>(&hash));
  services.Set(HostUsageReport::kId, static_cast<HostUsageReport*>(&usageReport));
  services.Set(HostMaterialImport::kId, static_cast<HostMaterialImport*>(&materialImport));
  services.Set(HostMaterialExport::kId, static_cast<HostMaterialExport*>(&materialExport));
  services.Set(HostMediaSessions::kId, static_cast<HostMediaSessions*>(&mediaSessions));
  services.Set(HostJobs::kId, static_cast<HostJobs*>(&jobs));
}

std::unique_ptr<HeadlessHost> HeadlessHost::Create(const HostSettings& settings, std::string& error)
try
{
  const std::string& path = settings.pluginPath;
  PlatformLibrary library;
  const std::string failure = library.Load(path);
  if (!failure.empty())
  {
    error = "cannot load the plug-in \"" + path + "\": " + failure;
    return nullptr;
  }
  const ModuleHooks hooks = {reinterpret_cast<HostEntryFunction>(library.Find("q7z_main")),
                             static_cast<TarnoHook*>(library.Find("g_tarno")),
                             static_cast<YieldFunction*>(library.Find("g_CpuYieldDelegate"))};
  if (!hooks.entry || !hooks.tarno || !hooks.yield)
  {
    error = "\"" + path + "\" is no plug-in of this host: it does not export q7z_main, g_tarno and g_CpuYieldDelegate";
    return nullptr;
  }
  std::unique_ptr<HeadlessHost> host = CreateWithModule(settings, hooks, error);
  if (host)
    host->_state->library = std::move(library);
  return host;
}
catch (const std::bad_alloc&)
{
  error = kOutOfMemoryText;
  return nullptr;
}

std::unique_ptr<HeadlessHost> HeadlessHost::CreateWithModule(const HostSettings& settings, const ModuleHooks& hooks,
                                                             std::string& error)
try
{
  auto state = std::make_unique<State>(settings.threads);
  state->hooks = hooks;
  state->modulePath = settings.pluginPath;
  state->Assemble(settings);
  std::unique_ptr<HeadlessHost> host(new HeadlessHost(std::move(state)));
  error = host->Start(settings);
  if (!error.empty())
    return nullptr;
  return host;
}
catch (const std::bad_alloc&)
{
  error = kOutOfMemoryText;
  return nullptr;
}

HeadlessHost::HeadlessHost(std::unique_ptr<State> state) noexcept : _state(std::move(state))
{}

HeadlessHost::~HeadlessHost()
{
  // What the module made goes before the module does.
  _state->registrations.Clear();
  if (_state->attached)
    _state->hooks.entry(kEndMessage, nullptr, nullptr, nullptr);
  _state->hooks.tarno->services = nullptr;
}

std::string HeadlessHost::Start(const HostSettings& settings)
{
  State& state = *_state;
  state.hooks.tarno->services = &state.services;
  *state.hooks.yield = nullptr;  // a waiting lock gives its time slice away
  for (const auto& [name, value] : settings.configuration)
  {
    const std::string failure = SetConfiguration(*state.hooks.tarno, name, value);
    if (!failure.empty())
      return failure;
  }
  const std::string path = "the plug-in \"" + settings.pluginPath + "\"";
  HostFilename modulePath(View(state.modulePath));
  state.attached = true;  // attach counts even when it refuses
  if (state.hooks.entry(kAttachMessage, &state.tables, nullptr, &modulePath) != 1)
    return path + " refused to attach to host version " + std::to_string(state.tables.version);
  HostResourceRecord record{&state};
  if (state.hooks.entry(kResourceMessage, reinterpret_cast<void*>(1), &record, nullptr) != 1)
    return path + " could not load its texts" + Explain(state.resources.GetFailure());
  if (state.hooks.entry(kStartMessage, nullptr, nullptr, nullptr) != 1)
    return path + " did not start" + Explain(state.descriptions.GetFailure());
  return "";
}

HeadlessOwner<HeadlessDocument> HeadlessHost::NewDocument()
{
  HeadlessOwner<HeadlessDocument> document(HeadlessDocument::Create());
  _state->scene.activeDocument = document.get();
  return document;
}

LoadReport HeadlessHost::Load(const LoadRequest& request, HeadlessDocument& document, HeadlessJob& job) noexcept
{
  try
  {
    return RunLoad(request, document, job);
  }
  catch (...)
  {
    LoadReport report;
    report.recognised = true;
    report.status = "out_of_memory";  // short enough to need no memory
    report.error = kOutOfMemoryText;
    return report;
  }
}

LoadReport HeadlessHost::RunLoad(const LoadRequest& request, HeadlessDocument& document, HeadlessJob& job)
{
  State& state = *_state;
  LoadReport report;
  const LoadScope scope(state, request, document, job);
  TellFolder(request.path, document);
  const HostFilename name(View(request.path), &job);
  const std::vector<Byte> probe = ReadProbe(request.path);
  for (const HeadlessPlugin& plugin : state.registrations.GetPlugins())
  {
    if (plugin.kind != kSceneLoaderKind)
      continue;
    PluginInstance instance(plugin, request.parameters);
    HostSceneLoader& loader = instance.As<HostSceneLoader>();
    report.recognised = loader.Identify(instance.Node(), name, probe.data(), static_cast<Int32>(probe.size()));
    if (!report.recognised)
      continue;
    String error;
    report.returnValue = loader.Load(instance.Node(), name, ToHost(&document), request.flags, &error);
    report.error = ToStd(error);
    TakeUsageEvent(state.usageReport, report);
    break;
  }
  return report;
}

SaveReport HeadlessHost::Save(const SaveRequest& request, HeadlessDocument& document) noexcept
{
  try
  {
    return RunSave(request, document);
  }
  catch (...)
  {
    SaveReport report;
    report.available = true;
    report.returnValue = kSaveOutOfMemory;
    report.error = kOutOfMemoryText;
    return report;
  }
}

SaveReport HeadlessHost::RunSave(const SaveRequest& request, HeadlessDocument& document)
{
  SaveReport report;
  for (const HeadlessPlugin& plugin : _state->registrations.GetPlugins())
  {
    if (plugin.kind != kSceneSaverKind)
      continue;
    report.available = true;
    PluginInstance instance(plugin, request.parameters);
    const SaveScope scope(*_state, request, document);
    const HostFilename name(View(request.path));
    const Int32 flags = request.flags | (request.job ? kLoadDialogsAllowed : 0);
    report.returnValue = instance.As<HostSceneSaver>().Save(instance.Node(), name, ToHost(&document), flags);
    report.warnings = _state->saveWarnings.Get();
    _state->ExplainSave(report);
    return report;
  }
  report.error = "the plug-in offers no saver";
  return report;
}

const std::string& HeadlessHost::GetTemporaryFolder() const noexcept
{
  return _state->urls.GetTemporaryFolder();
}

Result<String> HeadlessHost::RunDialog(const DialogRequest& request) noexcept
{
  HostCommand* const command = _state->registrations.FindCommand(request.command);
  if (!command)
    return MAKE_ERROR(ErrorClass::kUnexpected, "the plug-in has no such command"_s);
  if (!command->Execute(nullptr))
    return MAKE_ERROR(ErrorClass::kUnexpected, "the command's dialog did not open"_s);
  HeadlessDialog* const dialog = _state->dialogs.FindOpen(request.command);
  if (!dialog || (request.menuItem && !dialog->Choose(request.menuItem)) || !dialog->EnterText(request.inputField, request.input))
    return MAKE_ERROR(ErrorClass::kUnexpected, "the command's dialog is another one"_s);
  dialog->Interact();
  return dialog->GetText(request.outputField);
}

HostTables& HeadlessHost::GetTables()
{
  return _state->tables;
}
void HeadlessHost::ReplaceService(const std::string& id, void* service)
{
  _state->services.Set(id, service);
}

std::vector<int> HeadlessHost::GetRegisteredIds() const
{
  std::vector<int> ids;
  for (const HeadlessPlugin& plugin : _state->registrations.GetPlugins())
    ids.push_back(plugin.id);
  return ids;
}

}  // namespace q7z
