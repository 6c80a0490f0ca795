#include "host/scenefile/inspect.h"

#include <string>
#include <vector>

#include "host/images/imagefiles.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "host/scenefile/inspecttext.h"
#include "host/scenefile/textureurl.h"

namespace q7z
{

namespace
{

/// Lines of a tree. What lies deeper than can be shown stands at the same place with its level before it.
class TreeLines
{
public:
  TreeLines(Bool isUtf8, ByteSink& sink) : _bytes(sink), _isUtf8(isUtf8) {}

  void PutPlain(std::string_view text)
  {
    _bytes.Add(text);
    _bytes.Add('\n');
  }

  void Put(Bool isLast, std::string_view text)
  {
    _bytes.Add(_prefix);
    _bytes.Add(isLast ? (_isUtf8 ? "└─ " : "`- ") : (_isUtf8 ? "├─ " : "|- "));
    if (_level > kDeepestShown)
      _bytes.Add("[level " + std::to_string(_level) + "] ");
    PutPlain(text);
  }

  /// What follows stands under the line that was put last with the same isLast.
  void Enter(Bool isLast)
  {
    if (++_level > kDeepestShown)
      return;
    _lengths.push_back(_prefix.size());
    _prefix += isLast ? "   " : _isUtf8 ? "│  " : "|  ";
  }
  void Leave()
  {
    if (_level-- > kDeepestShown)
      return;
    _prefix.resize(_lengths.back());
    _lengths.pop_back();
  }

  Result<void> Finish() { return _bytes.Finish(); }

private:
  static constexpr Int kDeepestShown = 40;

  BufferedBytes _bytes;
  Bool _isUtf8;
  Int _level = 0;
  std::string _prefix;
  std::vector<size_t> _lengths;  // of the prefix, before each level
};

class TreePrinter
{
public:
  TreePrinter(const HeadlessDocument& document, const TreeSettings& settings, ByteSink& sink)
      : _document(document), _isUtf8(settings.isUtf8), _imageFolder(settings.imageFolder), _lines(settings.isUtf8, sink)
  {}

  Result<void> Print()
  {
    _lines.PutPlain(DescribeDocument());
    PrintTexts();
    PrintLayers();
    PrintMaterials();
    PrintObjects();
    PrintTakes();
    _lines.PutPlain(DescribeTotals());
    return _lines.Finish();
  }

private:
  std::string Quote(const String& text) const { return '"' + EscapeText(text.GetView(), _isUtf8) + '"'; }

  // The document.

  std::string DescribeDocument() const
  {
    const HeadlessContainer& parameters = _document.GetParameters();
    const HostValue* const unitValue = _document.GetSettings().Find(kDocumentUnitSetting);
    const HostUnitScale unit = unitValue ? unitValue->GetUnit() : HostUnitScale();
    const auto seconds = [&](Int32 id)
    {
      const HostValue* const value = parameters.Find(id);
      return FormatNumber(value ? value->GetTime().GetSeconds() : 0) + " s";
    };
    const HostValue* const rate = parameters.Find(kDocumentRateParameter);
    std::string text = "document " + Quote(_document.GetName()) + ": " + FormatNumber(rate ? rate->GetFloat() : 0) + " fps, " +
                       seconds(kDocumentStartParameter) + " to " + seconds(kDocumentEndParameter) + ", " +
                       FormatNumber(unit.factor) + ' ' + GetUnitName(unit.unitCode);
    if (const Float time = _document.GetTime().GetSeconds(); time != 0)
      text += ", at " + FormatNumber(time) + " s";
    return text;
  }

  void PrintTexts()
  {
    static constexpr struct
    {
      Int32 id;
      const char* name;
    } kTexts[] = {{kDocumentGeneratorParameter, "generator"},
                  {kDocumentAuthorParameter, "author"},
                  {kDocumentCopyrightParameter, "copyright"}};
    for (const auto& entry : kTexts)
    {
      const HostValue* const value = _document.GetParameters().Find(entry.id);
      if (value && value->GetString().IsPopulated())
        _lines.Put(false, std::string(entry.name) + ' ' + Quote(value->GetString()));
    }
  }

  void PrintLayers()
  {
    const HeadlessLayer& root = _document.GetLayerRoot();
    const Int count = root.GetLayerCount();
    if (count == 0)
      return;
    _lines.Put(false, FormatCount(count, "layer"));
    _lines.Enter(false);
    for (Int i = 0; i < count; ++i)
      _lines.Put(i + 1 == count, Quote(root.GetLayer(i)->GetName()));
    _lines.Leave();
  }

