// Copies of the current state: what stands in the place of instances and deformers, and where links lead.

#include "tests/evaluation/evaluationfixture.h"
#include "tests/support/sweep.h"

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
    EXPECT_TRUE(tag.SetName(MakeString(name)));
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

  HeadlessObject& AddRoot() { return AddObject("root"); }
};

// What stands there.

// 1019363 is a skin deformer, 1018957 the second type of instances.
const std::tuple<const char*, const char*, const char*> kTreeRows[] = {
  {"PlainObjects", "root(group(mesh* camera:5103) last)", "root(group(mesh* camera:5103) last)"},
  {"InstancesOfBothTypes", "root(mesh* first=mesh second:1018957=mesh)", "root(mesh* first* second*)"},
  {"ChildrenOfBoth", "root(mesh*(child(below)) i=mesh(own))", "root(mesh*(child(below)) i*(child(below) own))"},
  {"ShownFromOutside", "root(i=mesh) mesh*(child)", "root(i*(child))"},
  {"Nothing", "root(i=(own))", "root(i(own))"},
  {"InstanceOfAnInstance", "root(mesh*(child) in=mesh(a) out=in(b))", "root(mesh*(child) in*(child a) out*(child a b))"},
  {"InstanceOfAnInstanceOfNothing", "root(in=(a) out=in)", "root(in(a) out(a))"},
  {"InstancesInsideOfWhatIsShown", "root(one=pair two=pair) mesh* pair(l=mesh r=mesh)", "root(one(l* r*) two(l* r*))"},
  {"InstanceOfItsParent", "root(group(i=root))", "root(group(i))"},
  {"InstanceOfItself", "root(i=i)", "root(i)"},
  {"CircleOfInstances", "root(first=second(child) second=first into=second)", "root(first(child) second into)"},
  {"InstanceUnderItsInstance", "root(mesh* i=mesh(under=i again=mesh))", "root(mesh* i*(under again*))"},
  {"CircleThroughShownTrees", "root(a(tob=b) b(toa=a))", "root(a(tob(toa)) b(toa(tob)))"},
  {"RootIsAnInstance", "root=mesh mesh*", "root*"},
  {"RootIsADeformer", "root:1019363", "root"},
  {"DeformersAreGone", "root(mesh*(gone:1019363) stays:1019363(child) i=stays)", "root(mesh* stays(child) i(child))"},
};

TEST_F(CurrentState, IsOfPlainObjects)
{
  for (const auto& [name, objects, expected] : kTreeRows)
  {
    SCOPED_TRACE(name);
    Build(objects);
    HeadlessObject& root = Find("root");
    const std::string before = Describe(root);
    const Owner copy = MakeCopy(root);
    ASSERT_TRUE(copy);
    EXPECT_EQ(Describe(*copy), expected);
    EXPECT_EQ(Describe(root), before);
    EXPECT_EQ(copy->GetDocument(), nullptr);
    Clear();
  }
}

TEST_F(CurrentState, InstanceKeepsNameTransformAndVisibility)
{
  HeadlessObject& root = AddRoot();
  HeadlessObject& mesh = AddMeshObject("mesh", &root);
  mesh.SetLocalMatrix(Offset({7, 7, 7}));
  mesh.SetParameter(700, 1.5);
  HeadlessObject& instance = AddInstance("instance", &root, &mesh);
  ASSERT_TRUE(instance.SetBase({Offset({0, 0, 5}), {1, 2, 1}}));
  instance.SetRotationOrder(2);
  instance.SetVectors({{1, 2, 3}, {0.25, 0, 0}, {1, 1, -1}});
  instance.SetVisibility(kRenderVisibility, 2);
  const Owner copy = MakeCopy(root);
  const HeadlessObject& shown = *copy->GetLastChild();
  EXPECT_EQ(shown.GetLocalMatrix(), instance.GetLocalMatrix());
  EXPECT_EQ(shown.GetVectors(), instance.GetVectors());
  EXPECT_EQ(shown.GetBase(), instance.GetBase());
  EXPECT_EQ(shown.GetRotationOrder(), 2);
  EXPECT_EQ(shown.GetVisibility(kRenderVisibility), 2);
  EXPECT_EQ(shown.GetParameters().Find(700)->GetFloat(), 1.5);
  EXPECT_EQ(shown.AsPolygonObject()->GetPoints().GetR(), mesh.AsPolygonObject()->GetPoints().GetR()) << "shared";
  EXPECT_EQ(copy->GetDown()->GetLocalMatrix(), Offset({7, 7, 7}));
}

// Aux tags and tracks.

const std::tuple<const char*, HostDescId, HostDescId, const char*, const char*> kAuxRows[] = {
  {"NeitherMoves", {}, {}, "nonemesh", ""},
  {"InstanceMoves", {}, kPositionX, "noneinstance", "903=2 "},
  {"ShownMoves", HostDescId(kScaleParameter, kComponentZ), {}, "noneinstance", ""},
  {"BothMove", kPositionX, HostDescId(kRotationParameter, kComponentY), "noneinstance", "904=2 "},
  {"OtherTracksDoNotMove", HostDescId(kPointTrackParameter), HostDescId(800), "nonemesh", "100004812=1 "},
};

