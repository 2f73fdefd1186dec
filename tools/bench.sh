#!/bin/bash
# ./dev bench [NAME...]: builds the benchmarks and runs them one after the other, so that none
# disturbs another. Each prints its own table.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"

names=("$@")
if [ $# -eq 0 ]; then
  for source in bench/*.cpp; do
    [ -f "$source" ] || { echo "bench: there are no benchmarks" >&2; exit 1; }
    name=$(basename "$source" .cpp)
    names+=("${name#bench_}")
  done
fi

[ -f build/native/build.ninja ] || cmake --preset native > /dev/null
cmake --build build/native --target "${names[@]/#/bench_}" > /dev/null
for name in "${names[@]}"; do
  printf '\n== %s\n' "$name"
  "build/native/bench_$name"
done
