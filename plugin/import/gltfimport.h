#pragma once

// GltfSceneLoader: what the host asks when it opens a file. It keeps only what lies between Identify and Load; each load makes a
// GltfImporter of its own. The host makes and deletes the loaders.

#include "framework/spinlock.h"
#include "plugin/module/hostregistration.h"

namespace q7z
{

/// A loader, or null without memory; the factory that the module registers.
HostPluginInstance* MakeGltfSceneLoader();

class GltfSceneLoader final : public HostSceneLoader
{
public:
  Bool Init(HostNode* node) noexcept override;
  Bool GetDescription(HostNode* node, HostDescription* description, Int32& flags) noexcept override;
  Bool GetEnabling(HostNode* node, const HostDescId& id) noexcept override;

  /// Accepts a GLB by its content under any name, and any content under the suffix "gltf".
  Bool Identify(HostNode* node, const HostFilename& name, const Byte* probe, Int32 probeSize) noexcept override;

  /// Loads the file into the document. What goes wrong is told by the load report's status word, not by the result: most failures
  /// return 0, too. The document keeps what was inserted before a failure. Several threads may call; one load runs at a time.
  /// @param error  gets the message of a load that failed; untouched otherwise.
  /// @return 0; -8 when the user cancelled, -3 for an error of input or output.
  Int32 Load(HostNode* node, const HostFilename& name, HostDocument* doc, Int32 flags, String* error) noexcept override;

private:
  SpinLock _lock;  // held by the running load
  Bool _isGlb = false;
};

}  // namespace q7z
