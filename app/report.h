#pragma once

// The run as JSON, in the shape that the ecosystem knows: tool, uri, status, exit code, issues, info, timings. Clock times and
// absolute paths are left out unless they are asked for, so that two runs compare equal.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace q7z::app
{

enum class Severity
{
  kError = 0,
  kWarning = 1,
  kInfo = 2,
};

struct Issue
{
  std::string code;  // such as "LOAD_WARNING"
  Severity severity = Severity::kInfo;
  std::string message;
};

struct RunReport
{
  std::string verb;
  std::string uri;
  std::string status;  // the load's status word
  int exitCode = 0;
  std::vector<Issue> issues;

  std::string generator;
  std::string version;
  std::string details;  // the load's report dictionary, JSON text
  std::vector<std::pair<std::string, int64_t>> counts;
  std::vector<std::pair<std::string, double>> timings;  // milliseconds; written only when asked for

  int CountIssues(Severity severity) const;
  std::string ToJson(bool withTimings) const;
};

/// A text as a JSON string, quotes included. Bytes that are no UTF-8 become U+FFFD.
std::string QuoteJson(const std::string& text);

}  // namespace q7z::app
