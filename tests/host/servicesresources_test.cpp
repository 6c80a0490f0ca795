// Texts and parameter descriptions: the files that ship, and broken ones.

#include <map>
#include <vector>

#include "host/services/headlessresources.h"
#include "tests/host/servicesupport.h"

namespace q7z::test
{

namespace
{

/// The shipped files in a folder of their own, where a test can break one.
class Resources : public testing::Test
{
protected:
  Resources()
  {
    for (const char* const name : {"strings_en.txt", "fgltfimporter.txt", "Fgltfexporter.txt"})
      folder.Write(name, ReadText(std::string(Q7Z_TEST_SOURCE_DIR "/plugin/resources/") + name));
    descriptions.SetFolder(folder.GetPath());
    resources.SetFolder(folder.GetPath());
  }

  TestFolder folder;
  HeadlessDescriptions descriptions;
  HeadlessResources resources{descriptions};
};

// How many parameters each text takes.
const std::map<Int32, int> kPlaceholders = {
  {10000, 0}, {10002, 0}, {10003, 0}, {10004, 0}, {10005, 0}, {10006, 0}, {10007, 0}, {10008, 0},
  {10009, 0}, {10010, 0}, {10011, 1}, {10012, 1}, {10013, 1}, {10014, 0}, {10015, 1}, {10016, 1},
  {10017, 0}, {10018, 0}, {10019, 0}, {10020, 1}, {10021, 0}, {10022, 0},
};

TEST_F(Resources, TextsAreAllThereWithTheirParameters)
{
  ASSERT_TRUE(resources.Load()) << resources.GetFailure();
  for (Int32 number = 9990; number < 10040; ++number)
  {
    const std::string text = Text(resources.GetString(number));
    const auto expected = kPlaceholders.find(number);
    ASSERT_EQ(text.empty(), expected == kPlaceholders.end()) << number;
    EXPECT_EQ(std::count(text.begin(), text.end(), '@'), text.empty() ? 0 : expected->second) << number;
  }
}

TEST_F(Resources, TextsAreWholeOrRefused)
{
  std::string all;
  for (const auto& [number, count] : kPlaceholders)
    all += std::to_string(number) + " = text\n";
  const std::pair<std::string, const char*> rows[] = {
    {"# one = two\r\n\n  \t\n" + all + "  # end", ""},
    {all.substr(0, all.find("10022")), "the text 10022 is missing"},
    {"10000 text\n" + all, "line 1: NUMBER = TEXT expected"},
    {"99999999999 = text\n" + all, "line 1: NUMBER = TEXT expected"},
    {"10023 = text\n" + all, "line 1: there is no text 10023"},
    {"10000 =  \n" + all, "line 1: the text 10000 is empty"},
    {all + "10000 = again", "line 23: the text 10000 stands here again"},
  };
  for (const auto& [content, failure] : rows)
  {
    const std::string path = folder.Write("strings_en.txt", content);
    EXPECT_EQ(resources.Load(), *failure == 0) << content;
    EXPECT_EQ(resources.GetFailure(), *failure ? "\"" + path + "\" is broken: " + failure : "");
    EXPECT_EQ(Text(resources.GetString(10000)), "text") << "what was loaded stays";
  }
}

TEST_F(Resources, EveryFileMustBeThereInUtf8)
{
  for (const char* const name : {"strings_en.txt", "fgltfimporter.txt", "Fgltfexporter.txt"})
  {
    const std::string content = ReadText(folder / name);
    const std::string path = folder.Write(name, content + "# \xFF");
    EXPECT_FALSE(resources.Load());
    EXPECT_EQ(resources.GetFailure(), "\"" + path + "\" is no UTF-8 text");
    std::filesystem::remove(path);
    EXPECT_FALSE(resources.Load());
    EXPECT_EQ(resources.GetFailure(), "Cannot read \"" + path + "\": No such file or directory");
    folder.Write(name, content);
  }
}

/// "ID kind default" of each parameter, by id, with the numbers of a choice.
std::string Describe(const std::vector<ParameterDescription>& parameters)
{
  static const char* const kKinds[] = {"switch", "choice", "integer", "length", "angle"};
  std::map<Int32, std::string> entries;
  for (const ParameterDescription& parameter : parameters)
  {
    std::string& entry = entries[parameter.id];
    entry = std::to_string(parameter.id) + " " + kKinds[static_cast<int>(parameter.kind)] + " " + parameter.defaultText;
    for (const auto& [number, label] : parameter.choices)
      entry += " " + std::to_string(number);
    EXPECT_FALSE(parameter.label.empty() || parameter.group.empty()) << parameter.id;
  }
  std::string text;
  for (const auto& [id, entry] : entries)
    text += (text.empty() ? "" : ", ") + entry;
  return text;
}

TEST_F(Resources, DescriptionsNameEveryParameterOnceRegistered)
{
  EXPECT_FALSE(descriptions.LoadById(nullptr, 1060210));
  EXPECT_FALSE(descriptions.Register(1, "unknown"));
  ASSERT_TRUE(descriptions.Register(1060210, "fgltfimporter")) << descriptions.GetFailure();
  EXPECT_TRUE(descriptions.LoadByName(nullptr, "fgltfimporter"));
  EXPECT_TRUE(descriptions.LoadById(nullptr, 1060210));
  EXPECT_EQ(Describe(*descriptions.FindParameters(1060210)),
            "1002 length 1 m, 1003 switch on, 1004 switch on, 1005 choice 1007 1006 1007 1008, 1009 angle 40°, 1010 switch on, "
            "1011 switch on, 1012 switch on, 1013 switch on, 1014 switch on, 1017 switch on, 1018 switch off, 1019 switch off, "
            "1020 switch on");
  ASSERT_TRUE(descriptions.Register(1041129, "Fgltfexporter")) << descriptions.GetFailure();
  EXPECT_EQ(Describe(*descriptions.FindParameters(1041129)),
            "1001 switch on, 1002 switch on, 1003 length 1 m, 1005 switch on, 1006 integer 1024, 1007 integer 1024, "
            "1008 choice 1009 1009 1010 1011, 1012 switch off, 1014 switch on, 1015 switch on, 1019 switch off, 1020 switch off, "
            "1022 switch on, 1023 integer 0, 1024 switch on, 1025 switch on, 1026 switch on, 1027 choice 1028 1028 1029");
}

TEST_F(Resources, BrokenDescriptionsAreRefused)
{
  const std::pair<const char*, const char*> rows[] = {
    {"# nothing\n[Group]\n", "it describes no parameter"},
    {"1 | switch | A | on", "line 1: a parameter stands in a group"},
    {"[G]\n1 | switch | A", "line 2: ID | kind | label | default expected"},
    {"[G]\n1 | colour | A | red", "line 2: there is no kind \"colour\""},
    {"[G]\n1 | integer | A | 1.5", "line 2: a whole number expected, not \"1.5\""},
    {"[G]\n1 | switch | A | yes", "line 2: on or off expected, not \"yes\""},
    {"[G]\n1 | choice | A | 2 | 2 two, 3", "line 2: NUMBER label expected, not \"3\""},
    {"[G]\n1 | choice | A | 4 | 2 two, 3 three", "line 2: the default \"4\" is none of the choices"},
    {"[G]\n1 | switch | A | on\n[H]\n1 | switch | B | on", "line 4: the parameter 1 stands here again"},
  };
  for (const auto& [content, reason] : rows)
  {
    const std::string failure = "\"" + folder.Write("fgltfimporter.txt", content) + "\" is broken: " + reason;
    EXPECT_FALSE(resources.Load()) << content;
    EXPECT_FALSE(descriptions.Register(1060210, "fgltfimporter"));
    EXPECT_EQ(descriptions.GetFailure(), failure);
  }
}

}  // namespace

}  // namespace q7z::test
