#pragma once

// The exit codes of q7z.

namespace q7z::app
{

enum ExitCode : int
{
  kDone = 0,            ///< also with warnings
  kRefused = 1,         ///< the file was refused, or the load or save failed
  kUsage = 2,           ///< wrong usage
  kNoAccess = 3,        ///< reading or writing failed, or the plug-in could not be started
  kOutOfMemory = 4,     ///< out of memory or over a limit
  kStrictWarnings = 5,  ///< done with warnings, under --strict
  kInterrupted = 130,   ///< by SIGINT
  kTerminated = 143,    ///< by SIGTERM
};

}  // namespace q7z::app
