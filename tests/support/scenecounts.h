#pragma once

// SceneCounts: the counters of the scene model at one moment. Equal before and after where nothing is left over and nothing was
// inserted twice, or freed while it stood somewhere.

#include "host/scene/scenediagnostics.h"

namespace q7z::test
{

struct SceneCounts
{
  Int nodes = GetSceneDiagnostics().liveNodes;
  Int tracks = GetSceneDiagnostics().liveTracks;
  Int mistakes =
    GetSceneDiagnostics().insertedTwice + GetSceneDiagnostics().freedWhileInserted + GetSceneDiagnostics().refusedCycles;
  friend bool operator==(const SceneCounts&, const SceneCounts&) = default;
};

}  // namespace q7z::test
