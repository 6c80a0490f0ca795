#pragma once

// HeadlessDialog: a dialog that a plug-in laid out, of a host that draws nothing: its elements, the texts of its fields and the checks
// of its menu. Whoever runs the host plays the user: fills fields, chooses items, lets the dialog work. The plug-in makes and frees it.

#include <map>
#include <string>
#include <vector>

#include "plugin/module/hostdialog.h"

namespace q7z
{

class HeadlessDialog
{
public:
  explicit HeadlessDialog(HostDialogClient* client) noexcept : _client(client) {}
  HeadlessDialog(const HeadlessDialog&) = delete;
  HeadlessDialog& operator=(const HeadlessDialog&) = delete;

  // The user's side.
  const std::string& GetTitle() const noexcept { return title; }
  Bool IsOpen() const noexcept { return isOpen; }
  /// What the plug-in put in, in order, each as "group 1000: 1 column, 400 x 16384".
  const std::vector<std::string>& GetLayout() const noexcept { return layout; }
  Bool IsChecked(Int32 item) const;
  /// @return false when there is no such field.
  Bool EnterText(Int32 field, const String& text);
  String GetText(Int32 field) const;
  /// Chooses an item of the menu. @return false when there is none.
  Bool Choose(Int32 item);
  /// What the host sends after an input.
  void Interact() noexcept;

  /// Lays the dialog out when that has not happened, and shows it.
  Bool Show() noexcept;

  static HeadlessDialog* From(HostDialogBase* dialog) noexcept { return reinterpret_cast<HeadlessDialog*>(dialog); }
  static const HeadlessDialog* From(const HostDialogBase* dialog) noexcept
  {
    return reinterpret_cast<const HeadlessDialog*>(dialog);
  }
  HostDialogBase* ToHost() noexcept { return reinterpret_cast<HostDialogBase*>(this); }

  // The plug-in's side, filled through the table.
  std::string title;
  std::vector<std::string> layout;
  std::map<Int32, String> fields;
  std::map<Int32, Bool> items;  // whether checked
  Int32 pluginId = 0;
  Bool isOpen = false;

private:
  HostDialogClient* _client;  // not owned
  Bool _isLaidOut = false;
};

}  // namespace q7z
