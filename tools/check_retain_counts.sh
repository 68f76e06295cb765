#!/usr/bin/env bash
# Runs the static analyzer's reference-count checks over the sources that own Core Foundation objects.
# Usage: check_retain_counts.sh BUILD_FOLDER
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files -co --exclude-standard -- 'platform/bundles/*.cpp' 'platform/foundation/*.cpp' 'platform/services/*.cpp' \
    'platform/events/*.cpp' 'fileurl/*.cpp' 'Libraries/*.cpp' 'importer/*.cpp' 'service/*.cpp' 'cli/*.cpp' |
    xargs -P 2 -n 6 clang-tidy-14 -p "$1" --quiet --extra-arg=-Wno-unknown-warning-option --warnings-as-errors='*' \
        --checks='-*,clang-analyzer-osx.*,clang-analyzer-core.*'
