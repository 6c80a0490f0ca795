#pragma once

// TestHost: a headless host around the plug-in's logic as it is linked into the test, for one load. The wrappers of the interface
// work on its document.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/headlesshost.h"
#include "plugin/module/hostdocument.h"

namespace q7z::test
{

class TestHost
{
public:
  /// @param threads  for jobs; 0 for one a core.
  explicit TestHost(int threads = 0);
  ~TestHost();

  /// Sets a parameter of the loader.
  void Set(Int32 parameter, HostValue value) { _request.parameters.emplace_back(parameter, std::move(value)); }
  LoadRequest& Request() { return _request; }

  /// Loads a text as .gltf, bytes as .glb. @return the status word.
  std::string LoadText(std::string_view json);
  std::string LoadBytes(const std::vector<std::uint8_t>& bytes, const std::string& suffix = "glb");

  HostDocument* Document();
  HeadlessDocument& Scene() { return *_document; }
  HeadlessHost& Host() { return *_host; }
  const LoadReport& Report() const { return _report; }
  const std::vector<JobMessage>& Messages() const { return _job->GetMessages(); }
  int WarningCount() const;
  /// Lines of the diagnostic output.
  const std::vector<std::string>& Diagnostics() const { return _diagnostics; }

private:
  std::vector<std::string> _diagnostics;
  std::unique_ptr<HeadlessHost> _host;
  HeadlessOwner<HeadlessDocument> _document;  // goes before the host
  std::unique_ptr<HeadlessJob> _job;
  LoadRequest _request;
  LoadReport _report;
};

/// Loads bytes into a document of a host that is made once, and forgets both; for fuzzers.
void LoadOnce(const std::uint8_t* data, std::size_t size, const char* suffix);

}  // namespace q7z::test
