// A load as the host sees it: identification, progress, cancellation, status words, return values, message boxes, the document's
// texts and the load report.

#include <limits>

#include "host/services/headlessdialogs.h"
#include "tests/import/directload.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

const char* const kOneNode = R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A"}])";

struct IdentifyCase
{
  const char* name;
  const char* fileName;
  Bytes probe;
  Bool accepted;
};

Bytes GlbHeader(uint32_t magic, uint32_t version, uint32_t length)
{
  Bytes bytes;
  for (const uint32_t word : {magic, version, length})
  {
    for (int shift = 0; shift < 32; shift += 8)
      bytes.push_back(static_cast<uint8_t>(word >> shift));
  }
  return bytes;
}

const IdentifyCase kIdentifyCases[] = {
  {"TextBySuffix", "a/b.gltf", ToBytes("no JSON at all"), true},
  {"TextBySuffixInCapitals", "b.GLTF", {}, true},
  {"BinaryByContent", "a.dat", GlbHeader(0x46546C67, 2, 13), true},
  {"BinaryUnderTheTextSuffix", "a.gltf", GlbHeader(0x46546C67, 2, 13), true},
  {"SuffixOfTheBinaryFormAlone", "a.glb", ToBytes("{}"), false},
  {"OldVersion", "a.glb", GlbHeader(0x46546C67, 1, 13), false},
  {"TooShortByItsHeader", "a.glb", GlbHeader(0x46546C67, 2, 12), false},
  {"OtherMagic", "a.glb", GlbHeader(0x46546C68, 2, 13), false},
  {"HeaderCutShort", "a.glb", {0x67, 0x6C, 0x54, 0x46, 2, 0, 0, 0, 13, 0, 0}, false},
  {"NoSuffix", "gltf", ToBytes("{}"), false},
};

void PrintTo(const IdentifyCase& row, std::ostream* stream)
{
  *stream << row.name;
}

class ImportIdentify : public ImportTest, public testing::WithParamInterface<IdentifyCase>
{};

TEST_P(ImportIdentify, AcceptsByContentOrSuffix)
{
  EXPECT_EQ(DirectLoad().Identify(GetParam().fileName, GetParam().probe), GetParam().accepted);
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportIdentify, testing::ValuesIn(kIdentifyCases), RowName());

// What a load reports to its job; cancels when a number of reports was made.
class RecordingJob final : public HostBackgroundJob
{
public:
  Int32 AddStage(Float weight, const String& title) noexcept override
  {
    weights.push_back(weight);
    titles.emplace_back(title.GetView());
    reports.emplace_back();
    return static_cast<Int32>(weights.size() - 1);
  }
  void SetProgress(Int32 stage, Float value) noexcept override { reports[static_cast<size_t>(stage)].push_back(value); }
  Bool IsCancelled() noexcept override { return questions++ >= cancelAt; }
  void AddMessage(HostMessageClass, const String& text) noexcept override { messages.emplace_back(text.GetView()); }

  int cancelAt = std::numeric_limits<int>::max();
  int questions = 0;
  std::vector<Float> weights;
  std::vector<std::string> titles;
  std::vector<std::vector<Float>> reports;  // by stage
  std::vector<std::string> messages;
};

class ImportProgress : public ImportTest
{
protected:
  ImportProgress() { Host().Host().ReplaceService(HostUsageReport::kId, static_cast<HostUsageReport*>(&_event)); }
  LastEvent _event;
};

