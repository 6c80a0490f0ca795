#!/bin/sh
# symbols.sh LIBRARY NAME...: fails unless the dynamic symbols that LIBRARY defines are exactly the names.
set -eu
library=$1
shift
defined=$(nm -D --defined-only "$library" | awk '{ print $NF }' | sort)
wanted=$(printf '%s\n' "$@" | sort)
if [ "$defined" != "$wanted" ]; then
  printf '%s\nexports:\n%s\nand should export:\n%s\n' "$library" "$defined" "$wanted"
  exit 1
fi
echo "exports exactly $(echo $defined)"
