#include "host/services/headlessdialogs.h"

#include <chrono>
#include <condition_variable>
#include <new>
#include <thread>
#include <type_traits>

namespace q7z
{

namespace
{

constexpr std::chrono::milliseconds kRedrawInterval{40};

/// @return what attempt answers, or true when that is nothing; false without memory.
template <typename Function>
Bool Attempt(Function attempt) noexcept
{
  try
  {
    if constexpr (std::is_void_v<decltype(attempt())>)
      return attempt(), true;
    else
      return attempt();
  }
  catch (...)
  {
    return false;
  }
}

/// Adds a line to what the dialog is made of.
template <typename Function>
Bool Note(HostDialogBase* dialog, Function makeLine) noexcept
{
  return Attempt([&] { HeadlessDialog::From(dialog)->layout.push_back(makeLine()); });
}

/// The end of a worker thread, awaited by another.
class Completion
{
public:
  void Set() noexcept
  {
    const std::lock_guard lock(_mutex);
    _isSet = true;
    _changed.notify_all();
  }
  /// @return whether it is set by now.
  bool WaitFor(std::chrono::milliseconds time)
  {
    std::unique_lock lock(_mutex);
    return _changed.wait_for(lock, time, [this] { return _isSet; });
  }

private:
  std::mutex _mutex;
  std::condition_variable _changed;
  bool _isSet = false;
};

}  // namespace

void HeadlessDialogs::SetJob(HeadlessJob* job) noexcept
{
  _job = job;
  _progress.store(0, std::memory_order_relaxed);
  _failure.clear();
}

void HeadlessDialogs::ShowMessage(const String& text) noexcept
{
  try
  {
    if (onMessage)
      onMessage(std::string(text.GetView()));
  }
  catch (...)
  {
    return;  // a line is lost; nobody can be told
  }
}

Bool HeadlessDialogs::RunWorkerDialog(HostWorkerClient* client, Int32* result) noexcept
{
  if (!_job || !client)
    return false;
  try
  {
    Completion completion;
    std::thread worker(
      [&]() noexcept
      {
        *result = client->Run();
        completion.Set();
      });
    while (!completion.WaitFor(kRedrawInterval))
      _job->Report(_progress.load(std::memory_order_relaxed), client->GetStatusText());
    worker.join();
    return true;
  }
  catch (const std::exception& error)
  {
    // The thread could not be started, or there is no memory for it.
    NoteFailure(error.what());
    return false;
  }
}

void HeadlessDialogs::NoteFailure(const char* reason) noexcept
{
  try
  {
    _failure = reason;
  }
  catch (...)
  {
    _failure = "out of memory";  // short enough to need none
  }
}

HostDialogBase* HeadlessDialogs::Alloc(HostDialogClient* client) noexcept
{
  HeadlessDialog* const dialog = client ? new (std::nothrow) HeadlessDialog(client) : nullptr;
  return dialog ? dialog->ToHost() : nullptr;
}

void HeadlessDialogs::Free(HostDialogBase* dialog) noexcept
{
  std::erase(_open, HeadlessDialog::From(dialog));
  delete HeadlessDialog::From(dialog);
}

Bool HeadlessDialogs::Open(HostDialogBase* dialog, Int32, Int32 pluginId, Int32, Int32, Int32, Int32) noexcept
{
  HeadlessDialog& shown = *HeadlessDialog::From(dialog);
  return Attempt(
    [&]
    {
      shown.pluginId = pluginId;
      _open.push_back(&shown);
      if (shown.Show())
        return true;
      _open.pop_back();
      return false;
    });
}

Bool HeadlessDialogs::IsOpen(const HostDialogBase* dialog) noexcept
{
  return HeadlessDialog::From(dialog)->isOpen;
}

/// There is no layout of windows to put a dialog into: it just opens.
Bool HeadlessDialogs::RestoreLayout(HostDialogBase* dialog, Int32 pluginId, void*) noexcept
{
  return IsOpen(dialog) || Open(dialog, 0, pluginId, 0, 0, 0, 0);
}

void HeadlessDialogs::SetTitle(HostDialogBase* dialog, const String& title) noexcept
{
  Attempt([&] { HeadlessDialog::From(dialog)->title = std::string(title.GetView()); });
}

Bool HeadlessDialogs::BeginMenu(HostDialogBase* dialog, const String& title) noexcept
{
  return Note(dialog, [&] { return std::string() + "menu \"" + std::string(title.GetView()) + '"'; });
}

Bool HeadlessDialogs::AddMenuItem(HostDialogBase* dialog, Int32 id, const String& title) noexcept
{
  return Attempt([&] { HeadlessDialog::From(dialog)->items.emplace(id, false); }) &&
         Note(dialog, [&] { return std::string() + "item " + std::to_string(id) + ": \"" + std::string(title.GetView()) + '"'; });
}

void HeadlessDialogs::EndMenu(HostDialogBase* dialog) noexcept
{
  Note(dialog, [&] { return std::string() + "end of menu"; });
}

void HeadlessDialogs::SetMenuCheck(HostDialogBase* dialog, Int32 id, Bool checked) noexcept
{
  const auto item = HeadlessDialog::From(dialog)->items.find(id);
  if (item != HeadlessDialog::From(dialog)->items.end())
    item->second = checked;
}

Bool HeadlessDialogs::BeginGroup(HostDialogBase* dialog, Int32 id, Int32 columns, Int32 width, Int32 height) noexcept
{
  return Note(dialog,
              [&]
              {
                return std::string() + "group " + std::to_string(id) + ": columns " + std::to_string(columns) + ", " +
                       std::to_string(width) + " x " + std::to_string(height);
              });
}

void HeadlessDialogs::SetGroupBorderSpace(HostDialogBase* dialog, Int32 left, Int32 top, Int32 right, Int32 bottom) noexcept
{
  Note(dialog,
       [&]
       {
         return std::string() + "border " + std::to_string(left) + ' ' + std::to_string(top) + ' ' + std::to_string(right) + ' ' +
                std::to_string(bottom);
       });
}

void HeadlessDialogs::EndGroup(HostDialogBase* dialog) noexcept
{
  Note(dialog, [&] { return std::string() + "end of group"; });
}

Bool HeadlessDialogs::AddMultiLineText(HostDialogBase* dialog, Int32 id, Int32 layoutFlags, Int32 width, Int32 style) noexcept
{
  return Attempt([&] { HeadlessDialog::From(dialog)->fields.emplace(id, String()); }) &&
         Note(dialog,
              [&]
              {
                return std::string() + "text " + std::to_string(id) + ": layout " + std::to_string(layoutFlags) + ", width " +
                       std::to_string(width) + ", style " + std::to_string(style);
              });
}

void HeadlessDialogs::AddSeparator(HostDialogBase* dialog) noexcept
{
  Note(dialog, [&] { return std::string() + "separator"; });
}

Bool HeadlessDialogs::GetText(HostDialogBase* dialog, Int32 id, String& text) noexcept
{
  const auto field = HeadlessDialog::From(dialog)->fields.find(id);
  if (field == HeadlessDialog::From(dialog)->fields.end())
    return false;
  text = field->second;
  return true;
}

Bool HeadlessDialogs::SetText(HostDialogBase* dialog, Int32 id, const String& text) noexcept
{
  const auto field = HeadlessDialog::From(dialog)->fields.find(id);
  if (field == HeadlessDialog::From(dialog)->fields.end())
    return false;
  field->second = text;
  return true;
}

HeadlessDialog* HeadlessDialogs::FindOpen(Int32 pluginId) const noexcept
{
  for (HeadlessDialog* const dialog : _open)
  {
    if (dialog->pluginId == pluginId)
      return dialog;
  }
  return nullptr;
}

}  // namespace q7z
