#pragma once

// AnimationImporter: turns the animations of a file into tracks, curves and keys of the objects that its nodes became. The scene
// builder owns one for each load. Tracks go to the objects themselves or to the overrides of a take.

#include "plugin/animation/gltfsampler.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfimportoptions.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

/// How many keys one load may make. Channels may share accessors, and baking makes keys for a time range that is a mere number, so a
/// small file can ask for far more keys than it has bytes.
class KeyBudget
{
public:
  KeyBudget() noexcept = default;
  explicit KeyBudget(Int bufferByteCount) noexcept;

  /// Takes the keys of a number of tracks. @return an out-of-memory error when they are too many; the budget is over then.
  Result<void> Take(Int keyCount, Int trackCount) noexcept;
  /// The same for keys that an accessor claims; no accessor can have more than there are bytes.
  Result<void> TakeClaimed(Int keyCount, Int trackCount) noexcept;
  /// Takes the keys that had to make room for one in front of them.
  Result<void> TakeMoves(Int keyCount) noexcept;
  Bool IsOver() const noexcept { return _isOver; }

private:
  Result<void> TakeFrom(Int& remaining, Int count) noexcept;

  Int _byteCount = 0;
  Int _remainingKeys = 0;
  Int _remainingMoves = 0;
  Bool _isOver = false;
};

/// What the values of a sampler are in the host: up to three components each.
template <typename T>
class ValueConversion
{
public:
  virtual void Convert(const T* values, Int count, Vector* converted) const noexcept = 0;

protected:
  ~ValueConversion() = default;
};

/// The tracks that one sampler becomes, and how. Nothing is owned.
struct SamplerTracks
{
  HostObject* object = nullptr;
  const GltfAnimationSampler* sampler = nullptr;
  const HostDescId* dids = nullptr;  ///< a track for each, fed by the components of the values in order
  Int didCount = 0;                  ///< 1 or 3
  HostNode* target = nullptr;        ///< what has the tracks; null for the object
  SamplerLayout layout;
  HostTake* take = nullptr;  ///< null for the node's own tracks
  Bool bake = false;         ///< linear keys at times of the document instead of the sampler's own
  InterpolationMode mode = InterpolationMode::Linear;
  Bool addRestKeys = false;
  Vector restValue;  ///< one frame before time 0, with addRestKeys
};

class AnimationImporter
{
public:
  /// Sets the document's time range where the file has animations. All that is given outlives the importer.
  /// @param lookupNodes  objects by node index; a null object counts as none.
  Result<void> InitAnimationImporter(HostDocument* doc, const GltfData* gltfData, const ImportOptions* options,
                                     const HashMap<Int, HostObject*>* lookupNodes) noexcept;

  /// @param take  where the tracks go; null for the objects themselves. @param addRestKeys  whether each track gets the pose of
  /// the node one frame before time 0. Tracks made before an error stay.
  Result<void> ImportAnimation(const GltfAnimation& animation, HostTake* take, Bool addRestKeys) noexcept;

  /// Whether the file asked for more keys than it may have; every import fails from then on.
  Bool IsOverLimit() const noexcept { return _keyBudget.IsOver(); }

private:
  /// The last channel of each path for one node; null for none. Not owned.
  struct NodeChannels
  {
    const GltfChannel* translation = nullptr;
    const GltfChannel* rotation = nullptr;
    const GltfChannel* scale = nullptr;
    const GltfChannel* weights = nullptr;
  };
  using ChannelsByNode = HashMap<Int, NodeChannels>;

  // gltfanimationimport.cpp: channels.
  Result<void> GroupChannels(const GltfAnimation& animation, ChannelsByNode& nodes) const noexcept;
  HostObject* FindObject(Int nodeIndex) const noexcept;
  Result<void> ImportNode(HostObject* object, const NodeChannels& channels, HostTake* take, Bool addRestKeys) noexcept;
  SamplerTracks DescribeTracks(HostObject* object, const GltfChannel& channel, HostTake* take, Bool addRestKeys) const noexcept;
  Result<void> ImportTransform(HostObject* object, const NodeChannels& channels, HostTake* take, Bool addRestKeys) noexcept;
  Result<void> ImportTranslation(SamplerTracks tracks) noexcept;
  Result<void> ImportRotation(SamplerTracks tracks) noexcept;
  Result<void> ImportScale(SamplerTracks tracks) noexcept;

  /// gltfweightsimport.cpp: a track for each morph of the object's pose morph tag.
  Result<void> ImportWeightTracks(HostObject* object, const GltfChannel& channel, HostTake* take, Bool addRestKeys) noexcept;

  /// gltfsamplertracks.cpp: one sampler becomes tracks. For T = Vector, Vector4, Float.
  template <typename T>
  Result<void> ImportSamplerTracks(const SamplerTracks& request, const ValueConversion<T>& valueConversion) noexcept;
  Result<void> MakeBakedTimes(const SamplerTracks& request, BaseArray<Float>& times) noexcept;

  HostDocument* _doc = nullptr;                             // not owned
  const GltfData* _gltfData = nullptr;                      // not owned
  const HashMap<Int, HostObject*>* _lookupNodes = nullptr;  // not owned
  const ImportOptions* _options = nullptr;                  // not owned
  KeyBudget _keyBudget;
};

}  // namespace q7z
