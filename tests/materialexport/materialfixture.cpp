#include "tests/materialexport/materialfixture.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "host/scenefile/scenefile.h"
#include "host/services/base64.h"
#include "host/services/headlessjson.h"

namespace q7z::test
{

namespace
{

std::string ReadBytes(const std::string& path)
{
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

Data ParseJson(std::string_view text)
{
  HeadlessJson json;
  BaseArray<Byte> bytes;
  if (bytes.AppendCopies(reinterpret_cast<const Byte*>(text.data()), static_cast<Int>(text.size())).HasError())
    throw std::bad_alloc();
  Result<BaseArray<Data>> parsed = json.ParseBytes(std::move(bytes));
  if (parsed.HasError())
    throw std::runtime_error("the file is no JSON: " + std::string(parsed.GetError().GetMessage().GetView()));
  return parsed.GetValue()[0];
}

}  // namespace

MaterialExportTest::MaterialExportTest() : _folder("/tmp/q7z-material-XXXXXX")
{
  if (!mkdtemp(_folder.data()))
    throw std::runtime_error("no temporary folder");
  _host.Host().GetTables().bitmap = &_bitmaps;
  _host.Host().ReplaceService(HostMediaSessions::kId, static_cast<HostMediaSessions*>(&_sessions));
  _host.Host().ReplaceService(HostMaterialExport::kId, static_cast<HostMaterialExport*>(&_exchange));
}

MaterialExportTest::~MaterialExportTest()
{
  std::error_code error;
  std::filesystem::remove_all(_folder, error);
  EXPECT_EQ(_bitmaps.liveCount, 0) << "bitmaps were left over";
}

HeadlessOwner<HeadlessDocument> ReadSceneText(std::string_view text)
{
  Result<HeadlessOwner<HeadlessDocument>> read = ReadSceneDocument(text, "");
  if (read.HasError())
    throw std::runtime_error("no scene document: " + std::string(read.GetError().GetMessage().GetView()));
  return std::move(read.GetValue());
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
  return Save(*ReadSceneText(TrianglesWith(materials)));
}

std::string MaterialExportTest::Save(HeadlessDocument& document)
{
  SaveRequest request;
  request.path = _folder + "/saved";
  request.parameters = _parameters;
  std::filesystem::remove(request.path);
  const SaveReport report = _host.Host().Save(request, document);
  _status = report.returnValue;
  _root = Data();
  if (!report.Succeeded())
    return report.error;
  const std::string bytes = ReadBytes(request.path);
  if (!bytes.starts_with("glTF"))
  {
    _root = ParseJson(bytes);
    return "";
  }
  uint32_t jsonLength = 0;
  std::memcpy(&jsonLength, bytes.data() + 12, 4);
  _root = ParseJson(std::string_view(bytes).substr(20, jsonLength));
  _binary = bytes.size() > 28 + jsonLength ? bytes.substr(28 + jsonLength) : "";
  return "";
}

const Data* MaterialExportTest::Find(std::string_view path) const
{
  const Data* value = &_root;
  while (value && !path.empty())
  {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(path.size(), name.size() + 1));
    if (value->GetKind() == DataKind::kArray)
    {
      const DataArrayView elements = value->GetArray().GetValue();
      const Int index = std::atoi(std::string(name).c_str());
      value = index < elements.GetCount() ? &elements[index] : nullptr;
    }
    else if (value->GetKind() == DataKind::kDictionary)
    {
      const DataDictionary dictionary = value->GetDictionary().GetValue();  // the root holds on to what is found
      value = dictionary.Find(DataKey(String(name.data(), static_cast<Int>(name.size()))));
    }
    else
      value = nullptr;
  }
  return value;
}

std::string MaterialExportTest::At(std::string_view path) const
{
  const Data* const value = Find(path);
  if (!value)
    return "-";
  const Result<String> text = WriteJson(*value, false);
  return text.HasError() ? "(not written)" : std::string(text.GetValue().GetView());
}

int MaterialExportTest::Count(std::string_view name) const
{
  const Data* const value = Find(name);
  return value ? static_cast<int>(value->GetArray().GetValue().GetCount()) : 0;
}

std::string MaterialExportTest::Image(int index) const
{
  const std::string image = "images/" + std::to_string(index) + "/";
  if (const Data* const uri = Find(image + "uri"))
  {
    const String text = uri->GetString().GetValue();
    const Int comma = text.FindFirst(',');
    HeadlessBase64Decoder decoder;
    const BaseArray<Byte> bytes = decoder.Decode(text.GetPart(comma + 1, text.GetByteCount())).GetValue();
    const std::string content(reinterpret_cast<const char*>(bytes.begin()), static_cast<size_t>(bytes.GetCount()));
    const std::string prefix(text.GetPart(0, comma + 1).GetView());
    const bool fits = prefix == (content.starts_with("png") ? "data:image/png;base64," : "data:image/jpeg;base64,");
    return fits ? content : "(" + prefix + ")";
  }
  const Data* const view = Find(image + "bufferView");
  if (!view)
    return "-";
  const std::string place = "bufferViews/" + std::to_string(view->GetInt().GetValue()) + "/";
  const size_t offset = static_cast<size_t>(Find(place + "byteOffset")->GetInt().GetValue());
  return _binary.substr(offset, static_cast<size_t>(Find(place + "byteLength")->GetInt().GetValue()));
}

}  // namespace q7z::test
