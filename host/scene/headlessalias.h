#pragma once

// Cloning of objects and documents, and HeadlessAliasTrans, which carries links from originals to their clones over several
// clone operations.

#include "framework/hashmap.h"
#include "host/scene/headlessdocument.h"

namespace q7z
{

/// Remembers what was cloned through it. Originals and clones may be freed meanwhile.
class HeadlessAliasTrans
{
public:
  /// Null without memory.
  static HeadlessAliasTrans* Create() noexcept;

  /// Enters a pair; the clone's links are mapped by Translate. @return false without memory.
  Bool Add(HeadlessNamedNode* original, HeadlessNamedNode* clone) noexcept;
  /// Maps every link of a remembered clone that leads to a remembered original onto that original's clone.
  void Translate() noexcept;

private:
  struct Pair
  {
    WeakLink original;
    WeakLink clone;
  };
  BaseArray<Pair> _pairs;
};

/// A copy with tags, tracks and children, in no document. Links are carried by trans when one is given. Null without memory.
HeadlessObject* CloneObject(const HeadlessObject* object, HeadlessAliasTrans* trans) noexcept;
HeadlessTag* CloneTag(const HeadlessTag* tag, HeadlessAliasTrans* trans) noexcept;

/// A deep copy with links kept inside; bulk data is shared until written. Null without memory.
HeadlessDocument* CloneDocument(const HeadlessDocument* document) noexcept;

}  // namespace q7z
