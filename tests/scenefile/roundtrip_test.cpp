// What is written reads back as it was: the whole of the format, once as text and once as what the scene then holds.

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "tests/scenefile/scenetext.h"

namespace q7z::test
{
namespace
{

TEST(SceneRoundTrip, EverythingComesBackByteForByte)
{
  EXPECT_EQ(Rewrite(kEverything), kEverything);
}

// Each name is asked for as it stands before its content, so that none of another kind is taken for it.
TEST(SceneRoundTrip, EverythingHoldsEveryMember)
{
  static constexpr std::string_view kMembers[] = {// top level
                                                  "format", "version", "name", "nodeSpace", "parameters", "settings", "render",
                                                  "time", "layers", "materials", "objects", "takes",
                                                  // objects
                                                  "id", "type", "position", "rotation", "scale", "rotationOrder", "base",
                                                  "offset", "axisX", "axisY", "axisZ", "baseScale", "matrix", "editor", "layer",
                                                  "points", "polygons", "reference", "tags", "tracks", "children",
                                                  // tags
                                                  "normals", "uvws", "perPoint", "colors", "material", "on", "limit", "angle",
                                                  "joints", "weights", "bind", "object", "morphs", "strength",
                                                  // tracks and takes
                                                  "keys", "value", "interpolation", "left", "right", "rotationMode",
                                                  "auxiliaryMode", "main", "current", "overrides", "target", "values",
                                                  // materials
                                                  "node", "space", "materialType", "constant", "textures", "channels", "shader",
                                                  "shaders",
                                                  // kinds of value
                                                  "vector", "vector4", "unit", "link", "container", "float"};
  for (const std::string_view member : kMembers)
    EXPECT_NE(kEverything.find('"' + std::string(member) + "\": "), std::string_view::npos) << member;
}

TEST(SceneRoundTrip, TheShortestDocumentIsANewOne)
{
  const DocumentOwner fresh(HeadlessDocument::Create());
  EXPECT_EQ(Write(*fresh), "{\n  \"format\": \"q7z scene\",\n  \"version\": 1\n}\n");
  const DocumentOwner read = Read(MakeText(""));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->GetParameters().Find(kDocumentRateParameter)->GetInt(), 30);
  EXPECT_EQ(read->GetParameters().Find(kDocumentSecondEndParameter)->GetTime().GetSeconds(), 3);
  EXPECT_EQ(read->GetSettings().Find(kDocumentUnitSetting)->GetUnit(), (HostUnitScale{1, 3}));
  EXPECT_EQ(read->GetRenderData()->Find(5009)->GetInt(), 720);
  EXPECT_EQ(read->GetNodeSpace(), kStandardNodeSpace);
  EXPECT_EQ(read->GetTakeData().GetCurrentTake(), read->GetTakeData().GetMainTake());
}

TEST(SceneRoundTrip, NoRenderDataStaysNone)
{
  const std::string text = "{\n  \"format\": \"q7z scene\",\n  \"version\": 1,\n  \"render\": null\n}\n";
  EXPECT_EQ(Rewrite(text), text);
  EXPECT_EQ(Read(text)->GetRenderData(), nullptr);
}

// Members in another order (as tools sort them) and other white space mean the same.
TEST(SceneRoundTrip, OrderOfMembersDoesNotMatter)
{
  const std::string text = R"({"objects":[{"tags":[{"normals":[1,2,3,4,5,6,7,8,9,10,11,12],"id":2,"type":5711}],
    "children":[{"matrix":{"axisX":[1,0,0]},"type":5140,"id":3}],"polygons":[0,0,0,0],"points":[1,2,3],"type":5100,"id":1}],
    "version":1,"format":"q7z scene"})";
  const DocumentOwner document = Read(text);
  ASSERT_TRUE(document);
  const HeadlessObject* const object = document->GetFirstObject();
  const auto* const tag = static_cast<const HeadlessCornerTag*>(object->FindTag(kNormalTagType));
  EXPECT_EQ(tag->GetPolygonCount(), 1);
  EXPECT_EQ(tag->GetHandleR().Get(0).d, (Vector{10, 11, 12}));
  EXPECT_EQ(object->GetDown()->GetType(), kNullObjectType);
}

/// The same document for every test of its content.
class SceneContent : public testing::Test
{
protected:
  const HeadlessTag& FindTag(Int32 type) const { return *Square().FindTag(type); }
  const HeadlessPolygonObject& Square() const { return *_document->GetFirstObject()->AsPolygonObject(); }
  const HeadlessObject& Joint() const { return *Square().GetLastChild(); }

  const DocumentOwner _document = Read(kEverything);
};

