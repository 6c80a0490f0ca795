// Names of texture files: a material's name becomes part of one path component, whatever it holds.

#include <gtest/gtest.h>

#include "plugin/material/gltftexturename.h"
#include "tests/document/testjson.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct NameRow
{
  const char* name;
  std::string material;
  std::string fileName;
};

std::string Repeat(const std::string& text, int count)
{
  std::string repeated;
  for (int i = 0; i < count; ++i)
    repeated += text;
  return repeated;
}

const NameRow kNameRows[] = {
  {"OtherScripts", "\xE6\x9C\xA8 \xC3\xA9", "\xE6\x9C\xA8 \xC3\xA9_baseColorTexture.png"},
  {"Empty", "", "_baseColorTexture.png"},
  {"PlaceholderOfTexts", "a@b", "a@b_baseColorTexture.png"},
  {"WayOut", "../../evil", "_._.._evil_baseColorTexture.png"},
  {"Separators", "a/b\\c:d", "a_b_c_d_baseColorTexture.png"},
  {"Absolute", "/etc/passwd", "_etc_passwd_baseColorTexture.png"},
  {"Hidden", ".wood", "_wood_baseColorTexture.png"},
  {"DotsInside", "a..b.", "a..b._baseColorTexture.png"},
  {"ControlCharacters", std::string("a\0b\n\r\t\x1f\x7f", 8), "a_b______baseColorTexture.png"},
  {"WideControlCharacters", "a\xC2\x80\xC2\x9F\xC2\xA0", "a__\xC2\xA0_baseColorTexture.png"},
  {"CutWideCharacter", "a\xC2", "a\xC2_baseColorTexture.png"},
  {"Wildcards", "a*?\"<>|b", "a______b_baseColorTexture.png"},
  {"Device", "con", "_on_baseColorTexture.png"},
  {"DeviceWithExtension", "NUL.wood", "_UL.wood_baseColorTexture.png"},
  {"DeviceWithBlank", "Aux .x", "_ux .x_baseColorTexture.png"},
  {"NoPort", "COMX", "COMX_baseColorTexture.png"},
  {"Port", "lpt1", "_pt1_baseColorTexture.png"},
  {"NoDevice", "Console", "Console_baseColorTexture.png"},
  {"OverlongName", Repeat("a", 300), Repeat("a", 200) + "_baseColorTexture.png"},
  // 66 characters of three bytes make 198; the next one would begin inside and end outside.
  {"CutAtACharacter", Repeat("\xE6\x9C\xA8", 100), Repeat("\xE6\x9C\xA8", 66) + "_baseColorTexture.png"},
};

class TextureFileName : public testing::TestWithParam<NameRow>
{};

TEST_P(TextureFileName, IsOneComponent)
{
  const String material = String::Create(GetParam().material).GetValue();
  EXPECT_EQ(Text(MakeTextureFileName(material, "baseColorTexture"_s, "png"_s).GetValue()), GetParam().fileName);
}

INSTANTIATE_TEST_SUITE_P(Rows, TextureFileName, testing::ValuesIn(kNameRows), RowName());

}  // namespace
}  // namespace q7z::test
