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

std::string PixelText(const Pixel& pixel, bool hasAlpha)
{
  std::string text;
  for (size_t i = 0; i < (hasAlpha ? 4u : 3u); ++i)
    text += (i ? "," : " ") + std::to_string(pixel[i]);
  return text;
}

}  // namespace

Picture::Picture(int pictureWidth, int pictureHeight, std::vector<std::array<uint8_t, 3>> colors, std::vector<uint8_t> alpha)
    : width(pictureWidth), height(pictureHeight), hasAlpha(!alpha.empty())
{
  for (size_t i = 0; i < static_cast<size_t>(width * height); ++i)
  {
    const std::array<uint8_t, 3>& color = colors.size() == 1 ? colors[0] : colors.at(i);
    const uint8_t a = !hasAlpha ? 255 : alpha.size() == 1 ? alpha[0] : alpha.at(i);
    pixels.push_back({color[0], color[1], color[2], a});
  }
}

std::string Picture::Text() const
{
  std::string text = std::to_string(width) + "x" + std::to_string(height);
  const bool isPlain = pixels.size() > 1 && std::all_of(pixels.begin(), pixels.end(), [this](const Pixel& pixel)
                                                        { return PixelText(pixel, hasAlpha) == PixelText(pixels[0], hasAlpha); });
  if (isPlain)
    return text + " all" + PixelText(pixels[0], hasAlpha);
  for (const Pixel& pixel : pixels)
    text += PixelText(pixel, hasAlpha);
  return text;
}

FakeBitmaps::~FakeBitmaps() = default;

bool FakeBitmaps::IsCallFailing()
{
  const std::lock_guard lock(_mutex);
  return ++callCount == failAt;
}

HostBitmap* FakeBitmaps::Alloc() noexcept
{
  if (IsCallFailing())
    return nullptr;
  Picture* const picture = new (std::nothrow) Picture;
  const std::lock_guard lock(_mutex);
  liveCount += picture != nullptr;
  return picture ? picture->AsBitmap() : nullptr;
}

void FakeBitmaps::Free(HostBitmap* bitmap) noexcept
{
  const std::lock_guard lock(_mutex);
  --liveCount;
  delete &ToPicture(bitmap);
}

Bool FakeBitmaps::Init(HostBitmap* bitmap, Int32 width, Int32 height, Int32 bitsPerPixel) noexcept
try
{
  if (IsCallFailing() || width < 1 || height < 1 || bitsPerPixel != 24)
    return false;
  ToPicture(bitmap) = Picture(width, height, {{1, 2, 3}});  // no colour that a test expects
  return true;
}
catch (const std::bad_alloc&)
{
  return false;
}

Bool FakeBitmaps::Load(HostBitmap* bitmap, const HostFilename& name) noexcept
try
{
  const std::string path(name.GetPath().GetView());
  const bool fails = IsCallFailing();
  const std::lock_guard lock(_mutex);
  ++loadCounts[path];
  const auto found = files.find(path);
  if (fails || found == files.end())
    return false;
  ToPicture(bitmap) = found->second;
  return true;
}
catch (const std::bad_alloc&)
{
  return false;
}

Bool FakeBitmaps::ScaleInto(const HostBitmap* bitmap, HostBitmap* target) noexcept
{
  if (IsCallFailing())
    return false;
  const Picture& from = ToPicture(bitmap);
  Picture& to = ToPicture(target);
  for (int y = 0; y < to.height; ++y)
  {
    for (int x = 0; x < to.width; ++x)
    {
      const Pixel& source =
        from.pixels[static_cast<size_t>(y * from.height / to.height * from.width + x * from.width / to.width)];
      std::copy_n(source.begin(), 3, to.pixels[static_cast<size_t>(y * to.width + x)].begin());
    }
  }
  return true;
}

Bool FakeBitmaps::AddAlpha(HostBitmap* bitmap) noexcept
{
  if (IsCallFailing() || ToPicture(bitmap).hasAlpha)
    return false;
  ToPicture(bitmap).hasAlpha = true;
  for (Pixel& pixel : ToPicture(bitmap).pixels)
    pixel[3] = 4;
  return true;
}

Bool FakeBitmaps::ReadRow(const HostBitmap* bitmap, Int32 row, Byte* target, Bool withAlpha) noexcept
{
  const Picture& picture = ToPicture(bitmap);
  if (IsCallFailing() || row < 0 || row >= picture.height || (withAlpha && !picture.hasAlpha))
    return false;
  for (int x = 0; x < picture.width; ++x)
    target = std::copy_n(picture.pixels[static_cast<size_t>(row * picture.width + x)].begin(), withAlpha ? 4 : 3, target);
  return true;
}

Bool FakeBitmaps::WriteRow(HostBitmap* bitmap, Int32 row, const Byte* source, Bool withAlpha) noexcept
{
  Picture& picture = ToPicture(bitmap);
  if (IsCallFailing() || row < 0 || row >= picture.height || (withAlpha && !picture.hasAlpha))
    return false;
  const int count = withAlpha ? 4 : 3;
  for (int x = 0; x < picture.width; ++x)
    std::copy_n(source + x * count, count, picture.pixels[static_cast<size_t>(row * picture.width + x)].begin());
  return true;
}

HostImage* FakeBitmaps::GetImage(HostBitmap* bitmap) noexcept
{
  return IsCallFailing() ? nullptr : ToPicture(bitmap).AsImage();
}

Result<BaseArray<Byte>> FakeSessions::Encode(const Char* sessionId, HostImage* image) noexcept
try
{
  const Picture& picture = ToPicture(image);
  const std::string session(sessionId);
  const bool isPng = session == "net.tarno.mediasession.png.export";
  if (!isPng && session != "net.tarno.mediasession.jpg.export")
    return Error::Make(ErrorClass::kUnexpected, "no such session"_s, __FILE__, __LINE__);
  const std::string text = (isPng ? "png " : "jpg ") + picture.Text() + (picture.isLinear ? " linear" : "");
  const std::lock_guard lock(_mutex);
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
  _converted.push_back(std::make_unique<Picture>(ToPicture(image)));
  _converted.back()->isLinear = true;
  return _converted.back()->AsImage();
}

UInt FakeSessions::GetHash(const HostImage* image) noexcept
{
  // Beyond what a signed number holds, and told from each other by the first pixel's red.
  return 18446744073709551000u + ToPicture(image).pixels[0][0];
}

Int FakeSessions::GetByteCount(const HostImage* image) noexcept
{
  return static_cast<Int>(ToPicture(image).pixels.size()) * 3;
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
    RETURN_IF_ERROR(data.textures.Set(View(key), {Url(), picture ? picture->AsImage() : nullptr}));
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
