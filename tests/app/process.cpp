#include "tests/app/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace q7z::test
{

namespace
{

constexpr auto kLongestRun = std::chrono::seconds(100);

std::array<int, 2> MakePipe()
{
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  return ends;
}

/// A terminal: the side that reads, and the one that the program writes to.
std::array<int, 2> MakeTerminal()
{
  const int reader = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (reader < 0 || grantpt(reader) != 0 || unlockpt(reader) != 0)
    throw std::runtime_error("no terminal");
  return {reader, open(ptsname(reader), O_WRONLY | O_NOCTTY | O_CLOEXEC)};
}

std::vector<char*> ToPointers(std::vector<std::string>& texts)
{
  std::vector<char*> pointers;
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

void Close(int& fd)
{
  if (fd >= 0)
    close(fd);
  fd = -1;
}

/// What is there to read, at the end of text. Closes at the end of the stream.
void Take(int& fd, std::string& text)
{
  std::array<char, 65536> block;
  const ssize_t count = read(fd, block.data(), block.size());
  if (count > 0)
    text.append(block.data(), static_cast<size_t>(count));
  else if (count == 0 || errno != EINTR)
    Close(fd);
}

}  // namespace

Process::Process(const std::string& program, const std::vector<std::string>& arguments, const RunSettings& settings)
{
  signal(SIGPIPE, SIG_IGN);  // a program that does not read its stdin is no fault of the test's
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "TMPDIR=" Q7Z_TEST_TEMP_DIR};
  for (const char* const kept : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "LLVM_PROFILE_FILE"})
  {
    if (const char* const value = getenv(kept))
      variables.push_back(std::string(kept) + "=" + value);
  }
  for (const auto& [name, value] : settings.environment)
  {
    std::erase_if(variables, [&, prefix = name + "="](const std::string& text) { return text.starts_with(prefix); });
    variables.push_back(name + "=" + value);
  }
  const std::vector<char*> argv = ToPointers(words);
  const std::vector<char*> envp = ToPointers(variables);
  std::array<int, 2> input = MakePipe();
  std::array<int, 2> out = MakePipe();
  std::array<int, 2> err = settings.errIsTerminal ? MakeTerminal() : MakePipe();
  _id = fork();
  if (_id < 0)
    throw std::runtime_error("no process");
  if (_id == 0)
  {
    signal(SIGPIPE, SIG_DFL);
    dup2(input[0], STDIN_FILENO);
    dup2(settings.outPath.empty() ? out[1] : open(settings.outPath.c_str(), O_WRONLY), STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    if (!settings.folder.empty() && chdir(settings.folder.c_str()) != 0)
      _exit(126);
    execve(program.c_str(), argv.data(), envp.data());
    _exit(127);
  }
  close(input[0]);
  close(out[1]);
  close(err[1]);
  _input = input[1];
  _out = out[0];
  _err = err[0];
}

Process::~Process()
{
  if (_id > 0)
  {
    kill(_id, SIGKILL);
    waitpid(_id, nullptr, 0);
  }
  Close(_input);
  Close(_out);
  Close(_err);
}

bool Process::Write(const std::string& text)
{
  size_t done = 0;
  while (done < text.size())
  {
    const ssize_t count = write(_input, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR)
      return false;
    done += static_cast<size_t>(std::max<ssize_t>(count, 0));
  }
  return true;
}

void Process::Signal(int signal)
{
  kill(_id, signal);
}

bool Process::WaitForFullOutput()
{
  const int capacity = fcntl(_out, F_GETPIPE_SZ);
  int byteCount = 0;
  for (int wait = 0; byteCount < capacity && wait < 60000; ++wait)
  {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (ioctl(_out, FIONREAD, &byteCount) != 0)
      return false;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  return byteCount == capacity;
}

RunResult Process::Finish(const std::string& input)
{
  RunResult result;
  size_t done = 0;
  fcntl(_input, F_SETFL, O_NONBLOCK);
  const auto end = std::chrono::steady_clock::now() + kLongestRun;
  while (_out >= 0 || _err >= 0)
  {
    if (done == input.size())
      Close(_input);
    std::array<pollfd, 3> waits = {{{_out, POLLIN, 0}, {_err, POLLIN, 0}, {_input, POLLOUT, 0}}};
    if (std::chrono::steady_clock::now() > end || poll(waits.data(), waits.size(), 1000) < 0)
    {
      kill(_id, SIGKILL);
      break;
    }
    if (waits[0].revents)
      Take(_out, result.out);
    if (waits[1].revents)
      Take(_err, result.err);
    if (waits[2].revents)
    {
      const ssize_t count = write(_input, input.data() + done, input.size() - done);
      done = count < 0 && errno != EAGAIN ? input.size() : done + static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
  }
  int status = 0;
  rusage usage = {};
  wait4(_id, &status, 0, &usage);
  _id = -1;
  result.peakKilobytes = usage.ru_maxrss;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  return result;
}

RunResult RunTool(const std::vector<std::string>& arguments, const RunSettings& settings)
{
  return Process(Q7Z_TEST_BIN_DIR "/q7z", arguments, settings).Finish(settings.input);
}

}  // namespace q7z::test
