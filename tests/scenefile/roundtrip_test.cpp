// What is written reads back as it was: the whole of the format, once as text and once as what the scene then holds.

#include <gtest/gtest.h>

#include "host/scene/headlessalias.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "tests/scenefile/scenetext.h"

namespace q7z::test
{
namespace
{

/// A JSON text without what stands between its tokens.
std::string WithoutBlanks(std::string_view text)
{
  std::string packed;
  Bool isInside = false;
  for (size_t i = 0; i < text.size(); ++i)
  {
    isInside ^= text[i] == '"' && text[i - 1] != '\\';
    if (isInside || (text[i] != ' ' && text[i] != '\n'))
      packed += text[i];
  }
  return packed;
}

TEST(SceneRoundTrip, EverythingComesBackAndOutlivesItsSourceInAClone)
{
  DocumentOwner document = Read(kEverything);
  ASSERT_TRUE(document);
  EXPECT_EQ(WithoutBlanks(Write(*document)), WithoutBlanks(kEverything));
  const DocumentOwner copy(CloneDocument(document.get()));
  ASSERT_TRUE(copy);
  document.reset();
  EXPECT_EQ(WithoutBlanks(Write(*copy)), WithoutBlanks(kEverything));
}

TEST(SceneRoundTrip, TheShortestDocumentIsANewOne)
{
  const DocumentOwner fresh(HeadlessDocument::Create());
  EXPECT_EQ(Write(*fresh), "{\n  \"format\": \"q7z scene\",\n  \"version\": 1\n}\n");
  const DocumentOwner read = Read(MakeText(""));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->GetParameters().Find(kDocumentRateParameter)->GetInt(), 30);
  EXPECT_EQ(read->GetParameters().Find(kDocumentEndParameter)->GetTime().GetSeconds(), 3);
  EXPECT_EQ(read->GetRenderData()->Find(5008)->GetInt(), 1280);
  EXPECT_EQ(read->GetSettings().Find(kDocumentUnitSetting)->GetUnit(), (HostUnitScale{1, 3}));
  EXPECT_EQ(read->GetNodeSpace(), kStandardNodeSpace);
}

TEST(SceneRoundTrip, TextHasALineForEachMember)
{
  const std::string_view text = R"({
  "format": "q7z scene",
  "version": 1,
  "render": null,
  "layers": [
    {"id": 1, "name": "Water"}
  ],
  "objects": [
    {
      "id": 2,
      "type": 5100,
      "name": "a",
      "matrix": {"offset": [0.0, 0.0, 0.0], "axisX": [1.0, 0.0, 0.0], "axisY": [0.0, 1.0, 0.0], "axisZ": [0.0, 0.0, 1.0]},
      "parameters": {
        "929": 1
      },
      "points": [0.0, 0.0, 0.1]
    }
  ]
}
)";
  EXPECT_EQ(Rewrite(text), text);
}

// Keys with what most keys are without: long modes, other parameters, times that are no fractions of whole numbers. They come back, and
// a copy that is changed keeps them.
TEST(SceneRoundTrip, UnusualKeysComeBack)
{
  const std::string_view keys[] = {
    R"({"time":[-0.5,1],"value":1.0,"interpolation":2})",
    R"({"time":[-0.0,1],"value":1.5,"interpolation":2})",
    R"({"time":[1,30],"value":2.0,"interpolation":3,"rotationMode":[1000,false,true],"auxiliaryMode":4})",
    R"({"time":[2,30],"value":2.0,"interpolation":2,"rotationMode":[3,true,true],"auxiliaryMode":-70000,"parameters":{"915":1}})",
    R"({"time":[10000,65535],"value":3.0,"interpolation":2,"parameters":{"915":-128}})",
    R"({"time":[1,4],"value":3.0,"interpolation":2,"parameters":{"915":127}})",
    R"({"time":[1e+17,3e+17],"value":3.5,"interpolation":2,"parameters":{"915":1,"916":"text"}})",
    R"({"time":[1,2],"value":4.0,"interpolation":2,"parameters":{"915":1.0}})",
    R"({"time":[-7,-8],"value":5.0,"interpolation":1,"left":{"time":[-1,3],"value":0.5},"parameters":{"916":1}})",
    R"({"time":[3000000000,7],"value":6.0,"interpolation":2,"parameters":{"915":{"container":{"1":2}}}})",
  };
  std::string list;
  for (const std::string_view key : keys)
    list += (list.empty() ? "" : ",") + std::string(key);
  const std::string text =
    MakeText(R"("objects": [{"id": 1, "type": 5140, "tracks": [{"id": [[903, 23, 0]], "keys": [)" + list + "]}]}]");
  const DocumentOwner document = Read(text);
  ASSERT_TRUE(document);
  EXPECT_NE(WithoutBlanks(Write(*document)).find("[" + list + "]"), std::string::npos) << Write(*document);
  const DocumentOwner copy(CloneDocument(document.get()));
  ASSERT_TRUE(copy->GetFirstObject()->GetTracks()->GetFirst()->GetCurve()->GetKey(0));  // a key to be changed: no longer shared
  EXPECT_EQ(Write(*copy), Write(*document));
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
  const std::string channels =
    Rewrite(MakeText(R"("materials": [{"id": 1, "type": 5703, "channels": {"6": {"on": true}, "3": {"on": true}}}])"));
  EXPECT_LT(channels.find("\"3\": {"), channels.find("\"6\": {"));
}