  std::string DescribeTotals() const
  {
    std::string text = FormatCount(_objectCount, "object") + ", " + FormatCount(_pointCount, "point") + ", " +
                       FormatCount(_polygonCount, "polygon") + ", " + FormatCount(_tagCount, "tag") + ", " +
                       FormatCount(_trackCount, "track") + ", " + FormatCount(_keyCount, "key") + ", ";
    return text + FormatCount(_materialCount, "material") + ", " + FormatCount(_document.GetTakeData().GetTakeCount(), "take");
  }

  // Materials.

  void PrintMaterials()
  {
    for (const HeadlessMaterial* material = _document.GetFirstMaterial(); material; material = material->GetNext())
      ++_materialCount;
    if (_materialCount == 0)
      return;
    _lines.Put(false, FormatCount(_materialCount, "material"));
    _lines.Enter(false);
    for (const HeadlessMaterial* material = _document.GetFirstMaterial(); material; material = material->GetNext())
      PrintMaterial(*material, !material->GetNext());
    _lines.Leave();
  }

  void PrintMaterial(const HeadlessMaterial& material, Bool isLast)
  {
    const NodeMaterialRecord* const record = material.GetRecord();
    std::string text = (record ? "node material " : "material ") + Quote(material.GetName());
    if (record)
      text += ": " + EscapeText(record->data.materialTypeId.GetView(), _isUtf8);
    _lines.Put(isLast, text);
    _lines.Enter(isLast);
    PutAll(record ? DescribeRecord(*record) : DescribeChannels(material));
    _lines.Leave();
  }

  void PutAll(const std::vector<std::string>& texts)
  {
    for (const std::string& text : texts)
      _lines.Put(&text == &texts.back(), text);
  }

  std::vector<std::string> DescribeRecord(const NodeMaterialRecord& record) const
  {
    std::vector<std::string> texts;
    std::string factors;
    for (const auto& entry : record.data.parameters)
    {
      factors += (factors.empty() ? "" : ", ") + EscapeText(entry.GetKey().GetView(), _isUtf8) + ' ' +
                 DescribeData(entry.GetValue().value, _isUtf8);
    }
    if (!factors.empty())
      texts.push_back(std::move(factors));
    for (const auto& entry : record.data.textures)
    {
      const std::string file = MakeTextureText(entry.GetValue().url, _document.GetFolder().GetView(), _imageFolder);
      texts.push_back(EscapeText(entry.GetKey().GetView(), _isUtf8) + " <- " + EscapeText(file, _isUtf8) +
                      DescribeImage(entry.GetValue().url));
    }
    return texts;
  }

  /// What the file of a texture is; nothing for what is no file.
  std::string DescribeImage(const Url& url) const
  {
    const std::string path = GetTexturePath(url, _document.GetFolder().GetView());
    return path.empty() ? path : " (" + DescribeImageFile(path) + ')';
  }

  std::vector<std::string> DescribeChannels(const HeadlessMaterial& material) const
  {
    std::vector<std::string> texts;
    for (const MaterialChannel& channel : material.GetChannels())
    {
      texts.push_back("channel " + std::to_string(channel.number) + (channel.on ? ": on" : ": off") +
                      DescribeShader(channel.shader));
    }
    for (const ReflectanceLayer& layer : material.GetLayers())
    {
      std::string text = "reflectance layer " + std::to_string(layer.firstId);
      for (const LayerShader& entry : layer.shaders)
        text += ", shader " + std::to_string(entry.offset) + DescribeShader(entry.shader);
      texts.push_back(std::move(text));
    }
    return texts;
  }

  std::string DescribeShader(const HeadlessShader* shader) const
  {
    constexpr Int32 kShaderFile = 1002;
    const HostValue* const file = shader ? shader->GetParameters().Find(kShaderFile) : nullptr;
    return file ? " <- " + EscapeText(file->GetString().GetView(), _isUtf8) : std::string();
  }

  // Objects.

  void PrintObjects()
  {
    const HeadlessObject* object = _document.GetFirstObject();
    if (!object)
      return;
    _lines.Put(false, "objects");
    _lines.Enter(false);
    // The walk needs no more memory for a deep hierarchy than the lines do.
    while (object)
    {
      const Bool isLast = !object->GetNext();
      PrintObject(*object, isLast);
      if (const HeadlessObject* const child = object->GetDown())
      {
        _lines.Enter(isLast);
        object = child;
        continue;
      }
      while (object && !object->GetNext())
      {
        _lines.Leave();
        object = object->GetUp();
      }
      if (object)
        object = object->GetNext();
    }
  }

