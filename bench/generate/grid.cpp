#include "bench/generate/heightfield.h"
#include "bench/generate/inputs.h"
#include "bench/generate/scenemembers.h"

namespace q7z::generate
{

GltfFile MakeGrid(Int side, UInt start)
{
  GltfFile file(kGenerator);
  const Primitive primitive = AddHeightfield(file, Heightfield(side, {0, 0, 0}, start), true);
  AddSceneMembers(file, 1);
  file.AddMember("nodes", [](JsonWriter& json) { WriteMeshNodes(json, {"Grid"}); });
  file.AddMember("meshes",
                 [primitive](JsonWriter& json)
                 {
                   json.BeginArray();
                   WriteMesh(json, "Grid", {&primitive, 1});
                   json.EndArray();
                 });
  return file;
}

}  // namespace q7z::generate
