#pragma once

// JSON texts that are written in the tests themselves, and results as plain C++ values.

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "host/services/headlessjson.h"

namespace q7z::test
{

/// The top-level values of a text.
inline Result<BaseArray<Data>> ParseText(std::string_view text)
{
  BaseArray<Byte> bytes;
  RETURN_IF_ERROR(bytes.AppendCopies(reinterpret_cast<const Byte*>(text.data()), static_cast<Int>(text.size())));
  return HeadlessJson().ParseBytes(std::move(bytes));
}

/// The members of a JSON object that is written in the test itself.
inline DataDictionary ParseObject(std::string_view text)
{
  const Result<BaseArray<Data>> values = ParseText(text);
  if (values.HasError() || values.GetValue()[0].GetKind() != DataKind::kDictionary)
    std::abort();  // the test itself is broken
  return values.GetValue()[0].GetDictionary().GetValue();
}

inline std::string Text(const String& text)
{
  return std::string(text.GetView());
}

/// A copy that matchers can walk.
template <typename T>
std::vector<T> ToVector(const BaseArray<T>& array)
{
  return std::vector<T>(array.begin(), array.end());
}

/// The message of a failed result; empty for success.
template <typename T>
std::string ErrorText(const Result<T>& result)
{
  return result.HasError() ? Text(result.GetError().GetMessage()) : std::string();
}

}  // namespace q7z::test
