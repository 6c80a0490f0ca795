#pragma once

// GltfLoad: what the steps of one load share: the options, the document, the report, and the way to the user (progress stages,
// cancellation, messages). The importer owns it; parser and builders borrow it.

#include "framework/data.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfimportoptions.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

/// Messages of a load, to the list of its job; without a job there are none.
class ImportWarnings
{
public:
  explicit ImportWarnings(HostBackgroundJob* job = nullptr) noexcept : _job(job) {}
  void Add(HostMessageClass messageClass, const String& text) const noexcept
  {
    if (_job)
      _job->AddMessage(messageClass, text);
  }
  /// A resource text without, or with, one parameter in place of its "@".
  void AddResource(HostMessageClass messageClass, Int32 number) const noexcept;
  void AddResource(HostMessageClass messageClass, Int32 number, const String& parameter) const noexcept;

private:
  HostBackgroundJob* _job;  // not owned
};

/// One stage of a load's progress. Each report is a cancellation point.
class LoadProgress
{
public:
  LoadProgress() noexcept = default;
  /// @param weight  the stage's share of the whole load. @param titleNumber  a resource text.
  LoadProgress(HostBackgroundJob* job, Float weight, Int32 titleNumber) noexcept;
  /// @param value  clamped to at most 1. @return the cancellation error when the user has cancelled.
  Result<void> Report(Float value) const noexcept;

private:
  HostBackgroundJob* _job = nullptr;  // not owned
  Int32 _stage = -1;
};

class GltfLoad
{
public:
  GltfLoad(Url fileUrl, Bool isGlb, HostBackgroundJob* job) noexcept
      : _fileUrl(std::move(fileUrl)), _isGlb(isGlb), _job(job), _warnings(job)
  {}

  ImportOptions& GetOptions() noexcept { return _options; }
  GltfData& GetGltfData() noexcept { return _gltfData; }
  DataDictionary& GetReport() noexcept { return _report; }
  const Url& GetFileUrl() const noexcept { return _fileUrl; }
  Bool IsGlb() const noexcept { return _isGlb; }
  HostBackgroundJob* GetJob() const noexcept { return _job; }
  const ImportWarnings& GetWarnings() const noexcept { return _warnings; }

protected:
  ImportOptions _options;
  GltfData _gltfData;
  DataDictionary _report;  // `extensions`, `generator`, `error`
  Url _fileUrl;
  Bool _isGlb;
  HostBackgroundJob* _job;  // not owned; null for none
  ImportWarnings _warnings;
};

}  // namespace q7z
