# Functions for the private Wine; to be sourced. What they print goes to stderr, so that a program's
# own output stays its own.

QUILLON_CACHE=${QUILLON_CACHE:-${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/quillon}
# QUILLON_WINE=wine10 is a later Wine, with 64-bit programs beside the 32-bit ones.
wine_home=$QUILLON_CACHE/${QUILLON_WINE:-wine}
wine_root=$wine_home/root
wine_template=$wine_home/prefix
wine_tools=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# The prefix programs run in: a test run sets WINEPREFIX to a copy of its own, a developer has one
# that lasts.
export WINEPREFIX=${WINEPREFIX:-$wine_home/developer}

wine_die() { printf 'wine: %s\n' "$*" >&2; exit 1; }

# The environment of every program: quiet, the same code pages (1252 and 437) everywhere.
wine_environment() {
  export WINEDEBUG=${WINEDEBUG:--all} LC_ALL=C.UTF-8
  export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d${WINEDLLOVERRIDES:+;$WINEDLLOVERRIDES}"
  export FONTCONFIG_PATH=$wine_root/etc/fonts
  if [ -z "${QUILLON_WINE:-}" ]; then
    export WINEARCH=win32
    export LD_LIBRARY_PATH=$wine_root/usr/lib/i386-linux-gnu:$wine_root/lib/i386-linux-gnu
  fi
}

# wine_exec wine|wineserver [ARG...]: becomes that program, in the current prefix.
wine_exec() {
  wine_environment
  [ -n "${QUILLON_WINE:-}" ] || exec "$wine_root/usr/lib/wine/$1" "${@:2}"
  local user=()
  [ "$(id -u)" -eq 0 ] || user=(--map-root-user)
  exec unshare --mount "${user[@]}" bash "$wine_tools/inside.sh" "$wine_root" "/usr/lib/wine/${1}64" "${@:2}"
}

# wine PROGRAM [ARG...] in the current prefix.
wine() { (wine_exec wine "$@"); }
wineserver() { (wine_exec wineserver "$@"); }

# Copies the template to the directory named.
wine_copy_prefix() {
  [ -f "$wine_template/recipe" ] || wine_die "the private Wine is missing: run ./dev setup"
  rm -rf "$1.partial"
  cp -a --reflink=auto "$wine_template/." "$1.partial"  # which may be a link
  mv "$1.partial" "$1"
}

# Starts the current prefix's server and services with nothing of the caller's open: the first
# program would otherwise leave them holding its output, and a pipe behind it would never close.
# Both end by themselves when no program has run for five minutes.
wine_start() {
  local status=0
  wineserver -p300 < /dev/null > /dev/null 2>&1 || status=$?
  case $status in
    0) wine wineboot < /dev/null > /dev/null 2>&1 ;;
    2) ;;  # one is running
    *) wine_die "no wineserver for $WINEPREFIX (status $status); is libc6-i386 installed?" ;;
  esac
}

# Ends every program of the current prefix.
wine_stop() {
  wineserver -k < /dev/null > /dev/null 2>&1 || true
  wineserver -w < /dev/null > /dev/null 2>&1 || true
}

# Makes the developer's prefix when there is none or the template is another, and starts it.
wine_ready() {
  if [ "$WINEPREFIX" = "$wine_home/developer" ] \
      && ! cmp -s "$WINEPREFIX/recipe" "$wine_template/recipe"; then
    mkdir -p "$wine_home"
    exec 9> "$wine_home/developer.lock"
    flock 9
    if ! cmp -s "$WINEPREFIX/recipe" "$wine_template/recipe"; then
      [ ! -d "$WINEPREFIX" ] || wine_stop
      rm -rf "$WINEPREFIX"
      wine_copy_prefix "$WINEPREFIX"
    fi
    exec 9>&-
  fi
  wine_start
}

# Registers the server in the current prefix, unless this very file is registered there already.
wine_register() {
  local server=$1 stamp
  stamp="$server $(stat -c %Y.%s "$server")"
  [ "$(cat "$WINEPREFIX/registered" 2>/dev/null)" = "$stamp" ] && return
  wine "$server" /RegServer < /dev/null > /dev/null 2>&1 || wine_die "$server /RegServer failed"
  echo "$stamp" > "$WINEPREFIX/registered"
}
