#pragma once

// MeshFile: a small glTF text whose accessors are given as plain numbers, for tests of what a mesh becomes.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace q7z::test
{

class MeshFile
{
public:
  /// An accessor over its own view. @return its index.
  template <typename T>
  int Add(const std::vector<T>& values, int componentType, const std::string& type, bool normalized = false)
  {
    const size_t offset = _bytes.size();
    _bytes.resize(offset + values.size() * sizeof(T));
    if (!values.empty())
      std::memcpy(_bytes.data() + offset, values.data(), values.size() * sizeof(T));
    AddView(offset, values.size() * sizeof(T));
    const size_t components = type == "SCALAR" ? 1 : type == "VEC2" ? 2 : type == "VEC3" ? 3 : 4;
    AddAccessor(componentType, type, values.size() / components, normalized);
    return _accessorCount - 1;
  }
  int Floats(const std::vector<float>& values, const std::string& type) { return Add(values, 5126, type); }
  int Indices(const std::vector<uint16_t>& values) { return Add(values, 5123, "SCALAR"); }

  /// A primitive: attributes as JSON members, then further members.
  MeshFile& Primitive(const std::string& attributes, const std::string& rest = "")
  {
    _primitives += (_primitives.empty() ? "{\"attributes\":{" : ",{\"attributes\":{") + attributes + "}" +
                   (rest.empty() ? "" : "," + rest) + "}";
    return *this;
  }

  /// The whole file: one mesh of the primitives, one node unless others are given, one scene.
  std::string Json(const std::string& nodes = R"([{"name":"m","mesh":0}])", const std::string& more = "") const
  {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"name":"s","nodes":[0]}],"nodes":)" + nodes +
           R"(,"meshes":[{"primitives":[)" + _primitives + R"(]}],"accessors":[)" + _accessors + R"(],"bufferViews":[)" + _views +
           R"(],"buffers":[{"byteLength":)" + std::to_string(_bytes.size()) + R"(,"uri":"data:application/octet-stream;base64,)" +
           EncodeBase64() + "\"}]" + more + "}";
  }

private:
  void AddView(size_t offset, size_t length)
  {
    _views += std::string(_views.empty() ? "" : ",") + R"({"buffer":0,"byteOffset":)" + std::to_string(offset) +
              R"(,"byteLength":)" + std::to_string(length) + "}";
  }

  void AddAccessor(int componentType, const std::string& type, size_t count, bool normalized)
  {
    _accessors += std::string(_accessors.empty() ? "" : ",") + R"({"bufferView":)" + std::to_string(_accessorCount) +
                  R"(,"componentType":)" + std::to_string(componentType) + R"(,"type":")" + type + R"(","count":)" +
                  std::to_string(count) + (normalized ? R"(,"normalized":true})" : "}");
    ++_accessorCount;
  }

  std::string EncodeBase64() const
  {
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < _bytes.size(); i += 3)
    {
      const size_t left = _bytes.size() - i;
      const uint32_t word =
        uint32_t(_bytes[i]) << 16 | (left > 1 ? uint32_t(_bytes[i + 1]) << 8 : 0) | (left > 2 ? _bytes[i + 2] : 0);
      text += kAlphabet[word >> 18];
      text += kAlphabet[word >> 12 & 63];
      text += left > 1 ? kAlphabet[word >> 6 & 63] : '=';
      text += left > 2 ? kAlphabet[word & 63] : '=';
    }
    return text;
  }

  std::vector<uint8_t> _bytes;
  std::string _views;
  std::string _accessors;
  std::string _primitives;
  int _accessorCount = 0;
};

}  // namespace q7z::test
