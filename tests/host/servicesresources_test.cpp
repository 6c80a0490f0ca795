// Texts and parameter descriptions: the files that ship, and broken ones.

#include <map>
#include <vector>

#include "host/services/headlessresources.h"
#include "tests/host/servicesupport.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

const std::string kShipped = Q7Z_TEST_SOURCE_DIR "/plugin/resources";

/// The shipped files in a folder of their own, where a test can break one.
class ResourceFolder
{
public:
  ResourceFolder()
  {
    for (const char* const name : {"strings_en.txt", "fgltfimporter.txt", "Fgltfexporter.txt"})
      _folder.Write(name, ReadText(kShipped + "/" + name));
    descriptions.SetFolder(_folder.Path().string());
    resources.SetFolder(_folder.Path().string());
  }
  void Replace(const std::string& name, std::string_view content) { _folder.Write(name, content); }
  void Remove(const std::string& name) { std::filesystem::remove(_folder / name); }
  std::string Path() const { return _folder.Path().string(); }

  HeadlessDescriptions descriptions;
  HeadlessResources resources{descriptions};

private:
  TestFolder _folder;
};

// Which texts take a parameter.
const std::map<Int32, int> kPlaceholders = {
  {10000, 0}, {10002, 0}, {10003, 0}, {10004, 0}, {10005, 0}, {10006, 0}, {10007, 0}, {10008, 0},
  {10009, 0}, {10010, 0}, {10011, 1}, {10012, 1}, {10013, 1}, {10014, 0}, {10015, 1}, {10016, 1},
  {10017, 0}, {10018, 0}, {10019, 0}, {10020, 1}, {10021, 0}, {10022, 0},
};

TEST(Texts, AreAllThereWithTheirParameters)
{
  ResourceFolder folder;
  ASSERT_TRUE(folder.resources.Load()) << folder.resources.GetFailure();
  for (Int32 number = 9990; number < 10040; ++number)
  {
    const std::string text = Text(folder.resources.GetString(number));
    const auto expected = kPlaceholders.find(number);
    EXPECT_EQ(text.empty(), expected == kPlaceholders.end()) << number;
    if (expected != kPlaceholders.end())
    {
      EXPECT_EQ(std::count(text.begin(), text.end(), '@'), expected->second) << number;
    }
  }
}

TEST(Texts, AreEmptyBeforeTheyAreLoaded)
{
  ResourceFolder folder;
  EXPECT_TRUE(folder.resources.GetString(10000).IsEmpty());
}

TEST(Texts, StayWhenALaterLoadFails)
{
  ResourceFolder folder;
  ASSERT_TRUE(folder.resources.Load());
  const String text = folder.resources.GetString(10021);
  folder.Replace("strings_en.txt", "nothing");
  EXPECT_FALSE(folder.resources.Load());
  EXPECT_EQ(folder.resources.GetString(10021), text);
}

std::string AllTexts()
{
  std::string texts;
  for (const auto& [number, count] : kPlaceholders)
    texts += std::to_string(number) + " = text\n";
  return texts;
}

struct TextsRow
{
  const char* name;
  std::string content;
  const char* failure;  // behind the file's name; null for none
};

const TextsRow kTexts[] = {
  {"Complete", AllTexts(), nullptr},
  {"CommentsAndBlanks", "# one = two\n\n  \t\n" + AllTexts() + "  # end", nullptr},
  {"CarriageReturns", "\r\n# x\r\n" + AllTexts(), nullptr},
  {"NoLineEndAtTheEnd", AllTexts().substr(0, AllTexts().size() - 1), nullptr},
  {"Empty", "", "the text 10000 is missing"},
  {"LastMissing", AllTexts().substr(0, AllTexts().find("10022")), "the text 10022 is missing"},
  {"NoEquals", "10000 text\n" + AllTexts(), "line 1: NUMBER = TEXT expected"},
  {"NoNumber", "\nname = text\n" + AllTexts(), "line 2: NUMBER = TEXT expected"},
  {"NumberWithMore", "10000x = text\n" + AllTexts(), "line 1: NUMBER = TEXT expected"},
  {"NumberBeyondAll", "99999999999 = text\n" + AllTexts(), "line 1: NUMBER = TEXT expected"},
  {"UnusedNumber", "10001 = text\n" + AllTexts(), "line 1: there is no text 10001"},
  {"NumberBelow", "9999 = text\n" + AllTexts(), "line 1: there is no text 9999"},
  {"NumberAbove", "10023 = text\n" + AllTexts(), "line 1: there is no text 10023"},
  {"EmptyText", "10000 =  \n" + AllTexts(), "line 1: the text 10000 is empty"},
  {"Twice", AllTexts() + "10000 = again", "line 23: the text 10000 stands here again"},
};

