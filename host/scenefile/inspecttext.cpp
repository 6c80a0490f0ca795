#include "host/scenefile/inspecttext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

#include "host/scene/headlessposemorphtag.h"
#include "host/scenefile/utf8.h"

namespace q7z
{

namespace
{

constexpr Float kDegreesPerRadian = 180 / std::numbers::pi;

void AppendEscaped(std::string& out, std::string_view bytes)
{
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char byte : bytes)
  {
    out += "\\x";
    out += kDigits[static_cast<Byte>(byte) >> 4];
    out += kDigits[static_cast<Byte>(byte) & 15];
  }
}

}  // namespace

std::string EscapeText(std::string_view text, Bool keepUtf8)
{
  std::string out;
  while (!text.empty())
  {
    const size_t length = GetUtf8Length(text);
    const std::string_view sequence = text.substr(0, std::max<size_t>(length, 1));
    const Bool isShown = length > 0 && !IsControlSequence(sequence) && (keepUtf8 || length == 1);
    if (isShown)
      out += sequence;
    else
      AppendEscaped(out, sequence);
    text.remove_prefix(sequence.size());
  }
  return out;
}

std::string FormatNumber(Float number)
{
  char text[32];
  const char* const end = std::to_chars(text, text + sizeof(text), number == 0 ? 0 : number, std::chars_format::general, 6).ptr;
  return {text, static_cast<size_t>(end - text)};
}

std::string FormatVector(const Vector& vector)
{
  constexpr Float kSteps = 1e4;
  const auto format = [](Float number)
  {
    const Float rounded = std::nearbyint(number * kSteps) / kSteps;
    return FormatNumber(std::isfinite(rounded) ? rounded : number);
  };
  return '(' + format(vector.x) + ", " + format(vector.y) + ", " + format(vector.z) + ')';
}

std::string FormatAngle(Float radians)
{
  return FormatNumber(radians * kDegreesPerRadian) + " deg";
}

std::string FormatAngles(const Vector& radians)
{
  return FormatVector(radians * kDegreesPerRadian) + " deg";
}

std::string FormatCount(Int count, std::string_view what)
{
  return std::to_string(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

std::string GetObjectTypeName(Int32 type)
{
  switch (type)
  {
    case kPolygonObjectType: return "polygon object";
    case kNullObjectType: return "null";
    case kCameraObjectType:
    case kRenderCameraObjectType: return "camera";
    case kJointObjectType: return "joint";
    case kSkinDeformerType: return "skin";
    case kInstanceObjectType:
    case kSecondInstanceObjectType: return "instance";
    default: return "object " + std::to_string(type);
  }
}

std::string GetTagTypeName(Int32 type)
{
  switch (type)
  {
    case kNormalTagType: return "normals";
    case kUvwTagType: return "UVW";
    case kVertexColorTagType: return "colors";
    case kPolygonSelectionTagType: return "selection";
    case kTextureTagType: return "texture";
    case kPhongTagType: return "phong";
    case kWeightTagType: return "weights";
    case kPoseMorphTagType: return "pose morph";
    case kNodeBasedTagType: return "node-based tag";
    default: return "tag " + std::to_string(type);
  }
}

std::string GetUnitName(Int32 code)
{
  static constexpr const char* kNames[] = {"km", "m", "cm", "mm", "um", "nm", "mile", "yard", "foot", "inch"};
  return code >= 1 && code <= 10 ? kNames[code - 1] : "unit " + std::to_string(code);
}

namespace
{

/// The name of a component of a vector that all objects have, or an empty text.
std::string GetTransformName(const HostDescId& id)
{
  static constexpr const char* kVectors[] = {"position", "rotation", "scale"};
  static constexpr const char* kComponents[] = {".x", ".y", ".z"};
  const Int32 vector = id[0].id - kPositionParameter;
  if (vector < 0 || vector > 2 || id.GetDepth() > 2)
    return {};
  const Int32 component = id[1].id - kComponentX;
  if (id.GetDepth() == 1)
    return kVectors[vector];
  return component >= 0 && component <= 2 ? std::string(kVectors[vector]) + kComponents[component] : std::string();
}

}  // namespace

std::string GetTrackName(const HostDescId& id)
{
  std::string transform = GetTransformName(id);
  if (!transform.empty())
    return transform;
  if (id.GetDepth() == 1 && id[0].id == kPointTrackParameter)
    return "points";
  const Int32 firstStrength = HeadlessPoseMorphTag::GetStrengthId(0)[1].id;
  if (id.GetDepth() == 2 && id[0].id == HeadlessPoseMorphTag::kStrengthParameter && id[1].id >= firstStrength)
    return "morph " + std::to_string((id[1].id - firstStrength) / 100);
  std::string name;
  for (Int32 level = 0; level < id.GetDepth(); ++level)
    name += (level > 0 ? "." : "") + std::to_string(id[level].id);
  return name;
}

namespace
{

/// The interpolation of all keys but the last, which begins nothing.
std::string_view GetInterpolationName(const HeadlessCurve& curve) noexcept
{
  const InterpolationMode first = curve.GetKey(0)->GetInterpolation();
  for (Int i = 1; i + 1 < curve.GetKeyCount(); ++i)
  {
    if (curve.GetKey(i)->GetInterpolation() != first)
      return "mixed";
  }
  return first == InterpolationMode::Spline ? "spline" : first == InterpolationMode::Step ? "step" : "linear";
}

}  // namespace

std::string DescribeCurve(const HeadlessTrack& track)
{
  const HeadlessCurve* const curve = track.GetCurve();
  if (!curve)
    return "no curve";
  const Int count = curve->GetKeyCount();
  if (count == 0)
    return "no keys";
  Float smallest = curve->GetKey(0)->GetValue();
  Float largest = smallest;
  for (Int i = 1; i < count; ++i)
  {
    smallest = std::min(smallest, curve->GetKey(i)->GetValue());
    largest = std::max(largest, curve->GetKey(i)->GetValue());
  }
  const Float first = curve->GetKey(0)->GetTime().GetSeconds();
  const Float last = curve->GetKey(count - 1)->GetTime().GetSeconds();
  return FormatCount(count, "key") + ", " + std::string(GetInterpolationName(*curve)) + ", " + FormatNumber(first) + " s to " +
         FormatNumber(last) + " s, values " + FormatNumber(smallest) + " to " + FormatNumber(largest);
}

std::string DescribeData(const Data& data, Bool keepUtf8)
{
  switch (data.GetKind())
  {
    case DataKind::kNil: return "nothing";
    case DataKind::kBool: return data.GetBool().GetValue() ? "true" : "false";
    case DataKind::kInt: return std::to_string(data.GetInt().GetValue());
    case DataKind::kFloat: return FormatNumber(data.GetFloat().GetValue());
    case DataKind::kString: return '"' + EscapeText(data.GetString().GetValue().GetView(), keepUtf8) + '"';
    case DataKind::kDictionary: return FormatCount(data.GetDictionary().GetValue().GetCount(), "member");
    case DataKind::kArray: break;
  }
  constexpr Int kMostShown = 16;
  const DataArrayView elements = data.GetArray().GetValue();
  std::string text;
  for (Int i = 0; i < std::min(elements.GetCount(), kMostShown); ++i)
  {
    const Bool nests = elements[i].GetKind() == DataKind::kArray;
    text += (i > 0 ? ", " : "") + (nests ? std::string("(...)") : DescribeData(elements[i], keepUtf8));
  }
  return '(' + text + (elements.GetCount() > kMostShown ? ", ...)" : ")");
}

}  // namespace q7z
