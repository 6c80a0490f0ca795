#include "samples/generate/bytesink.h"

#include <gtest/gtest.h>

namespace q7z::generate
{

namespace
{

std::string Encoded(std::string_view bytes, std::size_t pieceLength)
{
  MemorySink text;
  Base64Sink base64(text);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(pieceLength, bytes.size())))
    base64.WriteText(bytes.substr(0, pieceLength));
  base64.Finish();
  return text.TakeBytes();
}

TEST(Base64Sink, EncodesEveryTail)
{
  struct Row
  {
    const char* bytes;
    const char* text;
  };
  static constexpr Row kRows[] = {{"", ""},
                                  {"f", "Zg=="},
                                  {"fo", "Zm8="},
                                  {"foo", "Zm9v"},
                                  {"foob", "Zm9vYg=="},
                                  {"fooba", "Zm9vYmE="},
                                  {"foobar", "Zm9vYmFy"},
                                  {"\xFB\xFF\xBF", "+/+/"}};
  for (const Row& row : kRows)
  {
    for (const std::size_t pieceLength : {1, 2, 100})
      EXPECT_EQ(Encoded(row.bytes, pieceLength), row.text) << "in pieces of " << pieceLength;
  }
}

TEST(Base64Sink, TailsAtTheEndOfItsOwnBuffer)
{
  for (std::size_t length = 3068; length <= 3076; ++length)
  {
    std::string text;
    for (std::size_t i = 0; i < length / 3; ++i)
      text += "YWFh";
    text += length % 3 == 1 ? "YQ==" : length % 3 == 2 ? "YWE=" : "";
    EXPECT_EQ(Encoded(std::string(length, 'a'), 1000), text) << length;
  }
}

}  // namespace

}  // namespace q7z::generate
