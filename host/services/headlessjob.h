#pragma once

// HeadlessJob: one load as its user sees it. Stages add up by their weights; messages are kept in order.

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "plugin/module/hostservices.h"

namespace q7z
{

struct JobMessage
{
  HostMessageClass messageClass = HostMessageClass::kInformation;
  std::string text;
};

class HeadlessJob final : public HostBackgroundJob
{
public:
  /// Called with the overall progress, 0 to 1, and the title of the stage that reported.
  using ProgressFunction = std::function<void(double overall, const std::string& stage)>;

  explicit HeadlessJob(ProgressFunction onProgress = {}) : _onProgress(std::move(onProgress)) {}

  /// From any thread and from signal handlers.
  void Cancel() noexcept { _cancelled.store(true, std::memory_order_relaxed); }
  const std::vector<JobMessage>& GetMessages() const noexcept { return _messages; }
  /// Whether a message was lost for want of memory.
  bool HasLostMessages() const noexcept { return _lostMessages; }
  double GetProgress() const noexcept;
  /// Shows a progress, 0 to 1, that no stage holds. From the thread that shows the stages' too.
  void Report(double overall, const String& title) noexcept;

  Int32 AddStage(Float weight, const String& title) noexcept override;
  void SetProgress(Int32 stage, Float value) noexcept override;
  Bool IsCancelled() noexcept override { return _cancelled.load(std::memory_order_relaxed); }
  void AddMessage(HostMessageClass messageClass, const String& text) noexcept override;

private:
  struct Stage
  {
    double weight = 0;
    double value = 0;
    std::string title;
  };

  ProgressFunction _onProgress;
  std::atomic<bool> _cancelled{false};
  std::vector<Stage> _stages;
  std::vector<JobMessage> _messages;
  bool _lostMessages = false;
};

static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler cancels");

}  // namespace q7z
