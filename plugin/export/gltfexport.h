#pragma once

// The scene saver that the host sees.

#include "plugin/module/hostregistration.h"

namespace q7z
{

/// Message that asks a saver for the suffix of the file that is about to be written.
inline constexpr Int32 kSuffixMessage = 1058891;

/// The data of kSuffixMessage.
struct HostSuffixRecord
{
  String* suffix = nullptr;  ///< receives the suffix; may be null
  Int32 isAnswered = 0;      ///< 1 behind the message
};

/// Flag of a save without which nothing is written.
inline constexpr Int32 kSaveObjects = 1;
/// Flag of a save that may show its progress.
inline constexpr Int32 kSaveDialogsAllowed = 8;

class GltfSceneSaver final : public HostSceneSaver
{
public:
  Bool Init(HostNode* node) noexcept override;
  Bool GetDescription(HostNode* node, HostDescription* description, Int32& flags) noexcept override;
  Bool GetEnabling(HostNode* node, const HostDescId& id) noexcept override;
  Bool Message(HostNode* node, Int32 message, void* data) noexcept override;
  Int32 Save(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags) noexcept override;
};

/// The saver's factory; null without memory.
HostPluginInstance* MakeGltfSceneSaver();

}  // namespace q7z
