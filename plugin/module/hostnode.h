#pragma once

// HostNode: what documents, objects, tags, tracks, materials, takes, layers and plug-in instances have in common: a type, a name,
// parameters and a container of settings.

#include <memory>

#include "framework/string.h"
#include "plugin/module/hosttables.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

class HostNodeTable
{
public:
  /// The node's own type id.
  virtual Int32 GetType(const HostNode* node) noexcept = 0;
  /// Whether the node's type is type or derives from it. 5100 is its own type alone.
  virtual Bool IsInstanceOf(const HostNode* node, Int32 type) noexcept = 0;
  virtual String GetName(const HostNode* node) noexcept = 0;
  /// Keeps a copy of the name. @return false without memory; the old name then stays.
  virtual Bool SetName(HostNode* node, const String& name) noexcept = 0;
  /// @return the document that the node is in, or null for one that is in none.
  virtual HostDocument* GetDocument(const HostNode* node) noexcept = 0;
  /// The node's settings; never null; owned by the node.
  virtual HostContainer* GetContainer(HostNode* node) noexcept = 0;
  /// Frees a node that is in no document or list, with all that hangs on it. One that is still inserted is taken out first.
  virtual void Free(HostNode* node) noexcept = 0;

protected:
  ~HostNodeTable() = default;
};

class HostParameterTable
{
public:
  /// @return false when the node has no such parameter; value is then untouched.
  virtual Bool Get(const HostNode* node, const HostDescId& id, HostValue& value, Int32 flags) noexcept = 0;
  /// Two-level ids address a component of a vector. @return false when the value's kind does not fit, or without memory.
  virtual Bool Set(HostNode* node, const HostDescId& id, const HostValue& value, Int32 flags) noexcept = 0;

protected:
  ~HostParameterTable() = default;
};

class HostNode
{
public:
  Int32 GetType() const noexcept { return g_hostTables->node->GetType(this); }
  Bool IsInstanceOf(Int32 type) const noexcept { return g_hostTables->node->IsInstanceOf(this, type); }
  String GetName() const noexcept { return g_hostTables->node->GetName(this); }
  Bool SetName(const String& name) noexcept { return g_hostTables->node->SetName(this, name); }
  HostDocument* GetDocument() const noexcept { return g_hostTables->node->GetDocument(this); }
  HostContainer* GetContainer() noexcept { return g_hostTables->node->GetContainer(this); }

  Bool GetParameter(const HostDescId& id, HostValue& value, Int32 flags = 0) const noexcept
  {
    return g_hostTables->parameter->Get(this, id, value, flags);
  }
  Bool SetParameter(const HostDescId& id, const HostValue& value, Int32 flags = 0) noexcept
  {
    return g_hostTables->parameter->Set(this, id, value, flags);
  }

  static void Free(HostNode* node) noexcept
  {
    if (node)
      g_hostTables->node->Free(node);
  }

protected:
  HostNode() noexcept = default;
  ~HostNode() = default;
};

struct HostNodeDeleter
{
  void operator()(HostNode* node) const noexcept { HostNode::Free(node); }
};

/// The owner of a node until it is handed over: HostOwner<HostObject> group(...); document->InsertObject(group.release(), ...).
template <typename T>
using HostOwner = std::unique_ptr<T, HostNodeDeleter>;

}  // namespace q7z
