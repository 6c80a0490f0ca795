#pragma once

// The host's modeling commands as the preparation of a scene sends them: their data with the results in reach of a check, and an
// owner of the settings that a command reads.

#include "plugin/module/hostcontainer.h"
#include "plugin/module/hostobject.h"

namespace q7z
{

/// Modeling commands by number, which checks quote.
inline constexpr Int32 kUseAllPolygons = 0;
inline constexpr Int32 kUsePolygonSelection = 2;

/// What goes to a command, and the list that comes back: null when it is empty. Its objects stand in no document and belong to
/// the sender.
struct ModelingCommandData : HostModelingData
{
  HostObject** result = nullptr;
};

/// As the host's own, which it goes before when the data has a result list.
inline Bool SendModelingCommand(Int32 command, ModelingCommandData& data) noexcept
{
  HostModelingData& hostData = data;
  hostData.results = nullptr;
  hostData.resultCount = 0;
  const Bool done = SendModelingCommand(command, hostData);
  data.result = done && data.results && data.resultCount > 0 ? data.results : nullptr;
  return done;
}

/// A container that belongs to nothing in the scene.
class ModelingSettings
{
public:
  /// @return the container, empty when first asked for, or null without memory.
  HostContainer* Make() noexcept
  {
    if (!_holder)
      _holder.reset(HostObject::Alloc(kNullObjectType));
    return _holder ? _holder->GetContainer() : nullptr;
  }

private:
  HostOwner<HostObject> _holder;  // the interface makes containers with nodes alone
};

}  // namespace q7z
