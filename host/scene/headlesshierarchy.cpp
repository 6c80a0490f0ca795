// The places of objects: child lists, the top level of a document, and the objects that a document keeps outside its hierarchy.

#include <cassert>

#include "host/scene/headlessdocument.h"

namespace q7z
{

HeadlessObject* HeadlessObject::GetNextInTree(const HeadlessObject* root) const noexcept
{
  if (_down)
    return _down;
  for (const HeadlessObject* object = this; object && object != root; object = object->_up)
  {
    if (HeadlessObject* const next = object->GetNext())
      return next;
  }
  return nullptr;
}

const HeadlessObject* HeadlessObject::GetRoot() const noexcept
{
  const HeadlessObject* root = this;
  while (root->_up)
    root = root->_up;
  return root;
}

HeadlessDocument* HeadlessObject::GetDocument() const noexcept
{
  const HeadlessObject* const root = GetRoot();
  return root->_place == Place::kTopLevel ? root->_document : nullptr;
}

Bool HeadlessObject::IsUnderOrSame(const HeadlessObject* ancestor) const noexcept
{
  // An object without children has nothing under it: building a chain from its top costs no walks.
  if (!ancestor->_down)
    return this == ancestor;
  const HeadlessObject* object = this;
  while (object && object != ancestor)
    object = object->_up;
  return object != nullptr;
}

/// Takes the object out of where it stands, unless it would come under itself.
Bool HeadlessObject::LeaveFor(const HeadlessObject* newParent) noexcept
{
  if (newParent && newParent->IsUnderOrSame(this))
  {
    CountMistake(GetSceneDiagnostics().refusedCycles);
    return false;
  }
  Unlink();
  return true;
}

/// Puts an object that stands nowhere between two neighbours, either of which may be null: under parent, or else at the
/// document's top level.
void HeadlessObject::Link(HeadlessDocument* document, HeadlessObject* parent, HeadlessObject* previous,
                          HeadlessObject* next) noexcept
{
  _place = parent ? Place::kChild : Place::kTopLevel;
  _document = parent ? nullptr : document;
  _up = parent;
  _previous = previous;
  _next = next;
  (previous ? previous->_next : parent ? parent->_down : document->_firstObject) = this;
  (next ? next->_previous : parent ? parent->_lastChild : document->_lastObject) = this;
  _origin.Clear();
}

void HeadlessObject::Unlink() noexcept
{
  switch (_place)
  {
    case Place::kNowhere: return;
    case Place::kChild:
      assert(_up);
      (_previous ? _previous->_next : _up->_down) = _next;
      (_next ? _next->_previous : _up->_lastChild) = _previous;
      break;
    case Place::kTopLevel:
      (_previous ? _previous->_next : _document->_firstObject) = _next;
      (_next ? _next->_previous : _document->_lastObject) = _previous;
      break;
    case Place::kKept:
      (_previous ? _previous->_next : _document->_firstKept) = _next;
      if (_next)
        _next->_previous = _previous;
      break;
  }
  _place = Place::kNowhere;
  _document = nullptr;
  _up = _previous = _next = nullptr;
}

void HeadlessObject::InsertBefore(HeadlessObject* other) noexcept
{
  const Bool isPlaced = other->_place == Place::kChild || other->_place == Place::kTopLevel;
  if (other == this || !isPlaced || !LeaveFor(other->_up))
    return;
  Link(other->_document, other->_up, other->_previous, other);
}

void HeadlessObject::InsertAfter(HeadlessObject* other) noexcept
{
  const Bool isPlaced = other->_place == Place::kChild || other->_place == Place::kTopLevel;
  if (other == this || !isPlaced || !LeaveFor(other->_up))
    return;
  Link(other->_document, other->_up, other, other->_next);
}

void HeadlessObject::InsertUnder(HeadlessObject* parent) noexcept
{
  if (parent)
  {
    if (LeaveFor(parent))
      Link(nullptr, parent, nullptr, parent->_down);
    return;
  }
  HeadlessDocument* document = GetRoot()->_document;
  if (!document)
    document = _origin.GetAs<HeadlessDocument>();
  Unlink();
  if (document)
    document->Keep(this);
}

void HeadlessObject::InsertUnderLast(HeadlessObject* parent) noexcept
{
  if (!parent)
    InsertUnder(nullptr);
  else if (LeaveFor(parent))
    Link(nullptr, parent, parent->_lastChild, nullptr);
}

void HeadlessObject::Remove() noexcept
{
  HeadlessDocument* const document = GetRoot()->_document;
  Unlink();
  // Without memory for the link the object merely stays the caller's when it is detached later.
  if (document && !_origin.Set(document))
    _origin.Clear();
}

Bool HeadlessObject::TakeOut() noexcept
{
  const Bool wasInserted = _place == Place::kChild || _place == Place::kTopLevel;
  Unlink();
  return wasInserted;
}

void HeadlessObject::Destroy() noexcept
{
  DestroyList(this);
}

/// Frees objects that are chained by their successors, with all below them. The children of each go in front of what is left, so
/// that neither stack nor time depend on the depth.
void HeadlessObject::DestroyList(HeadlessObject* first) noexcept
{
  while (HeadlessObject* const object = first)
  {
    first = object->_next;
    if (object->_lastChild)
    {
      object->_lastChild->_next = first;
      first = object->_down;
    }
    delete object;
  }
}

void HeadlessDocument::InsertObject(HeadlessObject* object, HeadlessObject* parent, HeadlessObject* predecessor) noexcept
{
  const Bool stood = object->_place == HeadlessObject::Place::kChild || object->_place == HeadlessObject::Place::kTopLevel;
  if (stood)
    CountMistake(GetSceneDiagnostics().insertedTwice);
  if (predecessor)
    object->InsertAfter(predecessor);
  else if (parent)
    object->InsertUnder(parent);
  else if (object->LeaveFor(nullptr))
    object->Link(this, nullptr, nullptr, _firstObject);
}

void HeadlessDocument::InsertObjectLast(HeadlessObject* object) noexcept
{
  if (object->LeaveFor(nullptr))
    object->Link(this, nullptr, _lastObject, nullptr);
}

void HeadlessDocument::Keep(HeadlessObject* object) noexcept
{
  object->Unlink();
  object->_place = HeadlessObject::Place::kKept;
  object->_document = this;
  object->_next = _firstKept;
  if (_firstKept)
    _firstKept->_previous = object;
  _firstKept = object;
}

}  // namespace q7z
