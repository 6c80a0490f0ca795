#pragma once

// Result: a value or an Error. Every operation that can fail returns one; it may not be ignored.
//
//   RETURN_IF_ERROR(expression);            passes an error on
//   ASSIGN_OR_RETURN(target, expression);   takes the value or passes the error on; declares, so it never stands alone under an if
//   DropError(result);                      ignores an error on purpose; the reason stands behind it

#include <new>
#include <type_traits>
#include <utility>

#include "framework/error.h"

namespace q7z
{

template <typename T>
class [[nodiscard]] Result
{
public:
  using Value = T;

  Result(const T& value) noexcept(std::is_nothrow_copy_constructible_v<T>) : _hasValue(true) { ::new (&_value) T(value); }
  Result(T&& value) noexcept : _hasValue(true) { ::new (&_value) T(std::move(value)); }
  Result(Error error) noexcept : _error(std::move(error)), _hasValue(false) {}

  /// From a value that converts, for instance from a derived owner to its base.
  template <typename U>
    requires(std::is_convertible_v<U &&, T> && !std::is_same_v<U, T> && !std::is_same_v<std::remove_cvref_t<U>, Error>)
  Result(U&& value) noexcept : _hasValue(true)
  {
    ::new (&_value) T(std::forward<U>(value));
  }

  Result(Result&& other) noexcept : _error(std::move(other._error)), _hasValue(other._hasValue)
  {
    if (_hasValue)
      ::new (&_value) T(std::move(other._value));
  }
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;
  Result& operator=(Result&& other) noexcept
  {
    if (this != &other)
    {
      this->~Result();
      ::new (this) Result(std::move(other));
    }
    return *this;
  }
  ~Result()
  {
    if (_hasValue)
      _value.~T();
  }

  Bool HasError() const noexcept { return !_hasValue; }
  const Error& GetError() const noexcept { return _error; }

  // The value getters need HasError() to be false.
  T& GetValue() & noexcept { return _value; }
  const T& GetValue() const& noexcept { return _value; }
  T&& GetValue() && noexcept { return std::move(_value); }

private:
  Error _error;
  union
  {
    T _value;
  };
  Bool _hasValue;
};

template <>
class [[nodiscard]] Result<void>
{
public:
  using Value = void;

  Result() noexcept = default;
  Result(Error error) noexcept : _error(std::move(error)) {}

  Bool HasError() const noexcept { return static_cast<Bool>(_error); }
  const Error& GetError() const noexcept { return _error; }

private:
  Error _error;
};

/// Ignores an error on purpose. The reason stands as a comment behind the call.
template <typename T>
void DropError(const Result<T>&) noexcept
{}

}  // namespace q7z

#define Q7Z_JOIN_INNER(a, b) a##b
#define Q7Z_JOIN(a, b) Q7Z_JOIN_INNER(a, b)

#define RETURN_IF_ERROR(...)                                                         \
  do                                                                                 \
  {                                                                                  \
    if (auto checkedResult_ = (__VA_ARGS__); checkedResult_.HasError()) [[unlikely]] \
      return checkedResult_.GetError();                                              \
  } while (false)

#define ASSIGN_OR_RETURN(target, ...)                        \
  auto Q7Z_JOIN(assigned_, __LINE__) = (__VA_ARGS__);        \
  if (Q7Z_JOIN(assigned_, __LINE__).HasError()) [[unlikely]] \
    return Q7Z_JOIN(assigned_, __LINE__).GetError();         \
  target = std::move(Q7Z_JOIN(assigned_, __LINE__)).GetValue()