class TextsFile : public testing::TestWithParam<TextsRow>
{};

TEST_P(TextsFile, IsWholeOrRefused)
{
  ResourceFolder folder;
  folder.Replace("strings_en.txt", GetParam().content);
  const bool loaded = folder.resources.Load();
  EXPECT_EQ(loaded, GetParam().failure == nullptr);
  const std::string name = "\"" + folder.Path() + "/strings_en.txt\" is broken: ";
  EXPECT_EQ(folder.resources.GetFailure(), GetParam().failure ? name + GetParam().failure : "");
  EXPECT_EQ(Text(folder.resources.GetString(10000)), loaded ? "text" : "");
}

INSTANTIATE_TEST_SUITE_P(Rows, TextsFile, testing::ValuesIn(kTexts), RowName());

struct FileRow
{
  const char* name;
  const char* file;
};

const FileRow kFiles[] = {
  {"Texts", "strings_en.txt"},
  {"Importer", "fgltfimporter.txt"},
  {"Exporter", "Fgltfexporter.txt"},
};

class ResourceFile : public testing::TestWithParam<FileRow>
{};

TEST_P(ResourceFile, MustBeThere)
{
  ResourceFolder folder;
  folder.Remove(GetParam().file);
  EXPECT_FALSE(folder.resources.Load());
  EXPECT_EQ(folder.resources.GetFailure(),
            "Cannot read \"" + folder.Path() + "/" + GetParam().file + "\": No such file or directory");
}

TEST_P(ResourceFile, MustBeUtf8)
{
  ResourceFolder folder;
  folder.Replace(GetParam().file, ReadText(kShipped + "/" + GetParam().file) + "# \xFF");
  EXPECT_FALSE(folder.resources.Load());
  EXPECT_EQ(folder.resources.GetFailure(), "\"" + folder.Path() + "/" + GetParam().file + "\" is no UTF-8 text");
}

INSTANTIATE_TEST_SUITE_P(Rows, ResourceFile, testing::ValuesIn(kFiles), RowName());

/// "ID kind default" of each parameter, by id, with the numbers of a choice.
std::vector<std::string> Describe(const std::vector<ParameterDescription>& parameters)
{
  static const char* const kKinds[] = {"switch", "choice", "integer", "length", "angle"};
  std::map<Int32, std::string> lines;
  for (const ParameterDescription& parameter : parameters)
  {
    std::string& line = lines[parameter.id];
    line = std::to_string(parameter.id) + " " + kKinds[static_cast<int>(parameter.kind)] + " " + parameter.defaultText;
    for (const auto& [number, label] : parameter.choices)
      line += " " + std::to_string(number);
    EXPECT_FALSE(parameter.label.empty() || parameter.group.empty()) << parameter.id;
  }
  std::vector<std::string> texts;
  for (const auto& [id, line] : lines)
    texts.push_back(line);
  return texts;
}

TEST(Descriptions, NameEveryParameterOfTheLoader)
{
  ResourceFolder folder;
  ASSERT_TRUE(folder.descriptions.Register(1060210, "fgltfimporter")) << folder.descriptions.GetFailure();
  const std::vector<std::string> expected = {"1002 length 1 m", "1003 switch on",
                                             "1004 switch on",  "1005 choice 1007 1006 1007 1008",
                                             "1009 angle 40°",  "1010 switch on",
                                             "1011 switch on",  "1012 switch on",
                                             "1013 switch on",  "1014 switch on",
                                             "1017 switch on",  "1018 switch off",
                                             "1019 switch off", "1020 switch on"};
  EXPECT_EQ(Describe(*folder.descriptions.FindParameters(1060210)), expected);
}

TEST(Descriptions, NameEveryParameterOfTheSaver)
{
  ResourceFolder folder;
  ASSERT_TRUE(folder.descriptions.Register(1041129, "Fgltfexporter")) << folder.descriptions.GetFailure();
  const std::vector<std::string> expected = {"1001 switch on",
                                             "1002 switch on",
                                             "1003 length 1 m",
                                             "1005 switch on",
                                             "1006 integer 1024",
                                             "1007 integer 1024",
                                             "1008 choice 1009 1009 1010 1011",
                                             "1012 switch off",
                                             "1014 switch on",
                                             "1015 switch on",
                                             "1019 switch off",
                                             "1020 switch off",
                                             "1022 switch on",
                                             "1023 integer 0",
                                             "1024 switch on",
                                             "1025 switch on",
                                             "1026 switch on",
                                             "1027 choice 1028 1028 1029"};
  EXPECT_EQ(Describe(*folder.descriptions.FindParameters(1041129)), expected);
}

