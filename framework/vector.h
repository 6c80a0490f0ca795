#pragma once

// Plain vectors of the host: 64-bit for points and transforms, 32-bit for corner data. Values without invariants.

#include <cmath>

#include "framework/types.h"

namespace q7z
{

template <typename T>
struct VectorOf
{
  T x = 0;
  T y = 0;
  T z = 0;

  constexpr T& operator[](int component) noexcept { return component == 0 ? x : component == 1 ? y : z; }
  constexpr T operator[](int component) const noexcept { return component == 0 ? x : component == 1 ? y : z; }

  friend constexpr VectorOf operator+(const VectorOf& a, const VectorOf& b) noexcept { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
  friend constexpr VectorOf operator-(const VectorOf& a, const VectorOf& b) noexcept { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
  friend constexpr VectorOf operator-(const VectorOf& a) noexcept { return {-a.x, -a.y, -a.z}; }
  friend constexpr VectorOf operator*(const VectorOf& a, T factor) noexcept { return {a.x * factor, a.y * factor, a.z * factor}; }
  friend constexpr Bool operator==(const VectorOf& a, const VectorOf& b) noexcept = default;

  constexpr VectorOf& operator+=(const VectorOf& other) noexcept { return *this = *this + other; }

  /// Component by component.
  constexpr VectorOf Scaled(const VectorOf& factors) const noexcept { return {x * factors.x, y * factors.y, z * factors.z}; }
  constexpr T Dot(const VectorOf& other) const noexcept { return x * other.x + y * other.y + z * other.z; }
  constexpr VectorOf Cross(const VectorOf& other) const noexcept
  {
    return {y * other.z - z * other.y, z * other.x - x * other.z, x * other.y - y * other.x};
  }
  T GetLength() const noexcept { return std::sqrt(Dot(*this)); }
};

using Vector = VectorOf<Float>;
using Vector32 = VectorOf<Float32>;

struct Vector2
{
  Float x = 0;
  Float y = 0;
  friend constexpr Bool operator==(const Vector2&, const Vector2&) noexcept = default;
};

struct Vector4
{
  Float x = 0;
  Float y = 0;
  Float z = 0;
  Float w = 0;
  friend constexpr Vector4 operator+(const Vector4& a, const Vector4& b) noexcept
  {
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
  }
  friend constexpr Vector4 operator*(const Vector4& a, Float factor) noexcept
  {
    return {a.x * factor, a.y * factor, a.z * factor, a.w * factor};
  }
  friend constexpr Bool operator==(const Vector4&, const Vector4&) noexcept = default;
};

static_assert(sizeof(Vector) == 24 && sizeof(Vector32) == 12);

}  // namespace q7z
