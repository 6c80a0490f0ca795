// The driver of a load: the order of its steps, the extensions, which arrays are read, what is resolved and what is a warning.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/documenthost.h"
#include "tests/document/records.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::IsEmpty;

namespace
{

constexpr const char* kAssetMissing = "8 An asset is missing.";
constexpr const char* kWalkFailed = "Illegal state: Condition FillInLoadedData(jsonGLTF) not fulfilled. ";

void Set(DocumentLoad& load, const DataKey& key, Data value)
{
  ASSERT_EQ(ErrorText(load.load.GetOptions().Set(key, std::move(value))), "");
}

/// The keys of a map, in its order.
template <typename K, typename V>
std::vector<Int> Keys(const HashMap<K, V>& map)
{
  std::vector<Int> keys;
  for (const auto& entry : map)
    keys.push_back(entry.GetKey());
  return keys;
}

}  // namespace

TEST(GltfParser, NeedsAnImporterAndAFile)
{
  constexpr const char* kMessage = "Illegal state: Condition importer && fileUrl.IsPopulated() not fulfilled. ";
  DocumentLoad load;
  GltfParser parser;
  EXPECT_EQ(ErrorText(parser.Init(nullptr, PathUrl("/models/a.gltf"))), kMessage);
  EXPECT_EQ(ErrorText(parser.Init(&load.load, Url())), kMessage);
  EXPECT_EQ(ErrorText(GltfParser().Load(nullptr)), "Illegal state: Condition _sceneLoader not fulfilled. ");
}

TEST(Load, ReportsItsProgress)
{
  DocumentHost host;
  DocumentLoad load;
  EXPECT_EQ(load.RunText(host, R"({"asset":{"version":"2.0"}})"), "");
  EXPECT_THAT(load.job.log, ElementsAre("stage 0.1 Reading", "progress 7 1", "progress 7 0.7", "progress 7 0.9", "progress 7 1"));
}

TEST(Load, EndsAtEveryReportWhenCancelled)
{
  for (int report = 1; report <= 4; ++report)
  {
    DocumentHost host;
    DocumentLoad load;
    load.job.cancelAt = report;
    EXPECT_NE(load.RunText(host, R"({"nodes":[{}]})"), "");
    EXPECT_EQ(load.error.GetClass(), ErrorClass::kOperationCancelled);
    EXPECT_EQ(load.job.reports, report);
    EXPECT_EQ(load.GetData().nodes.GetCount(), report < 3 ? 0 : 1);
  }
}

TEST(Load, RunsWithoutAJob)
{
  DocumentHost host;
  host.files.contents["/models/a.gltf"] = ToBytes(R"({"nodes":[{}],"buffers":[{"byteLength":1,"uri":"nothing.bin"}]})");
  DocumentLoad load;
  GltfParser parser;
  ASSERT_EQ(ErrorText(parser.Init(&load.load, load.load.GetFileUrl())), "");
  EXPECT_EQ(ErrorText(parser.Load(nullptr)), "");
  EXPECT_THAT(load.job.log, IsEmpty());
}

/// A text that does not load.
struct RefusedRow
{
  const char* name;
  const char* text;
  const char* message;
};

class RefusedText : public testing::TestWithParam<RefusedRow>
{};

