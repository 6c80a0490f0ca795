#pragma once

// One-line preconditions. A check that fails returns an Error whose message quotes the tested expression as it is spelled, with
// the line that tested it: "Illegal state: Condition _doc not fulfilled. ". So the spelling of a checked expression is
// behaviour. When the expression is a Result, it is fulfilled when it holds no error (and, for Result<Bool>, true); its error
// becomes the cause of the check's.

#include "framework/result.h"

namespace q7z
{

namespace checks
{

template <typename T>
Bool IsFulfilled(const T& value) noexcept
{
  return static_cast<Bool>(value);
}
inline Bool IsFulfilled(const Result<void>& result) noexcept
{
  return !result.HasError();
}
inline Bool IsFulfilled(const Result<Bool>& result) noexcept
{
  return !result.HasError() && result.GetValue();
}
template <typename T>
Bool IsFulfilled(const Result<T>& result) noexcept
{
  return !result.HasError();
}

template <typename T>
Error GetCause(const T&) noexcept
{
  return Error();
}
template <typename T>
Error GetCause(const Result<T>& result) noexcept
{
  return result.HasError() ? result.GetError() : Error();
}

}  // namespace checks

}  // namespace q7z

#define Q7Z_CHECK(errorClass, prefix, ...)                                                                                \
  do                                                                                                                      \
  {                                                                                                                       \
    if (auto&& checked_ = (__VA_ARGS__); !::q7z::checks::IsFulfilled(checked_)) [[unlikely]]                              \
      return ::q7z::Error::Make(errorClass, ::q7z::String(prefix, static_cast<::q7z::Int>(sizeof(prefix) - 1)), __FILE__, \
                                __LINE__, ::q7z::checks::GetCause(checked_));                                             \
  } while (false)

/// Tests our own state and data.
#define CHECK_STATE(...) \
  Q7Z_CHECK(::q7z::ErrorClass::kIllegalState, "Illegal state: Condition " #__VA_ARGS__ " not fulfilled. ", __VA_ARGS__)

/// Tests what the caller gave.
#define CHECK_ARGUMENT(...) \
  Q7Z_CHECK(::q7z::ErrorClass::kIllegalArgument, "Illegal argument: Condition " #__VA_ARGS__ " not fulfilled. ", __VA_ARGS__)

/// An error of a class with a message of its own, a String.
#define MAKE_ERROR(errorClass, message) ::q7z::Error::Make(errorClass, message, __FILE__, __LINE__)
