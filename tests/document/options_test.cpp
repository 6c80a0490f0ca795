// The typed view of the import options: what is missing answers with the getter's fallback, not with the loader's default.

#include <gtest/gtest.h>

#include "plugin/document/gltfimportoptions.h"
#include "plugin/module/configvariables.h"
#include "tests/document/testjson.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

TEST(ImportOptions, FallBackWithoutAnyEntry)
{
  const ImportOptions options;
  EXPECT_EQ(options.GetScale(), 1.0);
  EXPECT_TRUE(options.IsCameras());
  EXPECT_TRUE(options.IsGeometry());
  EXPECT_FALSE(options.IsSplitMesh());
  EXPECT_EQ(options.GetPhongAngle(), 1.0);
  EXPECT_EQ(Text(options.GetNormals()), "none");
  EXPECT_TRUE(options.IsVertexColors());
  EXPECT_TRUE(options.IsUvs());
  EXPECT_TRUE(options.IsFlipZ());
  EXPECT_TRUE(options.IsMaterials());
  EXPECT_TRUE(options.IsAnimationTrs());
  EXPECT_TRUE(options.IsMorphTargets());
  EXPECT_TRUE(options.IsTargetsLayer());
  EXPECT_FALSE(options.IsCleanTracks());
}

struct BoolRow
{
  const char* name;
  const char* key;
  Bool (ImportOptions::*getter)() const noexcept;
};

class BoolOptions : public testing::TestWithParam<BoolRow>
{};

TEST_P(BoolOptions, AnswerWithTheEntry)
{
  const String key = String::Join({"net.tarno.gltf.parameters.options.import."_s,
                                   String(GetParam().key, static_cast<Int>(std::string_view(GetParam().key).size()))})
                       .GetValue();
  for (const Bool value : {true, false})
  {
    ImportOptions options;
    ASSERT_FALSE(options.Set(DataKey(key), value).HasError());
    EXPECT_EQ((options.*GetParam().getter)(), value);
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, BoolOptions,
                         testing::Values(BoolRow{"Cameras", "cameras", &ImportOptions::IsCameras},
                                         BoolRow{"Geometry", "geometry", &ImportOptions::IsGeometry},
                                         BoolRow{"SplitMesh", "splitmesh", &ImportOptions::IsSplitMesh},
                                         BoolRow{"VertexColors", "vertexcolors", &ImportOptions::IsVertexColors},
                                         BoolRow{"Uvs", "uvs", &ImportOptions::IsUvs},
                                         BoolRow{"FlipZ", "flipz", &ImportOptions::IsFlipZ},
                                         BoolRow{"Materials", "materials", &ImportOptions::IsMaterials},
                                         BoolRow{"AnimationTrs", "animation.trs", &ImportOptions::IsAnimationTrs},
                                         BoolRow{"MorphTargets", "animation.morph", &ImportOptions::IsMorphTargets},
                                         BoolRow{"TargetsLayer", "animation.morph.targetslayer", &ImportOptions::IsTargetsLayer},
                                         BoolRow{"CleanTracks", "animation.cleantracks", &ImportOptions::IsCleanTracks}),
                         RowName());

TEST(ImportOptions, GiveNumbers)
{
  ImportOptions options;
  ASSERT_FALSE(options.Set(importkeys::kScale, 100.0).HasError());
  ASSERT_FALSE(options.Set(importkeys::kPhongAngle, 40.0).HasError());
  EXPECT_EQ(options.GetScale(), 100.0);
  EXPECT_EQ(options.GetPhongAngle(), 40.0);
}

TEST(ImportOptions, NameTheChoiceOfNormals)
{
  const std::pair<Int32, const char*> rows[] = {{1006, "none"}, {1007, "vertex"}, {1008, "phong"}, {1009, "none"}, {0, "none"}};
  for (const auto& [number, text] : rows)
  {
    ImportOptions options;
    ASSERT_FALSE(options.Set(importkeys::kNormals, number).HasError());
    EXPECT_EQ(Text(options.GetNormals()), text) << number;
  }
}

struct GateRow
{
  const char* name;
  Bool trs;
  Bool morph;
  Bool geometry;
  Bool noSkin;
  Bool skins;
  Bool animations;
  Bool morphTargets;
};

class Gates : public testing::TestWithParam<GateRow>
{
protected:
  void TearDown() override { g_gltfImporterNoSkin = false; }
};

TEST_P(Gates, FollowTheirOptions)
{
  const GateRow& row = GetParam();
  ImportOptions options;
  ASSERT_FALSE(options.Set(importkeys::kAnimationTrs, row.trs).HasError());
  ASSERT_FALSE(options.Set(importkeys::kAnimationMorph, row.morph).HasError());
  ASSERT_FALSE(options.Set(importkeys::kGeometry, row.geometry).HasError());
  g_gltfImporterNoSkin = row.noSkin;
  EXPECT_EQ(options.IsSkins(), row.skins);
  EXPECT_EQ(options.IsAnimations(), row.animations);
  EXPECT_EQ(options.IsMorphTargets(), row.morphTargets);
}

//                                           trs    morph  geom.  noSkin skins  anim.  morph targets
INSTANTIATE_TEST_SUITE_P(Rows, Gates,
                         testing::Values(GateRow{"All", true, true, true, false, true, true, true},
                                         GateRow{"SkinsForbidden", true, true, true, true, false, true, true},
                                         GateRow{"NoTransforms", false, true, true, false, false, true, true},
                                         GateRow{"MorphNeedsGeometry", false, true, false, false, false, false, false},
                                         GateRow{"TransformsAlone", true, false, false, false, true, true, false},
                                         GateRow{"Nothing", false, false, true, false, false, false, false}),
                         RowName());

}  // namespace q7z::test
