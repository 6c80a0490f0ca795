#include "host/headlesshost.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <map>

#include "host/scene/scenetables.h"
#include "host/services/base64.h"
#include "host/services/filereading.h"
#include "host/services/headlessfiles.h"
#include "host/services/headlesshash.h"
#include "host/services/headlessjobs.h"
#include "host/services/headlessjson.h"
#include "host/services/headlesstables.h"

namespace q7z
{

namespace
{

constexpr int kProbeBytes = 64;

/// Keeps the events of the run. Nothing leaves the process.
class HeadlessUsageReport final : public HostUsageReport
{
public:
  Result<void> Send(const String& eventName, const DataDictionary& entries) noexcept override
  {
    try
    {
      _lastEvent = ToStd(eventName);
      _lastEntries = entries;
      return {};
    }
    catch (...)
    {
      return Error::OutOfMemory();
    }
  }
  void Clear() noexcept
  {
    _lastEvent.clear();
    _lastEntries = DataDictionary();
  }
  std::string GetEntry(const char* name) const
  {
    const Data* const value = _lastEntries.Find(DataKey(String(name, static_cast<Int>(std::strlen(name)))));
    if (!value)
      return "";
    const Result<String> text = value->GetString();
    return text.HasError() ? "" : ToStd(text.GetValue());
  }

private:
  std::string _lastEvent;
  DataDictionary _lastEntries;
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

struct LibraryCloser
{
  void operator()(void* library) const noexcept { dlclose(library); }
};

template <typename Function>
Function FindSymbol(void* library, const char* name)
{
  return reinterpret_cast<Function>(dlsym(library, name));
}

std::string GetFolder(const std::string& path)
{
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

/// The first bytes of a file; fewer when it is shorter or cannot be read.
std::vector<Byte> ReadProbe(const std::string& path)
{
  std::vector<Byte> probe(kProbeBytes);
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  const ssize_t count = fd < 0 ? 0 : pread(fd, probe.data(), probe.size(), 0);
  if (fd >= 0)
    close(fd);
  probe.resize(count > 0 ? static_cast<size_t>(count) : 0);
  return probe;
}

/// A text that views text, which outlives it.
String View(const std::string& text)
{
  return String(text.data(), static_cast<Int>(text.size()));
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

}  // namespace

struct HeadlessHost::State
{
  explicit State(int threads) : jobs(threads) {}

  std::unique_ptr<void, LibraryCloser> library;  // closed last
  ModuleHooks hooks;
  std::string modulePath;
  bool attached = false;

  HeadlessSceneState scene;
  FilePolicy policy;
  JobWarnings warnings;
  HeadlessFileTable files{policy};
  HeadlessResources resources;
  HeadlessDescriptions descriptions;
  HeadlessRegistrations registrations{descriptions};
  HeadlessConsole console;
  HeadlessDialogs dialogs;
  HeadlessBitmaps bitmaps;

  HeadlessJson json;
  HeadlessBase64Decoder base64Decoder;
  HeadlessBase64Encoder base64Encoder;
  HeadlessUrlPathDecoder urlPathDecoder;
  HeadlessUrlService urls;
  HeadlessHash hash;
  HeadlessUsageReport usageReport;
  HeadlessJobs jobs;

  HostTables tables;
  ServiceRegistry services;

  void Assemble(const HostSettings& settings);
};

void HeadlessHost::State::Assemble(const HostSettings& settings)
{
  const std::string folder =
    settings.resourceFolder.empty() ? GetFolder(settings.pluginPath) + "/resources" : settings.resourceFolder;
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
  FillSceneTables(tables, scene);
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
  services.Set(HostJobs::kId, static_cast<HostJobs*>(&jobs));
}

std::unique_ptr<HeadlessHost> HeadlessHost::Create(const HostSettings& settings, std::string& error)
{
  std::unique_ptr<void, LibraryCloser> library(dlopen(settings.pluginPath.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library)
  {
    const char* const reason = dlerror();
    error = "cannot load the plug-in \"" + settings.pluginPath + "\": " + (reason ? reason : "unknown reason");
    return nullptr;
  }
  const ModuleHooks hooks = {FindSymbol<HostEntryFunction>(library.get(), "q7z_main"),
                             FindSymbol<TarnoHook*>(library.get(), "g_tarno"),
                             FindSymbol<YieldFunction*>(library.get(), "g_CpuYieldDelegate")};
  if (!hooks.entry || !hooks.tarno || !hooks.yield)
  {
    error =
      "\"" + settings.pluginPath + "\" is no plug-in of this host: it does not export q7z_main, g_tarno and g_CpuYieldDelegate";
    return nullptr;
  }
  std::unique_ptr<HeadlessHost> host = CreateWithModule(settings, hooks, error);
  if (host)
    host->_state->library = std::move(library);
  return host;
}

std::unique_ptr<HeadlessHost> HeadlessHost::CreateWithModule(const HostSettings& settings, const ModuleHooks& hooks,
                                                             std::string& error)
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

HeadlessHost::HeadlessHost(std::unique_ptr<State> state) : _state(std::move(state))
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
    return path + " could not load its texts; the folder resources must lie beside it";
  if (state.hooks.entry(kStartMessage, nullptr, nullptr, nullptr) != 1)
    return path + " did not start; its descriptions must lie in the folder resources beside it";
  return "";
}

HeadlessOwner<HeadlessDocument> HeadlessHost::NewDocument()
{
  HeadlessOwner<HeadlessDocument> document(HeadlessDocument::Create());
  _state->scene.activeDocument = document.get();
  return document;
}

LoadReport HeadlessHost::Load(const LoadRequest& request, HeadlessDocument& document, HeadlessJob& job)
{
  State& state = *_state;
  LoadReport report;
  const HeadlessPlugin* loader = nullptr;
  for (const HeadlessPlugin& plugin : state.registrations.GetPlugins())
    loader = plugin.kind == kSceneLoaderKind ? &plugin : loader;
  if (!loader)
    return report;
  const std::unique_ptr<HostPluginInstance> instance(loader->factory());
  if (!instance)
    throw std::bad_alloc();
  auto& sceneLoader = static_cast<HostSceneLoader&>(*instance);
  HeadlessNode node(loader->id);
  if (!sceneLoader.Init(ToHost(&node)))
    throw std::bad_alloc();
  for (const auto& [id, value] : request.parameters)
  {
    if (!node.GetParameters().Set(id, value))
      throw std::bad_alloc();
  }

  state.scene.activeDocument = &document;
  state.warnings.job = &job;
  state.policy.SetInput(request.path, request.allowOutside, &state.warnings);
  state.urls.SetBaseFolder(request.texFolder);
  state.usageReport.Clear();
  const HostFilename name(View(request.path), &job);
  const std::vector<Byte> probe = ReadProbe(request.path);
  report.recognised = sceneLoader.Identify(ToHost(&node), name, probe.data(), static_cast<Int32>(probe.size()));
  if (report.recognised)
  {
    String error;
    report.returnValue = sceneLoader.Load(ToHost(&node), name, ToHost(&document), request.flags, &error);
    report.error = ToStd(error);
    report.status = state.usageReport.GetEntry("error");
    report.extension = state.usageReport.GetEntry("extension");
    report.generator = state.usageReport.GetEntry("generator");
    report.fileId = state.usageReport.GetEntry("file_id");
    report.nodeSpace = state.usageReport.GetEntry("nodespace");
    report.details = state.usageReport.GetEntry("details");
  }
  state.warnings.job = nullptr;
  state.policy.SetInput("", true, nullptr);
  return report;
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
