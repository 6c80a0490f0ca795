// The JSON service: what becomes of each kind of value, what is refused and how, that long strings are not copied, and what is
// written. And the base64 services: texts of every length, and each way to be broken.

#include <cstring>
#include <map>
#include <vector>

#include "host/services/base64.h"
#include "host/services/filereading.h"
#include "host/services/headlessjobs.h"
#include "host/services/headlessjson.h"
#include "tests/host/servicesupport.h"
#include "tests/support/gltfbuilders.h"

namespace q7z::test
{
namespace
{

Result<BaseArray<Data>> Parse(std::string_view json)
{
  BaseArray<Byte> bytes;
  EXPECT_FALSE(bytes.AppendCopies(reinterpret_cast<const Byte*>(json.data()), static_cast<Int>(json.size())).HasError());
  return HeadlessJson().ParseBytes(std::move(bytes));
}

/// A value as text that shows its kind: integers as 1, floats as 1.0f with as many digits as they need, texts in single quotes.
std::string Show(const Data& value)
{
  switch (value.GetKind())
  {
    case DataKind::kNil: return "nil";
    case DataKind::kBool: return value.GetBool().GetValue() ? "true" : "false";
    case DataKind::kInt: return std::to_string(value.GetInt().GetValue());
    case DataKind::kFloat: return Text(String::FromFloat(value.GetFloat().GetValue()).GetValue()) + "f";
    case DataKind::kString: return "'" + Text(value.GetString().GetValue()) + "'";
    case DataKind::kArray:
    {
      std::string text = "[";
      const DataArrayView elements = value.GetArray().GetValue();
      for (const Data& element : elements)
        text += (text.size() > 1 ? " " : "") + Show(element);
      return text + "]";
    }
    case DataKind::kDictionary: break;
  }
  std::string text = "{";
  const DataDictionary members = value.GetDictionary().GetValue();
  for (const DataMember& member : members)
    text += (text.size() > 1 ? " " : "") + Text(member.key.GetName()) + ":" + Show(member.value);
  return text + "}";
}

/// The one value of a text, or the error's message.
std::string ShowParsed(std::string_view json)
{
  const Result<BaseArray<Data>> values = Parse(json);
  if (values.HasError())
    return ErrorText(values);
  EXPECT_EQ(values.GetValue().GetCount(), 1);
  return Show(values.GetValue()[0]);
}

std::string Payload(char byte)
{
  return std::string(5000, byte);
}

const std::string kPrefix = "data:application/octet-stream;base64,";

// Texts and what is read of them.
const std::pair<std::string, std::string> kValues[] = {
  {R"({"b":1,"a":[true,false,null],"c":{"d":"x"}})", "{b:1 a:[true false nil] c:{d:'x'}}"},
  {"[0,-0,-0.0]", "[0 0 -0f]"},
  {"[9223372036854775807,-9223372036854775808]", "[9223372036854775807 -9223372036854775808]"},
  {"[9223372036854775808,-9223372036854775809]", "[9223372036854775808f -9223372036854775808f]"},
  {"[18446744073709551616,18446744073709551615,1]", "[18446744073709551616f 18446744073709551616f 1]"},
  {"{\"a\":-100000000000000000000000000000}", "{a:-1e+29f}"},
  // The digits in the text stay as they are, though another number makes the reader look for long ones.
  {R"(["18446744073709551616","\"18446744073709551616",18446744073709551616])",
   "['18446744073709551616' '\"18446744073709551616' 18446744073709551616f]"},
  {"[1.0,1e2,1E-2,0.1000000000000000055511151231257827]", "[1f 100f 0.01f 0.1f]"},
  {R"(["a\u0000b"])", std::string("['a\0b']", 7)},
  {R"({"a":1,"b":2,"\u0061":3,"":""})", "{a:3 b:2 :''}"},
  // Long payloads of data URIs lie where they were read. What looks like one, and is none, must not be taken for one.
  {"{\"x\":\"" + kPrefix + Payload('A') + "\",\"y\":[\"data:image/png;base64," + Payload('B') + "\"],\"z\":1}",
   "{x:'" + kPrefix + Payload('A') + "' y:['data:image/png;base64," + Payload('B') + "'] z:1}"},
  {"{\"" + kPrefix + Payload('A') + "\":1}", "{" + kPrefix + Payload('A') + ":1}"},
  {"[\"" + kPrefix + Payload('A') + "\\/" + Payload('B') + "\"]", "['" + kPrefix + Payload('A') + "/" + Payload('B') + "']"},
  {"[\"" + kPrefix + "#0\",\"" + kPrefix + Payload('A') + "\"]", "['" + kPrefix + "#0' '" + kPrefix + Payload('A') + "']"},
  {"[\"x\\u003bbase64,#0\",\"data:;base64," + Payload('A') + "\"]", "['x;base64,#0' 'data:;base64," + Payload('A') + "']"},
  {"[\"" + kPrefix + "#99999999999999999999999\",\"" + kPrefix + Payload('A') + "\"]",
   "['" + kPrefix + "#99999999999999999999999' '" + kPrefix + Payload('A') + "']"},
  {"[\"" + kPrefix + Payload('A') + "\"" + std::string(40000, ' ') + "]", "['" + kPrefix + Payload('A') + "']"},
  {"[\"data:a;base64,;base64," + Payload('A') + "\"]", "['data:a;base64,;base64," + Payload('A') + "']"},
};

