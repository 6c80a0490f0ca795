// Copies of the current state: what stands in the place of instances and deformers, and where links lead.

#include "host/modeling/modelingtable.h"
#include "tests/evaluation/currentstatefixture.h"
#include "tests/support/failingmemory.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

class CurrentState : public CurrentStateTest
{
protected:
  static HeadlessTag& AddTag(HeadlessObject& object, Int32 type, const char* name = "")
  {
    HeadlessTag& tag = *HeadlessTag::Create(type);
    EXPECT_TRUE(tag.SetName(Text(std::string(name))));
    tag.InsertInto(&object);
    return tag;
  }
  /// An aux tag that leads to the object itself.
  static void AddAux(HeadlessObject& object)
  {
    HeadlessTag& tag = AddTag(object, kNodeBasedTagType, "glTFAuxTag");
    EXPECT_TRUE(tag.SetParameter(1000, HostValue::Link(ToHost(static_cast<HeadlessNode*>(&object)))));
  }
  /// The names of what the object's aux tags lead to, by tag.
  static std::string AuxOf(const HeadlessObject& object)
  {
    std::string names;
    for (Int32 i = 0; i < object.GetTagCount(kNodeBasedTagType); ++i)
    {
      const HostValue* const link = object.FindTag(kNodeBasedTagType, i)->GetParameters().Find(1000);
      names += link && link->GetLink() ? Text(ToHeadless(link->GetLink())->GetName()) : "none";
    }
    return names;
  }
  static HeadlessWeightTag& AddWeights(HeadlessObject& object, std::initializer_list<HeadlessObject*> joints)
  {
    auto& tag = static_cast<HeadlessWeightTag&>(AddTag(object, kWeightTagType));
    for (HeadlessObject* const joint : joints)
      EXPECT_GE(tag.AddJoint(joint), 0);
    return tag;
  }
  static HeadlessObject* JointOf(const HeadlessObject& object, Int32 index = 0)
  {
    return static_cast<const HeadlessWeightTag*>(object.FindTag(kWeightTagType))->GetJoint(index);
  }

  HeadlessObject& _root = AddObject("root");
};

// What stands there.

/// The tests' own operations for the rows' functions.
class TreeBuilder : public CurrentState
{
public:
  using CurrentStateTest::AddInstance;
  using CurrentStateTest::AddMeshObject;
  using EvaluationTest::AddObject;
};

struct TreeRow
{
  const char* name;
  void (*build)(TreeBuilder& in, HeadlessObject& root);
  const char* expected;
};

class CurrentStateTree : public TreeBuilder, public testing::WithParamInterface<TreeRow>
{};

TEST_P(CurrentStateTree, IsOfPlainObjects)
{
  GetParam().build(*this, _root);
  const std::string before = Describe(_root);
  const Owner copy = MakeCopy(_root);
  ASSERT_TRUE(copy);
  EXPECT_EQ(Describe(*copy), GetParam().expected);
  EXPECT_EQ(Describe(_root), before);
  EXPECT_EQ(copy->GetDocument(), nullptr);
}

