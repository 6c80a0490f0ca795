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

Bool IsSmallInt(const HostValue& value) noexcept
{
  if (value.GetKind() != HostValueKind::kInt)
    return false;
  const Int number = value.GetInt();
  return number >= kFirstSmallInt && number < kFirstSmallInt + kSmallIntCount;
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

HostDescId HeadlessContainer::EntryId::Get() const noexcept
{
  switch (_depth)
  {
    case 1: return HostDescId(_ids[0]);
    case 2: return HostDescId(_ids[0], _ids[1]);
    default: return HostDescId({_ids[0], 0, 0}, {_ids[1], 0, 0}, {_ids[2], 0, 0});
  }
}

Int HeadlessContainer::FindPlace(const EntryId& id) const noexcept
{
  const auto isBefore = [](const Entry& entry, const EntryId& wanted) { return entry.id < wanted; };
  return std::lower_bound(_entries.begin(), _entries.end(), id, isBefore) - _entries.begin();
}

const HeadlessContainer::Entry* HeadlessContainer::FindEntry(const EntryId& id) const noexcept
{
  const Int place = FindPlace(id);
  return place < _entries.GetCount() && _entries[place].id == id ? &_entries[place] : nullptr;
}

HeadlessContainer::Entry* HeadlessContainer::FindEntry(const EntryId& id) noexcept
{
  return const_cast<Entry*>(std::as_const(*this).FindEntry(id));
}

const HostValue* HeadlessContainer::Find(const HostDescId& id) const noexcept
{
  if (const SmallInt* const smallInt = FindSmallInt(id))
    return &GetSmallInt(smallInt->slot);
  const Entry* const entry = FindEntry(EntryId(id));
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

HeadlessContainer::Entry* HeadlessContainer::FindOrAddEntry(const EntryId& id) noexcept
{
  if (Entry* const found = FindEntry(id))
    return found;
  const Int count = _entries.GetCount();
  // Most tables stay small: they grow by one entry at first.
  if (count == _entries.GetCapacity() && !_entries.Reserve(count + 1 + (count < 4 ? 0 : count / 2)))
    return nullptr;
  Entry entry;
  entry.id = id;
  return &_entries.Insert(FindPlace(id), std::move(entry));
}

Int HeadlessContainer::GetSmallIntCount() const noexcept
{
  return std::count_if(_smallInts.begin(), _smallInts.end(), [](const SmallInt& smallInt) { return smallInt.IsThere(); });
}

const HeadlessContainer::SmallInt* HeadlessContainer::FindSmallInt(const HostDescId& id) const noexcept
{
  for (const SmallInt& smallInt : _smallInts)
  {
    if (smallInt.IsThere() && id == smallInt.GetId())
      return &smallInt;
  }
  return nullptr;
}

/// @return false when the number has to become an entry.
Bool HeadlessContainer::SetSmallInt(const HostDescId& id, const HostValue& value) noexcept
{
  const Bool fits = id.GetDepth() == 1 && id[0].id >= 0 && id[0].id <= SmallInt::kLargestId && IsSmallInt(value);
  if (!fits || FindEntry(EntryId(id)))
    return false;
  EraseSmallInt(id);
  SmallInt& first = _smallInts.front();
  SmallInt& last = _smallInts.back();
  if (last.IsThere())
    return false;
  last = SmallInt(id[0].id, value.GetInt() - kFirstSmallInt);
  if (!first.IsThere() || last.id < first.id)
    std::swap(first, last);
  return true;
}

void HeadlessContainer::EraseSmallInt(const HostDescId& id) noexcept
{
  const SmallInt* const found = FindSmallInt(id);
  if (found == &_smallInts.front())
    _smallInts.front() = _smallInts.back();
  if (found)
    _smallInts.back() = SmallInt();
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
  Entry* const entry = FindOrAddEntry(EntryId(id));
  if (!entry)
    return false;
  entry->value = std::move(kept);
  entry->link = std::move(link);
  entry->container.reset();
  EraseSmallInt(id);
  return true;
}

void HeadlessContainer::Erase(const HostDescId& id) noexcept
{
  EraseSmallInt(id);
  if (const Entry* const entry = FindEntry(EntryId(id)))
    _entries.Erase(entry - _entries.begin());
}

HeadlessContainer* HeadlessContainer::GetContainer(Int32 id, Bool create) noexcept
{
  const EntryId entryId{HostDescId(id)};
  Entry* const found = FindEntry(entryId);
  if (found && found->container)
    return found->container.get();
  if (!create)
    return nullptr;
  std::unique_ptr<HeadlessContainer> container(new (std::nothrow) HeadlessContainer);
  Entry* const entry = container ? FindOrAddEntry(entryId) : nullptr;
  if (!entry)
    return nullptr;
  entry->value = HostValue();
  entry->link.Clear();
  entry->container = std::move(container);
  EraseSmallInt(id);
  return entry->container.get();
}

HeadlessContainer::EntryView HeadlessContainer::GetEntry(Int index) const noexcept
{
  Int before = 0;  // small numbers in front of the wanted entry
  for (const SmallInt& smallInt : _smallInts)
  {
    const Int place = FindPlace(EntryId(smallInt.GetId())) + before;
    if (!smallInt.IsThere() || place > index)
      break;
    if (place == index)
      return {smallInt.GetId(), &GetSmallInt(smallInt.slot), nullptr};
    ++before;
  }
  const Entry& entry = _entries[index - before];
  const HostDescId id = entry.id.Get();
  if (entry.container)
    return {id, nullptr, entry.container.get()};
  return {id, Find(id), nullptr};
}

Bool HeadlessContainer::CopyFrom(const HeadlessContainer& other) noexcept
{
  Clear();
  if (!_entries.Reserve(other._entries.GetCount()))
    return false;
  for (const Entry& source : other._entries)
  {
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
    _entries.Insert(_entries.GetCount(), std::move(entry));
  }
  _smallInts = other._smallInts;
  return true;
}

void HeadlessContainer::Clear() noexcept
{
  _entries.Reset();
  _smallInts = {};
}

}  // namespace q7z
