// Materials of both kinds.

#include <algorithm>

#include "host/scenefile/scenereader.h"
#include "host/scenefile/textureurl.h"

namespace q7z
{

Result<void> SceneReader::ReadMaterials()
{
  return ForEachNode(_tree.GetRoot().Find("materials"), [this](const JsonNode& node, Int) { return ReadMaterial(node); });
}

Result<void> SceneReader::ReadMaterial(const JsonNode& node)
{
  Int32 type = 0;
  RETURN_IF_ERROR(CheckObject(node));
  const Bool isNodeBased = node.Find("node") != nullptr;
  if (isNodeBased)
    RETURN_IF_ERROR(CheckMembers(node, "a node material", {"id", "type", "name", "parameters", "node"}));
  else
    RETURN_IF_ERROR(CheckMembers(node, "a material", {"id", "type", "name", "parameters", "channels", "layers"}));
  RETURN_IF_ERROR(RequireMember(node, "type", type));
  if (type != kMaterialType)
    return _tree.MakeError(node, "type", "5703 expected, " + std::to_string(type) + " found");
  HeadlessMaterial* const material = HeadlessMaterial::Create(type);
  CHECK_MEMORY(material);
  _document->InsertMaterial(material);
  RETURN_IF_ERROR(ReadId(node, *material));
  RETURN_IF_ERROR(ReadName(node, *material));
  RETURN_IF_ERROR(ReadTableMember(node, "parameters", material->GetParameters()));
  if (isNodeBased)
    return ReadNodeMaterial(*node.Find("node"), *material);
  if (const JsonNode* const channels = node.Find("channels"))
    RETURN_IF_ERROR(ReadChannels(*channels, *material));
  const JsonNode* const layers = node.Find("layers");
  return layers ? ReadReflectanceLayers(*layers, *material) : Result<void>();
}

// Node materials.

Result<void> SceneReader::ReadNodeMaterial(const JsonNode& node, HeadlessMaterial& material)
{
  String space;
  HostMaterialExchangeData data;
  RETURN_IF_ERROR(CheckMembers(node, "a node material's record", {"space", "materialType", "parameters", "textures"}));
  RETURN_IF_ERROR(ReadMember(node, "space", space));
  RETURN_IF_ERROR(ReadMember(node, "materialType", data.materialTypeId));
  if (const JsonNode* const parameters = node.Find("parameters"))
    RETURN_IF_ERROR(ReadExchangeParameters(*parameters, data));
  if (const JsonNode* const textures = node.Find("textures"))
    RETURN_IF_ERROR(ReadExchangeTextures(*textures, data));
  CHECK_MEMORY(material.SetRecord(space, data));
  return {};
}

namespace
{

/// The name of a member, as long as the tree lives.
String GetName(const JsonMember& member) noexcept
{
  return String(member.name.data(), static_cast<Int>(member.name.size()));
}

}  // namespace

Result<void> SceneReader::ReadExchangeParameters(const JsonNode& node, HostMaterialExchangeData& data)
{
  RETURN_IF_ERROR(CheckObject(node));
  for (Int i = 0; i < node.count; ++i)
  {
    const JsonNode& entry = node.members[i].value;
    HostExchangeParameter parameter;
    RETURN_IF_ERROR(CheckMembers(entry, "a parameter", {"value", "constant"}));
    const JsonNode* const value = entry.Find("value");
    if (!value)
      return _tree.MakeError(entry, "value", "missing");
    RETURN_IF_ERROR(ReadData(*value, parameter.value));
    RETURN_IF_ERROR(ReadMember(entry, "constant", parameter.constant));
    RETURN_IF_ERROR(data.parameters.Set(GetName(node.members[i]), std::move(parameter)));
  }
  return {};
}

Result<void> SceneReader::ReadExchangeTextures(const JsonNode& node, HostMaterialExchangeData& data)
{
  RETURN_IF_ERROR(CheckObject(node));
  for (Int i = 0; i < node.count; ++i)
  {
    HostExchangeTexture texture;
    RETURN_IF_ERROR(ReadTextureUrl(node.members[i].value, texture.url));
    RETURN_IF_ERROR(data.textures.Set(GetName(node.members[i]), std::move(texture)));
  }
  return {};
}

Result<void> SceneReader::ReadTextureUrl(const JsonNode& node, Url& url)
{
  String text;
  RETURN_IF_ERROR(ReadValue(node, text));
  Result<Url> read = ReadTextureText(text.GetView(), _folder);
  if (read.HasError() && read.GetError().GetClass() != ErrorClass::kOutOfMemory)
    return _tree.MakeError(node, "no file has such a name");
  ASSIGN_OR_RETURN(url, std::move(read));
  return {};
}

/// Recursion goes as deep as the text may nest.
Result<void> SceneReader::ReadData(const JsonNode& node, Data& data)
{
  switch (node.kind)
  {
    case JsonKind::kNull: data = Data(); return {};
    case JsonKind::kBool: data = Data(node.boolean); return {};
    case JsonKind::kInt: data = Data(node.whole); return {};
    case JsonKind::kFloat: data = Data(node.number); return {};
    case JsonKind::kString: data = Data(String(node.text, node.count)); return {};
    case JsonKind::kObject: break;
    default: return ReadDataArray(node, data);
  }
  const std::string_view kind = node.count == 1 ? node.members[0].name : std::string_view();
  if (kind == "container")
    return ReadDataDictionary(node.members[0].value, data);
  if (kind != "vector" && kind != "vector4")
    return _tree.MakeError(node, "one of vector, vector4, container and float expected");
  const JsonNode& array = node.members[0].value;
  RETURN_IF_ERROR(CheckCount(array, kind == "vector" ? 3 : 4, "numbers"));
  return ReadFloatArray(array, data);
}

Result<void> SceneReader::ReadFloatArray(const JsonNode& array, Data& data)
{
  std::vector<Float> numbers(static_cast<size_t>(array.GetElementCount()));
  RETURN_IF_ERROR(ReadNumbers(array, numbers.data()));
  BaseArray<Data> elements;
  for (const Float number : numbers)
    RETURN_IF_ERROR(elements.Append(Data(number)));
  ASSIGN_OR_RETURN(data, Data::CreateArray(std::move(elements)));
  return {};
}

Result<void> SceneReader::ReadDataArray(const JsonNode& array, Data& data)
{
  BaseArray<Data> elements;
  RETURN_IF_ERROR(elements.Resize(array.GetElementCount()));
  for (Int i = 0; i < elements.GetCount(); ++i)
  {
    // Only an element of an array of anything is a place in the tree, and only such a one can be wrong.
    if (array.kind == JsonKind::kArray)
      RETURN_IF_ERROR(ReadData(array.elements[i], elements[i]));
    else
      RETURN_IF_ERROR(ReadData(array.GetElement(i), elements[i]));
  }
  ASSIGN_OR_RETURN(data, Data::CreateArray(std::move(elements)));
  return {};
}

Result<void> SceneReader::ReadDataDictionary(const JsonNode& object, Data& data)
{
  DataDictionary dictionary;
  RETURN_IF_ERROR(CheckObject(object));
  for (Int i = 0; i < object.count; ++i)
  {
    Data value;
    RETURN_IF_ERROR(ReadData(object.members[i].value, value));
    RETURN_IF_ERROR(dictionary.Set(DataKey(GetName(object.members[i])), std::move(value)));
  }
  data = Data(std::move(dictionary));
  return {};
}

// Classic materials.

namespace
{

/// A member whose name is a number.
struct NumberedMember
{
  Int32 number = 0;
  const JsonNode* node = nullptr;
};

/// The members of an object by rising number.
Result<void> ReadNumberedMembers(const JsonTree& tree, const JsonNode& object, std::vector<NumberedMember>& members)
{
  for (Int i = 0; i < object.count; ++i)
  {
    HostDescId number;
    const JsonNode& node = object.members[i].value;
    if (!ParseDescId(object.members[i].name, number) || number.GetDepth() != 1)
      return tree.MakeError(node, "a decimal number expected as name");
    members.push_back({number[0].id, &node});
  }
  std::sort(members.begin(), members.end(), [](const NumberedMember& a, const NumberedMember& b) { return a.number < b.number; });
  return {};
}

}  // namespace

Result<void> SceneReader::ReadChannels(const JsonNode& node, HeadlessMaterial& material)
{
  std::vector<NumberedMember> channels;
  RETURN_IF_ERROR(CheckObject(node));
  RETURN_IF_ERROR(ReadNumberedMembers(_tree, node, channels));
  for (const NumberedMember& channel : channels)
  {
    Bool on = false;
    RETURN_IF_ERROR(CheckMembers(*channel.node, "a channel", {"on", "shader"}));
    RETURN_IF_ERROR(ReadMember(*channel.node, "on", on));
    CHECK_MEMORY(material.SetChannelOn(channel.number, on));
    const JsonNode* const shaderNode = channel.node->Find("shader");
    if (!shaderNode)
      continue;
    HeadlessShader* const shader = HeadlessShader::Create();
    CHECK_MEMORY(shader && material.SetChannelShader(channel.number, shader));
    RETURN_IF_ERROR(ReadShader(*shaderNode, *shader));
  }
  return {};
}

Result<void> SceneReader::ReadReflectanceLayers(const JsonNode& list, HeadlessMaterial& material)
{
  return ForEachNode(&list,
                     [&](const JsonNode& node, Int layer) -> Result<void>
                     {
                       Int32 firstId = 0;
                       RETURN_IF_ERROR(CheckMembers(node, "a reflectance layer", {"id", "shaders"}));
                       RETURN_IF_ERROR(RequireMember(node, "id", firstId));
                       CHECK_MEMORY(material.AddLayer(firstId));
                       const JsonNode* const shaders = node.Find("shaders");
                       return shaders ? ReadLayerShaders(*shaders, layer, material) : Result<void>();
                     });
}

Result<void> SceneReader::ReadLayerShaders(const JsonNode& node, Int layer, HeadlessMaterial& material)
{
  std::vector<NumberedMember> shaders;
  RETURN_IF_ERROR(CheckObject(node));
  RETURN_IF_ERROR(ReadNumberedMembers(_tree, node, shaders));
  for (const NumberedMember& member : shaders)
  {
    HeadlessShader* const shader = HeadlessShader::Create();
    CHECK_MEMORY(shader && material.SetLayerShader(layer, member.number, shader));
    RETURN_IF_ERROR(ReadShader(*member.node, *shader));
  }
  return {};
}

Result<void> SceneReader::ReadShader(const JsonNode& node, HeadlessShader& shader)
{
  RETURN_IF_ERROR(CheckMembers(node, "a shader", {"parameters"}));
  return ReadTableMember(node, "parameters", shader.GetParameters());
}

}  // namespace q7z