const TreeRow kTreeRows[] = {
  {"PlainObjects",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& group = in.AddObject("group", &root);
     in.AddMeshObject("mesh", &group);
     in.AddObject("camera", &group, kCameraObjectType);
     in.AddObject("last", &root);
   },
   "root(group(mesh* camera:5103) last)"},
  {"InstancesOfBothTypes",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& mesh = in.AddMeshObject("mesh", &root);
     in.AddInstance("first", &root, &mesh);
     in.AddObject("second", &root, kSecondInstanceObjectType).SetReference(&mesh);
   },
   "root(mesh* first* second*)"},
  {"ChildrenOfBoth",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& mesh = in.AddMeshObject("mesh", &root);
     in.AddObject("below", &in.AddObject("child", &mesh));
     HeadlessObject& instance = in.AddInstance("instance", &root, &mesh);
     in.AddObject("own", &instance);
   },
   "root(mesh*(child(below)) instance*(child(below) own))"},
  {"ShownFromOutside",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& mesh = in.AddMeshObject("mesh");
     in.AddObject("child", &mesh);
     in.AddInstance("instance", &root, &mesh);
   },
   "root(instance*(child))"},
  {"Nothing", [](TreeBuilder& in, HeadlessObject& root) { in.AddObject("own", &in.AddInstance("instance", &root, nullptr)); },
   "root(instance(own))"},
  {"InstanceOfAnInstance",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& mesh = in.AddMeshObject("mesh", &root);
     in.AddObject("child", &mesh);
     HeadlessObject& inner = in.AddInstance("inner", &root, &mesh);
     in.AddObject("inner's", &inner);
     HeadlessObject& outer = in.AddInstance("outer", &root, &inner);
     in.AddObject("outer's", &outer);
   },
   "root(mesh*(child) inner*(child inner's) outer*(child inner's outer's))"},
  {"InstanceOfAnInstanceOfNothing",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& inner = in.AddInstance("inner", &root, nullptr);
     in.AddObject("inner's", &inner);
     in.AddInstance("outer", &root, &inner);
   },
   "root(inner(inner's) outer(inner's))"},
  {"InstancesInsideOfWhatIsShown",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& mesh = in.AddMeshObject("mesh");
     HeadlessObject& pair = in.AddObject("pair");
     in.AddInstance("left", &pair, &mesh);
     in.AddInstance("right", &pair, &mesh);
     in.AddInstance("one", &root, &pair);
     in.AddInstance("two", &root, &pair);
   },
   "root(one(left* right*) two(left* right*))"},
  {"InstanceOfItsParent", [](TreeBuilder& in, HeadlessObject& root)
   { in.AddInstance("instance", &in.AddObject("group", &root), &root); }, "root(group(instance))"},
  {"InstanceOfItself",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& instance = in.AddInstance("instance", &root, nullptr);
     instance.SetReference(&instance);
   },
   "root(instance)"},
  {"CircleOfInstances",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& first = in.AddInstance("first", &root, nullptr);
     HeadlessObject& second = in.AddInstance("second", &root, &first);
     first.SetReference(&second);
     in.AddObject("child", &first);
     in.AddInstance("into", &root, &second);
   },
   "root(first(child) second into)"},
  {"InstanceUnderItsInstance",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& mesh = in.AddMeshObject("mesh", &root);
     HeadlessObject& instance = in.AddInstance("instance", &root, &mesh);
     in.AddInstance("under", &instance, &instance);
     in.AddInstance("again", &instance, &mesh);
   },
   "root(mesh* instance*(under again*))"},
  {"CircleThroughShownTrees",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     HeadlessObject& a = in.AddObject("a", &root);
     HeadlessObject& b = in.AddObject("b", &root);
     in.AddInstance("to b", &a, &b);
     in.AddInstance("to a", &b, &a);
   },
   "root(a(to b(to a)) b(to a(to b)))"},
  {"DeformersAreGone",
   [](TreeBuilder& in, HeadlessObject& root)
   {
     in.AddObject("gone", &in.AddMeshObject("mesh", &root), kSkinDeformerType);
     in.AddObject("child", &in.AddObject("stays", &root, kSkinDeformerType));
     in.AddInstance("instance", &root, root.GetLastChild());
   },
   "root(mesh* stays(child) instance(child))"},
};
INSTANTIATE_TEST_SUITE_P(Rows, CurrentStateTree, testing::ValuesIn(kTreeRows), RowName());

TEST_F(CurrentState, RootMayBeAnInstanceOrADeformer)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  EXPECT_EQ(Describe(*MakeCopy(AddInstance("instance", nullptr, &mesh))), "instance*");
  EXPECT_EQ(Describe(*MakeCopy(AddObject("deformer", nullptr, kSkinDeformerType))), "deformer");
}

