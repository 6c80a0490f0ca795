#include "samples/generate/primitive.h"

namespace q7z::generate
{

namespace
{

void WriteTargets(JsonWriter& json, const std::vector<Int>& targets)
{
  json.Key("targets");
  json.BeginArray();
  for (const Int positions : targets)
  {
    json.BeginObject();
    json.Member("POSITION", positions);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

void Primitive::Write(JsonWriter& json) const
{
  struct Attribute
  {
    const char* name;
    Int accessor;
  };
  const Attribute attributes[] = {{"POSITION", positions}, {"NORMAL", normals},  {"TEXCOORD_0", uvs},
                                  {"COLOR_0", colors},     {"JOINTS_0", joints}, {"WEIGHTS_0", weights}};
  json.BeginObject();
  json.Key("attributes");
  json.BeginObject();
  for (const Attribute& attribute : attributes)
  {
    if (attribute.accessor >= 0)
      json.Member(attribute.name, attribute.accessor);
  }
  json.EndObject();
  if (indices >= 0)
    json.Member("indices", indices);
  if (material >= 0)
    json.Member("material", material);
  if (!targets.empty())
    WriteTargets(json, targets);
  json.EndObject();
}

void WriteMesh(JsonWriter& json, std::string_view name, std::span<const Primitive> primitives)
{
  json.BeginObject();
  if (!name.empty())
    json.Member("name", name);
  json.Key("primitives");
  json.BeginArray();
  for (const Primitive& primitive : primitives)
    primitive.Write(json);
  json.EndArray();
  json.EndObject();
}

}  // namespace q7z::generate
