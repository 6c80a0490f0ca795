#!/bin/sh
# layering.sh ROOT: fails with file and line where an include of the sources under ROOT points the wrong way.
set -eu
rules=$(cd "$(dirname "$0")" && pwd)/layering.awk
cd "$1"
folders=
for folder in framework plugin host app tests bench samples; do
  [ ! -d $folder ] || folders="$folders $folder"
done
find $folders -name '*.h' -o -name '*.cpp' | sort | xargs awk -f "$rules"
