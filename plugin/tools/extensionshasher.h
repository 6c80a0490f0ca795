#pragma once

// The extensions hasher: a dialog in which a person types names of extensions, a line each, and sees the hash of each, as the report
// of a load gives it. One command, made when the module starts, owns one dialog; the host owns the command.

#include "plugin/module/hostdialog.h"
#include "plugin/module/hostregistration.h"

namespace q7z
{

/// Registers the command. @return false without memory, or when the host refuses it.
Bool RegisterExtensionsHasher() noexcept;

class ExtensionsHasherDialog final : public HostDialogClient
{
public:
  Bool CreateLayout(HostDialogBase* dialog) noexcept override;
  Bool Command(HostDialogBase* dialog, Int32 id) noexcept override;
  Int Message(HostDialogBase* dialog, Int32 message) noexcept override;

private:
  void HashInput(HostDialogBase* dialog) const noexcept;

  Bool onlyHashes = false;  // lines without the names
};

class ExtensionsHasherCommand final : public HostCommand
{
public:
  ExtensionsHasherCommand() noexcept = default;
  ExtensionsHasherCommand(const ExtensionsHasherCommand&) = delete;
  ExtensionsHasherCommand& operator=(const ExtensionsHasherCommand&) = delete;
  ~ExtensionsHasherCommand() override;

  /// Opens the dialog unless it is open.
  Bool Execute(HostDocument* document) noexcept override;
  Bool RestoreLayout(void* state) noexcept override;
  Int32 GetState(HostDocument* document) noexcept override;

private:
  /// The host's side of the dialog, made when it is first wanted; null without memory.
  HostDialogBase* FindDialog() noexcept;

  ExtensionsHasherDialog _client;
  HostDialogBase* _dialog = nullptr;  // owned
};

}  // namespace q7z
