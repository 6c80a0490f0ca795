// Marks and pruning: what is hidden or needed for a skin is marked, what would be an empty node is gone.

#include "tests/export/preprocessorfixture.h"

namespace q7z::test
{
namespace
{

class PreprocessorMarks : public PreprocessorTest
{
protected:
  bool IsHidden(const std::string& name) { return GetBoolMarker(Find(name), kHiddenObject); }
  bool IsNeeded(const std::string& name) { return GetBoolMarker(Find(name), kNeededForJoints); }
};

TEST_F(PreprocessorMarks, WhatStandsUnderAHiddenObjectIsHidden)
{
  HostObject* const hidden = AddStrip("hidden", 1);
  AddStrip("grandchild", 1, AddStrip("child", 1, hidden));
  Hide(hidden);
  HostObject* const editorOnly = AddStrip("editorOnly", 1);
  editorOnly->SetVisibility(kEditorVisibility, kHiddenMode);
  HostObject* const otherMode = AddStrip("otherMode", 1);
  otherMode->SetVisibility(kEditorVisibility, 2);
  otherMode->SetVisibility(kRenderVisibility, 2);
  Hide(AddStrip("inner", 1, AddStrip("outer", 1)));
  ASSERT_EQ(Run(), "");
  for (const char* name : {"hidden", "child", "grandchild", "inner"})
    EXPECT_TRUE(IsHidden(name)) << name;
  for (const char* name : {"editorOnly", "otherMode", "outer"})
    EXPECT_FALSE(IsHidden(name)) << name;
}

// An object of the user's with that name and hidden is left out whole: it is marked, what stands under it is never looked at.
TEST_F(PreprocessorMarks, UnderDontexportNothingIsMarked)
{
  HostObject* const left = Add("dontexport");
  AddStrip("under", 1, left);
  Hide(left);
  HostObject* const shown = Add("dontexport", Add("parent"));
  AddStrip("below", 1, shown);
  ASSERT_EQ(Run(), "");
  EXPECT_FALSE(IsHidden("under"));
  EXPECT_TRUE(GetBoolMarker(Find("under")->GetUp(), kHiddenObject));
  EXPECT_FALSE(IsDontExport(Find("below")->GetUp()));
}

TEST_F(PreprocessorMarks, JointsAreMarkedUpToTheTop)
{
  HostObject* const root = Add("root");
  HostObject* const hip = Add("hip", root, kJointObjectType);
  HostObject* const knee = Add("knee", hip, kJointObjectType);
  Add("toe", knee, kJointObjectType);
  HostObject* const side = Add("side", root, kJointObjectType);
  Bind(AddStrip("skin", 1), {knee, hip});
  Bind(AddStrip("emptySkin", 1, side), {});
  _options.exportSkins = true;
  ASSERT_EQ(Run(), "");
  for (const char* name : {"root", "hip", "knee"})
    EXPECT_TRUE(IsNeeded(name)) << name;
  for (const char* name : {"toe", "side", "skin", "emptySkin"})
    EXPECT_FALSE(IsNeeded(name)) << name;
}

TEST_F(PreprocessorMarks, WithoutSkinsNoJointIsNeeded)
{
  HostObject* const joint = Add("joint", nullptr, kJointObjectType);
  AddStrip("mesh", 1, joint);
  Bind(AddStrip("skin", 1), {joint});
  ASSERT_EQ(Run(), "");
  EXPECT_FALSE(IsNeeded("joint"));
}

struct PruneRow
{
  const char* name;
  Int32 type;
  int triangles;  // of a polygon object
  bool exportCameras;
  bool exportSkins;
  bool isKept;
};

const PruneRow kPruneRows[] = {
  {"Null", kNullObjectType, 0, true, true, false},
  {"Mesh", kPolygonObjectType, 1, false, false, true},
  {"MeshWithoutPolygons", kPolygonObjectType, 0, true, true, false},
  {"Camera", kCameraObjectType, 0, true, false, true},
  {"CameraLeftOut", kCameraObjectType, 0, false, true, false},
  {"RenderCamera", kRenderCameraObjectType, 0, true, false, true},
  {"RenderCameraLeftOut", kRenderCameraObjectType, 0, false, true, false},
  {"Joint", kJointObjectType, 0, false, true, true},
  {"JointLeftOut", kJointObjectType, 0, true, false, false},
};

class PreprocessorPrune : public PreprocessorTest, public testing::WithParamInterface<PruneRow>
{};

// A leaf under two nulls decides about both; so does one at the top.
TEST_P(PreprocessorPrune, BranchesStayForTheirContent)
{
  const PruneRow& row = GetParam();
  const auto addLeaf = [this, &row](const char* name, HostObject* parent)
  { return row.type == kPolygonObjectType ? AddStrip(name, row.triangles, parent) : Add(name, parent, row.type); };
  HostObject* const outer = Add("outer");
  addLeaf("leaf", Add("inner", outer));
  Add("empty", Add("alsoEmpty", outer));
  AddStrip("other", 1, outer);
  addLeaf("top", nullptr);
  _options.exportCameras = row.exportCameras;
  _options.exportSkins = row.exportSkins;
  ASSERT_EQ(Run(), "");
  EXPECT_EQ(Find("leaf") != nullptr, row.isKept);
  EXPECT_EQ(Find("inner") != nullptr, row.isKept);
  EXPECT_EQ(Find("top") != nullptr, row.isKept);
  EXPECT_EQ(Find("empty"), nullptr);
  EXPECT_EQ(_count, row.isKept ? 5 : 2);
  EXPECT_EQ(GetIntMarker(Find("outer"), kSubtreeCount), row.isKept ? 4 : 2);
  EXPECT_TRUE(FindOriginal("empty"));
}

INSTANTIATE_TEST_SUITE_P(Rows, PreprocessorPrune, testing::ValuesIn(kPruneRows), RowName());

}  // namespace
}  // namespace q7z::test
