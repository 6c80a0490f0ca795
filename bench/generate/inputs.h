#pragma once

// The inputs of the benchmarks, made from sizes and a start number: the same file from the same numbers on every machine. Used by
// q7z_generate, which writes them to files, and by the benchmarks, which keep them in memory.

#include "samples/generate/gltffile.h"

namespace q7z::generate
{

constexpr UInt kDefaultStart = 20240229;

/// One mesh of side × side vertices (2 or more) with normals and texture coordinates and 32-bit indices, on one node.
GltfFile MakeGrid(Int side, UInt start = kDefaultStart);

/// nodeCount nodes (1 or more) with names, translations, rotations and scales. Each node has up to 64 children; those without
/// children share meshCount small meshes (1 or more), which are used in turn.
GltfFile MakeNodes(Int nodeCount, Int meshCount, UInt start = kDefaultStart);

/// One animation of nodeCount nodes (1 or more) that show one quad: each is moved, turned and scaled by keyCount linear keys (1 or more),
/// one for each frame of 1/30 s. The three samplers of a node share their times.
GltfFile MakeAnimation(Int nodeCount, Int keyCount, UInt start = kDefaultStart);

/// Four meshes in the largest file of at most byteCount bytes in the given form; where four do not fit, the smallest file of one
/// mesh, which is close to 1000 bytes.
GltfFile MakeSmall(Int byteCount, FileForm form, UInt start = kDefaultStart);

/// One mesh of side × side vertices, each of which follows four of jointCount joints (4 or more). The joints stand below the first.
GltfFile MakeSkin(Int side, Int jointCount, UInt start = kDefaultStart);

/// One mesh of side × side vertices with targetCount morph targets (1 or more) that move all of them.
GltfFile MakeMorphs(Int side, Int targetCount, UInt start = kDefaultStart);

/// materialCount quads (1 or more), each with a material of its own and a PNG texture of side × side pixels: of smooth colours for
/// an even material, of noise for an odd one.
GltfFile MakeTextures(Int materialCount, Int side, UInt start = kDefaultStart);

}  // namespace q7z::generate
