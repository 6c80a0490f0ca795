# Read by ./q7z, ./check and .ci/run. Expects `root`, the folder of the sources.

# Prints one line for people on stderr; stdout belongs to what was asked for.
say()
{
  printf '%s\n' "${0##*/}: $*" >&2
}

# Packages of the named sections of packages.txt.
listed_packages()
{
  awk -v sections=" $* " '
    /^\[/ { wanted = index(sections, " " substr($0, 2, length($0) - 2) " ") }
    wanted && !/^(\[|#|$)/' "$root/cmake/packages.txt"
}

# The named packages that dpkg does not know as installed.
missing_packages()
{
  dpkg-query -W -f '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null |
    awk -v packages="$*" '
      $2 == "installed" { installed[$1] = 1 }
      END { n = split(packages, names, " "); for (i = 1; i <= n; ++i) if (!(names[i] in installed)) print names[i] }'
}

# Installs the packages of the named sections that are missing. Where there is no dpkg, configuring tells what is missing.
install_packages()
{
  command -v dpkg-query >/dev/null 2>&1 || return 0
  missing=$(missing_packages $(listed_packages "$@"))
  [ -n "$missing" ] || return 0
  missing=$(echo $missing)
  say "installing $missing"
  sudo=
  if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null 2>&1 || { say "cannot install as this user; install by hand: $missing"; return 1; }
    sudo="sudo -n"
  fi
  log=$(mktemp)
  status=0
  { $sudo apt-get update; $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing; } \
    </dev/null >"$log" 2>&1 || status=1
  [ $status = 0 ] || say "cannot install $missing ($(grep '^E: ' "$log" | tail -n 1)); install them by hand"
  rm -f "$log"
  return $status
}

# configure PRESET [ARG...]: configures the preset's folder once; later changes of CMake files are the build's own affair.
configure()
{
  preset=$1
  shift
  [ -f "$root/build/$preset/build.ninja" ] || (cd "$root" && cmake --preset "$preset" "$@")
}

# quietly LOG COMMAND...: keeps the command's output from view unless it fails, then shows it on stderr.
quietly()
{
  log=$1
  shift
  "$@" </dev/null >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}
