#pragma once

// The arithmetic of one spline segment of a curve: a cubic Bézier curve in time and value. Pure functions on values.

#include "framework/types.h"

namespace q7z
{

struct CurvePoint
{
  Float time = 0;  ///< seconds
  Float value = 0;
};

/// The four control points, from the left key to the right one.
struct CurveSegment
{
  CurvePoint points[4];
};

/// A segment cut in two at one of its points.
struct SplitCurveSegment
{
  CurveSegment left;
  CurveSegment right;
};

/// Moves the inner points' times between the outer ones', so that time never runs backwards along the segment.
CurveSegment ClampTangentTimes(const CurveSegment& segment) noexcept;

/// The place along a clamped segment, 0 to 1, at which its time is `time`.
Float SolveSegmentTime(const CurveSegment& segment, Float time) noexcept;

/// Both parts follow the segment's shape.
SplitCurveSegment SplitSegment(const CurveSegment& segment, Float place) noexcept;

}  // namespace q7z
