#include "host/images/materialexchange.h"

#include <xxhash.h>

#include <algorithm>
#include <cmath>
#include <mutex>

#include "framework/check.h"
#include "host/images/headlessimage.h"
#include "host/images/resample.h"
#include "host/scene/conversion.h"
#include "host/scene/headlessdocument.h"
#include "host/scene/headlessmaterial.h"
#include "host/scene/materialrecord.h"

namespace q7z
{

namespace
{

enum class TextureResize : Int32
{
  kKeep = 0,
  kShrink = 1,
  kExact = 2,
};

struct ImageSize
{
  Int32 width = 0;
  Int32 height = 0;
};

Int32 Scale(Int32 length, Float factor) noexcept
{
  return std::max(static_cast<Int32>(std::lround(length * factor)), 1);
}

Result<Int> ReadWhole(const DataDictionary& settings, const DataKey& key) noexcept
{
  const Data* const value = settings.Find(key);
  CHECK_ARGUMENT(value);
  return value->GetInt();
}

}  // namespace

/// What a save wants of textures.
struct TextureWish
{
  TextureResize resize = TextureResize::kKeep;
  ImageSize size;  // unless they are kept

  /// The size of a texture that has this one.
  ImageSize SizeOf(const PixelImage& image) const noexcept
  {
    const ImageSize own = {image.GetWidth(), image.GetHeight()};
    if (resize == TextureResize::kKeep)
      return own;
    if (resize == TextureResize::kExact)
      return size;
    const Float factor = std::min(static_cast<Float>(size.width) / own.width, static_cast<Float>(size.height) / own.height);
    return factor < 1 ? ImageSize{Scale(own.width, factor), Scale(own.height, factor)} : own;
  }
};

namespace
{

Result<TextureWish> ReadWish(const DataDictionary& settings) noexcept
{
  static const DataKey kTextureResize("textureResize");
  static const DataKey kTextureDimensions("textureDimensions");
  TextureWish wish;
  ASSIGN_OR_RETURN(const Int resize, ReadWhole(settings, kTextureResize));
  if (resize != static_cast<Int>(TextureResize::kShrink) && resize != static_cast<Int>(TextureResize::kExact))
    return wish;
  const Data* const dimensions = settings.Find(kTextureDimensions);
  CHECK_ARGUMENT(dimensions);
  ASSIGN_OR_RETURN(const DataArrayView sides, dimensions->GetArray());
  CHECK_ARGUMENT(sides.GetCount() == 2);
  ASSIGN_OR_RETURN(const Int width, sides[0].GetInt());
  ASSIGN_OR_RETURN(const Int height, sides[1].GetInt());
  if (!IsImageSize(width, height))
  {
    ASSIGN_OR_RETURN(const String widthText, String::FromInt(width));
    ASSIGN_OR_RETURN(const String heightText, String::FromInt(height));
    ASSIGN_OR_RETURN(const String message, String::Format("Textures cannot have @ x @ pixels."_s, {widthText, heightText}));
    return MAKE_ERROR(ErrorClass::kIllegalArgument, message);
  }
  wish.resize = static_cast<TextureResize>(resize);
  wish.size = {static_cast<Int32>(width), static_cast<Int32>(height)};
  return wish;
}

Result<Bool> WantsTextures(const DataDictionary& settings) noexcept
{
  static const DataKey kTextureSupport("textureSupport");
  const Data* const support = settings.Find(kTextureSupport);
  return support ? support->GetBool() : Result<Bool>(true);
}

}  // namespace

/// A file's image in the wanted size.
class ExchangeImage final : public HeadlessImage
{
public:
  ExchangeImage(ImageFiles& files, HostJobs& jobs, const TextureWish& wish, std::string path)
      : _files(files), _jobs(jobs), _wish(wish), _path(std::move(path))
  {}

  /// Once, from what the file holds. Afterwards the image is usable or not.
  Result<void> Decode(const BaseArray<Byte>& bytes) noexcept
  {
    Result<std::shared_ptr<PixelImage>> pixels = MakePixels(bytes);
    if (pixels.HasError())
      return _error = pixels.GetError();
    _pixels = std::move(pixels).GetValue();
    _hash = HashPixels(*_pixels);
    _byteCount = _pixels->GetByteCount();
    return {};
  }
  /// Why the file cannot be used; empty when it can.
  const Error& GetError() const noexcept { return _error; }
  void DropPixels() noexcept { _pixels.reset(); }

  Result<std::shared_ptr<const PixelImage>> GetPixels() noexcept override
  {
    const std::lock_guard lock(_mutex);
    if (!_pixels)
    {
      ASSIGN_OR_RETURN(const BaseArray<Byte> bytes, _files.Read(_path));
      ASSIGN_OR_RETURN(_pixels, MakePixels(bytes));
    }
    return std::shared_ptr<const PixelImage>(_pixels);
  }
  UInt GetHash() const noexcept override { return _hash; }
  Int GetByteCount() const noexcept override { return _byteCount; }

private:
  Result<std::shared_ptr<PixelImage>> MakePixels(const BaseArray<Byte>& bytes) noexcept
  {
    ASSIGN_OR_RETURN(std::shared_ptr<PixelImage> image, _files.Decode(_path, bytes));
    const ImageSize size = _wish.SizeOf(*image);
    if (size.width == image->GetWidth() && size.height == image->GetHeight())
      return image;
    std::shared_ptr<PixelImage> resized = PixelImage::Create(size.width, size.height, image->GetChannels());
    if (!resized)
      return Error::OutOfMemory();
    RETURN_IF_ERROR(Resample(*image, *resized, &_jobs));
    return resized;
  }

