#pragma once

// HeadlessMaterialImport: the host's material importer. It makes a node material that keeps the record that it was made from.

#include "host/scene/headlessmaterial.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessMaterialImport final : public HostMaterialImport
{
public:
  /// @param context  its entry "nodeSpaceId" names the node space. The caller owns the material.
  Result<HostMaterial*> Import(const HostMaterialExchangeData& record, HostDocument* document,
                               const DataDictionary& context) noexcept override;
};

}  // namespace q7z
