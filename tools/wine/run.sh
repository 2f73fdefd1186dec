#!/bin/bash
# run.sh PROGRAM [ARG...]: a Windows program in the private Wine, in $WINEPREFIX or else the
# developer's prefix. Its exit status is returned.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/env.sh"
wine_ready
wine_environment
exec "$wine_root/usr/lib/wine/wine" "$@"
