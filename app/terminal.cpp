#include "app/terminal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/platform/process.h"

namespace q7z::app
{

namespace
{

constexpr int kBarWidth = 30;
constexpr auto kRedrawInterval = std::chrono::milliseconds(66);

/// C0, DEL and C1.
bool IsControl(std::string_view sequence)
{
  const unsigned char first = static_cast<unsigned char>(sequence[0]);
  return first < 0x20 || first == 0x7F || (first == 0xC2 && static_cast<unsigned char>(sequence[1]) < 0xA0);
}

void AppendEscaped(std::string& out, std::string_view bytes)
{
  for (const char byte : bytes)
  {
    char text[5];
    std::snprintf(text, sizeof(text), "\\x%02X", static_cast<unsigned char>(byte));
    out += text;
  }
}

}  // namespace

size_t GetUtf8SequenceLength(std::string_view text)
{
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  const size_t length = first < 0x80                    ? 1
                        : first >= 0xC2 && first < 0xE0 ? 2
                        : first >= 0xE0 && first < 0xF0 ? 3
                        : first >= 0xF0 && first < 0xF5 ? 4
                                                        : 0;
  if (length == 0 || length > text.size())
    return 0;
  for (size_t i = 1; i < length; ++i)
  {
    if ((byte(i) & 0xC0) != 0x80)
      return 0;
  }
  const bool overlong = length > 2 && ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90));
  const bool surrogate = first == 0xED && byte(1) >= 0xA0;
  const bool tooLarge = first == 0xF4 && byte(1) >= 0x90;
  return overlong || surrogate || tooLarge ? 0 : length;
}

bool Applies(When when, bool isTerminal)
{
  return when == When::kAlways || (when == When::kAuto && isTerminal);
}

bool UseColor(When when)
{
  if (when != When::kAuto)
    return when == When::kAlways;
  const char* const noColor = std::getenv("NO_COLOR");
  return !(noColor && *noColor) && TakesEscapes(stderr);
}

std::string Escape(std::string_view text)
{
  std::string out;
  out.reserve(text.size());
  while (!text.empty())
  {
    const size_t length = GetUtf8SequenceLength(text);
    const std::string_view sequence = text.substr(0, std::max<size_t>(length, 1));
    if (length == 0 || IsControl(sequence))
      AppendEscaped(out, sequence);
    else
      out += sequence;
    text.remove_prefix(sequence.size());
  }
  return out;
}

ProgressBar::~ProgressBar()
{
  Clear();
}

void ProgressBar::Show(double overall, std::string_view stage)
{
  const auto now = std::chrono::steady_clock::now();
  if (!_enabled || (_drawn && now - _last < kRedrawInterval))
    return;
  _last = now;
  _drawn = true;
  const double share = std::isfinite(overall) ? std::clamp(overall, 0.0, 1.0) : 0.0;
  const int filled = static_cast<int>(share * kBarWidth);
  std::string bar;
  for (int i = 0; i < kBarWidth; ++i)
    bar += i < filled ? "#" : ".";
  std::fprintf(stderr, "\r\x1b[K[%s] %3d%%  %s", bar.c_str(), static_cast<int>(share * 100), Escape(stage).c_str());
  std::fflush(stderr);
}

void ProgressBar::Clear()
{
  if (!_drawn)
    return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  _drawn = false;
}

}  // namespace q7z::app
