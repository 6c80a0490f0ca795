#include "host/scene/materialimport.h"

#include "framework/check.h"
#include "host/images/imagefiles.h"
#include "host/scene/conversion.h"
#include "host/scene/materialrecord.h"

namespace q7z
{

namespace
{

/// A copy whose relative files have whole paths.
Result<void> ResolveFiles(const HostMaterialExchangeData& record, const std::string& folder, HostMaterialExchangeData& resolved)
{
  RETURN_IF_ERROR(CopyExchangeData(record, resolved));
  for (auto& entry : resolved.textures)
  {
    Url& url = entry.GetValue().url;
    if (url.GetScheme() != URLSCHEME_RELATIVE)
      continue;
    ASSIGN_OR_RETURN(const String path, String::Create(GetTexturePath(url, folder)));
    ASSIGN_OR_RETURN(url, Url::FromPath(path));
  }
  return {};
}

}  // namespace

Result<HostMaterial*> HeadlessMaterialImport::Import(const HostMaterialExchangeData& record, HostDocument*,
                                                     const DataDictionary& context) noexcept
{
  static const DataKey kNodeSpaceId("nodeSpaceId");
  const Data* const space = context.Find(kNodeSpaceId);
  CHECK_ARGUMENT(space);
  ASSIGN_OR_RETURN(const String spaceId, space->GetString());
  try
  {
    HostMaterialExchangeData resolved;
    RETURN_IF_ERROR(ResolveFiles(record, _folder, resolved));
    HeadlessOwner<HeadlessMaterial> material(HeadlessMaterial::Create());
    if (!material || !material->SetRecord(spaceId, resolved))
      return Error::OutOfMemory();
    return ToHost(material.release());
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
