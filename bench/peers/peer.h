#pragma once

// What the peers' programs have in common: `PROGRAM [OPTION...] IN [OUT]` loads one file in one process, and writes what it has
// loaded to OUT, in the form of OUT's suffix. Nothing is printed but, with --time, the milliseconds that this took.

#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <string_view>

namespace q7z::peers
{

struct Arguments
{
  std::string path;
  std::string out;  // empty for none
  bool time = false;
  bool arrays = false;  // --arrays, where the program knows it
};

/// @return false if the words make no sense; the usage was printed then
inline bool ReadArguments(int argc, char** argv, bool knowsArrays, Arguments& arguments)
{
  bool understood = true;
  for (int i = 1; i < argc; ++i)
  {
    const std::string_view word = argv[i];
    if (word == "--time")
      arguments.time = true;
    else if (word == "--arrays" && knowsArrays)
      arguments.arrays = true;
    else if (arguments.path.empty() && !word.starts_with("-"))
      arguments.path = word;
    else if (arguments.out.empty() && !word.starts_with("-"))
      arguments.out = word;
    else
      understood = false;
  }
  if (understood && !arguments.path.empty())
    return true;
  std::fprintf(stderr, "usage: %s [--time]%s IN [OUT]\n", argv[0], knowsArrays ? " [--arrays]" : "");
  return false;
}

/// Runs the load, and what follows, which returns the text of its failure or nothing. @return the exit status
inline int TimeLoad(const Arguments& arguments, const std::function<std::string()>& load)
{
  try
  {
    const auto begin = std::chrono::steady_clock::now();
    const std::string failure = load();
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - begin;
    if (!failure.empty())
    {
      std::fprintf(stderr, "%s: %s\n", arguments.path.c_str(), failure.c_str());
      return 1;
    }
    if (arguments.time)
      std::printf("%.3f\n", elapsed.count());
    return 0;
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "%s: %s\n", arguments.path.c_str(), error.what());
    return 1;
  }
}

}  // namespace q7z::peers
