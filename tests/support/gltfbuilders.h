#pragma once

// Builders of small files, for tests and fuzzers: GltfJson writes a glTF text whose accessors are given as plain numbers, and
// GlbBuilder puts chunks into a container, right or wrong. Each shows in a test only what the test is about.

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace q7z::test
{

using Bytes = std::vector<uint8_t>;

inline Bytes ToBytes(std::string_view text)
{
  return Bytes(text.begin(), text.end());
}

inline std::string ToText(const Bytes& bytes)
{
  return std::string(bytes.begin(), bytes.end());
}

/// Standard base64 with padding.
inline std::string EncodeBase64(const Bytes& bytes)
{
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3)
  {
    const size_t left = bytes.size() - i;
    const uint32_t word = uint32_t(bytes[i]) << 16 | (left > 1 ? uint32_t(bytes[i + 1]) << 8 : 0) | (left > 2 ? bytes[i + 2] : 0);
    text += kAlphabet[word >> 18];
    text += kAlphabet[word >> 12 & 63];
    text += left > 1 ? kAlphabet[word >> 6 & 63] : '=';
    text += left > 2 ? kAlphabet[word & 63] : '=';
  }
  return text;
}

inline std::string DataUri(const Bytes& bytes)
{
  return "data:application/octet-stream;base64," + EncodeBase64(bytes);
}

/// A GLB container: the header, then chunks in the order of the calls. Nothing is padded that was not asked for.
class GlbBuilder
{
public:
  static constexpr uint32_t kJson = 0x4E4F534A;
  static constexpr uint32_t kBin = 0x004E4942;

  GlbBuilder& Json(std::string_view text) { return Chunk(kJson, ToBytes(text)); }
  /// Padded with blanks to a multiple of four, as writers do.
  GlbBuilder& PaddedJson(std::string text) { return Json(text.append((4 - text.size() % 4) % 4, ' ')); }
  GlbBuilder& Bin(const Bytes& bytes) { return Chunk(kBin, bytes); }
  GlbBuilder& Chunk(uint32_t type, const Bytes& bytes) { return ChunkOfLength(type, static_cast<uint32_t>(bytes.size()), bytes); }
  /// A chunk that claims a length of its own.
  GlbBuilder& ChunkOfLength(uint32_t type, uint32_t length, const Bytes& bytes) { return Word(length).Word(type).Raw(bytes); }
  GlbBuilder& Word(uint32_t word)
  {
    Put(_body, word);
    return *this;
  }
  GlbBuilder& Raw(const Bytes& bytes)
  {
    _body.insert(_body.end(), bytes.begin(), bytes.end());
    return *this;
  }

  /// The file, with the length that it has in its header.
  Bytes File() const
  {
    Bytes file = ToBytes("glTF");
    Put(file, 2);
    Put(file, static_cast<uint32_t>(12 + _body.size()));
    file.insert(file.end(), _body.begin(), _body.end());
    return file;
  }

private:
  static void Put(Bytes& target, uint32_t word)
  {
    for (int shift = 0; shift < 32; shift += 8)
      target.push_back(static_cast<uint8_t>(word >> shift));
  }
  Bytes _body;
};

/// A glTF document. Elements are JSON texts; numbers go into one buffer, which Text() writes as a data URI and Glb() as the binary
/// chunk.
class GltfJson
{
public:
  /// An element at the end of a top-level array. @return its index.
  int Add(const std::string& array, const std::string& element)
  {
    Array& target = _arrays[array];
    target.text += (target.count ? "," : "") + element;
    return target.count++;
  }

  /// A top-level member that is no array of elements.
  GltfJson& Member(const std::string& name, const std::string& value)
  {
    _members += ",\"" + name + "\":" + value;
    return *this;
  }

  /// An accessor over a view of its own. @param more  further members of the accessor. @return its index.
  template <typename T>
  int Values(const std::vector<T>& values, int componentType, const std::string& type, const std::string& more = "")
  {
    const size_t offset = _bytes.size();
    _bytes.resize(offset + values.size() * sizeof(T));
    if (!values.empty())
      std::memcpy(_bytes.data() + offset, values.data(), values.size() * sizeof(T));
    const int view = Add("bufferViews", R"({"buffer":0,"byteOffset":)" + std::to_string(offset) + R"(,"byteLength":)" +
                                          std::to_string(values.size() * sizeof(T)) + "}");
    return Add("accessors", R"({"bufferView":)" + std::to_string(view) + R"(,"componentType":)" + std::to_string(componentType) +
                              R"(,"type":")" + type + R"(","count":)" + std::to_string(values.size() / CountComponents(type)) +
                              (more.empty() ? "" : "," + more) + "}");
  }
  /// The same with numbers that become the component type: 5120, 5121, 5123, or floats.
  int Numbers(const std::vector<float>& numbers, int componentType, const std::string& type, const std::string& more = "")
  {
    switch (componentType)
    {
      case 5120: return Values(std::vector<int8_t>(numbers.begin(), numbers.end()), componentType, type, more);
      case 5121: return Values(std::vector<uint8_t>(numbers.begin(), numbers.end()), componentType, type, more);
      case 5123: return Values(std::vector<uint16_t>(numbers.begin(), numbers.end()), componentType, type, more);
      default: return Values(numbers, componentType, type, more);
    }
  }
  int Floats(const std::vector<float>& values, const std::string& type) { return Values(values, 5126, type); }
  int Indices(const std::vector<uint16_t>& values) { return Values(values, 5123, "SCALAR"); }

  const Bytes& Buffer() const { return _bytes; }
  std::string Text() const { return Write(_bytes.empty() ? "" : R"(,"uri":")" + DataUri(_bytes) + "\""); }
  Bytes Glb() const
  {
    GlbBuilder builder;
    builder.PaddedJson(Write(""));
    if (!_bytes.empty())
      builder.Bin(_bytes);
    return builder.File();
  }

  static size_t CountComponents(const std::string& type)
  {
    static const std::map<std::string, size_t> kCounts = {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4},
                                                          {"MAT2", 4},   {"MAT3", 9}, {"MAT4", 16}};
    const auto found = kCounts.find(type);
    return found == kCounts.end() ? 1 : found->second;
  }

private:
  struct Array
  {
    std::string text;
    int count = 0;
  };

  std::string Write(const std::string& uri) const
  {
    std::string text = R"({"asset":{"version":"2.0"})" + _members;
    for (const auto& [name, array] : _arrays)
      text += ",\"" + name + "\":[" + array.text + "]";
    if (!_bytes.empty())
      text += R"(,"buffers":[{"byteLength":)" + std::to_string(_bytes.size()) + uri + "}]";
    return text + "}";
  }

  std::map<std::string, Array> _arrays;
  std::string _members;
  Bytes _bytes;
};

}  // namespace q7z::test
