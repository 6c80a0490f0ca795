#include "host/services/headlessdialog.h"

namespace q7z
{

namespace
{

constexpr Int32 kInteractMessage = 0x696E7465;  // "inte"

}  // namespace

Bool HeadlessDialog::IsChecked(Int32 item) const
{
  const auto found = items.find(item);
  return found != items.end() && found->second;
}

Bool HeadlessDialog::EnterText(Int32 field, const String& text)
{
  const auto found = fields.find(field);
  if (found == fields.end())
    return false;
  found->second = text;
  return true;
}

String HeadlessDialog::GetText(Int32 field) const
{
  const auto found = fields.find(field);
  return found == fields.end() ? String() : found->second;
}

Bool HeadlessDialog::Choose(Int32 item)
{
  if (!items.contains(item))
    return false;
  _client->Command(ToHost(), item);
  return true;
}

void HeadlessDialog::Interact() noexcept
{
  _client->Message(ToHost(), kInteractMessage);
}

Bool HeadlessDialog::Show() noexcept
{
  if (!_isLaidOut && !_client->CreateLayout(ToHost()))
    return false;
  _isLaidOut = true;
  isOpen = true;
  return true;
}

}  // namespace q7z
