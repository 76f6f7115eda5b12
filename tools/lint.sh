#!/bin/sh
# The style checks: formatting of every C++ file, then the clang-tidy list over
# the sources. usage: lint.sh BUILD_DIR   (run in the source root)
set -eu
git ls-files '*.cc' '*.h' | xargs clang-format-14 --dry-run --Werror
git ls-files 'src/*.cc' | xargs -n 4 -P "$(nproc)" clang-tidy-14 --quiet -p "$1" \
    --extra-arg=-Wthread-safety --extra-arg=-Wno-unknown-warning-option
