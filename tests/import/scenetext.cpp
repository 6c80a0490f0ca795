#include "tests/import/scenetext.h"

#include <cstdio>

#include "plugin/module/hostpolygon.h"

namespace q7z::test
{

namespace
{

std::string ToStd(const String& text)
{
  return std::string(text.GetView());
}

std::string WriteMark(HostObject* op)
{
  std::string mark;
  switch (op->GetType())
  {
    case kNullObjectType: break;
    case kPolygonObjectType: mark = "#"; break;
    case kJointObjectType: mark = "^"; break;
    case kCameraObjectType: mark = "*"; break;
    case kSkinDeformerType: mark = "~"; break;
    case kInstanceObjectType: mark = "=" + (op->GetReference() ? ToStd(op->GetReference()->GetName()) : ""); break;
    default: mark = "?" + std::to_string(op->GetType());
  }
  const Bool hiddenInEditor = op->GetVisibility(kEditorVisibility) == kHiddenMode;
  const Bool hiddenInRenderer = op->GetVisibility(kRenderVisibility) == kHiddenMode;
  return mark + (hiddenInEditor && hiddenInRenderer ? "!" : hiddenInEditor || hiddenInRenderer ? "!half" : "");
}

std::string WriteNumbers(const Vector& v)
{
  char text[96];
  std::snprintf(text, sizeof text, " (%.9g %.9g %.9g)", v.x, v.y, v.z);
  return text;
}

std::string WriteDetails(HostObject* op)
{
  const HostMatrix matrix = op->GetLocalMatrix();
  std::string text = WriteNumbers(matrix.offset) + WriteNumbers(matrix.axisX) + WriteNumbers(matrix.axisY) +
                     WriteNumbers(matrix.axisZ) + " visibility " + std::to_string(op->GetVisibility(0)) + " " +
                     std::to_string(op->GetVisibility(1));
  if (op->GetType() == kPolygonObjectType)
    text +=
      " points " + std::to_string(ToPoly(op)->GetPointCount()) + " polygons " + std::to_string(ToPoly(op)->GetPolygonCount());
  for (HostTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext())
    text += " tag " + std::to_string(tag->GetType());
  return text;
}

// Calls enter before and leave behind what stands below an object. No recursion: documents may be deep.
template <typename Enter, typename Leave>
void WalkObjects(HostObject* first, Enter enter, Leave leave)
{
  for (HostObject* op = first; op;)
  {
    enter(op);
    if (op->GetDown())
    {
      op = op->GetDown();
      continue;
    }
    leave(op);
    while (op && !op->GetNext())
    {
      op = op->GetUp();
      if (op)
        leave(op);
    }
    op = op ? op->GetNext() : nullptr;
  }
}

}  // namespace

std::string WriteOutline(HostDocument* document)
{
  std::string text;
  const auto enter = [&](HostObject* op)
  {
    if (op->GetPrevious())
      text += ", ";
    text += ToStd(op->GetName()) + WriteMark(op) + (op->GetDown() ? "[" : "");
  };
  const auto leave = [&](HostObject* op) { text += op->GetDown() ? "]" : ""; };
  WalkObjects(document->GetFirstObject(), enter, leave);
  return text;
}

std::string WriteDump(HostDocument* document)
{
  std::string text;
  int depth = 0;
  const auto enter = [&](HostObject* op)
  {
    text +=
      std::string(2 * depth++, ' ') + std::to_string(op->GetType()) + " '" + ToStd(op->GetName()) + "'" + WriteDetails(op) + "\n";
  };
  WalkObjects(document->GetFirstObject(), enter, [&](HostObject*) { --depth; });
  return text;
}

}  // namespace q7z::test
