#include "framework/error.h"

#include <atomic>
#include <new>
#include <utility>

#include "framework/memory.h"
#include "framework/result.h"

namespace q7z
{

struct Error::Record
{
  std::atomic<Int> references{1};
  ErrorClass errorClass;
  String message;
  const Char* file;
  Int32 line;
  Error cause;
};

const Char* GetErrorClassId(ErrorClass errorClass) noexcept
{
  switch (errorClass)
  {
    case ErrorClass::kIllegalState: return "net.tarno.error.illegalstate";
    case ErrorClass::kIllegalArgument: return "net.tarno.error.illegalargument";
    case ErrorClass::kNullPtr: return "net.tarno.error.nullptr";
    case ErrorClass::kOutOfMemory: return "net.tarno.error.outofmemory";
    case ErrorClass::kIo: return "net.tarno.error.io";
    case ErrorClass::kUnexpected: return "net.tarno.error.unexpected";
    case ErrorClass::kUnsupportedOperation: return "net.tarno.error.unsupportedoperation";
    case ErrorClass::kFunctionNotImplemented: return "net.tarno.error.functionnotimplemented";
    case ErrorClass::kOperationCancelled: return "net.tarno.error.OperationCancelledError";
  }
  return "net.tarno.error.unexpected";
}

Error::Error(const Error& other) noexcept : _record(other._record)
{
  if (_record)
    _record->references.fetch_add(1, std::memory_order_relaxed);
}

Error& Error::operator=(Error other) noexcept
{
  Record* const record = _record;
  _record = other._record;
  other._record = record;
  return *this;
}

// A loop, not a recursion along the causes: whoever wraps errors in a loop makes a chain as long as the loop.
void Error::Release() noexcept
{
  Record* record = _record;
  while (record && record->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
  {
    Record* const cause = std::exchange(record->cause._record, nullptr);
    record->~Record();
    FreeMemory(record, sizeof(Record));
    record = cause;
  }
}

Error Error::Make(ErrorClass errorClass, const String& message, const Char* file, Int32 line, const Error& cause) noexcept
{
  void* const memory = AllocateMemory(sizeof(Record));
  if (!memory)
    return OutOfMemory();
  // The text may be a literal of a library that goes before the error does.
  Result<String> copy = message.Copy();
  return Error(::new (memory) Record{1, errorClass, copy.HasError() ? message : copy.GetValue(), file, line, cause});
}

Error Error::OutOfMemory() noexcept
{
  Record& record = GetOutOfMemoryRecord();
  record.references.fetch_add(1, std::memory_order_relaxed);
  return Error(&record);
}

Error::Record& Error::GetOutOfMemoryRecord() noexcept
{
  // Its first reference is never given back, and no destructor runs at exit: errors of static objects may outlive it there.
  alignas(Record) static Byte memory[sizeof(Record)];
  static Record* const record =
    ::new (memory) Record{1, ErrorClass::kOutOfMemory, "Out of memory. "_s, __FILE__, __LINE__, Error()};
  return *record;
}

ErrorClass Error::GetClass() const noexcept
{
  return _record->errorClass;
}
const String& Error::GetMessage() const noexcept
{
  return _record->message;
}
const Char* Error::GetFile() const noexcept
{
  return _record->file;
}
Int32 Error::GetLine() const noexcept
{
  return _record->line;
}
const Error& Error::GetCause() const noexcept
{
  return _record->cause;
}

}  // namespace q7z
