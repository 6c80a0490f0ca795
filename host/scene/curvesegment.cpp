#include "host/scene/curvesegment.h"

#include <algorithm>
#include <cmath>

namespace q7z
{

namespace
{

constexpr int kMaximumSteps = 80;

CurvePoint Between(const CurvePoint& a, const CurvePoint& b, Float place) noexcept
{
  return {a.time + (b.time - a.time) * place, a.value + (b.value - a.value) * place};
}

/// The time of a segment that runs from 0 to 1, with its inner points at x1 and x2, and its change.
struct UnitTime
{
  Float x1;
  Float x2;

  Float At(Float s) const noexcept
  {
    const Float r = 1 - s;
    return 3 * r * r * s * x1 + 3 * r * s * s * x2 + s * s * s;
  }
  Float SlopeAt(Float s) const noexcept
  {
    const Float r = 1 - s;
    return 3 * r * r * x1 + 6 * r * s * (x2 - x1) + 3 * s * s * (1 - x2);
  }
};

}  // namespace

CurveSegment ClampTangentTimes(const CurveSegment& segment) noexcept
{
  CurveSegment clamped = segment;
  const Float start = segment.points[0].time;
  const Float end = segment.points[3].time;
  clamped.points[1].time = std::clamp(segment.points[1].time, start, end);
  clamped.points[2].time = std::clamp(segment.points[2].time, start, end);
  return clamped;
}

Float SolveSegmentTime(const CurveSegment& segment, Float time) noexcept
{
  const Float start = segment.points[0].time;
  const Float span = segment.points[3].time - start;
  if (!(span > 0))
    return 0;
  const Float wanted = std::clamp((time - start) / span, 0.0, 1.0);
  const UnitTime unit{(segment.points[1].time - start) / span, (segment.points[2].time - start) / span};
  // Newton's steps, held inside an interval that is known to hold the answer.
  Float low = 0;
  Float high = 1;
  Float place = wanted;
  for (int i = 0; i < kMaximumSteps && low < high; ++i)
  {
    const Float distance = unit.At(place) - wanted;
    if (distance == 0)
      break;
    (distance > 0 ? high : low) = place;
    const Float slope = unit.SlopeAt(place);
    const Float next = slope > 0 ? place - distance / slope : low;
    const Float stepped = next > low && next < high ? next : (low + high) / 2;
    if (stepped == place)
      break;
    place = stepped;
  }
  return place;
}

SplitCurveSegment SplitSegment(const CurveSegment& segment, Float place) noexcept
{
  const CurvePoint* const p = segment.points;
  const CurvePoint a = Between(p[0], p[1], place);
  const CurvePoint b = Between(p[1], p[2], place);
  const CurvePoint c = Between(p[2], p[3], place);
  const CurvePoint ab = Between(a, b, place);
  const CurvePoint bc = Between(b, c, place);
  const CurvePoint middle = Between(ab, bc, place);
  return {{{p[0], a, ab, middle}}, {{middle, bc, c, p[3]}}};
}

}  // namespace q7z