TEST_P(RefusedText, TellsWhy)
{
  DocumentHost host;
  DocumentLoad load;
  EXPECT_EQ(load.RunText(host, GetParam().text), GetParam().message);
  EXPECT_THAT(load.job.messages, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, RefusedText,
                         testing::Values(RefusedRow{"NoJson", "{]", "JSON file couldn't be read"},
                                         RefusedRow{"Empty", "", "JSON file couldn't be read"},
                                         RefusedRow{"TextBehind", "{} {}", "JSON file couldn't be read"},
                                         RefusedRow{"NoMembers", "{}",
                                                    "Illegal state: Condition jsonGLTF.IsPopulated() not fulfilled. "},
                                         RefusedRow{"NodesNoArray", R"({"nodes":{}})", kWalkFailed},
                                         RefusedRow{"NodeNoObject", R"({"nodes":[{},1]})", kWalkFailed},
                                         RefusedRow{"BuffersNull", R"({"buffers":null})", kWalkFailed},
                                         RefusedRow{"AccessorsText", R"({"accessors":"none"})", kWalkFailed},
                                         RefusedRow{"SceneNoObject", R"({"scenes":[[]]})", kWalkFailed}),
                         RowName());

TEST(RefusedText, IsOfTheUnexpectedClassWhenItIsNoJson)
{
  DocumentHost host;
  DocumentLoad load;
  EXPECT_EQ(load.RunText(host, "{]"), "JSON file couldn't be read");
  EXPECT_EQ(load.error.GetClass(), ErrorClass::kUnexpected);
  EXPECT_THAT(load.error.GetFile(), EndsWith("gltfutilities.cpp"));
  EXPECT_EQ(Text(load.error.GetCause().GetMessage()), "no JSON");
}

TEST(RefusedText, KeepsWhatTheWalkSaid)
{
  DocumentHost host;
  DocumentLoad load;
  EXPECT_EQ(load.RunText(host, R"({"nodes":[1]})"), kWalkFailed);
  EXPECT_EQ(load.error.GetClass(), ErrorClass::kIllegalState);
  EXPECT_TRUE(static_cast<Bool>(load.error.GetCause()));
}

TEST(RefusedFile, IsAnIoErrorUnlessItIsPlain)
{
  for (const char* const path : {"/models", "/models/nothing.gltf"})
  {
    for (const Bool isGlb : {false, true})
    {
      DocumentHost host;
      DocumentLoad load(isGlb, path);
      EXPECT_NE(load.Run(), "") << path;
      EXPECT_EQ(load.error.GetClass(), ErrorClass::kIo) << path;
    }
  }
}

TEST(RefusedFile, NeedsTheServices)
{
  void (*const withdrawals[])(DocumentHost& host) = {[](DocumentHost& host) { host.Withdraw<HostJson>(); },
                                                     [](DocumentHost& host) { host.Withdraw<HostUrlService>(); },
                                                     [](DocumentHost& host) { host.Withdraw<HostHash>(); }};
  for (const auto withdraw : withdrawals)
  {
    DocumentHost host;
    withdraw(host);
    DocumentLoad load;
    EXPECT_NE(load.RunText(host, R"({"extensionsUsed":["A"]})"), "");
    EXPECT_EQ(load.error.GetClass(), ErrorClass::kNullPtr);
  }
}

/// What a file lists, the messages, and how the load ends.
struct ExtensionsRow
{
  const char* name;
  const char* text;
  std::vector<std::string> messages;
  const char* error;
  const char* report;  // "<hash> <required>" for each entry
};

class Extensions : public testing::TestWithParam<ExtensionsRow>
{};

TEST_P(Extensions, AreReportedOrRefused)
{
  const ExtensionsRow& row = GetParam();
  DocumentHost host;
  DocumentLoad load;
  EXPECT_EQ(load.RunText(host, row.text), row.error);
  EXPECT_THAT(load.job.messages, ElementsAreArray(row.messages));
  std::string report;
  if (const Data* const list = load.load.GetReport().Find(keys::kExtensions))
  {
    const DataArrayView entries = list->GetArray().GetValue();
    for (const Data& entry : entries)
    {
      const DataDictionary members = entry.GetDictionary().GetValue();
      EXPECT_EQ(members.GetCount(), 2);
      report += (report.empty() ? "" : " ") + Text(members.Find(keys::kId)->GetString().GetValue()) + " " +
                (members.Find(keys::kRequired)->GetBool().GetValue() ? "1" : "0");
    }
  }
  EXPECT_EQ(report, row.report);
}

INSTANTIATE_TEST_SUITE_P(
  Rows, Extensions,
  testing::Values(ExtensionsRow{"None", R"({"scene":0})", {}, "", ""},
                  ExtensionsRow{"Used", R"({"extensionsUsed":["A","B"]})", {"4 Uses A, B."}, "", "<A> 0 <B> 0"},
                  ExtensionsRow{"UsedTwice", R"({"extensionsUsed":["A","B","A"]})", {"4 Uses A, B."}, "", "<A> 0 <B> 0"},
                  ExtensionsRow{"EmptyList", R"({"extensionsUsed":[],"extensionsRequired":["A"]})", {}, "", ""},
                  ExtensionsRow{"RequiredOnly", R"({"extensionsRequired":["A"],"scene":0})", {}, "", ""},
                  ExtensionsRow{"RequiredOnlyAndBroken", R"({"extensionsRequired":1,"scene":0})", {}, "", ""},
                  ExtensionsRow{"OtherRequired",
                                R"({"extensionsUsed":["A"],"extensionsRequired":["B","a"]})",
                                {"4 Uses A."},
                                "",
                                "<A> 0"},
                  ExtensionsRow{"Required",
                                R"({"extensionsUsed":["A","B"],"extensionsRequired":["B"]})",
                                {"4 Uses A, B.", "8 Requires B."},
                                "The file requires extensions: B",
                                "<A> 0 <B> 1"},
                  ExtensionsRow{"AllRequired",
                                R"({"extensionsUsed":["A","B"],"extensionsRequired":["B","A"]})",
                                {"4 Uses A, B.", "8 Requires A, B."},
                                "The file requires extensions: A, B",
                                "<A> 1 <B> 1"},
                  ExtensionsRow{"EmptyName", R"({"extensionsUsed":[""],"extensionsRequired":[""]})", {}, "", "<> 1"},
                  ExtensionsRow{"EmptyNameAndAnother", R"({"extensionsUsed":["","A"]})", {"4 Uses , A."}, "", "<> 0 <A> 0"}),
  RowName());

TEST(Extensions, EndTheLoadUnexpectedlyWhenRequired)
{
  DocumentHost host;
  DocumentLoad load;
  EXPECT_NE(load.RunText(host, R"({"extensionsUsed":["A"],"extensionsRequired":["A"],"nodes":[{}]})"), "");
  EXPECT_EQ(load.error.GetClass(), ErrorClass::kUnexpected);
  EXPECT_TRUE(load.GetData().extensions.Find("A"_s)->required);
  EXPECT_TRUE(load.GetData().nodes.IsEmpty());
}

TEST(Extensions, EndTheLoadWhenTheListIsBrokenOrTheHashFails)
{
  for (const char* const text :
       {R"({"extensionsUsed":"A"})", R"({"extensionsUsed":[1]})", R"({"extensionsUsed":["A"],"extensionsRequired":[1]})"})
  {
    DocumentHost host;
    DocumentLoad load;
    EXPECT_NE(load.RunText(host, text), "") << text;
    EXPECT_THAT(load.job.messages, IsEmpty()) << text;
  }
  DocumentHost host;
  host.hash.broken = true;
  DocumentLoad load;
  EXPECT_EQ(load.RunText(host, R"({"extensionsUsed":["A"]})"), "no hash");
}

TEST(Records, HoldWhatTheFileHolds)
{
  DocumentHost host;
  DocumentLoad load;
  ASSERT_EQ(load.RunText(host, R"({"asset":{"generator":"g","version":"99","copyright":"c"},"scene":3,
      "scenes":[{"name":"one"},{"name":"two"}],"nodes":[{"name":"n"}],"skins":[{}],
      "meshes":[{"primitives":[]}],"buffers":[{"byteLength":0}],"bufferViews":[{"buffer":0,"byteLength":0}],
      "accessors":[{"componentType":5126,"count":0,"type":"VEC3"}]})"),
            "");
  const GltfData& data = load.GetData();
  EXPECT_EQ(Text(data.generator), "g");
  EXPECT_EQ(Text(data.version), "99");  // stored, never compared
  EXPECT_EQ(Text(data.copyright), "c");
  EXPECT_EQ(data.defaultScene, 3);
  EXPECT_EQ(Text(data.scenes.Find(1)->name), "two");
  EXPECT_EQ(Text(data.nodes.Find(0)->name), "n");
  EXPECT_THAT(Keys(data.accessors), ElementsAre(-1, 0));
  EXPECT_EQ(data.meshes.GetCount(), 1);
  EXPECT_EQ(data.buffers.GetCount(), 1);
  EXPECT_EQ(data.bufferViews.GetCount(), 1);
  EXPECT_EQ(data.skins.GetCount(), 1);
}

