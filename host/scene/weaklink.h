#pragma once

// WeakLink: a link from one part of the scene to a node, which reads as null once the node is freed. A node gets its anchor with
// the first link to it; nodes that nothing links to pay one pointer.

#include <atomic>
#include <utility>

#include "framework/types.h"

namespace q7z
{

class HeadlessNamedNode;

/// Counted by the node and by each link. The node clears it when it goes.
struct NodeAnchor
{
  std::atomic<Int> references{1};
  std::atomic<HeadlessNamedNode*> node{nullptr};

  void AddReference() noexcept { references.fetch_add(1, std::memory_order_relaxed); }
  void Release() noexcept
  {
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1)
      delete this;
  }
};

class WeakLink
{
public:
  WeakLink() noexcept = default;
  WeakLink(const WeakLink& other) noexcept : _anchor(other._anchor)
  {
    if (_anchor)
      _anchor->AddReference();
  }
  WeakLink(WeakLink&& other) noexcept : _anchor(std::exchange(other._anchor, nullptr)) {}
  WeakLink& operator=(WeakLink other) noexcept
  {
    std::swap(_anchor, other._anchor);
    return *this;
  }
  ~WeakLink() { Clear(); }

  /// Leads to node from now on; null clears. @return false without memory: the link is as it was then.
  [[nodiscard]] Bool Set(HeadlessNamedNode* node) noexcept;
  void Clear() noexcept
  {
    if (_anchor)
      _anchor->Release();
    _anchor = nullptr;
  }
  HeadlessNamedNode* Get() const noexcept { return _anchor ? _anchor->node.load(std::memory_order_acquire) : nullptr; }

  /// What the link leads to as a class of its own; the caller knows the kind.
  template <typename T>
  T* GetAs() const noexcept
  {
    return static_cast<T*>(Get());
  }

private:
  NodeAnchor* _anchor = nullptr;
};

}  // namespace q7z
