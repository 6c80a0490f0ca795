#include "tests/materialexport/materialfixture.h"

namespace q7z::test
{

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
