#!/bin/bash
# ./dev demo: a script sends a message with an attachment through the registered server to the
# embedded host, and reads it back from there. Succeeds only when the script says so itself, for
# the script host returns 0 whatever happens.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/wine/env.sh"
top=$(cd "$wine_tools/../.." && pwd)
work=$(mktemp -d)
mailhost_pid=

finish() {
  [ -z "$mailhost_pid" ] || { kill "$mailhost_pid" && wait "$mailhost_pid"; } 2> /dev/null
  rm -rf "$work"
}
trap finish EXIT

"$top/build/native/mailhost" --smtp-port 0 --pop-port 0 --store "$work/store" \
  --user demo --password demo --log "$work/conversation" > "$work/mailhost" 2>&1 &
mailhost_pid=$!
# It prints its ports, then `ready`.
for ((tries = 0; tries < 100; ++tries)); do
  ! grep -q '^ready' "$work/mailhost" || break
  kill -0 "$mailhost_pid" 2> /dev/null || break
  sleep 0.05
done
grep -q '^ready' "$work/mailhost" || { cat "$work/mailhost" >&2; wine_die "mailhost did not start"; }
smtp=$(sed -n 's/^smtp //p' "$work/mailhost")
pop=$(sed -n 's/^pop //p' "$work/mailhost")

echo "== examples/demo.vbs $smtp $pop"
cp "$top/examples/demo.vbs" "$work/demo.vbs"
timeout 60 "$wine_tools/dev-wine.sh" cscript //nologo "$work/demo.vbs" "$smtp" "$pop" \
  < /dev/null > "$work/output" 2>&1
status=$?
tr -d '\r' < "$work/output"
echo
echo "== what went over the wire"
tr -d '\r' < "$work/conversation" 2> /dev/null

tr -d '\r' < "$work/output" | grep -qx 'demo: ok' && [ "$status" -eq 0 ] && exit 0
echo "demo: the script did not come to its end (exit status $status)" >&2
exit 1
