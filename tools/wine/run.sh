#!/bin/bash
# run.sh PROGRAM [ARG...]: a Windows program in the private Wine, in $WINEPREFIX or else the
# developer's prefix. Its exit status is returned. QUILLON_WINE_STARTED says that the prefix is
# running already.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/env.sh"
[ -n "${QUILLON_WINE_STARTED:-}" ] || wine_ready
wine_exec wine "$@"
