// Vertex colours of a primitive, into the host's colour tag.

#include "plugin/geometry/gltfelementreader.h"
#include "plugin/geometry/gltfmeshcreator.h"

namespace q7z
{

namespace
{

// Whole-number colours are scaled down here although the accessor may have normalised them already. Deliberate: a normalised
// 8-bit colour arrives almost black, and 16-bit colours use the same factor.
constexpr Float kIntegerColorFactor = 0.00392156862745098;

/// Writes one point's colour: values and, where deltas are given, their sum, then the factor, then 32 bits.
template <int componentCount>
void WriteColor(const HostColorHandle& handle, Int point, const Float (&values)[componentCount], Float factor) noexcept
{
  const Float alpha = componentCount == 4 ? values[componentCount - 1] : 1.0;
  handle.SetPoint(point, {static_cast<Float32>(values[0] * factor), static_cast<Float32>(values[1] * factor),
                          static_cast<Float32>(values[2] * factor)});
  handle.SetPointAlpha(point, static_cast<Float32>(alpha * factor));
}

template <int componentCount>
Result<void> FillColors(const HostColorHandle& handle, Int cursorPoints, Int vertexCount, const GltfAccessor& base,
                        const GltfAccessor* deltaAccessor) noexcept
{
  const Float factor = base.GetComponentType() == kFloatComponent ? 1.0 : kIntegerColorFactor;
  return WithElementReader<componentCount>(base,
                                           [&](const auto& read) -> Result<void>
                                           {
                                             for (Int i = 0; i < vertexCount; ++i)
                                             {
                                               Float values[componentCount] = {};
                                               if (!read(i, values)) [[unlikely]]
                                                 return GetReadError<componentCount>(base, i);
                                               if (deltaAccessor)
                                               {
                                                 Float deltas[componentCount] = {};
                                                 RETURN_IF_ERROR(detail::ReadSingle(*deltaAccessor, i, deltas));
                                                 for (int c = 0; c < componentCount; ++c)
                                                   values[c] += deltas[c];
                                               }
                                               WriteColor(handle, cursorPoints + i, values, factor);
                                             }
                                             return {};
                                           });
}

}  // namespace

Result<void> AddMeshVertexColors(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                                 const PrimitiveAccessors* targetAccessors, Int vertexCount) noexcept
{
  if (!meshCreator.colorTag)
    return {};
  // All sets write to the one tag, so the last set wins.
  for (const GltfAttributeSet& set : baseAccessors.colors)
  {
    const GltfAccessor& accessor = *set.accessor;
    if (!accessor.IsOfType({"VEC3"_s, "VEC4"_s}) || !accessor.IsOfType({kFloatComponent, kUnsignedByte, kUnsignedShort}))
      continue;
    const GltfAccessor* deltaAccessor = nullptr;
    if (targetAccessors)
    {
      deltaAccessor = FindSet(targetAccessors->colors, set.number);
      CHECK_STATE(deltaAccessor);
    }
    if (!meshCreator.colorTag->SetPerPoint(true))
      return Error::OutOfMemory();
    meshCreator.colorsWritten = true;
    const HostColorHandle handle = meshCreator.colorTag->GetHandleW();
    CHECK_STATE(handle);
    const Bool hasAlpha = accessor.IsOfType({"VEC4"_s});
    RETURN_IF_ERROR(hasAlpha ? FillColors<4>(handle, meshCreator.cursorPoints, vertexCount, accessor, deltaAccessor)
                             : FillColors<3>(handle, meshCreator.cursorPoints, vertexCount, accessor, deltaAccessor));
  }
  return {};
}

}  // namespace q7z
