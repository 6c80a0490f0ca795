#pragma once

// HeadlessMaterial: a node material, which keeps the exchange record that it was made from, or a classic one with channels,
// reflectance layers and shaders.

#include "host/scene/headlessnode.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

/// A bitmap shader: parameter 1002 is its file.
class HeadlessShader final : public HeadlessNamedNode
{
public:
  static HeadlessShader* Create() noexcept;
  /// The material that holds it, or null.
  HeadlessMaterial* GetMaterial() const noexcept { return _material; }
  HeadlessDocument* GetDocument() const noexcept override;
  /// A copy in no material. Null without memory.
  HeadlessShader* Clone() const noexcept;

protected:
  void Destroy() noexcept override;

private:
  friend class HeadlessMaterial;
  HeadlessShader() noexcept : HeadlessNamedNode(NodeKind::kShader, 0) {}
  HeadlessMaterial* _material = nullptr;  // not owned
};

/// One channel of a classic material.
struct MaterialChannel
{
  Int32 number = 0;
  Bool on = false;
  HeadlessShader* shader = nullptr;  ///< owned by the material; null for none
};

/// A shader of a reflectance layer, at the layer's first parameter id + offset.
struct LayerShader
{
  Int32 offset = 0;
  HeadlessShader* shader = nullptr;  ///< owned by the material
};

struct ReflectanceLayer
{
  Int32 firstId = 0;
  BaseArray<LayerShader> shaders;  ///< by rising offset
};

/// What a node material was made from.
struct NodeMaterialRecord
{
  String space;  ///< id of the node space
  HostMaterialExchangeData data;
};

class HeadlessMaterial final : public HeadlessNamedNode
{
public:
  /// In no document. Null without memory.
  static HeadlessMaterial* Create(Int32 type = kMaterialType) noexcept;
  ~HeadlessMaterial() override;

  HeadlessDocument* GetDocument() const noexcept override { return _document; }
  HeadlessMaterial* GetNext() const noexcept { return _next; }
  /// Out of its document's list; the caller owns it then.
  void Remove() noexcept { TakeOut(); }

  // Node materials.
  Bool IsNodeBased() const noexcept { return _record != nullptr; }
  /// Null for a classic material.
  const NodeMaterialRecord* GetRecord() const noexcept { return _record.get(); }
  /// Keeps a copy of all of it, texts included, without pixels. @return false without memory: nothing has changed then.
  Bool SetRecord(const String& space, const HostMaterialExchangeData& data) noexcept;

  // Classic materials. Channels rise by number; layers stand in list order.
  const BaseArray<MaterialChannel>& GetChannels() const noexcept { return _channels; }
  const MaterialChannel* FindChannel(Int32 number) const noexcept;
  /// @return false without memory.
  Bool SetChannelOn(Int32 number, Bool on) noexcept;
  /// Takes the shader over, also when it fails; null takes the channel's away. @return false without memory.
  Bool SetChannelShader(Int32 number, HeadlessShader* shader) noexcept;
  const BaseArray<ReflectanceLayer>& GetLayers() const noexcept { return _layers; }
  Bool AddLayer(Int32 firstId) noexcept;
  /// Takes the shader over, also when it fails. @return false without memory or for a layer out of range.
  Bool SetLayerShader(Int layerIndex, Int32 offset, HeadlessShader* shader) noexcept;
  /// The shader at a parameter (a layer's first id + offset), or null.
  HeadlessShader* FindLayerShader(Int32 parameter) const noexcept;

  /// A copy in no document. Null without memory.
  HeadlessMaterial* Clone() const noexcept;

protected:
  Bool TakeOut() noexcept override;

private:
  friend class HeadlessDocument;
  explicit HeadlessMaterial(Int32 type) noexcept : HeadlessNamedNode(NodeKind::kMaterial, type) {}
  MaterialChannel* FindOrAddChannel(Int32 number) noexcept;
  Bool CopyMaterialFrom(const HeadlessMaterial& other) noexcept;

  HeadlessDocument* _document = nullptr;  // not owned
  HeadlessMaterial* _previous = nullptr;
  HeadlessMaterial* _next = nullptr;
  std::unique_ptr<NodeMaterialRecord> _record;
  BaseArray<MaterialChannel> _channels;
  BaseArray<ReflectanceLayer> _layers;
};

}  // namespace q7z
