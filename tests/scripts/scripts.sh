#!/bin/sh
# scripts.sh ROOT: runs copies of ./q7z and ./check with stand-ins for dpkg-query, apt-get, cmake and ctest in front of the real ones.
set -eu
root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tree=$work/tree
mkdir -p "$tree/cmake" "$work/bin"
cp "$root/q7z" "$root/check" "$tree/"
cp "$root/cmake/setup.sh" "$tree/cmake/"
printf '# needs\n[run]\nbuilder\nlibrary-dev\n\n[test]\nasserter\n\n[ci]\npolisher\n' >"$tree/cmake/packages.txt"
calls=$work/calls
failures=0
cases=0

# A stand-in notes its call, then runs the lines given.
stand_in()
{
  printf '#!/bin/sh\necho "%s $*" >>"%s"\n%s\n' "$1" "$calls" "$2" >"$work/bin/$1"
  chmod +x "$work/bin/$1"
}

# check NAME WANTED SAID
check()
{
  cases=$((cases + 1))
  [ "$2" = "$3" ] || { printf '%s\n  wanted: %s\n  said:   %s\n' "$1" "$2" "$3"; failures=$((failures + 1)); }
}

# run COMMAND...: leaves `status`, `out`, `err` and the noted calls behind.
run()
{
  : >"$calls"
  status=0
  PATH="$work/bin:$PATH" "$@" >"$work/out" 2>"$work/err" || status=$?
  out=$(cat "$work/out")
  err=$(cat "$work/err")
}

called() { grep "^$1 " "$calls" || true; }

reset()
{
  rm -rf "$tree/build"
  stand_in dpkg-query 'printf "builder installed\nlibrary-dev installed\nasserter installed\n"'
  stand_in apt-get 'cat; echo noise'  # reads what stdin offers, as the real one may
  stand_in id 'echo 0'
  stand_in ctest 'echo "100% tests passed"; exit 8'
  stand_in cmake "case \$1 in
  --preset) mkdir -p build/\$2; touch build/\$2/build.ninja;;
  --build) mkdir -p \$2/bin; printf '#!/bin/sh\necho \"args:\$*\"; cat; exit 42\n' >\$2/bin/q7z; chmod +x \$2/bin/q7z; cat; echo noise;;
esac"
}

reset
run "$tree/q7z" inspect 'a b.glb' <<'TXT'
from stdin
TXT
check "first run: status is the program's" 42 $status
check "first run: stdout is the program's, stdin reaches it" "args:inspect a b.glb
from stdin" "$out"
check "first run: one line on stderr" "q7z: building; this happens once" "$err"
check "first run: installs nothing" "" "$(called apt-get)"
check "first run: configures" "cmake --preset release -DQ7Z_TESTS=OFF -DQ7Z_BENCHMARKS=OFF -DQ7Z_WERROR=OFF" "$(called 'cmake --preset')"

run "$tree/q7z" hash </dev/null
check "second run: silent" "" "$err"
check "second run: does not configure again" "" "$(called 'cmake --preset')"
check "second run: looks whether the build is up to date" "cmake --build $tree/build/release --target q7z_app io_gltf" \
  "$(called 'cmake --build')"

ln -s "$tree/q7z" "$work/link"
run "$work/link" hash </dev/null
check "through a link" 42 $status

reset
stand_in dpkg-query 'printf "builder installed\nasserter config-files\n"'
run "$tree/q7z" <<'TXT'
from stdin
TXT
check "missing package: stdin is left to the program" "args:
from stdin" "$out"
check "missing package: updates, then installs it" "apt-get update
apt-get install -y --no-install-recommends library-dev" "$(called apt-get)"
check "missing package: says so" "q7z: installing library-dev
q7z: building; this happens once" "$err"
check "missing package: runs" 42 $status

run "$tree/check" -R some </dev/null
check "tests: install what they need on top" "apt-get install -y --no-install-recommends library-dev asserter" \
  "$(called 'apt-get install')"
check "tests: arguments reach ctest" 1 "$(called ctest | grep -c -- '-R some$')"
check "tests: status is ctest's" 8 $status
check "tests: ctest has the last word" "100% tests passed" "$(tail -n 1 "$work/out")"

reset
stand_in dpkg-query 'echo "builder installed"'
stand_in apt-get 'echo "E: Unable to locate package library-dev" >&2; exit 100'
run "$tree/q7z" </dev/null
check "no such package: status" 3 $status
check "no such package: nothing on stdout" "" "$out"
check "no such package: one clear line" \
  "q7z: cannot install library-dev (E: Unable to locate package library-dev); install them by hand" \
  "$(printf '%s\n' "$err" | sed -n 2p)"

reset
stand_in dpkg-query 'echo "builder installed"'
stand_in id 'echo 1000'
stand_in sudo 'shift; exec "$@"'
run "$tree/q7z" </dev/null
check "another user: installs through sudo" "sudo -n apt-get update
sudo -n env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends library-dev" "$(called sudo)"
check "another user: runs" 42 $status

reset
run "$tree/q7z" </dev/null
stand_in cmake 'echo "main.cpp:1: error"; exit 1'
run "$tree/q7z" </dev/null
check "failing build: status" 3 $status
check "failing build: nothing old is run" "" "$out"
check "failing build: shown on stderr" "main.cpp:1: error
q7z: not built; nothing was run" "$err"
run "$tree/check" </dev/null
check "tests: a failing build runs no test" "" "$(called ctest)"
check "tests: a failing build fails" 1 $((status != 0))

echo "$cases cases, $failures failed"
[ $failures = 0 ]
