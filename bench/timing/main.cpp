// q7z_timing [--runs N] [--warmups N] [--order turns|blocks] -- NAME PROGRAM [ARG...] [-- NAME PROGRAM [ARG...]]...
//
// Times whole processes against each other, each from its start to its end: in turns, A B C A B C ..., so that a disturbance of the
// machine meets all of them alike, or in blocks, A A A B B B ..., so that each finds the machine as it leaves it itself. Their output is thrown away. For each program one line with tabs: name, median, smallest and largest
// milliseconds, median of the peak memory in MB (10^6 bytes). A program that fails ends it all, and what it said on stderr is
// shown.

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

struct Run
{
  double milliseconds = 0;
  double peakMegabytes = 0;
};

struct Program
{
  std::string name;
  std::vector<char*> words;  // not owned, a null at the end
  std::vector<Run> runs;
};

struct Arguments
{
  int runs = 5;
  int warmups = 1;
  bool inBlocks = false;
  std::vector<Program> programs;
};

bool ReadCount(const char* text, int low, int& count)
{
  const char* const end = text + std::strlen(text);
  const std::from_chars_result result = std::from_chars(text, end, count);
  return result.ec == std::errc() && result.ptr == end && count >= low;
}

bool ReadOrder(std::string_view text, bool& inBlocks)
{
  inBlocks = text == "blocks";
  return inBlocks || text == "turns";
}

std::optional<Arguments> ReadArguments(int argc, char** argv)
{
  Arguments arguments;
  int i = 1;
  for (; i + 1 < argc && std::string_view(argv[i]) != "--"; i += 2)
  {
    const std::string_view word = argv[i];
    const bool known = (word == "--runs" && ReadCount(argv[i + 1], 1, arguments.runs)) ||
                       (word == "--warmups" && ReadCount(argv[i + 1], 0, arguments.warmups)) ||
                       (word == "--order" && ReadOrder(argv[i + 1], arguments.inBlocks));
    if (!known)
      return std::nullopt;
  }
  while (i < argc)
  {
    Program program;
    for (++i; i < argc && std::string_view(argv[i]) != "--"; ++i)
    {
      if (program.name.empty())
        program.name = argv[i];
      else
        program.words.push_back(argv[i]);
    }
    if (program.words.empty())
      return std::nullopt;
    program.words.push_back(nullptr);
    arguments.programs.push_back(std::move(program));
  }
  if (arguments.programs.empty())
    return std::nullopt;
  return arguments;
}

// The files that a timed process finds open: nothing to read, its output thrown away, its errors kept.
class ProcessFiles
{
public:
  explicit ProcessFiles(int errors)
  {
    posix_spawn_file_actions_init(&_actions);
    posix_spawn_file_actions_addopen(&_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&_actions, errors, STDERR_FILENO);
  }
  ~ProcessFiles() { posix_spawn_file_actions_destroy(&_actions); }
  ProcessFiles(const ProcessFiles&) = delete;
  ProcessFiles& operator=(const ProcessFiles&) = delete;
  const posix_spawn_file_actions_t* Get() const { return &_actions; }

private:
  posix_spawn_file_actions_t _actions;
};

// @return nothing if the program could not be started or did not end with status 0; `failure` tells which
std::optional<Run> RunOnce(const Program& program, int errors, std::string& failure)
{
  const ProcessFiles files(errors);
  pid_t child = 0;
  const auto begin = std::chrono::steady_clock::now();
  const int error = posix_spawnp(&child, program.words[0], files.Get(), nullptr, program.words.data(), environ);
  if (error != 0)
  {
    failure = std::string("cannot be started: ") + std::strerror(error);
    return std::nullopt;
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child)
  {
    failure = "was lost";
    return std::nullopt;
  }
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - begin;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
    return Run{elapsed.count(), static_cast<double>(usage.ru_maxrss) * 1024 / 1e6};
  failure = WIFEXITED(status) ? "ended with status " + std::to_string(WEXITSTATUS(status))
                              : "was ended by signal " + std::to_string(WTERMSIG(status));
  return std::nullopt;
}

void CopyErrors(std::FILE* errors)
{
  std::rewind(errors);
  char text[4096];
  while (const std::size_t length = std::fread(text, 1, sizeof(text), errors))
    std::fwrite(text, 1, length, stderr);
}

// @return whether the program could be run and did well
bool Time(Program& program, bool counts, std::FILE* errors)
{
  std::string failure;
  const bool cleared = ftruncate(fileno(errors), 0) == 0 && lseek(fileno(errors), 0, SEEK_SET) == 0;
  const std::optional<Run> result = cleared ? RunOnce(program, fileno(errors), failure) : std::nullopt;
  if (!result)
  {
    CopyErrors(errors);
    std::fprintf(stderr, "q7z_timing: %s (%s) %s\n", program.name.c_str(), program.words[0], failure.c_str());
    return false;
  }
  if (counts)
    program.runs.push_back(*result);
  return true;
}

// @return whether all runs of all programs went well
bool TimeAll(Arguments& arguments, std::FILE* errors)
{
  const int rounds = arguments.warmups + arguments.runs;
  const int programs = static_cast<int>(arguments.programs.size());
  for (int i = 0; i < rounds * programs; ++i)
  {
    const int round = arguments.inBlocks ? i % rounds : i / programs;
    const int program = arguments.inBlocks ? i / rounds : i % programs;
    if (!Time(arguments.programs[static_cast<std::size_t>(program)], round >= arguments.warmups, errors))
      return false;
  }
  return true;
}

std::vector<double> Sorted(const std::vector<Run>& runs, double Run::* member)
{
  std::vector<double> values;
  for (const Run& run : runs)
    values.push_back(run.*member);
  std::sort(values.begin(), values.end());
  return values;
}

double Median(const std::vector<double>& sorted)
{
  return (sorted[(sorted.size() - 1) / 2] + sorted[sorted.size() / 2]) / 2;
}

}  // namespace

int main(int argc, char** argv)
{
  std::optional<Arguments> arguments = ReadArguments(argc, argv);
  if (!arguments)
  {
    std::fputs("usage: q7z_timing [--runs N] [--warmups N] [--order turns|blocks] -- NAME PROGRAM [ARG...]\n"
               "                  [-- NAME PROGRAM [ARG...]]...\n",
               stderr);
    return 2;
  }
  std::FILE* const errors = std::tmpfile();
  if (errors == nullptr)
  {
    std::perror("q7z_timing: a temporary file");
    return 3;
  }
  const bool allWell = TimeAll(*arguments, errors);
  std::fclose(errors);
  if (!allWell)
    return 1;
  for (const Program& program : arguments->programs)
  {
    const std::vector<double> times = Sorted(program.runs, &Run::milliseconds);
    const std::vector<double> peaks = Sorted(program.runs, &Run::peakMegabytes);
    std::printf("%s\t%.3f\t%.3f\t%.3f\t%.1f\n", program.name.c_str(), Median(times), times.front(), times.back(), Median(peaks));
  }
  return 0;
}
