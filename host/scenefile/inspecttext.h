#pragma once

// The words of the tree that shows a document: how nodes, numbers and texts are put for people. Pure functions; they may throw
// bad_alloc.

#include <string>
#include <string_view>

#include "framework/data.h"
#include "host/scene/headlesstrack.h"

namespace q7z
{

/// Control characters and bytes that are no UTF-8 as \xNN; keepUtf8 false: everything beyond ASCII, too.
std::string EscapeText(std::string_view text, Bool keepUtf8);

/// Six digits at most; no negative zero.
std::string FormatNumber(Float number);
/// "(1, 2, 3)", without what rounding has left of whole numbers.
std::string FormatVector(const Vector& vector);
/// "40 deg", "(0, 90, 0) deg".
std::string FormatAngle(Float radians);
std::string FormatAngles(const Vector& radians);
/// "1 object", "2 objects".
std::string FormatCount(Int count, std::string_view what);

/// The name of an object's, or tag's, type: "joint", "object 123".
std::string GetObjectTypeName(Int32 type);
std::string GetTagTypeName(Int32 type);
/// "cm"; "unit 99" for a code that is none.
std::string GetUnitName(Int32 code);
/// The parameter that a track moves: "position.x", "points", "morph 2", "1000.5".
std::string GetTrackName(const HostDescId& id);
/// "3 keys, linear, 0 s to 1.5 s, values 0 to 100".
std::string DescribeCurve(const HeadlessTrack& track);
/// A value of a material: "(1, 0.5, 0)", "\"MASK\"", "true".
std::string DescribeData(const Data& data, Bool keepUtf8);

}  // namespace q7z
