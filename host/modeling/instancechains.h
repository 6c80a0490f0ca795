#pragma once

// InstanceChains: what instances show in the end. An instance may show an instance, and so on; each chain is followed once, however
// many instances share parts of it. Holds while the scene stays as it is.

#include "framework/hashmap.h"
#include "host/scene/headlessobject.h"

namespace q7z
{

struct ShownObject
{
  /// At the end of the chain, no instance itself; null when the chain ends nowhere or runs in a circle.
  const HeadlessObject* object = nullptr;
  /// The first further instance of the chain that has children, whose own record tells the next one; null for none.
  const HeadlessObject* nextWithChildren = nullptr;
};

class InstanceChains
{
public:
  /// @return false without memory.
  Bool Follow(const HeadlessObject& instance, ShownObject& shown) noexcept;

private:
  struct Link
  {
    ShownObject shown;
    Bool isOpen = false;    // the chain is being followed
    Bool isCircle = false;  // it leads into a circle
  };

  HashMap<const HeadlessObject*, Link> _links;
  BaseArray<const HeadlessObject*> _path;  // of one call
};

}  // namespace q7z
