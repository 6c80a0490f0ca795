#pragma once

// A glTF 2.0 file in the making: accessors whose contents are callbacks, and top-level members of JSON. It is written in either
// form without its contents ever lying in memory, which is why callbacks are called more than once and must give the same each
// time. Used by the generators of the samples and of the benchmark inputs; an object lives until its file is written.

#include "samples/generate/bytesink.h"
#include "samples/generate/jsonwriter.h"

#include <functional>
#include <string>
#include <vector>

namespace q7z::generate
{

enum class FileForm
{
  kGltf,  // text, the buffer in it as base64
  kGlb
};

enum class ComponentType : Int
{
  kByte = 5120,
  kUnsignedByte = 5121,
  kShort = 5122,
  kUnsignedShort = 5123,
  kUnsignedInt = 5125,
  kFloat = 5126
};

enum class ViewTarget : Int
{
  kNone = 0,
  kVertices = 34962,
  kIndices = 34963
};

using WriteBytes = std::function<void(ByteSink&)>;
using WriteJson = std::function<void(JsonWriter&)>;

struct AccessorContent
{
  ComponentType componentType = ComponentType::kFloat;
  std::string type = "VEC3";  // an element's shape, as the file tells it
  Int count = 0;              // elements
  ViewTarget target = ViewTarget::kVertices;
  Bool normalized = false;
  Bool bounds = false;  // told with min and max; for floats only
  WriteBytes write;     // exactly count elements without gaps, in writes that cut no value
};

class GltfFile
{
public:
  explicit GltfFile(std::string generator) : _generator(std::move(generator)) {}

  /// Adds an accessor with a view of its own, aligned to four bytes. Asks for the content once if bounds are wanted.
  /// @return the accessor's index
  Int AddAccessor(AccessorContent content);

  /// Adds bytes that no accessor reads, such as an image. @return the view's index
  Int AddView(Int byteCount, WriteBytes write);

  /// Adds a top-level member; the callback writes its value. Members stand in the order in which they came, before accessors,
  /// views and the buffer, which the file writes itself.
  void AddMember(std::string key, WriteJson writeValue);

  /// Writes the file. lineDepth breaks lines in the JSON of either form, as the JSON writer tells.
  void Write(ByteSink& target, FileForm form, Int lineDepth = 0) const;

private:
  struct View
  {
    Int byteOffset = 0;
    Int byteCount = 0;
    ViewTarget target = ViewTarget::kNone;
    WriteBytes write;
  };
  struct Accessor
  {
    AccessorContent content;
    Int view = 0;  // index into _views
    std::vector<Float32> min;
    std::vector<Float32> max;
  };
  struct Member
  {
    std::string key;
    WriteJson write;
  };

  void WriteBuffer(ByteSink& target) const;
  void WriteDocument(ByteSink& target, FileForm form, Int lineDepth) const;
  void WriteAccessors(JsonWriter& json) const;
  void WriteViews(JsonWriter& json) const;
  void WriteBufferMember(JsonWriter& json, FileForm form) const;
  void WriteGlb(ByteSink& target, Int lineDepth) const;

  std::string _generator;
  std::vector<View> _views;
  std::vector<Accessor> _accessors;
  std::vector<Member> _members;
  Int _bufferLength = 0;
};

/// What Write() would write, in memory.
std::string FileBytes(const GltfFile& file, FileForm form, Int lineDepth = 0);

/// The number of bytes that Write() would write.
Int FileSize(const GltfFile& file, FileForm form);

/// kGlb for a path that ends in ".glb", else kGltf.
FileForm FormOfPath(std::string_view path);

}  // namespace q7z::generate
