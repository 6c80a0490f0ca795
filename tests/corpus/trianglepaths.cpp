#include "tests/corpus/trianglepaths.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>

namespace q7z::test
{

namespace
{

double GetDistance(const CornerTriangle& a, const CornerTriangle& b, size_t turn)
{
  double error = 0;
  for (size_t i = 0; i < 3; ++i)
    error = std::max(error, (a[i] - b[(i + turn) % 3]).GetLength());
  return error;
}

/// Triangles with all corners within a distance are at most one cell apart.
std::int64_t GetCell(const CornerTriangle& triangle, double near)
{
  const Vector sum = triangle[0] + triangle[1] + triangle[2];
  return std::llround((sum.x + 2.3 * sum.y + 3.9 * sum.z) / (22 * near));
}

}  // namespace

void Box::Take(const Vector& point)
{
  for (int i = 0; i < 3; ++i)
  {
    _low[i] = std::min(_low[i], point[i]);
    _high[i] = std::max(_high[i], point[i]);
  }
}

double ComparePaths(const TrianglePaths& paths, const TrianglePaths& others, double near)
{
  std::multimap<std::int64_t, size_t> byPlace;
  for (size_t i = 0; i < others[0].size(); ++i)
    byPlace.emplace(GetCell(others[0][i], near), i);
  double worst = paths[0].size() == others[0].size() ? 0 : INFINITY;
  for (size_t i = 0; i < paths[0].size(); ++i)
  {
    double best = INFINITY;
    auto taken = byPlace.end();
    const std::int64_t cell = GetCell(paths[0][i], near);
    const auto end = byPlace.upper_bound(cell + 1);
    for (auto entry = byPlace.lower_bound(cell - 1); entry != end; ++entry)
    {
      for (size_t turn = 0; turn < 3; ++turn)
      {
        double error = 0;
        for (size_t t = 0; t < paths.size() && error < best; ++t)
          error = std::max(error, GetDistance(paths[t][i], others[t][entry->second], turn));
        taken = error < best ? entry : taken;
        best = std::min(best, error);
      }
    }
    if (taken != byPlace.end())
      byPlace.erase(taken);
    worst = std::max(worst, best);
  }
  return worst;
}

}  // namespace q7z::test
