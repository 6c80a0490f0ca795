// A load as the host sees it: identification, progress, cancellation, status words, return values, message boxes, the document's
// texts and the load report.

#include <limits>

#include "host/services/headlessdialogs.h"
#include "tests/import/importfixture.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{
namespace
{

class DirectImport : public ImportTest
{
protected:
  DirectImport() { Host().Host().ReplaceService(HostUsageReport::kId, static_cast<HostUsageReport*>(&_event)); }
  TestFolder _folder;
  LastEvent _event;
};

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
  {"TextBySuffixInCapitals", "b.GLTF", {}, true},
  {"BinaryByContent", "a.dat", GlbHeader(0x46546C67, 2, 13), true},
  {"BinaryUnderTheTextSuffix", "a.gltf", GlbHeader(0x46546C67, 2, 13), true},
  {"SuffixOfTheBinaryFormAlone", "a.glb", ToBytes("{}"), false},
  {"OldVersion", "a.glb", GlbHeader(0x46546C67, 1, 13), false},
  {"NewerVersion", "a.glb", GlbHeader(0x46546C67, 3, 13), false},
  {"TooShortByItsHeader", "a.glb", GlbHeader(0x46546C67, 2, 12), false},
  {"OtherMagic", "a.glb", GlbHeader(0x46546C68, 2, 13), false},
  {"HeaderCutShort", "a.glb", {0x67, 0x6C, 0x54, 0x46, 2, 0, 0, 0, 13, 0, 0}, false},
};

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

using ImportProgress = DirectImport;

TEST_F(ImportProgress, RunsThroughThreeStages)
{
  const std::string file =
    _folder.Write("a.gltf", ToBytes(R"({"scenes":[{"nodes":[0,1]}],"nodes":[{"children":[2]},{},{},{}]})"));
  RecordingJob job;
  EXPECT_EQ(DirectLoad().Load(file, Host().Document(), &job), 0);
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
  const std::string file = _folder.Write("a.gltf", ToBytes(R"({"scenes":[{"nodes":[0]},{"nodes":[1]}],"nodes":[{},{}]})"));
  int cancelAt = 0;
  for (;; ++cancelAt)
  {
    RecordingJob job;
    job.cancelAt = cancelAt;
    const HeadlessOwner<HeadlessDocument> document = Host().Host().NewDocument();
    const Int32 result = DirectLoad().Load(file, ToHost(document.get()), &job);
    if (job.questions <= cancelAt)
    {
      EXPECT_STREQ(_event.status, "none");
      break;
    }
    EXPECT_EQ(result, -8) << cancelAt;
    EXPECT_STREQ(_event.status, "user_break") << cancelAt;
    EXPECT_EQ(job.questions, cancelAt + 1) << "asked again after the answer";
    // A scene that was cancelled at its node goes; earlier ones stay.
    const char* const outline = cancelAt < 7 ? "" : cancelAt == 7 ? "Scene 0[Node_0]" : "Scene 1![Node_1], Scene 0[Node_0]";
    EXPECT_EQ(WriteOutline(ToHost(document.get())), outline) << cancelAt;
  }
  EXPECT_EQ(cancelAt, 4 + 1 + 1 + 2 + 1);
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
  Int32 boxText;  // number of the text in the message box; 0 for no box
  const char* error;
  Int32 refusedType = 0;
};

#define CONDITION(TEXT) "Illegal state: Condition " TEXT " not fulfilled."
constexpr const char* kWalkFailed = CONDITION("FillInLoadedData(jsonGLTF)");

const StatusCase kStatusCases[] = {
  {"Success", R"({"scenes":[{}]})", "none", 0, ""},
  {"NoFile", nullptr, "io_error", 0, "The document is no plain file."},
  {"NoJson", "{", "unexpected_error", 10010, "JSON file couldn't be read"},
  {"TextBehind", "{} {}", "unexpected_error", 10010, "JSON file couldn't be read"},
  {"EmptyObject", "{}", "unknown_error", 10021, CONDITION("jsonGLTF.IsPopulated()")},
  {"NodesNoArray", R"({"nodes":{}})", "unknown_error", 10021, kWalkFailed},
  {"NodeNoObject", R"({"nodes":[{},1]})", "unknown_error", 10021, kWalkFailed},
  {"NoSceneGroup", R"({"scenes":[{}]})", "unknown_error", 10021, CONDITION("sceneParent"), kNullObjectType},
  {"NoGroupForRoots", R"({"nodes":[{}]})", "out_of_memory", 10022, "Out of memory.", kNullObjectType},
  {"NoJoints", R"({"scenes":[{"nodes":[0]}],"nodes":[{}],"skins":[{"joints":[0]}]})", "out_of_memory", 10022, "Out of memory.",
   kJointObjectType},
};
#undef CONDITION

