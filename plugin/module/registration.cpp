#include "plugin/module/hostregistration.h"

namespace q7z
{

namespace
{

// The description goes first: without it the host could show no dialog for the plug-in.
Bool RegisterSceneFormat(const HostPluginRecord& record) noexcept
{
  HostRegistrationTable& registration = *g_hostTables->registration;
  if (record.description.IsPopulated() && !registration.RegisterDescription(record.id, record.description))
    return false;
  return registration.RegisterPlugin(record);
}

}  // namespace

Bool HostRegisterSceneSaver(Int32 id, const String& name, Int32 info, HostPluginFactory factory, const String& description,
                            const String& suffix) noexcept
{
  return RegisterSceneFormat({kSceneSaverKind, id, name, info, description, suffix, factory});
}

Bool HostRegisterSceneLoader(Int32 id, const String& name, Int32 info, HostPluginFactory factory,
                             const String& description) noexcept
{
  return RegisterSceneFormat({kSceneLoaderKind, id, name, info, description, String(), factory});
}

}  // namespace q7z
