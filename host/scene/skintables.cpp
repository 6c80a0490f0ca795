#include "host/scene/headlessobject.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlessweighttag.h"
#include "host/scene/tablefamilies.h"

namespace q7z
{

namespace
{

class SceneWeightTable final : public HostWeightTable
{
public:
  Int32 AddJoint(HostWeightTag* tag, HostObject* joint) noexcept override { return ToHeadless(tag)->AddJoint(ToHeadless(joint)); }
  Int32 GetJointCount(const HostWeightTag* tag) noexcept override { return ToHeadless(tag)->GetJointCount(); }
  HostObject* GetJoint(const HostWeightTag* tag, Int32 jointIndex, HostDocument*) noexcept override
  {
    return ToHost(ToHeadless(tag)->GetJoint(jointIndex));
  }
  Float GetWeight(const HostWeightTag* tag, Int32 jointIndex, Int32 pointIndex) noexcept override
  {
    return ToHeadless(tag)->GetWeight(jointIndex, pointIndex);
  }
  void GetWeights(const HostWeightTag* tag, Int32 jointIndex, Int32 firstPoint, Int32 count, Float* weights) noexcept override
  {
    ToHeadless(tag)->CopyWeights(jointIndex, firstPoint, count, weights);
  }
  Bool SetWeight(HostWeightTag* tag, Int32 jointIndex, Int32 pointIndex, Float weight) noexcept override
  {
    return ToHeadless(tag)->SetWeight(jointIndex, pointIndex, weight);
  }
  Bool SetWeights(HostWeightTag* tag, const HostPointWeight* weights, Int32 count) noexcept override
  {
    return ToHeadless(tag)->SetWeights(weights, count);
  }
  Bool SetBindPose(HostWeightTag* tag, HostDocument*) noexcept override { return ToHeadless(tag)->TakeBindPose(); }
};

class ScenePoseMorphTable final : public HostPoseMorphTable
{
public:
  Int32 GetMorphCount(const HostPoseMorphTag* tag) noexcept override { return ToHeadless(tag)->GetMorphCount(); }
  HostMorph* GetMorph(const HostPoseMorphTag* tag, Int32 index) noexcept override
  {
    return ToHost(ToHeadless(tag)->GetMorph(index));
  }
  HostMorph* AddMorph(HostPoseMorphTag* tag) noexcept override { return ToHost(ToHeadless(tag)->AddMorph()); }
  String GetMorphName(const HostMorph* morph) noexcept override { return ToHeadless(morph)->GetName(); }
  Bool SetMorphName(HostMorph* morph, const String& name) noexcept override { return ToHeadless(morph)->SetName(name); }
  Bool StoreObject(HostPoseMorphTag* tag, HostMorph* morph, HostDocument*, HostObject* object) noexcept override
  {
    return ToHeadless(tag)->StoreObject(ToHeadless(morph), ToHeadless(object));
  }
  HostObject* GetObject(const HostMorph* morph) noexcept override { return ToHost(ToHeadless(morph)->GetObject()); }
  HostPointNode* GetPointNode(const HostMorph* morph) noexcept override
  {
    return const_cast<HostPointNode*>(ToHost(ToHeadless(morph)->GetPointNode()));
  }
  Int32 GetPointCount(const HostPointNode* node) noexcept override
  {
    return static_cast<Int32>(ToHeadless(node)->GetPoints().GetCount());
  }
  const Vector* GetPoints(const HostPointNode* node) noexcept override { return ToHeadless(node)->GetPoints().GetR(); }
  Float GetStrength(const HostMorph* morph) noexcept override { return ToHeadless(morph)->GetStrength(); }
  HostDescId GetStrengthId(const HostPoseMorphTag*, Int32 index) noexcept override
  {
    return HeadlessPoseMorphTag::GetStrengthId(index);
  }
  void EnterEdit(HostPoseMorphTag* tag, HostDocument*) noexcept override { ToHeadless(tag)->EnterEdit(); }
  Bool ExitEdit(HostPoseMorphTag* tag, HostDocument*, Bool) noexcept override { return ToHeadless(tag)->ExitEdit(); }
  /// Shapes are worked out when they are asked for, so there is nothing to bring up to date.
  void Update(HostPoseMorphTag*, HostDocument*) noexcept override {}
};

}  // namespace

void FillSkinTables(HostTables& tables) noexcept
{
  static SceneWeightTable weight;
  static ScenePoseMorphTable poseMorph;
  tables.weight = &weight;
  tables.poseMorph = &poseMorph;
}

}  // namespace q7z
