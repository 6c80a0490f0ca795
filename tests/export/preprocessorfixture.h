#pragma once

// PreprocessorTest: a document in a headless host, builders for what the preparation of a scene looks at, and the preparation itself.
// Every test ends with nothing left over, nothing freed or inserted while it stood somewhere.

#include <atomic>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/scene/scenediagnostics.h"
#include "plugin/export/gltfpreprocessor.h"
#include "plugin/export/gltfprogress.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

/// The counters of the scene model at one moment.
struct SceneCounts
{
  Int nodes = GetSceneDiagnostics().liveNodes;
  Int tracks = GetSceneDiagnostics().liveTracks;
  Int mistakes =
    GetSceneDiagnostics().insertedTwice + GetSceneDiagnostics().freedWhileInserted + GetSceneDiagnostics().refusedCycles;
  friend bool operator==(const SceneCounts&, const SceneCounts&) = default;
};

inline void PrintTo(const SceneCounts& counts, std::ostream* stream)
{
  *stream << counts.nodes << " nodes, " << counts.tracks << " tracks, " << counts.mistakes << " mistakes";
}

std::string Text(const String& text);
String Text(const std::string& text);

/// The modeling commands of the host, written down, with one that can be made to fail.
class RecordingModeling final : public HostModelingTable
{
public:
  enum class Fault
  {
    kNone,
    kRefused,
    kNoResult,
    kNullResult,
  };

  explicit RecordingModeling(HostModelingTable* base) noexcept : _base(base) {}
  Bool Send(Int32 command, HostModelingData& data) noexcept override;

  bool isRecording = true;
  Int32 faultyCommand = 0;
  Fault fault = Fault::kNone;
  std::vector<std::pair<Int32, std::string>> sent;  ///< command and the object's name
  std::string settings;                             ///< what 245 was given

private:
  HostModelingTable* _base;
};

/// A dialog whose user cancels at the n-th question.
class CancellingDialog final : public ProgressDialog
{
public:
  explicit CancellingDialog(int cancelAt = 0) noexcept : _cancelAt(cancelAt) { ProgressBegin(this); }
  ~CancellingDialog()
  {
    ProgressDetach();
    ProgressClearCancelled();
  }
  void SetStatusText(const String& text) noexcept override { texts.push_back(Text(text)); }
  void SetProgress(Float value) noexcept override { lastProgress = value; }
  Bool IsCancelled() noexcept override { return ++_polls == _cancelAt; }
  bool WasAsked() const noexcept { return _polls >= _cancelAt; }

  std::vector<std::string> texts;
  Float lastProgress = 0;

private:
  const int _cancelAt;
  std::atomic<int> _polls{0};
};

/// A key: seconds and value.
using KeyValue = std::pair<Float, Float>;

class PreprocessorTest : public testing::Test
{
protected:
  PreprocessorTest();
  void TearDown() override;

  HostDocument* Document() { return _host->Document(); }
  TestHost& Host() { return *_host; }
  RecordingModeling& Modeling() { return *_modeling; }

  // Builders; new objects go last.
  HostObject* Add(const std::string& name, HostObject* parent = nullptr, Int32 type = kNullObjectType);
  /// A polygon object of triangles in a row, with two points more than triangles.
  HostPolygonObject* AddStrip(const std::string& name, int triangles, HostObject* parent = nullptr);
  HostMaterial* AddMaterial(const std::string& name);
  static void Select(HostObject* op, const std::string& name, std::initializer_list<std::pair<int, int>> ranges);
  static void Texture(HostObject* op, const std::string& restriction, HostMaterial* material);
  static HostWeightTag* Bind(HostObject* op, std::initializer_list<HostObject*> joints);
  /// A track with linear keys.
  static HostTrack* Animate(HostObject* op, const HostDescId& id, std::initializer_list<KeyValue> keys);
  static void Hide(HostObject* op);
  void SetTimes(Int32 rate, const HostTime& first, const HostTime& last);

  /// Prepares the document. @return "" or the error's class id, a blank and its message.
  std::string Run();

  /// What the walk of an export sees: "A[B#2, C^], D" in list order, without what is kept for links. Marks tell the type: none for
  /// a group, "#" and the number of polygons, "^" a joint, "*" a camera, "=" an instance, "?" anything else.
  std::string Outline();
  /// The first of a name among these, and among the objects as they stood before the conversion. Null for none.
  HostObject* Find(const std::string& name);
  HostObject* FindOriginal(const std::string& name);

  ExportOptions _options;
  Int32 _count = -1;  ///< what the last run gave back

private:
  const SceneCounts _before;
  std::optional<TestHost> _host;
  std::optional<RecordingModeling> _modeling;
};

/// "1, 2.5, -3": the values of a track's keys; "none" for no track.
std::string Values(const HostObject* op, const HostDescId& id);

}  // namespace q7z::test
