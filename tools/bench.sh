#!/bin/sh
# Runs benchmarks one after the other, whatever becomes of each, and ends with
# the table of all budgets in the order of bench/budgets.h. Status 1 if a budget
# is missed or was not measured, or if a benchmark failed.
# usage: bench.sh BUILD_DIR BENCHMARK...
set -u
build=$1
shift
failed=
said=$(mktemp)
trap 'rm -f "$said" "$said.status"' EXIT

for bench; do
    echo "== $bench"
    { "$build/$bench"; echo $? >"$said.status"; } | tee -a "$said"
    [ "$(cat "$said.status")" = 0 ] || failed="$failed $bench"
done

echo "== budgets"
sed -n 's/^inline constexpr QD_Budget QD_.* {"\([^"]*\)".*/\1/p' "$(dirname "$0")/../bench/budgets.h" |
    while read -r budget; do
        grep -a "^budget: $budget  " "$said" || echo "budget: $budget: NOT MEASURED"
    done | tee "$said.status"
[ -z "$failed" ] || echo "failed, or missed a budget:$failed"
[ -z "$failed" ] && ! grep -q 'NOT MEASURED$\|MISSED$' "$said.status"
