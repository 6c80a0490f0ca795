// Whatever fails in a save, and wherever it is cancelled: the status tells it, nothing is left over, the user's document is as it was,
// and the next save writes what the first one wrote.

#include <atomic>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "framework/check.h"
#include "host/services/headlessdialogs.h"
#include "plugin/export/gltfpreprocessor.h"
#include "plugin/export/gltfprogress.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostfile.h"
#include "plugin/module/hostservices.h"
#include "tests/support/failingmemory.h"
#include "tests/support/faultyfiles.h"
#include "tests/support/rowname.h"
#include "tests/support/savedfile.h"
#include "tests/support/scenecounts.h"

namespace q7z::test
{
namespace
{

// An animated mesh that its selections split, with a tag of each kind of data; an instance of it; a group, hidden and shown meshes,
// a skin with its joint, poses, a camera, and a branch with nothing in it.
constexpr const char* kScene = R"("name": "something of everything",
  "parameters": {"1001": 2, "1002": {"time": [0,1]}, "1003": {"time": [1,1]}, "2002": "by hand"},
  "materials": [{"id": 50, "type": 5703, "name": "Red", "channels": {}}, {"id": 51, "type": 5703, "name": "Blue", "channels": {}}],
  "objects": [
    {"id": 1, "type": 5100, "name": "Cut", "points": [0,0,0, 100,0,0, 0,100,0, 100,100,0, 0,200,0],
     "polygons": [0,1,3,2, 2,3,4,4, 4,3,2,2], "tags": [
       {"id": 2, "type": 5711, "normals": [0,0,1, 0,0,1, 0,0,1, 0,0,1, 0,0,1, 1,0,0, 0,1,0, 0,1,0, 0,0,-1, 0,0,-1, 0,0,-1, 0,0,-1]},
       {"id": 3, "type": 5671, "uvws": [0,0,0, 1,0,0, 1,1,0, 0,1,0, 0,1,0, 1,1,0, 0,0,0, 0,0,0, 0,0,0, 1,1,0, 0,1,0, 0,1,0]},
       {"id": 4, "type": 431000045, "perPoint": true, "colors": [1,0,0,1, 0,1,0,0.5, 0,0,1,0, 1,1,1,1, 0,0,0,1]},
       {"id": 5, "type": 5673, "name": "a", "polygons": [[0,0]]},
       {"id": 6, "type": 5673, "name": "b", "polygons": [[1,1]]},
       {"id": 7, "type": 5616, "name": "t", "material": 50, "parameters": {"1006": "a"}},
       {"id": 8, "type": 5616, "name": "u", "material": 51, "parameters": {"1006": "b"}}],
     "tracks": [{"id": [[903,23,0],[1000,19,0]], "keys": [{"time": [0,1], "value": 0.0, "interpolation": 2},
       {"time": [1,1], "value": 100.0, "interpolation": 2}]}],
     "children": [{"id": 9, "type": 5100, "name": "Round", "points": [0,0,0, 100,0,0, 0,100,0, 100,100,50],
       "polygons": [0,1,2,2, 1,3,2,2], "tags": [{"id": 10, "type": 5612, "on": true, "limit": false, "angle": 0.7},
         {"id": 11, "type": 1019365, "joints": [36], "weights": [[[0,1.0],[1,0.5]]]}]}]},
    {"id": 20, "type": 5126, "name": "Shown again, under a name that takes memory", "position": [300,0,0], "reference": 1},
    {"id": 30, "type": 5140, "name": "Group", "rotation": [0.5,0,0], "children": [
      {"id": 31, "type": 5103, "name": "Eye", "parameters": {"1001": 0, "1008": 1.0, "4600": 0.5}},
      {"id": 32, "type": 5140, "name": "Empty"},
      {"id": 33, "type": 5100, "name": "Hidden", "editor": 1, "render": 1, "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2]},
      {"id": 34, "type": 5100, "name": "Painted", "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2], "tags": [
        {"id": 35, "type": 431000045, "perPoint": false, "colors": [1,0,0,1, 0,1,0,1, 0,0,1,1, 0,0,1,1]},
        {"id": 37, "type": 1024237, "morphs": [{"name": "Default", "points": [0,0,0, 1,0,0, 0,1,0]},
          {"name": "A pose whose name takes memory", "strength": 1.0, "points": [0,0,1, 1,0,0, 0,1,0]}],
         "tracks": [{"id": [[4000,5,0],[1101,19,0]], "keys": [{"time": [0,1], "value": 1.0, "interpolation": 2}]}]}]},
      {"id": 36, "type": 1019362, "name": "Bone", "position": [10,0,0]}]}])";

class SaveFaults : public testing::Test
{
protected:
  SaveFaults() : _document(ReadScene(SceneText(kScene))), _text(WriteScene(*_document)) {}

