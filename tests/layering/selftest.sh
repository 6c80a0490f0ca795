#!/bin/sh
# Lays small trees out and compares what layering.sh says about each with what it must say: it fails where it should, and only there.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0
cases=0

# expect FILE INCLUDE [TEXT]: the file with this one include behind two other lines; TEXT is the fault, nothing if there is none.
expect()
{
  cases=$((cases + 1))
  saved=$(cat "$tree/$1" 2>/dev/null || true)
  mkdir -p "$tree/$(dirname "$1")"
  printf '#pragma once\n\n%s\n' "$2" >"$tree/$1"
  status=0
  said=$("$here/layering.sh" "$tree" 2>&1) || status=$?
  if [ $# = 3 ]; then wanted="$1:3: $3"; else wanted=; fi
  if [ "$said" != "$wanted" ] || { [ -z "$wanted" ] && [ $status != 0 ]; } || { [ -n "$wanted" ] && [ $status = 0 ]; }; then
    printf '%s with %s\n  wanted: %s\n  said:   %s (status %s)\n' "$1" "$2" "$wanted" "$said" "$status"
    failures=$((failures + 1))
  fi
  printf '%s' "$saved" >"$tree/$1"
}

for file in framework/types.h plugin/module/hostfile.h plugin/module/options.h plugin/document/gltfdata.h plugin/import/gltfmesh.h \
  host/scene/object.h app/arguments.h tests/support/glbbuilder.h; do
  mkdir -p "$tree/$(dirname $file)"
  : >"$tree/$file"
done

outside="lies outside of"
hostLayer="framework/ plugin/module/host*.h host/"
documentLayer="framework/ plugin/module/ plugin/document/"
notStandard="is not a header of the standard library"
notRoot="is not spelled from the root of the sources"

expect framework/a.cpp '#include "framework/types.h"'
expect framework/a.cpp '#include <type_traits>'
expect framework/a.cpp '#include "plugin/module/hostfile.h"' "\"plugin/module/hostfile.h\" $outside framework/"
expect framework/a.h '#include <simdjson.h>' "<simdjson.h> $notStandard"
expect framework/a.h '#include <unistd.h>' "<unistd.h> $notStandard"
expect framework/memory.cpp '#include <sys/mman.h>'
expect framework/memory.cpp '#include <unistd.h>' "<unistd.h> $notStandard"
expect framework/a.cpp '#include <sys/mman.h>' "<sys/mman.h> $notStandard"
expect plugin/module/hosttag.h '#include "plugin/module/hostfile.h"  // the file'
expect plugin/module/hosttag.h '#include "plugin/module/options.h"' "\"plugin/module/options.h\" $outside framework/ plugin/module/host*.h"
expect plugin/document/a.cpp '#include "plugin/module/options.h"'
expect plugin/document/a.cpp '#include "plugin/document/gltfdata.h"'
expect plugin/document/a.cpp '#include "plugin/import/gltfmesh.h"' "\"plugin/import/gltfmesh.h\" $outside $documentLayer"
expect plugin/import/a.cpp '#include "plugin/document/gltfdata.h"'
expect plugin/import/a.cpp '#include "host/scene/object.h"' "\"host/scene/object.h\" $outside framework/ plugin/"
expect plugin/import/a.cpp '  #  include   "host/scene/object.h"' "\"host/scene/object.h\" $outside framework/ plugin/"
expect plugin/import/a.cpp '#include <tbb/parallel_for.h>' "<tbb/parallel_for.h> $notStandard"
expect host/a.cpp '#include "plugin/module/hostfile.h"'
expect host/a.cpp '#include <simdjson.h>'
expect host/a.h '#include <simdjson.h>' "<simdjson.h> $notStandard"
expect host/a.cpp '#include "plugin/module/options.h"' "\"plugin/module/options.h\" $outside $hostLayer"
expect host/a.cpp '#include "plugin/document/gltfdata.h"' "\"plugin/document/gltfdata.h\" $outside $hostLayer"
expect host/a.cpp '#include "app/arguments.h"' "\"app/arguments.h\" $outside $hostLayer"
expect app/a.cpp '#include "host/scene/object.h"'
expect app/a.cpp '#include "plugin/import/gltfmesh.h"' "\"plugin/import/gltfmesh.h\" $outside framework/ plugin/module/host*.h host/ app/"
expect app/a.cpp '#include "arguments.h"' "\"arguments.h\" $notRoot"
expect app/a.cpp '#include "app/../plugin/import/gltfmesh.h"' "\"app/../plugin/import/gltfmesh.h\" $notRoot"
expect tests/plugin/a.cpp '#include "plugin/import/gltfmesh.h"'
expect tests/plugin/a.cpp '#include "glbbuilder.h"' "\"glbbuilder.h\" $notRoot"
expect plugin/import/a.cpp '#include FILE_OF_THE_DAY' "an include must name its file"

# Nothing to read is a fault too: a moved folder must not pass in silence.
empty=$(mktemp -d)
mkdir "$empty/framework"
if "$here/layering.sh" "$empty" >/dev/null 2>&1; then
  echo "an empty tree passed"
  failures=$((failures + 1))
fi
rm -rf "$empty"

echo "$cases cases, $failures failed"
[ $failures = 0 ]
