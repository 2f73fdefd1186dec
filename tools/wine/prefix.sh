#!/bin/bash
# Makes the template that every prefix is copied from, unless it is there already.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/env.sh"

# Made by another text of this file, and the same.
earlier='fa67bc32463d1b601053f04030083737d05b77b96e8ea3fe4b2b8d61fe4ae334  -'

root_recipe=$(cat "$wine_root/recipe")
recipe="$root_recipe $(sha256sum < "${BASH_SOURCE[0]}")"
made=$(cat "$wine_template/recipe" 2>/dev/null) || made=
[ "$made" != "$recipe" ] && [ "$made" != "$root_recipe $earlier" ] || exit 0

echo "wine: making a prefix"
export WINEPREFIX=$wine_template.partial
unset DISPLAY
[ ! -d "$WINEPREFIX" ] || wine_stop
rm -rf "$WINEPREFIX"

# put_zlib KIND DIRECTORY: other DLLs are there only when the prefix is.
put_zlib() {
  mkdir -p "$WINEPREFIX/drive_c/windows/$2"
  cp "$wine_root/usr/$1-w64-mingw32/lib/zlib1.dll" "$WINEPREFIX/drive_c/windows/$2/"
}
if [ -d "$wine_root/usr/x86_64-w64-mingw32" ]; then
  put_zlib x86_64 system32
  put_zlib i686 syswow64
else
  put_zlib i686 system32
fi
wine wineboot -i < /dev/null > /dev/null 2>&1 || wine_die "the prefix cannot be made in $WINEPREFIX"

# No debugger when a program crashes: it would end the program with a status of its own, and by
# chance which. And nothing of the user's own home inside.
wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d none /f \
  < /dev/null > /dev/null 2>&1 || wine_die "the registry of $WINEPREFIX cannot be written"
wine_stop
find "$WINEPREFIX/drive_c/users" -type l | while read -r link; do
  rm "$link"
  mkdir "$link"
done

echo "$recipe" > "$WINEPREFIX/recipe"
rm -rf "$wine_template"
mv "$WINEPREFIX" "$wine_template"
