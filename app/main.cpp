// q7z: the headless host on the command line.

#include <cstdio>
#include <exception>
#include <new>

#include "app/arguments.h"
#include "app/exitcode.h"
#include "app/run.h"
#include "host/platform/process.h"

int main(int argc, char** argv)
{
  using namespace q7z::app;
  try
  {
    q7z::PlatformProcess process(argc, argv);
    Arguments arguments;
    if (const std::optional<int> code = ParseArguments(process.GetArgumentCount(), process.GetArguments(), arguments))
      return *code;
    return Run(arguments);
  }
  catch (const std::bad_alloc&)
  {
    std::fputs("q7z: out of memory\n", stderr);
    return kOutOfMemory;
  }
  catch (const std::exception& error)
  {
    std::fprintf(stderr, "q7z: %s\n", Escape(error.what()).c_str());
    return kNoAccess;
  }
}