TEST(Records, NeedNoAssetAndNoScene)
{
  for (const char* const text :
       {R"({"nodes":[]})", R"({"asset":1})", R"({"asset":null,"scene":"first"})", R"({"asset":{"generator":1}})"})
  {
    DocumentHost host;
    DocumentLoad load;
    EXPECT_EQ(load.RunText(host, text), "") << text;
    EXPECT_TRUE(load.GetData().generator.IsEmpty()) << text;
    EXPECT_EQ(load.GetData().defaultScene, 0) << text;
  }
}

TEST(Records, AreLeftOutWhereTheyAreBroken)
{
  DocumentHost host;
  DocumentLoad load;
  ASSERT_EQ(load.RunText(host, R"({
      "nodes":[{},{"matrix":[1]},{},{"children":[null]}],"scenes":[{"nodes":["a"]},{}],"skins":[{"joints":7},{}],
      "meshes":[{"primitives":[{}]},{"primitives":[]}],"buffers":[{},{"byteLength":4}],
      "bufferViews":[{"buffer":0},{"byteLength":4},{"buffer":0,"byteLength":4}],
      "accessors":[{"componentType":5126,"type":"VEC3"},{"componentType":5126,"count":1,"type":"VEC3"},
                   {"componentType":5126,"count":1,"type":"VEC3","sparse":{}}]})"),
            "");
  const GltfData& data = load.GetData();
  EXPECT_THAT(Keys(data.nodes), ElementsAre(0, 2));
  EXPECT_THAT(Keys(data.scenes), ElementsAre(1));
  EXPECT_THAT(Keys(data.skins), ElementsAre(1));
  EXPECT_THAT(Keys(data.meshes), ElementsAre(1));
  EXPECT_THAT(Keys(data.buffers), ElementsAre(1));
  EXPECT_THAT(Keys(data.bufferViews), ElementsAre(2));
  EXPECT_THAT(Keys(data.accessors), ElementsAre(-1, 1));
  EXPECT_THAT(load.job.messages, ElementsAre(kAssetMissing));  // skin 1, which has no accessor
}

