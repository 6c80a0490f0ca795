# Reads the include lines of sources, named by their paths from the root of the sources, and prints each one that points the
# wrong way as `file:line: text`. Ends with status 1 if there was one, or if there was nothing to read.

BEGIN {
  # Headers of the C++ standard library; all that framework/, plugin/ and every header of ours may take from outside.
  split("algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits " \
    "clocale cmath compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib " \
    "cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream functional future " \
    "initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new " \
    "numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex " \
    "source_location span sstream stack stdexcept stop_token streambuf string string_view syncstream system_error thread tuple " \
    "type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version", names, " ")
  for (i in names)
    standard[names[i]] = 1

  # The one call of the operating system below the host: large pages, a hint that other systems go without.
  exception["framework/memory.cpp <sys/mman.h>"] = 1

  # What a layer may include of ours, by the beginning of the path. The first layer whose pattern fits a file is its own.
  layer("^framework/", "framework/")
  layer("^plugin/module/host[^/]*\\.h$", "framework/ plugin/module/host*.h")
  layer("^plugin/document/", "framework/ plugin/module/ plugin/document/")
  layer("^plugin/", "framework/ plugin/")
  layer("^host/", "framework/ plugin/module/host*.h host/")
  layer("^app/", "framework/ plugin/module/host*.h host/ app/")
}

function layer(pattern, allowed)
{
  ++layerCount
  layerPattern[layerCount] = pattern
  layerAllowed[layerCount] = allowed
}

function layerOf(file,   i)
{
  for (i = 1; i <= layerCount; ++i)
    if (file ~ layerPattern[i])
      return i
  return 0
}

function isAllowed(path, allowed,   i, count, entries)
{
  count = split(allowed, entries, " ")
  for (i = 1; i <= count; ++i)
    if (entries[i] == "plugin/module/host*.h" ? path ~ /^plugin\/module\/host[^\/]*\.h$/ : index(path, entries[i]) == 1)
      return 1
  return 0
}

function exists(path,   status, line)
{
  if (!(path in found))
  {
    status = (getline line < path)
    close(path)
    found[path] = status >= 0
  }
  return found[path]
}

function report(text)
{
  print FILENAME ":" FNR ": " text
  ++reports
}

FNR == 1 {
  current = layerOf(FILENAME)
  ++files
}

/^[ \t]*#[ \t]*include/ {
  rest = $0
  sub(/^[ \t]*#[ \t]*include[ \t]*/, "", rest)
  path = rest
  if (rest ~ /^"[^"]*"/)
  {
    sub(/^"/, "", path)
    sub(/".*$/, "", path)
    if (path ~ /(^|\/)\.\.?(\/|$)/ || !exists(path))
      report("\"" path "\" is not spelled from the root of the sources")
    else if (current && !isAllowed(path, layerAllowed[current]))
      report("\"" path "\" lies outside of " layerAllowed[current])
  }
  else if (rest ~ /^<[^>]*>/)
  {
    sub(/^</, "", path)
    sub(/>.*$/, "", path)
    # Third-party and system headers belong to single sources of the host and the program.
    if (current && !(path in standard) && !((FILENAME " <" path ">") in exception) && (FILENAME ~ /^(framework|plugin)\// || FILENAME ~ /\.h$/))
      report("<" path "> is not a header of the standard library")
  }
  else
    report("an include must name its file")
}

END {
  if (!files)
    print "no sources to read"
  exit (reports > 0 || !files)
}
