#include "bench/generate/heightfield.h"
#include "bench/generate/inputs.h"
#include "bench/generate/scenemembers.h"

#include <string>
#include <vector>

namespace q7z::generate
{

namespace
{

constexpr Int kFewPatches = 4;

GltfFile FileOfMeshes(GltfFile file, std::vector<Primitive> primitives)
{
  std::vector<std::string> names;
  for (std::size_t i = 0; i < primitives.size(); ++i)
    names.push_back("Patch " + std::to_string(i));
  AddSceneMembers(file, static_cast<Int>(primitives.size()));
  file.AddMember("nodes", [names](JsonWriter& json) { WriteMeshNodes(json, names); });
  file.AddMember("meshes",
                 [names, primitives = std::move(primitives)](JsonWriter& json)
                 {
                   json.BeginArray();
                   for (std::size_t i = 0; i < primitives.size(); ++i)
                     WriteMesh(json, names[i], {&primitives[i], 1});
                   json.EndArray();
                 });
  return file;
}

GltfFile MakePatches(Int patchCount, Int side, UInt start)
{
  GltfFile file(kGenerator);
  std::vector<Primitive> primitives;
  for (Int i = 0; i < patchCount; ++i)
  {
    const Float x = 10 * static_cast<Float>(i);
    primitives.push_back(AddHeightfield(file, Heightfield(side, {x, 0, 0}, start + static_cast<UInt>(i)), false));
  }
  return FileOfMeshes(std::move(file), std::move(primitives));
}

}  // namespace

GltfFile MakeSmall(Int byteCount, FileForm form, UInt start)
{
  const auto fits = [=](Int side) { return FileSize(MakePatches(kFewPatches, side, start), form) <= byteCount; };
  if (!fits(2))
    return MakePatches(1, 2, start);
  Int side = 2;  // the largest one known to fit
  Int tooLarge = 4;
  for (; fits(tooLarge); tooLarge *= 2)
    side = tooLarge;
  while (tooLarge - side > 1)
  {
    const Int middle = (side + tooLarge) / 2;
    (fits(middle) ? side : tooLarge) = middle;
  }
  return MakePatches(kFewPatches, side, start);
}

}  // namespace q7z::generate
