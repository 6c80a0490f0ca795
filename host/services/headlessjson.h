#pragma once

// The JSON service: reading into the framework's Data, writing from it. For any thread; the elements of long arrays are written by
// several at once.

#include "plugin/module/hostservices.h"

namespace q7z
{

class HeadlessJson final : public HostJson
{
public:
  /// @param jobs  not owned; null for the caller's thread alone.
  explicit HeadlessJson(HostJobs* jobs = nullptr) noexcept : _jobs(jobs) {}

  Result<BaseArray<Data>> ParseFile(const Url& url) noexcept override;
  Result<BaseArray<Data>> ParseBytes(BaseArray<Byte> bytes) noexcept override;
  Result<String> Write(const DataDictionary& dictionary, Bool formatted) noexcept override;

private:
  HostJobs* _jobs;
};

/// The one value of a JSON text. text has byteCount bytes and kJsonPadding readable bytes behind them, all in block, which long
/// strings of the result keep alive.
Result<Data> ParseJson(StringBlock* block, const Char* text, Int byteCount) noexcept;

/// The byteLength of the one buffer that a glTF file's JSON declares: 0 for no buffers, -1 for anything else. Builds nothing of the
/// rest. text as for ParseJson.
Result<Int> ReadBufferLength(const Char* text, Int byteCount) noexcept;

/// Bytes that must be readable behind a text that is parsed.
inline constexpr Int kJsonPadding = 64;

/// How deep arrays and objects may nest, in what is read and in what is written.
inline constexpr size_t kDeepestJson = 1024;

/// The JSON text of a value. Non-finite numbers are an error.
/// @param jobs  for long arrays; null for the caller's thread alone. The text is the same.
Result<String> WriteJson(const Data& value, Bool formatted, HostJobs* jobs = nullptr) noexcept;

}  // namespace q7z
