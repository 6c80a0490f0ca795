#include "app/stdincopy.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "app/signals.h"

namespace q7z::app
{

namespace
{

/// Waits until stdin has something, or has ended. @return false when a signal ended the wait; signals in between are not lost,
/// since they are let in by the wait alone.
bool WaitForStdin(const sigset_t& waitMask)
{
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  while (InterruptGuard::GetSignal() == 0)
  {
    if (ppoll(&input, 1, nullptr, &waitMask) >= 0 || errno != EINTR)
      return true;
  }
  return false;
}

/// Writes stdin to a file. @return 0, also after a signal, or the error's number.
int DrainStdin(int fd, const sigset_t& waitMask)
{
  std::string block(1 << 20, '\0');
  while (WaitForStdin(waitMask))
  {
    const ssize_t count = read(STDIN_FILENO, block.data(), block.size());
    if (count < 0)
      return errno;
    if (count == 0)
      return 0;
    for (ssize_t done = 0; done < count;)
    {
      const ssize_t written = write(fd, block.data() + done, static_cast<size_t>(count - done));
      if (written < 0)
        return errno;
      done += written;
    }
  }
  return 0;
}

}  // namespace

StdinCopy::~StdinCopy()
{
  if (!_path.empty())
    unlink(_path.c_str());
  if (!_folder.empty())
    rmdir(_folder.c_str());
}

std::string StdinCopy::Read(const std::string& name)
{
  const char* const parent = std::getenv("TMPDIR");
  _folder = std::string(parent && *parent ? parent : "/tmp") + "/q7z-stdin-XXXXXX";
  const std::string failure = "cannot keep stdin in a temporary file: ";
  if (!mkdtemp(_folder.data()))
  {
    _folder.clear();
    return failure + std::strerror(errno);
  }
  _path = _folder + "/" + name;
  const int fd = open(_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0)
    return failure + std::strerror(errno);
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGINT);
  sigaddset(&blocked, SIGTERM);
  sigprocmask(SIG_BLOCK, &blocked, &before);
  const int reason = DrainStdin(fd, before);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  close(fd);
  return reason ? failure + std::strerror(reason) : "";
}

}  // namespace q7z::app