TEST_F(CurrentState, AuxTagsAreOfWhatMoves)
{
  for (const auto& [name, shownTrack, instanceTrack, aux, expected] : kAuxRows)
  {
    SCOPED_TRACE(name);
    HeadlessObject& root = AddRoot();
    HeadlessObject& mesh = AddMeshObject("mesh", &root);
    HeadlessObject& instance = AddInstance("instance", &root, &mesh);
    AddTag(mesh, kNodeBasedTagType, "another");
    AddAux(mesh);
    AddAux(instance);
    if (shownTrack.GetDepth() > 0)
      AddTrack(mesh, shownTrack, {{0, 1}});
    if (instanceTrack.GetDepth() > 0)
      AddTrack(instance, instanceTrack, {{0, 2}});
    const Owner copy = MakeCopy(root);
    EXPECT_EQ(AuxOf(*copy->GetDown()), "nonemesh");
    EXPECT_EQ(AuxOf(*copy->GetLastChild()), aux);
    std::string tracks;
    for (const HeadlessTrack* track = copy->GetLastChild()->GetTracks()->GetFirst(); track; track = track->GetNext())
      tracks += std::to_string(track->GetId()[0].id) + "=" + std::to_string(Int(track->GetCurve()->GetKey(0)->GetValue())) + " ";
    EXPECT_EQ(tracks, expected);
  }
}

TEST_F(CurrentState, NullsKeepTheirInstancesTagsTracksAndParameters)
{
  HeadlessObject& root = AddRoot();
  HeadlessObject& instance = AddInstance("instance", &root, nullptr);
  AddAux(instance);
  AddTag(instance, kPoseMorphTagType);
  AddTrack(instance, kPositionX, {{0, 5}});
  instance.SetParameter(700, 1.5);
  const Owner copy = MakeCopy(root);
  EXPECT_EQ(AuxOf(*copy->GetDown()), "instance");
  EXPECT_EQ(copy->GetDown()->FindTag(kPoseMorphTagType), nullptr);
  EXPECT_NE(copy->GetDown()->GetTracks()->Find(kPositionX), nullptr);
  EXPECT_EQ(copy->GetDown()->GetParameters().Find(700)->GetFloat(), 1.5);
}

// Settings.

TEST_F(CurrentState, WithoutTracks)
{
  Build("root(mesh* instance=mesh)");
  AddTrack(Find("mesh"), kPositionX, {{0, 5}});
  AddTrack(AddTag(Find("mesh"), kTextureTagType), HostDescId(5), {{0, 5}});
  AddTrack(Find("instance"), kPositionX, {{0, 6}});
  _settings.Erase(kKeepTracksSetting);
  const Owner copy = MakeCopy(Find("root"));
  for (const HeadlessObject* object = copy.get(); object; object = object->GetNextInTree(copy.get()))
    EXPECT_TRUE(object->GetTracks()->IsEmpty());
  EXPECT_TRUE(copy->GetDown()->GetFirstTag()->GetTracks()->IsEmpty());
}

TEST_F(CurrentState, WithoutHierarchyAllStandInPlaceUnderTheRoot)
{
  HeadlessObject& root = AddRoot();
  root.SetLocalMatrix(Offset({1000, 0, 0}));
  HeadlessObject& group = AddObject("group", &root);
  group.SetLocalMatrix({{100, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}});
  HeadlessObject& mesh = AddMeshObject("mesh", &group);
  mesh.SetLocalMatrix(Offset({10, 0, 0}));
  AddObject("child", &mesh).SetLocalMatrix(Offset({1, 0, 0}));
  AddInstance("instance", &group, &mesh).SetLocalMatrix(Offset({0, 0, 3}));
  _settings.Erase(kKeepHierarchySetting);
  const Owner copy = MakeCopy(root);
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
  HeadlessObject& root = AddRoot();
  HeadlessObject& mesh = AddMeshObject("mesh", &root);
  HeadlessObject& joint = AddObject("joint", &root, kJointObjectType);
  HeadlessObject& outside = AddObject("outside", nullptr, kJointObjectType);
  AddWeights(mesh, {&joint, &outside, &root});
  ASSERT_TRUE(static_cast<HeadlessWeightTag*>(mesh.FindTag(kWeightTagType))->SetWeight(0, 0, 0.5));
  AddAux(mesh);
  mesh.SetParameter(700, HostValue::Link(ToHost(static_cast<HeadlessNode*>(&joint))));
  const Owner copy = MakeCopy(root);
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
  Build("root(common:1019362 figure(body* joint:1019362) first=crowd alone=body) crowd(left=figure again=body)");
  AddWeights(Find("body"), {&Find("joint"), &Find("common")});
  const Owner copy = MakeCopy(Find("root"));
  ASSERT_EQ(Describe(*copy), "root(common:1019362 figure(body* joint:1019362) first(left(body* joint:1019362) again*) alone*)");
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
  Build("root(figure(joint:1019362 shown=body) second=figure) body*");
  AddWeights(Find("body"), {&Find("joint")});
  const Owner copy = MakeCopy(Find("root"));
  ASSERT_EQ(Describe(*copy), "root(figure(joint:1019362 shown*) second(joint:1019362 shown*))");
  for (const HeadlessObject* object = copy->GetDown(); object; object = object->GetNext())
    EXPECT_EQ(JointOf(*object->GetLastChild()), object->GetDown());
}

