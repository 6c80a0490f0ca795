#pragma once

// CopiedJoints: leads the weight tags of copied objects to the copies of their joints. An object that several instances show has
// several copies: those that came from one instance form a scope, inside the scope that the instance is in; scope 0 is the tree
// itself. A joint's copy is looked for in the tag's scope first, then in the ones around it. Lives while one tree is copied.

#include "framework/hashmap.h"
#include "host/scene/headlessobject.h"

namespace q7z
{

class CopiedJoints
{
public:
  /// A new scope inside of scope, which becomes the new one. @return false without memory.
  Bool AddScope(Int32& scope) noexcept;
  /// Remembers that copy stands for original in a scope; hasItsTags tells that the copy's tags are the original's, and thus of this
  /// scope. @return false without memory.
  Bool Add(const HeadlessObject& original, HeadlessObject& copy, Int32 scope, Bool hasItsTags) noexcept;
  /// Maps the links of all remembered copies' weight tags; those that lead to no remembered original stay.
  /// @return false without memory.
  Bool MapLinks() noexcept;

private:
  struct CopiedObject
  {
    const HeadlessObject* original;
    HeadlessObject* copy;
    Int32 scope;
  };
  struct ScopedTag
  {
    HeadlessTag* tag;
    Int32 scope;
  };
  struct Place
  {
    const HeadlessObject* original = nullptr;
    Int32 scope = 0;
    friend Bool operator==(const Place&, const Place&) noexcept = default;
    friend UInt HashOf(const Place& place) noexcept
    {
      return MixBits(reinterpret_cast<UInt>(place.original) + static_cast<UInt>(place.scope) * 0x9e3779b97f4a7c15u);
    }
  };

  Bool CollectCopies() noexcept;
  Bool FindCopy(const HeadlessObject& original, Int32 scope, HeadlessObject*& copy) noexcept;

  BaseArray<CopiedObject> _objects;
  BaseArray<ScopedTag> _tags;               // weight tags of copies
  BaseArray<Int32> _outerScopes;            // of scope i + 1
  HashMap<Place, HeadlessObject*> _copies;  // of joints alone; null for none in the scope and around it
};

}  // namespace q7z
