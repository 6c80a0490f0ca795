#pragma once

// ImportTest: loads through a host in the test, and holds every test to what the scene's own counters say at its end: nothing is
// left over, nothing was freed or inserted while it stood somewhere.

#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlessnode.h"
#include "plugin/import/gltfimport.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostservices.h"
#include "tests/import/scenetext.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/rowname.h"
#include "tests/support/scenecounts.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

/// The object of a name, or null.
inline HeadlessObject* FindObject(HeadlessDocument& scene, const std::string& name)
{
  HeadlessObject* op = scene.GetFirstObject();
  while (op && op->GetName().GetView() != name)
    op = HeadlessDocument::GetNextInDocument(op);
  return op;
}

class ImportTest : public testing::Test
{
protected:
  ImportTest() { _host.emplace(); }

  /// The counters come from before there was a host; the document goes with it.
  void TearDown() override
  {
    _host.reset();
    EXPECT_EQ(SceneCounts(), _before);
  }

  TestHost& Host() { return *_host; }

  /// Loads a document whose top-level members are given; `file` adds meshes and accessors. @return the status word.
  std::string Load(const std::string& members, const GltfJson& file = GltfJson())
  {
    return Host().LoadText("{" + members + (members.empty() ? "" : ",") + file.Text().substr(1));
  }

  std::string Outline() { return WriteOutline(Host().Document()); }

  /// The nodes that warnings name as left out, in order.
  std::vector<int> FailedNodes()
  {
    const std::string pattern(HostLoadString(10015).GetView());
    const std::string before = pattern.substr(0, pattern.find('@'));
    std::vector<int> indices;
    for (const JobMessage& message : Host().Messages())
    {
      if (message.text.starts_with(before))
      {
        EXPECT_EQ(message.messageClass, HostMessageClass::kWarning);
        indices.push_back(std::stoi(message.text.substr(before.size())));
      }
    }
    return indices;
  }

private:
  const SceneCounts _before;
  std::optional<TestHost> _host;
};

/// Mesh 0 is a triangle with all attributes, mesh 1 two of them as two primitives, mesh 2 has a primitive without positions. Mesh 3
/// repeats mesh 0. Mesh 4 has two targets and hangs on the first joint of a skin.
inline GltfJson SomeMeshes()
{
  GltfJson file;
  const std::string positions = std::to_string(file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3"));
  const std::string normals = std::to_string(file.Floats({0, 0, 1, 0, 0, 1, 0, 0, 1}, "VEC3"));
  const std::string uvs = std::to_string(file.Floats({0, 0, 1, 0, 0, 1}, "VEC2"));
  const std::string colors = std::to_string(file.Floats({1, 0, 0, 0, 1, 0, 0, 0, 1}, "VEC3"));
  const std::string primitive = R"({"attributes":{"POSITION":)" + positions + R"(,"NORMAL":)" + normals + R"(,"TEXCOORD_0":)" +
                                uvs + R"(,"COLOR_0":)" + colors + "}}";
  file.Add("meshes", R"({"primitives":[)" + primitive + "]}");
  file.Add("meshes", R"({"primitives":[)" + primitive + "," + primitive + "]}");
  file.Add("meshes", R"({"primitives":[{"attributes":{}}]})");
  file.Add("meshes", R"({"primitives":[)" + primitive + "]}");
  const std::string joints = std::to_string(file.Values(std::vector<uint8_t>(12), 5121, "VEC4"));
  const std::string weights = std::to_string(file.Floats({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, "VEC4"));
  const std::string target = R"({"POSITION":)" + positions + R"(,"NORMAL":)" + positions + "}";
  file.Add("meshes", R"({"weights":[0.5,1],"primitives":[{"attributes":{"POSITION":)" + positions + R"(,"NORMAL":)" + normals +
                       R"(,"JOINTS_0":)" + joints + R"(,"WEIGHTS_0":)" + weights + R"(},"targets":[)" + target + "," + target +
                       "]}]}");
  return file;
}

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

/// The loader driven without the host's facade, for tests that give it a job, arguments or failures of their own. The tables are those
/// of the TestHost that is alive.
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
