// The tree of a document, for people. The walk over objects needs no recursion: what is open above is kept as one flag a level.

#include "host/scenefile/inspect.h"

#include <cmath>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "host/scenefile/utf8.h"

namespace q7z
{

namespace
{

// Deeper levels are not drawn further to the right.
constexpr size_t kDeepestLevel = 60;

struct Totals
{
  Int objects = 0;
  Int instances = 0;
  Int points = 0;
  Int polygons = 0;
  Int tags = 0;
  Int tracks = 0;
};

const char* FindObjectTypeName(Int32 type)
{
  switch (type)
  {
    case kPolygonObjectType: return "polygons";
    case kNullObjectType: return "group";
    case kCameraObjectType:
    case kRenderCameraObjectType: return "camera";
    case kJointObjectType: return "joint";
    case kSkinDeformerType: return "skin";
    case kInstanceObjectType:
    case kSecondInstanceObjectType: return "instance";
    default: return nullptr;
  }
}

const char* FindTagTypeName(Int32 type)
{
  switch (type)
  {
    case kNormalTagType: return "normals";
    case kUvwTagType: return "uvws";
    case kVertexColorTagType: return "colours";
    case kPolygonSelectionTagType: return "selection";
    case kTextureTagType: return "texture";
    case kPhongTagType: return "phong";
    case kWeightTagType: return "weights";
    case kPoseMorphTagType: return "morphs";
    default: return nullptr;
  }
}

std::string NameOfType(const char* name, Int32 type)
{
  return name ? name : "type " + std::to_string(type);
}

std::string FormatNumber(Float value)
{
  char text[32];
  std::snprintf(text, sizeof(text), "%.6g", value);
  return text;
}

/// What rounding leaves of a whole number is not shown.
Float Round(Float value)
{
  const Float rounded = std::nearbyint(value * 1e4) / 1e4;
  return std::isfinite(rounded) ? rounded : value;
}

std::string FormatVector(const Vector& v)
{
  return "(" + FormatNumber(Round(v.x)) + ", " + FormatNumber(Round(v.y)) + ", " + FormatNumber(Round(v.z)) + ")";
}

std::string FormatCount(Int count, const char* what)
{
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Texts as a terminal may show them: control characters and broken bytes as \xNN, and all that is beyond ASCII when asked for.
std::string Escape(const String& text, Bool asciiOnly)
{
  std::string out;
  std::string_view rest = text.GetView();
  while (!rest.empty())
  {
    const size_t length = GetUtf8Length(rest);
    const std::string_view sequence = rest.substr(0, length ? length : 1);
    if (length == 0 || IsControlSequence(sequence) || (asciiOnly && length > 1))
    {
      for (const char byte : sequence)
      {
        char code[5];
        std::snprintf(code, sizeof(code), "\\x%02X", static_cast<unsigned char>(byte));
        out += code;
      }
    }
    else
      out += sequence;
    rest.remove_prefix(sequence.size());
  }
  return out;
}

/// A node as a link: its name, or what stands for none.
std::string Escape(const HeadlessNode* node, Bool asciiOnly)
{
  return node ? Escape(node->GetName(), asciiOnly) : "nothing";
}

class TreePrinter
{
public:
  TreePrinter(const HeadlessDocument& document, const TreeSettings& settings, ByteSink& sink)
      : _document(document), _settings(settings), _sink(sink)
  {}

  Result<void> Print()
  {
    PrintLayers();
    PrintMaterials();
    PrintObjects();
    PrintTakes();
    Line(FormatCount(_totals.objects, "object") + ", " + FormatCount(_totals.instances, "instance") + ", " +
         FormatCount(_totals.points, "point") + ", " + FormatCount(_totals.polygons, "polygon") + ", " +
         FormatCount(_totals.tags, "tag") + ", " + FormatCount(_totals.tracks, "track"));
    return _error ? Result<void>(_error) : Result<void>();
  }

private:
  void Line(const std::string& text)
  {
    if (_error)
      return;
    const Result<void> written = _sink.Write(text + "\n");
    if (written.HasError())
      _error = written.GetError();
  }

  std::string Text(const String& text) const { return Escape(text, !_settings.isUtf8); }
  std::string Link(const HeadlessNode* node) const { return Escape(node, !_settings.isUtf8); }

  void PrintLayers()
  {
    const HeadlessLayer& root = _document.GetLayerRoot();
    for (Int i = 0; i < root.GetLayerCount(); ++i)
      Line("layer " + Text(root.GetLayer(i)->GetName()));
  }

  void PrintMaterials()
  {
    for (const HeadlessMaterial* material = _document.GetFirstMaterial(); material; material = material->GetNext())
    {
      Line("material " + Text(material->GetName()) + (material->IsNodeBased() ? " [nodes]" : ""));
      if (const NodeMaterialRecord* const record = material->GetRecord())
        PrintRecord(*record);
    }
  }

  void PrintRecord(const NodeMaterialRecord& record)
  {
    for (const auto& parameter : record.data.parameters)
      Line("  " + Text(parameter.GetKey()) + " " + FormatData(parameter.GetValue().value));
    for (const auto& texture : record.data.textures)
      Line("  " + Text(texture.GetKey()) + " " + Text(texture.GetValue().url.GetPath()));
  }

  std::string FormatData(const Data& data) const
  {
    switch (data.GetKind())
    {
      case DataKind::kBool: return data.GetBool().GetValue() ? "true" : "false";
      case DataKind::kInt: return std::to_string(data.GetInt().GetValue());
      case DataKind::kFloat: return FormatNumber(data.GetFloat().GetValue());
      case DataKind::kString: return Text(data.GetString().GetValue());
      case DataKind::kArray: return FormatRow(data.GetArray().GetValue());
      case DataKind::kNil:
      case DataKind::kDictionary: break;
    }
    return "";
  }

  std::string FormatRow(const DataArrayView& row) const
  {
    std::string text;
    for (const Data& element : row)
      text += (text.empty() ? "(" : ", ") + FormatData(element);
    return text + ")";
  }

  // Objects.

  void PrintObjects()
  {
    const HeadlessObject* object = _document.GetFirstObject();
    while (object)
    {
      PrintObject(*object);
      if (object->GetDown())
      {
        _hasNext.push_back(object->GetNext() != nullptr);
        object = object->GetDown();
        continue;
      }
      while (object && !object->GetNext())
      {
        object = object->GetUp();
        if (object)
          _hasNext.pop_back();
      }
      object = object ? object->GetNext() : nullptr;
    }
  }

  /// The lines in front of an object or, with continued, of what belongs to one.
  std::string GetIndent(const HeadlessObject& object, Bool continued) const
  {
    const std::string bar = _settings.isUtf8 ? "\u2502  " : "|  ";
    const std::string blank = "   ";
    std::string indent;
    for (size_t i = 1; i < _hasNext.size() && i < kDeepestLevel; ++i)
      indent += _hasNext[i] ? bar : blank;
    const Bool isNested = !_hasNext.empty();
    if (continued)
      return indent + (!isNested ? "" : object.GetNext() ? bar : blank) + (object.GetDown() ? bar : blank);
    if (!isNested)
      return "";
    if (_settings.isUtf8)
      return indent + (object.GetNext() ? "\u251c\u2500 " : "\u2514\u2500 ");
    return indent + (object.GetNext() ? "|- " : "`- ");
  }

  void PrintObject(const HeadlessObject& object)
  {
    ++_totals.objects;
    Line(GetIndent(object, false) + Text(object.GetName()) + DescribeObject(object));
    const std::string indent = GetIndent(object, true);
    PrintTracks(object, indent);
    for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
    {
      ++_totals.tags;
      Line(indent + "# " + DescribeTag(*tag));
      PrintTracks(*tag, indent + "  ");
    }
  }

  std::string DescribeObject(const HeadlessObject& object)
  {
    std::string text = "  [" + NameOfType(FindObjectTypeName(object.GetType()), object.GetType()) + "]";
    if (const HeadlessPolygonObject* const polygonObject = object.AsPolygonObject())
    {
      _totals.points += polygonObject->GetPointCount();
      _totals.polygons += polygonObject->GetPolygonCount();
      text += " " + FormatCount(polygonObject->GetPointCount(), "point") + ", " +
              FormatCount(polygonObject->GetPolygonCount(), "polygon");
    }
    if (object.IsInstance())
    {
      ++_totals.instances;
      text += " -> " + Link(object.GetReference());
    }
    return text + DescribeTransform(object) + DescribeState(object);
  }

  static std::string DescribeTransform(const HeadlessObject& object)
  {
    const TransformVectors vectors = object.GetVectors();
    std::string text;
    if (!(vectors.position == Vector()))
      text += " at " + FormatVector(vectors.position);
    if (!(vectors.rotation == Vector()))
      text += " turned " + FormatVector(vectors.rotation * (180 / 3.141592653589793));
    if (const std::string scale = FormatVector(vectors.scale); scale != "(1, 1, 1)")
      text += " scaled " + scale;
    return text;
  }

  std::string DescribeState(const HeadlessObject& object) const
  {
    std::string text;
    const bool editorHidden = object.GetVisibility(kEditorVisibility) == kHiddenMode;
    const bool renderHidden = object.GetVisibility(kRenderVisibility) == kHiddenMode;
    if (editorHidden || renderHidden)
      text += editorHidden && renderHidden ? " hidden" : editorHidden ? " hidden in the editor" : " hidden in renders";
    if (object.GetLayer())
      text += " on layer " + Link(object.GetLayer());
    return text;
  }

  // Tags and tracks.

  std::string DescribeTag(const HeadlessTag& tag) const
  {
    std::string text = NameOfType(FindTagTypeName(tag.GetType()), tag.GetType());
    if (tag.GetName().IsPopulated())
      text += " " + Text(tag.GetName());
    return text + DescribeTagData(tag);
  }

  std::string DescribeTagData(const HeadlessTag& tag) const
  {
    switch (tag.GetType())
    {
      case kNormalTagType:
      case kUvwTagType: return ": " + FormatCount(static_cast<const HeadlessCornerTag&>(tag).GetPolygonCount(), "polygon");
      case kVertexColorTagType:
      {
        const auto& colors = static_cast<const HeadlessVertexColorTag&>(tag);
        return ": " + FormatCount(colors.GetCount(), colors.IsPerPoint() ? "point" : "polygon");
      }
      case kPolygonSelectionTagType:
        return ": " + FormatCount(static_cast<const HeadlessSelectionTag&>(tag).GetSelection().GetCount(), "polygon");
      case kTextureTagType: return ": " + Link(static_cast<const HeadlessTextureTag&>(tag).GetMaterial());
      case kPhongTagType:
        return ": " +
               FormatNumber(static_cast<const HeadlessPhongTag&>(tag).GetSettings().angleRadians * 180 / 3.141592653589793) +
               (_settings.isUtf8 ? "\u00b0" : " degrees");
      case kWeightTagType: return ": " + FormatCount(static_cast<const HeadlessWeightTag&>(tag).GetJointCount(), "joint");
      case kPoseMorphTagType: return ": " + FormatCount(static_cast<const HeadlessPoseMorphTag&>(tag).GetMorphCount(), "morph");
      default: return "";
    }
  }

  void PrintTracks(const HeadlessNode& node, const std::string& indent)
  {
    const HeadlessTrackList* const tracks = node.GetTracks();
    for (const HeadlessTrack* track = tracks ? tracks->GetFirst() : nullptr; track; track = track->GetNext())
    {
      ++_totals.tracks;
      Line(indent + "~ track " + DescribeTrack(*track));
    }
  }

  static std::string DescribeTrack(const HeadlessTrack& track)
  {
    std::string text;
    for (Int32 i = 0; i < track.GetId().GetDepth(); ++i)
      text += (i ? "." : "") + std::to_string(track.GetId()[i].id);
    const HeadlessCurve* const curve = track.GetCurve();
    if (!curve || curve->GetKeyCount() == 0)
      return text + ": no keys";
    const HeadlessKey& first = *curve->GetKey(0);
    const HeadlessKey& last = *curve->GetKey(curve->GetKeyCount() - 1);
    return text + ": " + FormatCount(curve->GetKeyCount(), "key") + " from " + FormatNumber(first.GetTime().GetSeconds()) +
           " to " + FormatNumber(last.GetTime().GetSeconds()) + " s, " + NameOfInterpolation(first.GetInterpolation());
  }

  static const char* NameOfInterpolation(InterpolationMode mode)
  {
    return mode == InterpolationMode::Spline ? "spline" : mode == InterpolationMode::Step ? "step" : "linear";
  }

  void PrintTakes()
  {
    const HeadlessTakeData& takes = _document.GetTakeData();
    if (takes.GetTakeCount() == 1)
      return;
    for (Int i = 0; i < takes.GetTakeCount(); ++i)
    {
      const HeadlessTake& take = *takes.GetTake(i);
      Line("take " + Text(take.GetName()) + (take.IsMain() ? " [main]" : "") +
           (&take == takes.GetCurrentTake() ? " current" : ""));
      for (Int k = 0; k < take.GetOverrideCount(); ++k)
      {
        const HeadlessOverride& over = *take.GetOverride(k);
        Line("  sets " + Link(over.GetTarget()));
        PrintTracks(over, "    ");
      }
    }
  }

  const HeadlessDocument& _document;
  TreeSettings _settings;
  ByteSink& _sink;
  Error _error;
  Totals _totals;
  std::vector<bool> _hasNext;  // of the objects above: whether another sibling follows
};

}  // namespace

Result<void> PrintTree(const HeadlessDocument& document, const TreeSettings& settings, ByteSink& sink) noexcept
{
  try
  {
    return TreePrinter(document, settings, sink).Print();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Bool IsUtf8Locale(const char* lcAll, const char* lcCtype, const char* lang) noexcept
{
  for (const char* const value : {lcAll, lcCtype, lang})
  {
    if (!value || !*value)
      continue;
    const std::string_view locale = value;
    const size_t dot = locale.find('.');
    const std::string_view codeset = dot == std::string_view::npos ? "" : locale.substr(dot + 1);
    return codeset.starts_with("UTF-8") || codeset.starts_with("utf8") || codeset.starts_with("utf-8") ||
           codeset.starts_with("UTF8");
  }
  return false;
}

}  // namespace q7z
