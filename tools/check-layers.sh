#!/usr/bin/env bash
# Checks that every #include runs down the layers, never up. Prints each include that runs
# from a lower layer to a higher one and exits non-zero if there is any.
#
#   bash tools/check-layers.sh              the repository's tracked files
#   bash tools/check-layers.sh --self-test  checks the check itself on made-up trees
#
# A file's layer is the folder it lives in; an include's layer is its first path component
# ("curve/curve.h" is in curve/, "curvectl/messages.h" in include/curvectl/, "host/hold.h"
# in host/). A quoted include without a layer folder must name a file beside the includer
# (it is then in the includer's layer); angle includes without one are system headers.
set -uo pipefail

# ---------------------------------------------------------------------------------------
# The layers, from the bottom up: a file may include its own layer and the ones below.
# Each entry is "<layer>:<folders>", folders as they stand in the tree. Folders of one layer
# share a number. The top entry may include anything; nothing may include it.
layers=(
    "host:host"
    "include:include/curvectl"
    "seam:platform res" # the platform seam: module instance, strings, client messages
    "curve:curve"
    "control:control"
    "editor:editor"
    "modes:modes"
    "plugin:plugin"
    "demo:demo"
    "anything:tests bench fuzz tools" # tests, benchmarks, fuzzers and tools
)

# The first path component of an include, for the layers that are not named by their own
# folder: "curvectl/..." lives in include/curvectl/ (and the generated curvectl/version.h).
include_alias() {
    case $1 in
    curvectl) echo include/curvectl ;;
    *) echo "$1" ;;
    esac
}

# Includes allowed although they run upwards, as "<file> <include>". The curve still reads
# its owner through the concrete control; these go when the curve reaches its owner through
# an interface of its own.
exceptions=(
    "curve/curve.cpp control/curve_control.h"
    "curve/curve_draw_win32.cpp control/curve_control.h"
    "curve/curve_edit.cpp control/curve_control.h"
    "curve/curve_eval.cpp control/curve_control.h"
    "curve/curve_hit_test.cpp control/curve_control.h"
    "curve/curve_mirror.cpp control/curve_control.h"
)
# ---------------------------------------------------------------------------------------

