// The base64 services and percent decoding: the examples of RFC 4648, long texts of every length, and each way to be broken.

#include <vector>

#include "host/services/base64.h"
#include "tests/host/servicesupport.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

/// The decoded bytes as text, or the error's message.
std::string Decode(std::string_view text)
{
  const Result<BaseArray<Byte>> bytes = HeadlessBase64Decoder().Decode(MakeString(text));
  if (!bytes.HasError())
    return std::string(reinterpret_cast<const char*>(bytes.GetValue().begin()), static_cast<size_t>(bytes.GetValue().GetCount()));
  EXPECT_EQ(bytes.GetError().GetClass(), ErrorClass::kIllegalArgument);
  return MessageOf(bytes);
}

std::string Encode(std::string_view bytes, std::string_view prefix = "")
{
  const Result<String> text = HeadlessBase64Encoder().Encode(MakeString(prefix), reinterpret_cast<const Byte*>(bytes.data()),
                                                             static_cast<Int>(bytes.size()));
  return text.HasError() ? MessageOf(text) : Text(text.GetValue());
}

/// Base64 worked out bit by bit.
std::string EncodeSlowly(std::string_view bytes)
{
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  unsigned value = 0;
  int bits = 0;
  for (const char byte : bytes)
  {
    value = value << 8 | static_cast<unsigned char>(byte);
    for (bits += 8; bits >= 6; bits -= 6)
      text += alphabet[value >> (bits - 6) & 63];
    value &= (1u << bits) - 1;
  }
  if (bits)
    text += alphabet[value << (6 - bits) & 63];
  while (text.size() % 4)
    text += '=';
  return text;
}

std::string MakeBytes(size_t count)
{
  std::string bytes;
  unsigned state = 12345;
  for (size_t i = 0; i < count; ++i)
  {
    state = state * 1664525 + 1013904223;
    bytes += static_cast<char>(state >> 24);
  }
  return bytes;
}

struct PairRow
{
  const char* name;
  std::string bytes;
  std::string text;
};

const PairRow kPairs[] = {
  {"Nothing", "", ""},
  {"OneByte", "f", "Zg=="},
  {"TwoBytes", "fo", "Zm8="},
  {"ThreeBytes", "foo", "Zm9v"},
  {"FourBytes", "foob", "Zm9vYg=="},
  {"FiveBytes", "fooba", "Zm9vYmE="},
  {"SixBytes", "foobar", "Zm9vYmFy"},
  {"Zeros", std::string(3, '\0'), "AAAA"},
  {"Ones", "\xFF\xFF\xFF", "////"},
  {"Signs", "\xFB\xEF\xBE", "++++"},
  // 48 bytes, that every character comes up once.
  {"WholeAlphabet",
   std::string("\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97\x61\x96\x9B\x71\xD7\x9F"
               "\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF\xC3\x1C\xB3\xD3\x5D\xB7\xE3\x9E\xBB\xF3\xDF\xBF",
               48),
   "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"},
};

class Base64Pairs : public testing::TestWithParam<PairRow>
{};

