#!/usr/bin/env bash
# Checks the formatting, builds every configuration and runs every test:
#   format: every C++ file as the root .clang-format says (tools/check-format.sh)
#   layers: every #include runs down the layers (tools/check-layers.sh)
#   native, asan, tsan, windows: configure, build, ctest
#   fuzz: configure, build, then each fuzz program for CURVECTL_FUZZ_SECONDS (default 60)
# Keeps going after a failure, exits non-zero if anything failed, and ends with the line
#   N passed, N failed
# where N counts doctest test cases as the programs report them (a test that is no doctest
# program counts as one case; see count_tests), plus one per fuzz program, one each for the
# format and layer checks and one failure per configure or build step that failed.
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

# Adds up the test cases of a preset's CTest run. Each doctest program writes its counts into
# <build>/test-counts/<test>.txt ("passed failed skipped", tests/doctest_main.cpp); a test that
# is no doctest program (the API reference, the SDK test, the demo's session) counts as one
# case. A test CTest lists as failed counts as one failed case unless its counts file already
# says that cases failed: a crash, a timeout or a sanitizer report at exit writes no file or
# a file without failures.
count_tests() {
    local preset=$1 dir=$root/build/$1 total files=0 uncounted_failures=0 file name p f s line
    local -A failed_cases=()
    total=$(ctest --preset "$preset" -N 2>/dev/null | sed -n 's/^Total Tests: \([0-9][0-9]*\)$/\1/p')
    for file in "$dir"/test-counts/*.txt; do
        [ -e "$file" ] || continue
        name=$(basename "$file" .txt)
        if ! read -r p f s <"$file" || ! [[ $p =~ ^[0-9]+$ && $f =~ ^[0-9]+$ ]]; then
            continue # a damaged file: the test counts as if it had written none
        fi
        passed=$((passed + p))
        failed=$((failed + f))
        failed_cases[$name]=$f
        files=$((files + 1))
    done
    if [ -f "$dir/Testing/Temporary/LastTestsFailed.log" ]; then
        while IFS= read -r line; do
            name=${line#*:}
            [ -n "$name" ] || continue
            if [ -z "${failed_cases[$name]+set}" ]; then
                uncounted_failures=$((uncounted_failures + 1))
                failed=$((failed + 1))
            elif [ "${failed_cases[$name]}" -eq 0 ]; then
                failed=$((failed + 1))
            fi
            echo "$preset: FAILED $name"
        done <"$dir/Testing/Temporary/LastTestsFailed.log"
    fi
    if [[ $total =~ ^[0-9]+$ ]]; then
        passed=$((passed + total - files - uncounted_failures))
    fi
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

    # Counts of an earlier run must not stand for this one.
    rm -f "build/$preset"/test-counts/*.txt "build/$preset/Testing/Temporary/LastTestsFailed.log"
    local ctest=(ctest --preset "$preset")
    if [ "$preset" = windows ] && [ -z "${DISPLAY:-}" ]; then
        # One X server for the whole run; the Windows programs share it.
        ctest=(xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" "${ctest[@]}")
    fi
    local rc=0
    "${ctest[@]}" || rc=$?

    local before=$failed
    count_tests "$preset"
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
echo "==== layers ===="
if bash tools/check-layers.sh --self-test && bash tools/check-layers.sh; then
    passed=$((passed + 1))
else
    fail "layers"
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
