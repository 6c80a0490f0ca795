#include "plugin/tools/extensionshasher.h"

#include <new>

#include "framework/basearray.h"
#include "framework/check.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

constexpr Int32 kCommandId = 1063930;
constexpr String kTitle = "glTF Extensions Hasher"_s;

// Elements of the dialog.
constexpr Int32 kGroup = 1000;
constexpr Int32 kInputField = 1051;
constexpr Int32 kOutputField = 1052;
constexpr Int32 kOnlyHashesItem = 1053;

// What the host's layout calls take.
constexpr Int32 kBorder = 10;
constexpr Int32 kInputLayout = 56;
constexpr Int32 kOutputLayout = 59;
constexpr Int32 kFieldWidth = 100;
constexpr Int32 kReadOnlyStyle = 17;
constexpr Int32 kNonModal = 20;
constexpr Int32 kDefaultPosition = -1;
constexpr Int32 kSize = 400;
constexpr Int32 kMinimumHeight = 16384;

constexpr Int32 kInteractMessage = 0x696E7465;  // "inte"
constexpr Int32 kEnabledState = 0x40000000;

constexpr std::string_view kLineEnd = "\r\n";

Result<void> AppendText(BaseArray<Char>& text, std::string_view part) noexcept
{
  return text.AppendCopies(part.data(), static_cast<Int>(part.size()));
}

Result<void> AppendHash(HostHash& service, const String& line, Bool onlyHashes, BaseArray<Char>& text) noexcept
{
  ASSIGN_OR_RETURN(const String hash, service.HashText(line));
  if (!onlyHashes)
  {
    RETURN_IF_ERROR(AppendText(text, line.GetView()));
    RETURN_IF_ERROR(AppendText(text, "\t"));
  }
  RETURN_IF_ERROR(AppendText(text, hash.GetView()));
  return AppendText(text, kLineEnd);
}

/// A line for each line of the input, which only CR LF ends.
Result<BaseArray<Char>> HashLines(const String& input, Bool onlyHashes) noexcept
{
  HostHash* const service = FindService<HostHash>();
  if (!service)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no text hash."_s);
  BaseArray<Char> text;
  const std::string_view all = input.GetView();
  for (size_t start = 0; start <= all.size();)
  {
    const size_t found = all.find(kLineEnd, start);
    const size_t end = found == std::string_view::npos ? all.size() : found;
    RETURN_IF_ERROR(AppendHash(*service, input.GetPart(static_cast<Int>(start), static_cast<Int>(end - start)), onlyHashes,
                               text));
    start = end + kLineEnd.size();
    if (found == std::string_view::npos)
      break;
  }
  return text;
}

/// Leading white space belongs to a line without a name.
std::string_view TrimEnd(std::string_view text) noexcept
{
  const size_t last = text.find_last_not_of(" \t\r\n");
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

}  // namespace

Bool RegisterExtensionsHasher() noexcept
{
  ExtensionsHasherCommand* const command = new (std::nothrow) ExtensionsHasherCommand;
  if (command && HostRegisterCommand(kCommandId, kTitle, 0, nullptr, String(), command))
    return true;  // the host's now
  delete command;
  return false;
}

Bool ExtensionsHasherDialog::CreateLayout(HostDialogBase* dialog) noexcept
{
  HostDialogTable& table = *g_hostTables->dialog;
  table.SetTitle(dialog, kTitle);
  if (table.BeginMenu(dialog, "Menu"_s))
  {
    table.AddMenuItem(dialog, kOnlyHashesItem, "Only hashes"_s);
    table.EndMenu(dialog);
  }
  if (!table.BeginGroup(dialog, kGroup, 1, kSize, kMinimumHeight))
    return false;
  table.SetGroupBorderSpace(dialog, kBorder, kBorder, kBorder, kBorder);
  const Bool hasInput = table.AddMultiLineText(dialog, kInputField, kInputLayout, kFieldWidth, 0);
  table.AddSeparator(dialog);
  const Bool hasOutput = table.AddMultiLineText(dialog, kOutputField, kOutputLayout, kFieldWidth, kReadOnlyStyle);
  table.EndGroup(dialog);
  return hasInput && hasOutput;
}

Bool ExtensionsHasherDialog::Command(HostDialogBase* dialog, Int32 id) noexcept
{
  if (id == kOnlyHashesItem)
  {
    onlyHashes = !onlyHashes;
    g_hostTables->dialog->SetMenuCheck(dialog, kOnlyHashesItem, onlyHashes);
  }
  return g_hostTables->dialog->BaseCommand(dialog, id);
}

Int ExtensionsHasherDialog::Message(HostDialogBase* dialog, Int32 message) noexcept
{
  if (message == kInteractMessage)
    HashInput(dialog);
  return g_hostTables->dialog->BaseMessage(dialog, message);
}

void ExtensionsHasherDialog::HashInput(HostDialogBase* dialog) const noexcept
{
  HostDialogTable& table = *g_hostTables->dialog;
  String input;
  if (!table.GetText(dialog, kInputField, input))
  {
    HostConsolePrint("Failed to get input string"_s);
    return;
  }
  if (input.IsEmpty())
  {
    table.SetText(dialog, kOutputField, String());
    return;
  }
  String output;
  const Result<BaseArray<Char>> lines = HashLines(input, onlyHashes);
  if (!lines.HasError())  // else nothing of what there was so far is shown
  {
    const BaseArray<Char>& text = lines.GetValue();
    Result<String> trimmed = String::Create(TrimEnd({text.begin(), static_cast<size_t>(text.GetCount())}));
    if (!trimmed.HasError())
      output = std::move(trimmed.GetValue());
  }
  // The input is asked on purpose, not what came of it: so this text is never shown.
  if (input.IsEmpty())
    output = "Failed to hash input string"_s;
  table.SetText(dialog, kOutputField, output);
}

ExtensionsHasherCommand::~ExtensionsHasherCommand()
{
  if (_dialog && g_hostTables)
    g_hostTables->dialog->Free(_dialog);
}

HostDialogBase* ExtensionsHasherCommand::FindDialog() noexcept
{
  if (!_dialog)
    _dialog = g_hostTables->dialog->Alloc(&_client);
  return _dialog;
}

Bool ExtensionsHasherCommand::Execute(HostDocument*) noexcept
{
  HostDialogBase* const dialog = FindDialog();
  if (!dialog)
    return false;
  if (g_hostTables->dialog->IsOpen(dialog))
    return true;
  return g_hostTables->dialog->Open(dialog, kNonModal, kCommandId, kDefaultPosition, kDefaultPosition, kSize, kSize);
}

Bool ExtensionsHasherCommand::RestoreLayout(void* state) noexcept
{
  HostDialogBase* const dialog = FindDialog();
  return dialog && g_hostTables->dialog->RestoreLayout(dialog, kCommandId, state);
}

Int32 ExtensionsHasherCommand::GetState(HostDocument*) noexcept
{
  return kEnabledState;
}

}  // namespace q7z
