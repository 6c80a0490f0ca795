#pragma once

// ObjectCopies: copies of single objects as they look now, for a copy of the current state. Objects that are deformed are deformed
// once, and all copies of one share what came out. Lives while one tree is copied.

#include "host/modeling/deformation.h"
#include "host/modeling/skindeformers.h"

namespace q7z
{

/// The name of tags of type 1001149 that lead from a copied object to the one it came from.
inline constexpr const char* kAuxTagName = "glTFAuxTag";

class ObjectCopies
{
public:
  explicit ObjectCopies(Bool keepsTracks) noexcept : _keepsTracks(keepsTracks) {}
  Bool Init(const HeadlessDocument* document, const HeadlessObject& root) noexcept { return _deformers.Collect(document, root); }

  // Each gives an object without children, in no document, whose links lead where the original's do; null without memory.

  /// A deformer gives a null object.
  HeadlessOwner<HeadlessObject> Make(const HeadlessObject& object) noexcept;
  /// What an instance shows, in the instance's place.
  HeadlessOwner<HeadlessObject> MakeShown(const HeadlessObject& shown, const HeadlessObject& instance) noexcept;
  /// A null object in the place of another object, with its parameters, tags and tracks.
  HeadlessOwner<HeadlessObject> MakeNull(const HeadlessObject& object) noexcept;

private:
  HeadlessOwner<HeadlessObject> MakeWithTracks(const HeadlessObject& object) noexcept;
  HeadlessOwner<HeadlessObject> MakeDeformed(const HeadlessObject& object) noexcept;
  Bool ApplySkins(const HeadlessObject& object, HeadlessPolygonObject& copy) noexcept;
  HeadlessOwner<HeadlessObject> Finish(HeadlessOwner<HeadlessObject> copy) const noexcept;

  SkinDeformers _deformers;
  GlobalMatrices _globals;
  HashMap<const HeadlessObject*, HeadlessOwner<HeadlessObject>> _deformed;  // one copy of each object that is deformed
  Bool _keepsTracks;
};

}  // namespace q7z
