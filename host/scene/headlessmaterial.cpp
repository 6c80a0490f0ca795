#include "host/scene/headlessmaterial.h"

#include <algorithm>
#include <new>

#include "host/scene/headlessdocument.h"
#include "host/scene/materialrecord.h"

namespace q7z
{

HeadlessShader* HeadlessShader::Create() noexcept
{
  return new (std::nothrow) HeadlessShader;
}

HeadlessDocument* HeadlessShader::GetDocument() const noexcept
{
  return _material ? _material->GetDocument() : nullptr;
}

void HeadlessShader::Destroy() noexcept
{
  if (_material)
    CountMistake(GetSceneDiagnostics().freedWhileInserted);  // it goes with its material
  else
    delete this;
}

HeadlessShader* HeadlessShader::Clone() const noexcept
{
  HeadlessOwner<HeadlessShader> copy(Create());
  if (!copy || !copy->CopyCommonFrom(*this))
    return nullptr;
  return copy.release();
}

HeadlessMaterial* HeadlessMaterial::Create(Int32 type) noexcept
{
  return new (std::nothrow) HeadlessMaterial(type);
}

HeadlessMaterial::~HeadlessMaterial()
{
  for (const MaterialChannel& channel : _channels)
    delete channel.shader;
  for (const ReflectanceLayer& layer : _layers)
  {
    for (const LayerShader& entry : layer.shaders)
      delete entry.shader;
  }
}

Bool HeadlessMaterial::SetRecord(const String& space, const HostMaterialExchangeData& data) noexcept
{
  std::unique_ptr<NodeMaterialRecord> record(new (std::nothrow) NodeMaterialRecord);
  Result<String> spaceCopy = space.Copy();
  if (!record || spaceCopy.HasError() || CopyExchangeData(data, record->data).HasError())
    return false;
  record->space = std::move(spaceCopy).GetValue();
  _record = std::move(record);
  return true;
}

const MaterialChannel* HeadlessMaterial::FindChannel(Int32 number) const noexcept
{
  for (const MaterialChannel& channel : _channels)
  {
    if (channel.number == number)
      return &channel;
  }
  return nullptr;
}

MaterialChannel* HeadlessMaterial::FindOrAddChannel(Int32 number) noexcept
{
  if (const MaterialChannel* const found = FindChannel(number))
    return const_cast<MaterialChannel*>(found);
  if (_channels.Append({number, false, nullptr}).HasError())
    return nullptr;
  MaterialChannel* place = &_channels.GetLast();
  for (; place != _channels.begin() && place[-1].number > number; --place)
    std::swap(place[-1], place[0]);
  return place;
}

Bool HeadlessMaterial::SetChannelOn(Int32 number, Bool on) noexcept
{
  MaterialChannel* const channel = FindOrAddChannel(number);
  if (channel)
    channel->on = on;
  return channel != nullptr;
}

Bool HeadlessMaterial::SetChannelShader(Int32 number, HeadlessShader* shader) noexcept
{
  HeadlessOwner<HeadlessShader> owner(shader);
  MaterialChannel* const channel = FindOrAddChannel(number);
  if (!channel)
    return false;
  delete channel->shader;
  channel->shader = owner.release();
  if (channel->shader)
    channel->shader->_material = this;
  return true;
}

Bool HeadlessMaterial::AddLayer(Int32 firstId) noexcept
{
  ReflectanceLayer layer;
  layer.firstId = firstId;
  return !_layers.Append(std::move(layer)).HasError();
}

Bool HeadlessMaterial::SetLayerShader(Int layerIndex, Int32 offset, HeadlessShader* shader) noexcept
{
  HeadlessOwner<HeadlessShader> owner(shader);
  if (layerIndex < 0 || layerIndex >= _layers.GetCount() || !shader)
    return false;
  BaseArray<LayerShader>& shaders = _layers[layerIndex].shaders;
  LayerShader* const place =
    std::find_if(shaders.begin(), shaders.end(), [=](const LayerShader& entry) { return entry.offset >= offset; });
  shader->_material = this;
  if (place != shaders.end() && place->offset == offset)
  {
    delete std::exchange(place->shader, owner.release());
    return true;
  }
  const Int index = place - shaders.begin();
  if (shaders.Append({offset, shader}).HasError())
  {
    shader->_material = nullptr;
    return false;
  }
  static_cast<void>(owner.release());  // the list owns it
  std::rotate(shaders.begin() + index, shaders.end() - 1, shaders.end());
  return true;
}

HeadlessShader* HeadlessMaterial::FindLayerShader(Int32 parameter) const noexcept
{
  for (const ReflectanceLayer& layer : _layers)
  {
    for (const LayerShader& entry : layer.shaders)
    {
      if (Int(layer.firstId) + entry.offset == parameter)
        return entry.shader;
    }
  }
  return nullptr;
}

HeadlessMaterial* HeadlessMaterial::Clone() const noexcept
{
  HeadlessOwner<HeadlessMaterial> copy(Create(GetType()));
  if (!copy || !copy->CopyMaterialFrom(*this))
    return nullptr;
  return copy.release();
}

Bool HeadlessMaterial::CopyMaterialFrom(const HeadlessMaterial& other) noexcept
{
  if (!CopyCommonFrom(other) || (other._record && !SetRecord(other._record->space, other._record->data)))
    return false;
  for (const MaterialChannel& channel : other._channels)
  {
    if (!SetChannelOn(channel.number, channel.on))
      return false;
    HeadlessShader* const shader = channel.shader ? channel.shader->Clone() : nullptr;
    if (channel.shader && (!shader || !SetChannelShader(channel.number, shader)))
      return false;
  }
  for (const ReflectanceLayer& layer : other._layers)
  {
    if (!AddLayer(layer.firstId))
      return false;
    for (const LayerShader& entry : layer.shaders)
    {
      if (!SetLayerShader(_layers.GetCount() - 1, entry.offset, entry.shader->Clone()))
        return false;
    }
  }
  return true;
}

Bool HeadlessMaterial::TakeOut() noexcept
{
  if (!_document)
    return false;
  (_previous ? _previous->_next : _document->_firstMaterial) = _next;
  (_next ? _next->_previous : _document->_lastMaterial) = _previous;
  _document = nullptr;
  _previous = _next = nullptr;
  return true;
}

}  // namespace q7z
