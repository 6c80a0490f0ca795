#include "host/services/headlessjob.h"

#include <algorithm>

namespace q7z
{

double HeadlessJob::GetProgress() const noexcept
{
  double overall = 0;
  for (const Stage& stage : _stages)
    overall += stage.weight * stage.value;
  return std::min(overall, 1.0);
}

Int32 HeadlessJob::AddStage(Float weight, const String& title) noexcept
{
  try
  {
    _stages.push_back({weight, 0, std::string(title.GetView())});
    return static_cast<Int32>(_stages.size() - 1);
  }
  catch (...)
  {
    return -1;  // a stage that nobody sees
  }
}

void HeadlessJob::SetProgress(Int32 stage, Float value) noexcept
{
  if (stage < 0 || static_cast<size_t>(stage) >= _stages.size())
    return;
  Stage& running = _stages[static_cast<size_t>(stage)];
  running.value = value > 1 ? 1 : value >= 0 ? value : 0;
  Report(GetProgress(), String(running.title.data(), static_cast<Int>(running.title.size())));
}

void HeadlessJob::Report(double overall, const String& title) noexcept
{
  if (!_onProgress)
    return;
  try
  {
    _onProgress(overall > 1 ? 1 : overall >= 0 ? overall : 0, std::string(title.GetView()));
  }
  catch (...)
  {
    _onProgress = nullptr;  // whoever draws has failed; the work goes on unseen
  }
}

void HeadlessJob::AddMessage(HostMessageClass messageClass, const String& text) noexcept
{
  try
  {
    _messages.push_back({messageClass, std::string(text.GetView())});
  }
  catch (...)
  {
    _lostMessages = true;
  }
}

}  // namespace q7z
