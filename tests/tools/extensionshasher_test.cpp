// The extensions hasher: its layout, what comes out for what goes in, and what fails.

#include <gtest/gtest.h>

#include "framework/check.h"
#include "host/services/headlessdialogs.h"
#include "host/services/headlesstables.h"
#include "plugin/module/hostservices.h"
#include "plugin/tools/extensionshasher.h"
#include "tests/support/testhost.h"

namespace q7z::test
{
namespace
{

constexpr Int32 kHasher = 1063930;
constexpr Int32 kInput = 1051;
constexpr Int32 kOutput = 1052;
constexpr Int32 kOnlyHashes = 1053;

String Copy(std::string_view text)
{
  return String::Create(text).GetValue();
}

/// Puts brackets around a text; what holds "bad" fails.
class BracketHash final : public HostHash
{
public:
  Result<String> HashText(const String& text) noexcept override
  {
    if (text.GetView().find("bad") != std::string_view::npos)
      return MAKE_ERROR(ErrorClass::kUnexpected, "on purpose"_s);
    return String::Format("[@]"_s, {text});
  }
  Result<String> HashFile(const Url&) noexcept override { return String(); }
};

class Hasher : public testing::Test
{
protected:
  Hasher() { host.Host().ReplaceService(HostHash::kId, static_cast<HostHash*>(&hash)); }

  std::string Run(std::string_view input, Int32 menuItem = 0)
  {
    const Result<String> output = host.Host().RunDialog({kHasher, kInput, Copy(input), menuItem, kOutput});
    return output.HasError() ? "error" : std::string(output.GetValue().GetView());
  }

  TestHost host;
  BracketHash hash;
};

const std::tuple<const char*, const char*, const char*> kHashCases[] = {
  {"EXT_a\r\nEXT_b", "EXT_a\t[EXT_a]\r\nEXT_b\t[EXT_b]", "[EXT_a]\r\n[EXT_b]"},
  {"a\nb", "a\nb\t[a\nb]", "[a\nb]"},  // a line feed splits nothing
  {"\r\na\r\n\r\n b ", "\t[]\r\na\t[a]\r\n\t[]\r\n b \t[ b ]", "[]\r\n[a]\r\n[]\r\n[ b ]"},
  {"a\r\nbad\r\nb", "", ""},  // one failure drops all
  {"", "", ""},
};

TEST_F(Hasher, LinesComeOutHashed)
{
  for (const auto& [input, output, onlyHashes] : kHashCases)
  {
    EXPECT_EQ(Run(input), output);
    EXPECT_EQ(Run(input, kOnlyHashes), onlyHashes) << input;
    EXPECT_EQ(Run(input, kOnlyHashes), output) << "chosen again";
  }
}

TEST_F(Hasher, DialogHasItsElementsAndGoesWithItsCommand)
{
  HeadlessDialogs dialogs;
  host.Host().GetTables().dialog = &dialogs;
  {
    ExtensionsHasherCommand command;
    EXPECT_EQ(command.GetState(nullptr), 0x40000000);
    ASSERT_TRUE(command.Execute(nullptr));
    HeadlessDialog* const dialog = dialogs.FindOpen(kHasher);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->GetTitle(), "glTF Extensions Hasher");
    const std::vector<std::string> layout = {"menu \"Menu\"",      "item 1053: \"Only hashes\"",
                                             "end of menu",        "group 1000: columns 1, 400 x 16384",
                                             "border 10 10 10 10", "text 1051: layout 56, width 100, style 0",
                                             "separator",          "text 1052: layout 59, width 100, style 17",
                                             "end of group"};
    EXPECT_TRUE(command.Execute(nullptr)) << "while it is open";
    EXPECT_EQ(dialogs.FindOpen(kHasher), dialog);
    EXPECT_EQ(dialog->GetLayout(), layout);
    for (const bool checked : {true, false})
    {
      ASSERT_TRUE(dialog->Choose(kOnlyHashes));
      EXPECT_EQ(dialog->IsChecked(kOnlyHashes), checked);
    }
  }
  EXPECT_EQ(dialogs.FindOpen(kHasher), nullptr);
  ExtensionsHasherCommand command;
  ASSERT_TRUE(command.RestoreLayout(nullptr));
  EXPECT_NE(dialogs.FindOpen(kHasher), nullptr);
}

/// Fields cannot be read.
class DeafDialogs : public HeadlessDialogs
{
public:
  Int BaseMessage(HostDialogBase*, Int32) noexcept override { return 42; }
  Bool GetText(HostDialogBase*, Int32, String&) noexcept override { return false; }
};

TEST_F(Hasher, TellsThatItCouldNotRead)
{
  DeafDialogs dialogs;
  host.Host().GetTables().dialog = &dialogs;
  std::vector<std::string> lines;
  HeadlessConsole console;
  console.onConsole = [&](const std::string& line) { lines.push_back(line); };
  host.Host().GetTables().console = &console;
  ExtensionsHasherDialog client;
  HeadlessDialog dialog(&client);
  ASSERT_TRUE(dialog.Show());
  dialog.fields[kOutput] = "as it was"_s;
  EXPECT_EQ(client.Message(dialog.ToHost(), 0x696E7465), 42);
  EXPECT_EQ(lines, std::vector<std::string>{"Failed to get input string"});
  EXPECT_EQ(dialog.GetText(kOutput).GetView(), "as it was");
}

}  // namespace
}  // namespace q7z::test