  void UseForm(Int32 format)
  {
    _request.parameters = {{kFileFormatParameter, format}, {kBakeAnimationParameter, true}, {kExportSkinsParameter, true}};
  }
  SaveRequest& Request() { return _request; }
  HostTables& Tables() { return _host.Host().GetTables(); }
  HeadlessHost& Host() { return _host.Host(); }
  const std::vector<std::string>& Diagnostics() const { return _host.Diagnostics(); }

  /// One save; whatever becomes of it, the scene is as it was. Arms a failure just before.
  template <typename Arm>
  Int32 Save(Arm arm)
  {
    const SceneCounts before;
    _request.path = _folder.File();
    arm();
    _report = Host().Save(_request, *_document);
    _failures = StopFailingAllocations();
    EXPECT_EQ(SceneCounts(), before);
    EXPECT_EQ(WriteScene(*_document), _text) << "the save has changed the document";
    EXPECT_FALSE(_folder.HasAnythingElse()) << "a temporary file is left";
    _hasFile = _folder.HasFile();
    _bytes = _folder.TakeBytes();
    return _report.returnValue;
  }
  Int32 Save()
  {
    return Save([] {});
  }

  /// What a save writes when nothing fails.
  std::string SaveWell()
  {
    EXPECT_EQ(Save(), 0) << _report.error;
    EXPECT_NE(_bytes, "");
    return _bytes;
  }

  SaveReport _report;
  Int _failures = 0;
  Bool _hasFile = false;
  std::string _bytes;

private:
  TestHost _host;
  HeadlessOwner<HeadlessDocument> _document;  // goes before the host
  const std::string _text;
  SaveFolder _folder;
  SaveRequest _request;
};

struct MemoryCase
{
  std::string name;
  Int32 format;
  Int count;           // of allocations that fail, one behind the other
  bool isOnItsThread;  // the save runs on the thread of a progress dialog
};

class SaveMemory : public SaveFaults, public testing::WithParamInterface<MemoryCase>
{
protected:
  /// A failed allocation never ends in another file. Some of the host's operations say only that they failed, which is a state that
  /// the saver did not expect.
  void ExpectTheFailureToBeTold(const std::string& good)
  {
    if (_report.returnValue == 0)
    {
      EXPECT_EQ(_hasFile, _report.Succeeded()) << _report.error;
      EXPECT_THAT(_report.error, testing::AnyOf("", testing::StartsWith("the save could not be started: ")));
      EXPECT_TRUE(!_hasFile || _bytes == good) << "another file";
      return;
    }
    EXPECT_THAT(_report.returnValue, testing::AnyOf(-6, -7));
    const char* const expected = _report.returnValue == -6 ? "The file could not be saved: Illegal state: Condition "
                                                           : "The file could not be saved: Out of memory.";
    EXPECT_THAT(_report.error, testing::AnyOf(testing::StartsWith(expected), "out of memory"));
    EXPECT_TRUE(GetParam().format == kGlbFormat || !_hasFile) << "the text form is written whole or not at all";
    EXPECT_TRUE(good.starts_with(_bytes));
  }
};

TEST_P(SaveMemory, EveryAllocationFailsOnce)
{
  UseForm(GetParam().format);
  HeadlessJob job;
  Request().job = GetParam().isOnItsThread ? &job : nullptr;
  const std::string good = SaveWell();
  Int outOfMemory = 0;
  Int failAt = 1;
  for (;; ++failAt)
  {
    Save([&] { FailAllocation(failAt, GetParam().count); });
    if (!_failures)
      break;
    ExpectTheFailureToBeTold(good);
    outOfMemory += _report.returnValue == -7;
    if (failAt % 16 == 0)
    {
      EXPECT_EQ(SaveWell(), good);
    }
    ASSERT_FALSE(HasFailure()) << "allocation " << failAt;
  }
  EXPECT_GT(outOfMemory, failAt / 2);
  EXPECT_EQ(SaveWell(), good);
}

const MemoryCase kMemoryCases[] = {
  {"TextOne", kGltfFormat, 1, false},
  {"TextAllFollowing", kGltfFormat, Int(1) << 40, false},
  {"BinaryOne", kGlbFormat, 1, false},
  {"BinaryAllFollowing", kGlbFormat, Int(1) << 40, false},
  {"BinaryOneOnItsThread", kGlbFormat, 1, true},
};
INSTANTIATE_TEST_SUITE_P(Rows, SaveMemory, testing::ValuesIn(kMemoryCases), RowName());

#define OPEN(MODE)                                              \
  "Illegal state: Condition bf->Open(filename, FILEOPEN::" MODE \
  ", FILEDIALOG::ANY, BYTEORDER::V_MOTOROLA, 'Q7ZC', 'Q7Z1') not fulfilled."
constexpr const char* kNoFile = "Out of memory.";
constexpr const char* kClose = "Illegal state: Condition bf->Close() not fulfilled.";
constexpr const char* kWriteHeader = "Illegal state: Condition bf->WriteBytes(this, sizeof(UInt32) * 3) not fulfilled.";
constexpr const char* kWriteChunkHeader = "Illegal state: Condition bf->WriteBytes(this, sizeof(UInt32) * 2) not fulfilled.";
constexpr const char* kWriteChunk =
  "Illegal state: Condition bf->WriteBytes(chunkData.ToBlock().GetFirst(), sizeof(Char) * _chunkLength) not fulfilled.";

// What each call says when it fails, in their order: the file is emptied, then the header and the two chunks are appended.
constexpr const char* kBinaryCalls[] = {kNoFile,     OPEN("WRITE"),  kClose,  //
                                        kNoFile,     OPEN("APPEND"), kWriteHeader,
                                        kClose,  //
                                        kNoFile,     OPEN("APPEND"), kWriteChunkHeader,
                                        kWriteChunk, kClose,  //
                                        kNoFile,     OPEN("APPEND"), kWriteChunkHeader,
                                        kWriteChunk, kClose};
#undef OPEN

TEST_F(SaveFaults, EveryFileCallOfTheBinaryFormFailsOnce)
{
  UseForm(kGlbFormat);
  const std::string good = SaveWell();
  FaultyFiles files(Tables().file);
  Tables().file = &files;
  for (const char* const message : kBinaryCalls)
  {
    ++files.failAt;
    files.calls = 0;
    EXPECT_EQ(Save(), message == kNoFile ? -7 : -6) << "call " << files.failAt;
    EXPECT_EQ(files.calls, files.failAt + 1) << "it went on behind the failure";
    EXPECT_EQ(_report.error, std::string("The file could not be saved: ") + message);
    EXPECT_THAT(Diagnostics().back(), testing::StartsWith(std::string("The file could not be saved: ") + message + " ["));
    EXPECT_TRUE(good.starts_with(_bytes)) << "call " << files.failAt;
  }
  files.failAt = -1;
  files.calls = 0;
  EXPECT_EQ(SaveWell(), good);
  EXPECT_EQ(files.calls, static_cast<Int>(std::size(kBinaryCalls)));
}

// The modeling commands of the host, of which one fails.
class FaultyModeling final : public HostModelingTable
{
public:
  enum class Fault
  {
    kRefused,
    kNoResult,
    kNullResult,
  };

