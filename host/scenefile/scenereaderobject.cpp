// Objects with their transforms and geometry.

#include "host/scenefile/scenereader.h"

namespace q7z
{

/// Recursion goes as deep as the text may nest.
Result<void> SceneReader::ReadObjects(const JsonNode& list, HeadlessObject* parent)
{
  return ForEachNode(&list, [&](const JsonNode& node, Int) { return ReadObject(node, parent); });
}

Result<void> SceneReader::ReadObject(const JsonNode& node, HeadlessObject* parent)
{
  Int32 type = 0;
  RETURN_IF_ERROR(CheckObject(node));
  RETURN_IF_ERROR(RequireMember(node, "type", type));
  HeadlessObject* const object = HeadlessObject::Create(type);
  CHECK_MEMORY(object);
  if (parent)
    object->InsertUnderLast(parent);
  else
    _document->InsertObjectLast(object);
  RETURN_IF_ERROR(CheckObjectMembers(node, *object));
  RETURN_IF_ERROR(ReadId(node, *object));
  RETURN_IF_ERROR(ReadName(node, *object));
  RETURN_IF_ERROR(ReadTransform(node, *object));
  RETURN_IF_ERROR(ReadVisibility(node, *object));
  RETURN_IF_ERROR(ReadObjectLinks(node, *object));
  RETURN_IF_ERROR(ReadTableMember(node, "parameters", object->GetParameters()));
  if (object->IsPolygonObject())
    RETURN_IF_ERROR(ReadGeometry(node, *object->AsPolygonObject()));
  RETURN_IF_ERROR(ForEachNode(node.Find("tags"), [&](const JsonNode& tag, Int) { return ReadTag(tag, *object); }));
  RETURN_IF_ERROR(ReadTracks(node, *object));
  const JsonNode* const children = node.Find("children");
  return children ? ReadObjects(*children, object) : Result<void>();
}

Result<void> SceneReader::CheckObjectMembers(const JsonNode& node, const HeadlessObject& object)
{
  std::vector<std::string_view> names = {"id",    "type",      "name",   "position",      "rotation",  "scale",
                                         "base",  "baseScale", "matrix", "rotationOrder", "editor",    "render",
                                         "layer", "tags",      "tracks", "children",      "parameters"};
  if (object.IsPolygonObject())
    names.insert(names.end(), {"points", "polygons"});
  if (object.IsInstance())
    names.push_back("reference");
  return CheckMembers(node, "an object of type " + std::to_string(object.GetType()), names);
}

Result<void> SceneReader::ReadTransform(const JsonNode& node, HeadlessObject& object)
{
  const JsonNode* const order = node.Find("rotationOrder");
  Int32 rotationOrder = kDefaultRotationOrder;
  BaseTransform base;
  TransformVectors vectors;
  HostMatrix matrix;
  if (order)
    RETURN_IF_ERROR(ReadInt32InRange(*order, 0, kDefaultRotationOrder, rotationOrder));
  RETURN_IF_ERROR(ReadMember(node, "base", base.matrix));
  RETURN_IF_ERROR(ReadMember(node, "baseScale", base.scale));
  RETURN_IF_ERROR(ReadMember(node, "position", vectors.position));
  RETURN_IF_ERROR(ReadMember(node, "rotation", vectors.rotation));
  RETURN_IF_ERROR(ReadMember(node, "scale", vectors.scale));
  RETURN_IF_ERROR(ReadMember(node, "matrix", matrix));
  CHECK_MEMORY(object.SetRotationOrder(rotationOrder));
  CHECK_MEMORY(object.SetBase(base));
  const Bool hasVectors = node.Find("position") || node.Find("rotation") || node.Find("scale");
  if (!node.Find("matrix"))
    CHECK_MEMORY(object.SetVectors(vectors));
  else if (hasVectors)
    CHECK_MEMORY(object.SetVectorsAndMatrix(vectors, matrix));
  else
    object.SetLocalMatrix(matrix);  // alone it gives the vectors
  return {};
}

Result<void> SceneReader::ReadVisibility(const JsonNode& node, HeadlessObject& object)
{
  Int32 editor = 0;
  Int32 render = 0;
  RETURN_IF_ERROR(ReadMember(node, "editor", editor));
  RETURN_IF_ERROR(ReadMember(node, "render", render));
  object.SetVisibility(kEditorVisibility, editor);
  object.SetVisibility(kRenderVisibility, render);
  return {};
}

Result<void> SceneReader::ReadObjectLinks(const JsonNode& node, HeadlessObject& object)
{
  const JsonNode* const layer = node.Find("layer");
  const JsonNode* const reference = node.Find("reference");
  if (layer)
  {
    RETURN_IF_ERROR(ReadLink(*layer, LinkTarget::kLayer, [&object](HeadlessNamedNode* target)
                             { return object.SetLayer(static_cast<HeadlessLayer*>(target)); }));
  }
  if (!reference)
    return {};
  return ReadLink(*reference, LinkTarget::kObject,
                  [&object](HeadlessNamedNode* target) { return object.SetReference(static_cast<HeadlessObject*>(target)); });
}

// Geometry.

Result<void> SceneReader::ReadGeometry(const JsonNode& node, HeadlessPolygonObject& object)
{
  HostArray<Vector> points;
  HostArray<HostPolygon> polygons;
  if (const JsonNode* const array = node.Find("points"))
    RETURN_IF_ERROR(ReadPoints(*array, points));
  if (const JsonNode* const array = node.Find("polygons"))
    RETURN_IF_ERROR(ReadPolygons(*array, points.GetCount(), polygons));
  object.SetGeometry(std::move(points), std::move(polygons));
  return {};
}

Result<void> SceneReader::ReadPoints(const JsonNode& array, HostArray<Vector>& points)
{
  Int count = 0;
  RETURN_IF_ERROR(ReadGroupCount(array, 3, count));
  CHECK_MEMORY(points.Create(count));
  return count > 0 ? ReadNumbers(array, &points.GetW()->x) : Result<void>();
}

Result<void> SceneReader::ReadPolygons(const JsonNode& array, Int pointCount, HostArray<HostPolygon>& polygons)
{
  Int count = 0;
  RETURN_IF_ERROR(ReadGroupCount(array, 4, count));
  CHECK_MEMORY(polygons.Create(count));
  if (count == 0)
    return {};
  Int32* const target = &polygons.GetW()->a;
  for (Int i = 0; i < 4 * count; ++i)
  {
    const JsonNode element = array.GetElement(i);
    if (element.kind != JsonKind::kInt)
      return MakeElementKindError(array, i, "a whole number");
    if (element.whole < 0 || element.whole >= pointCount)
      return MakeIndexError(array, i, "point", pointCount);
    target[i] = static_cast<Int32>(element.whole);
  }
  return {};
}

}  // namespace q7z
