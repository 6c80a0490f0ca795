// Materials of both kinds.

#include <algorithm>
#include <vector>

#include "host/scenefile/scenewriter.h"
#include "host/scenefile/textureurl.h"

namespace q7z
{

void SceneWriter::WriteMaterials()
{
  if (!_document.GetFirstMaterial())
    return;
  _json.WriteKey("materials");
  _json.BeginArray();
  for (const HeadlessMaterial* material = _document.GetFirstMaterial(); material; material = material->GetNext())
    WriteMaterial(*material);
  _json.EndArray();
}

void SceneWriter::WriteMaterial(const HeadlessMaterial& material)
{
  _json.BeginObject();
  WriteNextId();
  WriteIntMember("type", material.GetType());
  WriteName(material);
  if (const NodeMaterialRecord* const record = material.GetRecord())
    WriteNodeMaterial(*record);
  else
    WriteChannels(material);
  WriteTable("parameters", material.GetParameters());
  if (!material.GetRecord())
    WriteReflectanceLayers(material);
  _json.EndObject();
}

void SceneWriter::WriteNodeMaterial(const NodeMaterialRecord& record)
{
  _json.WriteKey("node");
  _json.BeginObject();
  WriteTextMember("space", record.space.GetView());
  WriteTextMember("materialType", record.data.materialTypeId.GetView());
  if (record.data.parameters.IsPopulated())
  {
    _json.WriteKey("parameters");
    _json.BeginObject();
    for (const auto& entry : record.data.parameters)
    {
      _json.WriteKey(entry.GetKey().GetView());
      _json.BeginObject(JsonLayout::kInline);
      _json.WriteKey("value");
      WriteData(entry.GetValue().value);
      WriteBoolMember("constant", entry.GetValue().constant);
      _json.EndObject();
    }
    _json.EndObject();
  }
  if (record.data.textures.IsPopulated())
  {
    _json.WriteKey("textures");
    _json.BeginObject();
    for (const auto& entry : record.data.textures)
      WriteTextMember(entry.GetKey().GetView(), MakeTextureText(entry.GetValue().url, _folder, _imageFolder));
    _json.EndObject();
  }
  _json.EndObject();
}

/// Recursion goes as deep as the value nests.
void SceneWriter::WriteData(const Data& data)
{
  switch (data.GetKind())
  {
    case DataKind::kNil: _json.WriteNull(); return;
    case DataKind::kBool: _json.WriteBool(data.GetBool().GetValue()); return;
    case DataKind::kInt: _json.WriteInt(data.GetInt().GetValue()); return;
    case DataKind::kFloat: _json.WriteFloat(data.GetFloat().GetValue()); return;
    case DataKind::kString: _json.WriteString(data.GetString().GetValue().GetView()); return;
    case DataKind::kArray: WriteDataArray(data.GetArray().GetValue()); return;
    case DataKind::kDictionary: break;
  }
  const DataDictionary dictionary = data.GetDictionary().GetValue();
  _json.BeginObject();
  _json.WriteKey("container");
  _json.BeginObject();
  for (const DataMember& member : dictionary)
  {
    _json.WriteKey(member.key.GetName().GetView());
    WriteData(member.value);
  }
  _json.EndObject();
  _json.EndObject();
}

/// Three or four floats are a vector or a colour.
void SceneWriter::WriteDataArray(const DataArrayView& elements)
{
  const Int count = elements.GetCount();
  const Bool areFloats =
    std::all_of(elements.begin(), elements.end(), [](const Data& data) { return data.GetKind() == DataKind::kFloat; });
  if (areFloats && (count == 3 || count == 4))
  {
    Float numbers[4];
    for (Int i = 0; i < count; ++i)
      numbers[i] = elements[i].GetFloat().GetValue();
    _json.BeginObject();
    _json.WriteKey(count == 3 ? "vector" : "vector4");
    _json.WriteFloats(numbers, count);
    _json.EndObject();
    return;
  }
  _json.BeginArray();
  for (const Data& element : elements)
    WriteData(element);
  _json.EndArray();
}

// Classic materials.

void SceneWriter::WriteChannels(const HeadlessMaterial& material)
{
  if (material.GetChannels().IsEmpty())
    return;
  _json.WriteKey("channels");
  _json.BeginObject();
  for (const MaterialChannel& channel : material.GetChannels())
  {
    WriteEntryKey(channel.number);
    _json.BeginObject();
    WriteBoolMember("on", channel.on);
    if (channel.shader)
    {
      _json.WriteKey("shader");
      WriteShader(*channel.shader);
    }
    _json.EndObject();
  }
  _json.EndObject();
}

void SceneWriter::WriteReflectanceLayers(const HeadlessMaterial& material)
{
  if (material.GetLayers().IsEmpty())
    return;
  _json.WriteKey("layers");
  _json.BeginArray();
  for (const ReflectanceLayer& layer : material.GetLayers())
  {
    _json.BeginObject();
    WriteIntMember("id", layer.firstId);
    if (layer.shaders.IsPopulated())
    {
      _json.WriteKey("shaders");
      _json.BeginObject();
      for (const LayerShader& entry : layer.shaders)
      {
        WriteEntryKey(entry.offset);
        WriteShader(*entry.shader);
      }
      _json.EndObject();
    }
    _json.EndObject();
  }
  _json.EndArray();
}

void SceneWriter::WriteShader(const HeadlessShader& shader)
{
  _json.BeginObject();
  WriteTable("parameters", shader.GetParameters());
  _json.EndObject();
}

}  // namespace q7z
