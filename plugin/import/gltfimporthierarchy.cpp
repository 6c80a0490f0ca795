// The walk over the nodes of one scene: what is built under what, and what becomes of a node that fails.

#include "framework/check.h"
#include "plugin/import/gltfimporter.h"
#include "plugin/module/diagnostics.h"

namespace q7z
{

namespace
{

constexpr Int32 kNodeFailedText = 10015;

}  // namespace

Result<void> SetObjectName(HostObject* object, const String& name, const String& pattern, Int index) noexcept
{
  if (name.IsPopulated())
    return object->SetName(name) ? Result<void>() : Error::OutOfMemory();
  ASSIGN_OR_RETURN(const String indexText, String::FromInt(index));
  ASSIGN_OR_RETURN(const String made, String::Format(pattern, {indexText}));
  return object->SetName(made) ? Result<void>() : Error::OutOfMemory();
}

Result<void> GltfImporter::LoadHierarchy(const BaseArray<Int>& nodeIndices, HostObject* parent) noexcept
{
  CHECK_ARGUMENT(parent);
  if (nodeIndices.IsEmpty())
    return {};
  RETURN_IF_ERROR(MakeJoints());

  HierarchyPlan plan;
  const auto addNodeIndicesToImport = [&](const BaseArray<Int>& indices, HostObject*)
  { return plan.Unfold(_gltfData.nodes, indices, _remainingObjects); };
  CHECK_STATE(addNodeIndicesToImport(nodeIndices, parent));
  if (plan.IsOverLimit())
    return MAKE_ERROR(ErrorClass::kOutOfMemory, "The file refers to its nodes too often."_s);
  RETURN_IF_ERROR(TakeObjects(plan.GetCount()));
  _hasCycle = _hasCycle || plan.HasCycle();

  for (Int32 visit = plan.GetFirst(); visit >= 0; visit = plan.GetNext(visit))
  {
    HostObject* const above = plan[visit].parent < 0 ? parent : plan[plan[visit].parent].object;
    if (above)  // nothing is built below a node that failed
      RETURN_IF_ERROR(ImportNode(plan[visit], above));
  }
  return BindSkins();
}

Result<void> GltfImporter::ImportNode(PlannedNode& visit, HostObject* parent) noexcept
{
  ASSIGN_OR_RETURN(const Bool isOwnAncestor, IsOwnAncestor(visit.nodeIndex, parent));
  const Result<HostObject*> built = BuildNode(isOwnAncestor ? nullptr : visit.node, visit.nodeIndex, parent);
  if (!built.HasError())
  {
    visit.object = built.GetValue();
    RETURN_IF_ERROR(_nodesToObjects.Set(visit.nodeIndex, visit.object));
  }
  else
  {
    RETURN_IF_ERROR(ReplaceFailedNode(visit.nodeIndex, built.GetError()));
  }
  ++_visitedNodes;
  const Int nodeCount = _gltfData.nodes.GetCount();
  return _hierarchyProgress.Report(nodeCount ? static_cast<Float>(_visitedNodes) / static_cast<Float>(nodeCount) : 1.0);
}

// The stand-in is in the map of nodes like any other object, but in no hierarchy.
Result<void> GltfImporter::ReplaceFailedNode(Int nodeIndex, const Error& error) noexcept
{
  ASSIGN_OR_RETURN(const String indexText, String::FromInt(nodeIndex));
  const Result<String> what = String::Format("Node @ is left out"_s, {indexText});
  PrintError(what.HasError() ? "A node is left out"_s : what.GetValue(), error);
  _warnings.AddResource(HostMessageClass::kWarning, kNodeFailedText, indexText);

  HostOwner<HostObject> standIn(HostAllocObject(kNullObjectType));
  if (!standIn)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(SetObjectName(standIn.get(), String(), "Node_@"_s, nodeIndex));
  HostObject* const object = standIn.get();
  RETURN_IF_ERROR(_detached.Append(std::move(standIn)));
  RETURN_IF_ERROR(_nodesToObjects.Set(nodeIndex, object));
  return {};
}

// Takes from what the nodes of this file may become.
Result<void> GltfImporter::TakeObjects(Int count) noexcept
{
  if (count > _remainingObjects)
    return MAKE_ERROR(ErrorClass::kOutOfMemory, "The file would become too many objects."_s);
  _remainingObjects -= count;
  return {};
}

// Global matrices cost a step for each ancestor, so a deep file could make a load arbitrarily slow.
Result<void> GltfImporter::TakeWayUp(const HostObject* object) noexcept
{
  for (; object; object = object->GetUp())
  {
    if (--_remainingSteps < 0)
      return MAKE_ERROR(ErrorClass::kOutOfMemory, "The hierarchy is too deep for the joints of the file."_s);
  }
  return {};
}

// A joint is one object for all visits of its node, so in a file whose nodes run in circles it may come under an object that
// stands below itself, although no single way down the file shows it twice.
Result<Bool> GltfImporter::IsOwnAncestor(Int nodeIndex, const HostObject* parent) noexcept
{
  HostObject* const* const joint = _hasCycle ? _jointsToObjects.Find(nodeIndex) : nullptr;
  if (!joint)
    return false;
  RETURN_IF_ERROR(TakeWayUp(parent));
  for (; parent; parent = parent->GetUp())
  {
    if (parent == *joint)
      return true;
  }
  return false;
}

}  // namespace q7z