  void PrintObject(const HeadlessObject& object, Bool isLast)
  {
    ++_objectCount;
    _lines.Put(isLast, DescribeObject(object));
    _lines.Enter(isLast);
    const Bool hasChildren = object.GetDown() != nullptr;
    const HeadlessTrackList& tracks = *object.GetTracks();
    for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
      PrintTag(*tag, !tag->GetNext() && tracks.IsEmpty() && !hasChildren);
    PrintTracks(tracks, !hasChildren);
    _lines.Leave();
  }

  std::string DescribeObject(const HeadlessObject& object)
  {
    std::string text = GetObjectTypeName(object.GetType()) + ' ' + Quote(object.GetName());
    if (object.IsInstance())
      text += " -> " + (object.GetReference() ? Quote(object.GetReference()->GetName()) : "nothing");
    std::string details;
    if (const HeadlessPolygonObject* const polygonObject = object.AsPolygonObject())
    {
      _pointCount += polygonObject->GetPointCount();
      _polygonCount += polygonObject->GetPolygonCount();
      details += ", " + FormatCount(polygonObject->GetPointCount(), "point") + ", " +
                 FormatCount(polygonObject->GetPolygonCount(), "polygon");
    }
    details += DescribeTransform(object) + DescribeVisibility(object);
    if (const HeadlessLayer* const layer = object.GetLayer())
      details += ", layer " + Quote(layer->GetName());
    return details.empty() ? text : text + ": " + details.substr(2);
  }

  static std::string DescribeTransform(const HeadlessObject& object)
  {
    const TransformVectors vectors = object.GetVectors();
    std::string text;
    if (const std::string position = FormatVector(vectors.position); position != "(0, 0, 0)")
      text += ", position " + position;
    if (const std::string rotation = FormatAngles(vectors.rotation); rotation != "(0, 0, 0) deg")
      text += ", rotation " + rotation;
    if (const std::string scale = FormatVector(vectors.scale); scale != "(1, 1, 1)")
      text += ", scale " + scale;
    if (!(object.GetBase() == BaseTransform()))
      text += ", base transform";
    return text;
  }

  static std::string DescribeVisibility(const HeadlessObject& object)
  {
    const Bool inEditor = object.GetVisibility(kEditorVisibility) == kHiddenMode;
    const Bool inRender = object.GetVisibility(kRenderVisibility) == kHiddenMode;
    if (inEditor && inRender)
      return ", hidden";
    return inEditor ? ", hidden in editor" : inRender ? ", hidden in render" : "";
  }

  void PrintTracks(const HeadlessTrackList& tracks, Bool areLast)
  {
    for (const HeadlessTrack* track = tracks.GetFirst(); track; track = track->GetNext())
    {
      ++_trackCount;
      _keyCount += track->GetCurve() ? track->GetCurve()->GetKeyCount() : 0;
      _lines.Put(areLast && !track->GetNext(), "track " + GetTrackName(track->GetId()) + ": " + DescribeCurve(*track));
    }
  }

  // Tags.

  void PrintTag(const HeadlessTag& tag, Bool isLast)
  {
    ++_tagCount;
    std::string text = GetTagTypeName(tag.GetType());
    if (tag.GetName().IsPopulated())
      text += ' ' + Quote(tag.GetName());
    const std::string details = DescribeTag(tag);
    _lines.Put(isLast, details.empty() ? text : text + ": " + details.substr(2));
    _lines.Enter(isLast);
    if (tag.GetType() == kPoseMorphTagType)
      PrintMorphs(static_cast<const HeadlessPoseMorphTag&>(tag));
    PrintTracks(*tag.GetTracks(), true);
    _lines.Leave();
  }

  /// Details, each behind a comma and a blank.
  std::string DescribeTag(const HeadlessTag& tag) const
  {
    switch (tag.GetType())
    {
      case kNormalTagType:
      case kUvwTagType:
      {
        const auto& corners = static_cast<const HeadlessCornerTag&>(tag);
        return ", " + FormatCount(corners.GetPolygonCount(), "polygon") + (corners.IsDouble() ? ", 64 bit" : "");
      }
      case kVertexColorTagType:
      {
        const auto& colors = static_cast<const HeadlessVertexColorTag&>(tag);
        return ", " + FormatCount(colors.GetCount(), colors.IsPerPoint() ? "point" : "polygon");
      }
      case kPolygonSelectionTagType:
        return ", " + FormatCount(static_cast<const HeadlessSelectionTag&>(tag).GetSelection().GetCount(), "polygon");
      case kTextureTagType:
      {
        const HeadlessMaterial* const material = static_cast<const HeadlessTextureTag&>(tag).GetMaterial();
        return ", " + (material ? "material " + Quote(material->GetName()) : std::string("no material"));
      }
      case kPhongTagType: return DescribePhong(static_cast<const HeadlessPhongTag&>(tag).GetSettings());
      case kWeightTagType: return DescribeWeights(static_cast<const HeadlessWeightTag&>(tag));
      case kPoseMorphTagType: return ", " + FormatCount(static_cast<const HeadlessPoseMorphTag&>(tag).GetMorphCount(), "morph");
      default: return tag.GetParameters().IsEmpty() ? "" : ", " + FormatCount(tag.GetParameters().GetCount(), "parameter");
    }
  }

