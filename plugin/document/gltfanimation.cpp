#include "plugin/document/gltfanimation.h"

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

Result<void> GltfAnimationSampler::ReadFromJson(const DataDictionary& element) noexcept
{
  ASSIGN_OR_RETURN(input, ReadRequiredInt(element, keys::kInput));
  ASSIGN_OR_RETURN(output, ReadRequiredInt(element, keys::kOutput));
  interpolation = ReadString(element, keys::kInterpolation, kLinearInterpolation);
  valuesPerKey = interpolation == kSplineInterpolation ? 3 : 1;
  return {};
}

// The indices are cut to 32 bits, as the accessors are numbered.
Result<void> GltfAnimationSampler::Resolve(GltfData* gltfData) noexcept
{
  CHECK_ARGUMENT(gltfData);
  ASSIGN_OR_RETURN(_inputAccessor, GetAccessor(*gltfData, static_cast<Int32>(input), false));
  ASSIGN_OR_RETURN(_outputAccessor, GetAccessor(*gltfData, static_cast<Int32>(output), false));
  return {};
}

Result<void> GltfChannel::ReadFromJson(const DataDictionary& element) noexcept
{
  ASSIGN_OR_RETURN(samplerIndex, ReadRequiredInt(element, keys::kSampler));
  ASSIGN_OR_RETURN(const DataDictionary target, ReadDictionary(element, keys::kTarget));
  node = ReadInt(target, keys::kNode, -1);
  ASSIGN_OR_RETURN(path, ReadRequiredString(target, keys::kPath));
  return {};
}

Result<void> GltfAnimation::ReadFromJson(const DataDictionary& element) noexcept
{
  name = ReadString(element, keys::kName, String());
  const auto readChannel = [this](const DataDictionary& dataValue, Int) -> Bool
  {
    GltfChannel channel;
    return !channel.ReadFromJson(dataValue).HasError() && !channels.Append(std::move(channel)).HasError();
  };
  RETURN_IF_ERROR(ForEachElement(element, keys::kChannels, readChannel));
  const auto readSampler = [this](const DataDictionary& dataValue, Int idx) -> Bool
  {
    GltfAnimationSampler sampler;
    return !sampler.ReadFromJson(dataValue).HasError() && !samplers.Insert(idx, std::move(sampler)).HasError();
  };
  RETURN_IF_ERROR(ForEachElement(element, keys::kSamplers, readSampler));
  return {};
}

Result<void> GltfAnimation::ResolveAnimation(GltfData* gltfData) noexcept
{
  for (auto& entry : samplers)
    RETURN_IF_ERROR(entry.GetValue().Resolve(gltfData));
  for (GltfChannel& channel : channels)
  {
    const GltfAnimationSampler* const sampler = samplers.Find(channel.samplerIndex);
    CHECK_STATE(sampler);
    channel.sampler = sampler;
  }
  return {};
}

}  // namespace q7z