TEST_F(CurrentState, InstanceKeepsNameTransformAndVisibility)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  mesh.SetLocalMatrix(Offset({7, 7, 7}));
  mesh.SetVisibility(kEditorVisibility, 1);
  mesh.SetParameter(700, 1.5);
  HeadlessObject& instance = AddInstance("instance", &_root, &mesh);
  ASSERT_TRUE(instance.SetBase({Offset({0, 0, 5}), {1, 2, 1}}));
  instance.SetRotationOrder(2);
  instance.SetVectors({{1, 2, 3}, {0.25, 0, 0}, {1, 1, -1}});
  instance.SetVisibility(kRenderVisibility, 2);
  const Owner copy = MakeCopy(_root);
  const HeadlessObject& shown = *copy->GetLastChild();
  EXPECT_EQ(shown.GetLocalMatrix(), instance.GetLocalMatrix());
  EXPECT_EQ(shown.GetVectors(), instance.GetVectors());
  EXPECT_EQ(shown.GetBase(), instance.GetBase());
  EXPECT_EQ(shown.GetRotationOrder(), 2);
  EXPECT_EQ(shown.GetVisibility(kEditorVisibility), 0);
  EXPECT_EQ(shown.GetVisibility(kRenderVisibility), 2);
  EXPECT_EQ(shown.GetParameters().Find(700)->GetFloat(), 1.5);
  EXPECT_EQ(shown.AsPolygonObject()->GetPoints().GetR(), mesh.AsPolygonObject()->GetPoints().GetR()) << "shared";
  EXPECT_EQ(copy->GetDown()->GetLocalMatrix(), Offset({7, 7, 7}));
}

TEST_F(CurrentState, DeformedMeshIsSharedByItsCopies)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  auto& tag = static_cast<HeadlessPoseMorphTag&>(AddTag(mesh, kPoseMorphTagType));
  ASSERT_TRUE(tag.AddMorph());
  tag.AddMorph()->SetPoints(MakeArray({{1, 2, 13}}));
  tag.GetMorph(1)->SetStrength(0.5);
  AddInstance("one", &_root, &mesh);
  AddInstance("two", &_root, &mesh);
  const Owner copy = MakeCopy(_root);
  const HeadlessObject& first = *copy->GetDown();
  EXPECT_EQ(PointsOf(first), (std::vector<Vector>{{1, 2, 8}}));
  for (const HeadlessObject* other = first.GetNext(); other; other = other->GetNext())
  {
    EXPECT_EQ(other->AsPolygonObject()->GetPoints().GetR(), first.AsPolygonObject()->GetPoints().GetR());
    EXPECT_EQ(other->FindTag(kPoseMorphTagType), nullptr);
  }
}

// Aux tags and tracks.

struct AuxRow
{
  const char* name;
  HostDescId shownTrack;  ///< without levels for none
  HostDescId instanceTrack;
  const char* aux;
  const char* tracks;  ///< first levels of the copy's tracks
};

class CurrentStateAux : public CurrentState, public testing::WithParamInterface<AuxRow>
{};

TEST_P(CurrentStateAux, IsOfWhatMoves)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  HeadlessObject& instance = AddInstance("instance", &_root, &mesh);
  AddTag(mesh, kNodeBasedTagType, "another");
  AddAux(mesh);
  AddAux(instance);
  if (GetParam().shownTrack.GetDepth() > 0)
    AddTrack(mesh, GetParam().shownTrack, {{0, 1}});
  if (GetParam().instanceTrack.GetDepth() > 0)
    AddTrack(instance, GetParam().instanceTrack, {{0, 2}});
  const Owner copy = MakeCopy(_root);
  EXPECT_EQ(AuxOf(*copy->GetDown()), "nonemesh");
  EXPECT_EQ(AuxOf(*copy->GetLastChild()), GetParam().aux);
  std::string tracks;
  for (const HeadlessTrack* track = copy->GetLastChild()->GetTracks()->GetFirst(); track; track = track->GetNext())
    tracks += std::to_string(track->GetId()[0].id) + "=" + std::to_string(Int(track->GetCurve()->GetKey(0)->GetValue())) + " ";
  EXPECT_EQ(tracks, GetParam().tracks);
}

const AuxRow kAuxRows[] = {
  {"NeitherMoves", {}, {}, "nonemesh", ""},
  {"InstanceMoves", {}, kPositionX, "noneinstance", "903=2 "},
  {"ShownMoves", HostDescId(kScaleParameter, kComponentZ), {}, "noneinstance", ""},
  {"BothMove", kPositionX, HostDescId(kRotationParameter, kComponentY), "noneinstance", "904=2 "},
  {"OtherTracksDoNotMove", HostDescId(kPointTrackParameter), HostDescId(800), "nonemesh", "100004812=1 "},
};
INSTANTIATE_TEST_SUITE_P(Rows, CurrentStateAux, testing::ValuesIn(kAuxRows), RowName());

