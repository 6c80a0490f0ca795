// The loader's parameters: what a new loader starts with, what a missing value means, what is enabled, and what each option
// changes in the scene.

#include "plugin/import/gltfimportparameters.h"

#include <set>

#include "tests/import/directload.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

class ImportParameters : public ImportTest
{
protected:
  ImportOptions Fill(HeadlessNode& node, HostDocument* document)
  {
    ImportOptions options;
    EXPECT_FALSE(FillImportOptions(*ToHost(&node)->GetContainer(), document, options).HasError());
    return options;
  }
};

std::string Describe(const ImportOptions& options)
{
  std::string text;
  const auto add = [&](const char* name, Bool value) { text += value ? std::string(" ") + name : std::string(); };
  add("cameras", options.IsCameras());
  add("geometry", options.IsGeometry());
  add("splitmesh", options.IsSplitMesh());
  add("vertexcolors", options.IsVertexColors());
  add("uvs", options.IsUvs());
  add("flipz", options.IsFlipZ());
  add("materials", options.IsMaterials());
  add("trs", options.IsAnimationTrs());
  add("morphs", options.IsMorphTargets());
  add("targetslayer", options.IsTargetsLayer());
  add("cleantracks", options.IsCleanTracks());
  return std::string(options.GetNormals().GetView()) + text;
}

TEST_F(ImportParameters, StartWithTheirDefaults)
{
  DirectLoad load;
  HostContainer& container = *load.Node()->GetContainer();
  HostUnitScale unit;
  ASSERT_TRUE(container.GetUnit(1002, unit));
  EXPECT_EQ(unit, (HostUnitScale{1.0, 2}));
  EXPECT_EQ(container.GetFloat(1009), 0.6981317007977318);
  EXPECT_EQ(container.GetInt32(1005), 1007);
  EXPECT_EQ(container.Find(1019), nullptr);

  ImportOptions options;
  ASSERT_FALSE(FillImportOptions(container, Host().Document(), options).HasError());
  EXPECT_EQ(Describe(options), "vertex cameras geometry vertexcolors uvs flipz materials trs morphs targetslayer");
  EXPECT_DOUBLE_EQ(options.GetPhongAngle(), 40);
  EXPECT_EQ(options.GetScale(), 100);  // a metre in a document of centimetres
}

TEST_F(ImportParameters, MissingValuesHaveDefaultsOfTheirOwn)
{
  HeadlessNode node(1060210);
  const ImportOptions options = Fill(node, Host().Document());
  EXPECT_EQ(Describe(options), "vertex flipz materials");
  EXPECT_DOUBLE_EQ(options.GetPhongAngle(), 40);
  EXPECT_EQ(options.GetScale(), 1);
}

TEST_F(ImportParameters, EntriesThatNobodyPutFallBack)
{
  const ImportOptions options;
  EXPECT_EQ(Describe(options), "none cameras geometry vertexcolors uvs flipz materials trs morphs targetslayer");
  EXPECT_EQ(options.GetPhongAngle(), 1);
  EXPECT_EQ(options.GetScale(), 1);
}

struct ScaleCase
{
  const char* name;
  HostUnitScale chosen;
  HostUnitScale documents;
  Float scale;
};
const ScaleCase kScaleCases[] = {
  {"MetreInCentimetres", {1, 2}, {1, 3}, 100},
  {"MetreInTensOfCentimetres", {1, 2}, {10, 3}, 10},
  {"InchInMillimetres", {1, 10}, {1, 4}, 25.4},
  {"KilometreInMetres", {1, 1}, {1, 2}, 1000},
};

class ImportScale : public ImportParameters, public testing::WithParamInterface<ScaleCase>
{};

TEST_P(ImportScale, IsTheChosenUnitInTheDocuments)
{
  HeadlessNode node(1060210);
  ASSERT_TRUE(ToHost(&node)->GetContainer()->Set(1002, GetParam().chosen));
  ASSERT_TRUE(Host().Document()->GetSettings()->Set(2117, GetParam().documents));
  EXPECT_NEAR(Fill(node, Host().Document()).GetScale(), GetParam().scale, 1e-9 * GetParam().scale);
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportScale, testing::ValuesIn(kScaleCases), RowName());

