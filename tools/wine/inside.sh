#!/bin/bash
# inside.sh ROOT PROGRAM [ARG...]: becomes a program of the system laid out in ROOT, whose C library
# is newer than the machine's. It sees that system's directories and, beside them, everything else of
# this machine under the same names. To be run in a mount namespace of its own.
set -euo pipefail

root=$(realpath "$1")
program=$2
shift 2

# Its own: /usr and what Debian keeps beside it. First the one that ROOT is in, so that nothing is
# mounted below it yet.
mount --make-rprivate /
for directory in "/$(cut -d / -f 2 <<< "$root")" /*; do
  [ -d "$directory" ] && [ ! -L "$directory" ] || continue
  case $directory in
    /bin | /boot | /etc | /lib | /lib32 | /lib64 | /libx32 | /lost+found | /sbin | /usr) continue ;;
  esac
  [ "${done_first:-}" != "$directory" ] || continue
  done_first=${done_first:-$directory}
  mkdir -p "$root$directory"
  mount --rbind "$directory" "$root$directory"
done
for file in /etc/hosts /etc/resolv.conf /etc/passwd /etc/group /etc/ssl /etc/samba; do
  [ -e "$file" ] || continue
  if [ -d "$file" ]; then mkdir -p "$root$file"; else touch "$root$file"; fi
  mount --bind "$file" "$root$file"
done

export PATH=/usr/lib/wine:/usr/bin WINESERVER=/usr/lib/wine/wineserver64
export WINEDLLPATH=/usr/lib/x86_64-linux-gnu/wine:/usr/lib/i386-linux-gnu/wine
exec /usr/sbin/chroot "$root" /usr/bin/env --chdir="$PWD" "$program" "$@"
