#pragma once

// ImportOptions: the typed view of a load's options dictionary. The loader fills the dictionary from its parameters; everything
// that reads a file or builds a scene asks here. A missing key answers with the getter's own fallback.

#include "framework/data.h"

namespace q7z
{

namespace importkeys
{
inline const DataKey kScale("net.tarno.gltf.parameters.options.import.scale");
inline const DataKey kCameras("net.tarno.gltf.parameters.options.import.cameras");
inline const DataKey kGeometry("net.tarno.gltf.parameters.options.import.geometry");
inline const DataKey kSplitMesh("net.tarno.gltf.parameters.options.import.splitmesh");
inline const DataKey kNormals("net.tarno.gltf.parameters.options.import.normals");
inline const DataKey kPhongAngle("net.tarno.gltf.parameters.options.import.phongangle");
inline const DataKey kVertexColors("net.tarno.gltf.parameters.options.import.vertexcolors");
inline const DataKey kUvs("net.tarno.gltf.parameters.options.import.uvs");
inline const DataKey kFlipZ("net.tarno.gltf.parameters.options.import.flipz");
inline const DataKey kMaterials("net.tarno.gltf.parameters.options.import.materials");
inline const DataKey kAnimationTrs("net.tarno.gltf.parameters.options.import.animation.trs");
inline const DataKey kAnimationMorph("net.tarno.gltf.parameters.options.import.animation.morph");
inline const DataKey kTargetsLayer("net.tarno.gltf.parameters.options.import.animation.morph.targetslayer");
inline const DataKey kCleanTracks("net.tarno.gltf.parameters.options.import.animation.cleantracks");
}  // namespace importkeys

// Values of the entry kNormals, a whole number; any other means no imported normals.
inline constexpr Int32 kNormalsVertex = 1007;
inline constexpr Int32 kNormalsPhong = 1008;

class ImportOptions
{
public:
  /// Puts an entry; the loader's alone, before anything is read.
  Result<void> Set(const DataKey& key, Data value) noexcept { return _entries.Set(key, std::move(value)); }

  Float GetScale() const noexcept;  ///< host lengths per metre of the file; 1.0
  Bool IsCameras() const noexcept;
  Bool IsGeometry() const noexcept;
  Bool IsSplitMesh() const noexcept;
  Float GetPhongAngle() const noexcept;  ///< degrees
  String GetNormals() const noexcept;    ///< "vertex", "phong" or "none"
  Bool IsVertexColors() const noexcept;
  Bool IsUvs() const noexcept;
  Bool IsFlipZ() const noexcept;
  Bool IsMaterials() const noexcept;
  Bool IsAnimationTrs() const noexcept;
  Bool IsMorphTargets() const noexcept;  ///< needs geometry, too
  Bool IsTargetsLayer() const noexcept;
  Bool IsCleanTracks() const noexcept;

  /// Whether skins are read and built: transform animation is on and no configuration variable forbids them.
  Bool IsSkins() const noexcept;
  /// Whether animations are read.
  Bool IsAnimations() const noexcept;

private:
  Bool ReadBool(const DataKey& key, Bool fallback) const noexcept;
  DataDictionary _entries;
};

}  // namespace q7z