TEST_F(SceneContent, Document)
{
  EXPECT_EQ(_document->GetName(), "Pier \"é\""_s);
  EXPECT_EQ(_document->GetNodeSpace(), "other.space"_s);
  EXPECT_EQ(_document->GetParameters().Find(kDocumentRateParameter)->GetInt(), 25);
  EXPECT_EQ(_document->GetParameters().Find(kDocumentStartParameter), nullptr);
  EXPECT_EQ(_document->GetParameters().Find(kDocumentEndParameter)->GetTime().GetSeconds(), 3.5);
  EXPECT_EQ(_document->GetRenderData()->Find(5008)->GetInt(), 640);
  EXPECT_EQ(_document->GetRenderData()->Find(5009)->GetInt(), 720);
  EXPECT_EQ(_document->GetTime().GetSeconds(), 0.75);
  HeadlessContainer* const inner = _document->GetSettings().GetContainer(7, false);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->Find(HostDescId(903, 1000))->GetFloat(), 0.5);
  EXPECT_EQ(inner->Find(2)->GetLink(), ToHost(static_cast<const HeadlessNode*>(&FindTag(kVertexColorTagType))));
  EXPECT_EQ(inner->Find(3)->GetKind(), HostValueKind::kLink);
}

TEST_F(SceneContent, Transform)
{
  const HeadlessPolygonObject& square = Square();
  EXPECT_EQ(square.GetVectors(), (TransformVectors{{1, 2, 3}, {0.1, -0.2, 3}, {2, 2, 0.5}}));
  EXPECT_EQ(square.GetRotationOrder(), 2);
  EXPECT_EQ(square.GetBase().matrix.axisX, (Vector{0, 1, 0}));
  EXPECT_EQ(square.GetBase().scale, (Vector{1, 1, 3}));
  // As it stands in the text, though the vectors would give another one.
  EXPECT_EQ(square.GetLocalMatrix(), (HostMatrix{{0.5, 0, 0}, {1, 0, 0}, {0, 4, 0}, {0, 0, 1}}));
  EXPECT_EQ(square.GetVisibility(kEditorVisibility), 1);
  EXPECT_EQ(square.GetVisibility(kRenderVisibility), 2);
  EXPECT_EQ(square.GetLayer(), _document->GetLayerRoot().GetLayer(1));
}

TEST_F(SceneContent, CornerTagsKeepTheirPrecision)
{
  const auto& normals = static_cast<const HeadlessCornerTag&>(FindTag(kNormalTagType));
  const auto& uvws = static_cast<const HeadlessCornerTag&>(FindTag(kUvwTagType));
  EXPECT_FALSE(normals.IsDouble());
  EXPECT_EQ(normals.GetHandleR().singles[0], 0.1f);
  EXPECT_TRUE(uvws.IsDouble());
  EXPECT_EQ(uvws.GetHandleR().doubles[0], 0.1000000000000001);
}

TEST_F(SceneContent, OtherTags)
{
  EXPECT_EQ(static_cast<const HeadlessVertexColorTag&>(FindTag(kVertexColorTagType)).GetHandleR().GetPoint(3)[3], 0.5f);
  EXPECT_EQ(static_cast<const HeadlessSelectionTag&>(FindTag(kPolygonSelectionTagType)).GetSelection().GetCount(), 2);
  EXPECT_EQ(static_cast<const HeadlessTextureTag&>(FindTag(kTextureTagType)).GetMaterial(),
            _document->GetFirstMaterial()->GetNext());
  EXPECT_EQ(static_cast<const HeadlessPhongTag&>(FindTag(kPhongTagType)).GetSettings(), (PhongSettings{false, true, 0.7}));
  EXPECT_EQ(FindTag(4242).GetName(), "Of some other host"_s);
  EXPECT_EQ(FindTag(4242).GetParameters().Find(1)->GetInt(), INT64_MAX);
}

TEST_F(SceneContent, Weights)
{
  const auto& weights = static_cast<const HeadlessWeightTag&>(FindTag(kWeightTagType));
  ASSERT_EQ(weights.GetJointCount(), 3);
  EXPECT_EQ(weights.GetJoint(0), &Joint());
  EXPECT_EQ(weights.GetJoint(1), nullptr);
  EXPECT_EQ(weights.GetWeight(0, 3), 1);
  EXPECT_EQ(weights.GetWeight(0, 1), 0);
  EXPECT_EQ(weights.GetWeight(2, 1), 0.25);
  EXPECT_EQ(weights.GetObjectBindMatrix().offset.x, 1);
  EXPECT_EQ(weights.GetJointBindMatrix(2).offset.x, 4);
}

TEST_F(SceneContent, Morphs)
{
  const auto& morphs = static_cast<const HeadlessPoseMorphTag&>(FindTag(kPoseMorphTagType));
  ASSERT_EQ(morphs.GetMorphCount(), 2);
  EXPECT_EQ(morphs.GetMorph(0)->GetPointNode()->GetPoints().GetR()[0], (Vector{1, 2, 3}));
  EXPECT_EQ(morphs.GetMorph(1)->GetObject()->GetName(), "Target"_s);
  EXPECT_EQ(morphs.GetMorph(1)->GetStrength(), 0.5);
}

