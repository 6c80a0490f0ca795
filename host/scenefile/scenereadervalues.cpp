// Single values, arrays of numbers, and the checks that all of the reading shares.

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/scenefile/numbertext.h"
#include "host/scenefile/scenereader.h"

namespace q7z
{

namespace
{

std::string_view GetKindName(const JsonNode& node) noexcept
{
  switch (node.kind)
  {
    case JsonKind::kNull: return "null";
    case JsonKind::kBool: return node.boolean ? "true" : "false";
    case JsonKind::kInt: return "a whole number";
    case JsonKind::kFloat: return "a float";
    case JsonKind::kString: return "a text";
    case JsonKind::kObject: return "an object";
    default: return "an array";
  }
}

std::string MakeFoundText(std::string_view expected, std::string_view found)
{
  return std::string(expected) + " expected, " + std::string(found) + " found";
}

}  // namespace

Error SceneReader::MakeKindError(const JsonNode& node, std::string_view expected)
{
  return _tree.MakeError(node, MakeFoundText(expected, GetKindName(node)));
}

Error SceneReader::MakeElementKindError(const JsonNode& array, Int index, std::string_view expected)
{
  return _tree.MakeError(array, index, MakeFoundText(expected, GetKindName(array.GetElement(index))));
}

Error SceneReader::MakeIndexError(const JsonNode& array, Int index, std::string_view what, Int count)
{
  const Int found = array.GetElement(index).whole;
  return _tree.MakeError(array, index,
                         "there is no " + std::string(what) + ' ' + std::to_string(found) + ", the object has " +
                           std::to_string(count));
}

// Single values.

Result<void> SceneReader::ReadValue(const JsonNode& node, Bool& target)
{
  if (node.kind != JsonKind::kBool)
    return MakeKindError(node, "true or false");
  target = node.boolean;
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, Int& target)
{
  if (node.kind != JsonKind::kInt)
    return MakeKindError(node, "a whole number");
  target = node.whole;
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, Int32& target)
{
  if (node.kind != JsonKind::kInt)
    return MakeKindError(node, "a whole number");
  if (node.whole < INT32_MIN || node.whole > INT32_MAX)
    return _tree.MakeError(node, MakeFoundText("a whole number of 32 bits", std::to_string(node.whole)));
  target = static_cast<Int32>(node.whole);
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, Float& target)
{
  if (!node.IsNumber())
    return MakeKindError(node, "a number");
  target = node.GetNumber();
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, String& target)
{
  if (node.kind != JsonKind::kString)
    return MakeKindError(node, "a text");
  target = String(node.text, node.count);
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, Vector& target)
{
  Float numbers[3];
  RETURN_IF_ERROR(CheckCount(node, 3, "numbers"));
  RETURN_IF_ERROR(ReadNumbers(node, numbers));
  target = {numbers[0], numbers[1], numbers[2]};
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, Vector4& target)
{
  Float numbers[4];
  RETURN_IF_ERROR(CheckCount(node, 4, "numbers"));
  RETURN_IF_ERROR(ReadNumbers(node, numbers));
  target = {numbers[0], numbers[1], numbers[2], numbers[3]};
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, HostTime& target)
{
  Float numbers[2];
  RETURN_IF_ERROR(CheckCount(node, 2, "numbers"));
  RETURN_IF_ERROR(ReadNumbers(node, numbers));
  target = {numbers[0], numbers[1]};
  return {};
}

Result<void> SceneReader::ReadValue(const JsonNode& node, HostUnitScale& target)
{
  Float numbers[2];
  RETURN_IF_ERROR(CheckCount(node, 2, "numbers"));
  RETURN_IF_ERROR(ReadNumbers(node, numbers));
  target.factor = numbers[0];
  return ReadInt32Element(node, 1, target.unitCode);
}

Result<void> SceneReader::ReadValue(const JsonNode& node, HostMatrix& target)
{
  RETURN_IF_ERROR(CheckMembers(node, "a matrix", {"offset", "axisX", "axisY", "axisZ"}));
  RETURN_IF_ERROR(ReadMember(node, "offset", target.offset));
  RETURN_IF_ERROR(ReadMember(node, "axisX", target.axisX));
  RETURN_IF_ERROR(ReadMember(node, "axisY", target.axisY));
  return ReadMember(node, "axisZ", target.axisZ);
}

Result<void> SceneReader::ReadInt32Element(const JsonNode& array, Int index, Int32& target)
{
  const JsonNode element = array.GetElement(index);
  if (element.kind != JsonKind::kInt)
    return MakeElementKindError(array, index, "a whole number");
  if (element.whole < INT32_MIN || element.whole > INT32_MAX)
    return _tree.MakeError(array, index, MakeFoundText("a whole number of 32 bits", std::to_string(element.whole)));
  target = static_cast<Int32>(element.whole);
  return {};
}

Result<void> SceneReader::ReadInt32InRange(const JsonNode& node, Int32 first, Int32 last, Int32& target)
{
  Int32 number = 0;
  RETURN_IF_ERROR(ReadValue(node, number));
  if (number < first || number > last)
  {
    const std::string range = std::to_string(first) + " to " + std::to_string(last);
    return _tree.MakeError(node, MakeFoundText(range, std::to_string(number)));
  }
  target = number;
  return {};
}

Result<void> SceneReader::ReadName(const JsonNode& object, HeadlessNode& node)
{
  String name;
  RETURN_IF_ERROR(ReadMember(object, "name", name));
  CHECK_MEMORY(name.IsEmpty() || node.SetName(name));
  return {};
}

// Arrays and objects.

Result<void> SceneReader::CheckObject(const JsonNode& node)
{
  return node.kind == JsonKind::kObject ? Result<void>() : MakeKindError(node, "an object");
}

Result<void> SceneReader::CheckArray(const JsonNode& node)
{
  return node.IsArray() ? Result<void>() : MakeKindError(node, "an array");
}

Result<void> SceneReader::CheckMembers(const JsonNode& node, std::string_view what, const std::vector<std::string_view>& names)
{
  RETURN_IF_ERROR(CheckObject(node));
  for (Int i = 0; i < node.count; ++i)
  {
    const JsonMember& member = node.members[i];
    if (std::find(names.begin(), names.end(), member.name) == names.end())
      return _tree.MakeError(member.value, "not a member of " + std::string(what));
  }
  return {};
}

Result<void> SceneReader::CheckCount(const JsonNode& array, Int count, std::string_view what)
{
  RETURN_IF_ERROR(CheckArray(array));
  const Int found = array.GetElementCount();
  if (found == count)
    return {};
  const std::string expected = std::to_string(count) + ' ' + std::string(what);
  return _tree.MakeError(array, MakeFoundText(expected, std::to_string(found)));
}

Result<void> SceneReader::ReadGroupCount(const JsonNode& array, Int size, Int& groupCount)
{
  RETURN_IF_ERROR(CheckArray(array));
  const Int found = array.GetElementCount();
  if (found % size != 0)
  {
    const std::string expected = "a multiple of " + std::to_string(size) + " numbers";
    return _tree.MakeError(array, MakeFoundText(expected, std::to_string(found)));
  }
  groupCount = found / size;
  if (groupCount > INT32_MAX)
    return _tree.MakeError(array, "too many numbers");
  return {};
}

Result<void> SceneReader::ReadNumbers(const JsonNode& array, Float* target)
{
  RETURN_IF_ERROR(CheckArray(array));
  const Int count = array.GetElementCount();
  if (array.kind == JsonKind::kFloats)
  {
    std::copy(array.floats, array.floats + count, target);
    return {};
  }
  for (Int i = 0; i < count; ++i)
  {
    const JsonNode element = array.GetElement(i);
    if (!element.IsNumber())
      return MakeElementKindError(array, i, "a number");
    target[i] = element.GetNumber();
  }
  return {};
}

Result<void> SceneReader::ReadSingles(const JsonNode& array, Float32* target)
{
  RETURN_IF_ERROR(CheckArray(array));
  const Int count = array.GetElementCount();
  for (Int i = 0; i < count; ++i)
  {
    const JsonNode element = array.GetElement(i);
    if (!element.IsNumber())
      return MakeElementKindError(array, i, "a number");
    const Float number = element.GetNumber();
    if (std::isfinite(number) && std::fabs(number) > kLargestSingle)
      return _tree.MakeError(array, i, "too large for 32 bits");
    target[i] = static_cast<Float32>(number);
  }
  return {};
}

// Ids of parameters.

namespace
{

/// A decimal number as it is written: no plus, no needless zeros.
Bool ParseLevel(std::string_view text, Int32& id) noexcept
{
  const std::string_view::const_iterator first = text.begin();
  const std::errc error = std::from_chars(first, first + text.size(), id).ec;
  return error == std::errc() && text == std::to_string(id);
}

}  // namespace

Bool ParseDescId(std::string_view text, HostDescId& id) noexcept
{
  Int32 levels[3] = {};
  size_t depth = 0;
  while (depth < 3)
  {
    const size_t point = text.find('.');
    if (!ParseLevel(text.substr(0, point), levels[depth++]))
      return false;
    if (point == std::string_view::npos)
    {
      id = depth == 1   ? HostDescId(levels[0])
           : depth == 2 ? HostDescId(levels[0], levels[1])
                        : HostDescId({levels[0], 0, 0}, {levels[1], 0, 0}, {levels[2], 0, 0});
      return true;
    }
    text.remove_prefix(point + 1);
  }
  return false;
}

}  // namespace q7z