TEST_F(ImportParameters, ScaleIsOneWithoutAUnitOfTheDocument)
{
  HeadlessNode node(1060210);
  ASSERT_TRUE(ToHost(&node)->GetContainer()->Set(1002, HostUnitScale{1, 2}));
  EXPECT_EQ(Fill(node, nullptr).GetScale(), 1);
  Host().Document()->GetSettings()->Erase(2117);
  EXPECT_EQ(Fill(node, Host().Document()).GetScale(), 1);
}

TEST_F(ImportParameters, NormalsOutsideTheChoiceAreNone)
{
  for (const Int32 choice : {1006, 0, 1009, -1})
  {
    HeadlessNode node(1060210);
    ASSERT_TRUE(ToHost(&node)->GetContainer()->Set(1005, choice));
    EXPECT_EQ(std::string(Fill(node, nullptr).GetNormals().GetView()), "none") << choice;
  }
}

struct EnablingCase
{
  const char* name;
  std::vector<std::pair<Int32, HostValue>> values;  // over the defaults
  std::set<Int32> disabled;
};
const EnablingCase kEnablingCases[] = {
  {"Defaults", {}, {1009}},
  {"PhongNormals", {{1005, 1008}}, {}},
  {"NoGeometry", {{1004, false}}, {1005, 1009, 1010, 1011, 1012, 1017, 1018, 1020}},
  {"NoTransforms", {{1014, false}}, {1009}},
  {"NoMorphs", {{1017, false}}, {1009, 1020}},
  {"NoTransformsAndNoMorphs", {{1014, false}, {1017, false}}, {1009, 1019, 1020}},
  {"NoTransformsAndNoGeometry", {{1014, false}, {1004, false}}, {1005, 1009, 1010, 1011, 1012, 1017, 1018, 1019, 1020}},
  {"NoNormalsValue", {{1005, HostValue()}}, {1009}},
};

class ImportEnabling : public ImportTest, public testing::WithParamInterface<EnablingCase>
{};

TEST_P(ImportEnabling, FollowsTheOtherParameters)
{
  DirectLoad load;
  for (const auto& [id, value] : GetParam().values)
    ASSERT_TRUE(load.Node()->GetContainer()->Set(id, value));
  std::set<Int32> disabled;
  for (Int32 id = 1000; id < 1030; ++id)  // what the loader does not decide is enabled by its base
  {
    if (!load.Loader().GetEnabling(load.Node(), id))
      disabled.insert(id);
  }
  EXPECT_EQ(disabled, GetParam().disabled);
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportEnabling, testing::ValuesIn(kEnablingCases), RowName());

class AnyDescription final : public HostDescription
{};

class FixedDescriptions final : public HostDescriptionTable
{
public:
  Bool LoadByName(HostDescription*, const Char* name) noexcept override
  {
    loaded = name;
    return !broken;
  }
  Bool LoadById(HostDescription*, Int32) noexcept override { return false; }
  Bool BaseGetDescription(HostNode*, HostDescription*, Int32& flags) noexcept override
  {
    flagsAtBase = flags;
    return true;
  }
  Bool BaseGetEnabling(const HostNode*, const HostDescId& id) noexcept override { return id[0].id == 4711; }

  std::string loaded;
  Bool broken = false;
  Int32 flagsAtBase = 0;
};

class ImportDescription : public ImportTest
{
protected:
  ImportDescription() { Host().Host().GetTables().description = &_descriptions; }
  FixedDescriptions _descriptions;
  AnyDescription _description;
};

