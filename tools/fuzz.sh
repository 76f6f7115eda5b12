#!/bin/sh
# Runs every fuzzer for so long, from its corpus and what earlier runs learnt, and says how many
# inputs each has tried. usage: fuzz.sh BUILD_DIR SECONDS   (run in the source root)
# What is found is left in BUILD_DIR/findings, and the exit status is 1.
set -u
build=$1
seconds=$2
findings=0
total=0
mkdir -p "$build/findings" "$build/fuzz-logs"
for source in tests/fuzz/*_fuzz.cc; do
    name=$(basename "$source" _fuzz.cc)
    log=$build/fuzz-logs/$name.log
    mkdir -p "$build/learnt/$name"
    timeout $((seconds + 60)) "$build/fuzz_$name" -max_total_time="$seconds" -timeout=20 \
        -rss_limit_mb=2048 -max_len=40000 -close_fd_mask=3 -print_final_stats=1 \
        -artifact_prefix="$build/findings/$name-" \
        "$build/learnt/$name" "tests/fuzz/corpus/$name" >"$log" 2>&1
    status=$?
    tried=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    total=$((total + ${tried:-0}))
    printf '%-12s %11d executions\n' "$name" "${tried:-0}"
    if [ $status -ne 0 ]; then
        findings=$((findings + 1))
        grep -E 'ERROR|SUMMARY|Test unit written' "$log" || tail -3 "$log"
    fi
done
printf '%-12s %11d executions\n' total "$total"
[ $findings -eq 0 ] && exit 0
echo "$findings of them found something: keep it as tests/fuzz/corpus/NAME/WHAT and mend it" >&2
exit 1
