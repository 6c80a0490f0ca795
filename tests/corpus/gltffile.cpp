#include "tests/corpus/gltffile.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "host/services/base64.h"

namespace q7z::test
{

namespace
{

std::string DecodeBase64(std::string_view text)
{
  const Result<BaseArray<Byte>> bytes = HeadlessBase64Decoder().Decode(String(text.data(), static_cast<Int>(text.size())));
  return std::string(bytes.GetValue().begin(), bytes.GetValue().end());
}

template <typename T>
double ReadAs(const char* bytes)
{
  T value;
  std::memcpy(&value, bytes, sizeof(value));
  return static_cast<double>(value);
}

struct ComponentType
{
  int code;
  size_t size;
  double (*read)(const char*);
  double largest;  ///< 1 when normalised
};

const ComponentType& FindComponentType(int code)
{
  static constexpr ComponentType kTypes[] = {
    {5120, 1, ReadAs<int8_t>, 127},     {5121, 1, ReadAs<uint8_t>, 255},         {5122, 2, ReadAs<int16_t>, 32767},
    {5123, 2, ReadAs<uint16_t>, 65535}, {5125, 4, ReadAs<uint32_t>, 4294967295}, {5126, 4, ReadAs<float>, 1},
  };
  for (const ComponentType& type : kTypes)
  {
    if (type.code == code)
      return type;
  }
  throw std::runtime_error("no component type " + std::to_string(code));
}

size_t GetWidth(const std::string& type)
{
  return type == "SCALAR" ? 1 : type == "MAT4" ? 16 : static_cast<size_t>(type.back() - '0');
}

}  // namespace

std::string ReadBytes(const std::string& path)
{
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw std::runtime_error("cannot read " + path);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

simdjson::simdjson_result<Json> GetMember(Json object, const char* name)
{
  return object[name];
}

double GetNumber(Json object, const char* name, double missing)
{
  double number = 0;
  return GetMember(object, name).get(number) == simdjson::SUCCESS ? number : missing;
}

int GetIndex(Json object, const char* name)
{
  return static_cast<int>(GetNumber(object, name, -1));
}

std::string GetText(Json object, const char* name)
{
  std::string_view text;
  return GetMember(object, name).get(text) == simdjson::SUCCESS ? std::string(text) : "";
}

std::vector<Json> GetElements(Json object, const char* name)
{
  simdjson::dom::array array;
  if (GetMember(object, name).get(array) != simdjson::SUCCESS)
    return {};
  return {array.begin(), array.end()};
}

std::vector<double> GetNumbers(Json object, const char* name)
{
  std::vector<double> numbers;
  for (const Json element : GetElements(object, name))
    numbers.push_back(double(element));
  return numbers;
}

GltfFile::GltfFile(const std::string& path)
{
  std::string text = ReadBytes(path);
  std::string binary;
  if (text.starts_with("glTF"))
  {
    const auto jsonLength = static_cast<size_t>(ReadAs<uint32_t>(text.data() + 12));
    if (text.size() > 28 + jsonLength)
      binary = text.substr(28 + jsonLength);
    text = text.substr(20, jsonLength);
  }
  _root = _parser.parse(text);
  for (const Json buffer : GetElements(_root, "buffers"))
  {
    const std::string uri = GetText(buffer, "uri");
    _buffers.push_back(uri.empty() ? binary : ReadUri(uri, path.substr(0, path.rfind('/') + 1)));
  }
}

std::string GltfFile::ReadUri(const std::string& uri, const std::string& folder) const
{
  return uri.starts_with("data:") ? DecodeBase64(std::string_view(uri).substr(uri.find(',') + 1)) : ReadBytes(folder + uri);
}

std::vector<double> GltfFile::ReadComponents(Json view, size_t offset, int componentType, size_t width, size_t count) const
{
  const ComponentType& type = FindComponentType(componentType);
  const std::string& bytes = _buffers.at(static_cast<size_t>(GetIndex(view, "buffer")));
  const auto stride = static_cast<size_t>(GetNumber(view, "byteStride", static_cast<double>(width * type.size)));
  offset += static_cast<size_t>(GetNumber(view, "byteOffset", 0));
  if (count > 0 && offset + (count - 1) * stride + width * type.size > bytes.size())
    throw std::runtime_error("an accessor reaches beyond its buffer");
  std::vector<double> numbers;
  numbers.reserve(count * width);
  for (size_t i = 0; i < count; ++i)
  {
    for (size_t k = 0; k < width; ++k)
      numbers.push_back(type.read(bytes.data() + offset + i * stride + k * type.size));
  }
  return numbers;
}

std::vector<double> GltfFile::ReadAccessor(int index) const
{
  const Json accessor = _root["accessors"].at(static_cast<size_t>(index));
  const simdjson::dom::array views = _root["bufferViews"];
  const auto count = static_cast<size_t>(GetNumber(accessor, "count", 0));
  const size_t width = GetWidth(GetText(accessor, "type"));
  const int type = GetIndex(accessor, "componentType");
  const Json view = views.at(static_cast<size_t>(GetIndex(accessor, "bufferView")));
  std::vector<double> numbers =
    ReadComponents(view, static_cast<size_t>(GetNumber(accessor, "byteOffset", 0)), type, width, count);
  bool isNormalized = false;
  if (GetMember(accessor, "normalized").get(isNormalized) == simdjson::SUCCESS && isNormalized)
  {
    for (double& number : numbers)
      number = std::max(number / FindComponentType(type).largest, -1.0);
  }
  return numbers;
}

}  // namespace q7z::test