// What the tree does not show.
TEST(SceneRoundTrip, EverythingMeansWhatItSays)
{
  const DocumentOwner document = Read(kEverything);
  ASSERT_TRUE(document);
  EXPECT_EQ(document->GetNodeSpace(), "other.space"_s);
  EXPECT_EQ(document->GetRenderData()->Find(5009)->GetInt(), 720) << "its default";
  const HeadlessPolygonObject& square = *document->GetFirstObject()->AsPolygonObject();
  EXPECT_EQ(document->GetSettings().GetContainer(7, false)->Find(2)->GetLink(),
            ToHost(static_cast<const HeadlessNode*>(square.FindTag(kVertexColorTagType))));
  EXPECT_EQ(square.GetRotationOrder(), 2);
  EXPECT_EQ(square.GetBase().matrix.axisX, (Vector{0, 1, 0}));
  // As it stands in the text, though the vectors would give another one.
  EXPECT_EQ(square.GetLocalMatrix(), (HostMatrix{{0.5, 0, 0}, {1, 0, 0}, {0, 4, 0}, {0, 0, 1}}));
  EXPECT_EQ(square.GetVisibility(kRenderVisibility), 2);

  const auto& weights = static_cast<const HeadlessWeightTag&>(*square.FindTag(kWeightTagType));
  EXPECT_EQ(weights.GetJoint(0), square.GetLastChild());
  EXPECT_EQ(weights.GetWeight(2, 1), 0.25);
  EXPECT_EQ(weights.GetObjectBindMatrix().offset.x, 1);
  EXPECT_EQ(weights.GetJointBindMatrix(2).offset.x, 4);
  const auto& phong = static_cast<const HeadlessPhongTag&>(*square.FindTag(kPhongTagType));
  EXPECT_EQ(phong.GetSettings(), (PhongSettings{false, true, 0.7}));

  const HeadlessCurve& curve = *square.GetTracks()->GetFirst()->GetCurve();
  EXPECT_EQ(curve.GetKey(0)->GetLeftTangent().time.GetSeconds(), -0.1);
  EXPECT_EQ(curve.GetKey(0)->GetRightTangent().value, -2);
  EXPECT_EQ(curve.GetKey(1)->GetRotationMode(), (KeyRotationMode{1, true, false}));

  const HeadlessMaterial& node = *document->GetFirstMaterial();
  EXPECT_EQ(node.GetRecord()->space, "net.space"_s);
  EXPECT_FALSE(node.GetRecord()->data.parameters.Find("alphaMode"_s)->constant);
  EXPECT_EQ(node.GetNext()->FindLayerShader(526336 + 12)->GetParameters().Find(1002)->GetString(), "b.png"_s);
}

// A hand-written object may say where it stands in either way.
TEST(SceneRoundTrip, MatrixAndVectorsFollowFromEachOther)
{
  const DocumentOwner document = Read(MakeText(R"("objects": [{"id": 1, "type": 5140, "position": [1, 2, 3], "scale": [2, 1, 1]},
                                 {"id": 2, "type": 5140, "matrix": {"offset": [1, 2, 3], "axisZ": [0, 0, 5]}}])"));
  ASSERT_TRUE(document);
  const HeadlessObject* const object = document->GetFirstObject();
  EXPECT_EQ(object->GetLocalMatrix(), (HostMatrix{{1, 2, 3}, {2, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
  EXPECT_EQ(object->GetNext()->GetVectors().position, (Vector{1, 2, 3}));
  EXPECT_EQ(object->GetNext()->GetVectors().scale, (Vector{1, 1, 5}));
}

}  // namespace
}  // namespace q7z::test
