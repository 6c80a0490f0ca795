// The loader's parameters: what a new loader starts with, what a missing value means, what is enabled, and what each option
// changes in the scene.

#include "plugin/import/gltfimportparameters.h"

#include <set>

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

TEST_F(ImportParameters, ScaleIsTheChosenUnitInTheDocuments)
{
  const struct
  {
    HostUnitScale chosen;
    HostUnitScale documents;
    Float scale;
  } rows[] = {{{1, 2}, {1, 3}, 100}, {{1, 2}, {10, 3}, 10}, {{1, 10}, {1, 4}, 25.4}, {{1, 1}, {1, 2}, 1000}};
  HeadlessNode node(1060210);
  for (const auto& row : rows)
  {
    ASSERT_TRUE(ToHost(&node)->GetContainer()->Set(1002, row.chosen));
    ASSERT_TRUE(Host().Document()->GetSettings()->Set(2117, row.documents));
    EXPECT_NEAR(Fill(node, Host().Document()).GetScale(), row.scale, 1e-9 * row.scale);
  }
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

TEST_F(ImportParameters, DescriptionIsLoadedAndSaysSo)
{
  class AnyDescription final : public HostDescription
  {
  } description;
  DirectLoad load;
  Int32 flags = 16;
  EXPECT_TRUE(load.Loader().GetDescription(load.Node(), &description, flags));
  EXPECT_EQ(flags, 18);
}

TEST_F(ImportParameters, EnablingFollowsTheOthers)
{
  const struct
  {
    std::vector<std::pair<Int32, HostValue>> values;  // over the defaults
    std::set<Int32> disabled;
  } rows[] = {{{}, {1009}},
              {{{1005, 1008}}, {}},
              {{{1004, false}}, {1005, 1009, 1010, 1011, 1012, 1017, 1018, 1020}},
              {{{1017, false}}, {1009, 1020}},
              {{{1014, false}, {1017, false}}, {1009, 1019, 1020}},
              {{{1005, HostValue()}}, {1009}}};
  for (const auto& row : rows)
  {
    DirectLoad load;
    for (const auto& [id, value] : row.values)
      ASSERT_TRUE(load.Node()->GetContainer()->Set(id, value));
    std::set<Int32> disabled;
    for (Int32 id = 1000; id < 1030; ++id)  // what the loader does not decide is enabled by its base
    {
      if (!load.Loader().GetEnabling(load.Node(), id))
        disabled.insert(id);
    }
    EXPECT_EQ(disabled, row.disabled);
  }
}

// A triangle at (1, 2, 3), in units of the document, and what options make of it.
TEST(ImportOption, ChangesWhatItSaysAndNothingElse)
{
  const struct
  {
    Int32 parameter;
    HostValue value;
    const char* tags = " tag 5711 tag 431000045 tag 5671 tag 5612";
    const char* place = "(1 2 -3)";
    Bool isMesh = true;
  } rows[] = {{1004, true},
              {1005, 1006, " tag 431000045 tag 5671"},
              {1005, 1008, " tag 431000045 tag 5671 tag 5612"},
              {1010, false, " tag 5711 tag 5671 tag 5612"},
              {1011, false, " tag 5711 tag 431000045 tag 5612"},
              {1012, false, " tag 5711 tag 431000045 tag 5671 tag 5612", "(1 2 3)"},
              {1002, HostUnitScale{2, 3}, " tag 5711 tag 431000045 tag 5671 tag 5612", "(2 4 -6)"},
              {1004, false, "", "(1 2 -3)", false}};
  for (const auto& row : rows)
  {
    TestHost host;
    host.Set(1002, HostUnitScale{1, 3});
    host.Set(row.parameter, row.value);
    GltfJson file = SomeMeshes();
    file.Add("nodes", R"({"name":"A","mesh":0,"translation":[1,2,3]})");
    EXPECT_EQ(host.LoadText(file.Text()), "none");
    EXPECT_EQ(WriteDump(host.Document()), std::string(row.isMesh ? "5100 'A' " : "5140 'A' ") + row.place +
                                            " (1 0 0) (0 1 0) (0 0 1) visibility 0 0" +
                                            (row.isMesh ? " points 3 polygons 1" : "") + row.tags + "\n");
  }
}

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
