// Parameter tables and single values.

#include <charconv>
#include <cmath>

#include "host/scene/conversion.h"
#include "host/scenefile/scenewriter.h"

namespace q7z
{

// Parameter tables.

void SceneWriter::WriteTable(std::string_view name, const HeadlessContainer& table)
{
  if (table.IsEmpty())
    return;
  _json.WriteKey(name);
  _json.BeginObject();
  WriteEntries(table);
  _json.EndObject();
}

/// Recursion goes as deep as containers stand in containers.
void SceneWriter::WriteEntries(const HeadlessContainer& table)
{
  for (Int i = 0; i < table.GetCount(); ++i)
    WriteEntry(table.GetEntry(i));
}

void SceneWriter::WriteEntry(const HeadlessContainer::EntryView& entry)
{
  WriteEntryKey(entry.id);
  if (entry.value)
  {
    WriteValue(*entry.value);
    return;
  }
  _json.BeginObject();
  _json.WriteKey("container");
  _json.BeginObject();
  WriteEntries(*entry.container);
  _json.EndObject();
  _json.EndObject();
}

void SceneWriter::WriteEntryKey(const HostDescId& id)
{
  char text[48];
  char* end = text;
  for (Int32 level = 0; level < id.GetDepth(); ++level)
  {
    if (level > 0)
      *end++ = '.';
    end = std::to_chars(end, text + sizeof(text), id[level].id).ptr;
  }
  _json.WriteKey({text, static_cast<size_t>(end - text)});
}

namespace
{

/// Whether a table has an entry that is the same in other.
Bool IsDefault(const HeadlessContainer::EntryView& entry, const HeadlessContainer& defaults) noexcept
{
  const HostValue* const other = defaults.Find(entry.id);
  return entry.value && other && *entry.value == *other;
}

Bool HasEntry(const HeadlessContainer& table, const HostDescId& id) noexcept
{
  for (Int i = 0; i < table.GetCount(); ++i)
  {
    if (table.GetEntry(i).id == id)
      return true;
  }
  return false;
}

}  // namespace

void SceneWriter::WriteTableUpdate(std::string_view name, const HeadlessContainer& table, const HeadlessContainer& defaults)
{
  Bool isOpen = false;
  const auto open = [&]
  {
    if (isOpen)
      return;
    isOpen = true;
    _json.WriteKey(name);
    _json.BeginObject();
  };
  for (Int i = 0; i < table.GetCount(); ++i)
  {
    const HeadlessContainer::EntryView entry = table.GetEntry(i);
    if (IsDefault(entry, defaults))
      continue;
    open();
    WriteEntry(entry);
  }
  for (Int i = 0; i < defaults.GetCount(); ++i)
  {
    const HeadlessContainer::EntryView entry = defaults.GetEntry(i);
    if (HasEntry(table, entry.id))
      continue;
    open();
    WriteEntryKey(entry.id);
    _json.WriteNull();
  }
  if (isOpen)
    _json.EndObject();
}

void SceneWriter::WriteValue(const HostValue& value)
{
  switch (value.GetKind())
  {
    case HostValueKind::kNil: _json.WriteNull(); return;
    case HostValueKind::kBool: _json.WriteBool(value.GetBool()); return;
    case HostValueKind::kInt: _json.WriteInt(value.GetInt()); return;
    case HostValueKind::kFloat: _json.WriteFloat(value.GetFloat()); return;
    case HostValueKind::kString: _json.WriteString(value.GetString().GetView()); return;
    default: break;
  }
  _json.BeginObject(JsonLayout::kInline);
  WriteTypedValue(value);
  _json.EndObject();
}

/// The one member of an object that tells a value's kind.
void SceneWriter::WriteTypedValue(const HostValue& value)
{
  switch (value.GetKind())
  {
    case HostValueKind::kTime:
      _json.WriteKey("time");
      WriteTime(value.GetTime());
      break;
    case HostValueKind::kVector:
      _json.WriteKey("vector");
      _json.WriteVector(value.GetVector());
      break;
    case HostValueKind::kVector4:
    {
      const Vector4 vector = value.GetVector4();
      const Float numbers[4] = {vector.x, vector.y, vector.z, vector.w};
      _json.WriteKey("vector4");
      _json.WriteFloats(numbers, 4);
      break;
    }
    case HostValueKind::kUnit:
      _json.WriteKey("unit");
      _json.BeginArray();
      _json.WriteFloat(value.GetUnit().factor);
      _json.WriteInt(value.GetUnit().unitCode);
      _json.EndArray();
      break;
    default:
      _json.WriteKey("link");
      WriteIdOrNull(ToHeadless(value.GetLink()));
      break;
  }
}

// Single values.

void SceneWriter::WriteTime(const HostTime& time)
{
  constexpr Float kLargestWhole = 9007199254740992;  // 2^53
  _json.BeginArray(JsonLayout::kInline);
  for (const Float part : {time.numerator, time.denominator})
  {
    const Bool isWhole = std::fabs(part) <= kLargestWhole && part == std::floor(part) && !(part == 0 && std::signbit(part));
    isWhole ? _json.WriteInt(static_cast<Int>(part)) : _json.WriteFloat(part);
  }
  _json.EndArray();
}

void SceneWriter::WriteMatrix(const HostMatrix& matrix)
{
  _json.BeginObject(JsonLayout::kInline);
  _json.WriteKey("offset");
  _json.WriteVector(matrix.offset);
  _json.WriteKey("axisX");
  _json.WriteVector(matrix.axisX);
  _json.WriteKey("axisY");
  _json.WriteVector(matrix.axisY);
  _json.WriteKey("axisZ");
  _json.WriteVector(matrix.axisZ);
  _json.EndObject();
}

void SceneWriter::WritePoints(const HostArray<Vector>& points)
{
  const Vector* const first = points.GetR();
  _json.WriteKey("points");
  _json.WriteFloats(first ? &first->x : nullptr, 3 * points.GetCount());
}

void SceneWriter::WriteName(const HeadlessNode& node, Bool evenEmpty)
{
  if (evenEmpty || node.GetName().IsPopulated())
    WriteTextMember("name", node.GetName().GetView());
}

void SceneWriter::WriteIntMember(std::string_view name, Int value)
{
  _json.WriteKey(name);
  _json.WriteInt(value);
}

void SceneWriter::WriteBoolMember(std::string_view name, Bool value)
{
  _json.WriteKey(name);
  _json.WriteBool(value);
}

void SceneWriter::WriteFloatMember(std::string_view name, Float value)
{
  _json.WriteKey(name);
  _json.WriteFloat(value);
}

void SceneWriter::WriteTextMember(std::string_view name, std::string_view text)
{
  _json.WriteKey(name);
  _json.WriteString(text);
}

}  // namespace q7z
