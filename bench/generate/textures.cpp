// Materials with textures: half of them easy to pack, half of them not at all.

#include "bench/generate/inputs.h"
#include "bench/generate/random.h"
#include "bench/generate/scenemembers.h"
#include "samples/generate/primitive.h"
#include "samples/generate/waves.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <spng.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace q7z::generate
{

namespace
{

constexpr std::size_t kChannels = 3;

std::vector<Byte> SmoothPixels(Int side, Random& random)
{
  std::array<Float, kChannels> phases;
  for (Float& phase : phases)
    phase = random.Next(0, 1);
  std::vector<Byte> pixels;
  pixels.reserve(static_cast<std::size_t>(side * side) * kChannels);
  for (Int y = 0; y < side; ++y)
  {
    for (Int x = 0; x < side; ++x)
    {
      for (const Float phase : phases)
      {
        const Float place = static_cast<Float>(x + 2 * y) / static_cast<Float>(side);
        pixels.push_back(static_cast<Byte>(127.5 + 127 * SineOfTurns(place / 3 + phase)));
      }
    }
  }
  return pixels;
}

std::vector<Byte> NoisyPixels(Int side, Random& random)
{
  std::vector<Byte> pixels(static_cast<std::size_t>(side * side) * kChannels);
  std::generate(pixels.begin(), pixels.end(), [&random]() { return static_cast<Byte>(random.NextBits() >> 56); });
  return pixels;
}

std::string PackPng(const std::vector<Byte>& pixels, Int side)
{
  const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> encoder(spng_ctx_new(SPNG_CTX_ENCODER), spng_ctx_free);
  if (!encoder)
    throw std::bad_alloc();
  spng_ihdr header = {};
  header.width = header.height = static_cast<std::uint32_t>(side);
  header.bit_depth = 8;
  header.color_type = SPNG_COLOR_TYPE_TRUECOLOR;
  spng_set_option(encoder.get(), SPNG_ENCODE_TO_BUFFER, 1);
  spng_set_ihdr(encoder.get(), &header);
  int status = spng_encode_image(encoder.get(), pixels.data(), pixels.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
  std::size_t byteCount = 0;
  const std::unique_ptr<void, void (*)(void*)> bytes(status ? nullptr : spng_get_png_buffer(encoder.get(), &byteCount, &status),
                                                     std::free);
  if (!bytes)
    throw std::runtime_error(spng_strerror(status));
  return std::string(static_cast<const char*>(bytes.get()), byteCount);
}

std::string MakePng(Int number, Int side, UInt start)
{
  Random random(start + static_cast<UInt>(number));
  return PackPng(number % 2 ? NoisyPixels(side, random) : SmoothPixels(side, random), side);
}

}  // namespace

GltfFile MakeTextures(Int materialCount, Int side, UInt start)
{
  GltfFile file(kGenerator);
  std::vector<Primitive> primitives;
  std::vector<Int> views;
  for (Int i = 0; i < materialCount; ++i)
  {
    primitives.push_back(AddQuad(file, static_cast<Float32>(i)));
    primitives.back().material = i;
    const auto png = std::make_shared<const std::string>(MakePng(i, side, start));
    views.push_back(file.AddView(static_cast<Int>(png->size()), [png](ByteSink& target) { target.WriteText(*png); }));
  }
  AddSceneMembers(file, 1);
  file.AddMember("nodes", [](JsonWriter& json) { WriteMeshNodes(json, {"Quads"}); });
  AddMesh(file, "Quads", primitives);
  file.AddMember("materials",
                 [=](JsonWriter& json)
                 {
                   WriteObjects(json, materialCount,
                                [&](Int i)
                                {
                                  json.Member("name", "Material " + std::to_string(i));
                                  json.Key("pbrMetallicRoughness");
                                  json.BeginObject();
                                  json.Key("baseColorTexture");
                                  json.BeginObject();
                                  json.Member("index", i);
                                  json.EndObject();
                                  json.EndObject();
                                });
                 });
  file.AddMember("textures",
                 [=](JsonWriter& json) { WriteObjects(json, materialCount, [&](Int i) { json.Member("source", i); }); });
  file.AddMember("images",
                 [views](JsonWriter& json)
                 {
                   WriteObjects(json, static_cast<Int>(views.size()),
                                [&](Int i)
                                {
                                  json.Member("bufferView", views[static_cast<std::size_t>(i)]);
                                  json.Member("mimeType", "image/png");
                                });
                 });
  return file;
}

}  // namespace q7z::generate
