// Whatever is cancelled or has no memory left: the run ends with that error, and nothing is left over.

#include "plugin/module/hostconsole.h"
#include "plugin/module/hostmaterial.h"
#include "tests/export/preprocessorfixture.h"

namespace q7z::test
{
namespace
{

class PreprocessorSweep : public PreprocessorTest
{
protected:
  PreprocessorSweep()
  {
    SetTimes(4, {0, 1}, {1, 1});
    _options.bakeAnimation = true;
    _options.exportSkins = true;
    _options.useCurrentFrame = false;
    Modeling().isRecording = false;  // it takes memory
    FillScene();
  }

  /// Something for every stage.
  void FillScene()
  {
    HostPolygonObject* const cut = AddStrip("cut", 4);
    HostMaterial* const red = AddMaterial("red");
    Select(cut, "a", {{0, 0}});
    Select(cut, "b", {{1, 2}});
    Texture(cut, "a", red);
    Texture(cut, "b", red);
    Animate(cut, {kPositionParameter, kComponentX}, {{0, 0}, {1, 4}});
    AddStrip("child", 1, cut)->SetPhong(true, false, 1);
    Add("shown", nullptr, kInstanceObjectType)->SetReference(cut);
    HostObject* const joint = Add("joint", Add("root"), kJointObjectType);
    Animate(joint, {kRotationParameter, kComponentY}, {{0, 0}, {1, 1}});
    Bind(AddStrip("skin", 2), {joint});
    auto* const morphs = static_cast<HostPoseMorphTag*>(AddStrip("morphed", 1)->MakeTag(kPoseMorphTagType));
    morphs->StoreObject(morphs->AddMorph(), Document(), AddStrip("base", 1));
    morphs->StoreObject(morphs->AddMorph(), Document(), AddStrip("target", 1));
    Add("empty", Add("alsoEmpty"));
  }

  /// One run over a clone of the document, as an export makes one. @return as Run.
  template <typename Arm>
  std::string RunOnClone(Arm arm)
  {
    const SceneCounts before;
    std::string text;
    {
      const HostOwner<HostDocument> clone(Document()->Clone(0));
      GltfPreprocessor preprocessor;
      preprocessor.SetDocument(clone.get());
      arm();
      const Result<Int32> result = preprocessor.Run(_options);
      _failures = StopFailingAllocations();
      text = result.HasError() ? GetErrorClassId(result.GetError().GetClass()) : "";
    }
    EXPECT_EQ(SceneCounts(), before);
    return text;
  }

  Int _failures = 0;
};

TEST_F(PreprocessorSweep, EveryQuestionCanCancel)
{
  int cancelled = 0;
  for (int cancelAt = 1;; ++cancelAt)
  {
    CancellingDialog dialog(cancelAt);
    const std::string error = RunOnClone([] {});
    if (!dialog.WasAsked())
    {
      EXPECT_EQ(error, "");
      break;
    }
    ASSERT_EQ(error, "net.tarno.error.OperationCancelledError") << "question " << cancelAt;
    ++cancelled;
  }
  // Two passes over the one object that is split. It becomes a group with a rest and two parts, so that there are 13 objects; each
  // of five frames asks, and each object in it. The converted root has 17 below it: the instance has become a copy of five objects.
  EXPECT_EQ(cancelled, 2 + 5 * (1 + 13) + 18);
}

TEST_F(PreprocessorSweep, TheStagesShowWhatTheyDo)
{
  CancellingDialog dialog;
  EXPECT_EQ(RunOnClone([] {}), "");
  const auto resource = [](Int32 number) { return Text(HostLoadString(number)); };
  EXPECT_THAT(dialog.texts, testing::ElementsAre(resource(10003), resource(10004), resource(10005), resource(10006)));
  EXPECT_DOUBLE_EQ(dialog.lastProgress, 1);
}

class PreprocessorMemorySweep : public PreprocessorSweep, public testing::WithParamInterface<Int>
{};

TEST_P(PreprocessorMemorySweep, EndsCleanly)
{
  for (Int failAt = 1;; ++failAt)
  {
    const std::string error = RunOnClone([&] { FailAllocation(failAt, GetParam()); });
    if (!_failures)
    {
      EXPECT_EQ(error, "");
      break;
    }
    // A modeling command that has no memory is a command that failed. The host does without what it only looks things up by.
    ASSERT_THAT(error, testing::AnyOf("net.tarno.error.outofmemory", "net.tarno.error.illegalstate", ""));
    ASSERT_FALSE(HasFailure()) << "allocation " << failAt;
  }
  EXPECT_EQ(RunOnClone([] {}), "");
}

INSTANTIATE_TEST_SUITE_P(OneAndAllFollowing, PreprocessorMemorySweep, testing::Values(Int(1), Int(1) << 40),
                         [](const auto& row) { return row.param == 1 ? "One" : "AllFollowing"; });

}  // namespace
}  // namespace q7z::test