  FaultyModeling(HostModelingTable* base, Int32 command, Fault fault) noexcept : _base(base), _command(command), _fault(fault) {}
  Bool Send(Int32 command, HostModelingData& data) noexcept override
  {
    if (command != _command)
      return _base->Send(command, data);
    static HostObject* none[1] = {nullptr};
    data.results = none;
    data.resultCount = _fault == Fault::kNullResult ? 1 : 0;
    return _fault != Fault::kRefused;
  }

private:
  HostModelingTable* _base;
  Int32 _command;
  Fault _fault;
};

struct ModelingCase
{
  const char* name;
  Int32 command;
  FaultyModeling::Fault fault;
  const char* message;
};

class SaveModeling : public SaveFaults, public testing::WithParamInterface<ModelingCase>
{};

TEST_P(SaveModeling, EndsWithItsCommand)
{
  FaultyModeling modeling(Tables().modeling, GetParam().command, GetParam().fault);
  Tables().modeling = &modeling;
  UseForm(kGltfFormat);
  EXPECT_EQ(Save(), -6);
  EXPECT_EQ(_report.error, std::string("The file could not be saved: Illegal state: ") + GetParam().message);
  EXPECT_FALSE(_hasFile);
}

const ModelingCase kModelingCases[] = {
  {"SplitRefused", 220, FaultyModeling::Fault::kRefused, "Condition SendModelingCommand(220, data) not fulfilled."},
  {"SplitEmpty", 220, FaultyModeling::Fault::kNoResult, "Could not split object 'Cut'"},
  {"SplitNull", 220, FaultyModeling::Fault::kNullResult, "Could not split object 'Cut'"},
  {"ConvertRefused", 245, FaultyModeling::Fault::kRefused, "Condition SendModelingCommand(245, data) not fulfilled."},
  {"ConvertEmpty", 245, FaultyModeling::Fault::kNoResult, "Condition data.result not fulfilled."},
  {"ConvertNull", 245, FaultyModeling::Fault::kNullResult, "Condition bakedRoot not fulfilled."},
  {"TriangulateRefused", 221, FaultyModeling::Fault::kRefused, "Condition SendModelingCommand(221, data) not fulfilled."},
  {"CleanUpRefused", 227, FaultyModeling::Fault::kRefused, "Condition SendModelingCommand(227, data) not fulfilled."},
};
INSTANTIATE_TEST_SUITE_P(Rows, SaveModeling, testing::ValuesIn(kModelingCases), RowName());

// Fails to write.
class FaultyUrls final : public HostUrlService
{
public:
  ErrorClass errorClass = ErrorClass::kIo;