TEST_P(Base64Pairs, GoBothWays)
{
  EXPECT_EQ(Decode(GetParam().text), GetParam().bytes);
  EXPECT_EQ(Encode(GetParam().bytes), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Rows, Base64Pairs, testing::ValuesIn(kPairs), RowName());

// Short texts go through the plain loop alone, long ones through wide steps with a plain end: all lengths around their borders.
TEST(Base64, GoesBothWaysForEveryLength)
{
  for (size_t count = 0; count < 260; ++count)
  {
    const std::string bytes = MakeBytes(count);
    const std::string text = EncodeSlowly(bytes);
    EXPECT_EQ(Encode(bytes), text) << count;
    EXPECT_EQ(Decode(text), bytes) << count;
  }
  const std::string many = MakeBytes(1000003);
  EXPECT_EQ(Decode(Encode(many)), many);
}

TEST(Base64, EncodesBehindAPrefix)
{
  EXPECT_EQ(Encode("fo", "data:;base64,"), "data:;base64,Zm8=");
  EXPECT_EQ(Encode("", "data:;base64,"), "data:;base64,");
}

// Bits of the last character that no byte holds are not looked at, as most writers and readers hold it.
TEST(Base64, IgnoresLeftOverBits)
{
  EXPECT_EQ(Decode("Zh=="), "f");
  EXPECT_EQ(Decode("Zm9="), "fo");
}

struct BrokenRow
{
  const char* name;
  std::string text;
  const char* message;
};

const BrokenRow kBroken[] = {
  {"OneCharacter", "Z", "The base64 text ends within a group of four characters, at byte 1."},
  {"TwoCharacters", "Zg", "The base64 text ends within a group of four characters, at byte 2."},
  {"ThreeCharacters", "Zm8", "The base64 text ends within a group of four characters, at byte 3."},
  {"FiveCharacters", "Zm9vY", "The base64 text ends within a group of four characters, at byte 5."},
  {"LineBreakBehind", "Zm9v\n", "The base64 text ends within a group of four characters, at byte 5."},
  {"PaddingAlone", "====", "The base64 text is broken at byte 0."},
  {"ThreeOfPadding", "Z===", "The base64 text is broken at byte 1."},
  {"PaddingBeforeLast", "Zm=v", "The base64 text is broken at byte 2."},
  {"PaddingInside", "Zg==Zg==", "The base64 text is broken at byte 2."},
  {"PaddingFirst", "=m9v", "The base64 text is broken at byte 0."},
  {"Blank", "Zm v", "The base64 text is broken at byte 2."},
  {"UrlAlphabetMinus", "Zm-v", "The base64 text is broken at byte 2."},
  {"UrlAlphabetUnderscore", "Zm_v", "The base64 text is broken at byte 2."},
  {"ZeroByte", std::string("Zm\0v", 4), "The base64 text is broken at byte 2."},
  {"HighByte", "Zm\xC1v", "The base64 text is broken at byte 2."},
  {"PercentCode", "Zm9v%3D%3D==", "The base64 text is broken at byte 4."},
};

class Base64Broken : public testing::TestWithParam<BrokenRow>
{};

TEST_P(Base64Broken, TellsThePosition)
{
  EXPECT_EQ(Decode(GetParam().text), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(Rows, Base64Broken, testing::ValuesIn(kBroken), RowName());

// Every byte outside the alphabet, at every position: of the wide steps and of the plain end.
TEST(Base64, FindsABrokenByteAnywhere)
{
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::string good = EncodeSlowly(MakeBytes(150));
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
    const bool isGood = alphabet.find(static_cast<char>(byte)) != std::string::npos;
    EXPECT_EQ(Decode(text) == "The base64 text is broken at byte 37.", !isGood) << byte;
  }
}

struct PercentRow
{
  const char* name;
  const char* text;
  const char* decoded;
};

const PercentRow kPercent[] = {
  {"Blank", "a%20b", "a b"}, {"Hexadecimal", "%c3%A9", "\xC3\xA9"},  {"OnceOnly", "%2541", "%41"}, {"NoDigits", "100%", "100%"},
  {"OneDigit", "%4", "%4"},  {"NotHexadecimal", "%4g%zz", "%4g%zz"}, {"PlusStays", "a+b", "a+b"},  {"Nothing", "", ""},
};

class PercentDecoding : public testing::TestWithParam<PercentRow>
{};

TEST_P(PercentDecoding, TakesCodesOnce)
{
  const Result<String> decoded = HeadlessUrlPathDecoder().Decode(MakeString(GetParam().text));
  ASSERT_FALSE(decoded.HasError());
  EXPECT_EQ(Text(decoded.GetValue()), GetParam().decoded);
}

INSTANTIATE_TEST_SUITE_P(Rows, PercentDecoding, testing::ValuesIn(kPercent), RowName());

}  // namespace

}  // namespace q7z::test
