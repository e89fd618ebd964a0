#!/usr/bin/env bash
# The window against the command-line tool: one folder tree of camera-like
# JPEGs run through the window's controller (a drop on the main window, on the
# offscreen platform) and through `quillet process` with the same settings
# store. Prints both wall times and the window's time over the tool's.
#
#   bench/window.sh [options] [-- BENCH_OPTIONS]
#
#   --files N        small camera-like pictures in the tree (default 400)
#   --big N          big camera pictures added to it (default 0)
#   --tree DIR       take this folder instead of making one
#   --runs N         runs of each (default 3)
#   --no-build       use the binaries in build/release as they are
#
# The tree is made from the benchmark corpus (make_corpus.sh) as hard links in
# bench/work/window-tree/: folders of 40 pictures, every other one with a
# subfolder, as a camera's card copied folder by folder looks. The job is the
# other benchmarks' (fit in 1600 x 1600, JPEG quality 80, EXIF kept) unless
# BENCH_OPTIONS give a store of its own (--settings FILE).
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
files=400
big=0
tree=
runs=3
build=1
while [ $# -gt 0 ]; do
    case $1 in
        --files) files=$2; shift 2 ;;
        --big) big=$2; shift 2 ;;
        --tree) tree=$2; shift 2 ;;
        --runs) runs=$2; shift 2 ;;
        --no-build) build=0; shift ;;
        --) shift; break ;;
        -h|--help) sed -n '2,19p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
        *) echo "window.sh: unknown option '$1' (see --help)" >&2; exit 2 ;;
    esac
done

if [ "$build" -eq 1 ]; then
    (cd "$root" && { [ -d build/release ] || cmake --preset release >/dev/null; } &&
        cmake --build build/release --target quillet quillet-window-bench)
fi

if [ -z "$tree" ]; then
    bash "$here/make_corpus.sh" --big "$big" --small "$files"
    tree=$here/work/window-tree
    rm -rf "$tree"
    pictures=()
    for ((i = 0; i < big; i++)); do pictures+=("$here/corpus/big/$(printf 'big_%02d.jpg' "$i")"); done
    for ((i = 0; i < files; i++)); do pictures+=("$here/corpus/small/$(printf 'small_%04d.jpg' "$i")"); done
    n=0
    for picture in "${pictures[@]}"; do
        roll=$((n / 40))
        folder=$tree/$(printf 'roll_%02d' "$roll")
        # Every other folder keeps its last ten pictures in a subfolder.
        if [ $((roll % 2)) -eq 1 ] && [ $((n % 40)) -ge 30 ]; then folder=$folder/selects; fi
        mkdir -p "$folder"
        ln "$picture" "$folder/$(printf 'IMG_%04d.JPG' "$n")"
        n=$((n + 1))
    done
fi

echo "Load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
"$root/build/release/quillet-window-bench" --tree "$tree" --runs "$runs" "$@"
echo "Load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
