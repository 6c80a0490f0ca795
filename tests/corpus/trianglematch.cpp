// The comparison of two scenes by their triangles.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <sstream>
#include <unordered_map>

#include "tests/corpus/worldtriangles.h"

namespace q7z::test
{

namespace
{

constexpr Float kTolerance = 1e-5;
constexpr int kShownDifferences = 5;

Vector GetCentroid(const Triangle& triangle)
{
  return (triangle.corners[0].position + triangle.corners[1].position + triangle.corners[2].position) * (1.0 / 3);
}

Float GetSize(const std::vector<Triangle>& triangles)
{
  if (triangles.empty())
    return 0;
  Vector low = triangles[0].corners[0].position;
  Vector high = low;
  for (const Triangle& triangle : triangles)
  {
    for (const Corner& corner : triangle.corners)
    {
      for (int i = 0; i < 3; ++i)
      {
        low[i] = std::min(low[i], corner.position[i]);
        high[i] = std::max(high[i], corner.position[i]);
      }
    }
  }
  return (high - low).GetLength();
}

bool AreNear(const Vector& a, const Vector& b, Float tolerance)
{
  return std::abs(a.x - b.x) <= tolerance && std::abs(a.y - b.y) <= tolerance && std::abs(a.z - b.z) <= tolerance;
}

bool AreNear(const std::array<Float, 4>& a, const std::array<Float, 4>& b)
{
  return std::equal(a.begin(), a.end(), b.begin(), [](Float x, Float y) { return std::abs(x - y) <= kTolerance; });
}

/// How far two triangles agree; each step includes those before.
enum class Likeness
{
  kNone,
  kPositions,
  kNormals,
  kUvs,
  kAll,
};

const char* GetDifference(Likeness likeness)
{
  switch (likeness)
  {
    case Likeness::kNone: return "is not there";
    case Likeness::kPositions: return "has other normals";
    case Likeness::kNormals: return "has other UVs";
    case Likeness::kUvs: return "has other colours";
    case Likeness::kAll: break;
  }
  return "is there";
}

class Matcher
{
public:
  Matcher(const std::vector<Triangle>& others, Float size) : _others(others), _near(size * kTolerance)
  {
    for (size_t i = 0; i < others.size(); ++i)
      _cells.emplace(GetCell(GetCentroid(others[i])), i);
  }

  /// Takes away a triangle that is fully like the given one. @return how like the best one is.
  Likeness Take(const Triangle& triangle)
  {
    Likeness best = Likeness::kNone;
    for (const std::uint64_t cell : GetCellsAround(GetCentroid(triangle)))
    {
      const auto [begin, end] = _cells.equal_range(cell);
      for (auto entry = begin; entry != end; ++entry)
      {
        const Likeness likeness = Compare(triangle, _others[entry->second]);
        best = std::max(best, likeness);
        if (likeness != Likeness::kAll)
          continue;
        _cells.erase(entry);
        return likeness;
      }
    }
    return best;
  }

private:
  /// Cells are several tolerances wide, so that most centroids have but one around them.
  std::uint64_t GetCell(const Vector& position) const
  {
    std::uint64_t cell = 0;
    for (int i = 0; i < 3 && _near > 0; ++i)
      cell = cell * 1'000'003 + static_cast<std::uint64_t>(std::llround(position[i] / (16 * _near)));
    return cell;
  }

  /// Those that a centroid within the tolerance can lie in.
  std::set<std::uint64_t> GetCellsAround(const Vector& position) const
  {
    std::set<std::uint64_t> cells;
    for (int side = 0; side < 8; ++side)
      cells.insert(GetCell(position + Vector{side & 1 ? _near : -_near, side & 2 ? _near : -_near, side & 4 ? _near : -_near}));
    return cells;
  }

  Likeness Compare(const Triangle& triangle, const Triangle& other) const
  {
    Likeness best = Likeness::kNone;
    for (size_t turn = 0; turn < 3; ++turn)
      best = std::max(best, CompareTurned(triangle, other, turn));
    return best;
  }

  Likeness CompareTurned(const Triangle& triangle, const Triangle& other, size_t turn) const
  {
    const auto all = [&](auto&& isLike)
    {
      for (size_t i = 0; i < 3; ++i)
      {
        if (!isLike(triangle.corners[i], other.corners[(i + turn) % 3]))
          return false;
      }
      return true;
    };
    if (!all([this](const Corner& a, const Corner& b) { return AreNear(a.position, b.position, _near); }))
      return Likeness::kNone;
    if (!all([](const Corner& a, const Corner& b) { return a.normal == Vector() || AreNear(a.normal, b.normal, kTolerance); }))
      return Likeness::kPositions;
    if (triangle.hasUvs != other.hasUvs || !all([](const Corner& a, const Corner& b) { return AreNear(a.uv, b.uv, kTolerance); }))
      return Likeness::kNormals;
    if (triangle.hasColors != other.hasColors || !all([](const Corner& a, const Corner& b) { return AreNear(a.color, b.color); }))
      return Likeness::kUvs;
    return Likeness::kAll;
  }

  const std::vector<Triangle>& _others;
  Float _near;
  std::unordered_multimap<std::uint64_t, size_t> _cells;  // of centroids, without those that were taken
};

std::string ToText(const Triangle& triangle)
{
  std::ostringstream text;
  text << "a triangle of \"" << triangle.name << "\"";
  for (const Corner& corner : triangle.corners)
    text << " (" << corner.position.x << ", " << corner.position.y << ", " << corner.position.z << "; normal " << corner.normal.x
         << ", " << corner.normal.y << ", " << corner.normal.z << "; uv " << corner.uv.x << ", " << corner.uv.y << ")";
  return text.str();
}

}  // namespace

std::string CompareTriangles(const std::vector<Triangle>& first, const std::vector<Triangle>& other)
{
  Matcher matcher(other, GetSize(first));
  std::ostringstream text;
  int differences = 0;
  for (const Triangle& triangle : first)
  {
    const Likeness likeness = matcher.Take(triangle);
    if (likeness != Likeness::kAll && ++differences <= kShownDifferences)
      text << ToText(triangle) << " " << GetDifference(likeness) << "\n";
  }
  if (differences > 0)
    text << differences << " triangles differ\n";
  if (first.size() != other.size())
    text << other.size() << " triangles instead of " << first.size() << "\n";
  return text.str();
}

}  // namespace q7z::test
