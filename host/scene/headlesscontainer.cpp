#include "host/scene/headlesscontainer.h"

#include <algorithm>
#include <new>

#include "host/scene/headlessnode.h"

namespace q7z
{

namespace
{

constexpr Int kFirstSmallInt = -16;
constexpr Int kSmallIntCount = 128;

/// The values of the small whole numbers, shared by all containers, so that Find can give a pointer to one.
struct SmallInts
{
  HostValue values[kSmallIntCount];

  SmallInts() noexcept
  {
    for (Int i = 0; i < kSmallIntCount; ++i)
      values[i] = HostValue(kFirstSmallInt + i);
  }
};

const HostValue& GetSmallInt(Int slot) noexcept
{
  static const SmallInts smallInts;
  return smallInts.values[slot];
}

/// The slot of a small whole number, or -1.
Int32 FindSlot(const HostValue& value) noexcept
{
  if (value.GetKind() != HostValueKind::kInt)
    return -1;
  const Int number = value.GetInt();
  const Bool isSmall = number >= kFirstSmallInt && number < kFirstSmallInt + kSmallIntCount;
  return isSmall ? static_cast<Int32>(number - kFirstSmallInt) : -1;
}

/// The levels' ids alone: what stands in a container is told apart by them.
HostDescId WithoutDataTypes(const HostDescId& id) noexcept
{
  switch (id.GetDepth())
  {
    case 1: return HostDescId(id[0].id);
    case 2: return HostDescId(id[0].id, id[1].id);
    default: return HostDescId({id[0].id, 0, 0}, {id[1].id, 0, 0}, {id[2].id, 0, 0});
  }
}

/// What the container keeps of a value: texts of its own, links without their target. @return false without memory.
Bool MakeKept(const HostValue& value, HostValue& kept) noexcept
{
  if (value.GetKind() != HostValueKind::kString)
  {
    kept = value;
    return true;
  }
  Result<String> text = value.GetString().Copy();
  if (text.HasError())
    return false;
  kept = HostValue(std::move(text).GetValue());
  return true;
}

Bool MakeLink(const HostValue& value, WeakLink& link) noexcept
{
  HostNode* const target = value.GetLink();
  if (!target)
    return true;
  HeadlessNamedNode* const node = ToHeadless(target)->AsLinkTarget();
  return node && link.Set(node);
}

}  // namespace

HeadlessContainer::~HeadlessContainer() = default;

/// @return false without memory.
Bool HeadlessContainer::ReserveEntries(Int count) noexcept
{
  if (!_entries)
    _entries.reset(new (std::nothrow) BaseArray<Entry>);
  return _entries && !_entries->Reserve(count).HasError();
}

Int HeadlessContainer::FindPlace(const HostDescId& id) const noexcept
{
  if (!_entries)
    return 0;
  const auto isBefore = [](const Entry& entry, const HostDescId& wanted) { return entry.id < wanted; };
  return std::lower_bound(_entries->begin(), _entries->end(), id, isBefore) - _entries->begin();
}

HeadlessContainer::Entry* HeadlessContainer::FindEntry(const HostDescId& id) const noexcept
{
  const Int place = FindPlace(id);
  return place < GetEntryCount() && (*_entries)[place].id == id ? &(*_entries)[place] : nullptr;
}

const HostValue* HeadlessContainer::Find(const HostDescId& id) const noexcept
{
  if (HasSmallInt() && id.GetDepth() == 1 && id[0].id == _smallIntId)
    return &GetSmallInt(_smallIntSlot);
  const Entry* const entry = FindEntry(id);
  if (!entry || entry->container)
    return nullptr;
  if (entry->value.GetKind() == HostValueKind::kLink)
  {
    HostNode* const target = ToHost(entry->link.Get());
    if (entry->value.GetLink() != target)
      entry->value = HostValue::Link(target);
  }
  return &entry->value;
}

HeadlessContainer::Entry* HeadlessContainer::FindOrAddEntry(const HostDescId& id) noexcept
{
  if (Entry* const found = FindEntry(id))
    return found;
  const Int count = GetEntryCount();
  // Most tables stay small: they grow by one entry at first.
  const Bool isFull = !_entries || count == _entries->GetCapacity();
  if (isFull && !ReserveEntries(count + 1 + (count < 4 ? 0 : count / 2)))
    return nullptr;
  const Int place = FindPlace(id);
  Entry entry;
  entry.id = WithoutDataTypes(id);
  DropError(_entries->Append(std::move(entry)));  // there is room
  std::rotate(_entries->begin() + place, _entries->end() - 1, _entries->end());
  return &(*_entries)[place];
}

Bool HeadlessContainer::SetSmallInt(const HostDescId& id, const HostValue& value) noexcept
{
  const Int32 slot = FindSlot(value);
  const Bool isOurs = HasSmallInt() && _smallIntId == id[0].id;
  if (slot < 0 || id.GetDepth() != 1 || (HasSmallInt() && !isOurs) || (_entries && FindEntry(id)))
    return false;
  _smallIntId = id[0].id;
  _smallIntSlot = slot;
  return true;
}

Bool HeadlessContainer::Set(const HostDescId& id, const HostValue& value) noexcept
{
  if (id.GetDepth() < 1)
    return false;
  if (value.IsNil())
  {
    Erase(id);
    return true;
  }
  if (SetSmallInt(id, value))
    return true;
  HostValue kept;
  WeakLink link;
  if (!MakeKept(value, kept) || !MakeLink(value, link))
    return false;
  Entry* const entry = FindOrAddEntry(id);
  if (!entry)
    return false;
  entry->value = std::move(kept);
  entry->link = std::move(link);
  entry->container.reset();
  if (HasSmallInt() && id.GetDepth() == 1 && id[0].id == _smallIntId)
    _smallIntSlot = -1;
  return true;
}

void HeadlessContainer::Erase(const HostDescId& id) noexcept
{
  if (HasSmallInt() && id.GetDepth() == 1 && id[0].id == _smallIntId)
    _smallIntSlot = -1;
  if (Entry* const entry = FindEntry(id))
    _entries->Erase(entry - _entries->begin());
}

HeadlessContainer* HeadlessContainer::GetContainer(Int32 id, Bool create) noexcept
{
  Entry* const found = FindEntry(id);
  if (found && found->container)
    return found->container.get();
  if (!create)
    return nullptr;
  std::unique_ptr<HeadlessContainer> container(new (std::nothrow) HeadlessContainer);
  Entry* const entry = container ? FindOrAddEntry(id) : nullptr;
  if (!entry)
    return nullptr;
  entry->value = HostValue();
  entry->link.Clear();
  entry->container = std::move(container);
  if (HasSmallInt() && _smallIntId == id)
    _smallIntSlot = -1;
  return entry->container.get();
}

HeadlessContainer::EntryView HeadlessContainer::GetEntry(Int index) const noexcept
{
  if (HasSmallInt())
  {
    const Int place = FindPlace(HostDescId(_smallIntId));
    if (index == place)
      return {HostDescId(_smallIntId), &GetSmallInt(_smallIntSlot), nullptr};
    index -= index > place ? 1 : 0;
  }
  const Entry& entry = (*_entries)[index];
  if (entry.container)
    return {entry.id, nullptr, entry.container.get()};
  return {entry.id, Find(entry.id), nullptr};
}

Bool HeadlessContainer::CopyFrom(const HeadlessContainer& other) noexcept
{
  Clear();
  const Int count = other.GetEntryCount();
  if (count > 0 && !ReserveEntries(count))
    return false;
  for (Int i = 0; i < count; ++i)
  {
    const Entry& source = (*other._entries)[i];
    Entry entry;
    entry.id = source.id;
    entry.value = source.value;
    entry.link = source.link;
    if (source.container)
      entry.container.reset(new (std::nothrow) HeadlessContainer);
    if (source.container && (!entry.container || !entry.container->CopyFrom(*source.container)))
    {
      Clear();
      return false;
    }
    DropError(_entries->Append(std::move(entry)));  // there is room
  }
  _smallIntId = other._smallIntId;
  _smallIntSlot = other._smallIntSlot;
  return true;
}

void HeadlessContainer::Clear() noexcept
{
  _entries.reset();
  _smallIntSlot = -1;
}

}  // namespace q7z