TEST(Descriptions, AreKnownOnceRegistered)
{
  ResourceFolder folder;
  EXPECT_FALSE(folder.descriptions.LoadByName(nullptr, "fgltfimporter"));
  EXPECT_FALSE(folder.descriptions.LoadById(nullptr, 1060210));
  EXPECT_FALSE(folder.descriptions.FindParameters(1060210));
  ASSERT_TRUE(folder.descriptions.Register(1060210, "fgltfimporter"));
  EXPECT_TRUE(folder.descriptions.LoadByName(nullptr, "fgltfimporter"));
  EXPECT_TRUE(folder.descriptions.LoadById(nullptr, 1060210));
  EXPECT_FALSE(folder.descriptions.LoadByName(nullptr, "Fgltfexporter"));
  EXPECT_FALSE(folder.descriptions.LoadById(nullptr, 1041129));
  EXPECT_FALSE(folder.descriptions.Register(1, "unknown"));
  EXPECT_FALSE(folder.descriptions.LoadByName(nullptr, "unknown"));
}

struct DescriptionRow
{
  const char* name;
  const char* content;
  const char* failure;
};

const DescriptionRow kBrokenDescriptions[] = {
  {"Empty", "# nothing\n[Group]\n", "it describes no parameter"},
  {"NoGroup", "1 | switch | A | on", "line 1: a parameter stands in a group"},
  {"EmptyGroup", "[ ]\n1 | switch | A | on", "line 1: a group wants a title"},
  {"FewFields", "[G]\n1 | switch | A", "line 2: ID | kind | label | default expected"},
  {"ManyFields", "[G]\n1 | switch | A | on | a | b", "line 2: ID | kind | label | default expected"},
  {"NoId", "[G]\nx | switch | A | on", "line 2: ID | kind | label | default expected"},
  {"NoLabel", "[G]\n1 | switch | | on", "line 2: ID | kind | label | default expected"},
  {"UnknownKind", "[G]\n1 | colour | A | red", "line 2: there is no kind \"colour\""},
  {"NoSwitch", "[G]\n1 | switch | A | yes", "line 2: on or off expected, not \"yes\""},
  {"NoInteger", "[G]\n1 | integer | A | 1.5", "line 2: a whole number expected, not \"1.5\""},
  {"NoLength", "[G]\n1 | length | A | ", "line 2: a default expected"},
  {"NoChoices", "[G]\n1 | choice | A | 2", "line 2: NUMBER label expected, not \"\""},
  {"ChoiceWithoutLabel", "[G]\n1 | choice | A | 2 | 2 two, 3", "line 2: NUMBER label expected, not \"3\""},
  {"ChoiceWithoutNumber", "[G]\n1 | choice | A | 2 | 2 two, three 3", "line 2: NUMBER label expected, not \"three 3\""},
  {"DefaultIsNoChoice", "[G]\n1 | choice | A | 4 | 2 two, 3 three", "line 2: the default \"4\" is none of the choices"},
  {"Twice", "[G]\n1 | switch | A | on\n[H]\n1 | switch | B | on", "line 4: the parameter 1 stands here again"},
};

class BrokenDescription : public testing::TestWithParam<DescriptionRow>
{};

TEST_P(BrokenDescription, IsRefused)
{
  ResourceFolder folder;
  folder.Replace("fgltfimporter.txt", GetParam().content);
  const std::string failure = "\"" + folder.Path() + "/fgltfimporter.txt\" is broken: " + GetParam().failure;
  EXPECT_FALSE(folder.resources.Load());
  EXPECT_EQ(folder.resources.GetFailure(), failure);
  EXPECT_FALSE(folder.descriptions.Register(1060210, "fgltfimporter"));
  EXPECT_EQ(folder.descriptions.GetFailure(), failure);
}

INSTANTIATE_TEST_SUITE_P(Rows, BrokenDescription, testing::ValuesIn(kBrokenDescriptions), RowName());

}  // namespace

}  // namespace q7z::test
