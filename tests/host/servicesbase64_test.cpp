// The base64 services: examples of RFC 4648, long texts of every length, and each way to be broken.

#include <vector>

#include "host/services/base64.h"
#include "tests/host/servicesupport.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{

namespace
{

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The decoded bytes as text, or the error's message.
std::string Decode(std::string_view text)
{
  const Result<BaseArray<Byte>> bytes = HeadlessBase64Decoder().Decode(MakeString(text));
  if (!bytes.HasError())
    return std::string(reinterpret_cast<const char*>(bytes.GetValue().begin()), static_cast<size_t>(bytes.GetValue().GetCount()));
  EXPECT_EQ(bytes.GetError().GetClass(), ErrorClass::kIllegalArgument);
  return ErrorText(bytes);
}

std::string Encode(std::string_view bytes, std::string_view prefix = "")
{
  const Result<String> text = HeadlessBase64Encoder().Encode(MakeString(prefix), reinterpret_cast<const Byte*>(bytes.data()),
                                                             static_cast<Int>(bytes.size()));
  return text.HasError() ? ErrorText(text) : Text(text.GetValue());
}

Bytes MakeBytes(size_t count)
{
  Bytes bytes;
  unsigned state = 12345;
  for (size_t i = 0; i < count; ++i)
  {
    state = state * 1664525 + 1013904223;
    bytes.push_back(static_cast<Byte>(state >> 24));
  }
  return bytes;
}

// Short texts go through the plain loop alone, long ones through wide steps with a plain end: all lengths around their borders.
TEST(Base64, GoesBothWaysForEveryLength)
{
  for (size_t count = 0; count < 1100; ++count)
  {
    const Bytes bytes = MakeBytes(count);
    const std::string plain(bytes.begin(), bytes.end());
    const std::string text = EncodeBase64(bytes);
    EXPECT_EQ(Encode(plain), text) << count;
    EXPECT_EQ(Decode(text), plain) << count;
  }
  EXPECT_EQ(Encode("fo", "data:;base64,"), "data:;base64,Zm8=");
  EXPECT_EQ(Encode("\xFB\xEF\xBE\xFF\xFF\xFF"), "++++////");
}

struct BrokenRow
{
  std::string text;
  const char* decoded;
};

const BrokenRow kBroken[] = {
  // Bits of the last character that no byte holds are not looked at, as most writers and readers hold it.
  {"Zh==", "f"},
  {"Zm9=", "fo"},
  {"Z", "The base64 text ends within a group of four characters, at byte 1."},
  {"Zm8", "The base64 text ends within a group of four characters, at byte 3."},
  {"Zm9v\n", "The base64 text ends within a group of four characters, at byte 5."},
  {"====", "The base64 text is broken at byte 0."},
  {"Z===", "The base64 text is broken at byte 1."},
  {"Zm=v", "The base64 text is broken at byte 2."},
  {"Zg==Zg==", "The base64 text is broken at byte 2."},
  {"=m9v", "The base64 text is broken at byte 0."},
  {"Zm9v%3D%3D==", "The base64 text is broken at byte 4."},
};

TEST(Base64, TellsWhereATextIsBroken)
{
  for (const BrokenRow& row : kBroken)
    EXPECT_EQ(Decode(row.text), row.decoded) << row.text;
}

// Every byte outside the alphabet, at every position: of the wide steps and of the plain end.
TEST(Base64, FindsABrokenByteAnywhere)
{
  const std::string good = EncodeBase64(MakeBytes(150));
  for (size_t position = 0; position < good.size(); ++position)
  {
    std::string text = good;
    text[position] = '!';
    EXPECT_EQ(Decode(text), "The base64 text is broken at byte " + std::to_string(position) + ".");
  }
  for (int byte = 0; byte < 256; ++byte)
  {
    std::string text = good;
    text[37] = static_cast<char>(byte);
    const bool isGood = kAlphabet.find(static_cast<char>(byte)) != std::string::npos;
    EXPECT_EQ(Decode(text) == "The base64 text is broken at byte 37.", !isGood) << byte;
  }
}

}  // namespace

}  // namespace q7z::test
