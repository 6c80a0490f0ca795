#pragma once

// The arithmetic of a node's transform as a file stores it. Pure functions on values.

#include "framework/hostmatrix.h"
#include "framework/vector.h"

namespace q7z
{

/// What becomes of one object's transform.
struct ExportedTransform
{
  Vector translation;  ///< in the file's lengths
  Vector4 rotation;    ///< x, y, z, w
  Vector scale;
};

/// How objects are turned into nodes.
struct TransformRules
{
  Float exportScale = 1.0;
  Bool flipZ = true;
  Bool isCamera = false;
};

/// @param matrix  the object's local matrix. @param scale  the object's own scale, signed, for each axis.
ExportedTransform MakeExportedTransform(const HostMatrix& matrix, const Vector& scale, const TransformRules& rules) noexcept;

/// Whether a node of this local matrix needs no transform: offset and axes lie within 0.0001 of the identity's.
Bool IsIdentity(const HostMatrix& matrix) noexcept;

}  // namespace q7z
