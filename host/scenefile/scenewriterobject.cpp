// Objects with their transforms and geometry.

#include "host/scene/transformmath.h"
#include "host/scenefile/scenewriter.h"

namespace q7z
{

/// Walks the hierarchy of any depth without recursion: what is open closes when the walk goes up again.
void SceneWriter::WriteObjects()
{
  const HeadlessObject* object = _document.GetFirstObject();
  if (!object)
    return;
  _json.WriteKey("objects");
  _json.BeginArray();
  while (object)
  {
    _json.BeginObject();
    WriteObject(*object);
    if (const HeadlessObject* const child = object->GetDown())
    {
      _json.WriteKey("children");
      _json.BeginArray();
      object = child;
      continue;
    }
    _json.EndObject();
    while (object && !object->GetNext())
    {
      _json.EndArray();
      object = object->GetUp();
      if (object)
        _json.EndObject();
    }
    if (object)
      object = object->GetNext();
  }
}

/// All members but the children.
void SceneWriter::WriteObject(const HeadlessObject& object)
{
  WriteNextId();
  WriteIntMember("type", object.GetType());
  WriteName(object, true);
  WriteTransform(object);
  WriteObjectSettings(object);
  if (const HeadlessPolygonObject* const polygonObject = object.AsPolygonObject())
    WriteGeometry(*polygonObject);
  if (const Int reference = FindId(object.GetReference()))
    WriteIntMember("reference", reference);
  WriteTags(object);
  WriteTracks(*object.GetTracks());
}

namespace
{

const TransformVectors kDefaultVectors;

/// Whether the vectors are those that setting the matrix alone would give.
Bool FollowFromMatrix(const TransformVectors& vectors, const HeadlessObject& object) noexcept
{
  const BaseTransform base = object.GetBase();
  return vectors == DecomposeLocalMatrix(&base, object.GetLocalMatrix(), object.GetRotationOrder());
}

}  // namespace

void SceneWriter::WriteTransform(const HeadlessObject& object)
{
  const TransformVectors vectors = object.GetVectors();
  const BaseTransform base = object.GetBase();
  // A reader that finds the matrix alone takes the vectors from it.
  WriteVectors(vectors, vectors == kDefaultVectors && !FollowFromMatrix(vectors, object));
  if (object.GetRotationOrder() != kDefaultRotationOrder)
    WriteIntMember("rotationOrder", object.GetRotationOrder());
  if (!(base.matrix == HostMatrix()))
  {
    _json.WriteKey("base");
    WriteMatrix(base.matrix);
  }
  if (!(base.scale == kDefaultVectors.scale))
  {
    _json.WriteKey("baseScale");
    _json.WriteVector(base.scale);
  }
  _json.WriteKey("matrix");
  WriteMatrix(object.GetLocalMatrix());
}

void SceneWriter::WriteVectors(const TransformVectors& vectors, Bool evenDefaults)
{
  const auto write = [&](std::string_view name, const Vector& vector, const Vector& defaultVector)
  {
    if (!evenDefaults && vector == defaultVector)
      return;
    _json.WriteKey(name);
    _json.WriteVector(vector);
  };
  write("position", vectors.position, kDefaultVectors.position);
  write("rotation", vectors.rotation, kDefaultVectors.rotation);
  write("scale", vectors.scale, kDefaultVectors.scale);
}

void SceneWriter::WriteObjectSettings(const HeadlessObject& object)
{
  if (const Int32 editor = object.GetVisibility(kEditorVisibility))
    WriteIntMember("editor", editor);
  if (const Int32 render = object.GetVisibility(kRenderVisibility))
    WriteIntMember("render", render);
  if (const Int layer = FindId(object.GetLayer()))
    WriteIntMember("layer", layer);
  WriteTable("parameters", object.GetParameters());
}

void SceneWriter::WriteGeometry(const HeadlessPolygonObject& object)
{
  if (object.GetPointCount() > 0)
    WritePoints(object.GetPoints());
  if (object.GetPolygonCount() == 0)
    return;
  static_assert(sizeof(HostPolygon) == 4 * sizeof(Int32));
  _json.WriteKey("polygons");
  _json.WriteInts(&object.GetPolygons().GetR()->a, 4 * Int(object.GetPolygonCount()));
}

}  // namespace q7z
