// Joints and skins: which objects joints replace, what is bound, and what is left outside the hierarchy.

#include "plugin/module/configvariables.h"
#include "tests/import/importfixture.h"

namespace q7z::test
{
namespace
{

struct JointCase
{
  const char* name;
  const char* members;
  const char* outline;
  Bool splitMeshes = false;
  std::vector<int> failedNodes = {};
};

void PrintTo(const JointCase& row, std::ostream* stream)
{
  *stream << row.members;
}

const JointCase kJointCases[] = {
  {"JointsTakePlaceAndName",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0,2]}],
      "nodes":[{"name":"J","children":[1,2]},{"name":"A"},{"children":[3]},{"name":"B"}])",
   "Scene 0[J^[A, Node_2^[B]]]"},
  {"SkinnedMeshGetsADeformer",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])",
   "Scene 0[A#[~], J^]"},
  {"SkinWithoutRecordIsNotBound",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":9},{"name":"J"}])", "Scene 0[A#]"},
  {"EveryHierarchyAddsADeformer",
   R"("scenes":[{"nodes":[0,1]},{"nodes":[2]},{}],"skins":[{"joints":[1]}],
      "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"},{"name":"B"}])",
   "Scene 2!, Scene 1![B], Scene 0[A#[~, ~], J^]"},
  {"GroupHasNothingToDeform",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","skin":0},{"name":"J"}])", "Scene 0[A, J^]"},
  {"UnreachableJointLeavesNothing",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[1,1,7,-3]}],"nodes":[{"name":"A"},{"name":"J"}])", "Scene 0[A]"},

  // A mesh on a joint is taken out of the hierarchy; what shows it shows nothing once the load is over.
  {"MeshOnAJointIsLeftOut",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0},{"name":"J","mesh":0}])",
   "Scene 0[A=, J^]"},
  {"UnnamedMeshNamesTheJoint", R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"mesh":0}])", "Scene 0[Mesh^]"},
  {"SkinnedMeshOnAJointIsLeftOut",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":0,"skin":0}])", "Scene 0[J^]"},
  {"InstanceOnAJointIsLeftOut",
   R"("scenes":[{"nodes":[1]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":0},{"name":"A","mesh":0,"children":[0]}])",
   "Scene 0[A#[J^]]"},
  // Of a group of primitives the first child alone moves to the joint; a later node with the mesh builds it anew.
  {"FirstPrimitiveMovesToTheJoint",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":1},{"name":"J","mesh":1}])",
   "Scene 0[A[Prim 1#, Prim 0#], J^[Prim 1#]]", true},

  {"JointVisitedTwiceStandsWhereItWasLast",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[2]}],
      "nodes":[{"name":"A","children":[2]},{"name":"B","children":[2]},{"name":"J","children":[3]},{"name":"C"}])",
   "Scene 0[A[J^[C, C]], B]"},
  {"JointInTwoScenesStandsInTheLast", R"("scenes":[{"nodes":[0]},{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J"}])",
   "Scene 1![J^], Scene 0"},
  // The group of the first visit is gone, so the second builds one of its own, and of that, too, one child moves.
  {"SecondVisitMovesOneMoreChild",
   R"("scenes":[{"nodes":[0]},{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":1}])",
   "Scene 1![J^[Prim 1#, Prim 1#]], Scene 0", true},
  // Both nodes stand at the top and below each other; a joint is one object, so it may not come below itself that way either.
  {"JointsInARing",
   R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[0,1]}],
      "nodes":[{"name":"J","children":[1]},{"name":"K","children":[0]}])",
   "Scene 0[K^[J^]]",
   false,
   {1, 1}},
  {"BrokenMeshLeavesTheJointOut",
   R"("scenes":[{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J","mesh":2,"children":[1]},{"name":"A"}])",
   "Scene 0",
   false,
   {0}},
};

class ImportJoints : public ImportTest, public testing::WithParamInterface<JointCase>
{};

TEST_P(ImportJoints, StandInForTheirNodes)
{
  const JointCase& row = GetParam();
  Host().Set(1018, row.splitMeshes);
  EXPECT_EQ(Load(row.members, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), row.outline);
  EXPECT_EQ(FailedNodes(), row.failedNodes);
}

INSTANTIATE_TEST_SUITE_P(Rows, ImportJoints, testing::ValuesIn(kJointCases), RowName());

const char* const kSkinnedTriangle =
  R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J"}])";

using ImportSkinGate = ImportTest;

