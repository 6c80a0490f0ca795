#include "plugin/import/gltfimportplan.h"

namespace q7z
{

Result<void> HierarchyPlan::Unfold(const HashMap<Int, GltfNode>& nodes, const BaseArray<Int>& nodeIndices, Int limit) noexcept
{
  _nodes = &nodes;
  _limit = limit < INT32_MAX ? limit : INT32_MAX - 1;
  Int indexEnd = 0;
  for (const auto& entry : nodes)
    indexEnd = entry.GetKey() < indexEnd ? indexEnd : entry.GetKey() + 1;
  RETURN_IF_ERROR(_onWay.Resize(indexEnd));

  // The top stands open like a visit of its own.
  RETURN_IF_ERROR(_open.Append({-1, -1, &nodeIndices, nodeIndices.GetCount()}));
  while (_open.IsPopulated() && !_overLimit)
  {
    OpenVisit& parent = _open.GetLast();
    if (parent.remaining == 0)
    {
      if (parent.nodeIndex >= 0)
        _onWay[parent.nodeIndex] = false;
      _open.Truncate(_open.GetCount() - 1);
      continue;
    }
    // Insertion puts an object first under its parent, so working from the last to the first keeps the file's order.
    --parent.remaining;
    RETURN_IF_ERROR(Visit((*parent.children)[parent.remaining], parent.visit));
  }
  return {};
}

Result<void> HierarchyPlan::Visit(Int nodeIndex, Int32 parent) noexcept
{
  if (_visits.GetCount() >= _limit)
  {
    _overLimit = true;
    return {};
  }
  const GltfNode* node = _nodes->Find(nodeIndex);
  if (node && _onWay[nodeIndex])
  {
    _hasCycle = true;
    node = nullptr;
  }
  const Int32 visit = static_cast<Int32>(_visits.GetCount());
  RETURN_IF_ERROR(_visits.Append({node, nodeIndex, parent}));
  RETURN_IF_ERROR(LinkIntoLevel(visit, _open.GetCount() - 1));
  if (!node || node->children.IsEmpty())
    return {};
  _onWay[nodeIndex] = true;
  return _open.Append({visit, nodeIndex, &node->children, node->children.GetCount()});
}

// The visits of one level are met in the same order depth-first as breadth-first.
Result<void> HierarchyPlan::LinkIntoLevel(Int32 visit, Int level) noexcept
{
  if (level < _levelLast.GetCount())
  {
    _visits[_levelLast[level]].next = visit;
    _levelLast[level] = visit;
    return {};
  }
  RETURN_IF_ERROR(_levelFirst.Append(visit));
  return _levelLast.Append(visit);
}

Int32 HierarchyPlan::GetFirst() noexcept
{
  _currentLevel = 0;
  return _levelFirst.IsEmpty() ? -1 : _levelFirst[0];
}

Int32 HierarchyPlan::GetNext(Int32 visit) noexcept
{
  if (_visits[visit].next >= 0)
    return _visits[visit].next;
  ++_currentLevel;
  return _currentLevel < _levelFirst.GetCount() ? _levelFirst[_currentLevel] : -1;
}

}  // namespace q7z
