#pragma once

// The current state of a tree as plain objects: modeling command 245. Used by the table of modeling commands; an exporter asks for
// it to have a tree without generators, deformers and instances.

#include "host/scene/headlessdocument.h"
#include "plugin/module/hostcontainer.h"

namespace q7z
{

/// Settings, both false when unset: keep the hierarchy (else all objects stand right under the copied root, in place), and keep the
/// tracks.
inline constexpr Int32 kCurrentStateCommand = 245;
inline constexpr Int32 kKeepHierarchySetting = 2140;
inline constexpr Int32 kKeepTracksSetting = 2141;

/// How much more than the tree itself its instances may make of it, so that a small document cannot fill the machine.
struct UnfoldingLimits
{
  Int objects = 1000000;
  Int bytes = Int(1) << 30;  ///< of what copies do not share, as estimated by EstimateCopySize
};

/// A copy of the tree, in no document, as it looks now.
///
/// An instance becomes a copy of what it shows in the end, with the children of that, of the instances between and its own, in this
/// order; with its own name, transform, transform tracks and visibility. An aux tag of the shown object stays on it when neither of
/// the two has transform tracks; otherwise the instance's takes its place. An instance that shows nothing, or something that it is
/// in itself, becomes a null object with its own children. Skin deformers are gone; one that has children becomes a null object.
///
/// Pose morph tags are applied and gone. Each weight tag of an object that a deformer acts on is applied once and stays. Shown
/// objects are deformed as they are where they stand. Links of weight tags lead to the copies in the tree, to those that came
/// from the same instance where there are such; all other links lead where they led.
///
/// @param document  in which deformers are looked for; null for the tree alone.
/// @return the root, which belongs to the caller. Null without memory or beyond the limits.
HeadlessObject* MakeCurrentStateCopy(const HeadlessDocument* document, const HeadlessObject* root, const HostContainer* settings,
                                     const UnfoldingLimits& limits = UnfoldingLimits()) noexcept;

}  // namespace q7z
