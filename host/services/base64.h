#pragma once

// The base64 services: the standard alphabet with padding, at the speed of memory. Stateless, for any thread.

#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessBase64Decoder final : public HostBase64Decoder
{
public:
  Result<BaseArray<Byte>> Decode(const String& text) noexcept override;
};

class HeadlessBase64Encoder final : public HostBase64Encoder
{
public:
  Result<String> Encode(const String& prefix, const Byte* bytes, Int byteCount) noexcept override;
};

class HeadlessUrlPathDecoder final : public HostUrlPathDecoder
{
public:
  Result<String> Decode(const String& text) noexcept override { return DecodePercent(text); }
};

}  // namespace q7z
