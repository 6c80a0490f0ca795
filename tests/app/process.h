#pragma once

// Runs the built program as a user does: its own process, arguments, environment, standard streams. A Process ends with its
// owner at the latest.

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/testfolder.h"

namespace q7z::test
{

/// What came of a run. status is the exit code, or 1000 and the number of the signal that ended it.
struct RunResult
{
  int status = -1;
  std::string out;
  std::string err;
  int64_t peakKilobytes = 0;  ///< the most memory that it held at once
};

struct RunSettings
{
  std::string input;                                               ///< stdin's text
  std::vector<std::pair<std::string, std::string>> environment{};  ///< over an otherwise small one
  std::string outPath{};                                           ///< a file that is stdout; empty for a pipe
  std::string folder{};                                            ///< the current folder; empty for the test's own
  bool errIsTerminal = false;
};

class Process
{
public:
  /// program is a path; the first argument is the one behind the program's name.
  Process(const std::string& program, const std::vector<std::string>& arguments, const RunSettings& settings);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  /// Kills it when it still runs.
  ~Process();

  /// Writes to stdin, whose text in the settings is not used then. @return false when nobody reads any more.
  bool Write(const std::string& text);
  void Signal(int signal);
  /// Until the pipe of stdout takes no more, and a moment longer, so that a run that writes on waits. @return false if it never does.
  bool WaitForFullOutput();
  /// Closes stdin, collects both streams and waits for the end. A run that takes too long is killed.
  RunResult Finish(const std::string& input = "");

private:
  pid_t _id = -1;
  int _input = -1;
  int _out = -1;
  int _err = -1;
};

/// Runs the built q7z from start to end.
RunResult RunTool(const std::vector<std::string>& arguments, const RunSettings& settings = {});

}  // namespace q7z::test
