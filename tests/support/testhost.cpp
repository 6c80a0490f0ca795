#include "tests/support/testhost.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "plugin/module/moduleshell.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{

namespace
{

Int32 AnswerMessage(Int32 message, void* argument1, void* argument2, void* argument3)
{
  return AnswerModuleMessage(message, argument1, argument2, argument3);
}

std::unique_ptr<HeadlessHost> MakeHost(int threads, std::vector<std::string>* diagnostics)
{
  HostSettings settings;
  settings.threads = threads;
  settings.pluginPath = "io_gltf.so";
  settings.resourceFolder = Q7Z_TEST_SOURCE_DIR "/plugin/resources";
  if (diagnostics)
    settings.onDiagnostic = [diagnostics](const std::string& line) { diagnostics->push_back(line); };
  std::string error;
  std::unique_ptr<HeadlessHost> host =
    HeadlessHost::CreateWithModule(settings, {AnswerMessage, &g_tarno, &g_CpuYieldDelegate}, error);
  if (!host)
    throw std::runtime_error(error);
  return host;
}

}  // namespace

TestHost::TestHost(int threads)
    : _host(MakeHost(threads, &_diagnostics)), _document(_host->NewDocument()), _job(std::make_unique<HeadlessJob>())
{}
TestHost::~TestHost() = default;

std::string TestHost::LoadText(std::string_view json)
{
  return LoadBytes(std::vector<std::uint8_t>(json.begin(), json.end()), "gltf");
}

std::string TestHost::LoadBytes(const std::vector<std::uint8_t>& bytes, const std::string& suffix)
{
  const TestFolder folder;
  _request.path = folder.Write("file." + suffix, bytes);
  _report = _host->Load(_request, *_document, *_job);
  return _report.recognised ? _report.status : "not recognised";
}

HostDocument* TestHost::Document()
{
  return ToHost(_document.get());
}

int TestHost::WarningCount() const
{
  return static_cast<int>(std::count_if(Messages().begin(), Messages().end(), [](const JobMessage& message)
                                        { return message.messageClass == HostMessageClass::kWarning; }));
}

void LoadOnce(const std::uint8_t* data, std::size_t size, const char* suffix)
{
  static const std::unique_ptr<HeadlessHost> host = MakeHost(0, nullptr);
  static const TestFolder folder;
  static const std::string path = folder / (std::string("file.") + suffix);
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (!file)
    std::abort();
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  HeadlessOwner<HeadlessDocument> document = host->NewDocument();
  HeadlessJob job;
  LoadRequest request;
  request.path = path;
  host->Load(request, *document, job);
  document.reset();
}

}  // namespace q7z::test