TEST_F(ImportDescription, IsLoadedByNameOrToldToDevelopers)
{
  DirectLoad load;
  for (const Bool broken : {false, true})
  {
    _descriptions.broken = broken;
    Int32 flags = 16;
    EXPECT_EQ(load.Loader().GetDescription(load.Node(), &_description, flags), !broken);
    EXPECT_EQ(flags, broken ? 16 : 18);
  }
  ASSERT_FALSE(Host().Diagnostics().empty());
  EXPECT_THAT(Host().Diagnostics().back(),
              testing::HasSubstr("Illegal state: Condition description->LoadDescription(\"fgltfimporter\") not fulfilled."));
  EXPECT_TRUE(load.Loader().GetEnabling(load.Node(), 4711)) << "the base decides";
  EXPECT_FALSE(load.Loader().GetEnabling(load.Node(), 1002)) << "the base decides";
}

// One triangle at (1, 2, 3), in units of the document, and what its options make of it.
struct OptionCase
{
  const char* name;
  std::vector<std::pair<Int32, HostValue>> values;
  const char* tags;  // of the node's object
  const char* type = "5100";
  const char* place = "(1 2 -3)";
};
const OptionCase kOptionCases[] = {
  {"Defaults", {}, " tag 5711 tag 431000045 tag 5671 tag 5612"},
  {"NoNormals", {{1005, 1006}}, " tag 431000045 tag 5671"},
  {"PhongNormals", {{1005, 1008}}, " tag 431000045 tag 5671 tag 5612"},
  {"NoColors", {{1010, false}}, " tag 5711 tag 5671 tag 5612"},
  {"NoUvs", {{1011, false}}, " tag 5711 tag 431000045 tag 5612"},
  {"NoMirror", {{1012, false}}, " tag 5711 tag 431000045 tag 5671 tag 5612", "5100", "(1 2 3)"},
  {"TwiceTheLength", {{1002, HostUnitScale{2, 3}}}, " tag 5711 tag 431000045 tag 5671 tag 5612", "5100", "(2 4 -6)"},
  {"NoGeometry", {{1004, false}}, "", "5140"},
  {"WithoutEffectHere",
   {{1003, false}, {1013, false}, {1014, false}, {1017, false}, {1018, true}, {1019, true}, {1020, false}},
   " tag 5711 tag 431000045 tag 5671 tag 5612"},
};

class ImportOption : public ImportTest, public testing::WithParamInterface<OptionCase>
{};

TEST_P(ImportOption, ChangesWhatItSaysAndNothingElse)
{
  Host().Set(1002, HostUnitScale{1, 3});
  for (const auto& [id, value] : GetParam().values)
    Host().Set(id, value);
  EXPECT_EQ(Load(R"("scenes":[{"name":"S","nodes":[0]}],"nodes":[{"name":"A","mesh":0,"translation":[1,2,3]}])", SomeMeshes()),
            "none");
  const std::string geometry = GetParam().type == std::string("5100") ? " points 3 polygons 1" : "";
  EXPECT_EQ(WriteDump(Host().Document()), "5140 'S' (0 0 0) (1 0 0) (0 1 0) (0 0 1) visibility 0 0\n  " +
                                            std::string(GetParam().type) + " 'A' " + GetParam().place +
                                            " (1 0 0) (0 1 0) (0 0 1) visibility 0 0" + geometry + GetParam().tags + "\n");
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportOption, testing::ValuesIn(kOptionCases), RowName());

TEST_F(ImportTest, NodesAreMarkedAndTakeTheirMatrixFirst)
{
  Host().Set(1002, HostUnitScale{2, 3});
  EXPECT_EQ(
    Load(R"("scenes":[{"nodes":[0]}],"nodes":[{"name":"A","matrix":[1,0,0,0,0,1,0,0,0,0,1,0,1,2,3,1],"translation":[9,9,9],
                    "scale":[9,9,9]}])"),
    "none");
  HostObject* const op = Host().Document()->GetFirstObject()->GetDown();
  ASSERT_NE(op, nullptr);
  EXPECT_EQ(op->GetLocalMatrix(), (HostMatrix{{2, 4, -6}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
  HostValue mark;
  ASSERT_TRUE(op->GetParameter(929, mark));
  EXPECT_EQ(mark.GetInt(), 1);
}

}  // namespace
}  // namespace q7z::test
