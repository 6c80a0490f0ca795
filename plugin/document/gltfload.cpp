#include "plugin/document/gltfload.h"

#include <algorithm>

#include "framework/check.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

void ImportWarnings::AddResource(HostMessageClass messageClass, Int32 number) const noexcept
{
  if (_job)
    Add(messageClass, HostLoadString(number));
}

void ImportWarnings::AddResource(HostMessageClass messageClass, Int32 number, const String& parameter) const noexcept
{
  if (!_job)
    return;
  const Result<String> text = String::Format(HostLoadString(number), {parameter});
  if (!text.HasError())  // without memory there is no message
    Add(messageClass, text.GetValue());
}

LoadProgress::LoadProgress(HostBackgroundJob* job, Float weight, Int32 titleNumber) noexcept : _job(job)
{
  if (_job)
    _stage = _job->AddStage(weight, HostLoadString(titleNumber));
}

Result<void> LoadProgress::Report(Float value) const noexcept
{
  if (!_job)
    return {};
  _job->SetProgress(_stage, std::min(value, 1.0));
  if (_job->IsCancelled())
    return MAKE_ERROR(ErrorClass::kOperationCancelled, "The load was cancelled."_s);
  return {};
}

}  // namespace q7z
