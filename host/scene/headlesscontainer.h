#pragma once

// HeadlessContainer: values by id, in the order of the ids, with containers inside. It is a node's parameter table and its
// settings container in one: HostContainer reaches the entries of single-level ids, parameters may have two or three levels.
// Texts are copied on their way in; links are weak.
//
// Two small whole numbers are kept in the container itself, so that a node with such parameters alone costs no memory for them.
// Scenes hold containers by the hundred thousand: one without entries is two words.

#include <array>
#include <memory>

#include "host/scene/compactarray.h"
#include "host/scene/conversion.h"
#include "host/scene/weaklink.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

class HeadlessContainer
{
public:
  HeadlessContainer() noexcept = default;
  HeadlessContainer(const HeadlessContainer&) = delete;
  HeadlessContainer& operator=(const HeadlessContainer&) = delete;
  ~HeadlessContainer();

  /// @return the value under id, or null for none (also for a container). Valid until the container changes.
  const HostValue* Find(const HostDescId& id) const noexcept;
  /// Replaces what stands under id. A Nil value erases. @return false without memory, for an id without levels, or for a link to
  /// something that cannot be linked to: nothing has changed then.
  Bool Set(const HostDescId& id, const HostValue& value) noexcept;
  void Erase(const HostDescId& id) noexcept;
  /// The container under id, made when create is set (in the place of a value). Null when there is none or without memory.
  HeadlessContainer* GetContainer(Int32 id, Bool create) noexcept;

  Int GetCount() const noexcept { return _entries.GetCount() + GetSmallIntCount(); }
  Bool IsEmpty() const noexcept { return GetCount() == 0; }
  /// The index-th entry in the order of the ids. Exactly one of value and container is set. The levels of the id have ids alone.
  struct EntryView
  {
    HostDescId id;
    const HostValue* value = nullptr;
    const HeadlessContainer* container = nullptr;
  };
  EntryView GetEntry(Int index) const noexcept;

  /// Becomes a copy of other, containers inside included; links lead where other's do. @return false without memory: empty then.
  Bool CopyFrom(const HeadlessContainer& other) noexcept;
  void Clear() noexcept;

  /// Calls visit(WeakLink&) for each link, those of containers inside included. A visited link may be set anew.
  template <typename Visit>
  void VisitLinks(Visit&& visit) noexcept
  {
    for (Entry& entry : _entries)
    {
      if (entry.container)
        entry.container->VisitLinks(visit);
      else if (entry.value.GetKind() == HostValueKind::kLink)
        visit(entry.link);
    }
  }

  /// Calls visit(const HeadlessContainer&) for each container inside.
  template <typename Visit>
  void VisitContainers(Visit&& visit) const noexcept
  {
    for (const Entry& entry : _entries)
    {
      if (entry.container)
        visit(std::as_const(*entry.container));
    }
  }

private:
  /// The levels' ids alone, by which the entries are told apart; 0 behind the last.
  class EntryId
  {
  public:
    EntryId() noexcept = default;
    explicit EntryId(const HostDescId& id) noexcept : _ids{id[0].id, id[1].id, id[2].id}, _depth(id.GetDepth()) {}
    HostDescId Get() const noexcept;
    friend Bool operator==(const EntryId&, const EntryId&) noexcept = default;
    /// The order of HostDescId.
    Bool operator<(const EntryId& other) const noexcept
    {
      for (Int32 i = 0; i < _depth && i < other._depth; ++i)
      {
        if (_ids[i] != other._ids[i])
          return _ids[i] < other._ids[i];
      }
      return _depth < other._depth;
    }

  private:
    Int32 _ids[3] = {};
    Int32 _depth = 0;
  };

  struct Entry
  {
    EntryId id;
    mutable HostValue value;  // of a link: refreshed from link by Find
    WeakLink link;
    std::unique_ptr<HeadlessContainer> container;
  };

  /// A whole number of the shared table under an id that fits 24 bits.
  struct SmallInt
  {
    static constexpr Int32 kLargestId = 0xffffff;
    static constexpr UInt32 kNone = 0xff;
    SmallInt() noexcept = default;
    SmallInt(Int32 atId, Int atSlot) noexcept
        : id(static_cast<UInt32>(atId) & kLargestId), slot(static_cast<UInt32>(atSlot) & 0xffu)
    {}
    HostDescId GetId() const noexcept { return HostDescId(static_cast<Int32>(id)); }
    Bool IsThere() const noexcept { return slot != kNone; }
    UInt32 id : 24 = 0;
    UInt32 slot : 8 = kNone;
  };

  Int FindPlace(const EntryId& id) const noexcept;
  const Entry* FindEntry(const EntryId& id) const noexcept;
  Entry* FindEntry(const EntryId& id) noexcept;
  Entry* FindOrAddEntry(const EntryId& id) noexcept;

  Int GetSmallIntCount() const noexcept;
  const SmallInt* FindSmallInt(const HostDescId& id) const noexcept;
  Bool SetSmallInt(const HostDescId& id, const HostValue& value) noexcept;
  void EraseSmallInt(const HostDescId& id) noexcept;

  CompactArray<Entry> _entries;        // sorted by id
  std::array<SmallInt, 2> _smallInts;  // sorted by id, those without a number behind
};

}  // namespace q7z
