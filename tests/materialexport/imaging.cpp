#include "tests/materialexport/imaging.h"

#include <algorithm>
#include <stdexcept>

namespace q7z::test
{

namespace
{

String View(const std::string& text)
{
  return String(text.data(), static_cast<Int>(text.size()));
}

std::string Describe(const PixelImage& image)
{
  const std::string size = std::to_string(image.GetWidth()) + "x" + std::to_string(image.GetHeight()) + " ";
  const Byte* const bytes = image.GetRow(0);
  const Int channels = image.GetChannels();
  const bool isPlain = image.GetByteCount() > channels && std::equal(bytes + channels, bytes + image.GetByteCount(), bytes);
  return size + (isPlain ? "all " + PixelText(image).substr(0, PixelText(image).find(' ')) : PixelText(image));
}

}  // namespace

bool FaultyBitmaps::IsCallFailing()
{
  const std::lock_guard lock(_mutex);
  return ++callCount == failAt;
}

HostBitmap* FaultyBitmaps::Alloc() noexcept
{
  HostBitmap* const bitmap = IsCallFailing() ? nullptr : _base->Alloc();
  const std::lock_guard lock(_mutex);
  liveCount += bitmap != nullptr;
  return bitmap;
}

void FaultyBitmaps::Free(HostBitmap* bitmap) noexcept
{
  const std::lock_guard lock(_mutex);
  --liveCount;
  _base->Free(bitmap);
}

Bool FaultyBitmaps::Load(HostBitmap* bitmap, const HostFilename& name) noexcept
try
{
  const std::string path(name.GetPath().GetView());
  const bool fails = IsCallFailing();
  const std::lock_guard lock(_mutex);
  ++loadCounts[path];
  const auto found = files.find(path);
  if (fails || found == files.end())
    return false;
  PixelImage& image = *found->second;
  if (!_base->Init(bitmap, image.GetWidth(), image.GetHeight(), 24) || (image.HasAlpha() && !_base->AddAlpha(bitmap)))
    return false;
  for (Int32 y = 0; y < image.GetHeight(); ++y)
    _base->WriteRow(bitmap, y, image.GetRow(y), image.HasAlpha());
  return true;
}
catch (const std::bad_alloc&)
{
  return false;
}

Result<BaseArray<Byte>> FakeSessions::Encode(const Char* sessionId, HostImage* image) noexcept
try
{
  const std::string session(sessionId);
  const bool isPng = session == "net.tarno.mediasession.png.export";
  if (!isPng && session != "net.tarno.mediasession.jpg.export")
    return Error::Make(ErrorClass::kUnexpected, "no such session"_s, __FILE__, __LINE__);
  std::string text = (isPng ? "png " : "jpg ") + Describe(*ToHeadless(image)->GetPixels().GetValue());
  const std::lock_guard lock(_mutex);
  if (_converted.contains(image))
    text += " linear";
  if (failing.contains(text))
    return Error::Make(ErrorClass::kUnexpected, "the disk is on fire"_s, __FILE__, __LINE__);
  encoded.insert(text);
  BaseArray<Byte> bytes;
  RETURN_IF_ERROR(bytes.AppendCopies(reinterpret_cast<const Byte*>(text.data()), static_cast<Int>(text.size())));
  return bytes;
}
catch (const std::bad_alloc&)
{
  return Error::OutOfMemory();
}

Result<HostImage*> FakeSessions::ConvertColorProfile(HostImage* image, const Char* profileId) noexcept
{
  if (conversionFails || std::string(profileId) != "net.tarno.image.colorprofile.linear_rgb")
    return Error::Make(ErrorClass::kUnexpected, "no such profile"_s, __FILE__, __LINE__);
  const std::lock_guard lock(_mutex);
  auto converted = std::make_unique<PlainImage>(ToHeadless(image)->GetPixels().GetValue());
  HostImage* const host = ToHost(static_cast<HeadlessImage*>(converted.get()));
  _converted[host] = std::move(converted);
  return host;
}

UInt FakeSessions::GetHash(const HostImage* image) noexcept
{
  // Beyond what a signed number holds, and told from each other by the first pixel's red.
  return 18446744073709551000u + *static_cast<const PlainImage*>(ToHeadless(image))->Pixels().GetRow(0);
}

Result<HostMaterialExchangeData> FakeExchange::Save(HostMaterial* material, const DataDictionary& exchangeSettings) noexcept
{
  settings = exchangeSettings;
  ++callCount;
  const auto found = records.find(std::string(material->GetName().GetView()));
  if (found == records.end())
    return Error::Make(ErrorClass::kUnexpected, "no record"_s, __FILE__, __LINE__);
  const ExchangeRecord& record = found->second;
  HostMaterialExchangeData data;
  data.materialTypeId = View(record.materialTypeId);
  for (const auto& [key, value] : record.parameters)
    RETURN_IF_ERROR(data.parameters.Set(View(key), {value, true}));
  for (const auto& [key, picture] : record.textures)
    RETURN_IF_ERROR(data.textures.Set(View(key), {Url(), picture ? ToHost(static_cast<HeadlessImage*>(picture)) : nullptr}));
  return data;
}

Data Numbers(std::vector<double> numbers)
{
  BaseArray<Data> elements;
  for (const double number : numbers)
  {
    if (elements.Append(Data(number)).HasError())
      throw std::bad_alloc();
  }
  return Data::CreateArray(std::move(elements)).GetValue();
}

}  // namespace q7z::test
