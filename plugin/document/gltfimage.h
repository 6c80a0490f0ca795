#pragma once

// The records of `images` and `samplers`, which reading and writing share. An image holds the bytes of its encoded form; nothing is
// decoded here.

#include "plugin/document/gltfbuffer.h"
#include "plugin/module/hostvalue.h"

namespace q7z
{

struct GltfData;

/// The host's numbers of image forms.
inline constexpr Int32 kJpegImageType = 1104;
inline constexpr Int32 kPngImageType = 1023671;

/// Filters and wrapping of a texture, as the format's own numbers. The start values are those of a file that has none.
struct GltfSampler
{
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  String name;
  Int32 magFilter = 9729;
  Int32 minFilter = 9729;
  Int32 wrapS = 10497;
  Int32 wrapT = 10497;
};

class GltfImage
{
public:
  // Reading.

  /// A URI that is no data URI of an image is percent-decoded here, and not again.
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Finds the view, when there is one, and binds its buffer.
  Result<void> Resolve(GltfData& gltfData) noexcept;
  /// Fills the bytes from the URI: decoded, or from a file below assetFolderUrl. Without a URI nothing is loaded.
  Result<void> LoadImageData(const Url& assetFolderUrl) noexcept;
  /// Fills the bytes from the view. Where that fails there are none.
  Result<void> CopyFromBufferView() noexcept;
  /// The bytes that CopyFromBufferView asks for; 0 without a view.
  Int GetViewByteLength() const noexcept { return _bufferView ? _bufferView->GetByteLength() : 0; }
  /// Lets go of what is no longer asked for once the image was loaded: the encoded text of a data URI, and the bytes of a file of
  /// its own, which others read under its name.
  void DropLoadedSource() noexcept;
  /// Writes the bytes to a file. A data URI that was not decoded is no error and writes nothing.
  Result<void> SaveImageData(const Url& url) const noexcept;

  const String& GetName() const noexcept { return _name; }
  const String& GetURIString() const noexcept { return _uri; }
  /// The length of the prefix when the URI is a data URI of an image, else 0.
  Int IsBase64() const noexcept { return GetImageDataPrefixLength(_uri); }
  /// "png", "jpg" or what the URI's suffix says; empty when nothing tells.
  Result<String> GetImageExtension() const noexcept;
  Int GetBufferViewIndex() const noexcept { return _bufferViewIndex; }

  // Writing.

  /// Copies the encoded bytes. @param keepRaw  they go into a view later; else they become the URI at once.
  Result<void> SetImageData(const BaseArray<Byte>& bytes, Int32 imageType, Bool keepRaw) noexcept;
  /// The same, taking them over.
  Result<void> SetImageData(BaseArray<Byte>&& bytes, Int32 imageType, Bool keepRaw) noexcept;
  const String& GetMimeType() const noexcept { return _mimeType; }
  Int32 GetImageType() const noexcept { return _imageType; }

  const BaseArray<Byte>& GetData() const noexcept { return _data; }

private:
  Result<void> DecodeDataUri() noexcept;
  Result<void> ReadSideFile(const Url& assetFolderUrl) noexcept;

  String _name;
  Int _bufferViewIndex = -1;  // into bufferViews
  String _uri;
  String _mimeType;
  BaseArray<Byte> _data;  // the encoded image
  Int32 _imageType = kJpegImageType;
  GltfBufferView* _bufferView = nullptr;  // set at resolving; not owned
};

}  // namespace q7z
