#pragma once

// What people read: console lines, diagnostic output, resource texts.

#include "framework/string.h"
#include "plugin/module/hosttables.h"

namespace q7z
{

enum class HostDiagnosticLevel : Int32
{
  kDiagnostic,
  kCritical,
};

class HostConsoleTable
{
public:
  virtual void Print(const String& line) noexcept = 0;
  /// @param file  the source file that speaks, with its line. Zero-terminated.
  virtual void Diagnostic(HostDiagnosticLevel level, const String& line, const Char* file, Int32 sourceLine) noexcept = 0;

protected:
  ~HostConsoleTable() = default;
};

class HostResourceTable
{
public:
  /// Loads the module's string resources. @return false when they are missing or broken.
  virtual Bool Load() noexcept = 0;
  /// The text of a number; empty when there is none.
  virtual String GetString(Int32 number) noexcept = 0;

protected:
  ~HostResourceTable() = default;
};

inline void HostConsolePrint(const String& line) noexcept { g_hostTables->console->Print(line); }
inline String HostLoadString(Int32 number) noexcept { return g_hostTables->resource->GetString(number); }

}  // namespace q7z

/// A line of the framework's diagnostic output; line is a String.
#define HOST_DIAGNOSTIC(line) \
  ::q7z::g_hostTables->console->Diagnostic(::q7z::HostDiagnosticLevel::kDiagnostic, line, __FILE__, __LINE__)
