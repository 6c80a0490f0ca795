#pragma once

// What the program asks of the operating system about itself: its arguments, where it lies, its streams, interruption. One source
// for each system stands behind it (posixprocess.cpp, windowsprocess.cpp).

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "framework/types.h"

namespace q7z
{

/// The arguments as UTF-8, and streams that carry bytes as they are. The first object of main; lives as long as the process.
class PlatformProcess
{
public:
  PlatformProcess(int argc, char** argv);
  PlatformProcess(const PlatformProcess&) = delete;
  PlatformProcess& operator=(const PlatformProcess&) = delete;
  ~PlatformProcess();

  int GetArgumentCount() const noexcept { return static_cast<int>(_pointers.size()) - 1; }
  /// Ends with a null; the texts belong to this object or to the system.
  char** GetArguments() noexcept { return _pointers.data(); }

private:
  std::vector<std::string> _texts;
  std::vector<char*> _pointers;
  [[maybe_unused]] UInt32 _consoleCodePage = 0;  // on Windows: to be set again at the end; 0 for none
};

/// The folder in which the program lies; empty when that cannot be told.
std::string GetProgramFolder();

bool IsTerminal(std::FILE* stream) noexcept;
/// Whether escape sequences move the cursor and set colours there.
bool TakesEscapes(std::FILE* stream) noexcept;
/// Whether text is UTF-8 there whatever the environment says.
extern const Bool kIsAlwaysUtf8;

/// Has the function called with SIGINT or SIGTERM instead of ending the process; on a thread or in a place where it may do no more
/// than an atomic store.
void CatchInterrupts(void (*function)(int signal));

/// A hint: bytes are about to be taken in small pieces, most of which stay until the end. Room for them is set aside in one piece.
/// @param likely  these will be taken; they are fetched in large pages, which come many times faster, where the system gives them.
/// @param most  more will not be taken; what is not used of it costs nothing.
void ExpectAllocations(Int likely, Int most) noexcept;

/// Has the pages of large memory fetched ahead of their use by a thread that lasts as long as the process. Does nothing where the
/// system cannot, or with a single processor.
void StartFetchingPages() noexcept;

/// Reads from stdin while it lives, and lets an interruption end a wait.
class InterruptibleInput
{
public:
  InterruptibleInput();
  ~InterruptibleInput();
  InterruptibleInput(const InterruptibleInput&) = delete;
  InterruptibleInput& operator=(const InterruptibleInput&) = delete;

  /// Waits for something to read. @param isInterrupted  asked before each wait. @return the bytes read; 0 at the end, or when
  /// interrupted; -1 when it cannot be read, errno tells why.
  Int Read(void* target, Int byteCount, bool (*isInterrupted)());

private:
  struct State;
  std::unique_ptr<State> _state;
};

}  // namespace q7z
