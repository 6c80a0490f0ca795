// The JSON service, reading: what becomes of each kind of value, what is refused and how, and that long strings are not copied.

#include <cstring>

#include "host/services/filereading.h"
#include "host/services/headlessjson.h"
#include "tests/host/servicesupport.h"
#include "tests/support/rowname.h"

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
    return MessageOf(values);
  EXPECT_EQ(values.GetValue().GetCount(), 1);
  return Show(values.GetValue()[0]);
}

struct ValueRow
{
  const char* name;
  std::string json;
  std::string expected;
};

const ValueRow kValues[] = {
  {"EmptyObject", "{}", "{}"},
  {"EmptyArray", "[]", "[]"},
  {"MembersKeepTheirOrder", R"({"b":1,"a":[true,false,null],"c":{"d":"x"}})", "{b:1 a:[true false nil] c:{d:'x'}}"},
  {"AnyValueMayBeTheTop", "\"text\"", "'text'"},
  {"WhiteSpaceAround", " \t\r\n[ 1 , 2 ]\n ", "[1 2]"},

  {"Zero", "[0,-0]", "[0 0]"},
  {"NegativeZeroAsFloat", "[-0.0]", "[-0f]"},
  {"LargestInt", "[9223372036854775807]", "[9223372036854775807]"},
  {"SmallestInt", "[-9223372036854775808]", "[-9223372036854775808]"},
  {"OneAboveIsFloat", "[9223372036854775808]", "[9223372036854775808f]"},
  {"OneBelowIsFloat", "[-9223372036854775809]", "[-9223372036854775808f]"},
  {"SixtyFourBits", "[18446744073709551615]", "[18446744073709551616f]"},
  {"BeyondSixtyFourBits", "[18446744073709551616,1]", "[18446744073709551616f 1]"},
  {"ThirtyDigits", "{\"a\":-100000000000000000000000000000}", "{a:-1e+29f}"},
  // The digits in the text stay as they are, though another number makes the reader look for long ones.
  {"LongDigitsInTexts", R"(["18446744073709551616","\"18446744073709551616",18446744073709551616])",
   "['18446744073709551616' '\"18446744073709551616' 18446744073709551616f]"},
  {"PointMakesFloat", "[1.0,1.5,-2.25]", "[1f 1.5f -2.25f]"},
  {"ExponentMakesFloat", "[1e2,1E-2,25e-1]", "[100f 0.01f 2.5f]"},
  {"LongFraction", "[0.1000000000000000055511151231257827]", "[0.1f]"},
  {"SmallestFloat", "[5e-324]", "[5e-324f]"},

  {"Escapes", R"(["\"\\\/\b\f\n\r\t\u0041\u00e9\u20ac"])", "['\"\\/\b\f\n\r\tA\xC3\xA9\xE2\x82\xAC']"},
  {"SurrogatePair", R"(["\ud83d\ude00"])", "['\xF0\x9F\x98\x80']"},
  {"ZeroByteInText", R"(["a\u0000b"])", std::string("['a\0b']", 7)},
  {"Utf8", "[\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"]", "['\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80']"},
  {"EmptyText", R"({"":""})", "{:''}"},

  {"LastOfRepeatedMembersCounts", R"({"a":1,"b":2,"a":3})", "{a:3 b:2}"},
  {"EscapedNameIsTheSameName", R"({"a":1,"\u0061":2})", "{a:2}"},
};

class JsonValues : public testing::TestWithParam<ValueRow>
{};

