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
  const Stage folder;
  folder.Write("in.gltf", row.input);
  fs::create_directory(folder / "sub");
  const RunResult result = folder.Run(row.arguments);
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
    EXPECT_EQ(folder.Read(row.image), "\x01\x02\x03");
  }
  const std::string document = row.document.empty() ? result.out : folder.Read(row.document);
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
  {"Shown", kTextured, {"inspect", "in.gltf"}, "", "", std::string("baseColorTexture <- tex/") + kFile + " (no image)\n", ""},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppImages, testing::ValuesIn(kImageCases), RowName());

// Images of files that are converted.

/// A triangle whose material shows one image.
std::string MakeTriangle(const std::string& image)
{
  return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],)"
         R"("meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]}],)"
         R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}],)"
         R"("bufferViews":[{"buffer":0,"byteLength":36}],"buffers":[{"byteLength":36,"uri":)"
         R"("data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}],)"
         R"("materials":[{"name":"Wood","pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],)"
         R"("textures":[{"source":0,"sampler":0}],"samplers":[{}],"images":[{"uri":")" +
         image + "\"}]}";
}

const std::string kPngData = "data:image/png;base64,";
/// 2 x 1 pixels.
const std::string kPicture = "iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAIAAAB7QOjdAAAADUlEQVR42mP4zwAE/wEHAAH/PX2MSQAAAABJRU5ErkJggg==";
/// 65 bytes whose header claims 60000 x 60000 pixels.
const std::string kHugeClaim = "iVBORw0KGgoAAAANSUhEUgAA6mAAAOpgCAIAAAAPsOIVAAAACElEQVR42gMAAAAAAW/dyZEAAAAASUVORK5CYII=";

struct ConvertedCase
{
  std::string name;
  std::string image;
  bool isWritten;
  std::string said;  // on stderr
};

class AppConvertedImages : public testing::TestWithParam<ConvertedCase>
{};

TEST_P(AppConvertedImages, AreWrittenOrTold)
{
  const ConvertedCase& row = GetParam();
  const Stage folder;
  folder.Write("in.gltf", MakeTriangle(row.image));
  folder.Write("noise.png", "This is no image.");
  const RunResult result = folder.Run({"convert", "in.gltf", "out.gltf"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, row.said);
  const std::string saved = folder.Read("out.gltf");
  EXPECT_EQ(saved.find("\"data:image/png;base64,iVBORw0KGgo") != std::string::npos, row.isWritten) << saved;
  EXPECT_EQ(saved.find("\"baseColorTexture\"") != std::string::npos, row.isWritten) << saved;
  EXPECT_NE(saved.find("\"Wood\""), std::string::npos) << saved;
  const std::string shown = folder.Run({"inspect", "in.gltf"}).out;
  EXPECT_EQ(shown.find("baseColorTexture <- tex/Wood_baseColorTexture.png (PNG, 2 x 1)\n") != std::string::npos, row.isWritten)
    << shown;
}

const ConvertedCase kConvertedCases[] = {
  {"Picture", kPngData + kPicture, true, ""},
  {"NoImage", kPngData + "AQID", false,
   "q7z: warning: the image \"tex/Wood_baseColorTexture.png\" is left out: it is neither a PNG nor a JPEG image\n"},
  {"HugeClaim", kPngData + kHugeClaim, false,
   "q7z: warning: the image \"tex/Wood_baseColorTexture.png\" is left out: its header claims 60000 x 60000 pixels, more than the "
   "limit\n"},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppConvertedImages, testing::ValuesIn(kConvertedCases), RowName());

TEST(AppImagesOfADocument, AreReadFromItsFolderOrWhereAllowed)
{
  const Stage folder;
  fs::create_directory(folder / "sub");
  folder.Write("sub/in.gltf", MakeTriangle("noise.png"));
  folder.Write("sub/noise.png", "This is no image.");
  EXPECT_EQ(folder.Run({"import", "sub/in.gltf", "far.q7z.json"}).status, 0);
  EXPECT_EQ(folder.Run({"export", "far.q7z.json", "out.gltf"}).err,
            "q7z: warning: the image \"sub/noise.png\" is left out: it is neither a PNG nor a JPEG image\n");
  fs::create_directory(folder / "docs");
  EXPECT_EQ(folder.Run({"import", "sub/in.gltf", "docs/far.q7z.json"}).status, 0);
  EXPECT_EQ(folder.Run({"export", "docs/far.q7z.json", "out.gltf"}).err,
            "q7z: warning: \"sub/noise.png\" lies outside the input's folder and is not read; --allow-outside permits it\n");
  EXPECT_EQ(folder.Run({"export", "docs/far.q7z.json", "out.gltf", "--allow-outside"}).err,
            "q7z: warning: the image \"sub/noise.png\" is left out: it is neither a PNG nor a JPEG image\n");
  const RunResult shown = folder.Run({"inspect", "sub/in.gltf"});
  EXPECT_NE(shown.out.find("baseColorTexture <- noise.png (no image)\n"), std::string::npos) << shown.out;
}

}  // namespace
}  // namespace q7z::test