TEST_F(ImportSkinGate, TransformAnimationOffLeavesSkinsOut)
{
  Host().Set(1014, false);
  EXPECT_EQ(Load(kSkinnedTriangle, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[A#, J]");
}

TEST_F(ImportSkinGate, ConfigurationVariableLeavesSkinsOut)
{
  g_gltfImporterNoSkin = true;
  EXPECT_EQ(Load(kSkinnedTriangle, SomeMeshes()), "none");
  g_gltfImporterNoSkin = false;
  EXPECT_EQ(Outline(), "Scene 0[A#, J]");
}

TEST_F(ImportSkinGate, JointsWithoutGeometryStillStand)
{
  Host().Set(1004, false);
  EXPECT_EQ(Load(kSkinnedTriangle, SomeMeshes()), "none");
  EXPECT_EQ(Outline(), "Scene 0[A, J^]");
}

class ImportSharedSkin : public ImportTest
{
protected:
  int CountLines(const std::string& text)
  {
    const auto& lines = Host().Diagnostics();
    return static_cast<int>(std::ranges::count_if(lines,
                                                  [&](const std::string& line) { return line.find(text) != std::string::npos; }));
  }
};

TEST_F(ImportSharedSkin, LastPolygonObjectWins)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1,2]}],"skins":[{"joints":[2]}],
                    "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"B","mesh":3,"skin":0},{"name":"J"}])",
                 SomeMeshes()),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A#[~], B#, J^]");
  EXPECT_EQ(CountLines("More than one node addresses same skin #0!"), 1);
}

TEST_F(ImportSharedSkin, InstanceHasNoPolygonObject)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1,2]}],"skins":[{"joints":[2]}],
                    "nodes":[{"name":"A","mesh":0,"skin":0},{"name":"B","mesh":0,"skin":0},{"name":"J"}])",
                 SomeMeshes()),
            "none");
  EXPECT_EQ(Outline(), "Scene 0[A=B, B#[~], J^]");
  EXPECT_EQ(CountLines("More than one node addresses same skin #0!"), 1);
}

TEST_F(ImportSharedSkin, OneNodeSaysNothing)
{
  EXPECT_EQ(Load(kSkinnedTriangle, SomeMeshes()), "none");
  EXPECT_EQ(CountLines("More than one node"), 0);
}

// Refuses the mark of joints until told otherwise.
class RefusingParameters final : public HostParameterTable
{
public:
  explicit RefusingParameters(HostParameterTable* base) noexcept : _base(base) {}
  Int refusals = 0;  // how many are left
  Bool Get(const HostNode* node, const HostDescId& id, HostValue& value, Int32 flags) noexcept override
  {
    return _base->Get(node, id, value, flags);
  }
  Bool Set(HostNode* node, const HostDescId& id, const HostValue& value, Int32 flags) noexcept override
  {
    if (node->GetType() == kJointObjectType && id == HostDescId(929) && refusals-- > 0)
      return false;
    return _base->Set(node, id, value, flags);
  }

private:
  HostParameterTable* _base;
};

TEST_F(ImportSharedSkin, JointThatFailedServesTheNextVisit)
{
  RefusingParameters parameters(Host().Host().GetTables().parameter);
  parameters.refusals = 1;
  Host().Host().GetTables().parameter = &parameters;
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1]},{"nodes":[0]}],"skins":[{"joints":[0]}],"nodes":[{"name":"J"},{"name":"A"}])"),
            "none");
  EXPECT_EQ(Outline(), "Scene 1![J^], Scene 0[A]");
  EXPECT_EQ(FailedNodes(), std::vector<int>{0});
}

// The meshes here have no weights, so the tag comes from a table that puts one on every polygon object; what it is told shows what
// the joints looked like at that moment.
class WeightedObjects final : public HostObjectTable
{
public:
  explicit WeightedObjects(HostObjectTable* base) noexcept : _base(base) {}
  HostObject* Alloc(Int32 type) noexcept override { return _base->Alloc(type); }
  HostPolygonObject* AllocPolygonObject(Int32 pointCount, Int32 polygonCount) noexcept override
  {
    HostPolygonObject* const op = _base->AllocPolygonObject(pointCount, polygonCount);
    op->MakeTag(kWeightTagType);
    return op;
  }
  HostObject* Clone(const HostObject* object, HostAliasTrans* trans) noexcept override { return _base->Clone(object, trans); }

private:
  HostObjectTable* _base;
};

class RecordingWeights final : public HostWeightTable
{
public:
  RecordingWeights(HostWeightTable* base, HostDocument* document) noexcept : _base(base), _document(document) {}
  Int32 AddJoint(HostWeightTag* tag, HostObject* joint) noexcept override { return _base->AddJoint(tag, joint); }
  Int32 GetJointCount(const HostWeightTag* tag) noexcept override { return _base->GetJointCount(tag); }
  HostObject* GetJoint(const HostWeightTag* tag, Int32 joint, HostDocument* document) noexcept override
  {
    return _base->GetJoint(tag, joint, document);
  }
  Float GetWeight(const HostWeightTag* tag, Int32 joint, Int32 point) noexcept override
  {
    return _base->GetWeight(tag, joint, point);
  }
  Bool SetWeight(HostWeightTag* tag, Int32 joint, Int32 point, Float weight) noexcept override
  {
    return _base->SetWeight(tag, joint, point, weight);
  }
  Bool SetBindPose(HostWeightTag* tag, HostDocument* document) noexcept override
  {
    EXPECT_EQ(document, _document);
    for (HostObject* scene = document->GetFirstObject(); scene; scene = scene->GetNext())
      Collect(scene);
    return !fails && _base->SetBindPose(tag, document);
  }