  static std::string DescribePhong(const PhongSettings& settings)
  {
    if (!settings.on)
      return ", off";
    return settings.limit ? ", up to " + FormatAngle(settings.angleRadians) : ", on";
  }

  static std::string DescribeWeights(const HeadlessWeightTag& tag)
  {
    Int weightCount = 0;
    for (Int32 i = 0; i < tag.GetJointCount(); ++i)
      weightCount += tag.GetWeights(i).GetCount();
    return ", " + FormatCount(tag.GetJointCount(), "joint") + ", " + FormatCount(weightCount, "weight") +
           (tag.HasBindPose() ? ", bind pose" : "");
  }

  void PrintMorphs(const HeadlessPoseMorphTag& tag)
  {
    for (Int32 i = 0; i < tag.GetMorphCount(); ++i)
    {
      const HeadlessMorph& morph = *tag.GetMorph(i);
      std::string text = "morph " + std::to_string(i) + ' ' + Quote(morph.GetName());
      if (const HeadlessPointNode* const points = morph.GetPointNode())
        text += ": " + FormatCount(points->GetPoints().GetCount(), "point");
      else
        text += morph.GetObject() ? " -> " + Quote(morph.GetObject()->GetName()) : " -> nothing";
      if (morph.GetStrength() != 0)
        text += ", strength " + FormatNumber(morph.GetStrength());
      _lines.Put(tag.GetTracks()->IsEmpty() && i + 1 == tag.GetMorphCount(), text);
    }
  }

  // Takes.

  void PrintTakes()
  {
    const HeadlessTakeData& takes = _document.GetTakeData();
    _lines.Put(true, FormatCount(takes.GetTakeCount(), "take"));
    _lines.Enter(true);
    for (Int i = 0; i < takes.GetTakeCount(); ++i)
      PrintTake(*takes.GetTake(i), i + 1 == takes.GetTakeCount());
    _lines.Leave();
  }

  void PrintTake(const HeadlessTake& take, Bool isLast)
  {
    std::string text = Quote(take.GetName());
    if (take.IsMain())
      text += ", main";
    if (&take == _document.GetTakeData().GetCurrentTake())
      text += ", current";
    if (take.GetOverrideCount() > 0)
      text += ": " + FormatCount(take.GetOverrideCount(), "override");
    _lines.Put(isLast, text);
    _lines.Enter(isLast);
    for (Int i = 0; i < take.GetOverrideCount(); ++i)
      PrintOverride(*take.GetOverride(i), i + 1 == take.GetOverrideCount());
    _lines.Leave();
  }

  void PrintOverride(const HeadlessOverride& over, Bool isLast)
  {
    const HeadlessNamedNode* const target = over.GetTarget();
    std::string text = "for " + (target ? Quote(target->GetName()) : "nothing");
    if (!over.GetParameters().IsEmpty())
      text += ": " + FormatCount(over.GetParameters().GetCount(), "value");
    _lines.Put(isLast, text);
    _lines.Enter(isLast);
    PrintTracks(*over.GetTracks(), true);
    _lines.Leave();
  }

  const HeadlessDocument& _document;
  Bool _isUtf8;
  std::string_view _imageFolder;
  TreeLines _lines;
  Int _objectCount = 0;
  Int _pointCount = 0;
  Int _polygonCount = 0;
  Int _tagCount = 0;
  Int _trackCount = 0;
  Int _keyCount = 0;
  Int _materialCount = 0;
};

}  // namespace

Result<void> PrintTree(const HeadlessDocument& document, const TreeSettings& settings, ByteSink& sink) noexcept
{
  try
  {
    TreePrinter printer(document, settings, sink);
    return printer.Print();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Bool IsUtf8Locale(const char* lcAll, const char* lcCtype, const char* lang) noexcept
{
  for (const char* const variable : {lcAll, lcCtype, lang})
  {
    const std::string_view value = variable ? variable : "";
    if (value.empty())
      continue;
    for (const std::string_view name : {"UTF-8", "utf-8", "UTF8", "utf8"})
    {
      if (value.find(name) != std::string_view::npos)
        return true;
    }
    return false;
  }
  return false;
}

}  // namespace q7z
