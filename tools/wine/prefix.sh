#!/bin/bash
# Makes the template that every prefix is copied from, unless it is there already.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/env.sh"

recipe="$(cat "$wine_root/recipe") $(sha256sum < "${BASH_SOURCE[0]}")"
[ "$(cat "$wine_template/recipe" 2>/dev/null)" != "$recipe" ] || exit 0

echo "wine: making a prefix"
export WINEPREFIX=$wine_template.partial
unset DISPLAY
[ ! -d "$WINEPREFIX" ] || wine_stop
rm -rf "$WINEPREFIX"
mkdir -p "$WINEPREFIX/drive_c/windows/system32"
cp "$wine_root/usr/i686-w64-mingw32/lib/zlib1.dll" "$WINEPREFIX/drive_c/windows/system32/"
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
