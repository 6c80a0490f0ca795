#pragma once

// HeadlessContainer: values by id, in the order of the ids, with containers inside. It is a node's parameter table and its
// settings container in one: HostContainer reaches the entries of single-level ids, parameters may have two or three levels.
// Texts are copied on their way in; links are weak.
//
// One small whole number is kept in the container itself, so that a node with one such parameter costs no memory for it. Every key
// of every curve has a container: an empty one is two words.

#include <memory>

#include "framework/basearray.h"
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

  Int GetCount() const noexcept { return GetEntryCount() + (HasSmallInt() ? 1 : 0); }
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
    for (Int i = 0; i < GetEntryCount(); ++i)
    {
      Entry& entry = (*_entries)[i];
      if (entry.container)
        entry.container->VisitLinks(visit);
      else if (entry.value.GetKind() == HostValueKind::kLink)
        visit(entry.link);
    }
  }

private:
  struct Entry
  {
    HostDescId id;
    mutable HostValue value;  // of a link: refreshed from link by Find
    WeakLink link;
    std::unique_ptr<HeadlessContainer> container;
  };

  Bool HasSmallInt() const noexcept { return _smallIntSlot >= 0; }
  Int GetEntryCount() const noexcept { return _entries ? _entries->GetCount() : 0; }
  Bool ReserveEntries(Int count) noexcept;
  Int FindPlace(const HostDescId& id) const noexcept;
  Entry* FindEntry(const HostDescId& id) const noexcept;
  Entry* FindOrAddEntry(const HostDescId& id) noexcept;
  Bool SetSmallInt(const HostDescId& id, const HostValue& value) noexcept;

  std::unique_ptr<BaseArray<Entry>> _entries;  // sorted by id; null until there is one
  Int32 _smallIntId = 0;                       // single-level
  Int32 _smallIntSlot = -1;                    // into the shared table of small numbers; -1 for none
};

}  // namespace q7z
