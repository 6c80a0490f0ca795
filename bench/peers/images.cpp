// peer_images [--time] IN: the least that new PNG images cost: those of a file are unpacked and packed again by the library alone,
// with its usual settings, on all cores. Nothing is written.

#include "bench/peers/peer.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <spng.h>
#include <thread>
#include <tiny_gltf.h>
#include <vector>

namespace
{

using Context = std::unique_ptr<spng_ctx, void (*)(spng_ctx*)>;
using Bytes = std::vector<unsigned char>;

bool KeepBytes(tinygltf::Image* /*image*/, int /*index*/, std::string* /*error*/, std::string* /*warning*/, int /*width*/,
               int /*height*/, const unsigned char* bytes, int size, void* images)
{
  static_cast<std::vector<Bytes>*>(images)->emplace_back(bytes, bytes + size);
  return true;
}

bool PackAgain(const Bytes& png)
{
  const Context decoder(spng_ctx_new(0), spng_ctx_free);
  spng_set_png_buffer(decoder.get(), png.data(), png.size());
  spng_ihdr header;
  std::size_t byteCount = 0;
  if (spng_get_ihdr(decoder.get(), &header) || spng_decoded_image_size(decoder.get(), SPNG_FMT_PNG, &byteCount))
    return false;
  Bytes pixels(byteCount);
  if (spng_decode_image(decoder.get(), pixels.data(), byteCount, SPNG_FMT_PNG, 0))
    return false;
  const Context encoder(spng_ctx_new(SPNG_CTX_ENCODER), spng_ctx_free);
  spng_set_option(encoder.get(), SPNG_ENCODE_TO_BUFFER, 1);
  spng_set_ihdr(encoder.get(), &header);
  if (spng_encode_image(encoder.get(), pixels.data(), byteCount, SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE))
    return false;
  int status = 0;
  const std::unique_ptr<void, void (*)(void*)> packed(spng_get_png_buffer(encoder.get(), &byteCount, &status), std::free);
  return packed != nullptr;
}

std::string PackAll(const std::vector<Bytes>& images)
{
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> failed = false;
  std::vector<std::jthread> workers;
  for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
  {
    workers.emplace_back(
      [&]()
      {
        for (std::size_t image = next++; image < images.size(); image = next++)
        {
          if (!PackAgain(images[image]))
            failed = true;
        }
      });
  }
  workers.clear();
  return failed ? "an image is no PNG" : "";
}

}  // namespace

int main(int argc, char** argv)
{
  q7z::peers::Arguments arguments;
  if (!q7z::peers::ReadArguments(argc, argv, false, arguments))
    return 2;
  const auto load = [&]() -> std::string
  {
    tinygltf::TinyGLTF loader;
    tinygltf::Model model;
    std::vector<Bytes> images;
    std::string error;
    std::string warning;
    loader.SetImageLoader(KeepBytes, &images);
    if (!loader.LoadBinaryFromFile(&model, &error, &warning, arguments.path))
      return error.empty() ? "not loaded" : error;
    return PackAll(images);
  };
  return q7z::peers::TimeLoad(arguments, load);
}
