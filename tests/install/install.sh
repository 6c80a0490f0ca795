#!/bin/sh
# install.sh BUILD SOURCE program|host: installs a build, moves what was installed elsewhere, and uses it there.
# `program` runs q7z, `host` builds the small host against the installed headers and lets it load the installed module.
set -eu
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >"$work/log" || { cat "$work/log"; exit 1; }
mv "$work/first" "$work/moved"
cd "$work"

# wanted NAME EXPECTED SAID
wanted()
{
  [ "$2" = "$3" ] || { printf '%s\n  wanted: %s\n  said:   %s\n' "$1" "$2" "$3"; exit 1; }
}

case $3 in
  program)
    cp "$source/samples/scene.glb" "$work/scene.glb"
    wanted "inspect tells the same as in the build" "$("$build/bin/q7z" inspect scene.glb)" "$(moved/bin/q7z inspect scene.glb)"
    moved/bin/q7z import scene.glb out.q7z.json
    [ -s out.q7z.json ] || { echo "import wrote nothing"; exit 1; }
    # Without the module there is nothing to run, and the path that was tried is named.
    rm moved/lib/q7z/io_gltf.so
    status=0
    said=$(moved/bin/q7z inspect scene.glb 2>&1) || status=$?
    wanted "without the module: status" 3 "$status"
    case $said in *io_gltf.so*) ;; *) wanted "without the module: names it" io_gltf.so "$said" ;; esac
    ;;
  host)
    { cmake -S "$source/tests/install/host" -B host -G Ninja -DCMAKE_PREFIX_PATH="$work/moved" && cmake --build host; } >"$work/log" 2>&1 ||
      { cat "$work/log"; exit 1; }
    wanted "the small host" "interface 5, too old a host -3" "$(host/smallhost moved/lib/q7z/io_gltf.so)"
    ;;
esac
echo "$3 works from the installed tree"
