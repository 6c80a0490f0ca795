#include "bench/generate/heightfield.h"

#include "bench/generate/random.h"
#include "samples/generate/waves.h"

#include <cmath>
#include <memory>

namespace q7z::generate
{

namespace
{

constexpr Float kWidth = 10;

}  // namespace

Heightfield::Heightfield(Int side, const std::array<Float, 3>& center, UInt start) : _side(side), _center(center)
{
  Random random(start);
  _columns = MakeWaves(random.NextBits());
  _rows = MakeWaves(random.NextBits());
}

Float Heightfield::Place(Int i) const
{
  return kWidth * static_cast<Float>(i) / static_cast<Float>(_side - 1) - kWidth / 2;
}

std::vector<Heightfield::Wave> Heightfield::MakeWaves(UInt start) const
{
  struct Tone
  {
    Float length;  // metres
    Float height;
  };
  static constexpr Tone kTones[] = {{7.3, 0.3}, {2.9, 0.1}, {1.1, 0.03}};
  std::vector<Wave> waves(static_cast<std::size_t>(_side));
  Random random(start);
  for (const Tone& tone : kTones)
  {
    const Float phase = random.Next(0, 1);
    for (Int i = 0; i < _side; ++i)
    {
      Wave& wave = waves[static_cast<std::size_t>(i)];
      const Float turns = Place(i) / tone.length + phase;
      wave.height += tone.height * SineOfTurns(turns);
      wave.slope += tone.height * CosineOfTurns(turns) * 6.283185307179586 / tone.length;
    }
  }
  return waves;
}

void Heightfield::WritePositions(ByteSink& target) const
{
  for (Int row = 0; row < _side; ++row)
  {
    const Wave& waveZ = _rows[static_cast<std::size_t>(row)];
    const auto z = static_cast<Float32>(_center[2] + Place(row));
    for (Int column = 0; column < _side; ++column)
    {
      const Wave& waveX = _columns[static_cast<std::size_t>(column)];
      const Float height = waveX.height + waveZ.height + waveX.height * waveZ.height;
      target.WriteValues(std::array<Float32, 3>{static_cast<Float32>(_center[0] + Place(column)),
                                                static_cast<Float32>(_center[1] + height), z});
    }
  }
}

void Heightfield::WriteNormals(ByteSink& target) const
{
  for (Int row = 0; row < _side; ++row)
  {
    const Wave& waveZ = _rows[static_cast<std::size_t>(row)];
    for (Int column = 0; column < _side; ++column)
    {
      const Wave& waveX = _columns[static_cast<std::size_t>(column)];
      const Float slopeX = waveX.slope * (1 + waveZ.height);
      const Float slopeZ = waveZ.slope * (1 + waveX.height);
      const Float scale = 1 / std::sqrt(slopeX * slopeX + 1 + slopeZ * slopeZ);
      target.WriteValues(std::array<Float32, 3>{static_cast<Float32>(-slopeX * scale), static_cast<Float32>(scale),
                                                static_cast<Float32>(-slopeZ * scale)});
    }
  }
}

void Heightfield::WriteUvs(ByteSink& target) const
{
  const auto last = static_cast<Float>(_side - 1);
  for (Int row = 0; row < _side; ++row)
  {
    for (Int column = 0; column < _side; ++column)
      target.WriteValues(std::array<Float32, 2>{static_cast<Float32>(static_cast<Float>(column) / last),
                                                static_cast<Float32>(static_cast<Float>(row) / last)});
  }
}

template <typename Index>
void Heightfield::WriteIndices(ByteSink& target) const
{
  for (Int row = 0; row + 1 < _side; ++row)
  {
    for (Int column = 0; column + 1 < _side; ++column)
    {
      const auto here = static_cast<Index>(row * _side + column);
      const auto below = static_cast<Index>(here + _side);
      const auto right = static_cast<Index>(here + 1);
      const auto across = static_cast<Index>(below + 1);
      target.WriteValues(std::array<Index, 6>{here, below, across, here, across, right});
    }
  }
}

void Heightfield::WriteWideIndices(ByteSink& target) const
{
  WriteIndices<UInt32>(target);
}

void Heightfield::WriteNarrowIndices(ByteSink& target) const
{
  WriteIndices<UInt16>(target);
}

Primitive AddHeightfield(GltfFile& file, Heightfield surface, bool wideIndices)
{
  const auto shared = std::make_shared<const Heightfield>(std::move(surface));
  const Int count = shared->GetVertexCount();
  // The largest 16-bit index restarts a strip, so it names no vertex.
  const bool wide = wideIndices || count > 0xFFFF;
  Primitive primitive;
  primitive.positions = file.AddAccessor({.type = "VEC3",
                                          .count = count,
                                          .bounds = true,
                                          .write = [shared](ByteSink& target) { shared->WritePositions(target); }});
  primitive.normals =
    file.AddAccessor({.type = "VEC3", .count = count, .write = [shared](ByteSink& target) { shared->WriteNormals(target); }});
  primitive.uvs =
    file.AddAccessor({.type = "VEC2", .count = count, .write = [shared](ByteSink& target) { shared->WriteUvs(target); }});
  primitive.indices = file.AddAccessor({.componentType = wide ? ComponentType::kUnsignedInt : ComponentType::kUnsignedShort,
                                        .type = "SCALAR",
                                        .count = shared->GetIndexCount(),
                                        .target = ViewTarget::kIndices,
                                        .write = [shared, wide](ByteSink& target)
                                        {
                                          if (wide)
                                            shared->WriteWideIndices(target);
                                          else
                                            shared->WriteNarrowIndices(target);
                                        }});
  return primitive;
}

}  // namespace q7z::generate