class ImportStatus : public DirectImport, public testing::WithParamInterface<StatusCase>
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
  }

  Int32 RunWithFlags(Int32 flags)
  {
    const std::string path =
      GetParam().text ? _folder.Write("a.gltf", std::string_view(GetParam().text)) : "/no/such/folder/a.gltf";
    return _load.Loader().Load(_load.Node(), DirectLoad::Name(path), Host().Document(), flags, &_error);
  }

  RefusingObjects _objects;
  HeadlessDialogs _dialogs;
  std::vector<std::string> _boxes;
  DirectLoad _load;
  String _error;
};

TEST_P(ImportStatus, TellsHowTheLoadEnded)
{
  const StatusCase& row = GetParam();
  EXPECT_EQ(RunWithFlags(kLoadObjects | kLoadMaterials), row.status == std::string("io_error") ? -3 : 0);
  EXPECT_STREQ(_event.status, row.status);
  EXPECT_TRUE(_event.isLoadEvent);
  EXPECT_EQ(_event.count, 1);
  EXPECT_EQ(Outline(), row.status == std::string("none") ? "Scene 0" : "");
  EXPECT_THAT(_boxes, testing::IsEmpty());
  EXPECT_EQ(std::string(_error.GetView()), row.error);
}

TEST_P(ImportStatus, ShowsABoxWhereDialogsAreAllowedAndIsForgotten)
{
  RunWithFlags(kLoadObjects | kLoadDialogsAllowed);
  if (GetParam().boxText == 0)
    EXPECT_THAT(_boxes, testing::IsEmpty());
  else
    EXPECT_THAT(_boxes, testing::ElementsAre(std::string(HostLoadString(GetParam().boxText).GetView())));
  _objects.refusedType = 0;
  const std::string good = _folder.Write("good.gltf", std::string_view(R"({"scenes":[{"name":"S"}]})"));
  const HeadlessOwner<HeadlessDocument> document = Host().Host().NewDocument();
  EXPECT_EQ(_load.Load(good, ToHost(document.get())), 0);
  EXPECT_STREQ(_event.status, "none");
  EXPECT_EQ(WriteOutline(ToHost(document.get())), "S");
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportStatus, testing::ValuesIn(kStatusCases), RowName());

TEST_F(ImportTest, NodeThatIsLeftOutSaysWhyAndWhere)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":2}])", SomeMeshes()), "none");
  EXPECT_THAT(Host().Diagnostics(),
              testing::Contains(testing::AllOf(testing::HasSubstr("Node 0 is left out: Illegal state: Condition meshPtr && "
                                                                  "meshPtr->IsValid() not fulfilled."),
                                               testing::HasSubstr("gltfimportnode.cpp:"))));
}

using ImportArguments = DirectImport;

TEST_F(ImportArguments, NothingIsDoneWithoutObjectsOrMaterials)
{
  const std::string file = _folder.Write("a.gltf", ToBytes(R"({"scenes":[{}]})"));
  for (const Int32 flags : {0, 4, 8, 32, 0x7ffffffc})
    EXPECT_EQ(DirectLoad().Load(file, Host().Document(), nullptr, flags), 0) << flags;
  EXPECT_EQ(Outline(), "");
  EXPECT_EQ(_event.count, 0);
  EXPECT_EQ(DirectLoad().Load(file, Host().Document(), nullptr, kLoadMaterials), 0);  // either alone loads all
  EXPECT_EQ(Outline(), "Scene 0");
}

