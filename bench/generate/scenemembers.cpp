#include "bench/generate/scenemembers.h"

namespace q7z::generate
{

void AddSceneMembers(GltfFile& file, Int rootCount)
{
  file.AddMember("scene", [](JsonWriter& json) { json.Value(0); });
  file.AddMember("scenes",
                 [rootCount](JsonWriter& json)
                 {
                   json.BeginArray();
                   json.BeginObject();
                   json.Key("nodes");
                   json.BeginArray();
                   for (Int i = 0; i < rootCount; ++i)
                     json.Value(i);
                   json.EndArray();
                   json.EndObject();
                   json.EndArray();
                 });
}

void WriteMeshNodes(JsonWriter& json, const std::vector<std::string>& names)
{
  json.BeginArray();
  for (std::size_t i = 0; i < names.size(); ++i)
  {
    json.BeginObject();
    json.Member("name", names[i]);
    json.Member("mesh", static_cast<Int>(i));
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace q7z::generate
