#pragma once

// A module for tests of the facade: its entry records the messages, registers a loader and answers as the test
// wants. One at a time; its state is reset by each FakeModule.

#include <functional>
#include <string>
#include <vector>

#include "host/headlesshost.h"
#include "plugin/module/hostfile.h"
#include "tests/host/servicesupport.h"

namespace q7z::test
{

class FakeModule
{
public:
  FakeModule();
  ~FakeModule();
  FakeModule(const FakeModule&) = delete;
  FakeModule& operator=(const FakeModule&) = delete;

  ModuleHooks Hooks() { return {Answer, &hook, &yield}; }
  /// A host around it, with the shipped resources.
  std::unique_ptr<HeadlessHost> Start(std::string& error, HostSettings settings = {});

  template <typename Service>
  Service* Find()
  {
    return static_cast<Service*>(hook.services->Find(Service::kId));
  }

  std::vector<std::string> calls;  // messages, and what was called of the loader
  bool recordsCalls = true;
  int refusedMessage = 0;
  bool makesInstances = true;
  bool initSucceeds = true;
  std::string suffix = ".gltf";  // of names that Identify accepts
  /// The work of a load: given the name and the loader's options. Its answer is what Load returns.
  std::function<Int32(const HostFilename& name, HostContainer* options, String* error)> onLoad;

  const HostTables* tables = nullptr;
  std::string path;  // of the module, as told with the attach message
  TarnoHook hook;
  YieldFunction yield = nullptr;
  bool firstSwitch = false;
  bool secondSwitch = false;

  void Record(const char* call, const std::string& detail = "");

private:
  static Int32 Answer(Int32 message, void* argument1, void* argument2, void* argument3);
  bool Register();
  ConfigVariableEntry _entries[2];
};

/// The module of the running test.
FakeModule& GetFakeModule();

}  // namespace q7z::test
