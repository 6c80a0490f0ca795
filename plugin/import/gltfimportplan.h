#pragma once

// HierarchyPlan: the order in which the nodes of one hierarchy are built. Nodes refer to their children by index, so a file can
// share nodes, and can make a node its own ancestor; the plan unfolds the references into a tree before anything is built. It
// works on records alone and lives for one hierarchy.

#include "framework/basearray.h"
#include "framework/hashmap.h"
#include "plugin/document/gltfnode.h"
#include "plugin/module/hostfwd.h"

namespace q7z
{

/// One visit of a node. A node that is reachable twice has two.
struct PlannedNode
{
  const GltfNode* node = nullptr;  ///< null when it is missing or its own ancestor
  Int nodeIndex = -1;
  Int32 parent = -1;             ///< into the plan; -1 for the top
  Int32 next = -1;               ///< into the plan: what is visited next on the same level; -1 for none
  HostObject* object = nullptr;  ///< set by the builder; not owned
};

class HierarchyPlan
{
public:
  /// Unfolds the trees under nodeIndices. A growth failure is an error; running over the limit is not.
  /// @param limit  how many visits the plan may hold.
  Result<void> Unfold(const HashMap<Int, GltfNode>& nodes, const BaseArray<Int>& nodeIndices, Int limit) noexcept;

  /// Whether the trees hold more visits than the limit; the plan is of no use then.
  Bool IsOverLimit() const noexcept { return _overLimit; }

  /// Whether a node was met below itself.
  Bool HasCycle() const noexcept { return _hasCycle; }

  Int GetCount() const noexcept { return _visits.GetCount(); }
  PlannedNode& operator[](Int visit) noexcept { return _visits[visit]; }

  // The walk: breadth-first, the visits below one node from its last child to its first. -1 at the end.
  Int32 GetFirst() noexcept;
  Int32 GetNext(Int32 visit) noexcept;

private:
  // A visit whose children are being unfolded.
  struct OpenVisit
  {
    Int32 visit;                     // into _visits; -1 for the top
    Int nodeIndex;                   // -1 for the top
    const BaseArray<Int>* children;  // not owned
    Int remaining;                   // how many of them, from the first on, are still to be visited
  };

  Result<void> Visit(Int nodeIndex, Int32 parent) noexcept;
  Result<void> LinkIntoLevel(Int32 visit, Int level) noexcept;

  const HashMap<Int, GltfNode>* _nodes = nullptr;  // not owned
  Int _limit = 0;
  BaseArray<PlannedNode> _visits;  // depth-first
  BaseArray<Int32> _levelFirst;    // into _visits, by level
  BaseArray<Int32> _levelLast;
  BaseArray<OpenVisit> _open;  // the way from the top to the visit at hand
  BaseArray<Bool> _onWay;      // by node index: whether the node is among _open
  Int _currentLevel = 0;       // of the walk
  Bool _overLimit = false;
  Bool _hasCycle = false;
};

}  // namespace q7z
