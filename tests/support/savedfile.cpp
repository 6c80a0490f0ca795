#include "tests/support/savedfile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "host/scenefile/scenefile.h"
#include "host/services/base64.h"
#include "host/services/headlessjson.h"
#include "plugin/document/gltfaccessor.h"
#include "tests/document/testjson.h"

namespace q7z::test
{

namespace
{

class TextSink final : public ByteSink
{
public:
  Result<void> Write(std::string_view bytes) noexcept override
  {
    text += bytes;
    return {};
  }
  std::string text;
};

uint32_t WordAt(std::string_view bytes, size_t offset)
{
  uint32_t word = 0;
  if (offset + 4 <= bytes.size())
    std::memcpy(&word, bytes.data() + offset, 4);
  return word;
}

Data ParseJson(std::string_view text)
{
  const Result<BaseArray<Data>> parsed = ParseText(text);
  if (parsed.HasError())
    throw std::runtime_error("the file is no JSON: " + ErrorText(parsed));
  return parsed.GetValue()[0];
}

std::string ToText(const Data& value)
{
  const Result<String> text = WriteJson(value, false);
  return text.HasError() ? "(not written)" : std::string(text.GetValue().GetView());
}

std::string FormatNumber(double value)
{
  if (std::isnan(value))
    return "nan";
  char text[32];
  std::snprintf(text, sizeof(text), "%.7g", value + 0.0);  // -0 as 0
  return text;
}

double LoadNumber(const char* bytes, Int componentType)
{
  const auto load = [bytes](auto value)
  {
    std::memcpy(&value, bytes, sizeof(value));
    return static_cast<double>(value);
  };
  return componentType == kUnsignedShort ? load(uint16_t()) : componentType == kUnsignedInt ? load(uint32_t()) : load(float());
}

Int ComponentCount(const std::string& type)
{
  return type == "\"SCALAR\"" ? 1 : type == "\"VEC2\"" ? 2 : type == "\"VEC3\"" ? 3 : type == "\"VEC4\"" ? 4 : 16;
}

/// The next piece of a text: a number or any other single character.
struct Piece
{
  bool isNumber = false;
  double number = 0;
  std::string_view text;
};
Piece TakePiece(std::string_view& rest)
{
  Piece piece;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), piece.number);
  piece.isNumber = error == std::errc();
  const size_t length = piece.isNumber ? static_cast<size_t>(end - rest.data()) : 1;
  piece.text = rest.substr(0, length);
  rest.remove_prefix(length);
  return piece;
}

}  // namespace

std::string SceneText(std::string_view members)
{
  return R"({"format": "q7z scene", "version": 1, )" + std::string(members) + "}";
}

HeadlessOwner<HeadlessDocument> ReadScene(std::string_view text)
{
  Result<HeadlessOwner<HeadlessDocument>> read = ReadSceneDocument(text, "");
  if (read.HasError())
    throw std::runtime_error("no scene document: " + std::string(read.GetError().GetMessage().GetView()));
  return std::move(read.GetValue());
}

std::string WriteScene(const HeadlessDocument& document)
{
  TextSink sink;
  if (WriteSceneDocument(document, "", sink).HasError())
    throw std::runtime_error("the scene cannot be written");
  return sink.text;
}

SaveReport SaveFolder::Save(TestHost& host, HeadlessDocument& document, const Parameters& parameters) const
{
  SaveRequest request;
  request.path = File();
  request.parameters = parameters;
  return host.Host().Save(request, document);
}

bool SaveFolder::HasFile() const
{
  return std::filesystem::exists(File());
}

bool SaveFolder::HasAnythingElse() const
{
  return _folder.List().size() > (HasFile() ? 1 : 0);
}

std::string SaveFolder::TakeBytes() const
{
  std::string bytes = _folder.Read("saved");
  std::filesystem::remove(File());
  return bytes;
}

namespace
{

/// The element or member of that name.
std::optional<Data> FindIn(const Data& value, std::string_view name)
{
  if (value.GetKind() == DataKind::kArray)
  {
    const DataArrayView elements = value.GetArray().GetValue();
    const Int index = std::atoi(std::string(name).c_str());
    return index < elements.GetCount() ? std::optional<Data>(elements[index]) : std::nullopt;
  }
  if (value.GetKind() != DataKind::kDictionary)
    return std::nullopt;
  const DataDictionary dictionary = value.GetDictionary().GetValue();
  const Data* const member = dictionary.Find(DataKey(String(name.data(), static_cast<Int>(name.size()))));
  return member ? std::optional<Data>(*member) : std::nullopt;
}

}  // namespace

SavedContent::SavedContent(std::string bytes) : _bytes(std::move(bytes))
{
  const bool isGlb = _bytes.starts_with("glTF");
  const size_t jsonLength = isGlb ? WordAt(_bytes, 12) : _bytes.size();
  _root = ParseJson(std::string_view(_bytes).substr(isGlb ? 20 : 0, jsonLength));
  if (isGlb && _bytes.size() > 28 + jsonLength)
    _binary = _bytes.substr(28 + jsonLength);
}

