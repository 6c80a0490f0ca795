#pragma once

// Materials with their channels, layers and shaders, and bitmaps.

#include "plugin/module/hostnode.h"

namespace q7z
{

class HostMaterialTable
{
public:
  /// Null for an unknown type or without memory. The caller owns it.
  virtual HostMaterial* Alloc(Int32 type) noexcept = 0;
  virtual Bool IsNodeBased(const HostMaterial* material) noexcept = 0;
  virtual Bool GetChannelState(const HostMaterial* material, Int32 channel) noexcept = 0;
  /// The shader of a channel, or null.
  virtual HostShader* GetChannelShader(const HostMaterial* material, Int32 channel) noexcept = 0;
  /// The first parameter id of the index-th reflectance layer, or 0 when there is none.
  virtual Int32 GetReflectanceLayerId(const HostMaterial* material, Int32 index) noexcept = 0;
  /// The shader linked at a parameter of a layer, or null.
  virtual HostShader* GetLayerShader(const HostMaterial* material, Int32 parameter) noexcept = 0;
  /// The file of a shader's text parameter, resolved against the document's folder; empty when there is none.
  virtual HostFilename ResolveShaderFile(const HostShader* shader, const HostDocument* document) noexcept = 0;
  /// The host's global settings, never null.
  virtual HostContainer* GetGlobalSettings() noexcept = 0;

protected:
  ~HostMaterialTable() = default;
};

class HostMaterial : public HostNode
{
public:
  static HostMaterial* Alloc(Int32 type) noexcept { return g_hostTables->material->Alloc(type); }
  Bool IsNodeBased() const noexcept { return g_hostTables->material->IsNodeBased(this); }
  Bool GetChannelState(Int32 channel) const noexcept { return g_hostTables->material->GetChannelState(this, channel); }

protected:
  HostMaterial() noexcept = default;
  ~HostMaterial() = default;
};

class HostShader : public HostNode
{
protected:
  HostShader() noexcept = default;
  ~HostShader() = default;
};

class HostBitmapTable
{
public:
  virtual HostBitmap* Alloc() noexcept = 0;
  virtual void Free(HostBitmap* bitmap) noexcept = 0;
  virtual Bool Init(HostBitmap* bitmap, Int32 width, Int32 height, Int32 bitsPerPixel) noexcept = 0;
  virtual Bool Load(HostBitmap* bitmap, const HostFilename& name) noexcept = 0;
  virtual Int32 GetWidth(const HostBitmap* bitmap) noexcept = 0;
  virtual Int32 GetHeight(const HostBitmap* bitmap) noexcept = 0;
  virtual Bool ScaleInto(const HostBitmap* bitmap, HostBitmap* target) noexcept = 0;
  virtual Bool HasAlpha(const HostBitmap* bitmap) noexcept = 0;
  virtual Bool AddAlpha(HostBitmap* bitmap) noexcept = 0;
  virtual void RemoveAlpha(HostBitmap* bitmap) noexcept = 0;
  /// One row: 3 or, with alpha, 4 bytes a pixel.
  virtual Bool ReadRow(const HostBitmap* bitmap, Int32 row, Byte* target, Bool withAlpha) noexcept = 0;
  virtual Bool WriteRow(HostBitmap* bitmap, Int32 row, const Byte* source, Bool withAlpha) noexcept = 0;
  virtual HostImage* GetImage(HostBitmap* bitmap) noexcept = 0;

protected:
  ~HostBitmapTable() = default;
};

}  // namespace q7z
