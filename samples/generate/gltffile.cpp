#include "samples/generate/gltffile.h"

#include <array>
#include <stdexcept>

namespace q7z::generate
{

namespace
{

constexpr UInt32 kGlbMagic = 0x46546C67;
constexpr UInt32 kJsonChunk = 0x4E4F534A;
constexpr UInt32 kBinaryChunk = 0x004E4942;

Int ComponentSize(ComponentType type)
{
  switch (type)
  {
    case ComponentType::kByte:
    case ComponentType::kUnsignedByte: return 1;
    case ComponentType::kShort:
    case ComponentType::kUnsignedShort: return 2;
    case ComponentType::kUnsignedInt:
    case ComponentType::kFloat: return 4;
  }
  throw std::logic_error("no such component type");
}

Int ComponentCount(std::string_view type)
{
  struct Shape
  {
    std::string_view name;
    Int components;
  };
  static constexpr Shape kShapes[] = {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
  for (const Shape& shape : kShapes)
  {
    if (shape.name == type)
      return shape.components;
  }
  throw std::logic_error("no such shape");
}

Int Padding(Int byteCount)
{
  return (4 - byteCount % 4) % 4;
}

UInt32 Length32(Int byteCount)
{
  if (byteCount > Int{0xFFFFFFFF})
    throw std::length_error("more bytes than a GLB file can hold");
  return static_cast<UInt32>(byteCount);
}

// Passes bytes on and counts them, so that a content of another length than was told cannot go unseen.
class PassingSink final : public ByteSink
{
public:
  explicit PassingSink(ByteSink& target) : _target(target) {}
  void Write(const void* bytes, std::size_t byteCount) override
  {
    _target.Write(bytes, byteCount);
    _byteCount += static_cast<Int>(byteCount);
  }
  Int GetByteCount() const { return _byteCount; }

private:
  ByteSink& _target;
  Int _byteCount = 0;
};

}  // namespace

Int GltfFile::AddView(Int byteCount, WriteBytes write)
{
  const Int offset = _bufferLength + Padding(_bufferLength);
  _views.push_back({.byteOffset = offset, .byteCount = byteCount, .write = std::move(write)});
  _bufferLength = offset + byteCount;
  return static_cast<Int>(_views.size()) - 1;
}

Int GltfFile::AddAccessor(AccessorContent content)
{
  const Int components = ComponentCount(content.type);
  Accessor accessor;
  if (content.bounds)
  {
    BoundsSink bounds(components);
    content.write(bounds);
    accessor.min = bounds.GetMin();
    accessor.max = bounds.GetMax();
  }
  accessor.view = AddView(content.count * components * ComponentSize(content.componentType), content.write);
  _views.back().target = content.target;
  accessor.content = std::move(content);
  _accessors.push_back(std::move(accessor));
  return static_cast<Int>(_accessors.size()) - 1;
}

void GltfFile::AddMember(std::string key, WriteJson writeValue)
{
  _members.push_back({std::move(key), std::move(writeValue)});
}

void GltfFile::WriteBuffer(ByteSink& target) const
{
  static constexpr std::array<Byte, 4> kZeros{};
  PassingSink buffer(target);
  for (const View& view : _views)
  {
    buffer.Write(kZeros.data(), static_cast<std::size_t>(view.byteOffset - buffer.GetByteCount()));
    view.write(buffer);
    if (buffer.GetByteCount() != view.byteOffset + view.byteCount)
      throw std::logic_error("a content has another length than was told");
  }
}

void GltfFile::WriteAccessors(JsonWriter& json) const
{
  json.BeginArray();
  for (const Accessor& accessor : _accessors)
  {
    json.BeginObject();
    json.Member("bufferView", accessor.view);
    json.Member("componentType", static_cast<Int>(accessor.content.componentType));
    json.Member("count", accessor.content.count);
    json.Member("type", accessor.content.type);
    if (accessor.content.normalized)
      json.Member("normalized", true);
    if (accessor.content.bounds)
    {
      json.Member("min", accessor.min);
      json.Member("max", accessor.max);
    }
    json.EndObject();
  }
  json.EndArray();
}

void GltfFile::WriteViews(JsonWriter& json) const
{
  json.BeginArray();
  for (const View& view : _views)
  {
    json.BeginObject();
    json.Member("buffer", 0);
    json.Member("byteOffset", view.byteOffset);
    json.Member("byteLength", view.byteCount);
    if (view.target != ViewTarget::kNone)
      json.Member("target", static_cast<Int>(view.target));
    json.EndObject();
  }
  json.EndArray();
}

void GltfFile::WriteBufferMember(JsonWriter& json, FileForm form) const
{
  json.BeginArray();
  json.BeginObject();
  json.Member("byteLength", _bufferLength);
  if (form == FileForm::kGltf)
  {
    json.Key("uri");
    json.LongValue(
      [this](ByteSink& text)
      {
        text.WriteText("data:application/octet-stream;base64,");
        Base64Sink base64(text);
        WriteBuffer(base64);
        base64.Finish();
      });
  }
  json.EndObject();
  json.EndArray();
}

void GltfFile::WriteDocument(ByteSink& target, FileForm form, Int lineDepth) const
{
  JsonWriter json(target, lineDepth);
  json.BeginObject();
  json.Key("asset");
  json.BeginObject();
  json.Member("version", "2.0");
  json.Member("generator", _generator);
  json.EndObject();
  for (const Member& member : _members)
  {
    json.Key(member.key);
    member.write(json);
  }
  // Empty arrays are not allowed.
  if (!_accessors.empty())
  {
    json.Key("accessors");
    WriteAccessors(json);
  }
  if (!_views.empty())
  {
    json.Key("bufferViews");
    WriteViews(json);
    json.Key("buffers");
    WriteBufferMember(json, form);
  }
  json.EndObject();
}

void GltfFile::WriteGlb(ByteSink& target, Int lineDepth) const
{
  CountingSink document;
  WriteDocument(document, FileForm::kGlb, lineDepth);
  const Int documentLength = document.GetByteCount() + Padding(document.GetByteCount());
  const Int binaryLength = _bufferLength + Padding(_bufferLength);
  const Int fileLength = 12 + 8 + documentLength + (_views.empty() ? 0 : 8 + binaryLength);

  target.WriteValues(std::array<UInt32, 3>{kGlbMagic, 2, Length32(fileLength)});
  target.WriteValues(std::array<UInt32, 2>{Length32(documentLength), kJsonChunk});
  WriteDocument(target, FileForm::kGlb, lineDepth);
  target.Write("   ", static_cast<std::size_t>(documentLength - document.GetByteCount()));
  if (_views.empty())
    return;
  target.WriteValues(std::array<UInt32, 2>{Length32(binaryLength), kBinaryChunk});
  WriteBuffer(target);
  target.Write("\0\0\0", static_cast<std::size_t>(binaryLength - _bufferLength));
}

void GltfFile::Write(ByteSink& target, FileForm form, Int lineDepth) const
{
  if (form == FileForm::kGlb)
    WriteGlb(target, lineDepth);
  else
    WriteDocument(target, form, lineDepth);
}

std::string FileBytes(const GltfFile& file, FileForm form, Int lineDepth)
{
  MemorySink memory;
  file.Write(memory, form, lineDepth);
  return memory.TakeBytes();
}

Int FileSize(const GltfFile& file, FileForm form)
{
  CountingSink size;
  file.Write(size, form);
  return size.GetByteCount();
}

FileForm FormOfPath(std::string_view path)
{
  return path.ends_with(".glb") ? FileForm::kGlb : FileForm::kGltf;
}

}  // namespace q7z::generate
