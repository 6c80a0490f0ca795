// What the thread sanitizer cannot know: the job library comes as a package that was not built for it, so the order that it makes
// between its threads is not seen, and its own use of memset and its like would be taken for races.

extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions()
{
  return "called_from_lib:libtbb.so\n";
}
