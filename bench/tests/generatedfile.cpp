#include "bench/tests/generatedfile.h"

#include <cstring>
#include <stdexcept>

namespace q7z::generate
{

namespace
{

void Require(bool condition, const char* what)
{
  if (!condition)
    throw std::runtime_error(what);
}

UInt32 Word(std::string_view bytes, std::size_t offset)
{
  Require(offset + 4 <= bytes.size(), "the file ends within a word");
  UInt32 word = 0;
  std::memcpy(&word, bytes.data() + offset, sizeof(word));
  return word;
}

std::string DecodeBase64(std::string_view text)
{
  static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  Require(text.size() % 4 == 0, "base64 text of a broken length");
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  std::string bytes;
  UInt32 bits = 0;
  int bitCount = 0;
  for (const char digit : text.substr(0, text.size() - padding))
  {
    const std::size_t value = kDigits.find(digit);
    Require(value != std::string_view::npos, "a character that is not of base64");
    bits = bits << 6 | static_cast<UInt32>(value);
    bitCount += 6;
    if (bitCount >= 8)
    {
      bitCount -= 8;
      bytes.push_back(static_cast<char>(bits >> bitCount & 255));
    }
  }
  Require((bits & ((1u << bitCount) - 1)) == 0, "base64 bits beyond the last byte");
  return bytes;
}

Int ComponentSize(Int componentType)
{
  Require(componentType == 5123 || componentType == 5125 || componentType == 5126, "an unexpected component type");
  return componentType == 5123 ? 2 : 4;
}

Int ComponentCount(std::string_view type)
{
  return type == "SCALAR" ? 1 : type == "MAT4" ? 16 : type.back() - '0';
}

}  // namespace

GeneratedFile::GeneratedFile(const std::string& bytes)
{
  if (bytes.starts_with("glTF"))
    ReadGlb(bytes);
  else
  {
    static constexpr std::string_view kPrefix = "data:application/octet-stream;base64,";
    Parse(bytes);
    const std::string_view uri = _root["buffers"].at(0)["uri"];
    Require(uri.starts_with(kPrefix), "no data in the text");
    _buffer = DecodeBase64(uri.substr(kPrefix.size()));
    Require(static_cast<Int>(_buffer.size()) == Int(_root["buffers"].at(0)["byteLength"]), "data of another length");
  }
  CheckViews();
  CheckAccessors();
}

void GeneratedFile::ReadGlb(std::string_view bytes)
{
  Require(Word(bytes, 4) == 2, "not version 2");
  Require(Word(bytes, 8) == bytes.size(), "the header's length is not the file's");
  const UInt32 jsonLength = Word(bytes, 12);
  Require(jsonLength % 4 == 0 && Word(bytes, 16) == 0x4E4F534A, "no aligned JSON chunk");
  Parse(bytes.substr(20, jsonLength));
  const std::size_t binary = 20 + jsonLength;
  const UInt32 binaryLength = Word(bytes, binary);
  Require(binaryLength % 4 == 0 && Word(bytes, binary + 4) == 0x004E4942, "no aligned binary chunk");
  Require(binary + 8 + binaryLength == bytes.size(), "the binary chunk does not end with the file");
  const Int bufferLength = _root["buffers"].at(0)["byteLength"];
  Require(binaryLength - bufferLength >= 0 && binaryLength - bufferLength < 4, "a chunk that does not fit its buffer");
  Require(_root["buffers"].at(0)["uri"].error() == simdjson::NO_SUCH_FIELD, "a chunk and a uri");
  _buffer = bytes.substr(binary + 8, static_cast<std::size_t>(bufferLength));
}

void GeneratedFile::Parse(std::string_view json)
{
  _root = _parser.parse(json.data(), json.size());
  Require(std::string_view(_root["asset"]["version"]) == "2.0", "not version 2.0");
}

void GeneratedFile::CheckViews() const
{
  Int end = 0;
  for (const simdjson::dom::element view : _root["bufferViews"].get_array())
  {
    const Int offset = view["byteOffset"];
    Require(offset % 4 == 0 && offset >= end && offset < end + 4, "a view that does not follow the one before");
    end = offset + Int(view["byteLength"]);
  }
  Require(end == static_cast<Int>(_buffer.size()), "the last view does not end with the buffer");
}

void GeneratedFile::CheckAccessors() const
{
  for (const simdjson::dom::element accessor : _root["accessors"].get_array())
  {
    const Int size = ComponentSize(accessor["componentType"]) * ComponentCount(accessor["type"]) * Int(accessor["count"]);
    const UInt view = accessor["bufferView"];
    Require(size == Int(_root["bufferViews"].at(view)["byteLength"]), "an accessor that does not fit its view");
  }
}

Int GeneratedFile::GetCount(std::string_view array) const
{
  return static_cast<Int>(_root[array].get_array().size());
}

std::vector<Float> GeneratedFile::GetValues(Int accessor) const
{
  const simdjson::dom::element element = _root["accessors"].at(static_cast<std::size_t>(accessor));
  const simdjson::dom::element view = _root["bufferViews"].at(UInt(element["bufferView"]));
  const Int componentType = element["componentType"];
  const Int size = ComponentSize(componentType);
  const Int first = view["byteOffset"];
  const Int last = first + Int(view["byteLength"]);
  std::vector<Float> values;
  for (Int offset = first; offset < last; offset += size)
  {
    const char* const source = _buffer.data() + offset;
    UInt32 bits = 0;
    std::memcpy(&bits, source, static_cast<std::size_t>(size));
    Float32 number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    values.push_back(componentType == 5126 ? Float{number} : static_cast<Float>(bits));
  }
  return values;
}

}  // namespace q7z::generate
