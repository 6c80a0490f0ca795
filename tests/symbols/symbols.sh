#!/bin/sh
# symbols.sh LIBRARY NAME...: fails unless the names that LIBRARY, an ELF file or a DLL, exports are exactly these.
set -eu
library=$1
shift

exported()
{
  case $library in
    *.dll)
      x86_64-w64-mingw32-objdump -p "$library" | awk '
        /^\[Ordinal\/Name Pointer\] Table/ { listing = 1; next }
        listing && !NF { exit }
        listing { print $NF }' ;;
    *) nm -D --defined-only "$library" | awk '{ print $NF }' ;;
  esac
}

defined=$(exported | sort)
wanted=$(printf '%s\n' "$@" | sort)
if [ "$defined" != "$wanted" ]; then
  printf '%s\nexports:\n%s\nand should export:\n%s\n' "$library" "$defined" "$wanted"
  exit 1
fi
echo "exports exactly $(echo $defined)"
