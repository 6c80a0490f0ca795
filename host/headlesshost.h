#pragma once

// HeadlessHost: the host in one object. It implements the host interface, loads the plug-in, drives it by messages, and offers what
// the plug-in registered. One host at a time may have a given library loaded. Documents must be gone before their host.

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/scene/headlessdocument.h"
#include "host/services/headlessjob.h"
#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"
#include "plugin/module/hosttables.h"

namespace q7z
{

/// How a host is made.
struct HostSettings
{
  std::string pluginPath;      ///< the library; its texts lie in the folder resources beside it
  std::string resourceFolder;  ///< when not beside the library
  std::string nodeSpace;       ///< id of the active material node space; empty for the document's own
  int threads = 0;             ///< for jobs; 0 for one a core
  /// Configuration variables of the module, set before it starts: name and "true" or "false".
  std::vector<std::pair<std::string, std::string>> configuration;
  /// Lines of the console, of the diagnostic output, and of message boxes.
  std::function<void(const std::string&)> onConsole;
  std::function<void(const std::string&)> onDiagnostic;
  std::function<void(const std::string&)> onMessageBox;
};

/// The module's three exported names.
struct ModuleHooks
{
  HostEntryFunction entry = nullptr;
  TarnoHook* tarno = nullptr;
  YieldFunction* yield = nullptr;
};

struct LoadRequest
{
  std::string path;
  /// Parameters of the loader by id, over its defaults.
  std::vector<std::pair<int, HostValue>> parameters;
  bool allowOutside = false;  ///< side files outside the input's folder, too
  std::string texFolder;      ///< the folder in which `tex` is made; empty for a temporary one, which goes with the host
  Int32 flags = kLoadObjects | kLoadMaterials;
};

/// What came of a load. Success is told by status alone: "none".
struct LoadReport
{
  bool recognised = false;  ///< a loader took the file; all else is empty otherwise
  Int32 returnValue = 0;
  std::string status;
  std::string error;  ///< what failed, empty on success
  std::string extension;
  std::string generator;
  std::string fileId;
  std::string nodeSpace;
  std::string details;  ///< the load's report dictionary, as JSON
  bool Succeeded() const { return status == "none"; }
};

struct SaveRequest
{
  std::string path;
  /// The file that the document came from: images are read from its folder and below, and from where its load wrote some. Empty for
  /// images that lie anywhere.
  std::string input;
  bool allowOutside = false;  ///< images that lie elsewhere, too
  /// Parameters of the saver by id, over its defaults.
  std::vector<std::pair<int, HostValue>> parameters;
  Int32 flags = kLoadObjects | kLoadMaterials;
  /// Shows the progress of the save, which then runs on a thread of its own and can be cancelled; null for a plain call.
  HeadlessJob* job = nullptr;
};

/// What came of a save.
struct SaveReport
{
  bool available = false;             ///< the plug-in offers a saver; all else is empty otherwise
  Int32 returnValue = 0;              ///< 0, or the saver's negative status
  std::string error;                  ///< what failed, empty on success
  std::vector<std::string> warnings;  ///< what was left out, each once, sorted
  std::string writeFailure;           ///< why the file could not be written, when that is what failed
  bool Succeeded() const { return available && error.empty(); }
};

/// What a user would do in the dialog of a command.
struct DialogRequest
{
  Int32 command = 0;  ///< the id under which it was registered
  Int32 inputField = 0;
  String input;
  Int32 menuItem = 0;  ///< chosen before the input; 0 for none
  Int32 outputField = 0;
};

class HeadlessHost
{
public:
  /// Loads and starts the plug-in. @return null, with error telling what failed and where, when that is not possible. Does not
  /// throw.
  static std::unique_ptr<HeadlessHost> Create(const HostSettings& settings, std::string& error);
  /// The same for a module that is linked into this program.
  static std::unique_ptr<HeadlessHost> CreateWithModule(const HostSettings& settings, const ModuleHooks& hooks,
                                                        std::string& error);
  ~HeadlessHost();
  HeadlessHost(const HeadlessHost&) = delete;
  HeadlessHost& operator=(const HeadlessHost&) = delete;

  /// An empty document, which becomes the active one. Null without memory.
  HeadlessOwner<HeadlessDocument> NewDocument();

  /// Loads a file into a document, which becomes the active one. Messages go to the job. Does not throw: without memory of our own
  /// the status is "out_of_memory", as when the plug-in runs out of it.
  LoadReport Load(const LoadRequest& request, HeadlessDocument& document, HeadlessJob& job) noexcept;

  /// The folder in which `tex` was made for want of another; empty when none was needed.
  const std::string& GetTemporaryFolder() const noexcept;

  /// Saves a document, which becomes the active one. Does not throw.
  SaveReport Save(const SaveRequest& request, HeadlessDocument& document) noexcept;

  /// Runs a command of the plug-in and lets the dialog that it opens work: with a text in one field, and an item of the menu chosen
  /// when that is not 0. @return the text of another field; an error when there is no such command, dialog or field.
  Result<String> RunDialog(const DialogRequest& request) noexcept;

  /// The tables that the module sees. Tests swap single pointers.
  HostTables& GetTables();
  /// Puts a service in the place of the one under id, or takes it away (null).
  void ReplaceService(const std::string& id, void* service);
  /// The registered plug-ins' ids, in order.
  std::vector<int> GetRegisteredIds() const;

private:
  struct State;
  class LoadScope;
  class SaveScope;
  explicit HeadlessHost(std::unique_ptr<State> state) noexcept;
  std::string Start(const HostSettings& settings);
  LoadReport RunLoad(const LoadRequest& request, HeadlessDocument& document, HeadlessJob& job);
  SaveReport RunSave(const SaveRequest& request, HeadlessDocument& document);
  std::unique_ptr<State> _state;
};

}  // namespace q7z
