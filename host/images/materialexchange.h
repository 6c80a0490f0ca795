#pragma once

// HeadlessMaterialExport: the saving half of the material exchange. A node material hands back the record that it was made from,
// with its textures decoded and in the wanted size. A file is decoded once in a save, however many materials show it: of an image
// that was handed over before, hash and size are kept, and the pixels are decoded anew only if somebody asks for them. Pixels stay
// until the next material is saved. Belongs to the thread that saves; its images may be used from any.

#include <map>
#include <memory>
#include <vector>

#include "host/images/imagefiles.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

class ExchangeImage;
struct TextureWish;

class HeadlessMaterialExport final : public HostMaterialExport
{
public:
  HeadlessMaterialExport(ImageFiles& files, HostJobs& jobs) noexcept;
  ~HeadlessMaterialExport();

  /// Lets go of all images; none that was handed over is used again.
  void Clear() noexcept;

  /// @param settings  textureSupport (false for no textures), textureResize (0 keep, 1 shrink to fit, 2 exact), textureDimensions
  ///   (width and height).
  /// @return the record of a node material. Textures whose file cannot be used have no buffer; a warning tells which.
  Result<HostMaterialExchangeData> Save(HostMaterial* material, const DataDictionary& settings) noexcept override;

private:
  /// Tells files apart by what they hold, and the sizes that were asked for.
  struct Key
  {
    UInt low = 0;
    UInt high = 0;
    Int32 resize = 0;
    Int32 width = 0;
    Int32 height = 0;
    auto operator<=>(const Key&) const noexcept = default;
  };
  struct Loading;

  Result<void> LoadTextures(const TextureWish& wish, std::string_view folder, HostMaterialExchangeData& data);
  Result<void> WarnOfAddress(const Url& url);
  Result<void> ReadFile(Loading& loading, const TextureWish& wish);
  ExchangeImage& FindOrMakeImage(const Loading& loading, const TextureWish& wish, bool& isNew);
  void DropPixels() noexcept;

  ImageFiles& _files;
  HostJobs& _jobs;
  std::map<Key, std::unique_ptr<ExchangeImage>> _images;
  std::vector<ExchangeImage*> _withPixels;  // of the last record
};

}  // namespace q7z
