#!/bin/sh
# compare.sh COMPARE BUILD: runs the comparison on tiny inputs with stand-ins for q7z, and sees that what cannot be timed is told.
set -eu
compare=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# Notes how it was called, and refuses what does not begin like a generated file.
cat >"$work/q7z" <<'TEXT'
#!/bin/sh
echo "$1 ${2##*/} ${3##*/} $4" >>"${0%/*}/calls"
case $(head -c 4 "$2") in
  glTF | '{"as') ;;
  *) exit 1 ;;
esac
TEXT
printf '#!/bin/sh\necho broken on purpose >&2\nexit 7\n' >"$work/broken"
chmod +x "$work/q7z" "$work/broken"

# expect WHAT STATUS TEXT ARG...: the comparison ends with that status, and the pattern is in what it says.
expect()
{
  what=$1
  wanted=$2
  text=$3
  shift 3
  status=0
  "$compare" --build "$build" --quick "$@" >"$work/said" 2>&1 || status=$?
  if [ $status != "$wanted" ] || ! grep -q -e "$text" "$work/said"; then
    printf '%s: wanted status %s and "%s", got %s and\n' "$what" "$wanted" "$text" $status
    cat "$work/said"
    failures=$((failures + 1))
  fi
}

number='[0-9.][0-9.]*'
expect everything 0 "^nodes.gltf  *400  *$number  *$number  *$number  *$number  *$number\$" --q7z "$work/q7z"
for row in grid.glb grid.gltf nodes.gltf small-1k.glb small-10k.glb small-100k.glb small-1m.glb \
  skin.glb morphs-4.glb morphs-50.glb animation.glb one-node.glb \
  convert-grid.glb convert-grid.gltf convert-nodes.gltf convert-skin.glb convert-textures.glb convert-animation.glb; do
  if ! grep -q "^$row  *$number  q7z  *$number  *$number  *$number  *$number\$" "$work/said"; then
    echo "no figures for $row"
    failures=$((failures + 1))
  fi
done
# A warm-up and a run for each of twelve rows and of six steps of doubling.
calls=$(grep -c '^import [a-z0-9-]*\.gl[tbf]* --report -$' "$work/calls" || true)
if [ "$calls" != 36 ]; then
  echo "36 calls wanted, these were made:"
  cat "$work/calls"
  failures=$((failures + 1))
fi
# And of each of five conversions without options.
calls=$(grep -c '^convert [a-z0-9-]*\.\(gl[tbf]*\) q7z\.\1 $' "$work/calls" || true)
if [ "$calls" != 10 ]; then
  echo "10 conversions wanted, these were made:"
  cat "$work/calls"
  failures=$((failures + 1))
fi
if [ -x "$build/bench/peer_tinygltf" ]; then
  expect "peers" 0 "tinygltf+arrays  *$number  *$number  *$number  *$number  *$number\$" --q7z "$work/q7z" --only grid.glb
fi

: >"$work/calls"
expect "one row" 0 '^small-1k.glb' --q7z "$work/q7z" --only small-1k.glb
if [ "$(sort -u "$work/calls")" != "import small-1000.glb --report -" ]; then
  echo "one row: other inputs were timed too"
  failures=$((failures + 1))
fi
mkdir "$work/inputs"
echo "no input" >"$work/inputs/small-1000.glb"
expect "kept inputs" 1 'small-1k.glb was not timed' --q7z "$work/q7z" --only small-1k.glb --inputs "$work/inputs"

expect "no q7z" 3 "no $work/missing; build it first" --q7z "$work/missing"
expect "broken q7z" 1 'broken on purpose' --q7z "$work/broken"
expect "broken q7z" 1 'ended with status 7' --q7z "$work/broken"
expect "no such row" 2 'there is no row grid$' --q7z "$work/q7z" --only grid
expect "no tools" 3 "no $work/bench/q7z_generate; build it first" --build "$work"
expect "no number" 2 'runs needs a number' --runs none
expect "no such order" 2 'order is turns or blocks' --order random
expect "no such option" 2 '^usage:' --faster

[ $failures = 0 ]