  ImageFiles& _files;
  HostJobs& _jobs;
  TextureWish _wish;
  std::string _path;
  std::mutex _mutex;
  Error _error;
  std::shared_ptr<PixelImage> _pixels;  // behind _mutex once the image was handed over
  UInt _hash = 0;
  Int _byteCount = 0;
};

/// One texture of a record on its way.
struct HeadlessMaterialExport::Loading
{
  std::string path;
  HostExchangeTexture* texture = nullptr;  // not owned
  BaseArray<Byte> bytes;                   // of the file
  ExchangeImage* image = nullptr;          // null when the file cannot be read; not owned
  bool isNew = false;
};

HeadlessMaterialExport::HeadlessMaterialExport(ImageFiles& files, HostJobs& jobs) noexcept : _files(files), _jobs(jobs)
{}
HeadlessMaterialExport::~HeadlessMaterialExport() = default;

void HeadlessMaterialExport::Clear() noexcept
{
  _withPixels.clear();
  _images.clear();
}

void HeadlessMaterialExport::DropPixels() noexcept
{
  for (ExchangeImage* const image : _withPixels)
    image->DropPixels();
  _withPixels.clear();
}

Result<HostMaterialExchangeData> HeadlessMaterialExport::Save(HostMaterial* material, const DataDictionary& settings) noexcept
{
  CHECK_ARGUMENT(material);
  const HeadlessMaterial& saved = *ToHeadless(material);
  const NodeMaterialRecord* const record = saved.GetRecord();
  CHECK_ARGUMENT(record);
  DropPixels();
  HostMaterialExchangeData data;
  RETURN_IF_ERROR(CopyExchangeData(record->data, data));
  ASSIGN_OR_RETURN(const Bool wantsTextures, WantsTextures(settings));
  if (!wantsTextures)
  {
    data.textures.Reset();
    return data;
  }
  ASSIGN_OR_RETURN(const TextureWish wish, ReadWish(settings));
  try
  {
    const HeadlessDocument* const document = saved.GetDocument();
    RETURN_IF_ERROR(LoadTextures(wish, document ? document->GetFolder().GetView() : std::string_view(), data));
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
  return data;
}

Result<void> HeadlessMaterialExport::LoadTextures(const TextureWish& wish, std::string_view folder,
                                                  HostMaterialExchangeData& data)
{
  std::vector<Loading> loadings;
  for (auto& entry : data.textures)
  {
    HostExchangeTexture& texture = entry.GetValue();
    std::string path = GetTexturePath(texture.url, folder);
    if (!path.empty())
      loadings.push_back({std::move(path), &texture, {}, nullptr, false});
    else if (texture.url.IsPopulated())
      RETURN_IF_ERROR(WarnOfAddress(texture.url));
  }
  for (Loading& loading : loadings)
    RETURN_IF_ERROR(ReadFile(loading, wish));
  auto decode = [&](Int first, Int end) -> Result<void>
  {
    for (Int i = first; i < end; ++i)
    {
      const Loading& loading = loadings[static_cast<size_t>(i)];
      const Result<void> decoded = loading.isNew ? loading.image->Decode(loading.bytes) : Result<void>();
      // Anything else was told as a warning.
      if (decoded.HasError() && decoded.GetError().GetClass() == ErrorClass::kOutOfMemory)
        return decoded.GetError();
    }
    return {};
  };
  RETURN_IF_ERROR(ParallelFor(_jobs, static_cast<Int>(loadings.size()), 1, decode));
  for (const Loading& loading : loadings)
  {
    if (loading.image && !loading.image->GetError())
      loading.texture->buffer = ToHost(static_cast<HeadlessImage*>(loading.image));
  }
  return {};
}

Result<void> HeadlessMaterialExport::WarnOfAddress(const Url& url)
{
  ASSIGN_OR_RETURN(const String address, url.GetUrl());
  _files.Warn(ToStd(address), MAKE_ERROR(ErrorClass::kIo, "only local files are read"_s));
  return {};
}

/// Finds or makes the image of a file, without its pixels yet.
Result<void> HeadlessMaterialExport::ReadFile(Loading& loading, const TextureWish& wish)
{
  Result<BaseArray<Byte>> bytes = _files.Read(loading.path);
  if (bytes.HasError())
    return bytes.GetError().GetClass() == ErrorClass::kOutOfMemory ? Result<void>(bytes.GetError()) : Result<void>();
  loading.bytes = std::move(bytes).GetValue();
  loading.image = &FindOrMakeImage(loading, wish, loading.isNew);
  // A broken one is told for each file that holds it.
  if (loading.image->GetError())
    _files.Warn(loading.path, loading.image->GetError());
  return {};
}

ExchangeImage& HeadlessMaterialExport::FindOrMakeImage(const Loading& loading, const TextureWish& wish, bool& isNew)
{
  const XXH128_hash_t hash = XXH3_128bits(loading.bytes.begin(), static_cast<size_t>(loading.bytes.GetCount()));
  std::unique_ptr<ExchangeImage>& place =
    _images[{hash.low64, hash.high64, static_cast<Int32>(wish.resize), wish.size.width, wish.size.height}];
  isNew = !place;
  if (isNew)
  {
    _withPixels.reserve(_withPixels.size() + 1);
    place = std::make_unique<ExchangeImage>(_files, _jobs, wish, loading.path);
    _withPixels.push_back(place.get());
  }
  return *place;
}

}  // namespace q7z
