#include "host/scene/headlessnode.h"

#include <new>

#include "framework/result.h"
#include "host/scene/headlesstrack.h"

namespace q7z
{

SceneDiagnostics& GetSceneDiagnostics() noexcept
{
  static SceneDiagnostics diagnostics;
  return diagnostics;
}

Bool WeakLink::Set(HeadlessNamedNode* node) noexcept
{
  NodeAnchor* const anchor = node ? node->FindOrMakeAnchor() : nullptr;
  if (node && !anchor)
    return false;
  if (anchor)
    anchor->AddReference();
  Clear();
  _anchor = anchor;
  return true;
}

const String& HeadlessNode::GetName() const noexcept
{
  static const String none;
  return none;
}

Bool HeadlessNode::SetName(const String&) noexcept
{
  return false;
}

HeadlessNode::ParameterAnswer HeadlessNode::GetOwnParameter(const HostDescId&, HostValue&) const noexcept
{
  return ParameterAnswer::kNotMine;
}

HeadlessNode::ParameterAnswer HeadlessNode::SetOwnParameter(const HostDescId&, const HostValue&) noexcept
{
  return ParameterAnswer::kNotMine;
}

namespace
{

/// The vector that a two-level id addresses a component of, or null.
const HostValue* FindVector(const HeadlessContainer& parameters, const HostDescId& id) noexcept
{
  if (id.GetDepth() != 2 || id[1].id < kComponentX || id[1].id > kComponentZ)
    return nullptr;
  const HostValue* const value = parameters.Find(id[0].id);
  return value && value->GetKind() == HostValueKind::kVector ? value : nullptr;
}

}  // namespace

Bool HeadlessNode::GetParameter(const HostDescId& id, HostValue& value) const noexcept
{
  const ParameterAnswer answer = GetOwnParameter(id, value);
  if (answer != ParameterAnswer::kNotMine)
    return answer == ParameterAnswer::kDone;
  if (const HostValue* const found = _parameters.Find(id))
  {
    value = *found;
    return true;
  }
  const HostValue* const vector = FindVector(_parameters, id);
  if (!vector)
    return GetDefaultParameter(id, value);
  value = HostValue(vector->GetVector()[id[1].id - kComponentX]);
  return true;
}

Bool HeadlessNode::SetParameter(const HostDescId& id, const HostValue& value) noexcept
{
  const ParameterAnswer answer = SetOwnParameter(id, value);
  if (answer != ParameterAnswer::kNotMine)
    return answer == ParameterAnswer::kDone;
  const HostValue* const vector = FindVector(_parameters, id);
  if (!vector)
    return _parameters.Set(id, value);
  if (!IsNumber(value))
    return false;
  Vector changed = vector->GetVector();
  changed[id[1].id - kComponentX] = value.GetFloat();
  return _parameters.Set(id[0].id, changed);
}

void HeadlessNode::VisitLinks(LinkVisitor visit, void* context) noexcept
{
  _parameters.VisitLinks([=](WeakLink& link) { visit(context, link); });
}

void HeadlessNode::Free(HeadlessNode* node) noexcept
{
  if (!node)
    return;
  if (node->TakeOut())
    CountMistake(GetSceneDiagnostics().freedWhileInserted);
  node->Destroy();
}

/// The last track whose id comes before id, or null.
HeadlessTrack* HeadlessTrackList::FindLastBefore(const HostDescId& id) const noexcept
{
  if (!_first || !(_first->_id < id))
    return nullptr;
  if (_last->_id < id)
    return _last;
  HeadlessTrack* track = _finger.load(std::memory_order_relaxed);
  if (!track || !(track->_id < id))
    track = _first;
  while (track->_next && track->_next->_id < id)
    track = track->_next;
  _finger.store(track, std::memory_order_relaxed);
  return track;
}

HeadlessTrack* HeadlessTrackList::Find(const HostDescId& id) const noexcept
{
  const HeadlessTrack* const before = FindLastBefore(id);
  HeadlessTrack* const track = before ? before->_next : _first;
  return track && track->_id == id ? track : nullptr;
}

void HeadlessTrackList::Insert(HeadlessNode* owner, HeadlessTrack* track) noexcept
{
  HeadlessTrack* before = FindLastBefore(track->_id);
  for (HeadlessTrack* same = before ? before->_next : _first; same && same->_id == track->_id; same = same->_next)
    before = same;
  HeadlessTrack* const next = before ? before->_next : _first;
  track->_owner = owner;
  track->_previous = before;
  track->_next = next;
  (before ? before->_next : _first) = track;
  (next ? next->_previous : _last) = track;
}

void HeadlessTrackList::Remove(HeadlessTrack* track) noexcept
{
  (track->_previous ? track->_previous->_next : _first) = track->_next;
  (track->_next ? track->_next->_previous : _last) = track->_previous;
  if (_finger.load(std::memory_order_relaxed) == track)
    _finger.store(track->_previous, std::memory_order_relaxed);
  track->_owner = nullptr;
  track->_previous = track->_next = nullptr;
}

void HeadlessTrackList::Clear() noexcept
{
  for (HeadlessTrack* track = _first; track;)
    delete std::exchange(track, track->_next);
  _first = _last = nullptr;
  _finger.store(nullptr, std::memory_order_relaxed);
}

Bool HeadlessTrackList::CopyFrom(HeadlessNode* owner, const HeadlessTrackList& other) noexcept
{
  for (const HeadlessTrack* track = other._first; track; track = track->_next)
  {
    HeadlessTrack* const copy = track->Clone();
    if (!copy)
      return false;
    Insert(owner, copy);
  }
  return true;
}

HeadlessNamedNode::HeadlessNamedNode(NodeKind kind, Int32 type) noexcept : HeadlessNode(kind, type)
{
  GetSceneDiagnostics().liveNodes.fetch_add(1, std::memory_order_relaxed);
}

HeadlessNamedNode::~HeadlessNamedNode()
{
  if (NodeAnchor* const anchor = _anchor.load(std::memory_order_acquire))
  {
    anchor->node.store(nullptr, std::memory_order_release);
    anchor->Release();
  }
  GetSceneDiagnostics().liveNodes.fetch_sub(1, std::memory_order_relaxed);
}

Bool HeadlessNamedNode::SetName(const String& name) noexcept
{
  Result<String> copy = name.Copy();
  if (copy.HasError())
    return false;
  _name = std::move(copy).GetValue();
  return true;
}

Bool HeadlessNamedNode::CopyCommonFrom(const HeadlessNamedNode& other) noexcept
{
  _name = other._name;  // a text of the scene's own already
  return CopyParametersFrom(other) && _tracks.CopyFrom(this, other._tracks);
}

NodeAnchor* HeadlessNamedNode::FindOrMakeAnchor() noexcept
{
  NodeAnchor* anchor = _anchor.load(std::memory_order_acquire);
  if (anchor)
    return anchor;
  NodeAnchor* const made = new (std::nothrow) NodeAnchor;
  if (!made)
    return nullptr;
  made->node.store(this, std::memory_order_relaxed);
  if (_anchor.compare_exchange_strong(anchor, made, std::memory_order_acq_rel))
    return made;
  delete made;  // another thread was first
  return anchor;
}

}  // namespace q7z
