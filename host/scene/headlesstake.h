#pragma once

// Takes: the main take, which is the document as it stands, and others, each with overrides: values and tracks that it sets for
// single nodes. All belong to the document.

#include "framework/hashmap.h"
#include "host/scene/headlessnode.h"

namespace q7z
{

/// What a take sets for one node: the values are its parameters, the tracks stand in its track list.
class HeadlessOverride final : public HeadlessNamedNode
{
public:
  explicit HeadlessOverride(HeadlessTake* take) noexcept : HeadlessNamedNode(NodeKind::kOverride, 0), _take(take) {}

  /// Null when the node was freed.
  HeadlessNamedNode* GetTarget() const noexcept { return _target.Get(); }
  HeadlessTake* GetTake() const noexcept { return _take; }
  HeadlessDocument* GetDocument() const noexcept override;
  void VisitLinks(LinkVisitor visit, void* context) noexcept override;

protected:
  void Destroy() noexcept override;

private:
  friend class HeadlessTake;
  WeakLink _target;
  HeadlessTake* _take;  // not owned
};

class HeadlessTake final : public HeadlessNamedNode
{
public:
  HeadlessTake(HeadlessDocument* document, Bool isMain) noexcept
      : HeadlessNamedNode(NodeKind::kTake, 0), _document(document), _isMain(isMain)
  {}
  ~HeadlessTake() override;

  Bool IsMain() const noexcept { return _isMain; }
  HeadlessDocument* GetDocument() const noexcept override { return _document; }

  Int GetOverrideCount() const noexcept { return _overrides.GetCount(); }
  HeadlessOverride* GetOverride(Int index) const noexcept { return _overrides[index]; }
  HeadlessOverride* FindOverride(const HeadlessNode* target) const noexcept;
  /// Null for the main take, for a node that cannot be linked to, or without memory.
  HeadlessOverride* FindOrAddOverride(HeadlessNode* target) noexcept;
  /// The same, with value under id when the override has none there yet.
  HeadlessOverride* FindOrAddOverride(HeadlessNode* target, const HostDescId& id, const HostValue& value) noexcept;

  /// Name, parameters and overrides, which keep their targets. @return false without memory.
  Bool CopyFrom(const HeadlessTake& other) noexcept;
  /// To be called when the overrides' targets were changed from outside.
  Bool RefreshTargets() noexcept;

protected:
  void Destroy() noexcept override;

private:
  HeadlessOverride* AddOverride(HeadlessNamedNode* target) noexcept;

  HeadlessDocument* _document;  // not owned
  BaseArray<HeadlessOverride*> _overrides;
  // By the address of the target. An entry whose override has another target by now is left over from a node that was freed.
  HashMap<const HeadlessNode*, HeadlessOverride*> _byTarget;
  Bool _isMain;
};

class HeadlessTakeData
{
public:
  HeadlessTakeData() noexcept = default;
  HeadlessTakeData(const HeadlessTakeData&) = delete;
  HeadlessTakeData& operator=(const HeadlessTakeData&) = delete;
  ~HeadlessTakeData();

  /// Makes the main take. @return false without memory.
  Bool Init(HeadlessDocument* document) noexcept;
  HeadlessTake* GetMainTake() const noexcept { return _takes[0]; }
  HeadlessTake* GetCurrentTake() const noexcept { return _current; }
  /// A take of this document; others are ignored.
  void SetCurrentTake(HeadlessTake* take) noexcept;
  /// The main take first.
  Int GetTakeCount() const noexcept { return _takes.GetCount(); }
  HeadlessTake* GetTake(Int index) const noexcept { return _takes[index]; }
  /// At the end of the list. Null without memory.
  HeadlessTake* AddTake(const String& name) noexcept;
  Bool CopyFrom(const HeadlessTakeData& other) noexcept;

private:
  BaseArray<HeadlessTake*> _takes;
  HeadlessTake* _current = nullptr;
  HeadlessDocument* _document = nullptr;  // not owned
};

}  // namespace q7z