TEST_F(CurrentState, NullsKeepTheirInstancesTagsTracksAndParameters)
{
  HeadlessObject& instance = AddInstance("instance", &_root, nullptr);
  AddAux(instance);
  AddTag(instance, kPoseMorphTagType);
  AddTrack(instance, kPositionX, {{0, 5}});
  instance.SetParameter(700, 1.5);
  const Owner copy = MakeCopy(_root);
  EXPECT_EQ(AuxOf(*copy->GetDown()), "instance");
  EXPECT_EQ(copy->GetDown()->FindTag(kPoseMorphTagType), nullptr);
  EXPECT_NE(copy->GetDown()->GetTracks()->Find(kPositionX), nullptr);
  EXPECT_EQ(copy->GetDown()->GetParameters().Find(700)->GetFloat(), 1.5);
}

// Settings.

TEST_F(CurrentState, WithoutTracks)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  AddTrack(mesh, kPositionX, {{0, 5}});
  AddTrack(AddTag(mesh, kTextureTagType), HostDescId(5), {{0, 5}});
  AddTrack(AddInstance("instance", &_root, &mesh), kPositionX, {{0, 6}});
  _settings.Erase(kKeepTracksSetting);
  const Owner copy = MakeCopy(_root);
  for (const HeadlessObject* object = copy.get(); object; object = object->GetNextInTree(copy.get()))
    EXPECT_TRUE(object->GetTracks()->IsEmpty());
  EXPECT_TRUE(copy->GetDown()->GetFirstTag()->GetTracks()->IsEmpty());
}

TEST_F(CurrentState, WithoutHierarchyAllStandInPlaceUnderTheRoot)
{
  _root.SetLocalMatrix(Offset({1000, 0, 0}));
  HeadlessObject& group = AddObject("group", &_root);
  group.SetLocalMatrix({{100, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}});
  HeadlessObject& mesh = AddMeshObject("mesh", &group);
  mesh.SetLocalMatrix(Offset({10, 0, 0}));
  AddObject("child", &mesh).SetLocalMatrix(Offset({1, 0, 0}));
  AddInstance("instance", &group, &mesh).SetLocalMatrix(Offset({0, 0, 3}));
  _settings.Erase(kKeepHierarchySetting);
  const Owner copy = MakeCopy(_root);
  EXPECT_EQ(Describe(*copy), "root(group mesh* child instance* child)");
  EXPECT_EQ(copy->GetLocalMatrix().offset, (Vector{1000, 0, 0}));
  std::vector<Vector> offsets;
  for (const HeadlessObject* object = copy->GetDown(); object; object = object->GetNext())
    offsets.push_back(object->GetLocalMatrix().offset);
  EXPECT_EQ(offsets, (std::vector<Vector>{{100, 0, 0}, {120, 0, 0}, {122, 0, 0}, {100, 0, 6}, {102, 0, 6}}));
  EXPECT_EQ(copy->GetLastChild()->GetLocalMatrix().axisY, (Vector{0, 2, 0}));
}

// Links.

TEST_F(CurrentState, WeightTagsLeadToCopiesAndAllElseToOriginals)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  HeadlessObject& joint = AddObject("joint", &_root, kJointObjectType);
  HeadlessObject& outside = AddObject("outside", nullptr, kJointObjectType);
  AddWeights(mesh, {&joint, &outside, &_root});
  ASSERT_TRUE(static_cast<HeadlessWeightTag*>(mesh.FindTag(kWeightTagType))->SetWeight(0, 0, 0.5));
  AddAux(mesh);
  mesh.SetParameter(700, HostValue::Link(ToHost(static_cast<HeadlessNode*>(&joint))));
  const Owner copy = MakeCopy(_root);
  const HeadlessObject& meshCopy = *copy->GetDown();
  EXPECT_EQ(JointOf(meshCopy, 0), copy->GetLastChild());
  EXPECT_EQ(JointOf(meshCopy, 1), &outside);
  EXPECT_EQ(JointOf(meshCopy, 2), copy.get());
  EXPECT_EQ(static_cast<HeadlessWeightTag*>(meshCopy.FindTag(kWeightTagType))->GetWeight(0, 0), 0.5);
  EXPECT_EQ(AuxOf(meshCopy), "mesh");
  EXPECT_EQ(meshCopy.GetParameters().Find(700)->GetLink(), ToHost(static_cast<HeadlessNode*>(&joint)));
  EXPECT_EQ(JointOf(mesh, 0), &joint);
}

