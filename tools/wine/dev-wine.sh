#!/bin/bash
# dev-wine.sh PROGRAM [ARG...]: a Windows program in the developer's prefix, where the server of
# build/windows is registered. An argument that is an absolute Linux path goes on as Z:\....
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/env.sh"
top=$(cd "$wine_tools/../.." && pwd)

case ${1:-} in
  '') wine_die "usage: ./dev wine PROGRAM [ARGUMENT...] | --stop" ;;
  --stop) wine_stop; exit ;;
esac
[ -d "$wine_template" ] || "$top/tools/setup.sh" ${QUILLON_WINE:+"--$QUILLON_WINE"} >&2 || exit
wine_ready
export QUILLON_WINE_STARTED=1
server=$top/build/windows/quillon.exe
[ ! -f "$server" ] || wine_register "$server"

# "/tmp/x.vbs" is a path; "/c" and "//nologo" are switches.
arguments=()
for argument in "$@"; do
  case $argument in
    //* | /) ;;
    /*/*) [ ! -d "${argument%/*}" ] || argument="Z:${argument//\//\\}" ;;
  esac
  arguments+=("$argument")
done
# A server that the program starts has its streams, and lives on: a pipe would not close.
between=()
for stream in 1 2; do
  if [ -p /dev/fd/$stream ] || [ -S /dev/fd/$stream ]; then
    between=(python3 "$wine_tools/relay.py")
  fi
done
exec "${between[@]}" "$wine_tools/run.sh" "${arguments[@]}"
