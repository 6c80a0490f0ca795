#pragma once

// Documents, layers, takes: what a load fills and a save reads.

#include "plugin/module/hostcontainer.h"
#include "plugin/module/hostobject.h"
#include "plugin/module/hosttrack.h"

namespace q7z
{

class HostDocumentTable
{
public:
  /// A deep copy with links kept inside. The caller owns it and frees it with HostNode::Free. Null without memory.
  virtual HostDocument* Clone(const HostDocument* document, Int32 flags) noexcept = 0;
  /// Under parent, or at top level when parent is null; behind predecessor, or first when that is null. The document owns the
  /// object then.
  virtual void InsertObject(HostDocument* document, HostObject* object, HostObject* parent, HostObject* predecessor) noexcept = 0;
  /// At the end of the material list; the document owns the material then.
  virtual void InsertMaterial(HostDocument* document, HostMaterial* material) noexcept = 0;
  virtual HostObject* GetFirstObject(const HostDocument* document) noexcept = 0;
  /// Sets the time and evaluates animation and expressions at it.
  virtual void SetTime(HostDocument* document, const HostTime& time) noexcept = 0;
  virtual HostTime GetTime(const HostDocument* document) noexcept = 0;
  /// Evaluates them once more at the document's time, for what was changed since.
  virtual void ExecutePasses(HostDocument* document) noexcept = 0;
  /// The scene hook of an id, or null. A message is sent to it with data for it to fill.
  virtual HostNode* FindSceneHook(const HostDocument* document, Int32 id) noexcept = 0;
  virtual Bool SendMessage(HostNode* node, Int32 message, void* data) noexcept = 0;
  /// The container with settings such as 2117, never null; and that of the active render data, or null.
  virtual HostContainer* GetSettings(HostDocument* document) noexcept = 0;
  virtual HostContainer* GetActiveRenderData(HostDocument* document) noexcept = 0;
  /// The id of the active material node space.
  virtual String GetActiveNodeSpace() noexcept = 0;
  virtual HostDocument* GetActiveDocument() noexcept = 0;

protected:
  ~HostDocumentTable() = default;
};

class HostDocument : public HostNode
{
public:
  HostDocument* Clone(Int32 flags) const noexcept { return g_hostTables->document->Clone(this, flags); }
  void InsertObject(HostObject* object, HostObject* parent, HostObject* predecessor) noexcept
  {
    g_hostTables->document->InsertObject(this, object, parent, predecessor);
  }
  void InsertMaterial(HostMaterial* material) noexcept { g_hostTables->document->InsertMaterial(this, material); }
  HostObject* GetFirstObject() const noexcept { return g_hostTables->document->GetFirstObject(this); }
  void SetTime(const HostTime& time) noexcept { g_hostTables->document->SetTime(this, time); }
  HostTime GetTime() const noexcept { return g_hostTables->document->GetTime(this); }
  void ExecutePasses() noexcept { g_hostTables->document->ExecutePasses(this); }
  HostContainer* GetSettings() noexcept { return g_hostTables->document->GetSettings(this); }
  HostContainer* GetActiveRenderData() noexcept { return g_hostTables->document->GetActiveRenderData(this); }
  inline HostLayer* GetLayerRoot() noexcept;
  inline HostTakeData* GetTakeData() noexcept;

protected:
  HostDocument() noexcept = default;
  ~HostDocument() = default;
};

inline void HostInsertObject(HostDocument* document, HostObject* object, HostObject* parent, HostObject* predecessor) noexcept
{
  document->InsertObject(object, parent, predecessor);
}
inline String HostGetActiveNodeSpace() noexcept { return g_hostTables->document->GetActiveNodeSpace(); }

class HostLayerTable
{
public:
  /// The root of the document's layers, or null. It is no layer itself.
  virtual HostLayer* GetRoot(HostDocument* document) noexcept = 0;
  /// A new layer under the root, at the end. Null without memory. Owned by the document.
  virtual HostLayer* Add(HostLayer* root) noexcept = 0;
  virtual Bool SetOnObject(HostObject* object, HostLayer* layer) noexcept = 0;

protected:
  ~HostLayerTable() = default;
};

class HostLayer : public HostNode
{
public:
  HostLayer* Add() noexcept { return g_hostTables->layer->Add(this); }

protected:
  HostLayer() noexcept = default;
  ~HostLayer() = default;
};

inline HostLayer* HostDocument::GetLayerRoot() noexcept { return g_hostTables->layer->GetRoot(this); }
inline Bool HostObject::SetLayer(HostLayer* layer) noexcept { return g_hostTables->layer->SetOnObject(this, layer); }

class HostTakeTable
{
public:
  virtual HostTakeData* GetTakeData(HostDocument* document) noexcept = 0;
  virtual HostTake* GetMainTake(HostTakeData* takeData) noexcept = 0;
  /// A new take at the end of the list. Null without memory.
  virtual HostTake* AddTake(HostTakeData* takeData, const String& name) noexcept = 0;
  virtual void SetCurrentTake(HostTakeData* takeData, HostTake* take) noexcept = 0;
  /// The take's override of the node's parameter, made with value when there is none. Null for the main take or without memory.
  virtual HostOverride* FindOrAddOverride(HostTake* take, HostTakeData* takeData, HostNode* node, const HostDescId& id,
                                          const HostValue& value) noexcept = 0;
  /// Tells the override that what stands under id has changed.
  virtual void UpdateOverride(HostOverride* over, HostTakeData* takeData, const HostDescId& id) noexcept = 0;

protected:
  ~HostTakeTable() = default;
};

class HostTakeData
{
public:
  HostTake* GetMainTake() noexcept { return g_hostTables->take->GetMainTake(this); }
  HostTake* AddTake(const String& name) noexcept { return g_hostTables->take->AddTake(this, name); }
  void SetCurrentTake(HostTake* take) noexcept { g_hostTables->take->SetCurrentTake(this, take); }

protected:
  HostTakeData() noexcept = default;
  ~HostTakeData() = default;
};

class HostTake : public HostNode
{
public:
  HostOverride* FindOrAddOverride(HostTakeData* takeData, HostNode* node, const HostDescId& id, const HostValue& value) noexcept
  {
    return g_hostTables->take->FindOrAddOverride(this, takeData, node, id, value);
  }

protected:
  HostTake() noexcept = default;
  ~HostTake() = default;
};

/// Holds the values and tracks that a take sets for one node; tracks are found and inserted as on every node.
class HostOverride : public HostNode
{
public:
  void Update(HostTakeData* takeData, const HostDescId& id) noexcept { g_hostTables->take->UpdateOverride(this, takeData, id); }

protected:
  HostOverride() noexcept = default;
  ~HostOverride() = default;
};

inline HostTakeData* HostDocument::GetTakeData() noexcept { return g_hostTables->take->GetTakeData(this); }

}  // namespace q7z