TEST_F(ImportProgress, RunsThroughThreeStages)
{
  const TestFile file("gltf", ToBytes(R"({"scenes":[{"nodes":[0,1]}],"nodes":[{"children":[2]},{},{},{}]})"));
  RecordingJob job;
  EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document(), &job), 0);
  EXPECT_STREQ(_event.status, "none");
  EXPECT_THAT(job.weights, testing::ElementsAre(0.1, 0.35, 0.55));
  EXPECT_THAT(job.titles, testing::ElementsAre("Reading the file", "Importing materials", "Building objects"));
  ASSERT_EQ(job.reports.size(), 3u);
  EXPECT_THAT(job.reports[0], testing::ElementsAre(1.0, 0.7, 0.9, 1.0));
  EXPECT_THAT(job.reports[1], testing::ElementsAre(0.01));
  EXPECT_THAT(job.reports[2], testing::ElementsAre(0.01, 0.25, 0.5, 0.75, 1.0));  // three of four nodes are in the scene
}

TEST_F(ImportProgress, CanBeCancelledAtEveryReport)
{
  const TestFile file("gltf", ToBytes(R"({"scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[{},{}]})"));
  int cancelAt = 0;
  for (;; ++cancelAt)
  {
    RecordingJob job;
    job.cancelAt = cancelAt;
    const HeadlessOwner<HeadlessDocument> document = Host().Host().NewDocument();
    const Int32 result = DirectLoad().Load(file.Path(), ToHost(document.get()), &job);
    if (job.questions <= cancelAt)
    {
      EXPECT_STREQ(_event.status, "none");
      break;
    }
    EXPECT_EQ(result, -8) << cancelAt;
    EXPECT_STREQ(_event.status, "user_break") << cancelAt;
    EXPECT_EQ(job.questions, cancelAt + 1) << "asked again after the answer";
  }
  EXPECT_EQ(cancelAt, 4 + 1 + 1 + 2 + 1);
}

TEST_F(ImportProgress, CancelledSceneIsGoneAndEarlierOnesStay)
{
  const TestFile file("gltf", ToBytes(R"({"scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[{},{}]})"));
  RecordingJob job;
  job.cancelAt = 7;  // behind the node of the second scene
  EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document(), &job), -8);
  EXPECT_EQ(Outline(), "Scene 0[Node_0]");
}

// Makes no objects of one type.
class RefusingObjects final : public HostObjectTable
{
public:
  HostObjectTable* base = nullptr;
  Int32 refusedType = 0;
  HostObject* Alloc(Int32 type) noexcept override { return type == refusedType ? nullptr : base->Alloc(type); }
  HostPolygonObject* AllocPolygonObject(Int32 pointCount, Int32 polygonCount) noexcept override
  {
    return refusedType == kPolygonObjectType ? nullptr : base->AllocPolygonObject(pointCount, polygonCount);
  }
  HostObject* Clone(const HostObject* object, HostAliasTrans* trans) noexcept override { return base->Clone(object, trans); }
};

struct StatusCase
{
  const char* name;
  const char* text;  // the file; null for one that is not there
  const char* status;
  Int32 result = 0;
  Int32 boxText = 0;  // number of the text in the message box; 0 for no box
  Int32 refusedType = 0;
  const char* outline = "";
  const char* error = "";
};

void PrintTo(const StatusCase& row, std::ostream* stream)
{
  *stream << row.name;
}

const StatusCase kStatusCases[] = {
  {"Success", R"({"scenes":[{}]})", "none", 0, 0, 0, "Scene 0"},
  {"NoFile", nullptr, "io_error", -3, 0, 0, "", "The document is no plain file."},
  {"NoJson", "{", "unexpected_error", 0, 10010, 0, "", "JSON file couldn't be read"},
  {"EmptyObject", "{}", "unknown_error", 0, 10021, 0, "", "Illegal state: Condition jsonGLTF.IsPopulated() not fulfilled."},
  {"RequiredExtension", R"({"extensionsUsed":["X_y"],"extensionsRequired":["X_y"]})", "unexpected_error", 0, 10010, 0, "",
   "The file requires extensions: X_y"},
  {"NoSceneGroup", R"({"scenes":[{}]})", "unknown_error", 0, 10021, kNullObjectType, "",
   "Illegal state: Condition sceneParent not fulfilled."},
  {"NoGroupForRoots", R"({"nodes":[{}]})", "out_of_memory", 0, 10022, kNullObjectType},
  {"NoJoints", R"({"scenes":[{"nodes":[0]}],"nodes":[{}],"skins":[{"joints":[0]}]})", "out_of_memory", 0, 10022,
   kJointObjectType},
};

