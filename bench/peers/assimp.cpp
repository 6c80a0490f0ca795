// peer_assimp [--time] IN [OUT]: assimp's import, without post-processing, and its export.

#include "bench/peers/peer.h"

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/scene.h>

int main(int argc, char** argv)
{
  q7z::peers::Arguments arguments;
  if (!q7z::peers::ReadArguments(argc, argv, false, arguments))
    return 2;
  Assimp::Importer importer;
  const auto load = [&]() -> std::string
  {
    const aiScene* const scene = importer.ReadFile(arguments.path, 0);
    if (scene == nullptr)
      return importer.GetErrorString()[0] != '\0' ? importer.GetErrorString() : "not loaded";
    if (arguments.out.empty())
      return {};
    Assimp::Exporter exporter;
    const char* const format = arguments.out.ends_with(".glb") ? "glb2" : "gltf2";
    return exporter.Export(scene, format, arguments.out, 0) == aiReturn_SUCCESS ? "" : "not written";
  };
  return q7z::peers::TimeLoad(arguments, load);
}