TEST(Json, ValuesAreRead)
{
  for (const auto& [json, expected] : kValues)
    EXPECT_EQ(ShowParsed(json), expected) << json;
}

TEST(Json, BrokenTextsAreUnexpected)
{
  const std::string rows[] = {// Values and texts that are none.
                              "", "\xEF\xBB\xBF{}", "{} x", std::string("{}\0", 3), "[1,]", "[1] // one", "[01]",
                              "[000000000000000000001]", "[1.]", "[0x10]", "[1e400]", "[NaN]", R"(["\ud800"])", "[\"a\nb\"]",
                              "[\"\x80\"]", "[\"\xED\xA0\x80\"]", "{\"\xFF\":1}",
                              // Payloads.
                              "[\"" + kPrefix + Payload('A') + "\xC0" + Payload('B') + "\"]",
                              "[\"" + kPrefix + Payload('A') + "\n" + Payload('B') + "\"]", "[\"" + kPrefix + Payload('A'),
                              "[\"" + kPrefix + Payload('A') + "\",]", kPrefix + Payload('A')};
  for (const std::string& json : rows)
  {
    const Result<BaseArray<Data>> values = Parse(json);
    ASSERT_TRUE(values.HasError()) << json;
    EXPECT_EQ(values.GetError().GetClass(), ErrorClass::kUnexpected) << json;
    EXPECT_EQ(ErrorText(values).rfind("The JSON text is broken: ", 0), 0u) << json << ErrorText(values);
  }
  const std::string whole = R"({"a":[1,-2.5e3,"\u00e9é"],"b":{"c":true,"d":null}})";
  ASSERT_FALSE(Parse(whole).HasError());
  for (size_t length = 0; length < whole.size(); ++length)
    EXPECT_TRUE(Parse(whole.substr(0, length)).HasError()) << whole.substr(0, length);
}

TEST(Json, NestsToOneThousandAndTwentyFour)
{
  for (const auto& [open, inner, close] : {std::array{"[", "[]", "]"}, {"{\"a\":", "[1]", "}"}, {"[", "{}", "]"}})
  {
    const auto nested = [&](int depth)
    {
      std::string text = inner;
      for (int i = 1; i < depth; ++i)
        text = open + std::move(text) + close;
      return text;
    };
    EXPECT_FALSE(Parse(nested(1024)).HasError()) << open << inner;
    EXPECT_TRUE(Parse(nested(1025)).HasError()) << open << inner;
    EXPECT_TRUE(Parse(nested(20000)).HasError()) << open << inner;
  }
}

// 20,000 members: more than any small cache of names, and names that collide in it.
TEST(Json, KeepsManyNamesApart)
{
  std::string json = "{";
  for (int i = 0; i < 20000; ++i)
    json += (i ? ",\"n" : "\"n") + std::to_string(i) + "\":" + std::to_string(i);
  const Result<BaseArray<Data>> values = Parse(json + "}");
  ASSERT_FALSE(values.HasError());
  const DataDictionary dictionary = values.GetValue()[0].GetDictionary().GetValue();
  ASSERT_EQ(dictionary.GetCount(), 20000);
  for (const int i : {0, 1, 255, 256, 4095, 19999})
    EXPECT_EQ(*dictionary.Find(DataKey(MakeString("n" + std::to_string(i)))), Data(Int(i))) << i;
}

