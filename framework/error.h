#pragma once

// Errors: a class, a message for people, the source line that raised it and, if another error led to it, that one. An Error is
// one pointer to a shared, immutable record; the empty Error means success. Making one never fails: when there is no memory
// for the record, the shared out-of-memory record takes its place.

#include "framework/string.h"
#include "framework/types.h"

namespace q7z
{

enum class ErrorClass : Byte
{
  kIllegalState,
  kIllegalArgument,
  kNullPtr,
  kOutOfMemory,
  kIo,
  kUnexpected,
  kUnsupportedOperation,
  kFunctionNotImplemented,
  kOperationCancelled,
};

/// The framework's id of a class, such as "net.tarno.error.illegalstate". Static text, terminated by a zero.
const Char* GetErrorClassId(ErrorClass errorClass) noexcept;

class Error
{
public:
  Error() noexcept : _record(nullptr) {}
  Error(const Error& other) noexcept;
  Error(Error&& other) noexcept : _record(other._record) { other._record = nullptr; }
  Error& operator=(Error other) noexcept;
  ~Error()
  {
    if (_record)
      Release();
  }

  /// @param file   static text; the caller's source file.
  /// @param cause  what led to this error; empty for none.
  static Error Make(ErrorClass errorClass, const String& message, const Char* file, Int32 line,
                    const Error& cause = Error()) noexcept;
  static Error OutOfMemory() noexcept;

  explicit operator Bool() const noexcept { return _record != nullptr; }

  // The getters need an error to be there.
  ErrorClass GetClass() const noexcept;
  const String& GetMessage() const noexcept;
  const Char* GetFile() const noexcept;
  Int32 GetLine() const noexcept;
  const Error& GetCause() const noexcept;

private:
  struct Record;
  explicit Error(Record* record) noexcept : _record(record) {}
  static Record& GetOutOfMemoryRecord() noexcept;
  void Release() noexcept;
  Record* _record;
};

}  // namespace q7z
