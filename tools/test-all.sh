#!/usr/bin/env bash
# Checks the formatting, builds every configuration and runs every test:
#   format: every C++ file as the root .clang-format says (tools/check-format.sh)
#   native, asan, tsan, windows: configure, build, ctest
#   fuzz: configure, build, then each fuzz program for CURVECTL_FUZZ_SECONDS (default 60)
# Keeps going after a failure, exits non-zero if anything failed, and ends with the line
#   N passed, N failed
# where N counts doctest test cases (a test program without doctest counts as one case), plus
# one per fuzz program, one for the format check and one failure per configure or build
# step that failed.
set -uo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD
logs=$root/build/logs
mkdir -p "$logs"

passed=0
failed=0
failures=()

fail() {
    failed=$((failed + 1))
    failures+=("$1")
}

# Prints the tail of a log after a failed step.
show_log() {
    echo "---- last lines of $1 ----"
    tail -n 60 "$1"
    echo "----"
}

# Adds the test cases of a CTest JUnit file to the totals.
count_junit() {
    local counts
    counts=$(awk '
        function flush() {
            if (!open) return
            if (status == "run") { p += (found ? tp : 1); f += tf }
            else if (found && tf > 0) { p += tp; f += tf }
            else { p += tp; f += 1 }
            open = 0
        }
        /<testcase / {
            flush()
            open = 1; found = 0; tp = 0; tf = 0
            status = "fail"
            if (match($0, /status="[a-z]+"/)) status = substr($0, RSTART + 8, RLENGTH - 9)
        }
        /\[doctest\] test cases:/ {
            # The summary of the program itself comes last; earlier ones are of child runs.
            tp = 0; tf = 0
            line = $0
            sub(/.*\[doctest\] test cases:/, "", line)
            n = split(line, part, "|")
            for (i = 2; i <= n; i++) {
                if (part[i] ~ /passed/) { gsub(/[^0-9]/, "", part[i]); tp += part[i] }
                if (part[i] ~ /failed/) { gsub(/[^0-9]/, "", part[i]); tf += part[i] }
            }
            found = 1
        }
        /<\/testcase>/ { flush() }
        END { flush(); printf "%d %d\n", p, f }
    ' "$1")
    passed=$((passed + ${counts% *}))
    failed=$((failed + ${counts#* }))
}

run_preset() {
    local preset=$1
    local log=$logs/$preset
    echo "==== $preset ===="

    if ! cmake --preset "$preset" >"$log.configure.log" 2>&1; then
        show_log "$log.configure.log"
        fail "$preset: configure"
        return
    fi
    if ! cmake --build --preset "$preset" -j2 >"$log.build.log" 2>&1; then
        show_log "$log.build.log"
        fail "$preset: build"
        return
    fi

    local junit=$logs/$preset.junit.xml
    rm -f "$junit"
    # The whole output of every test program goes to the JUnit file (CTest keeps only
    # the first kilobyte of a passed test's output by default): its summary is at the end.
    local ctest=(ctest --preset "$preset" --output-junit "$junit"
                 --test-output-size-passed 8000000 --test-output-size-failed 8000000)
    if [ "$preset" = windows ] && [ -z "${DISPLAY:-}" ]; then
        # One X server for the whole run; the Windows programs share it.
        ctest=(xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" "${ctest[@]}")
    fi
    local rc=0
    "${ctest[@]}" || rc=$?

    local before=$failed
    if [ -f "$junit" ]; then
        count_junit "$junit"
    fi
    if [ $rc -ne 0 ] && [ $failed -eq $before ]; then
        fail "$preset: ctest exited with $rc"
    elif [ $failed -ne $before ]; then
        failures+=("$preset: tests")
    fi
}

run_fuzz() {
    local log=$logs/fuzz
    local seconds=${CURVECTL_FUZZ_SECONDS:-60}
    echo "==== fuzz ===="

    if ! cmake --preset fuzz >"$log.configure.log" 2>&1; then
        show_log "$log.configure.log"
        fail "fuzz: configure"
        return
    fi
    if ! cmake --build --preset fuzz -j2 >"$log.build.log" 2>&1; then
        show_log "$log.build.log"
        fail "fuzz: build"
        return
    fi

    local src name exe out
    for src in fuzz/*.cpp; do
        [ -e "$src" ] || continue
        name=$(basename "$src" .cpp)
        exe=build/fuzz/bin/$name
        if [ ! -x "$exe" ]; then
            echo "fuzz: $exe was not built"
            fail "fuzz: $name not built"
            continue
        fi
        # New inputs go to build/; the checked-in corpus is only read.
        out=build/fuzz/corpus/$name
        mkdir -p "$out" build/fuzz/artifacts
        local args=(-max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048
                    -print_final_stats=1 -artifact_prefix="build/fuzz/artifacts/$name-")
        if [ -f "fuzz/$name.dict" ]; then
            args+=(-dict="fuzz/$name.dict")
        fi
        args+=("$out")
        if [ -d "fuzz/corpus/$name" ]; then
            args+=("fuzz/corpus/$name")
        fi
        echo "fuzz: $name for ${seconds}s"
        if "$exe" "${args[@]}" >"$logs/fuzz-$name.log" 2>&1; then
            passed=$((passed + 1))
            grep -E '^(Done|stat::number_of_executed_units)' "$logs/fuzz-$name.log" || true
        else
            show_log "$logs/fuzz-$name.log"
            fail "fuzz: $name"
        fi
    done
}

if ! bash tools/setup-deps.sh; then
    echo "setup-deps failed"
    echo "0 passed, 1 failed"
    exit 1
fi

start=$SECONDS
echo "==== format ===="
if bash tools/check-format.sh; then
    passed=$((passed + 1))
else
    fail "format"
fi
for preset in native asan tsan windows; do
    run_preset "$preset"
done
run_fuzz

echo
echo "==== summary ($((SECONDS - start)) s) ===="
for f in "${failures[@]+"${failures[@]}"}"; do
    echo "FAILED: $f"
done
echo "$passed passed, $failed failed"
if [ $failed -ne 0 ]; then
    exit 1
fi
