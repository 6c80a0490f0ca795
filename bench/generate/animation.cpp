#include "bench/generate/inputs.h"
#include "bench/generate/random.h"
#include "bench/generate/scenemembers.h"

#include <array>
#include <cmath>
#include <string>

namespace q7z::generate
{

namespace
{

constexpr Float kFramesPerSecond = 30;

struct Path
{
  const char* name;
  const char* type;
};
constexpr Path kPaths[] = {{"translation", "VEC3"}, {"rotation", "VEC4"}, {"scale", "VEC3"}};

void WriteTimes(ByteSink& target, Int keyCount)
{
  for (Int key = 0; key < keyCount; ++key)
    target.WriteValues(std::array{static_cast<Float32>(static_cast<Float>(key) / kFramesPerSecond)});
}

// A walk of small steps, as a recorded motion is.
template <std::size_t N>
void WriteWalk(ByteSink& target, Int keyCount, std::array<Float, N> place, Random random)
{
  for (Int key = 0; key < keyCount; ++key)
  {
    std::array<Float32, N> value;
    for (std::size_t i = 0; i < N; ++i)
    {
      place[i] += random.Next(-0.01, 0.01);
      value[i] = static_cast<Float32>(place[i]);
    }
    target.WriteValues(value);
  }
}

// Turns about an axis that stays, at a speed that does not.
void WriteTurns(ByteSink& target, Int keyCount, Random random)
{
  const Float slant = random.Next(-1, 1);
  Float halfAngle = random.Next(0, 3);
  for (Int key = 0; key < keyCount; ++key)
  {
    halfAngle += random.Next(0, 0.05);
    const Float sine = std::sin(halfAngle);
    target.WriteValues(std::array<Float32, 4>{static_cast<Float32>(sine * std::cos(slant)),
                                              static_cast<Float32>(sine * std::sin(slant)), 0,
                                              static_cast<Float32>(std::cos(halfAngle))});
  }
}

WriteBytes ValuesOf(std::size_t path, Int keyCount, UInt start)
{
  return [=](ByteSink& target)
  {
    const Random random(start);
    if (path == 1)
      WriteTurns(target, keyCount, random);
    else
      WriteWalk<3>(target, keyCount, path == 0 ? std::array<Float, 3>{0, 0, 0} : std::array<Float, 3>{1, 1, 1}, random);
  };
}

struct Curve
{
  Int node = 0;
  const char* path = "";
  Int times = 0;  // accessors
  Int values = 0;
};

void WriteMotion(JsonWriter& json, const std::vector<Curve>& curves)
{
  const auto curve = [&](Int i) -> const Curve& { return curves[static_cast<std::size_t>(i)]; };
  const Int count = static_cast<Int>(curves.size());
  json.Member("name", "Motion");
  json.Key("channels");
  WriteObjects(json, count,
               [&](Int i)
               {
                 json.Member("sampler", i);
                 json.Key("target");
                 json.BeginObject();
                 json.Member("node", curve(i).node);
                 json.Member("path", curve(i).path);
                 json.EndObject();
               });
  json.Key("samplers");
  WriteObjects(json, count,
               [&](Int i)
               {
                 json.Member("input", curve(i).times);
                 json.Member("interpolation", "LINEAR");
                 json.Member("output", curve(i).values);
               });
}

}  // namespace

GltfFile MakeAnimation(Int nodeCount, Int keyCount, UInt start)
{
  GltfFile file(kGenerator);
  std::vector<Curve> curves;
  Random starts(start);
  for (Int node = 0; node < nodeCount; ++node)
  {
    const Int times = file.AddAccessor({.type = "SCALAR",
                                        .count = keyCount,
                                        .target = ViewTarget::kNone,
                                        .bounds = true,
                                        .write = [keyCount](ByteSink& target) { WriteTimes(target, keyCount); }});
    for (std::size_t path = 0; path < std::size(kPaths); ++path)
    {
      const Int values = file.AddAccessor({.type = kPaths[path].type,
                                           .count = keyCount,
                                           .target = ViewTarget::kNone,
                                           .write = ValuesOf(path, keyCount, starts.NextBits())});
      curves.push_back({node, kPaths[path].name, times, values});
    }
  }
  AddSceneMembers(file, nodeCount);
  AddMesh(file, "Quad", {AddQuad(file, 0)});
  const auto writeNodes = [=](JsonWriter& json)
  {
    WriteObjects(json, nodeCount,
                 [&](Int i)
                 {
                   json.Member("name", "Node " + std::to_string(i));
                   json.Member("mesh", 0);
                 });
  };
  file.AddMember("nodes", writeNodes);
  file.AddMember("animations", [curves = std::move(curves)](JsonWriter& json)
                 { WriteObjects(json, 1, [&](Int) { WriteMotion(json, curves); }); });
  return file;
}

}  // namespace q7z::generate
