#include "plugin/geometry/gltfmeshcreator.h"

#include "framework/check.h"

namespace q7z
{

namespace
{

/// A new tag on the object; an out-of-memory error when there is none.
template <typename Tag>
Result<Tag*> MakeSizedTag(HostPolygonObject& object, Int32 type, Int count) noexcept
{
  HostTag* tag = object.MakeTag(type, static_cast<Int32>(count));
  if (!tag)
    return Error::OutOfMemory();
  return static_cast<Tag*>(tag);
}

template <typename Tag>
void RemoveUnless(Bool written, Tag*& tag) noexcept
{
  if (written || !tag)
    return;
  tag->Remove();  // a host frees what stands nowhere
  HostNode::Free(tag);
  tag = nullptr;
}

}  // namespace

Result<void> MeshCreator::AllocatePolyAndTags(Int vertexCount, Int polyCount) noexcept
{
  CHECK_STATE(_options);
  if (vertexCount > INT32_MAX || polyCount > INT32_MAX)
    return Error::OutOfMemory();
  mesh.reset(HostPolygonObject::Alloc(static_cast<Int32>(vertexCount), sharesPolygons ? 0 : static_cast<Int32>(polyCount)));
  if (!mesh)
    return Error::OutOfMemory();
  cursorPoints = cursorPolygons = 0;
  normalTag = nullptr;
  uvTag = nullptr;
  colorTag = nullptr;
  normalsWritten = uvsWritten = colorsWritten = false;
  polygonSelections.Reset();

  if (attributes.normals && _options->GetNormals() == "vertex"_s)
  {
    ASSIGN_OR_RETURN(normalTag, MakeSizedTag<HostNormalTag>(*mesh, kNormalTagType, polyCount));
  }
  if (attributes.colors && _options->IsVertexColors())
  {
    ASSIGN_OR_RETURN(colorTag, MakeSizedTag<HostVertexColorTag>(*mesh, kVertexColorTagType, vertexCount));
  }
  if (attributes.uvs && _options->IsUvs())
  {
    ASSIGN_OR_RETURN(uvTag, MakeSizedTag<HostUvwTag>(*mesh, kUvwTagType, polyCount));
  }
  return {};
}

void MeshCreator::RemoveUnusedTags() noexcept
{
  RemoveUnless(normalsWritten, normalTag);
  RemoveUnless(uvsWritten, uvTag);
  RemoveUnless(colorsWritten, colorTag);
}

void MeshCreator::Advance(Int vertexCount, Int polyCount) noexcept
{
  cursorPoints += static_cast<Int32>(vertexCount);
  cursorPolygons += static_cast<Int32>(polyCount);
}

}  // namespace q7z