TEST(Records, FollowTheOptions)
{
  constexpr const char* kText = R"({"nodes":[{}],"scenes":[{}],"skins":[{}],"meshes":[{}],"accessors":[{}],"bufferViews":[{}],
      "buffers":[{"byteLength":1}]})";
  const struct
  {
    const DataKey& key;
    Int buffers;
    Int meshes;
    Int skins;
  } rows[] = {{importkeys::kGeometry, 0, 0, 1}, {importkeys::kAnimationTrs, 1, 1, 0}, {importkeys::kCameras, 1, 1, 1}};
  for (const auto& row : rows)
  {
    DocumentHost host;
    DocumentLoad load;
    Set(load, row.key, false);
    ASSERT_EQ(load.RunText(host, kText), "");
    EXPECT_EQ(load.GetData().buffers.GetCount(), row.buffers);
    EXPECT_EQ(load.GetData().meshes.GetCount(), row.meshes);
    EXPECT_EQ(load.GetData().skins.GetCount(), row.skins);
    EXPECT_EQ(load.GetData().nodes.GetCount(), 1);
    EXPECT_EQ(load.GetData().scenes.GetCount(), 1);
  }
}

TEST(Records, AreNotLookedAtWhenTheyAreNotWanted)
{
  DocumentHost host;
  DocumentLoad load;
  Set(load, importkeys::kGeometry, false);
  EXPECT_EQ(load.RunText(host, R"({"buffers":7,"bufferViews":7,"accessors":7,"meshes":7,"nodes":[{}]})"), "");
}

TEST(Records, SurviveEveryFailureOfMemory)
{
  const DataDictionary json =
    ParseObject(R"({"asset":{"generator":"g"},"scenes":[{"nodes":[0]}],"nodes":[{"children":[1,2]},{},{}],
      "meshes":[{"primitives":[{"attributes":{"POSITION":0,"COLOR_0":0},"targets":[{"POSITION":0}]}],"weights":[1]}],
      "buffers":[{"byteLength":12}],"bufferViews":[{"buffer":0,"byteLength":12}],
      "accessors":[{"bufferView":0,"componentType":5126,"count":1,"type":"VEC3","max":[0,0,0]}],"skins":[{"joints":[1]}]})");
  Int failAt = 1;
  for (;; ++failAt)
  {
    GltfData data;
    FailAllocation(failAt);
    Bool failed = data.Init().HasError() || FillInLoadedData(&data, json, ImportOptions()).HasError();
    GltfMesh* const mesh = data.meshes.Find(0);
    failed = failed || !mesh || mesh->Resolve(&data).HasError();
    const Int refused = StopFailingAllocations();
    // A record that memory did not suffice for is left out like a broken one.
    failed = failed || data.nodes.GetCount() < 3 || data.scenes.IsEmpty() || data.skins.IsEmpty();
    EXPECT_EQ(failed, refused != 0) << failAt;
    if (!refused)
      break;
  }
  EXPECT_GT(failAt, 20);
}

