#pragma once

// HostWalk: the breadth-first walk over a document's objects that every pass of a save uses, level by level; and the orders that
// follow the hierarchy from object to object. None of them recurses, whatever the depth.

#include <type_traits>

#include "framework/result.h"
#include "framework/types.h"
#include "plugin/module/hostfwd.h"

namespace q7z
{

/// What a walk calls for each object. From several threads at once when the walk is not sequential.
class HostVisitor
{
public:
  virtual Result<void> Visit(HostObject* op) noexcept = 0;

protected:
  ~HostVisitor() = default;
};

/// Objects whose children a walk leaves out.
using HostWalkFilter = Bool (*)(HostObject* op);

/// Visits the first object of the document and all its successors, then their children, and so on. The objects of one level are
/// visited in order when sequential, else in chunks of 16 by the jobs of the host; the levels always follow one another. The
/// children of an object on which filter answers true are left out. The first error ends the walk. Nothing is visited in a
/// document without objects.
Result<void> HostWalk(HostDocument* doc, HostVisitor& visit, Bool sequential, HostWalkFilter filter) noexcept;

/// A visitor made of anything that can be called with an object: WalkWith(doc, [&](HostObject* op) -> Result<void> {...}, ...).
template <typename Body>
Result<void> WalkWith(HostDocument* doc, Body&& body, Bool sequential, HostWalkFilter filter) noexcept
{
  class Visitor final : public HostVisitor
  {
  public:
    explicit Visitor(std::remove_reference_t<Body>& target) noexcept : _body(target) {}
    Result<void> Visit(HostObject* op) noexcept override { return _body(op); }

  private:
    std::remove_reference_t<Body>& _body;
  };
  Visitor visitor(body);
  return HostWalk(doc, visitor, sequential, filter);
}

/// Leaves nothing out.
inline Bool WalkAll(HostObject*) noexcept
{
  return false;
}

/// The walk with children before their parent: the first object to visit of a list that begins with `first`, and the one that
/// follows op, null behind the last. An object may be changed but not freed before its follower was asked for.
HostObject* FindFirstInPostOrder(HostObject* first) noexcept;
HostObject* FindNextInPostOrder(HostObject* op) noexcept;

/// The walk with parents before their children: what follows op in root's tree, null at its end. A null root walks on to the end
/// of the list that op's topmost parent stands in.
HostObject* FindNextInTree(HostObject* op, const HostObject* root) noexcept;

/// The objects of root's tree, root among them.
Int32 CountTree(HostObject* root) noexcept;

/// All objects of a document.
Int32 CountObjects(HostDocument* doc) noexcept;

}  // namespace q7z
