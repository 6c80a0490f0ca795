#pragma once

// Evaluation: brings a document's animated parameters to what their tracks say at the document's time. The document does so
// whenever its time is set. Nothing that shows is kept between two evaluations.

#include "host/scene/headlessdocument.h"

namespace q7z
{

/// Evaluates the tracks of all objects and tags of the hierarchy. Where the current take overrides a node, its tracks win over its
/// values and both over the node's own tracks for the same id; a value for a whole vector wins over tracks of its components.
/// Overrides of nodes that are neither objects nor tags are applied last. A track without keys leaves its parameter alone.
///
/// Position, rotation and scale of an object are set together, so that its matrix is built anew once. A point track moves the
/// points of its object: in between two keys that store equally many points, as many as the object has; otherwise the earlier
/// key's points hold, and keys that store another number of points than the object has are passed over. What cannot be set, for
/// want of memory or because a number does not fit the parameter, stays as it was.
///
/// One walk over n objects and their t tracks: n + t log(keys), and only n + t where the time moves on by little. Objects are shared
/// out to threads unless the take overrides something.
/// @param jobs  null for this thread alone.
void EvaluateTracks(HeadlessDocument& document, HostJobs* jobs) noexcept;

}  // namespace q7z
