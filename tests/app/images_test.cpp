// Images that a file holds itself: where they are kept, and what the document says of them.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

namespace fs = std::filesystem;

/// One material whose image is the three bytes 1, 2, 3.
constexpr const char* kTextured = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],"nodes":[{}],)"
                                  R"("materials":[{"name":"Wood","pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],)"
                                  R"("textures":[{"source":0,"sampler":0}],"samplers":[{}],)"
                                  R"("images":[{"uri":"data:image/png;base64,AQID"}]})";
constexpr const char* kPlain = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],"nodes":[{}],"materials":[{}]})";

struct ImageCase
{
  std::string name;
  std::string input;
  std::vector<std::string> arguments;  // in the folder that holds in.gltf and a folder named sub
  std::string image;                   // the file that holds the image; empty for none
  std::string document;                // the file that names it; empty for stdout
  std::string named;                   // how the document does
  std::string said;                    // on stderr
};

class AppImages : public testing::TestWithParam<ImageCase>
{};

TEST_P(AppImages, AreKeptWhereTheDocumentNamesThem)
{
  const ImageCase& row = GetParam();
  const TempFolder folder;
  folder.Write("in.gltf", row.input);
  fs::create_directory(folder / "sub");
  RunSettings settings;
  settings.folder = folder.GetPath();
  const RunResult result = RunTool(row.arguments, settings);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, row.said);
  std::vector<std::string> images;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.GetPath()))
  {
    const std::string path = entry.path().lexically_relative(folder.GetPath());
    if (path.ends_with(".png"))
      images.push_back(path);
    EXPECT_FALSE(entry.is_directory() && path != "sub" && fs::is_empty(entry.path())) << path << " is left empty";
  }
  EXPECT_EQ(images, row.image.empty() ? std::vector<std::string>() : std::vector<std::string>{row.image});
  if (!row.image.empty())
  {
    EXPECT_EQ(ReadWhole(folder / row.image), "\x01\x02\x03");
  }
  const std::string document = row.document.empty() ? result.out : ReadWhole(folder / row.document);
  EXPECT_NE(document.find(row.named), std::string::npos) << document;
}

constexpr const char* kFile = "Wood_baseColorTexture.png";
const std::string kNamed = std::string("\"tex/") + kFile + '"';

const std::vector<ImageCase> kImageCases = {
  {"BesideTheDocument",
   kTextured,
   {"import", "in.gltf", "sub/out.json"},
   std::string("sub/tex/") + kFile,
   "sub/out.json",
   kNamed,
   ""},
  {"InTheCurrentFolder", kTextured, {"import", "in.gltf", "out.json"}, std::string("tex/") + kFile, "out.json", kNamed, ""},
  {"WhereTheyAreWanted",
   kTextured,
   {"import", "in.gltf", "out.json", "--tex", "sub"},
   std::string("sub/tex/") + kFile,
   "out.json",
   std::string("\"sub/tex/") + kFile + '"',
   ""},
  {"OfADocumentOnStdout",
   kTextured,
   {"import", "in.gltf", "-"},
   "",
   "",
   kNamed,
   "q7z: warning: the images that \"in.gltf\" holds itself are not kept; --tex DIR keeps them\n"},
  {"OfADocumentOnStdoutWhereTheyAreWanted",
   kTextured,
   {"import", "in.gltf", "-", "--tex", "sub"},
   std::string("sub/tex/") + kFile,
   "",
   std::string("\"sub/tex/") + kFile + '"',
   ""},
  {"Shown", kTextured, {"inspect", "in.gltf"}, "", "", std::string("baseColorTexture <- tex/") + kFile, ""},
  {"ShownAsADocument", kTextured, {"inspect", "in.gltf", "--json"}, "", "", kNamed, ""},
  {"None", kPlain, {"import", "in.gltf", "out.json"}, "", "out.json", "\"materials\"", ""},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppImages, testing::ValuesIn(kImageCases), RowName());

}  // namespace
}  // namespace q7z::test