class ImportStatus : public ImportTest, public testing::WithParamInterface<StatusCase>
{
protected:
  ImportStatus()
  {
    HostTables& tables = Host().Host().GetTables();
    _objects.base = tables.object;
    _objects.refusedType = GetParam().refusedType;
    tables.object = &_objects;
    tables.dialog = &_dialogs;
    _dialogs.onMessage = [this](const std::string& text) { _boxes.push_back(text); };
    Host().Host().ReplaceService(HostUsageReport::kId, static_cast<HostUsageReport*>(&_event));
    if (GetParam().text)
      _file.emplace("gltf", ToBytes(GetParam().text));
  }

  Int32 RunWithFlags(Int32 flags)
  {
    const std::string path = _file ? _file->Path() : "/no/such/folder/a.gltf";
    return _load.Loader().Load(_load.Node(), DirectLoad::Name(path), Host().Document(), flags, &_error);
  }

  RefusingObjects _objects;
  HeadlessDialogs _dialogs;
  std::vector<std::string> _boxes;
  LastEvent _event;
  std::optional<TestFile> _file;
  DirectLoad _load;
  String _error;
};

TEST_P(ImportStatus, TellsHowTheLoadEnded)
{
  const StatusCase& row = GetParam();
  EXPECT_EQ(RunWithFlags(kLoadObjects | kLoadMaterials), row.result);
  EXPECT_STREQ(_event.status, row.status);
  EXPECT_TRUE(_event.isLoadEvent);
  EXPECT_EQ(_event.count, 1);
  EXPECT_EQ(Outline(), row.outline);
  EXPECT_THAT(_boxes, testing::IsEmpty());
  if (row.error[0])
  {
    EXPECT_EQ(std::string(_error.GetView()), row.error);
  }
  EXPECT_EQ(_error.IsEmpty(), row.status == std::string("none"));
}

TEST_P(ImportStatus, ShowsABoxWhereDialogsAreAllowed)
{
  RunWithFlags(kLoadObjects | kLoadDialogsAllowed);
  if (GetParam().boxText == 0)
    EXPECT_THAT(_boxes, testing::IsEmpty());
  else
    EXPECT_THAT(_boxes, testing::ElementsAre(std::string(HostLoadString(GetParam().boxText).GetView())));
}

TEST_P(ImportStatus, LeavesTheLoaderReadyForTheNextLoad)
{
  RunWithFlags(kLoadObjects);
  _objects.refusedType = 0;
  const TestFile good("gltf", ToBytes(R"({"scenes":[{"name":"S"}]})"));
  const HeadlessOwner<HeadlessDocument> document = Host().Host().NewDocument();
  EXPECT_EQ(_load.Load(good.Path(), ToHost(document.get())), 0);
  EXPECT_STREQ(_event.status, "none");
  EXPECT_EQ(WriteOutline(ToHost(document.get())), "S");
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportStatus, testing::ValuesIn(kStatusCases), RowName());

using ImportDiagnostics = ImportTest;

TEST_F(ImportDiagnostics, NodeThatIsLeftOutSaysWhyAndWhere)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":2}])", SomeMeshes()), "none");
  EXPECT_THAT(Host().Diagnostics(),
              testing::Contains(testing::AllOf(testing::HasSubstr("Node 0 is left out: Illegal state: Condition meshPtr && "
                                                                  "meshPtr->IsValid() not fulfilled."),
                                               testing::HasSubstr("gltfimportnode.cpp:"))));
}