TEST_F(ImportTest, GeneratorAndCopyrightGoToTheDocumentUnlessItIsMerged)
{
  const std::string file = R"({"asset":{"generator":"a maker","copyright":"(c) someone"},"scenes":[{}]})";
  const auto texts = [this]
  {
    HostValue generator("(unset)"_s);
    HostValue copyright("(unset)"_s);
    Host().Document()->GetParameter(2000, generator);
    Host().Document()->GetParameter(2007, copyright);
    return std::string(generator.GetString().GetView()) + ", " + std::string(copyright.GetString().GetView());
  };
  ASSERT_TRUE(Host().Document()->SetParameter(2000, "mine"_s));
  Host().Request().flags = kLoadObjects | kLoadMerging;
  EXPECT_EQ(Host().LoadText(file), "none");
  EXPECT_EQ(texts(), "mine, (unset)");
  Host().Request().flags = kLoadObjects;
  EXPECT_EQ(Host().LoadText(file), "none");
  EXPECT_EQ(texts(), "a maker, (c) someone");
  EXPECT_EQ(Host().LoadText(R"({"scenes":[{}]})"), "none");
  EXPECT_EQ(texts(), ", ") << "a file without them clears them";
}

TEST_F(ImportArguments, MissingOnesEndTheLoad)
{
  DirectLoad load;
  String error;
  const struct
  {
    HostNode* node;
    HostFilename name;
    HostDocument* document;
    String* error;
  } rows[] = {{nullptr, HostFilename("/a/b.GLB"_s), Host().Document(), &error},
              {load.Node(), HostFilename("/a/b.GLB"_s), nullptr, &error},
              {load.Node(), HostFilename("/a/b.GLB"_s), Host().Document(), nullptr},
              {load.Node(), HostFilename(), Host().Document(), &error}};
  for (const auto& row : rows)
  {
    EXPECT_EQ(load.Loader().Load(row.node, row.name, row.document, kLoadObjects, row.error), 0);
    EXPECT_STREQ(_event.status, "unknown_error");
  }
  EXPECT_EQ(std::string(error.GetView()), "Illegal state: Condition importer && fileUrl.IsPopulated() not fulfilled.");
  EXPECT_EQ(_event.count, 4);
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
  Result<String> HashText(const String& text) noexcept override
  {
    return fails ? Result<String>(Error::OutOfMemory()) : String::Join({"<"_s, text, ">"_s});
  }
  Result<String> HashFile(const Url&) noexcept override
  {
    if (fails)
      return Error::Make(ErrorClass::kIo, "no hash"_s, __FILE__, __LINE__);
    return "hash of the file"_s;
  }
  Bool fails = false;
};

class ImportReport : public DirectImport
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
  const std::string file =
    _folder.Write("a.gltf", ToBytes(R"({"asset":{"generator":"a maker"},"extensionsUsed":["X_y"],"scenes":[{}]})"));
  EXPECT_EQ(DirectLoad().Load(file, Host().Document()), 0);
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
  const std::string file = _folder.Write("a.gltf", ToBytes("{}"));
  EXPECT_EQ(DirectLoad().Load(file, Host().Document()), 0);
  EXPECT_THAT(_report.lines, testing::IsSupersetOf({"file_id=", "error=unknown_error", "generator=", "details="}));
}

// Its form is the one that was identified; without a load the suffix tells it.
TEST_F(ImportReport, NamesTheForm)
{
  const Bytes glb = GlbBuilder().PaddedJson(R"({"scenes":[{}]})").File();
  const std::string file = _folder.Write("a.bin", glb);
  DirectLoad load;
  ASSERT_TRUE(load.Identify(file, glb));
  EXPECT_EQ(load.Load(file, Host().Document()), 0);
  EXPECT_THAT(_report.lines, testing::IsSupersetOf({"extension=glb", "error=none"}));
  String error;
  DirectLoad().Loader().Load(nullptr, HostFilename("/a/b.suffix"_s), Host().Document(), kLoadObjects, &error);
  EXPECT_THAT(_report.lines, testing::IsSupersetOf({"extension=suffix", "error=unknown_error"}));
  Host().Host().ReplaceService(HostUsageReport::kId, nullptr);
  EXPECT_EQ(load.Load(file, Host().Document()), 0) << "it is not needed";
}

