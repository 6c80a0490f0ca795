#pragma once

// The exchange's type of material that has the file format's own parameters, for import and export.

#include "framework/string.h"

namespace q7z::MATERIAL::PORTBUNDLE
{

struct GLTF
{
  static constexpr String GetId() noexcept { return "net.tarno.material.portbundle.gltf"_s; }
};

}  // namespace q7z::MATERIAL::PORTBUNDLE
