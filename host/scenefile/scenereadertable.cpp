// Parameter tables, and the ids and links of nodes.

#include <algorithm>

#include "host/scene/conversion.h"
#include "host/scenefile/scenereader.h"

namespace q7z
{

// Parameter tables.

Result<void> SceneReader::ReadTableMember(const JsonNode& owner, std::string_view name, HeadlessContainer& table, Bool isUpdate)
{
  const JsonNode* const member = owner.Find(name);
  return member ? ReadTable(*member, table, isUpdate) : Result<void>();
}

Result<void> SceneReader::ReadTable(const JsonNode& object, HeadlessContainer& table, Bool isUpdate)
{
  struct Entry
  {
    HostDescId id;
    const JsonNode* node = nullptr;
  };
  RETURN_IF_ERROR(CheckObject(object));
  std::vector<Entry> entries(static_cast<size_t>(object.count));
  for (Int i = 0; i < object.count; ++i)
  {
    Entry& entry = entries[static_cast<size_t>(i)];
    entry.node = &object.members[i].value;
    if (!ParseDescId(object.members[i].name, entry.id))
      return _tree.MakeError(*entry.node, "the decimal id of a parameter expected");
  }
  // Rising ids go to the end of the table, so that none has to be moved.
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.id < b.id; });
  for (const Entry& entry : entries)
    RETURN_IF_ERROR(ReadEntry(entry.id, *entry.node, table, isUpdate));
  return {};
}

Result<void> SceneReader::ReadEntry(const HostDescId& id, const JsonNode& node, HeadlessContainer& table, Bool isUpdate)
{
  HostValue value;
  switch (node.kind)
  {
    case JsonKind::kBool: value = HostValue(node.boolean); break;
    case JsonKind::kInt: value = HostValue(node.whole); break;
    case JsonKind::kFloat: value = HostValue(node.number); break;
    case JsonKind::kString: value = HostValue(String(node.text, node.count)); break;
    case JsonKind::kObject: return ReadTypedEntry(id, node, table);
    case JsonKind::kNull:
      if (!isUpdate)
        return MakeKindError(node, "a value");
      table.Erase(id);
      return {};
    default: return MakeKindError(node, "a value");
  }
  CHECK_MEMORY(table.Set(id, value));
  return {};
}

namespace
{

/// What an object says of its kind: the name of its one member.
std::string_view GetValueKind(const JsonNode& node) noexcept
{
  return node.count == 1 ? node.members[0].name : std::string_view();
}

}  // namespace

Result<void> SceneReader::ReadTypedEntry(const HostDescId& id, const JsonNode& node, HeadlessContainer& table)
{
  const std::string_view kind = GetValueKind(node);
  if (kind == "link")
    return ReadTableLink(id, node.members[0].value, table);
  const auto set = [&]<typename T>(T content) -> Result<void>
  {
    RETURN_IF_ERROR(ReadValue(node.members[0].value, content));
    CHECK_MEMORY(table.Set(id, HostValue(content)));
    return {};
  };
  if (kind == "time")
    return set(HostTime());
  if (kind == "vector")
    return set(Vector());
  if (kind == "vector4")
    return set(Vector4());
  if (kind == "unit")
    return set(HostUnitScale());
  if (kind != "container")
    return _tree.MakeError(node, "one of time, vector, vector4, unit, link, container and float expected");
  if (id.GetDepth() != 1)
    return _tree.MakeError(node, "a container stands under an id of one level");
  HeadlessContainer* const inner = table.GetContainer(id[0].id, true);
  CHECK_MEMORY(inner);
  return ReadTable(node.members[0].value, *inner);
}

/// Puts an empty link, for which the target is set when all nodes are there.
Result<void> SceneReader::ReadTableLink(const HostDescId& id, const JsonNode& node, HeadlessContainer& table)
{
  CHECK_MEMORY(table.Set(id, HostValue::Link(nullptr)));
  return ReadLink(node, LinkTarget::kAnything, [&table, id](HeadlessNamedNode* target)
                  { return table.Set(id, HostValue::Link(ToHost(static_cast<HeadlessNode*>(target)))); });
}

// Ids and links.

Result<void> SceneReader::ReadId(const JsonNode& object, HeadlessNamedNode& node)
{
  Int id = 0;
  RETURN_IF_ERROR(RequireMember(object, "id", id));
  _ids.push_back({id, &node, object.Find("id")});
  return {};
}

Result<void> SceneReader::SortIds()
{
  const auto isLess = [](const KnownId& a, const KnownId& b) { return a.id < b.id; };
  const auto isSame = [](const KnownId& a, const KnownId& b) { return a.id == b.id; };
  std::stable_sort(_ids.begin(), _ids.end(), isLess);
  const auto twice = std::adjacent_find(_ids.begin(), _ids.end(), isSame);
  if (twice == _ids.end())
    return {};
  return _tree.MakeError(*(twice + 1)->place, "another node has the id " + std::to_string(twice->id));
}

Result<void> SceneReader::ReadLink(const JsonNode& place, LinkTarget target, LinkSetter set)
{
  if (place.kind == JsonKind::kNull)
    return {};
  if (place.kind != JsonKind::kInt)
    return MakeKindError(place, "an id or null");
  _links.push_back({place.whole, target, &place, std::move(set)});
  return {};
}

Result<void> SceneReader::ResolveLinks()
{
  for (const PendingLink& link : _links)
  {
    HeadlessNamedNode* const node = FindTarget(link.id, link.target);
    if (!node)
      return _tree.MakeError(*link.place, MakeMissingTargetText(link.id, link.target));
    CHECK_MEMORY(link.set(node));
  }
  return {};
}

HeadlessNamedNode* SceneReader::FindTarget(Int id, LinkTarget target) const
{
  const auto found =
    std::lower_bound(_ids.begin(), _ids.end(), id, [](const KnownId& known, Int wanted) { return known.id < wanted; });
  if (found == _ids.end() || found->id != id)
    return nullptr;
  const NodeKind kind = found->node->GetKind();
  switch (target)
  {
    case LinkTarget::kObject: return kind == NodeKind::kObject ? found->node : nullptr;
    case LinkTarget::kMaterial: return kind == NodeKind::kMaterial ? found->node : nullptr;
    case LinkTarget::kLayer: return kind == NodeKind::kLayer ? found->node : nullptr;
    case LinkTarget::kAnything: break;
  }
  return found->node;
}

std::string SceneReader::MakeMissingTargetText(Int id, LinkTarget target)
{
  static constexpr std::string_view kNames[] = {"no object", "no material", "no layer", "nothing"};
  return std::string(kNames[static_cast<size_t>(target)]) + " has the id " + std::to_string(id);
}

}  // namespace q7z
