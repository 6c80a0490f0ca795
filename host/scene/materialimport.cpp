#include "host/scene/materialimport.h"

#include "framework/check.h"
#include "host/scene/conversion.h"

namespace q7z
{

Result<HostMaterial*> HeadlessMaterialImport::Import(const HostMaterialExchangeData& record, HostDocument*,
                                                     const DataDictionary& context) noexcept
{
  static const DataKey kNodeSpaceId("nodeSpaceId");
  const Data* const space = context.Find(kNodeSpaceId);
  CHECK_ARGUMENT(space);
  ASSIGN_OR_RETURN(const String spaceId, space->GetString());
  HeadlessOwner<HeadlessMaterial> material(HeadlessMaterial::Create());
  if (!material || !material->SetRecord(spaceId, record))
    return Error::OutOfMemory();
  return ToHost(material.release());
}

}  // namespace q7z
