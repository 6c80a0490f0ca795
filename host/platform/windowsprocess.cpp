// The program and its surroundings on Windows.

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>

#include "host/platform/platform.h"
#include "host/platform/process.h"
#include "host/platform/windowspath.h"

// Behind all headers of ours, since its macros rename what they meet.
#include <windows.h>
// Needs it.
#include <shellapi.h>

namespace q7z
{

namespace
{

std::atomic<void (*)(int)> g_onInterrupt{nullptr};
std::atomic<HANDLE> g_readingThread{nullptr};

HANDLE GetHandle(std::FILE* stream) noexcept
{
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// Runs on a thread of the system's own.
BOOL WINAPI OnConsoleEvent(DWORD event)
{
  const bool isKey = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  g_onInterrupt.load()(isKey ? SIGINT : SIGTERM);
  if (const HANDLE thread = g_readingThread.load())
    CancelSynchronousIo(thread);
  return TRUE;
}

}  // namespace

PlatformProcess::PlatformProcess(int, char**)
{
  // The C library's arguments have lost what the system's old character set cannot say.
  int count = 0;
  const std::unique_ptr<LPWSTR, decltype(&LocalFree)> texts(CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
  for (int i = 0; texts && i < count; ++i)
    _texts.push_back(ToUtf8(texts.get()[i]));
  for (std::string& text : _texts)
    _pointers.push_back(text.data());
  _pointers.push_back(nullptr);
  for (std::FILE* const stream : {stdin, stdout, stderr})
    _setmode(_fileno(stream), _O_BINARY);
  if (IsTerminal(stdout) || IsTerminal(stderr))
  {
    _consoleCodePage = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
  }
  TakesEscapes(stderr);  // for the progress bar
}

PlatformProcess::~PlatformProcess()
{
  std::fflush(nullptr);
  if (_consoleCodePage != 0)
    SetConsoleOutputCP(_consoleCodePage);
}

std::string GetProgramFolder()
{
  std::wstring path(MAX_PATH, L'\0');
  for (;;)
  {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size())
      return GetFolderOf(FromSystemPath(path.substr(0, length)));
    path.resize(path.size() * 2);
  }
}

const Bool kIsAlwaysUtf8 = true;

bool IsTerminal(std::FILE* stream) noexcept
{
  DWORD mode = 0;
  return GetConsoleMode(GetHandle(stream), &mode);
}

bool TakesEscapes(std::FILE* stream) noexcept
{
  DWORD mode = 0;
  const HANDLE console = GetHandle(stream);
  return GetConsoleMode(console, &mode) && SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

void ExpectAllocations(Int, Int) noexcept
{}

void StartFetchingPages() noexcept
{}

void CatchInterrupts(void (*function)(int signal))
{
  g_onInterrupt.store(function);
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

struct InterruptibleInput::State
{};

InterruptibleInput::InterruptibleInput()
{
  HANDLE thread = nullptr;
  DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0, FALSE, DUPLICATE_SAME_ACCESS);
  g_readingThread.store(thread);
}

InterruptibleInput::~InterruptibleInput()
{
  // Not closed: the handler's thread may hold it still.
  g_readingThread.store(nullptr);
}

Int InterruptibleInput::Read(void* target, Int byteCount, bool (*isInterrupted)())
{
  DWORD count = 0;
  if (isInterrupted() || ReadFile(GetHandle(stdin), target, static_cast<DWORD>(byteCount), &count, nullptr))
    return count;
  const DWORD reason = GetLastError();
  if (reason == ERROR_BROKEN_PIPE || reason == ERROR_HANDLE_EOF || isInterrupted())
    return 0;
  KeepReason();
  return -1;
}

}  // namespace q7z
