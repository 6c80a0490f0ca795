#pragma once

// DirectLoad: the loader driven without the host's facade, for tests that give it a job, arguments or failures of their own. The
// tables are those of the TestHost that is alive.

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlessnode.h"
#include "plugin/import/gltfimport.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hostservices.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

/// Remembers the last event; takes no memory, so that it also hears of loads that had none.
class LastEvent final : public HostUsageReport
{
public:
  Result<void> Send(const String& eventName, const DataDictionary& entries) noexcept override
  {
    ++count;
    isLoadEvent = eventName == "net.tarno.analytics.exchange"_s;
    static const DataKey kError("error");
    const Data* const value = entries.Find(kError);
    const Result<String> text = value ? value->GetString() : Result<String>(String());
    std::snprintf(status, sizeof status, "%.*s", text.HasError() ? 0 : static_cast<int>(text.GetValue().GetByteCount()),
                  text.HasError() ? "" : text.GetValue().GetBytes());
    return {};
  }

  int count = 0;
  Bool isLoadEvent = false;
  char status[40] = "";
};

class DirectLoad
{
public:
  DirectLoad() : _loader(static_cast<HostSceneLoader*>(MakeGltfSceneLoader())), _node(1060210)
  {
    if (!_loader || !_loader->Init(ToHost(&_node)))
      throw std::runtime_error("no loader");
  }

  HostNode* Node() { return ToHost(&_node); }
  HostSceneLoader& Loader() { return *_loader; }

  Bool Identify(const std::string& path, const Bytes& probe)
  {
    return _loader->Identify(Node(), Name(path), probe.data(), static_cast<Int32>(probe.size()));
  }

  /// @return what the loader returns.
  Int32 Load(const std::string& path, HostDocument* document, HostBackgroundJob* job = nullptr,
             Int32 flags = kLoadObjects | kLoadMaterials)
  {
    String error;
    return _loader->Load(Node(), Name(path, job), document, flags, &error);
  }

  /// Views the path, so that a load whose memory is to run out takes none here.
  static HostFilename Name(const std::string& path, HostBackgroundJob* job = nullptr)
  {
    return HostFilename(String(path.data(), static_cast<Int>(path.size())), job);
  }
  static HostFilename Name(std::string&&, HostBackgroundJob* = nullptr) = delete;

private:
  std::unique_ptr<HostSceneLoader> _loader;
  HeadlessNode _node;
};

}  // namespace q7z::test