TEST_F(ImportDiagnostics, FailedLoadTellsTheWholeChain)
{
  EXPECT_EQ(Host().LoadText("{"), "unexpected_error");
  EXPECT_THAT(Host().Diagnostics(),
              testing::Contains(testing::AllOf(testing::HasSubstr("The load failed: JSON file couldn't be read, caused by: "),
                                               testing::HasSubstr("gltfutilities.cpp:"))));
}

using ImportArguments = ImportProgress;

TEST_F(ImportArguments, NothingIsDoneWithoutObjectsAndMaterials)
{
  const TestFile file("gltf", ToBytes(R"({"scenes":[{}]})"));
  for (const Int32 flags : {0, 4, 8, 32, 0x7ffffffc})
    EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document(), nullptr, flags), 0) << flags;
  EXPECT_EQ(Outline(), "");
  EXPECT_EQ(_event.count, 0);
}

TEST_F(ImportArguments, MaterialsAloneLoadAll)
{
  const TestFile file("gltf", ToBytes(R"({"scenes":[{}]})"));
  EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document(), nullptr, kLoadMaterials), 0);
  EXPECT_EQ(Outline(), "Scene 0");
}

TEST_F(ImportArguments, MissingOnesEndTheLoad)
{
  const TestFile file("gltf", ToBytes(R"({"scenes":[{}]})"));
  const HostFilename name("/a/b.GLB"_s);
  DirectLoad load;
  String error;
  HostDocument* const document = Host().Document();
  EXPECT_EQ(load.Loader().Load(nullptr, name, document, kLoadObjects, &error), 0);
  EXPECT_STREQ(_event.status, "unknown_error");
  EXPECT_EQ(std::string(error.GetView()), "Illegal state: Condition node && doc && error not fulfilled.");
  EXPECT_EQ(load.Loader().Load(load.Node(), name, nullptr, kLoadObjects, &error), 0);
  EXPECT_STREQ(_event.status, "unknown_error");
  EXPECT_EQ(load.Loader().Load(load.Node(), name, document, kLoadObjects, nullptr), 0);
  EXPECT_STREQ(_event.status, "unknown_error");
  EXPECT_EQ(load.Loader().Load(load.Node(), HostFilename(), document, kLoadObjects, &error), 0);
  EXPECT_STREQ(_event.status, "unknown_error");
  EXPECT_EQ(_event.count, 4);
}

class ImportTexts : public ImportTest
{
protected:
  std::string Parameter(Int32 id)
  {
    HostValue value;
    return Host().Document()->GetParameter(id, value) ? std::string(value.GetString("(no text)"_s).GetView()) : "(unset)";
  }
  const std::string _file = R"({"asset":{"generator":"a maker","copyright":"(c) someone"},"scenes":[{}]})";
};

TEST_F(ImportTexts, GeneratorAndCopyrightGoToTheDocument)
{
  EXPECT_EQ(Host().LoadText(_file), "none");
  EXPECT_EQ(Parameter(2000), "a maker");
  EXPECT_EQ(Parameter(2007), "(c) someone");
  EXPECT_EQ(Parameter(2002), "(unset)");
}

TEST_F(ImportTexts, MergingLeavesTheDocumentsOwn)
{
  ASSERT_TRUE(Host().Document()->SetParameter(2000, "mine"_s));
  Host().Request().flags = kLoadObjects | kLoadMerging;
  EXPECT_EQ(Host().LoadText(_file), "none");
  EXPECT_EQ(Parameter(2000), "mine");
  EXPECT_EQ(Parameter(2007), "(unset)");
  EXPECT_EQ(Outline(), "Scene 0");
}

TEST_F(ImportTexts, AFileWithoutThemClearsThem)
{
  ASSERT_TRUE(Host().Document()->SetParameter(2000, "mine"_s));
  EXPECT_EQ(Host().LoadText(R"({"scenes":[{}]})"), "none");
  EXPECT_EQ(Parameter(2000), "");
}

