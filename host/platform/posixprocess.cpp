// The program and its surroundings by POSIX.

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "host/platform/process.h"

namespace q7z
{

PlatformProcess::PlatformProcess(int argc, char** argv) : _pointers(argv, argv + argc)
{
  _pointers.push_back(nullptr);
}

PlatformProcess::~PlatformProcess() = default;

std::string GetProgramFolder()
{
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

const Bool kIsAlwaysUtf8 = false;

bool IsTerminal(std::FILE* stream) noexcept
{
  return isatty(fileno(stream));
}

bool TakesEscapes(std::FILE* stream) noexcept
{
  const char* const terminal = std::getenv("TERM");
  return terminal && std::string_view(terminal) != "dumb" && IsTerminal(stream);
}

void CatchInterrupts(void (*function)(int signal))
{
  struct sigaction action = {};
  action.sa_handler = function;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

/// Signals in between are not lost, since they are let in by the wait alone.
struct InterruptibleInput::State
{
  sigset_t before;
};

InterruptibleInput::InterruptibleInput() : _state(std::make_unique<State>())
{
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  sigaddset(&blocked, SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, &_state->before);
}

InterruptibleInput::~InterruptibleInput()
{
  sigprocmask(SIG_SETMASK, &_state->before, nullptr);
}

Int InterruptibleInput::Read(void* target, Int byteCount, bool (*isInterrupted)())
{
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  while (!isInterrupted())
  {
    if (ppoll(&input, 1, nullptr, &_state->before) < 0 && errno == EINTR)
      continue;
    return read(STDIN_FILENO, target, static_cast<size_t>(byteCount));
  }
  return 0;
}

}  // namespace q7z
