#include "tests/materialexport/materialfixture.h"

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

MaterialExportTest::MaterialExportTest()
{
  _host.Host().GetTables().bitmap = &_bitmaps;
  _host.Host().ReplaceService(HostMediaSessions::kId, static_cast<HostMediaSessions*>(&_sessions));
  _host.Host().ReplaceService(HostMaterialExport::kId, static_cast<HostMaterialExport*>(&_exchange));
}

MaterialExportTest::~MaterialExportTest()
{
  EXPECT_EQ(_bitmaps.liveCount, 0) << "bitmaps were left over";
}

std::string Channel(int number, std::string_view file)
{
  const std::string shader = R"(, "shader": {"parameters": {"1002": ")" + std::string(file) + R"("}})";
  return "\"" + std::to_string(number) + R"(": {"on": true)" + (file.empty() ? "" : shader) + "}";
}

std::string TrianglesWith(const std::vector<std::string>& materials)
{
  std::string materialText;
  std::string objectText;
  for (size_t i = 0; i < materials.size(); ++i)
  {
    const std::string number = std::to_string(i);
    const std::string comma = i ? ", " : "";
    materialText += comma + R"({"id": 1)" + number + R"(, "type": 5703, "name": "M)" + number + "\"" +
                    (materials[i].empty() ? "" : ", ") + materials[i] + "}";
    objectText += comma + R"({"id": 2)" + number + R"(, "type": 5100, "name": "T)" + number +
                  R"(", "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2], "tags": [{"id": 3)" + number +
                  R"(, "type": 5616, "name": "t", "material": 1)" + number + "}]}";
  }
  return R"({"format": "q7z scene", "version": 1, "materials": [)" + materialText + R"(], "objects": [)" + objectText + "]}";
}

std::string MaterialExportTest::Save(const std::vector<std::string>& materials)
{
  return Save(*ReadScene(TrianglesWith(materials)));
}

std::string MaterialExportTest::Save(HeadlessDocument& document)
{
  const SaveReport report = _folder.Save(_host, document, _parameters);
  _status = report.returnValue;
  const std::string bytes = _folder.TakeBytes();
  _content = report.Succeeded() ? SavedContent(bytes) : SavedContent();
  return report.error;
}

std::string MaterialExportTest::Image(int index) const
{
  const std::string image = "images/" + std::to_string(index) + "/";
  const std::string uri = _content.TextAt(image + "uri");
  if (uri.empty())
  {
    const Int view = _content.IntAt(image + "bufferView", -1);
    return view < 0 ? "-" : _content.View(view);
  }
  const std::string content = DecodeUri(uri);
  const bool fits = uri.starts_with(content.starts_with("png") ? "data:image/png;base64," : "data:image/jpeg;base64,");
  return fits ? content : "(" + uri.substr(0, uri.find(',')) + ")";
}

}  // namespace q7z::test