TEST(Json, LeavesAPayloadWhereItWasRead)
{
  const std::string json = "[\"" + kPrefix + Payload('A') + "\"]";
  const BlockOwner block(StringBlock::Create(static_cast<Int>(json.size()) + kJsonPadding));
  ASSERT_TRUE(block);
  Char* const bytes = block.Get()->GetBytes();
  std::memcpy(bytes, json.data(), json.size());
  std::memset(bytes + json.size(), 0, kJsonPadding);
  const Result<Data> value = ParseJson(block.Get(), bytes, static_cast<Int>(json.size()));
  ASSERT_FALSE(value.HasError());
  EXPECT_EQ(value.GetValue().GetArray().GetValue()[0].GetString().GetValue().GetBytes(), bytes + 2);
}

TEST(Json, FilesThatCannotBeReadAreNamed)
{
  const TestFolder folder;
  for (const char* const name : {"none.json", ".", "/dev/zero"})
  {
    const std::string path = name[0] == '/' ? name : folder / name;
    const Result<BaseArray<Data>> values = HeadlessJson().ParseFile(MakeUrl(path));
    EXPECT_EQ(values.GetError().GetClass(), ErrorClass::kIo) << name;
    EXPECT_NE(ErrorText(values).find(path), std::string::npos) << ErrorText(values);
  }
}

// Writing.

Data MakeArray(std::initializer_list<Data> elements)
{
  BaseArray<Data> array;
  for (const Data& element : elements)
    EXPECT_FALSE(array.Append(element).HasError());
  return Data::CreateArray(std::move(array)).GetValue();
}

DataDictionary MakeObject(const char* name, Data value)
{
  DataDictionary dictionary;
  EXPECT_FALSE(dictionary.Set(DataKey(MakeString(name)), std::move(value)).HasError());
  return dictionary;
}

std::string Write(const Data& value)
{
  return Text(WriteJson(value, false));
}

TEST(JsonWriter, GivesTheText)
{
  const std::string forty(40, 'x');
  const std::pair<Data, std::string> rows[] = {
    {Data(), "null"},
    {MakeArray({Data(true), Data(false)}), "[true,false]"},
    {Data(Int(INT64_MIN)), "-9223372036854775808"},
    {Data(-0.0), "-0.0"},
    {Data(1.0 / 3.0), "0.3333333333333333"},
    {Data(0.1f), "0.1"},
    // The same number, once as it was given and once as the double that it becomes.
    {Data(1.0f / 3.0f), "0.33333334"},
    {Data(static_cast<Float>(1.0f / 3.0f)), "0.3333333432674408"},
    {Data("a\"b\\c/\n\r\t"_s), R"("a\"b\\c/\n\r\t")"},
    {Data(String("\0\x01\x1f\x7f", 4)), "\"\\u0000\\u0001\\u001f\x7f\""},
    {Data("a\xFF\"b\xE2\x82"_s), "\"a\xEF\xBF\xBD\\\"b\xEF\xBF\xBD\xEF\xBF\xBD\""},  // stray and cut bytes
    {Data(MakeString(forty + '"' + forty)), '"' + forty + "\\\"" + forty + '"'},
    {MakeObject("a", MakeArray({Data(Int(1)), MakeObject("b\n", MakeArray({})), DataDictionary()})),
     R"({"a":[1,{"b\n":[]},{}]})"},
    {MakeObject("deep", MakeArray({Data(kInfinity)})), "JSON has no number that is not finite."},
    {Data(static_cast<Float32>(-kInfinity)), "JSON has no number that is not finite."},
    {Data(kNan), "JSON has no number that is not finite."},
  };
  for (const auto& [value, expected] : rows)
    EXPECT_EQ(Write(Data(value)), expected);  // of a copy
}