// A figure of a skinned mesh with a joint, and a hat that hangs on a joint of the tree. Each copy of the figure has its own joint.
TEST_F(CurrentState, WeightTagsOfShownTreesLeadToTheirOwnJoints)
{
  HeadlessObject& common = AddObject("common", &_root, kJointObjectType);
  HeadlessObject& figure = AddObject("figure", &_root);
  HeadlessObject& body = AddMeshObject("body", &figure);
  HeadlessObject& joint = AddObject("joint", &figure, kJointObjectType);
  AddWeights(body, {&joint, &common});
  HeadlessObject& crowd = AddObject("crowd");
  AddInstance("left", &crowd, &figure);
  AddInstance("again", &crowd, &body);
  AddInstance("crowd 1", &_root, &crowd);
  AddInstance("alone", &_root, &body);
  const Owner copy = MakeCopy(_root);
  ASSERT_EQ(Describe(*copy), "root(common:1019362 figure(body* joint:1019362) crowd 1(left(body* joint:1019362) again*) alone*)");
  const HeadlessObject& figureCopy = *copy->GetDown()->GetNext();
  const HeadlessObject& left = *figureCopy.GetNext()->GetDown();
  EXPECT_EQ(JointOf(*figureCopy.GetDown()), figureCopy.GetLastChild());
  EXPECT_EQ(JointOf(*left.GetDown()), left.GetLastChild());
  EXPECT_EQ(JointOf(*left.GetNext()), figureCopy.GetLastChild()) << "none of its own: that of the tree";
  EXPECT_EQ(JointOf(*copy->GetLastChild()), figureCopy.GetLastChild());
  for (const HeadlessObject* mesh : {figureCopy.GetDown(), left.GetDown(), left.GetNext()})
    EXPECT_EQ(JointOf(*mesh, 1), copy->GetDown());
}

TEST_F(CurrentState, JointsOfTheScopeAroundComeBeforeThoseOfTheTree)
{
  HeadlessObject& figure = AddObject("figure", &_root);
  HeadlessObject& body = AddMeshObject("body");
  HeadlessObject& joint = AddObject("joint", &figure, kJointObjectType);
  AddWeights(body, {&joint});
  AddInstance("shown body", &figure, &body);
  AddInstance("second", &_root, &figure);
  const Owner copy = MakeCopy(_root);
  ASSERT_EQ(Describe(*copy), "root(figure(joint:1019362 shown body*) second(joint:1019362 shown body*))");
  for (const HeadlessObject* object = copy->GetDown(); object; object = object->GetNext())
    EXPECT_EQ(JointOf(*object->GetLastChild()), object->GetDown());
}

// Limits and size.

TEST_F(CurrentState, EndsAtTheLimitOfObjects)
{
  HeadlessObject& group = AddObject("group");
  for (int i = 0; i < 3; ++i)
    AddMeshObject("mesh", &group);
  AddInstance("one", &_root, &group);
  AddInstance("two", &_root, &group);
  // The two groups stand in their instances' places; the six meshes in them are more than the tree has.
  EXPECT_FALSE(MakeCopy(_root, {5, 1 << 20}));
  EXPECT_TRUE(MakeCopy(_root, {6, 1 << 20}));
}

TEST_F(CurrentState, EndsAtTheLimitOfMemory)
{
  HeadlessObject& mesh = AddMeshObject("mesh");
  HeadlessCurve& curve = AddTrack(mesh, HostDescId(800), {});
  for (int i = 0; i < 1000; ++i)
    ASSERT_TRUE(curve.AddKey({Float(i), 1}, nullptr));
  for (int i = 0; i < 10; ++i)
    AddInstance("instance", &_root, &mesh);
  EXPECT_FALSE(MakeCopy(_root, {100, 100000}));
  EXPECT_TRUE(MakeCopy(_root, {100, 10000000}));
}

// Each group shows the one before twice: two to the 40th meshes.
TEST_F(CurrentState, DoublingEndsAtTheLimit)
{
  HeadlessObject* shown = &AddMeshObject("mesh");
  for (int i = 0; i < 40; ++i)
  {
    HeadlessObject& group = AddObject("group");
    AddInstance("left", &group, shown);
    AddInstance("right", &group, shown);
    shown = &group;
  }
  AddInstance("instance", &_root, shown);
  EXPECT_FALSE(MakeCopy(_root, {20000, Int(1) << 30}));
}