  HostFileSystemType GetType(const Url&) noexcept override { return HostFileSystemType::kNone; }
  Result<void> Write(const Url&, const Byte*, Int) noexcept override { return MAKE_ERROR(errorClass, "No room left."_s); }
  Result<void> CreateFolder(const Url&) noexcept override { return {}; }
  Result<Url> GetBaseFolder() noexcept override { return Url(); }
};

TEST_F(SaveFaults, StatusFollowsTheErrorsClass)
{
  const std::pair<ErrorClass, Int32> rows[] = {{ErrorClass::kIllegalState, -6},
                                               {ErrorClass::kIllegalArgument, -6},
                                               {ErrorClass::kNullPtr, -100},
                                               {ErrorClass::kOutOfMemory, -7},
                                               {ErrorClass::kIo, -100},
                                               {ErrorClass::kUnexpected, -100},
                                               {ErrorClass::kUnsupportedOperation, -100},
                                               {ErrorClass::kFunctionNotImplemented, -100},
                                               {ErrorClass::kOperationCancelled, -8}};
  UseForm(kGltfFormat);
  FaultyUrls urls;
  Host().ReplaceService(HostUrlService::kId, static_cast<HostUrlService*>(&urls));
  for (const auto& [errorClass, status] : rows)
  {
    urls.errorClass = errorClass;
    EXPECT_EQ(Save(), status);
    EXPECT_EQ(_report.error, "The file could not be saved: No room left.");
    EXPECT_FALSE(_hasFile);
  }
}

TEST(SaveWithoutService, FailsOnlyWhenItIsNeeded)
{
  const struct
  {
    const char* id;
    Int32 format;
    const char* message;  // empty when the save does without
  } rows[] = {{HostJson::kId, kGltfFormat, "The host offers no JSON writer."},
              {HostJson::kId, kGlbFormat, "The host offers no JSON writer."},
              {HostBase64Encoder::kId, kGltfFormat, "The host offers no base64 encoder."},
              {HostBase64Encoder::kId, kGlbFormat, ""},
              {HostUrlService::kId, kGltfFormat, "The host offers no file access by location."},
              {HostUrlService::kId, kGlbFormat, ""},
              {HostJobs::kId, kGltfFormat, ""}};
  for (const auto& row : rows)
  {
    TestHost host;
    const HeadlessOwner<HeadlessDocument> document = ReadScene(SceneText(kScene));
    const SaveFolder folder;
    const Parameters parameters = {{kFileFormatParameter, row.format}};
    ASSERT_EQ(folder.Save(host, *document, parameters).returnValue, 0);
    const std::string good = folder.TakeBytes();
    host.Host().ReplaceService(row.id, nullptr);
    const SaveReport report = folder.Save(host, *document, parameters);
    EXPECT_EQ(report.returnValue, *row.message ? -100 : 0);
    EXPECT_EQ(folder.TakeBytes(), *row.message ? "" : good);
    EXPECT_EQ(report.error, (*row.message ? "The file could not be saved: " : "") + std::string(row.message));
  }
}

// A progress dialog without a thread, whose user cancels at the n-th question.
class DirectDialogs final : public HeadlessDialogs
{
public:
  Bool mayShow = true;
  Bool canOpen = true;
  int cancelAt = 0;
  std::atomic<int> questions{0};
  int opened = 0;
  int begun = 0;
  int ended = 0;

