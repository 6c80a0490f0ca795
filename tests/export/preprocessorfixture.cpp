#include "tests/export/preprocessorfixture.h"

#include <cmath>
#include <cstdio>

#include "plugin/module/hostmaterial.h"

namespace q7z::test
{

std::string Text(const String& text)
{
  return std::string(text.GetView());
}

String Text(const std::string& text)
{
  return String::Create(text).GetValue();
}

Bool RecordingModeling::Send(Int32 command, HostModelingData& data) noexcept
{
  if (isRecording)
    sent.emplace_back(command, Text(data.object->GetName()));
  const Bool isFaulty = command == faultyCommand;
  if (isFaulty && fault == Fault::kRefused)
    return false;
  if (isFaulty && fault != Fault::kNone)
  {
    static HostObject* none[1] = {nullptr};
    data.results = none;
    data.resultCount = fault == Fault::kNullResult ? 1 : 0;
    return true;
  }
  if (isRecording && command == 245 && data.settings)
    settings = std::to_string(data.settings->GetBool(2140)) + std::to_string(data.settings->GetBool(2141));
  return _base->Send(command, data);
}

PreprocessorTest::PreprocessorTest()
{
  _host.emplace();
  HostTables& tables = _host->Host().GetTables();
  _modeling.emplace(tables.modeling);
  tables.modeling = &*_modeling;
}

void PreprocessorTest::TearDown()
{
  _host.reset();
  EXPECT_EQ(SceneCounts(), _before);
}

HostObject* PreprocessorTest::Add(const std::string& name, HostObject* parent, Int32 type)
{
  HostObject* const op = HostObject::Alloc(type);
  op->SetName(Text(name));
  if (parent)
    op->InsertUnderLast(parent);
  else
    Host().Scene().InsertObjectLast(ToHeadless(op));
  return op;
}

HostPolygonObject* PreprocessorTest::AddStrip(const std::string& name, int triangles, HostObject* parent)
{
  HostPolygonObject* const op = HostPolygonObject::Alloc(triangles > 0 ? triangles + 2 : 0, triangles);
  for (int i = 0; triangles > 0 && i < triangles + 2; ++i)
    op->GetPointsW()[i] = {static_cast<Float>(i / 2), static_cast<Float>(i % 2), 0};
  for (int i = 0; i < triangles; ++i)
    op->GetPolygonsW()[i] = {i, i + 1, i + 2, i + 2};
  op->SetName(Text(name));
  if (parent)
    op->InsertUnderLast(parent);
  else
    Host().Scene().InsertObjectLast(ToHeadless(op));
  return op;
}

HostMaterial* PreprocessorTest::AddMaterial(const std::string& name)
{
  HostMaterial* const material = HostMaterial::Alloc(kMaterialType);
  material->SetName(Text(name));
  Document()->InsertMaterial(material);
  return material;
}

void PreprocessorTest::Select(HostObject* op, const std::string& name, std::initializer_list<std::pair<int, int>> ranges)
{
  HostTag* const tag = op->MakeTag(kPolygonSelectionTagType);
  tag->SetName(Text(name));
  for (const auto& [first, last] : ranges)
    static_cast<HostPolygonSelectionTag*>(tag)->GetSelection()->SelectRange(first, last);
}

void PreprocessorTest::Texture(HostObject* op, const std::string& restriction, HostMaterial* material)
{
  HostTag* const tag = op->MakeTag(kTextureTagType);
  static_cast<HostTextureTag*>(tag)->SetMaterial(material);
  if (!restriction.empty())
    tag->SetParameter(1006, Text(restriction));
}

HostWeightTag* PreprocessorTest::Bind(HostObject* op, std::initializer_list<HostObject*> joints)
{
  auto* const tag = static_cast<HostWeightTag*>(op->MakeTag(kWeightTagType));
  for (HostObject* const joint : joints)
    tag->AddJoint(joint);
  return tag;
}

HostTrack* PreprocessorTest::Animate(HostObject* op, const HostDescId& id, std::initializer_list<KeyValue> keys)
{
  HostTrack* const track = HostTrack::Alloc(op, id);
  HostCurve* const curve = track->GetCurve(true);
  for (const auto& [seconds, value] : keys)
    curve->AddKey(HostTimeFromSeconds(seconds))->SetValue(curve, value);
  track->InsertInto(op);
  return track;
}

void PreprocessorTest::Hide(HostObject* op)
{
  op->SetVisibility(kEditorVisibility, kHiddenMode);
  op->SetVisibility(kRenderVisibility, kHiddenMode);
}

void PreprocessorTest::SetTimes(Int32 rate, const HostTime& first, const HostTime& last)
{
  Document()->SetParameter(kDocumentRateParameter, rate);
  Document()->SetParameter(kDocumentStartParameter, first);
  Document()->SetParameter(kDocumentEndParameter, last);
}

std::string PreprocessorTest::Run()
{
  GltfPreprocessor preprocessor;
  preprocessor.SetDocument(Document());
  const Result<Int32> result = preprocessor.Run(_options);
  if (result.HasError())
    return std::string(GetErrorClassId(result.GetError().GetClass())) + " " + Text(result.GetError().GetMessage());
  _count = result.GetValue();
  return "";
}

namespace
{

std::string GetMark(HostObject* op)
{
  switch (op->GetType())
  {
    case kNullObjectType: return "";
    case kPolygonObjectType: return "#" + std::to_string(ToPoly(op)->GetPolygonCount());
    case kJointObjectType: return "^";
    case kCameraObjectType:
    case kRenderCameraObjectType: return "*";
    case kInstanceObjectType:
    case kSecondInstanceObjectType: return "=";
    default: return "?";
  }
}

std::string Describe(HostObject* first)
{
  std::string text;
  for (HostObject* op = first; op; op = op->GetNext())
  {
    text += (text.empty() ? "" : ", ") + Text(op->GetName()) + GetMark(op);
    if (op->GetDown())
      text += "[" + Describe(op->GetDown()) + "]";
  }
  return text;
}

HostObject* FindNamed(HostObject* first, const HostObject* root, const std::string& name)
{
  for (HostObject* op = first; op; op = FindNextInTree(op, root))
  {
    if (Text(op->GetName()) == name)
      return op;
  }
  return nullptr;
}

}  // namespace

std::string PreprocessorTest::Outline()
{
  HostObject* const first = Document()->GetFirstObject();
  return first && IsDontExport(first) ? Describe(first->GetNext()) : "no dontexport, " + Describe(first);
}

HostObject* PreprocessorTest::Find(const std::string& name)
{
  HostObject* const kept = Document()->GetFirstObject();
  return FindNamed(kept->GetNext(), nullptr, name);
}

HostObject* PreprocessorTest::FindOriginal(const std::string& name)
{
  HostObject* const kept = Document()->GetFirstObject();
  return FindNamed(kept->GetDown()->GetDown(), kept->GetDown(), name);
}

std::string Values(const HostObject* op, const HostDescId& id)
{
  HostTrack* const track = op ? HostTrack::Find(op, id) : nullptr;
  if (!track)
    return "none";
  HostCurve* const curve = track->GetCurve(false);
  std::string text;
  for (Int32 i = 0; curve && i < curve->GetKeyCount(); ++i)
  {
    char number[40];
    std::snprintf(number, sizeof number, "%.6g", std::round(curve->GetKey(i)->GetValue() * 1e9) / 1e9 + 0.0);
    text += (i ? ", " : "") + std::string(number);
  }
  return text;
}

}  // namespace q7z::test
