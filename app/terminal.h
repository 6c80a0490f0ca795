#pragma once

// The terminal: what may be written to it, in which colours, and the progress bar. Everything here goes to stderr.

#include <chrono>
#include <string>
#include <string_view>

namespace q7z::app
{

enum class When
{
  kAuto,
  kAlways,
  kNever,
};

/// Whether something that is wanted "when" applies to a stream that is, or is not, a terminal.
bool Applies(When when, bool isTerminal);

/// Whether colours may be used on stderr: --color, then NO_COLOR and TERM.
bool UseColor(When when);

/// The length of the well-formed UTF-8 sequence at the start of text, which is not empty; 0 when there is none.
size_t GetUtf8SequenceLength(std::string_view text);

/// Control characters, and bytes that are no UTF-8, as \xNN, so that a text from a file cannot drive the terminal.
std::string Escape(std::string_view text);

/// A bar with the running stage, redrawn in place at most some times a second. Nothing is drawn unless it is enabled, and
/// nothing remains when it goes.
class ProgressBar
{
public:
  explicit ProgressBar(bool enabled) : _enabled(enabled) {}
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// @param overall  0 to 1.
  void Show(double overall, std::string_view stage);
  void Clear();
  bool IsEnabled() const { return _enabled; }

private:
  bool _enabled;
  bool _drawn = false;
  std::chrono::steady_clock::time_point _last;
};

}  // namespace q7z::app
