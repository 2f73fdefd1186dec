#!/bin/bash
# ./dev bench [NAME...]: builds the benchmarks, runs them one after the other, so that none disturbs
# another, and prints one table. NAME is that of a file in bench/ or bench/windows/.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/wine/env.sh"
top=$(cd "$wine_tools/../.." && pwd)
cd "$top"

# build PRESET TARGET...
build() {
  local preset=$1
  shift
  [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" >&2 || return
  cmake --build "build/$preset" --target "$@" >&2
}

# A Windows program has the server registered in a prefix of its own, so that nothing else runs
# there and nothing stays behind. What else it needs there is the business of bench/windows/NAME.py.
run_windows() (
  WINEPREFIX=$(mktemp -d)/prefix
  trap 'wine_stop; rm -rf "${WINEPREFIX%/prefix}"' EXIT
  wine_copy_prefix "$WINEPREFIX"
  wine_start
  wine_register "$top/build/windows/quillon.exe"
  if [ -f "bench/windows/$1.py" ]; then
    QUILLON_WINE_STARTED=1 python3 "bench/windows/$1.py" >&2 || exit
  fi
  wine "build/windows/bench_$1.exe" < /dev/null | tr -d '\r'
)

run() {
  local name=$1
  if [ -f "bench/$name.cpp" ]; then
    build native mailhost splitmail zipfiles "bench_$name" || return
    echo "bench: $name" >&2
    "build/native/bench_$name"
  elif [ -f "bench/windows/$name.cpp" ]; then
    build windows quillon doubles "bench_$name" || return
    echo "bench: $name" >&2
    run_windows "$name"
  else
    echo "bench: there is no benchmark '$name'" >&2
    return 1
  fi
}

# A benchmark prints lines of columns between tabs: `row` and `note` (bench/support/Table.h).
table() {
  awk -F '\t' '
    function add(  i) {
      count++
      for (i = 2; i <= 6; i++) {
        cell[count, i] = $i
        if (length($i) > width[i]) width[i] = length($i)
      }
    }
    BEGIN { $0 = "row\tname\tours\tpeer\tratio\tgoal"; add() }
    $1 == "row" { add() }
    $1 == "note" { notes = notes $2 "\n" }
    END {
      for (row = 1; row <= count; row++) {
        line = ""
        for (i = 2; i <= 6; i++) line = line sprintf("%-*s  ", width[i], cell[row, i])
        sub(/ +$/, "", line)
        print line
      }
      if (notes != "") printf "\n%s", notes
    }'
}

names=("$@")
if [ $# -eq 0 ]; then
  for source in bench/*.cpp bench/windows/*.cpp; do
    names+=("$(basename "$source" .cpp)")
  done
fi

load=$(cut -d ' ' -f 1 /proc/loadavg)
results=
for name in "${names[@]}"; do
  status=0
  result=$(run "$name") || status=$?
  results+=$result$'\n'
  [ $status -eq 0 ] || { printf '%s\nbench: %s failed (%d)\n' "$result" "$name" $status >&2; exit 1; }
done
cat <<TEXT

./dev bench${*:+ $*}
$(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1), $(nproc) cores, $(uname -sr); load $load at the start
Each figure is the median of its rounds (least-most); ratio = ours / peer of the same round.

TEXT
table <<< "$results"
