#pragma once

// What the tests of the framework share, and others: texts and errors in the words that a failure message shows, numbers that are none.

#include <limits>
#include <string>

#include "framework/result.h"
#include "framework/string.h"

namespace q7z::test
{

inline constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
inline constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

inline std::string Text(const String& text)
{
  return std::string(text.GetView());
}

/// The text in a result, or its error's message.
inline std::string Text(const Result<String>& result)
{
  return Text(result.HasError() ? result.GetError().GetMessage() : result.GetValue());
}

/// The message of a result's error, or "no error".
template <typename T>
std::string ErrorText(const Result<T>& result)
{
  return result.HasError() ? Text(result.GetError().GetMessage()) : "no error";
}

/// Whether a result failed for want of memory.
template <typename T>
bool IsOutOfMemory(const Result<T>& result)
{
  return result.HasError() && result.GetError().GetClass() == ErrorClass::kOutOfMemory;
}

/// A text of its own memory.
inline String MakeString(std::string_view text)
{
  return String::Create(text).GetValue();
}

}  // namespace q7z::test