  Bool MayShowDialog() noexcept override { return mayShow; }
  void BeginBackgroundWork(Int32) noexcept override { ++begun; }
  void EndBackgroundWork() noexcept override { ++ended; }
  Bool RunWorkerDialog(HostWorkerClient* client, Int32* result) noexcept override
  {
    ++opened;
    if (canOpen)
      *result = client->Run();
    return canOpen;
  }
  Bool IsWorkerCancelled() noexcept override { return ++questions == cancelAt; }
};

class SaveDialog : public SaveFaults, public testing::WithParamInterface<Int32>
{
protected:
  SaveDialog()
  {
    UseForm(GetParam());
    Tables().dialog = &_dialogs;
    Request().flags |= kLoadDialogsAllowed;
  }
  DirectDialogs _dialogs;
};

TEST_P(SaveDialog, EveryQuestionCanCancel)
{
  const std::string good = SaveWell();
  const int questions = _dialogs.questions;
  for (_dialogs.cancelAt = 1; _dialogs.cancelAt <= questions; ++_dialogs.cancelAt)
  {
    _dialogs.questions = 0;
    ASSERT_EQ(Save(), -8) << "question " << _dialogs.cancelAt;
    ASSERT_EQ(_report.error, "The file could not be saved: The save was cancelled.");
    ASSERT_FALSE(_hasFile) << "question " << _dialogs.cancelAt;
    ASSERT_LE(_dialogs.questions, _dialogs.cancelAt + 1) << "it went on";
  }
  // One ahead of all, one for each of two selections, one for each of three frames and of the objects in it, one for each converted
  // and each written object, one behind all; at least four meshes and two groups are there.
  EXPECT_GT(questions, 1 + 2 + 3 * (1 + 6) + 6 + 6 + 1);
  _dialogs.questions = 0;
  EXPECT_EQ(SaveWell(), good) << "the cancelled save is forgotten";
  EXPECT_EQ(_dialogs.questions, questions);
}

TEST_P(SaveDialog, ThatDoesNotOpenLeavesNothingWritten)
{
  _dialogs.canOpen = false;
  EXPECT_EQ(Save(), 0);
  EXPECT_FALSE(_hasFile);
  EXPECT_EQ(_dialogs.begun, 1);
  EXPECT_EQ(_dialogs.ended, 1);
  _dialogs.canOpen = true;
  SaveWell();
}

INSTANTIATE_TEST_SUITE_P(Forms, SaveDialog, testing::Values(kGltfFormat, kGlbFormat),
                         [](const auto& row) { return row.param == kGlbFormat ? "Binary" : "Text"; });

// Keeps what it is told.
class RecordingProgress final : public ProgressDialog
{
public:
  RecordingProgress() noexcept { ProgressBegin(this); }
  ~RecordingProgress() { ProgressDetach(); }
  void SetStatusText(const String& text) noexcept override { texts.emplace_back(text.GetView()); }
  void SetProgress(Float value) noexcept override { lastProgress = value; }
  Bool IsCancelled() noexcept override { return false; }

  std::vector<std::string> texts;
  Float lastProgress = 0;
};

TEST(SaveProgress, NamesTheStages)
{
  const TestHost host;
  const HeadlessOwner<HeadlessDocument> document = ReadScene(SceneText(kScene));
  GltfPreprocessor preprocessor;
  preprocessor.SetDocument(ToHost(document.get()));
  ExportOptions options;
  options.bakeAnimation = true;
  RecordingProgress progress;
  EXPECT_FALSE(preprocessor.Run(options).HasError());
  const auto resource = [](Int32 number) { return std::string(HostLoadString(number).GetView()); };
  EXPECT_THAT(progress.texts, testing::ElementsAre(resource(10003), resource(10004), resource(10005), resource(10006)));
  EXPECT_DOUBLE_EQ(progress.lastProgress, 1);
}

TEST_F(SaveFaults, DialogIsForHostAndFlagToAllow)
{
  UseForm(kGlbFormat);
  const struct
  {
    Bool mayShow;
    Int32 flags;
    int opened;
  } rows[] = {{true, 1 | 8, 1}, {false, 1 | 8, 0}, {true, 1, 0}, {true, 1 | 2 | 4, 0}};
  for (const auto& row : rows)
  {
    DirectDialogs dialogs;
    dialogs.mayShow = row.mayShow;
    Tables().dialog = &dialogs;
    Request().flags = row.flags;
    SaveWell();
    EXPECT_EQ(dialogs.opened, row.opened) << row.flags;
    EXPECT_EQ(dialogs.begun, row.opened);
    EXPECT_EQ(dialogs.ended, 1);
    EXPECT_EQ(dialogs.questions > 0, row.opened > 0) << "only a dialog can be asked";
  }
}

}  // namespace
}  // namespace q7z::test