TEST(JsonWriter, IndentsByTwo)
{
  DataDictionary dictionary = MakeObject("a", MakeArray({Data(Int(1)), MakeArray({}), Data(DataDictionary())}));
  ASSERT_FALSE(dictionary.Set(DataKey("b"), Data(MakeObject("c", Data("d"_s)))).HasError());
  EXPECT_EQ(Text(HeadlessJson().Write(dictionary, true).GetValue()),
            "{\n  \"a\": [\n    1,\n    [],\n    {}\n  ],\n  \"b\": {\n    \"c\": \"d\"\n  }\n}");
}

/// A long array of values of many lengths, with broken[i] in the place of its key.
Data MakeLongArray(const std::map<Int, Data>& broken = {})
{
  constexpr Int kCount = 9001;
  BaseArray<Data> elements;
  for (Int i = 0; i < kCount; ++i)
  {
    const auto found = broken.find(i);
    Data value = found != broken.end() ? found->second : Data(MakeObject("name", Data(MakeString(std::string(i % 97, 'x')))));
    EXPECT_FALSE(elements.Append(std::move(value)).HasError());
  }
  return Data::CreateArray(std::move(elements)).GetValue();
}

TEST(JsonWriter, WritesLongArraysByAnyNumberOfThreads)
{
  Data deep = MakeArray({});
  for (int depth = 0; depth < 1024; ++depth)
    deep = MakeArray({deep});
  const std::pair<Data, const char*> rows[] = {
    {MakeObject("a", MakeArray({MakeLongArray(), MakeLongArray()})), nullptr},
    {MakeLongArray({{8999, Data(kNan)}}), "JSON has no number that is not finite."},
    {MakeLongArray({{4100, Data(kNan)}, {4999, deep}}), "JSON has no number that is not finite."},
    {MakeLongArray({{4100, deep}, {4999, Data(kNan)}}), "The JSON value nests deeper than 1,024."},
  };
  HeadlessJobs one(1);
  HeadlessJobs several(4);
  for (const auto& [value, error] : rows)
  {
    for (const Bool formatted : {false, true})
    {
      const std::string alone = Text(WriteJson(value, formatted));
      EXPECT_EQ(alone.size() > 500000, !error);
      EXPECT_TRUE(!error || alone == error) << alone;
      EXPECT_TRUE(Text(WriteJson(value, formatted, &one)) == alone);
      EXPECT_TRUE(Text(WriteJson(value, formatted, &several)) == alone);
    }
  }
}

TEST(JsonWriter, WritesWhatCanBeReadAndNothingDeeper)
{
  Data value = MakeArray({});
  for (int depth = 1; depth < 1024; ++depth)
    value = MakeArray({value});
  EXPECT_EQ(Write(value), std::string(1024, '[') + std::string(1024, ']'));
  EXPECT_EQ(Write(MakeArray({value})), "The JSON value nests deeper than 1,024.");
}

// Base64.

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The decoded bytes as text, or the error's message.
std::string Decode(std::string_view text)
{
  const Result<BaseArray<Byte>> bytes = HeadlessBase64Decoder().Decode(MakeString(text));
  return bytes.HasError() ? ErrorText(bytes) : std::string(bytes.GetValue().begin(), bytes.GetValue().end());
}

std::string Encode(std::string_view bytes, std::string_view prefix = "")
{
  return Text(HeadlessBase64Encoder().Encode(MakeString(prefix), reinterpret_cast<const Byte*>(bytes.data()),
                                             static_cast<Int>(bytes.size())));
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

TEST(Base64, TellsWhereATextIsBroken)
{
  const std::pair<std::string, const char*> rows[] = {
    // Bits of the last character that no byte holds are not looked at, as most writers and readers hold it.
    {"Zh==", "f"},
    {"Z", "The base64 text ends within a group of four characters, at byte 1."},
    {"Zm9v\n", "The base64 text ends within a group of four characters, at byte 5."},
    {"====", "The base64 text is broken at byte 0."},
    {"Z===", "The base64 text is broken at byte 1."},
    {"Zm=v", "The base64 text is broken at byte 2."},
    {"Zg==Zg==", "The base64 text is broken at byte 2."},
    {"Zm9v%3D%3D==", "The base64 text is broken at byte 4."},
  };
  for (const auto& [text, decoded] : rows)
    EXPECT_EQ(Decode(text), decoded) << text;
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
