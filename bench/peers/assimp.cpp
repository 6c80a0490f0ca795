// peer_assimp [--time] IN: assimp's import, without post-processing.

#include "bench/peers/peer.h"

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
    if (importer.ReadFile(arguments.path, 0) != nullptr)
      return {};
    const std::string text = importer.GetErrorString();
    return text.empty() ? "not loaded" : text;
  };
  return q7z::peers::TimeLoad(arguments, load);
}