TEST_F(SceneContent, Tracks)
{
  const HeadlessTrack* const track = Square().GetTracks()->GetFirst();
  EXPECT_EQ(track->GetId()[1].dataType, kRealDataType);
  const HeadlessKey& first = *track->GetCurve()->GetKey(0);
  const HeadlessKey& second = *track->GetCurve()->GetKey(1);
  EXPECT_EQ(first.GetLeftTangent().time.GetSeconds(), -0.1);
  EXPECT_EQ(first.GetRightTangent().value, -2);
  EXPECT_FALSE(second.GetLeftTangent().isSet);
  EXPECT_EQ(second.GetInterpolation(), InterpolationMode::Step);
  EXPECT_EQ(second.GetRotationMode(), (KeyRotationMode{1, true, false}));
  EXPECT_EQ(second.GetAuxiliaryMode(), 4);
  EXPECT_EQ(second.GetParameters().Find(5)->GetInt(), 1);
  const HeadlessKey& pointKey = *track->GetNext()->GetCurve()->GetKey(0);
  ASSERT_EQ(pointKey.GetPoints().GetCount(), 2);
  EXPECT_TRUE(std::isnan(pointKey.GetPoints().GetR()[1].x));
}

TEST_F(SceneContent, Takes)
{
  const HeadlessTakeData& takes = _document->GetTakeData();
  ASSERT_EQ(takes.GetTakeCount(), 2);
  const HeadlessTake& walk = *takes.GetTake(1);
  EXPECT_EQ(takes.GetCurrentTake(), &walk);
  ASSERT_EQ(walk.GetOverrideCount(), 2);
  EXPECT_EQ(walk.GetOverride(0)->GetTarget(), &Joint());
  EXPECT_EQ(walk.GetOverride(0)->GetParameters().Find(HostDescId(903, 1000))->GetFloat(), 1);
  EXPECT_EQ(walk.GetOverride(0)->GetTracks()->GetFirst()->GetCurve()->GetKeyCount(), 0);
  EXPECT_EQ(walk.GetOverride(1)->GetTarget(), nullptr);
}

TEST_F(SceneContent, Materials)
{
  const HeadlessMaterial& node = *_document->GetFirstMaterial();
  ASSERT_TRUE(node.IsNodeBased());
  const HostMaterialExchangeData& data = node.GetRecord()->data;
  EXPECT_EQ(node.GetRecord()->space, "net.space"_s);
  const HostExchangeParameter& color = *data.parameters.Find("baseColorFactor"_s);
  EXPECT_EQ(color.value.GetArray().GetValue()[2].GetFloat().GetValue(), 0.25);
  EXPECT_TRUE(color.constant);
  EXPECT_FALSE(data.parameters.Find("alphaMode"_s)->constant);
  EXPECT_EQ(data.textures.Find("baseColorTexture"_s)->url.GetPath(), "tex/a%b.png"_s);
  const HeadlessMaterial& classic = *node.GetNext();
  EXPECT_TRUE(classic.FindChannel(0)->on);
  EXPECT_EQ(classic.FindChannel(0)->shader->GetParameters().Find(1002)->GetString(), "tex/a.png"_s);
  EXPECT_EQ(classic.FindChannel(5)->shader, nullptr);
  EXPECT_EQ(classic.FindLayerShader(526336 + 12)->GetParameters().Find(1002)->GetString(), "b.png"_s);
  EXPECT_EQ(classic.GetLayers().GetCount(), 2);
}

// A hand-written object may say where it stands in either way.
TEST(SceneTransform, MatrixFollowsFromVectors)
{
  const DocumentOwner document =
    Read(MakeText(R"("objects": [{"id": 1, "type": 5140, "position": [1, 2, 3], "scale": [2, 1, 1]}])"));
  ASSERT_TRUE(document);
  EXPECT_EQ(document->GetFirstObject()->GetLocalMatrix(), (HostMatrix{{1, 2, 3}, {2, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
}

TEST(SceneTransform, VectorsFollowFromMatrixAlone)
{
  const DocumentOwner document =
    Read(MakeText(R"("objects": [{"id": 1, "type": 5140, "matrix": {"offset": [1, 2, 3], "axisZ": [0, 0, 5]}}])"));
  ASSERT_TRUE(document);
  EXPECT_EQ(document->GetFirstObject()->GetVectors().position, (Vector{1, 2, 3}));
  EXPECT_EQ(document->GetFirstObject()->GetVectors().scale, (Vector{1, 1, 5}));
}

}  // namespace
}  // namespace q7z::test
