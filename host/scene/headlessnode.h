#pragma once

// HeadlessNode: what all nodes of the scene have in common: kind, type, parameters. HeadlessNamedNode adds a name, tracks, and
// that links can lead to it; plug-in instances do without. HeadlessNode itself serves as the host's side of a plug-in instance.
//
// Nodes are made by the Create operations of their classes, which answer null without memory, and freed with HeadlessNode::Free.
// What is inserted into a document, an object or a list belongs to that. A scene belongs to one thread at a time; reading it, and
// changing different objects of it, may be done from several.

#include <atomic>
#include <memory>

#include "framework/string.h"
#include "host/scene/headlesscontainer.h"
#include "host/scene/scenediagnostics.h"

namespace q7z
{

class HeadlessTrackList;

enum class NodeKind : Byte
{
  kPlain,  ///< a plug-in's instance
  kDocument,
  kObject,
  kTag,
  kTrack,
  kTake,
  kOverride,
  kLayer,
  kMaterial,
  kShader,
};

class HeadlessNode
{
public:
  /// A plain node.
  explicit HeadlessNode(Int32 type) noexcept : HeadlessNode(NodeKind::kPlain, type) {}
  HeadlessNode(const HeadlessNode&) = delete;
  HeadlessNode& operator=(const HeadlessNode&) = delete;
  virtual ~HeadlessNode() = default;

  NodeKind GetKind() const noexcept { return _kind; }
  Int32 GetType() const noexcept { return _type; }

  /// The parameters that the node keeps as they are, and its settings container. Parameters that mean something to the node
  /// (an object's transform, a morph's strength) are not in here.
  HeadlessContainer& GetParameters() noexcept { return _parameters; }
  const HeadlessContainer& GetParameters() const noexcept { return _parameters; }

  /// Any parameter, with the components of vectors as second level. @return false when there is none; value is untouched then.
  Bool GetParameter(const HostDescId& id, HostValue& value) const noexcept;
  /// @return false when the value's kind does not fit, or without memory; nothing has changed then.
  Bool SetParameter(const HostDescId& id, const HostValue& value) noexcept;

  virtual const String& GetName() const noexcept;
  /// Keeps a copy. @return false without memory or for a node without a name; the old name then stays.
  virtual Bool SetName(const String& name) noexcept;
  /// Null for a node that is in no document.
  virtual HeadlessDocument* GetDocument() const noexcept { return nullptr; }
  /// Null for a node that cannot have tracks.
  virtual HeadlessTrackList* GetTracks() noexcept { return nullptr; }
  const HeadlessTrackList* GetTracks() const noexcept { return const_cast<HeadlessNode*>(this)->GetTracks(); }
  /// The same node as one that links can lead to, or null.
  virtual HeadlessNamedNode* AsLinkTarget() noexcept { return nullptr; }

  /// Calls visit for each link that the node itself holds (not those of its tracks, tags or children).
  using LinkVisitor = void (*)(void* context, WeakLink& link);
  virtual void VisitLinks(LinkVisitor visit, void* context) noexcept;

  /// Frees a node with all that hangs on it; one that is still inserted is taken out first (and counted as a mistake). Null is
  /// allowed. Work and stack do not depend on how deep a hierarchy is.
  static void Free(HeadlessNode* node) noexcept;

protected:
  HeadlessNode(NodeKind kind, Int32 type) noexcept : _type(type), _kind(kind) {}

  enum class ParameterAnswer
  {
    kNotMine,  ///< goes to the table
    kDone,
    kRefused,
  };
  virtual ParameterAnswer GetOwnParameter(const HostDescId& id, HostValue& value) const noexcept;
  virtual ParameterAnswer SetOwnParameter(const HostDescId& id, const HostValue& value) noexcept;
  /// What the node answers for a parameter that was not set. @return false, with the value left alone, for nothing.
  virtual Bool GetDefaultParameter(const HostDescId&, HostValue&) const noexcept { return false; }

  /// Takes the node out of whatever holds it. @return whether something did.
  virtual Bool TakeOut() noexcept { return false; }
  /// Frees this node, which is in nothing any more.
  virtual void Destroy() noexcept { delete this; }

  Bool CopyParametersFrom(const HeadlessNode& other) noexcept { return _parameters.CopyFrom(other._parameters); }

private:
  // The smallest stands last, so that members of derived classes can share its word.
  HeadlessContainer _parameters;
  Int32 _type;
  NodeKind _kind;
};

/// Whether a value is a number: Bool, Int or Float.
inline Bool IsNumber(const HostValue& value) noexcept
{
  const HostValueKind kind = value.GetKind();
  return kind == HostValueKind::kBool || kind == HostValueKind::kInt || kind == HostValueKind::kFloat;
}

/// The owner of a node until it is inserted somewhere.
struct HeadlessNodeDeleter
{
  void operator()(HeadlessNode* node) const noexcept { HeadlessNode::Free(node); }
};
template <typename T>
using HeadlessOwner = std::unique_ptr<T, HeadlessNodeDeleter>;

/// The tracks of one node, sorted by id.
class HeadlessTrackList
{
public:
  HeadlessTrackList() noexcept = default;
  HeadlessTrackList(const HeadlessTrackList&) = delete;
  HeadlessTrackList& operator=(const HeadlessTrackList&) = delete;
  ~HeadlessTrackList() { Clear(); }

  HeadlessTrack* GetFirst() const noexcept { return _first; }
  Bool IsEmpty() const noexcept { return _first == nullptr; }
  HeadlessTrack* Find(const HostDescId& id) const noexcept;
  /// Takes the track over, behind tracks of the same id; owner is the node whose list this is.
  void Insert(HeadlessNode* owner, HeadlessTrack* track) noexcept;
  /// Gives the track back to the caller.
  void Remove(HeadlessTrack* track) noexcept;
  void Clear() noexcept;
  /// Puts copies of other's tracks here, in an empty list. @return false without memory.
  Bool CopyFrom(HeadlessNode* owner, const HeadlessTrackList& other) noexcept;

private:
  HeadlessTrack* FindLastBefore(const HostDescId& id) const noexcept;

  HeadlessTrack* _first = nullptr;
  HeadlessTrack* _last = nullptr;
  // Where the last search ended: ids are mostly asked for in rising order, so that each search starts where it ends.
  mutable std::atomic<HeadlessTrack*> _finger{nullptr};
};

class HeadlessNamedNode : public HeadlessNode
{
public:
  ~HeadlessNamedNode() override;

  const String& GetName() const noexcept override { return _name; }
  Bool SetName(const String& name) noexcept override;
  using HeadlessNode::GetTracks;
  HeadlessTrackList* GetTracks() noexcept override { return &_tracks; }
  HeadlessNamedNode* AsLinkTarget() noexcept override { return this; }

  /// Whether a link leads here, or once did.
  Bool HasAnchor() const noexcept { return _anchor.load(std::memory_order_acquire) != nullptr; }

protected:
  HeadlessNamedNode(NodeKind kind, Int32 type) noexcept;
  /// Name, parameters and tracks. @return false without memory.
  Bool CopyCommonFrom(const HeadlessNamedNode& other) noexcept;

private:
  friend class WeakLink;
  /// Made when there is none; null without memory.
  NodeAnchor* FindOrMakeAnchor() noexcept;

  String _name;
  std::atomic<NodeAnchor*> _anchor{nullptr};
  HeadlessTrackList _tracks;
};

}  // namespace q7z