  Bool fails = false;
  std::vector<std::pair<std::string, HostMatrix>> poses;  // global matrices of the joints at each bind pose

private:
  void Collect(HostObject* parent)
  {
    for (HostObject* op = parent->GetDown(); op; op = op->GetNext())
    {
      if (op->GetType() == kJointObjectType)
        poses.emplace_back(std::string(op->GetName().GetView()), op->GetGlobalMatrix());
      Collect(op);
    }
  }
  HostWeightTable* _base;
  HostDocument* _document;
};

class ImportBinding : public ImportTest
{
protected:
  ImportBinding() : _objects(Host().Host().GetTables().object), _weights(Host().Host().GetTables().weight, Host().Document())
  {
    Host().Set(1002, HostUnitScale{1.0, 3});  // lengths stay
    Host().Host().GetTables().object = &_objects;
    Host().Host().GetTables().weight = &_weights;
  }

  // A at (1, 0, 0), turned by a quarter about Z, wears the skin of J at (5, 5, 5) and its child K at (0, 1, 0).
  std::string LoadSkin(const std::vector<float>& inverseBindMatrices)
  {
    GltfJson file = SomeMeshes();
    const int matrices = file.Floats(inverseBindMatrices, "MAT4");
    return Load(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0,"skin":0,"translation":[1,0,0],
                   "rotation":[0,0,0.7071067811865476,0.7071067811865476]},{"name":"J","translation":[5,5,5],"children":[2]},{"name":"K","translation":[0,1,0]}],
                   "skins":[{"joints":[1,2],"inverseBindMatrices":)" +
                  std::to_string(matrices) + "}]",
                file);
  }

  static void ExpectNear(const Vector& actual, const Vector& expected)
  {
    EXPECT_LT((actual - expected).GetLength(), 1e-12) << actual.x << " " << actual.y << " " << actual.z;
  }

  HostObject* Joint() { return Host().Document()->GetFirstObject()->GetDown()->GetNext(); }

  WeightedObjects _objects;
  RecordingWeights _weights;
};

// Column-major, translations by (0, -2, -1) and (0, -3, 0).
const std::vector<float> kTwoMatrices = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -2, -1, 1,
                                         1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -3, 0,  1};

TEST_F(ImportBinding, JointsAreBoundWhereTheirMatricesPutThem)
{
  EXPECT_EQ(LoadSkin(kTwoMatrices), "none");
  ASSERT_EQ(_weights.poses.size(), 2u);
  EXPECT_EQ(_weights.poses[0].first, "J");
  // Z is mirrored and the matrices are inverted: (0, 2, -1) and (0, 3, 0) as A sees them.
  ExpectNear(_weights.poses[0].second.offset, {-1, 0, -1});
  ExpectNear(_weights.poses[0].second.axisX, {0, 1, 0});
  EXPECT_EQ(_weights.poses[1].first, "K");
  ExpectNear(_weights.poses[1].second.offset, {-2, 0, 0});
}

TEST_F(ImportBinding, JointsGetTheirOwnPlacesBack)
{
  EXPECT_EQ(LoadSkin(kTwoMatrices), "none");
  EXPECT_EQ(Joint()->GetLocalMatrix().offset, (Vector{5, 5, -5}));
  EXPECT_EQ(Joint()->GetDown()->GetLocalMatrix().offset, (Vector{0, 1, 0}));
}

TEST_F(ImportBinding, WithoutMatricesTheNodesOwnPlacesAreBound)
{
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1]}],"skins":[{"joints":[1]}],
                    "nodes":[{"mesh":0,"skin":0},{"name":"J","translation":[5,5,5]}])",
                 SomeMeshes()),
            "none");
  ASSERT_EQ(_weights.poses.size(), 1u);
  EXPECT_EQ(_weights.poses[0].second.offset, (Vector{5, 5, -5}));
}

TEST_F(ImportBinding, JointListedTwiceComesBack)
{
  GltfJson file = SomeMeshes();
  const int matrices = file.Floats(kTwoMatrices, "MAT4");
  EXPECT_EQ(Load(R"("scenes":[{"nodes":[0,1]}],"nodes":[{"name":"A","mesh":0,"skin":0},{"name":"J","translation":[5,5,5]}],
                    "skins":[{"joints":[1,1],"inverseBindMatrices":)" +
                   std::to_string(matrices) + "}]",
                 file),
            "none");
  ASSERT_EQ(_weights.poses.size(), 1u);
  EXPECT_EQ(_weights.poses[0].second.offset, (Vector{0, 3, 0}));  // the later position wins
  EXPECT_EQ(Joint()->GetLocalMatrix().offset, (Vector{5, 5, -5}));
}

TEST_F(ImportBinding, TooFewMatricesEndTheLoad)
{
  EXPECT_EQ(LoadSkin(std::vector<float>(kTwoMatrices.begin(), kTwoMatrices.begin() + 16)), "unknown_error");
  EXPECT_EQ(Outline(), "");
}

TEST_F(ImportBinding, FailedBindPoseEndsTheLoad)
{
  _weights.fails = true;
  EXPECT_EQ(LoadSkin(kTwoMatrices), "unknown_error");
  EXPECT_EQ(Outline(), "");
}

}  // namespace
}  // namespace q7z::test
