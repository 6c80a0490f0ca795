#pragma once

// HeadlessMaterialImport: the host's material importer. It makes a node material that keeps the record that it was made from.

#include <string>

#include "host/scene/headlessmaterial.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessMaterialImport final : public HostMaterialImport
{
public:
  /// The folder of the file that is loaded: textures that are named from there get whole paths, so that the document may be kept
  /// anywhere. Empty for the current one.
  void SetFolder(std::string folder) noexcept { _folder = std::move(folder); }

  /// @param context  its entry "nodeSpaceId" names the node space. The caller owns the material.
  Result<HostMaterial*> Import(const HostMaterialExchangeData& record, HostDocument* document,
                               const DataDictionary& context) noexcept override;

private:
  std::string _folder;
};

}  // namespace q7z
