#!/bin/bash
# ./dev fuzz [SECONDS] [TARGET...]: runs the fuzz targets, as many at once as there are processors.
# What they find new stays in build/fuzz/corpus; an input that fails is kept in build/fuzz/findings.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"

seconds=60
[[ ! ${1:-} =~ ^[0-9]+$ ]] || { seconds=$1; shift; }
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for program in build/fuzz/fuzz_*; do
    [ ! -x "$program" ] || targets+=("${program#build/fuzz/fuzz_}")
  done
fi
[ ${#targets[@]} -gt 0 ] || { echo "fuzz: there are no targets" >&2; exit 1; }

run_one() {
  local name=$1 log=build/fuzz/$1.log
  local options=(-max_total_time="$2" -timeout=60 -rss_limit_mb=2048 -print_final_stats=1
    -artifact_prefix="build/fuzz/findings/$name-")
  [ ! -f "fuzz/$name.dict" ] || options+=(-dict="fuzz/$name.dict")
  mkdir -p "build/fuzz/corpus/$name" build/fuzz/findings
  local corpora=("build/fuzz/corpus/$name")
  [ ! -d "fuzz/corpus/$name" ] || corpora+=("fuzz/corpus/$name")
  if "build/fuzz/fuzz_$name" "${options[@]}" "${corpora[@]}" > "$log" 2>&1; then
    echo "$name: nothing found, $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") runs"
  else
    tail -n 60 "$log"
    echo "$name: FAILED, see $log and build/fuzz/findings"
    return 1
  fi
}
export -f run_one
printf '%s\n' "${targets[@]}" \
  | xargs -P "$(nproc)" -I '{}' bash -c 'run_one "$1" "$2"' fuzz '{}' "$seconds"
