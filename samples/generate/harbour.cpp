#include "samples/generate/harbour.h"

#include "samples/generate/graypng.h"
#include "samples/generate/solid.h"
#include "samples/generate/waves.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace q7z::generate
{

namespace
{

constexpr Color kDeepWater = {0.01f, 0.08f, 0.16f, 1};
constexpr Color kShallowWater = {0.05f, 0.28f, 0.32f, 1};
constexpr Color kSand = {0.62f, 0.5f, 0.3f, 1};
constexpr Color kGrass = {0.13f, 0.3f, 0.06f, 1};
constexpr Color kRock = {0.24f, 0.22f, 0.2f, 1};
constexpr Color kBrick = {0.35f, 0.12f, 0.07f, 1};
constexpr Color kWood = {0.3f, 0.17f, 0.08f, 1};
constexpr Color kBark = {0.14f, 0.08f, 0.04f, 1};
constexpr Color kNeedles = {0.03f, 0.16f, 0.05f, 1};
constexpr Color kLamp = {1, 0.85f, 0.4f, 1};
constexpr Color kFrame = {0.05f, 0.06f, 0.07f, 1};
constexpr Color kPlain = {1, 1, 1, 1};

// Indices into `materials`.
constexpr Int kMatteWhite = 0;
constexpr Int kMatteRed = 1;

constexpr Int kPlasterSide = 32;  // pixels of the image

struct SceneMesh
{
  std::string name;
  std::vector<Primitive> primitives;
};

struct SceneNode
{
  std::string name;
  Int mesh = -1;  // index into `meshes`, -1 for a group
  Vec3 translation;
  Float turns = 0;  // around the y axis
  Vec3 scale = {1, 1, 1};
  std::vector<Int> children;  // indices into `nodes`
};

Color Mixed(const Color& a, const Color& b, Float share)
{
  const auto part = static_cast<Float32>(std::clamp(share, 0.0, 1.0));
  Color mixed = a;
  for (std::size_t i = 0; i < mixed.size(); ++i)
    mixed[i] += (b[i] - a[i]) * part;
  return mixed;
}

Float SeaHeight(Float x, Float z)
{
  return 0.12 * SineOfTurns(x / 9 + z / 23) + 0.08 * SineOfTurns(z / 6 - x / 17);
}

Color SeaColor(const Vec3& point)
{
  const Float distance = std::sqrt(point.x * point.x + point.z * point.z);
  return Mixed(kShallowWater, kDeepWater, (distance - 9) / 10);
}

// A hill with a flat top, which falls below the water all around.
Float IslandHeight(Float x, Float z)
{
  const Float distance = std::sqrt(x * x + z * z);
  const Float shore = std::clamp((distance - 3) / 7, 0.0, 1.0);
  const Float hill = 0.5 + 0.5 * CosineOfTurns(shore / 2);
  const Float bumps = 0.25 * SineOfTurns(x / 5 + 0.1) * SineOfTurns(z / 4);
  return 4 * hill - 1.2 + bumps * shore;
}

Color IslandColor(const Vec3& point)
{
  if (point.y < 0.9)
    return Mixed(kRock, kSand, (point.y + 0.6) / 0.9);
  return Mixed(kSand, kGrass, (point.y - 0.9) / 0.5);
}

// A white tower with red bands; the bands are the second primitive.
constexpr Int kBandCount = 6;
constexpr Float kTowerHeight = 7.2;

Float TowerRadius(Float height)
{
  return 1.2 - 0.5 * height / kTowerHeight;
}

Solid TowerBands(Int firstBand)
{
  Solid bands;
  for (Int band = firstBand; band < kBandCount; band += 2)
  {
    const Float bottom = kTowerHeight * static_cast<Float>(band) / kBandCount;
    const Float top = kTowerHeight * static_cast<Float>(band + 1) / kBandCount;
    bands.AddFrustum({.bottomRadius = TowerRadius(bottom),
                      .topRadius = TowerRadius(top),
                      .bottom = bottom,
                      .top = top,
                      .sides = 24,
                      .closedBelow = band == 0,
                      .closedAbove = band == kBandCount - 1},
                     kPlain);
  }
  return bands;
}

Solid LanternSolid()
{
  Solid lantern;
  lantern.AddSphere({0, 0.5, 0}, 0.32, 8, kLamp);
  for (Int i = 0; i < 6; ++i)
  {
    const Float turns = static_cast<Float>(i) / 6;
    lantern.AddBox({0.5 * CosineOfTurns(turns), 0.5, 0.5 * SineOfTurns(turns)}, {0.06, 1, 0.06}, kFrame);
  }
  return lantern;
}

Solid PineSolid()
{
  Solid pine;
  pine.AddFrustum({.bottomRadius = 0.12, .topRadius = 0.1, .bottom = -0.3, .top = 0.5, .sides = 6}, kBark);
  pine.AddFrustum({.bottomRadius = 0.6, .topRadius = 0, .bottom = 0.4, .top = 1.5, .sides = 9}, kNeedles);
  pine.AddFrustum({.bottomRadius = 0.45, .topRadius = 0, .bottom = 1.0, .top = 2.1, .sides = 9}, kNeedles);
  return pine;
}

Solid DeckSolid()
{
  Solid deck;
  for (Int i = 0; i < 10; ++i)
    deck.AddBox({static_cast<Float>(i) * 0.5, 0, 0}, {0.44, 0.1, 1.3}, i % 3 == 1 ? Mixed(kWood, kSand, 0.2) : kWood);
  return deck;
}

// Gathers meshes and nodes, then hands them to the file.
class HarbourBuilder
{
public:
  explicit HarbourBuilder(GltfFile& file) : _file(file) {}

  Int AddMesh(std::string name, std::vector<Primitive> primitives)
  {
    _meshes.push_back({std::move(name), std::move(primitives)});
    return static_cast<Int>(_meshes.size()) - 1;
  }

  Int AddColored(std::string name, Solid solid)
  {
    return AddMesh(std::move(name), {AddSolid(_file, std::move(solid), true, kMatteWhite)});
  }

  Int AddPainted(std::string name, Solid solid, Int material)
  {
    return AddMesh(std::move(name), {AddSolid(_file, std::move(solid), false, material)});
  }

  Int AddNode(SceneNode node)
  {
    _nodes.push_back(std::move(node));
    return static_cast<Int>(_nodes.size()) - 1;
  }

  Int AddGroup(std::string name, const Vec3& translation, std::vector<Int> children, Float turns = 0)
  {
    return AddNode({.name = std::move(name), .translation = translation, .turns = turns, .children = std::move(children)});
  }

  void AddMembers(Int root) const;

private:
  void WriteNodes(JsonWriter& json) const;
  void WriteMeshes(JsonWriter& json) const;

  GltfFile& _file;
  std::vector<SceneMesh> _meshes;
  std::vector<SceneNode> _nodes;
};

void WriteVector(JsonWriter& json, std::string_view key, const Vec3& value)
{
  json.Member(key, {static_cast<Float32>(value.x), static_cast<Float32>(value.y), static_cast<Float32>(value.z)});
}

void WriteNode(JsonWriter& json, const SceneNode& node)
{
  json.BeginObject();
  json.Member("name", node.name);
  if (node.mesh >= 0)
    json.Member("mesh", node.mesh);
  if (node.translation.x != 0 || node.translation.y != 0 || node.translation.z != 0)
    WriteVector(json, "translation", node.translation);
  if (node.turns != 0)
    json.Member("rotation",
                {0, static_cast<Float32>(SineOfTurns(node.turns / 2)), 0, static_cast<Float32>(CosineOfTurns(node.turns / 2))});
  if (node.scale.x != 1 || node.scale.y != 1 || node.scale.z != 1)
    WriteVector(json, "scale", node.scale);
  if (!node.children.empty())
  {
    json.Key("children");
    json.BeginArray();
    for (const Int child : node.children)
      json.Value(child);
    json.EndArray();
  }
  json.EndObject();
}

/// Plaster: rough, and dark where its courses meet. Whole numbers alone, so that it is the same everywhere.
Byte GetPlaster(Int x, Int y)
{
  const Int grain = (x * x * 7 + y * y * 13 + x * y * 5) % 29;
  const Bool isJoint = y % 8 == 7 || (x + (y / 8 % 2) * 8) % 16 == 15;
  return static_cast<Byte>((isJoint ? 190 : 225) + grain);
}

void WriteMaterial(JsonWriter& json, const char* name, const Color& color, Float32 roughness, Int texture = -1)
{
  json.BeginObject();
  json.Member("name", name);
  json.Key("pbrMetallicRoughness");
  json.BeginObject();
  json.Key("baseColorFactor");
  json.Value(std::span<const Float32>(color));
  if (texture >= 0)
  {
    json.Key("baseColorTexture");
    json.BeginObject();
    json.Member("index", texture);
    json.EndObject();
  }
  json.Member("metallicFactor", 0.0f);
  json.Member("roughnessFactor", roughness);
  json.EndObject();
  json.EndObject();
}

void WriteMaterials(JsonWriter& json)
{
  json.BeginArray();
  WriteMaterial(json, "Matte White", {0.86f, 0.84f, 0.78f, 1}, 0.7f, 0);
  WriteMaterial(json, "Matte Red", {0.6f, 0.04f, 0.03f, 1}, 0.5f);
  json.EndArray();
}

/// The one texture, of the one image, with the one sampler: smooth, and repeated.
void WriteTextures(JsonWriter& json)
{
  json.BeginArray();
  json.BeginObject();
  json.Member("sampler", Int(0));
  json.Member("source", Int(0));
  json.EndObject();
  json.EndArray();
}

void WriteSamplers(JsonWriter& json)
{
  json.BeginArray();
  json.BeginObject();
  json.Member("magFilter", Int(9729));
  json.Member("minFilter", Int(9729));
  json.EndObject();
  json.EndArray();
}

void WriteImages(JsonWriter& json, Int view)
{
  json.BeginArray();
  json.BeginObject();
  json.Member("bufferView", view);
  json.Member("mimeType", "image/png");
  json.EndObject();
  json.EndArray();
}

void WriteScenes(JsonWriter& json, Int root)
{
  json.BeginArray();
  json.BeginObject();
  json.Member("name", "Harbour");
  json.Key("nodes");
  json.BeginArray();
  json.Value(root);
  json.EndArray();
  json.EndObject();
  json.EndArray();
}

void HarbourBuilder::WriteNodes(JsonWriter& json) const
{
  json.BeginArray();
  for (const SceneNode& node : _nodes)
    WriteNode(json, node);
  json.EndArray();
}

void HarbourBuilder::WriteMeshes(JsonWriter& json) const
{
  json.BeginArray();
  for (const SceneMesh& mesh : _meshes)
    WriteMesh(json, mesh.name, mesh.primitives);
  json.EndArray();
}

void HarbourBuilder::AddMembers(Int root) const
{
  _file.AddMember("scene", [](JsonWriter& json) { json.Value(0); });
  _file.AddMember("scenes", [root](JsonWriter& json) { WriteScenes(json, root); });
  // The callbacks outlive the builder, so each has a copy of it.
  _file.AddMember("nodes", [builder = *this](JsonWriter& json) { builder.WriteNodes(json); });
  _file.AddMember("meshes", [builder = *this](JsonWriter& json) { builder.WriteMeshes(json); });
  _file.AddMember("materials", WriteMaterials);
  const std::string plaster = MakeGrayPng(kPlasterSide, GetPlaster);
  const Int view = _file.AddView(static_cast<Int>(plaster.size()), [plaster](ByteSink& sink) { sink.WriteText(plaster); });
  _file.AddMember("textures", WriteTextures);
  _file.AddMember("images", [view](JsonWriter& json) { WriteImages(json, view); });
  _file.AddMember("samplers", WriteSamplers);
}

Int AddLighthouse(GltfFile& file, HarbourBuilder& builder)
{
  Solid gallery;
  gallery.AddFrustum({.bottomRadius = 1, .topRadius = 1.1, .bottom = 0, .top = 0.2, .sides = 24}, kPlain);
  Solid cap;
  cap.AddFrustum({.bottomRadius = 0.75, .topRadius = 0, .bottom = 0, .top = 0.8, .sides = 24}, kPlain);

  const Int towerMesh = builder.AddMesh("Tower", {AddSolid(file, TowerBands(0), false, kMatteWhite),
                                                  AddSolid(file, TowerBands(1), false, kMatteRed)});
  const Int galleryMesh = builder.AddPainted("Gallery", std::move(gallery), kMatteWhite);
  const Int lanternMesh = builder.AddColored("Lantern", LanternSolid());
  const Int capMesh = builder.AddPainted("Cap", std::move(cap), kMatteRed);

  const Int capNode = builder.AddNode({.name = "Cap", .mesh = capMesh, .translation = {0, 1, 0}});
  const Int lantern =
    builder.AddNode({.name = "Lantern", .mesh = lanternMesh, .translation = {0, 0.2, 0}, .children = {capNode}});
  const Int galleryNode =
    builder.AddNode({.name = "Gallery", .mesh = galleryMesh, .translation = {0, kTowerHeight, 0}, .children = {lantern}});
  const Int tower = builder.AddNode({.name = "Tower", .mesh = towerMesh, .children = {galleryNode}});
  return builder.AddGroup("Lighthouse", {-1.5, 2.6, -1}, {tower});
}

Int AddVillage(GltfFile& file, HarbourBuilder& builder)
{
  Solid walls;
  walls.AddBox({0, 0.3, 0}, {1.6, 1.4, 1.1}, kPlain);
  Solid roof;
  roof.AddRoof({.size = {1.9, 0.7, 1.5}, .bottom = 1}, kPlain);
  Solid chimney;
  chimney.AddBox({0, 0, 0}, {0.22, 0.7, 0.22}, kBrick);

  const Int house = builder.AddMesh("House", {AddSolid(file, std::move(walls), false, kMatteWhite),
                                              AddSolid(file, std::move(roof), false, kMatteRed)});
  const Int chimneyMesh = builder.AddColored("Chimney", std::move(chimney));

  struct Plot
  {
    Vec3 place;
    Float turns;
    Float scale;
  };
  const Plot plots[] = {{{2.2, 2.5, 0.2}, 0.06, 1}, {{1.6, 2.4, 2.4}, -0.1, 0.9}, {{0.2, 2.5, 3.1}, 0.25, 0.8}};
  std::vector<Int> houses;
  for (const Plot& plot : plots)
  {
    const std::string number = std::to_string(houses.size() + 1);
    const Int top = builder.AddNode({.name = "Chimney " + number, .mesh = chimneyMesh, .translation = {0.5, 1.6, 0.2}});
    houses.push_back(builder.AddNode({.name = "House " + number,
                                      .mesh = house,
                                      .translation = plot.place,
                                      .turns = plot.turns,
                                      .scale = {plot.scale, plot.scale, plot.scale},
                                      .children = {top}}));
  }
  return builder.AddGroup("Village", {}, std::move(houses));
}

Int AddWood(HarbourBuilder& builder)
{
  const Int pine = builder.AddColored("Pine", PineSolid());
  const Float places[][3] = {{-4, 0.5, 1},      {-3.2, 1.9, 1.2}, {-4.4, -1.2, 0.9},
                             {-2.2, 2.9, 0.85}, {0.6, -3.4, 1.1}, {1.9, -2.9, 0.95}};
  std::vector<Int> pines;
  for (const auto& [x, z, scale] : places)
  {
    pines.push_back(builder.AddNode({.name = "Pine " + std::to_string(pines.size() + 1),
                                     .mesh = pine,
                                     .translation = {x, IslandHeight(x, z), z},
                                     .turns = x / 7,
                                     .scale = {scale, scale, scale}}));
  }
  return builder.AddGroup("Wood", {}, std::move(pines));
}

Int AddPier(HarbourBuilder& builder)
{
  Solid post;
  post.AddFrustum({.bottomRadius = 0.13, .topRadius = 0.11, .bottom = -2, .top = 0.5, .sides = 10}, kBark);
  const Int postMesh = builder.AddColored("Post", std::move(post));
  const Int deckMesh = builder.AddColored("Deck", DeckSolid());

  std::vector<Int> parts = {builder.AddNode({.name = "Deck", .mesh = deckMesh})};
  for (const Float x : {0.2, 2.2, 4.4})
  {
    for (const Float z : {-0.7, 0.7})
      parts.push_back(builder.AddNode({.name = "Post " + std::to_string(parts.size()),
                                       .mesh = postMesh,
                                       .translation = {x, 0, z}}));
  }
  return builder.AddGroup("Pier", {6.4, 0.75, 3.4}, std::move(parts), -0.08);
}

Int AddBoat(HarbourBuilder& builder)
{
  Solid hull;
  hull.AddFrustum({.bottomRadius = 0.9, .topRadius = 1.3, .bottom = -0.25, .top = 0.35, .sides = 20}, kPlain);
  Solid mast;
  mast.AddFrustum({.bottomRadius = 0.05, .topRadius = 0.03, .bottom = 0, .top = 2.6, .sides = 8}, kWood);
  Solid sail;
  sail.AddTwoSidedTriangle({{{-0.08, 0.4, 0}, {-1.1, 0.5, 0.25}, {-0.06, 2.4, 0}}}, kPlain);

  const Int hullMesh = builder.AddPainted("Hull", std::move(hull), kMatteRed);
  const Int mastMesh = builder.AddColored("Mast", std::move(mast));
  const Int sailMesh = builder.AddPainted("Sail", std::move(sail), kMatteWhite);

  const Int sailNode = builder.AddNode({.name = "Sail", .mesh = sailMesh});
  const Int mastNode = builder.AddNode({.name = "Mast", .mesh = mastMesh, .translation = {0.2, 0.3, 0}, .children = {sailNode}});
  // A round hull, made slender: the one node whose scale differs by axis.
  const Int hullNode = builder.AddNode({.name = "Hull", .mesh = hullMesh, .scale = {1, 1, 0.4}});
  return builder.AddGroup("Boat", {8.2, 0.15, 6.2}, {hullNode, mastNode}, 0.36);
}

Int AddGround(HarbourBuilder& builder)
{
  Solid sea;
  sea.AddTerrain({.size = 48, .cells = 24, .height = SeaHeight, .color = SeaColor});
  Solid island;
  island.AddTerrain({.size = 22, .cells = 32, .height = IslandHeight, .color = IslandColor});
  const Int seaNode = builder.AddNode({.name = "Sea", .mesh = builder.AddColored("Sea", std::move(sea))});
  const Int islandNode = builder.AddNode({.name = "Island", .mesh = builder.AddColored("Island", std::move(island))});
  return builder.AddGroup("Ground", {}, {seaNode, islandNode});
}

Int AddBuoys(HarbourBuilder& builder)
{
  Solid buoy;
  buoy.AddSphere({0, 0, 0}, 0.3, 8, kPlain);
  const Int mesh = builder.AddPainted("Buoy", std::move(buoy), kMatteRed);
  const Int first = builder.AddNode({.name = "Buoy 1", .mesh = mesh, .translation = {11, 0.1, -2}});
  const Int second = builder.AddNode({.name = "Buoy 2", .mesh = mesh, .translation = {4, 0.1, 12}});
  return builder.AddGroup("Buoys", {}, {first, second});
}

}  // namespace

GltfFile MakeHarbour()
{
  GltfFile file("io_gltf samples");
  HarbourBuilder builder(file);
  const Int ground = AddGround(builder);
  const Int lighthouse = AddLighthouse(file, builder);
  const Int village = AddVillage(file, builder);
  const Int wood = AddWood(builder);
  const Int pier = AddPier(builder);
  const Int boat = AddBoat(builder);
  const Int buoys = AddBuoys(builder);
  builder.AddMembers(builder.AddGroup("Harbour", {}, {ground, lighthouse, village, wood, pier, boat, buoys}));
  return file;
}

}  // namespace q7z::generate