TEST_F(ImportTest, ParserHashesAndPlacesAreNeeded)
{
  const std::pair<const char*, const char*> rows[] = {{HostHash::kId, "The host offers no text hash."},
                                                      {HostJson::kId, "The host offers no JSON parser."},
                                                      {HostUrlService::kId, "The host offers no URL service."}};
  for (const auto& [id, message] : rows)
  {
    Host().Host().ReplaceService(id, nullptr);
    EXPECT_EQ(Host().LoadText(R"({"extensionsUsed":["X_y"]})"), "unknown_error");
    EXPECT_THAT(Host().Report().error, testing::StartsWith(message));
  }
}

// What a file lists as extensions, what the user is told, and how the load ends.
struct ExtensionsCase
{
  const char* name;
  const char* text;
  const char* used;      // as told; null for no message
  const char* required;  // the same
  const char* details;   // of the report: the extensions
};

class ImportHash : public ImportTest
{
protected:
  ImportHash() { Host().Host().ReplaceService(HostHash::kId, static_cast<HostHash*>(&_hash)); }
  FixedHash _hash;
};

class ImportExtensions : public ImportHash, public testing::WithParamInterface<ExtensionsCase>
{};

TEST_P(ImportExtensions, AreReportedOrRefused)
{
  const ExtensionsCase& row = GetParam();
  EXPECT_EQ(Host().LoadText(row.text), row.required ? "unexpected_error" : "none");
  std::vector<std::string> messages;
  if (row.used)
    messages.push_back("4 The file uses these extensions, which are ignored: " + std::string(row.used));
  if (row.required)
  {
    messages.push_back("8 The file cannot be loaded, because it requires these extensions: " + std::string(row.required));
    EXPECT_EQ(Host().Report().error, "The file requires extensions: " + std::string(row.required));
  }
  std::vector<std::string> told;
  for (const JobMessage& message : Host().Messages())
    told.push_back(std::to_string(static_cast<int>(message.messageClass)) + " " + message.text);
  EXPECT_EQ(told, messages);
  const std::string extensions = *row.details ? R"("extensions":[)" + std::string(row.details) + "]," : "";
  EXPECT_EQ(Host().Report().details, "{" + extensions + R"("generator":"","error":")" + Host().Report().status + "\"}");
}

const ExtensionsCase kExtensionsCases[] = {
  {"UsedTwice", R"({"extensionsUsed":["A","B","A"]})", "A, B", nullptr,
   R"({"id":"<A>","required":false},{"id":"<B>","required":false})"},
  {"RequiredOfNoneUsed", R"({"extensionsUsed":[],"extensionsRequired":["A"]})", nullptr, nullptr, ""},
  {"RequiredOnlyAndBroken", R"({"extensionsRequired":1,"scene":0})", nullptr, nullptr, ""},
  {"OtherRequired", R"({"extensionsUsed":["A"],"extensionsRequired":["B","a"]})", "A", nullptr,
   R"({"id":"<A>","required":false})"},
  {"OneRequired", R"({"extensionsUsed":["A","B"],"extensionsRequired":["B"]})", "A, B", "B",
   R"({"id":"<A>","required":false},{"id":"<B>","required":true})"},
  {"AllRequired", R"({"extensionsUsed":["A","B"],"extensionsRequired":["B","A"]})", "A, B", "A, B",
   R"({"id":"<A>","required":true},{"id":"<B>","required":true})"},
  {"EmptyName", R"({"extensionsUsed":[""],"extensionsRequired":[""]})", nullptr, nullptr, R"({"id":"<>","required":true})"},
  {"EmptyNameAndAnother", R"({"extensionsUsed":["","A"]})", ", A", nullptr,
   R"({"id":"<>","required":false},{"id":"<A>","required":false})"},
};
INSTANTIATE_TEST_SUITE_P(Rows, ImportExtensions, testing::ValuesIn(kExtensionsCases), RowName());

TEST_F(ImportHash, ExtensionsThatAreNoListOrHaveNoHashEndTheLoad)
{
  for (const char* const text :
       {R"({"extensionsUsed":"A"})", R"({"extensionsUsed":[1]})", R"({"extensionsUsed":["A"],"extensionsRequired":[1]})"})
  {
    EXPECT_NE(Host().LoadText(text), "none") << text;
    EXPECT_THAT(Host().Messages(), testing::IsEmpty()) << text;
  }
  _hash.fails = true;
  EXPECT_EQ(Host().LoadText(R"({"extensionsUsed":["A"]})"), "out_of_memory");
}

}  // namespace
}  // namespace q7z::test
