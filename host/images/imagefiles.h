#pragma once

// ImageFiles: reads image files for bitmaps and exchange textures, within what the running load or save may read, and warns of each
// that cannot be used, by name. One belongs to a HeadlessHost; it may be used from any thread.

#include <string>

#include "framework/basearray.h"
#include "framework/url.h"
#include "host/images/pixelimage.h"
#include "host/services/headlessfiles.h"

namespace q7z
{

class ImageFiles
{
public:
  explicit ImageFiles(FilePolicy& policy) noexcept : _policy(policy) {}

  /// Who is told, from any thread; null for nobody; not owned. Between saves only.
  void SetWarnings(FileWarnings* warnings) noexcept { _warnings = warnings; }

  /// The whole file. @return an error of the class io or unexpected when it cannot be had, which has been told then, or out of
  ///   memory.
  Result<BaseArray<Byte>> Read(const std::string& path) noexcept;
  /// The pixels of a file. Errors as above.
  Result<std::shared_ptr<PixelImage>> Load(const std::string& path) noexcept;
  /// The same from what the file holds.
  Result<std::shared_ptr<PixelImage>> Decode(const std::string& path, const BaseArray<Byte>& bytes) noexcept;
  /// Tells that a file is not used; out of memory is not told.
  void Warn(const std::string& path, const Error& error) noexcept;

private:
  Error MakeReadError(const std::string& path);

  FilePolicy& _policy;
  FileWarnings* _warnings = nullptr;
};

/// The path that a texture's URL names: local ones as they are, relative ones below folder (empty for the current one). Empty for
/// any other. Throws bad_alloc.
std::string GetTexturePath(const Url& url, std::string_view folder);

/// What a file is, by its header alone: "PNG, 1024 x 512"; "missing" or "no image" else. Throws bad_alloc.
std::string DescribeImageFile(const std::string& path);

}  // namespace q7z