declare -A rank_of_folder
rank_of_top=0
build_ranks() {
    local i entry folder
    for i in "${!layers[@]}"; do
        entry=${layers[$i]}
        for folder in ${entry#*:}; do
            rank_of_folder[$folder]=$i
        done
        rank_of_top=$i
    done
}

# The rank of a path's layer (its longest matching folder), or nothing.
rank_of_path() {
    local path=$1 folder best="" best_len=0
    for folder in "${!rank_of_folder[@]}"; do
        if [[ $path == "$folder"/* ]] && [ ${#folder} -gt $best_len ]; then
            best=${rank_of_folder[$folder]}
            best_len=${#folder}
        fi
    done
    echo "$best"
}

# The rank of a quoted include that names no layer: a file beside the includer, or in one
# of the includer's layer folders (demo/ is on the demo's include path); nothing if neither.
rank_of_local() {
    local root=$1 file=$2 target=$3 dir folder rank
    dir=$(dirname "$file")
    if [ -e "$root/$dir/$target" ]; then
        rank_of_path "$dir/$target"
        return
    fi
    rank=$(rank_of_path "$file")
    for folder in ${layers[$rank]#*:}; do
        if [ -e "$root/$folder/$target" ]; then
            echo "$rank"
            return
        fi
    done
}

is_exception() {
    local pair="$1 $2" e
    for e in "${exceptions[@]}"; do
        [ "$e" = "$pair" ] && return 0
    done
    return 1
}

layer_name() { echo "${layers[$1]%%:*}"; }

# check_tree ROOT: checks every C/C++ source and resource script under ROOT (the tracked
# ones when ROOT is a git work tree). Prints the violations; returns 1 if there are any.
check_tree() {
    local root=$1 bad=0 files file file_rank line target first folder target_rank dir
    if git -C "$root" rev-parse --is-inside-work-tree >/dev/null 2>&1; then
        files=$(git -C "$root" ls-files '*.cpp' '*.c' '*.h' '*.inc' '*.rc')
    else
        files=$(cd "$root" && find . -type f \( -name '*.cpp' -o -name '*.c' -o -name '*.h' \
                -o -name '*.inc' -o -name '*.rc' \) | sed 's#^\./##' | sort)
    fi
    while IFS= read -r file; do
        [ -n "$file" ] || continue
        file_rank=$(rank_of_path "$file")
        if [ -z "$file_rank" ]; then
            echo "check-layers: $file is in no layer (add its folder to tools/check-layers.sh)"
            bad=1
            continue
        fi
        [ "$file_rank" -eq "$rank_of_top" ] && continue
        while IFS= read -r line; do
            if [[ $line =~ ^[[:space:]]*#[[:space:]]*include[[:space:]]*\"([^\"]+)\" ]]; then
                target=${BASH_REMATCH[1]}
                quoted=1
            elif [[ $line =~ ^[[:space:]]*#[[:space:]]*include[[:space:]]*\<([^\>]+)\> ]]; then
                target=${BASH_REMATCH[1]}
                quoted=0
            else
                continue
            fi
            first=${target%%/*}
            folder=$(include_alias "$first")
            target_rank=""
            [ "$target" != "$first" ] && target_rank=$(rank_of_path "$folder/x")
            if [ -z "$target_rank" ]; then
                [ $quoted -eq 0 ] && continue # a system header
                target_rank=$(rank_of_local "$root" "$file" "$target")
                if [ -z "$target_rank" ]; then
                    echo "$file: #include \"$target\" names no layer, no file beside it and" \
                         "none in its layer's folders"
                    bad=1
                    continue
                fi
            fi
            if [ "$target_rank" -gt "$file_rank" ] && ! is_exception "$file" "$target"; then
                echo "$file: #include \"$target\" runs up from" \
                     "$(layer_name "$file_rank") to $(layer_name "$target_rank")"
                bad=1
            fi
        done < <(grep -E '^[[:space:]]*#[[:space:]]*include' "$root/$file")
    done <<<"$files"
    return $bad
}

# Made-up trees with one include each: the check must pass the allowed ones and fail the
# others, so a check that cannot fail does not go unnoticed.
self_test() {
    local tmp failed=0
    tmp=$(mktemp -d)
    trap 'rm -rf "$tmp"' RETURN
    expect() { # expect pass|fail FILE INCLUDE [FILE-BESIDE]
        rm -rf "$tmp/t" && mkdir -p "$tmp/t/$(dirname "$2")"
        printf '#include %s\n' "$3" >"$tmp/t/$2"
        if [ -n "${4:-}" ]; then
            mkdir -p "$tmp/t/$(dirname "$4")" && : >"$tmp/t/$4"
        fi
        if check_tree "$tmp/t" >/dev/null; then got=pass; else got=fail; fi
        if [ "$got" != "$1" ]; then
            echo "check-layers self-test: $2 including $3 should $1"
            failed=1
        fi
    }
    expect pass curve/a.cpp '"host/hold.h"'
    expect pass curve/a.cpp '"curvectl/icurve.h"'
    expect pass curve/a.cpp '"platform/platform.h"'
    expect pass modes/a.cpp '"editor/curve_ctl_window.h"'
    expect pass plugin/a.cpp '"control/curve_control.h"'
    expect pass tests/core/a.cpp '"modes/mouse_modes.h"'
    expect pass curve/a.cpp '<cstdio>'
    expect pass demo/a.cpp '"b.h"' demo/b.h
    expect pass demo/session/a.cpp '"png/b.h"' demo/png/b.h
    expect pass curve/curve_mirror.cpp '"control/curve_control.h"'
    expect fail curve/a.cpp '"control/curve_control.h"'
    expect fail editor/a.cpp '"modes/mouse_modes.h"'
    expect fail control/a.cpp '"plugin/class_descs.h"'
    expect fail platform/a.cpp '"curve/curve.h"'
    expect fail res/a.h '"curve/curve.h"'
    expect fail host/src/core/a.cpp '"curvectl/icurve.h"'
    expect fail include/curvectl/a.h '"platform/platform.h"'
    expect fail modes/a.cpp '<plugin/class_descs.h>'
    expect fail curve/a.cpp '"tests/support/x.h"'
    expect fail curve/a.cpp '"missing.h"'
    expect fail curve/a.cpp '"png/b.h"' demo/png/b.h
    expect fail misc/a.cpp '"host/hold.h"'
    return $failed
}

build_ranks
if [ "${1:-}" = --self-test ]; then
    if self_test; then
        echo "check-layers: self-test passed"
        exit 0
    fi
    exit 1
fi

cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! check_tree .; then
    echo "check-layers: includes run up the layers (order: host <- include/curvectl <-" \
         "platform, res <- curve <- control <- editor <- modes <- plugin <- demo)"
    exit 1
fi
echo "layers: every include runs down"
