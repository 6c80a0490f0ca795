// peer_tinygltf [--time] [--arrays] IN [OUT]: tinygltf's load, without decoding images; with --arrays followed by loops that fill
// what a host would hold; with OUT by its own writing.

#include "bench/peers/hostarrays.h"
#include "bench/peers/peer.h"

#include <tiny_gltf.h>

namespace
{

bool SkipImage(tinygltf::Image* /*image*/, int /*index*/, std::string* /*error*/, std::string* /*warning*/, int /*width*/,
               int /*height*/, const unsigned char* /*bytes*/, int /*size*/, void* /*data*/)
{
  return true;
}

std::string Load(const std::string& path, tinygltf::Model& model)
{
  tinygltf::TinyGLTF loader;
  loader.SetImageLoader(SkipImage, nullptr);
  std::string error;
  std::string warning;
  const bool loaded = path.ends_with(".glb") ? loader.LoadBinaryFromFile(&model, &error, &warning, path)
                                             : loader.LoadASCIIFromFile(&model, &error, &warning, path);
  if (!loaded && error.empty())
    return "not loaded";
  return loaded ? std::string() : error;
}

std::string Write(tinygltf::Model& model, const std::string& path)
{
  tinygltf::TinyGLTF writer;
  const bool isBinary = path.ends_with(".glb");
  return writer.WriteGltfSceneToFile(&model, path, true, true, !isBinary, isBinary) ? "" : "not written";
}

}  // namespace

int main(int argc, char** argv)
{
  q7z::peers::Arguments arguments;
  if (!q7z::peers::ReadArguments(argc, argv, true, arguments))
    return 2;
  tinygltf::Model model;
  q7z::peers::HostScene scene;
  const auto load = [&]()
  {
    std::string failure = Load(arguments.path, model);
    if (failure.empty() && arguments.arrays)
      scene = q7z::peers::FillHostArrays(model);
    if (failure.empty() && !arguments.out.empty())
      failure = Write(model, arguments.out);
    return failure;
  };
  return q7z::peers::TimeLoad(arguments, load);
}