// Keeps every entry of the event as text.
class RecordingReport final : public HostUsageReport
{
public:
  Result<void> Send(const String& eventName, const DataDictionary& entries) noexcept override
  {
    name = std::string(eventName.GetView());
    for (const DataMember& member : entries)
      lines.push_back(std::string(member.key.GetName().GetView()) + "=" + Write(member.value));
    return Error::OutOfMemory();  // without effect on the load
  }
  std::string name;
  std::vector<std::string> lines;

private:
  static std::string Write(const Data& value)
  {
    if (value.GetKind() == DataKind::kInt)
      return std::to_string(value.GetInt().GetValue());
    return value.GetKind() == DataKind::kString ? std::string(value.GetString().GetValue().GetView()) : "(another kind)";
  }
};

class FixedHash final : public HostHash
{
public:
  Result<String> HashText(const String& text) noexcept override { return String::Join({"<"_s, text, ">"_s}); }
  Result<String> HashFile(const Url&) noexcept override
  {
    if (fails)
      return Error::Make(ErrorClass::kIo, "no hash"_s, __FILE__, __LINE__);
    return "hash of the file"_s;
  }
  Bool fails = false;
};

class ImportReport : public ImportTest
{
protected:
  ImportReport()
  {
    Host().Host().ReplaceService(HostUsageReport::kId, static_cast<HostUsageReport*>(&_report));
    Host().Host().ReplaceService(HostHash::kId, static_cast<HostHash*>(&_hash));
  }
  RecordingReport _report;
  FixedHash _hash;
};

TEST_F(ImportReport, HasItsEntries)
{
  const TestFile file("gltf", ToBytes(R"({"asset":{"generator":"a maker"},"extensionsUsed":["X_y"],"scenes":[{}]})"));
  EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document()), 0);
  EXPECT_EQ(_report.name, "net.tarno.analytics.exchange");
  EXPECT_THAT(_report.lines,
              testing::
                ElementsAre("command.id=1060210", "file_id=hash of the file", "extension=gltf",
                            "nodespace=com.brenmoor3d.brenmoor4q7z.class.nodespace", "error=none", "generator=a maker",
                            R"(details={"extensions":[{"id":"<X_y>","required":false}],"generator":"a maker","error":"none"})"));
}

TEST_F(ImportReport, IsSentWithoutWhatCannotBeHad)
{
  _hash.fails = true;
  Host().Host().ReplaceService(HostJson::kId, nullptr);
  const TestFile file("gltf", ToBytes("{}"));
  EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document()), 0);
  EXPECT_THAT(_report.lines, testing::IsSupersetOf({"file_id=", "error=unknown_error", "generator=", "details="}));
}

TEST_F(ImportReport, NamesTheFormThatWasIdentified)
{
  const Bytes glb = GlbBuilder().PaddedJson(R"({"scenes":[{}]})").File();
  const TestFile file("bin", glb);
  DirectLoad load;
  ASSERT_TRUE(load.Identify(file.Path(), glb));
  EXPECT_EQ(load.Load(file.Path(), Host().Document()), 0);
  EXPECT_THAT(_report.lines, testing::IsSupersetOf({"extension=glb", "error=none"}));
}

TEST_F(ImportReport, TakesTheSuffixWhenThereWasNoLoad)
{
  DirectLoad load;
  String error;
  load.Loader().Load(nullptr, HostFilename("/a/b.suffix"_s), Host().Document(), kLoadObjects, &error);
  EXPECT_THAT(_report.lines, testing::IsSupersetOf({"extension=suffix", "error=unknown_error"}));
}

using ImportWithoutReport = ImportTest;

TEST_F(ImportWithoutReport, Loads)
{
  Host().Host().ReplaceService(HostUsageReport::kId, nullptr);
  const TestFile file("gltf", ToBytes(std::string("{") + kOneNode + "}"));
  EXPECT_EQ(DirectLoad().Load(file.Path(), Host().Document()), 0);
  EXPECT_EQ(Outline(), "Scene 0[A]");
}

}  // namespace
}  // namespace q7z::test
