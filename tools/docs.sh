#!/bin/bash
# ./dev docs [DIRECTORY]: the documentation site, in build/site unless told otherwise. Always made
# from nothing, so that the same documents make the same bytes; a warning is an error.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
site=${1:-build/site}
mkdir -p "$(dirname "$site")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What a set may change the order of, and what a file's time may get into.
export PYTHONHASHSEED=0 PYTHONUTF8=1 SOURCE_DATE_EPOCH=0 PYTHONDONTWRITEBYTECODE=1
python3 tools/site/stage.py "$work/source"
sphinx-build -q -W --keep-going -b html -c tools/site -d "$work/doctrees" \
  "$work/source" "$work/site"
rm -r "$work/site/.buildinfo" "$work/site/objects.inv"  # for other builds alone
rm -rf "$site"
cp -r "$work/site" "$site"