/// What a document's buffers become. /models holds two.bin (1, 2).
struct BuffersRow
{
  const char* name;
  Bool isGlb;
  const char* buffers;
  std::vector<Bytes> bytes;  // by index; of an absent buffer none
  std::vector<std::string> messages;
};

class Buffers : public testing::TestWithParam<BuffersRow>
{};

TEST_P(Buffers, AreLoadedOrWarnedAbout)
{
  const BuffersRow& row = GetParam();
  DocumentHost host;
  host.files.contents["/models/two.bin"] = {1, 2};
  DocumentLoad load(row.isGlb, "/models/a");
  const std::string json = std::string(R"({"buffers":[)") + row.buffers + "]}";
  ASSERT_EQ(row.isGlb ? load.RunBytes(host, GlbBuilder().PaddedJson(json).Bin({7, 8, 9, 0}).File()) : load.RunText(host, json),
            "");
  EXPECT_THAT(load.job.messages, ElementsAreArray(row.messages));
  for (size_t i = 0; i < row.bytes.size(); ++i)
  {
    const GltfBuffer* const buffer = load.GetData().buffers.Find(static_cast<Int>(i));
    EXPECT_THAT(buffer ? ToVector(buffer->GetBytes()) : std::vector<Byte>(), ElementsAreArray(row.bytes[i])) << i;
  }
  EXPECT_EQ(host.files.liveFiles, 0);
}

INSTANTIATE_TEST_SUITE_P(
  Rows, Buffers,
  testing::
    Values(BuffersRow{"Files",
                      false,
                      R"({"byteLength":2,"uri":"two.bin"},{"byteLength":1,"uri":"two.bin"})",
                      {{1, 2}, {1, 2}},
                      {}},
           BuffersRow{"NoUri", false, R"({"byteLength":2})", {{}}, {}},
           BuffersRow{"DataUri", false, R"({"byteLength":2,"uri":"data:application/octet-stream;base64,AwQ="})", {{3, 4}}, {}},
           BuffersRow{"MissingFile",
                      false,
                      R"({"byteLength":2,"uri":"nothing.bin"},{"byteLength":2,"uri":"two.bin"})",
                      {{}, {1, 2}},
                      {kAssetMissing}},
           BuffersRow{"Http", false, R"({"byteLength":2,"uri":"http://a/two.bin"})", {{}}, {kAssetMissing}},
           BuffersRow{"OtherMediaType", false, R"({"byteLength":2,"uri":"data:text/plain;base64,AwQ="})", {{}}, {kAssetMissing}},
           BuffersRow{"ShortDataUri",
                      false,
                      R"({"byteLength":3,"uri":"data:application/octet-stream;base64,AwQ="})",
                      {{3, 4}},
                      {"8 Broken data: data:application/octet-stream;base64,AwQ="}},
           BuffersRow{"BrokenDataUri",
                      false,
                      R"({"byteLength":2,"uri":"data:application/gltf-buffer;base64,A*"})",
                      {{}},
                      {"8 Broken data: data:application/gltf-buffer;base64,A*"}},
           BuffersRow{"GlbFirst", true, R"({"byteLength":2})", {{7, 8, 9, 0}}, {}},
           // No check of the length here.
           BuffersRow{"GlbFirstLongerDeclared", true, R"({"byteLength":2000})", {{7, 8, 9, 0}}, {}},
           BuffersRow{"GlbFirstWithUri", true, R"({"byteLength":2,"uri":"two.bin"},{"byteLength":2})", {{1, 2}, {}}, {}},
           BuffersRow{"GlbSecondWithoutUri", true, R"({"byteLength":2},{"byteLength":2})", {{7, 8, 9, 0}, {}}, {}},
           BuffersRow{"GlbFirstThatWasRead", true, R"({},{"byteLength":2},{"byteLength":2})", {{}, {7, 8, 9, 0}, {}}, {}},
           BuffersRow{"GlbEmptyUri", true, R"({"byteLength":2,"uri":""})", {{7, 8, 9, 0}}, {}}),
  RowName());

TEST(Buffers, AreNamedInAWarningOf260Characters)
{
  DocumentHost host;
  DocumentLoad load;
  const std::string uri = "data:application/octet-stream;base64,*" + std::string(100000, 'A');
  ASSERT_EQ(load.RunText(host, R"({"buffers":[{"byteLength":2,"uri":")" + uri + "\"}]}"), "");
  // "Broken data: " has 13 characters.
  EXPECT_THAT(load.job.messages, ElementsAre("8 Broken data: " + uri.substr(0, 247)));
}

