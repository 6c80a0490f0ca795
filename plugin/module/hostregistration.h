#pragma once

// What a plug-in registers: a scene loader, a scene saver, a command, and the parameter descriptions they go with. The classes
// here are implemented by the plug-in and called by the host.

#include "framework/string.h"
#include "plugin/module/hostcontainer.h"
#include "plugin/module/hostnode.h"

namespace q7z
{

inline constexpr Int32 kSceneLoaderKind = 15;
inline constexpr Int32 kSceneSaverKind = 16;

/// Flag value that marks a description as loaded.
inline constexpr Int32 kDescriptionLoaded = 2;

/// A parameter description that the host fills for a dialog.
class HostDescription
{
public:
  inline Bool LoadDescription(const Char* name) noexcept;
  inline Bool LoadDescription(Int32 id) noexcept;

protected:
  HostDescription() noexcept = default;
  ~HostDescription() = default;
};

class HostDescriptionTable
{
public:
  /// @param name  zero-terminated. @return whether a description of that name is registered and could be read.
  virtual Bool LoadByName(HostDescription* description, const Char* name) noexcept = 0;
  virtual Bool LoadById(HostDescription* description, Int32 id) noexcept = 0;
  /// What the base class of a plug-in answers.
  virtual Bool BaseGetDescription(HostNode* node, HostDescription* description, Int32& flags) noexcept = 0;
  virtual Bool BaseGetEnabling(const HostNode* node, const HostDescId& id) noexcept = 0;

protected:
  ~HostDescriptionTable() = default;
};

inline Bool HostDescription::LoadDescription(const Char* name) noexcept
{
  return g_hostTables->description->LoadByName(this, name);
}
inline Bool HostDescription::LoadDescription(Int32 id) noexcept { return g_hostTables->description->LoadById(this, id); }

/// Base of loaders and savers. node is the host's side of the instance: its container holds the options.
class HostPluginInstance
{
public:
  virtual ~HostPluginInstance() = default;
  /// Writes the defaults into node's container.
  virtual Bool Init(HostNode* node) noexcept = 0;
  virtual Bool GetDescription(HostNode* node, HostDescription* description, Int32& flags) noexcept = 0;
  virtual Bool GetEnabling(HostNode* node, const HostDescId& id) noexcept = 0;
  virtual Bool Message(HostNode*, Int32, void*) noexcept { return true; }
};

class HostSceneLoader : public HostPluginInstance
{
public:
  /// @param probe  the first probeSize bytes of the file.
  virtual Bool Identify(HostNode* node, const HostFilename& name, const Byte* probe, Int32 probeSize) noexcept = 0;
  /// @param error  for a text to the user; not null. @return 0, or a negative status.
  virtual Int32 Load(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags, String* error) noexcept = 0;
};

class HostSceneSaver : public HostPluginInstance
{
public:
  virtual Int32 Save(HostNode* node, const HostFilename& name, HostDocument* document, Int32 flags) noexcept = 0;
};

class HostCommand
{
public:
  virtual ~HostCommand() = default;
  virtual Bool Execute(HostDocument* document) noexcept = 0;
  virtual Bool RestoreLayout(void* state) noexcept = 0;
  virtual Int32 GetState(HostDocument* document) noexcept = 0;
};

/// Makes an instance; null without memory. The host deletes it.
using HostPluginFactory = HostPluginInstance* (*)();

struct HostPluginRecord
{
  Int32 kind = 0;  ///< kSceneLoaderKind or kSceneSaverKind; tells the class of what factory makes
  Int32 id = 0;
  String name;
  Int32 infoFlags = 0;
  String description;
  String suffix;
  HostPluginFactory factory = nullptr;
};

class HostRegistrationTable
{
public:
  /// Makes a parameter description known under a plug-in's id. @return false when there is no such description.
  virtual Bool RegisterDescription(Int32 id, const String& description) noexcept = 0;
  virtual Bool RegisterPlugin(const HostPluginRecord& record) noexcept = 0;
  /// Takes the command over when it answers true.
  virtual Bool RegisterCommand(Int32 id, const String& name, Int32 info, HostBitmap* icon, const String& help,
                               HostCommand* command) noexcept = 0;

protected:
  ~HostRegistrationTable() = default;
};

Bool HostRegisterSceneSaver(Int32 id, const String& name, Int32 info, HostPluginFactory factory, const String& description,
                            const String& suffix) noexcept;
Bool HostRegisterSceneLoader(Int32 id, const String& name, Int32 info, HostPluginFactory factory,
                             const String& description) noexcept;
inline Bool HostRegisterCommand(Int32 id, const String& name, Int32 info, HostBitmap* icon, const String& help,
                                HostCommand* command) noexcept
{
  return g_hostTables->registration->RegisterCommand(id, name, info, icon, help, command);
}

// The entry's messages.
inline constexpr Int32 kAttachMessage = 1;
inline constexpr Int32 kStartMessage = 2;
inline constexpr Int32 kEndMessage = 3;
inline constexpr Int32 kVersionMessage = 4;
inline constexpr Int32 kResourceMessage = 6;

/// Argument 2 of the resource message.
struct HostResourceRecord
{
  void* pointer = nullptr;  ///< cleared by the module on success
};

/// The module's entry. Arguments by message: 1 takes (HostTables*, unused, HostFilename* module path); 6 takes the sub-message as
/// a number in argument1 and a HostResourceRecord* in argument2.
using HostEntryFunction = Int32 (*)(Int32 message, void* argument1, void* argument2, void* argument3);

}  // namespace q7z
