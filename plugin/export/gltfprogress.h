#pragma once

// The progress of the running save: step count and total, the dialog that shows them, and whether the user has cancelled. There is
// one save at a time, so the state is the module's. Writers of every subsystem step it; the saver alone starts and ends it.

#include "framework/result.h"
#include "framework/spinlock.h"
#include "framework/string.h"
#include "framework/types.h"

namespace q7z
{

/// Texts of a save's phases, by their resource numbers.
enum ProgressText : Int32
{
  kSaverName = 10000,
  kIdleText = 10002,
  kPreparingText = 10003,
  kTaggingText = 10004,
  kBakingText = 10005,
  kConvertingText = 10006,
  kWritingObjectsText = 10007,
  kWritingSkinsText = 10008,
  kWritingFileText = 10009,
};

/// A dialog that shows a save's progress. The saver's, on its stack.
class ProgressDialog
{
public:
  virtual void SetStatusText(const String& text) noexcept = 0;
  virtual void SetProgress(Float value) noexcept = 0;
  /// @return whether a running worker thread was asked to stop.
  virtual Bool IsCancelled() noexcept = 0;

protected:
  ~ProgressDialog() = default;
};

/// Begins a save that a dialog shows: step count and total are 0, nothing is cancelled.
void ProgressBegin(ProgressDialog* dialog) noexcept;
/// The dialog is gone; count, total and the cancelled flag stay.
void ProgressDetach() noexcept;
/// Clears the cancelled flag: the end of every save.
void ProgressClearCancelled() noexcept;

/// Shows the resource text of a phase. Does nothing without a dialog.
void ProgressSetText(Int32 stringId) noexcept;
/// Step count and total to 0.
void ProgressReset() noexcept;
void ProgressAddTotal(Int steps) noexcept;
/// One step more, shown as count / total when there is a dialog and a total. The lock is the walk's own: steps come from several
/// threads.
void ProgressStep(SpinLock& lock) noexcept;
/// Asks the dialog's worker thread, when there is one, whether the user has cancelled; a yes stays until the save ends.
void ProgressPollCancel() noexcept;
Bool ProgressIsCancelled() noexcept;

/// The error that ends a cancelled loop.
Error MakeCancelledError() noexcept;
/// Polls; the cancelled error when the user has cancelled by now.
Result<void> ProgressCheckCancel() noexcept;

}  // namespace q7z
