#!/bin/sh
# program.sh PROGRAM SAMPLES START: runs q7z.exe, as START does here, on names, streams and faults that are Windows' own affair.
set -eu
program=$1
samples=$2
start=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

# expect NAME WANTED COMMAND...: the output, errors behind it, and the exit code in a line of its own.
expect()
{
  name=$1
  wanted=$2
  shift 2
  status=0
  found=$("$@" 2>&1) || status=$?
  found=$(printf '%s' "$found" | sed '/^wine: /d')  # of Wine's own processes
  [ "$found
exit $status" = "$wanted" ] && return
  printf '%s: wanted\n%s\nbut found\n%s\nexit %s\n' "$name" "$wanted" "$found" "$status"
  failures=$((failures + 1))
}

q7z()
{
  $start "$program" "$@"
}

# The first line of what inspect shows, since the rest is tested elsewhere.
head_of()
{
  q7z inspect "$@" | sed -n 1p
}

first='document "": 30 fps, 0 s to 3 s, 1 cm
exit 0'
cp "$samples/scene.glb" plain.glb
expect "a drive and backslashes" "$first" head_of "Z:$(printf %s "$work/plain.glb" | tr / '\\')"
mkdir 'Häfen ⚓'
cp plain.glb 'Häfen ⚓/Schiff 港.glb'
expect "names beyond the old character sets" "$first" head_of 'Häfen ⚓\Schiff 港.glb'

deep=$(printf '%0100d/%0100d/%0100d' 1 2 3)
mkdir -p "$deep"
cp plain.glb "$deep/scene.glb"
# Wine cannot tell the true name of a file so deep, so nothing there counts as inside of its folder.
expect "a name longer than the old limit" "$first" head_of --allow-outside "$deep\\scene.glb"

expect "import" "
exit 0" q7z import 'Häfen ⚓\Schiff 港.glb' 'Häfen ⚓\Szene.json'
expect "export" "
exit 0" q7z export 'Häfen ⚓\Szene.json' "$deep\\out.glb"
expect "what was exported" "$first" head_of --allow-outside "$deep\\out.glb"
expect "images beside the document" "Matte White_baseColorTexture.png
exit 0" ls 'Häfen ⚓/tex'
expect "nothing else left" "Schiff 港.glb
Szene.json
tex
exit 0" ls -A 'Häfen ⚓'

piped()
{
  q7z convert - - --export fileFormat=glb <plain.glb >piped.glb && q7z convert plain.glb named.glb && cmp piped.glb named.glb
}
expect "streams carry bytes" "
exit 0" piped

hashed()
{
  printf 'KHR_lights_punctual\nKHR_texture_transform\r\n' | q7z hash
}
expect "hash" "KHR_lights_punctual	590ab5599ce30b5e2c5f0f6fed1ed066
KHR_texture_transform	66cdc1befceedf2e442c658ddc5eb076
exit 0" hashed

expect "no such file" 'q7z: error: cannot read "none/a.glb": No such file or directory
exit 3' q7z inspect 'none\a.glb'
expect "a folder" "q7z: error: \"Häfen ⚓\" is a folder; give a file
exit 3" q7z inspect 'Häfen ⚓'
expect "the input as output" 'q7z: error: the output "plain.glb" is the input itself; give another name
exit 2' q7z convert plain.glb PLAIN.GLB
expect "a stream inside of a file" 'q7z: error: cannot write "plain.glb:a.glb": Invalid argument
exit 3' q7z convert named.glb plain.glb:a.glb
expect "no library" 'q7z: error: cannot load the plug-in "./none.dll": No such file or directory
exit 3' q7z inspect plain.glb --plugin none.dll

[ $failures = 0 ] && echo "all as expected"