TEST_P(JsonValues, AreRead)
{
  EXPECT_EQ(ShowParsed(GetParam().json), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonValues, testing::ValuesIn(kValues), RowName());

struct BrokenRow
{
  const char* name;
  std::string json;
};

const BrokenRow kBroken[] = {
  {"Nothing", ""},
  {"BlanksAlone", " \n"},
  {"ByteOrderMark", "\xEF\xBB\xBF{}"},
  {"TextBehind", "{} x"},
  {"SecondValue", "{}{}"},
  {"ZeroByteBehind", std::string("{}\0", 3)},
  {"TrailingComma", "[1,]"},
  {"TrailingCommaInObject", R"({"a":1,})"},
  {"MissingColon", R"({"a" 1})"},
  {"NameWithoutQuotes", "{a:1}"},
  {"SingleQuotes", "['a']"},
  {"Comment", "[1] // one"},
  {"LeadingZero", "[01]"},
  {"LeadingZeroOfLongInteger", "[000000000000000000001]"},
  {"PointWithoutDigits", "[1.]"},
  {"PointInFront", "[.5]"},
  {"PlusSign", "[+1]"},
  {"MinusAlone", "[-]"},
  {"Hexadecimal", "[0x10]"},
  {"FloatBeyondAllNumbers", "[1e400]"},
  {"NotANumber", "[NaN]"},
  {"Infinity", "[Infinity]"},
  {"CutWord", "[tru]"},
  {"UpperCaseWord", "[True]"},
  {"UnknownEscape", R"(["\x"])"},
  {"ShortUnicodeEscape", R"(["\u12"])"},
  {"LoneHighSurrogate", R"(["\ud800"])"},
  {"LoneLowSurrogate", R"(["\udc00"])"},
  {"HighSurrogateBeforeLetter", R"(["\ud800A"])"},
  {"LineBreakInText", "[\"a\nb\"]"},
  {"ZeroByteInText", std::string("[\"\0\"]", 5)},
  {"StrayContinuationByte", "[\"\x80\"]"},
  {"CutUtf8", "[\"\xE2\x82\"]"},
  {"OverlongUtf8", "[\"\xC0\xAF\"]"},
  {"SurrogateInUtf8", "[\"\xED\xA0\x80\"]"},
  {"BeyondUnicode", "[\"\xF4\x90\x80\x80\"]"},
  {"InvalidUtf8InName", "{\"\xFF\":1}"},
};

class JsonBroken : public testing::TestWithParam<BrokenRow>
{};

TEST_P(JsonBroken, IsUnexpected)
{
  const Result<BaseArray<Data>> values = Parse(GetParam().json);
  ASSERT_TRUE(values.HasError());
  EXPECT_EQ(values.GetError().GetClass(), ErrorClass::kUnexpected);
  EXPECT_EQ(MessageOf(values).rfind("The JSON text is broken: ", 0), 0u) << MessageOf(values);
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonBroken, testing::ValuesIn(kBroken), RowName());

std::string Repeat(std::string_view text, int count)
{
  std::string repeated;
  for (int i = 0; i < count; ++i)
    repeated += text;
  return repeated;
}

struct DepthRow
{
  const char* name;
  std::string open;
  std::string inner;
  std::string close;
};

const DepthRow kDepths[] = {
  {"EmptyArrays", "[", "", "]"},
  {"FullArrays", "[", "1", "]"},
  {"Objects", "{\"a\":", "1", "}"},
  {"EmptyObjectInside", "[", "{}", "]"},
};

class JsonDepth : public testing::TestWithParam<DepthRow>
{};

TEST_P(JsonDepth, EndsAtOneThousandAndTwentyFour)
{
  const DepthRow& row = GetParam();
  const int inner = row.inner == "{}" ? 1 : 0;
  const auto nested = [&](int depth) { return Repeat(row.open, depth - inner) + row.inner + Repeat(row.close, depth - inner); };
  EXPECT_FALSE(Parse(nested(1024)).HasError());
  const Result<BaseArray<Data>> deeper = Parse(nested(1025));
  ASSERT_TRUE(deeper.HasError());
  EXPECT_EQ(deeper.GetError().GetClass(), ErrorClass::kUnexpected);
  EXPECT_TRUE(Parse(nested(200000)).HasError());
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonDepth, testing::ValuesIn(kDepths), RowName());

TEST(Json, IsBrokenWhereverItIsCut)
{
  const std::string whole = R"({"a":[1,-2.5e3,"\u00e9é"],"b":{"c":true,"d":null}})";
  ASSERT_FALSE(Parse(whole).HasError());
  for (size_t length = 0; length < whole.size(); ++length)
    EXPECT_TRUE(Parse(whole.substr(0, length)).HasError()) << whole.substr(0, length);
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
  {
    const Data* const value = dictionary.Find(DataKey(MakeString("n" + std::to_string(i))));
    ASSERT_TRUE(value) << i;
    EXPECT_EQ(value->GetInt().GetValue(), i);
  }
}

TEST(Json, GivesOneNameOnePlace)
{
  const Result<BaseArray<Data>> values = Parse(R"([{"name":1},{"name":2}])");
  ASSERT_FALSE(values.HasError());
  const DataArrayView objects = values.GetValue()[0].GetArray().GetValue();
  const DataDictionary first = objects[0].GetDictionary().GetValue();
  const DataDictionary second = objects[1].GetDictionary().GetValue();
  EXPECT_EQ(first.begin()->key.GetName().GetBytes(), second.begin()->key.GetName().GetBytes());
}

TEST(Json, OutlivesItsBytes)
{
  Data kept;
  {
    const Result<BaseArray<Data>> values =
      Parse("{\"short\":\"text\",\"uri\":\"data:a/b;base64," + std::string(5000, 'A') + "\"}");
    ASSERT_FALSE(values.HasError());
    kept = values.GetValue()[0];
  }
  EXPECT_EQ(Show(kept), "{short:'text' uri:'data:a/b;base64," + std::string(5000, 'A') + "'}");
}

// Long payloads of data URIs lie where they were read. What looks like one, and is none, must not be taken for one.

std::string Payload(char byte)
{
  return std::string(5000, byte);
}

const std::string kPrefix = "data:application/octet-stream;base64,";

const ValueRow kPayloads[] = {
  {"One", "[\"" + kPrefix + Payload('A') + "\"]", "['" + kPrefix + Payload('A') + "']"},
  {"Several", "{\"x\":\"" + kPrefix + Payload('A') + "\",\"y\":[\"data:image/png;base64," + Payload('B') + "\"],\"z\":1}",
   "{x:'" + kPrefix + Payload('A') + "' y:['data:image/png;base64," + Payload('B') + "'] z:1}"},
  {"AsName", "{\"" + kPrefix + Payload('A') + "\":1}", "{" + kPrefix + Payload('A') + ":1}"},
  {"EmptyBesideLong", "[\"" + kPrefix + "\",\"" + kPrefix + Payload('A') + "\"]",
   "['" + kPrefix + "' '" + kPrefix + Payload('A') + "']"},
  {"EscapedSlashInside", "[\"" + kPrefix + Payload('A') + "\\/" + Payload('B') + "\"]",
   "['" + kPrefix + Payload('A') + "/" + Payload('B') + "']"},
  {"MarkInText", "[\"" + kPrefix + "#0\",\"" + kPrefix + Payload('A') + "\"]",
   "['" + kPrefix + "#0' '" + kPrefix + Payload('A') + "']"},
  {"MarkBehind", "[\"" + kPrefix + Payload('A') + "\",\"" + kPrefix + "#0\"]",
   "['" + kPrefix + Payload('A') + "' '" + kPrefix + "#0']"},
  {"EscapedMark", "[\"" + kPrefix + "\\u00230\",\"" + kPrefix + Payload('A') + "\"]",
   "['" + kPrefix + "#0' '" + kPrefix + Payload('A') + "']"},
  {"EscapedEncoding", "[\"x\\u003bbase64,#0\",\"data:\\u003bbase64,#0\",\"data:;base64," + Payload('A') + "\"]",
   "['x;base64,#0' 'data:;base64,#0' 'data:;base64," + Payload('A') + "']"},
  {"LongTextBeforeMark", "[\"" + Payload('x') + "\\u003bbase64,#0\",\"" + kPrefix + Payload('A') + "\"]",
   "['" + Payload('x') + ";base64,#0' '" + kPrefix + Payload('A') + "']"},
  {"HugeMark", "[\"" + kPrefix + "#99999999999999999999999\",\"" + kPrefix + Payload('A') + "\"]",
   "['" + kPrefix + "#99999999999999999999999' '" + kPrefix + Payload('A') + "']"},
  {"QuoteInFront", "[\"\\\"" + kPrefix + Payload('A') + "\"]", "['\"" + kPrefix + Payload('A') + "']"},
  {"TwoEncodings", "[\"data:a;base64,;base64," + Payload('A') + "\"]", "['data:a;base64,;base64," + Payload('A') + "']"},
  {"LongWithoutUri", "[\"" + Payload('A') + "\"]", "['" + Payload('A') + "']"},
  {"AllOfOneLetter", "[\"" + kPrefix + Payload('A') + "\",18446744073709551616]",
   "['" + kPrefix + Payload('A') + "' 18446744073709551616f]"},
};

class JsonPayload : public testing::TestWithParam<ValueRow>
{};

TEST_P(JsonPayload, ComesBackAsItStands)
{
  EXPECT_EQ(ShowParsed(GetParam().json), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonPayload, testing::ValuesIn(kPayloads), RowName());

TEST(Json, RefusesBrokenBytesInAPayload)
{
  for (const char* const broken : {"\xC0", "\x80", "\n", "\x01"})
    EXPECT_TRUE(Parse("[\"" + kPrefix + Payload('A') + broken + Payload('B') + "\"]").HasError());
  EXPECT_TRUE(Parse("[\"" + kPrefix + Payload('A')).HasError());
  EXPECT_TRUE(Parse("[\"" + kPrefix + Payload('A') + "\",]").HasError());
  EXPECT_TRUE(Parse(kPrefix + Payload('A')).HasError());
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
  const DataArrayView array = value.GetValue().GetArray().GetValue();
  EXPECT_EQ(array[0].GetString().GetValue().GetBytes(), bytes + 2);
}

TEST(Json, ReadsFiles)
{
  const TestFolder folder;
  HeadlessJson json;
  const Result<BaseArray<Data>> values = json.ParseFile(MakeUrl(folder.Write("a.json", "{\"a\":[1]}\n")));
  ASSERT_FALSE(values.HasError()) << MessageOf(values);
  EXPECT_EQ(Show(values.GetValue()[0]), "{a:[1]}");
}

struct FileRow
{
  const char* name;
  const char* file;
  ErrorClass errorClass;
};

const FileRow kUnreadable[] = {
  {"Missing", "none.json", ErrorClass::kIo},
  {"Folder", "folder", ErrorClass::kIo},
  {"Empty", "empty.json", ErrorClass::kUnexpected},
  {"Device", "/dev/zero", ErrorClass::kIo},
};

class JsonFile : public testing::TestWithParam<FileRow>
{};

TEST_P(JsonFile, IsRefused)
{
  const TestFolder folder;
  folder.Write("empty.json", "");
  folder.Write("folder/inside", "");
  const std::filesystem::path path = folder.Path() / GetParam().file;
  const Result<BaseArray<Data>> values = HeadlessJson().ParseFile(MakeUrl(path));
  ASSERT_TRUE(values.HasError());
  EXPECT_EQ(values.GetError().GetClass(), GetParam().errorClass);
  if (GetParam().errorClass == ErrorClass::kIo)
  {
    EXPECT_NE(MessageOf(values).find(path.string()), std::string::npos) << MessageOf(values);
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonFile, testing::ValuesIn(kUnreadable), RowName());

}  // namespace

}  // namespace q7z::test