TEST_F(CurrentState, DeepAndWideTreesCostNoStack)
{
  HeadlessObject* parent = &_root;
  for (int i = 0; i < 100000; ++i)
  {
    HeadlessObject* const child = HeadlessObject::Create(kNullObjectType);
    child->InsertUnder(parent);
    parent = child;
  }
  for (int i = 0; i < 100000; ++i)
    HeadlessObject::Create(kNullObjectType)->InsertUnder(&_root);
  AddInstance("instance", nullptr, &_root);
  const Owner copy = MakeCopy(*Scene().GetLastObject());
  Int count = 0;
  for (const HeadlessObject* object = copy.get(); object; object = object->GetNextInTree(copy.get()))
    ++count;
  EXPECT_EQ(count, 200001);
}

TEST_F(CurrentState, LongChainsOfInstancesAreFollowedOnce)
{
  HeadlessObject* shown = &AddMeshObject("mesh");
  for (int i = 0; i < 50000; ++i)
  {
    HeadlessObject* const instance = HeadlessObject::Create(kInstanceObjectType);
    instance->InsertUnder(&_root);  // the last one first
    ASSERT_TRUE(instance->SetReference(shown));
    shown = instance;
  }
  const Owner copy = MakeCopy(_root, {0, Int(1) << 30});
  ASSERT_TRUE(copy);
  EXPECT_TRUE(copy->GetDown()->IsPolygonObject());
  EXPECT_TRUE(copy->GetLastChild()->IsPolygonObject());
}

// The command.

TEST_F(CurrentState, CommandGivesTheCopy)
{
  AddMeshObject("mesh", &_root);
  ModelingTable table;
  HostModelingData data;
  data.document = Document();
  data.object = ToHost(&_root);
  data.settings = ToHost(&_settings);
  ASSERT_TRUE(table.Send(245, data));
  ASSERT_EQ(data.resultCount, 1);
  const Owner copy(ToHeadless(data.results[0]));
  EXPECT_EQ(Describe(*copy), "root(mesh*)");
  data.object = nullptr;
  EXPECT_FALSE(table.Send(245, data));
}

TEST_F(CurrentState, NullWithoutMemoryAndNothingLeftOver)
{
  HeadlessObject& mesh = AddMeshObject("mesh", &_root);
  AddTag(mesh, kNormalTagType);
  HeadlessObject& joint = AddObject("joint", &_root, kJointObjectType);
  HeadlessWeightTag& weights = AddWeights(mesh, {&joint});
  ASSERT_TRUE(weights.SetWeight(0, 0, 1) && weights.TakeBindPose());
  joint.SetLocalMatrix(Offset({0, 1, 0}));
  AddObject("deformer", &_root, kSkinDeformerType);
  AddObject("deformer", &AddObject("group", &_root), kSkinDeformerType);
  auto& morphs = static_cast<HeadlessPoseMorphTag&>(AddTag(mesh, kPoseMorphTagType));
  ASSERT_TRUE(morphs.AddMorph());
  morphs.AddMorph()->SetPoints(MakeArray({{5, 5, 5}}));
  morphs.GetMorph(1)->SetStrength(1);
  AddAux(mesh);
  HeadlessObject& inner = AddInstance("an instance", &_root, &mesh);
  AddAux(inner);
  AddTrack(inner, kPositionX, {{0, 1}});
  AddObject("own", &inner);
  AddInstance("outer", &_root, &inner);
  AddTrack(AddInstance("nothing", &_root, nullptr), kPositionX, {{0, 1}});
  const Int nodes = GetSceneDiagnostics().liveNodes;
  for (Int failAt = 1;; ++failAt)
  {
    ASSERT_LT(failAt, 2000);
    FailAllocation(failAt);
    const Owner copy = MakeCopy(_root);
    const Bool failed = StopFailingAllocations() > 0;
    EXPECT_EQ(copy == nullptr, failed) << failAt;
    if (!failed)
      break;
    EXPECT_EQ(GetSceneDiagnostics().liveNodes, nodes) << failAt;
  }
}

}  // namespace
}  // namespace q7z::test