TEST(Buffers, LetGoOfTheirTextOnceItIsDecoded)
{
  DocumentHost host;
  DocumentLoad load;
  ASSERT_EQ(load.RunText(host, R"({"buffers":[{"byteLength":2,"uri":"data:application/octet-stream;base64,AwQ="},
      {"byteLength":2,"uri":"data:application/gltf-buffer;base64,A*"}]})"),
            "");
  EXPECT_EQ(Text(load.GetData().buffers.Find(0)->GetUri()), "data:application/octet-stream;base64,");
  EXPECT_EQ(Text(load.GetData().buffers.Find(1)->GetUri()), "data:application/gltf-buffer;base64,");
}

TEST(Meshes, AreResolvedAndWarnedAbout)
{
  GltfJson file;
  const int positions = file.Floats({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
  file.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + "}}]}");
  file.Add("meshes", R"({"primitives":[{"attributes":{"POSITION":9}}]})");
  for (const Bool isGlb : {false, true})
  {
    DocumentHost host;
    DocumentLoad load(isGlb);
    ASSERT_EQ(isGlb ? load.RunBytes(host, file.Glb()) : load.RunText(host, file.Text()), "");
    EXPECT_THAT(load.job.messages, ElementsAre(kAssetMissing));
    const GltfMesh& mesh = *load.GetData().meshes.Find(0);
    ASSERT_TRUE(mesh.IsValid());
    EXPECT_FALSE(load.GetData().meshes.Find(1)->IsValid());
    EXPECT_EQ(mesh.GetPrimitives()[0].GetAccessors().positions->GetVector3(2).GetValue(), (Vector{0, 1, 0}));
  }
}

TEST(Skins, AreResolvedWhileAnyAnimationIsWanted)
{
  // One skin that fails: a warning tells that it was asked for.
  constexpr const char* kText = R"({"skins":[{}]})";
  const struct
  {
    Bool trs;
    Bool morph;
    std::vector<std::string> messages;
  } rows[] = {{true, true, {kAssetMissing}}, {true, false, {kAssetMissing}}, {false, true, {}}};
  for (const auto& row : rows)
  {
    DocumentHost host;
    DocumentLoad load;
    Set(load, importkeys::kAnimationTrs, row.trs);
    Set(load, importkeys::kAnimationMorph, row.morph);
    ASSERT_EQ(load.RunText(host, kText), "");
    EXPECT_THAT(load.job.messages, ElementsAreArray(row.messages));
  }
}

TEST(Warnings, ComeInTheOrderOfTheGroups)
{
  DocumentHost host;
  DocumentLoad load;
  ASSERT_EQ(load.RunText(host, R"({"skins":[{}],"meshes":[{"primitives":[{"attributes":{"POSITION":9}}]}],
      "buffers":[{"byteLength":2,"uri":"data:application/gltf-buffer;base64,A*"}],"extensionsUsed":["A"]})"),
            "");
  EXPECT_THAT(load.job.log,
              ElementsAre("stage 0.1 Reading", "progress 7 1", "progress 7 0.7", "4 Uses A.", "progress 7 0.9",
                          "8 Broken data: data:application/gltf-buffer;base64,A*", kAssetMissing, kAssetMissing, "progress 7 1"));
}

}  // namespace q7z::test
