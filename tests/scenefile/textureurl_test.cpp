// Files of textures: relative below the document's folder, so that both move together, and never another file than it was.

#include <gtest/gtest.h>

#include "tests/scenefile/scenetext.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct UrlRow
{
  const char* name;
  const char* folder;
  Bool isPath;       ///< else a reference
  const char* url;   ///< of the texture
  const char* text;  ///< in the document
};

class SceneTexture : public testing::TestWithParam<UrlRow>
{
protected:
  static Url MakeUrl()
  {
    const String text(GetParam().url, static_cast<Int>(std::string_view(GetParam().url).size()));
    return (GetParam().isPath ? Url::FromPath(text) : Url::FromReference(text)).GetValue();
  }
};

TEST_P(SceneTexture, IsWrittenAndComesBack)
{
  const DocumentOwner document(HeadlessDocument::Create());
  HeadlessMaterial* const material = HeadlessMaterial::Create();
  document->InsertMaterial(material);
  HostMaterialExchangeData data;
  HostExchangeTexture texture;
  texture.url = MakeUrl();
  ASSERT_FALSE(data.textures.Set("key"_s, std::move(texture)).HasError());
  ASSERT_TRUE(material->SetRecord("space"_s, data));
  const std::string text = Write(*document, GetParam().folder);
  EXPECT_NE(text.find("\"key\": \"" + std::string(GetParam().text) + '"'), std::string::npos) << text;
  const DocumentOwner read = Read(text, GetParam().folder);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->GetFirstMaterial()->GetRecord()->data.textures.Find("key"_s)->url, MakeUrl());
}

const UrlRow kUrls[] = {
  {"InTheFolder", "/out", true, "/out/a.png", "a.png"},
  {"BelowTheFolder", "/out", true, "/out/tex/a.png", "tex/a.png"},
  {"BelowTheRoot", "/", true, "/tex/a.png", "tex/a.png"},
  {"BelowTheCurrentFolder", "", true, "tex/a.png", "tex/a.png"},
  {"BelowARelativeFolder", "out", true, "out/tex/a.png", "tex/a.png"},
  {"BesideTheFolder", "/out", true, "/other/a.png", "file:///other/a.png"},
  {"InAFolderOfLikeName", "/out", true, "/output/a.png", "file:///output/a.png"},
  {"AbsoluteWithoutFolder", "", true, "/out/a.png", "file:///out/a.png"},
  {"RelativeBesideTheFolder", "out", true, "other/a.png", "file:other/a.png"},
  {"PercentInThePath", "/out", true, "/out/a%20b.png", "a%2520b.png"},
  {"ColonInThePath", "/out", true, "/out/ab:c.png", "ab%3Ac.png"},
  {"DriveOfAnotherSystem", "/out", true, "C:/a.png", "file:///C:/a.png"},
  {"BlankInThePath", "/out", true, "/out/a b.png", "a b.png"},
  {"FolderStillToBeNamed", "/out", false, "tex/a%25.png", "relative:///tex/a%25.png"},
  {"Web", "/out", false, "http://host/a%20b.png", "http://host/a%20b.png"},
  {"OtherScheme", "/out", false, "https://host/a.png", "https://host/a.png"},
  {"None", "/out", false, "", ""},
};
INSTANTIATE_TEST_SUITE_P(Rows, SceneTexture, testing::ValuesIn(kUrls), RowName());

TEST(SceneFolder, RelativeNamesMoveWithTheDocument)
{
  const DocumentOwner document =
    Read(MakeText(R"("materials": [{"id": 1, "type": 5703, "node": {"textures": {"key": "tex/a.png"}}}])"), "/new/place");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->GetFirstMaterial()->GetRecord()->data.textures.Find("key"_s)->url.GetPath(), "/new/place/tex/a.png"_s);
  EXPECT_EQ(document->GetFolder(), "/new/place"_s);
}

}  // namespace
}  // namespace q7z::test
