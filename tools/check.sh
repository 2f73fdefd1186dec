#!/bin/bash
# ./dev check: everything that is checked without running a test. All checks run; any that fails
# fails the whole.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
failed=0

check() {
  printf '== %s\n' "$1"
  local title=$1
  shift
  if "$@"; then
    echo "check passed: $title"
  else
    echo "check FAILED: $title"
    failed=1
  fi
}
formatting() {
  find src sdk examples samples tests tools fuzz bench '(' -name '*.cpp' -o -name '*.h' ')' -print0 \
    | xargs -0 clang-format-14 --dry-run -Werror
}

check "formatting" formatting
check "layers" python3 tools/check_layers.py
check "public interface" python3 tools/check_interface.py
check "documents" python3 tools/check_docs.py
check "protections of the program" python3 tools/check_image.py build/windows/quillon.exe
check "samples" python3 tools/check_samples.py
check "licences" python3 tools/package.py --licences
check "clang-tidy" python3 tools/tidy.py
exit $failed
