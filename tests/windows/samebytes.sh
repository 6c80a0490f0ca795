#!/bin/sh
# samebytes.sh PROGRAM ROOT START: converts the samples, and the assets that GLTF_ASSETS names, with build/release/bin/q7z and with
# PROGRAM, which START runs; fails where a file, a message or an exit code differs.
set -eu
program=$1
root=$2
start=$3
native=$root/build/release/bin/q7z
[ -x "$native" ] || { echo "$native is missing: build the preset \`release\` first"; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
compared=0
different=0

# ran NAME COMMAND...: keeps what the command says and its exit code.
ran()
{
  log=$work/$1
  shift
  status=0
  "$@" </dev/null >"$log" 2>&1 || status=$?
  sed -i '/^wine: /d' "$log"  # of Wine's own processes
  echo "exit $status" >>"$log"
}

# compare FILE FORM ARGS...
compare()
{
  file=$1
  form=$2
  shift 2
  rm -f "$work/native.$form" "$work/windows.$form"
  ran native "$native" convert "$@" "$file" "$work/native.$form"
  ran windows $start "$program" convert "$@" "$file" "$work/windows.$form"
  sed 's/native\.gl/windows.gl/g' "$work/native" >"$work/named"
  compared=$((compared + 1))
  if cmp "$work/named" "$work/windows" && { [ ! -f "$work/native.$form" ] || cmp "$work/native.$form" "$work/windows.$form"; }; then
    return
  fi
  echo "$file as $form differs; Linux and Windows say:"
  tail -n 3 "$work/named" "$work/windows"
  different=$((different + 1))
}

for sample in "$root"/samples/*.gl*; do
  compare "$sample" gltf --export exportSkins=true
  compare "$sample" glb --export bakeAnimation=true
done
if [ -n "${GLTF_ASSETS:-}" ]; then
  find "$GLTF_ASSETS/valid" -name '*.gl[tb]*' -size -1000k | sort >"$work/assets"
  while read -r asset; do
    compare "$asset" glb --export exportSkins=true
  done <"$work/assets"
fi
echo "compared $compared conversions, $different differ"
[ $compared -gt 1 ] && [ $different = 0 ]