std::optional<Data> SavedContent::Find(std::string_view path) const
{
  std::optional<Data> value = _root;
  while (value && !path.empty())
  {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(path.size(), name.size() + 1));
    value = FindIn(*value, name);
  }
  return value;
}

std::string SavedContent::At(const std::string& path) const
{
  if (path.starts_with("accessor "))
    return Numbers(std::atoi(path.c_str() + 9));
  if (path.starts_with("mesh "))
  {
    const size_t space = path.rfind(' ');
    const std::string name = path.substr(space + 1);
    const std::string primitive = "meshes/" + path.substr(5, space - 5) + "/primitives/0/";
    return Numbers(IntAt(primitive + (name == "indices" ? name : "attributes/" + name), -1));
  }
  const std::optional<Data> value = Find(path);
  return value ? ToText(*value) : "-";
}

std::string SavedContent::TextAt(const std::string& path) const
{
  const std::optional<Data> value = Find(path);
  return value ? std::string(value->GetString().GetValue().GetView()) : "";
}

Int SavedContent::IntAt(const std::string& path, Int missing) const
{
  const std::optional<Data> value = Find(path);
  return value ? value->GetInt().GetValue() : missing;
}

int SavedContent::Count(const std::string& path) const
{
  const std::optional<Data> value = Find(path);
  return value ? static_cast<int>(value->GetArray().GetValue().GetCount()) : 0;
}

std::string SavedContent::View(Int view) const
{
  const std::string base = "bufferViews/" + std::to_string(view) + "/";
  const std::string uri = TextAt("buffers/" + std::to_string(IntAt(base + "buffer", -1)) + "/uri");
  const std::string buffer = uri.empty() ? _binary : DecodeUri(uri);
  const Int offset = IntAt(base + "byteOffset", 0);
  const Int length = IntAt(base + "byteLength", 0);
  if (offset + length > static_cast<Int>(buffer.size()))
    throw std::runtime_error("a buffer view goes beyond its buffer");
  return buffer.substr(static_cast<size_t>(offset), static_cast<size_t>(length));
}

std::string SavedContent::Numbers(Int accessor) const
{
  const std::string base = "accessors/" + std::to_string(accessor) + "/";
  if (accessor < 0 || !Find(base + "type"))
    return "-";
  const Int view = IntAt(base + "bufferView", -1);
  const std::string bytes = View(view);
  const Int componentType = IntAt(base + "componentType", 0);
  const Int size = componentType == kUnsignedShort ? 2 : 4;
  const Int count = ComponentCount(At(base + "type"));
  const Int stride = IntAt("bufferViews/" + std::to_string(view) + "/byteStride", size * count);
  const Int start = IntAt(base + "byteOffset", 0);
  std::string text;
  for (Int i = 0; i < IntAt(base + "count", 0); ++i)
  {
    for (Int component = 0; component < count; ++component)
    {
      const size_t offset = static_cast<size_t>(start + i * stride + component * size);
      if (offset + static_cast<size_t>(size) > bytes.size())
        return "(beyond the buffer view)";
      text += (text.empty() ? "" : " ") + FormatNumber(LoadNumber(bytes.data() + offset, componentType));
    }
  }
  return text;
}

std::string DecodeUri(std::string_view uri)
{
  const std::string_view text = uri.substr(uri.find(',') + 1);
  HeadlessBase64Decoder decoder;
  const Result<BaseArray<Byte>> bytes = decoder.Decode(String(text.data(), static_cast<Int>(text.size())));
  if (bytes.HasError())
    throw std::runtime_error("a URI is not in base64");
  return std::string(reinterpret_cast<const char*>(bytes.GetValue().begin()), static_cast<size_t>(bytes.GetValue().GetCount()));
}

SavedFile::SavedFile(std::string_view scene, const Parameters& parameters)
{
  const SaveFolder folder;
  const HeadlessOwner<HeadlessDocument> document = ReadScene(scene);
  const std::string before = WriteScene(*document);
  _report = folder.Save(_host, *document, parameters);
  _hasFile = folder.HasFile();
  if (WriteScene(*document) != before)
    throw std::runtime_error("the save has changed the document");
  if (_report.Succeeded())
    static_cast<SavedContent&>(*this) = SavedContent(folder.TakeBytes());
}

bool IsNear(std::string_view actual, std::string_view expected)
{
  while (!actual.empty() && !expected.empty())
  {
    const Piece a = TakePiece(actual);
    const Piece b = TakePiece(expected);
    const bool near = a.isNumber && b.isNumber
                        ? std::abs(a.number - b.number) <= 1e-6 * std::max(1.0, std::abs(b.number)) || a.text == b.text
                        : a.text == b.text;
    if (!near)
      return false;
  }
  return actual.empty() && expected.empty();
}

}  // namespace q7z::test