// Limits and size.

TEST_F(CurrentState, EndsAtTheLimitOfObjects)
{
  Build("root(one=group two=group) group(a* b* c*) circle(d=(e=f)) f=g(h) g=d(i)");
  // The two groups stand in their instances' places; the six meshes in them are more than the tree has.
  EXPECT_FALSE(MakeCopy(Find("root"), {5, 1 << 20}));
  EXPECT_TRUE(MakeCopy(Find("root"), {6, 1 << 20}));
  // The way from e over f and g back to d, in which e stands, is one of three steps.
  EXPECT_FALSE(MakeCopy(Find("circle"), {2, 1 << 20}));
  EXPECT_TRUE(MakeCopy(Find("circle"), {3, 1 << 20}));
}

TEST_F(CurrentState, EndsAtTheLimitOfMemory)
{
  HeadlessObject& root = AddRoot();
  HeadlessObject& mesh = AddMeshObject("mesh");
  for (Int32 id = 2000; id < 3000; ++id)
    ASSERT_TRUE(mesh.GetParameters().Set(id, 1.5));
  for (int i = 0; i < 10; ++i)
    AddInstance("instance", &root, &mesh);
  EXPECT_FALSE(MakeCopy(root, {100, 100000}));
  EXPECT_TRUE(MakeCopy(root, {100, 10000000}));
}

// Each group shows the one before twice: two to the 40th meshes.
TEST_F(CurrentState, DoublingEndsAtTheLimit)
{
  std::string outline = "g0*";
  for (int i = 1; i <= 40; ++i)
  {
    const std::string before = std::to_string(i - 1);
    outline += " g" + std::to_string(i) + "(l=g" + before + " r=g" + before + ")";
  }
  Build(outline + " root=g40");
  EXPECT_FALSE(MakeCopy(Find("root"), {20000, Int(1) << 30}));
}

TEST_F(CurrentState, DeepAndWideTreesCostNoStack)
{
  HeadlessObject& root = AddRoot();
  HeadlessObject* parent = &root;
  for (int i = 0; i < 100000; ++i)
  {
    HeadlessObject* const child = HeadlessObject::Create(kNullObjectType);
    child->InsertUnder(parent);
    parent = child;
  }
  for (int i = 0; i < 100000; ++i)
    HeadlessObject::Create(kNullObjectType)->InsertUnder(&root);
  AddInstance("instance", nullptr, &root);
  const Owner copy = MakeCopy(*Scene().GetLastObject());
  Int count = 0;
  for (const HeadlessObject* object = copy.get(); object; object = object->GetNextInTree(copy.get()))
    ++count;
  EXPECT_EQ(count, 200001);
}

TEST_F(CurrentState, NullWithoutMemoryAndNothingLeftOver)
{
  HeadlessObject& root = AddRoot();
  HeadlessObject& mesh = AddMeshObject("mesh", &root);
  AddTag(mesh, kNormalTagType);
  HeadlessObject& joint = AddObject("joint", &root, kJointObjectType);
  HeadlessWeightTag& weights = AddWeights(mesh, {&joint});
  ASSERT_TRUE(weights.SetWeight(0, 0, 1) && weights.TakeBindPose());
  joint.SetLocalMatrix(Offset({0, 1, 0}));
  AddObject("deformer", &root, kSkinDeformerType);
  AddObject("deformer", &AddObject("group", &root), kSkinDeformerType);
  auto& morphs = static_cast<HeadlessPoseMorphTag&>(AddTag(mesh, kPoseMorphTagType));
  ASSERT_TRUE(morphs.AddMorph());
  morphs.AddMorph()->SetPoints(MakeArray({{5, 5, 5}}));
  morphs.GetMorph(1)->SetStrength(1);
  AddAux(mesh);
  HeadlessObject& inner = AddInstance("an instance", &root, &mesh);
  AddAux(inner);
  AddTrack(inner, kPositionX, {{0, 1}});
  AddObject("own", &inner);
  AddInstance("outer", &root, &inner);
  AddTrack(AddInstance("nothing", &root, nullptr), kPositionX, {{0, 1}});
  const Int nodes = GetSceneDiagnostics().liveNodes;
  SweepUntilSuccess([&] { return MakeCopy(root) != nullptr; }, [&] { EXPECT_EQ(GetSceneDiagnostics().liveNodes, nodes); });
}

}  // namespace
}  // namespace q7z::test
