#include "host/scenefile/scenereader.h"

#include "host/scenefile/scenefile.h"
#include "host/services/filereading.h"
#include "host/services/headlessjson.h"

namespace q7z
{

Result<HeadlessOwner<HeadlessDocument>> SceneReader::Read()
{
  const JsonNode& root = _tree.GetRoot();
  RETURN_IF_ERROR(ReadFormat());
  _document.reset(HeadlessDocument::Create());
  CHECK_MEMORY(_document);
  RETURN_IF_ERROR(ReadSettings());
  RETURN_IF_ERROR(ReadLayers());
  RETURN_IF_ERROR(ReadMaterials());
  if (const JsonNode* const objects = root.Find("objects"))
    RETURN_IF_ERROR(ReadObjects(*objects, nullptr));
  RETURN_IF_ERROR(SortIds());
  RETURN_IF_ERROR(ReadTakes());
  RETURN_IF_ERROR(ResolveLinks());
  for (const PendingWeights& weights : _weights)
    RETURN_IF_ERROR(ReadWeightTag(*weights.node, *weights.tag));
  return std::move(_document);
}

Result<void> SceneReader::ReadFormat()
{
  const JsonNode& root = _tree.GetRoot();
  String format;
  Int version = 0;
  RETURN_IF_ERROR(RequireMember(root, "format", format));
  if (format != "q7z scene"_s)
    return _tree.MakeError(*root.Find("format"), "\"q7z scene\" expected");
  RETURN_IF_ERROR(RequireMember(root, "version", version));
  if (version != 1)
    return _tree.MakeError(*root.Find("version"), "1 expected, " + std::to_string(version) + " found");
  return CheckMembers(root, "a scene document",
                      {"format", "version", "name", "nodeSpace", "parameters", "settings", "render", "time", "layers",
                       "materials", "objects", "takes"});
}

Result<void> SceneReader::ReadSettings()
{
  const JsonNode& root = _tree.GetRoot();
  String nodeSpace = _document->GetNodeSpace();
  HostTime time;
  RETURN_IF_ERROR(ReadName(root, *_document));
  RETURN_IF_ERROR(ReadMember(root, "nodeSpace", nodeSpace));
  CHECK_MEMORY(_document->SetNodeSpace(nodeSpace));
  CHECK_MEMORY(_document->SetFolder(String(_folder.data(), static_cast<Int>(_folder.size()))));
  RETURN_IF_ERROR(ReadTableMember(root, "parameters", _document->GetParameters(), true));
  RETURN_IF_ERROR(ReadTableMember(root, "settings", _document->GetSettings(), true));
  RETURN_IF_ERROR(ReadRenderData());
  RETURN_IF_ERROR(ReadMember(root, "time", time));
  // While there is nothing that its setting would animate: what follows is the document's state at that time.
  _document->SetTime(time);
  return {};
}

Result<void> SceneReader::ReadRenderData()
{
  const JsonNode* const render = _tree.GetRoot().Find("render");
  if (!render)
    return {};
  if (render->kind != JsonKind::kNull)
    return ReadTable(*render, *_document->GetRenderData(), true);
  _document->SetHasRenderData(false);
  return {};
}

Result<void> SceneReader::ReadLayers()
{
  return ForEachNode(_tree.GetRoot().Find("layers"),
                     [this](const JsonNode& node, Int) -> Result<void>
                     {
                       RETURN_IF_ERROR(CheckMembers(node, "a layer", {"id", "name"}));
                       HeadlessLayer* const layer = _document->GetLayerRoot().Add();
                       CHECK_MEMORY(layer);
                       RETURN_IF_ERROR(ReadId(node, *layer));
                       return ReadName(node, *layer);
                     });
}

// Takes.

Result<void> SceneReader::ReadTakes()
{
  const JsonNode* const takes = _tree.GetRoot().Find("takes");
  HeadlessTake* current = nullptr;
  RETURN_IF_ERROR(ForEachNode(takes,
                              [&](const JsonNode& node, Int index) -> Result<void> { return ReadTake(node, index, current); }));
  if (takes && takes->GetElementCount() == 0)
    return _tree.MakeError(*takes, "the main take is missing");
  if (current)
    _document->GetTakeData().SetCurrentTake(current);
  return {};
}

Result<void> SceneReader::ReadTake(const JsonNode& node, Int index, HeadlessTake*& current)
{
  String name;
  Bool isMain = index == 0;
  Bool isCurrent = false;
  RETURN_IF_ERROR(CheckMembers(node, "a take", {"name", "main", "current", "overrides"}));
  RETURN_IF_ERROR(ReadMember(node, "name", name));
  RETURN_IF_ERROR(ReadMember(node, "main", isMain));
  RETURN_IF_ERROR(ReadMember(node, "current", isCurrent));
  if (isMain != (index == 0))
    return _tree.MakeError(node, "main", "the first take is the main take, and no other");
  if (isCurrent && current)
    return _tree.MakeError(node, "current", "another take is current");
  HeadlessTakeData& takes = _document->GetTakeData();
  HeadlessTake* const take = isMain ? takes.GetMainTake() : takes.AddTake(name);
  CHECK_MEMORY(take && take->SetName(name));
  current = isCurrent ? take : current;
  const JsonNode* const overrides = node.Find("overrides");
  return overrides ? ReadOverrides(*overrides, *take) : Result<void>();
}

Result<void> SceneReader::ReadOverrides(const JsonNode& list, HeadlessTake& take)
{
  RETURN_IF_ERROR(CheckArray(list));
  if (take.IsMain() && list.GetElementCount() > 0)
    return _tree.MakeError(list, "the main take has no overrides");
  return ForEachNode(&list, [&](const JsonNode& node, Int) { return ReadOverride(node, take); });
}

Result<void> SceneReader::ReadOverride(const JsonNode& node, HeadlessTake& take)
{
  RETURN_IF_ERROR(CheckMembers(node, "an override", {"target", "values", "tracks"}));
  const JsonNode* const place = node.Find("target");
  if (!place)
    return _tree.MakeError(node, "target", "missing");
  // What the override was for may be gone: then it is for something that goes at once.
  HeadlessOwner<HeadlessObject> gone;
  HeadlessNamedNode* target = nullptr;
  if (place->kind == JsonKind::kNull)
  {
    gone.reset(HeadlessObject::Create(kNullObjectType));
    CHECK_MEMORY(gone);
    target = gone.get();
  }
  else
  {
    Int id = 0;
    RETURN_IF_ERROR(ReadValue(*place, id));
    target = FindTarget(id, LinkTarget::kAnything);
    if (!target)
      return _tree.MakeError(*place, MakeMissingTargetText(id, LinkTarget::kAnything));
    if (take.FindOverride(target))
      return _tree.MakeError(*place, "the take has an override for this node already");
  }
  HeadlessOverride* const over = take.FindOrAddOverride(target);
  CHECK_MEMORY(over);
  RETURN_IF_ERROR(ReadTableMember(node, "values", over->GetParameters()));
  return ReadTracks(node, *over);
}

// The face.

namespace
{

/// @param text  with padding behind it.
Result<HeadlessOwner<HeadlessDocument>> ReadPadded(std::string_view text, std::string_view folder)
{
  ASSIGN_OR_RETURN(const std::unique_ptr<JsonTree> tree, JsonTree::Parse(text));
  return SceneReader(*tree, folder).Read();
}

/// Of "a/b.json" it is "a", of "b.json" nothing, of "/b.json" "/".
std::string_view GetFolderOf(std::string_view path) noexcept
{
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash == 0 ? 1 : slash);
}

}  // namespace

Result<HeadlessOwner<HeadlessDocument>> ReadSceneDocument(std::string_view text, std::string_view folder) noexcept
{
  try
  {
    std::string padded;
    padded.reserve(text.size() + static_cast<size_t>(kJsonPadding));
    padded.append(text).append(static_cast<size_t>(kJsonPadding), '\0');
    return ReadPadded({padded.data(), text.size()}, folder);
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

Result<HeadlessOwner<HeadlessDocument>> ReadSceneDocumentFile(const String& path) noexcept
{
  try
  {
    ASSIGN_OR_RETURN(const BlockOwner block, ReadFileIntoBlock(path, kJsonPadding));
    const Int byteCount = block.Get()->GetByteCount() - kJsonPadding;
    return ReadPadded({block.Get()->GetBytes(), static_cast<size_t>(byteCount)}, GetFolderOf(path.GetView()));
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
