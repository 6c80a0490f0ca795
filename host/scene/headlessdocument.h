#pragma once

// HeadlessDocument: a scene with all that belongs to it. It owns its objects, materials, layers and takes.

#include "framework/hosttime.h"
#include "host/scene/headlessmaterial.h"
#include "host/scene/headlessobject.h"
#include "host/scene/headlesstake.h"

namespace q7z
{

class HostJobs;

/// A layer, or the root that holds the layers and is none itself.
class HeadlessLayer final : public HeadlessNamedNode
{
public:
  HeadlessLayer(HeadlessDocument* document, Bool isRoot) noexcept
      : HeadlessNamedNode(NodeKind::kLayer, 0), _document(document), _isRoot(isRoot)
  {}
  ~HeadlessLayer() override;

  Bool IsRoot() const noexcept { return _isRoot; }
  HeadlessDocument* GetDocument() const noexcept override { return _document; }
  /// The layers of the root, in list order.
  Int GetLayerCount() const noexcept { return _layers.GetCount(); }
  HeadlessLayer* GetLayer(Int index) const noexcept { return _layers[index]; }
  /// A new layer at the end, of the root alone. Null without memory.
  HeadlessLayer* Add() noexcept;
  /// Copies of the layers of another root. @return false without memory.
  Bool CopyFrom(const HeadlessLayer& other) noexcept;

protected:
  void Destroy() noexcept override;

private:
  HeadlessDocument* _document;  // not owned
  BaseArray<HeadlessLayer*> _layers;
  Bool _isRoot;
};

class HeadlessDocument final : public HeadlessNamedNode
{
public:
  /// A new document: 1 cm, 30 frames a second, 0 to 3 s, 1280 x 720, the main take "Main". Null without memory.
  static HeadlessDocument* Create() noexcept;
  ~HeadlessDocument() override;

  HeadlessDocument* GetDocument() const noexcept override { return const_cast<HeadlessDocument*>(this); }

  /// Under parent, or at top level when that is null; behind predecessor (a child of the same parent), or first when that is
  /// null. The document owns the object then.
  void InsertObject(HeadlessObject* object, HeadlessObject* parent, HeadlessObject* predecessor) noexcept;
  /// At the end of the top level.
  void InsertObjectLast(HeadlessObject* object) noexcept;
  HeadlessObject* GetFirstObject() const noexcept { return _firstObject; }
  HeadlessObject* GetLastObject() const noexcept { return _lastObject; }
  /// The first of the objects that are alive outside the hierarchy, and the next of them.
  HeadlessObject* GetFirstKept() const noexcept { return _firstKept; }
  static HeadlessObject* GetNextKept(const HeadlessObject* object) noexcept { return object->_next; }
  /// Keeps an object that stands nowhere alive outside the hierarchy.
  void Keep(HeadlessObject* object) noexcept;
  /// The next object of the whole document's walk, parent before children; null at its end.
  static HeadlessObject* GetNextInDocument(const HeadlessObject* object) noexcept { return object->GetNextInTree(nullptr); }

  /// At the end of the list; the document owns the material then.
  void InsertMaterial(HeadlessMaterial* material) noexcept;
  HeadlessMaterial* GetFirstMaterial() const noexcept { return _firstMaterial; }

  HeadlessLayer& GetLayerRoot() noexcept { return *_layerRoot; }
  const HeadlessLayer& GetLayerRoot() const noexcept { return *_layerRoot; }
  HeadlessTakeData& GetTakeData() noexcept { return _takeData; }
  const HeadlessTakeData& GetTakeData() const noexcept { return _takeData; }

  /// The document's settings; 2117 is the unit scale.
  HeadlessContainer& GetSettings() noexcept { return _settings; }
  const HeadlessContainer& GetSettings() const noexcept { return _settings; }
  /// The active render data, or null.
  HeadlessContainer* GetRenderData() noexcept { return _hasRenderData ? &_renderData : nullptr; }
  const HeadlessContainer* GetRenderData() const noexcept { return _hasRenderData ? &_renderData : nullptr; }
  void SetHasRenderData(Bool has) noexcept { _hasRenderData = has; }

  const HostTime& GetTime() const noexcept { return _time; }
  /// Evaluates the tracks at the time. @param jobs  may be null: on this thread alone.
  void SetTime(const HostTime& time, HostJobs* jobs = nullptr) noexcept;
  /// Evaluates them once more, for what was changed since the time was set.
  void ExecutePasses(HostJobs* jobs = nullptr) noexcept;

  /// The id of the active material node space.
  const String& GetNodeSpace() const noexcept { return _nodeSpace; }
  /// Keeps a copy. @return false without memory.
  Bool SetNodeSpace(const String& nodeSpace) noexcept;
  /// The folder that relative file names of shaders start from, with "/" between components; empty for the current one.
  const String& GetFolder() const noexcept { return _folder; }
  Bool SetFolder(const String& folder) noexcept;

  /// Everything but objects, materials, layers and takes. @return false without memory.
  Bool CopySettingsFrom(const HeadlessDocument& other) noexcept;

private:
  friend class HeadlessObject;
  friend class HeadlessMaterial;
  HeadlessDocument() noexcept : HeadlessNamedNode(NodeKind::kDocument, 0) {}
  Bool Init() noexcept;

  HeadlessObject* _firstObject = nullptr;
  HeadlessObject* _lastObject = nullptr;
  HeadlessObject* _firstKept = nullptr;  // alive outside the hierarchy
  HeadlessMaterial* _firstMaterial = nullptr;
  HeadlessMaterial* _lastMaterial = nullptr;
  std::unique_ptr<HeadlessLayer> _layerRoot;
  HeadlessTakeData _takeData;
  HeadlessContainer _settings;
  HeadlessContainer _renderData;
  Bool _hasRenderData = true;
  HostTime _time;
  String _nodeSpace;
  String _folder;
};

}  // namespace q7z
