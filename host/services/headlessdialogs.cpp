#include "host/services/headlessdialogs.h"

#include <chrono>
#include <condition_variable>
#include <thread>

namespace q7z
{

namespace
{

constexpr std::chrono::milliseconds kRedrawInterval{40};

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

}  // namespace q7z
