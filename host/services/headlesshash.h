#pragma once

// Hashes: XXH3, 128 bits, in lower-case hexadecimal digits. Stateless, for any thread.

#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessHash final : public HostHash
{
public:
  Result<String> HashText(const String& text) noexcept override;
  Result<String> HashFile(const Url& url) noexcept override;
};

}  // namespace q7z
