#!/usr/bin/env bash
# Peak memory of `quillet process` against `vipsthumbnail` on the content that
# costs memory: high-entropy JPEGs, a 108 MP PNG, a gigapixel TIFF, and the
# same batch at growing sizes. Writes a "## Memory" section into
# bench/RESULTS.md (replacing an earlier one; run it after run.sh).
#
#   bench/memory.sh [options]
#
#   --noisy N          noisy 6000 x 4000 JPEGs (default 40)
#   --sizes LIST       batch sizes of the memory-versus-batch line (default 40,400,4000)
#   --skip LIST        leave out any of noisy,png,tiff,batch
#   --quillet PATH     measure this binary instead of build/release/quillet
#   --output FILE      where the section goes (default bench/RESULTS.md)
#   --print            print the section instead of writing it
#   --make             only make the pictures
#
# The job is the speed benchmark's: fit in 1600 x 1600, JPEG quality 80, EXIF
# kept. Peak memory is the largest resident set of the process from
# `/usr/bin/time`; one run each, the tools side by side. The pictures are made
# once into bench/corpus/memory/ (about 1.2 GB) and kept.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
# shellcheck source=lib.sh
. "$here/lib.sh"

box=1600
quality=80
noisy=40
sizes=40,400,4000
skip=
quillet=$root/build/release/quillet
output=$here/RESULTS.md
print=0
make_only=0
invocation="bench/memory.sh${*:+ $*}"

while [ $# -gt 0 ]; do
    case $1 in
        --noisy) noisy=$2; shift 2 ;;
        --sizes) sizes=$2; shift 2 ;;
        --skip) skip=$2; shift 2 ;;
        --quillet) quillet=$2; shift 2 ;;
        --output) output=$2; shift 2 ;;
        --print) print=1; shift ;;
        --make) make_only=1; shift ;;
        -h|--help) sed -n '2,21p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
        *) echo "memory.sh: unknown option '$1' (see --help)" >&2; exit 2 ;;
    esac
done
skipped() { case ",$skip," in *",$1,"*) return 0 ;; *) return 1 ;; esac; }
for tool in vips vipsthumbnail vipsheader; do
    command -v "$tool" >/dev/null || { echo "memory.sh: missing $tool; run scripts/install-deps.sh" >&2; exit 1; }
done
[ -x /usr/bin/time ] || { echo "memory.sh: missing /usr/bin/time" >&2; exit 1; }
[ "$make_only" -eq 1 ] || [ -x "$quillet" ] || { echo "memory.sh: no quillet binary at '$quillet'" >&2; exit 1; }

corpus=$here/corpus/memory
work=$here/work/memory
mkdir -p "$corpus/noisy"
rm -rf "$work"
mkdir -p "$work"

# --- Pictures ------------------------------------------------------------------

generator=$corpus/.bin/memorygen
if [ ! -x "$generator" ] || [ "$here/memorygen.cpp" -nt "$generator" ]; then
    mkdir -p "$corpus/.bin"
    # shellcheck disable=SC2046 # pkg-config prints several words on purpose
    g++ -std=c++20 -O2 -Wall -Wextra "$here/memorygen.cpp" -o "$generator.tmp" $(pkg-config --cflags --libs vips-cpp)
    mv "$generator.tmp" "$generator"
fi
# make KIND FILE WIDTH HEIGHT SEED: one picture, written under a temporary
# name first so an interrupted run leaves no half-made file.
make() {
    [ -s "$2" ] && return 0
    local tmp
    tmp=$(dirname "$2")/.tmp-$(basename "$2")
    echo "$1 $tmp $3 $4 $5" | "$generator"
    mv "$tmp" "$2"
}
for ((i = 0; i < noisy; i++)); do
    make noisy "$corpus/noisy/$(printf 'noisy_%04d.jpg' "$i")" 6000 4000 "$i"
done
png=$corpus/panorama_108mp.png
tiff=$corpus/panorama_1gp.tif
skipped png || make smooth "$png" 12000 9000 7
skipped tiff || make smooth "$tiff" 40000 25000 11

[ "$make_only" -eq 1 ] && exit 0

# --- Measuring -------------------------------------------------------------------

# measure NAME COMMAND...: runs it under /usr/bin/time, prints "WALL CPU RSS_KB".
measure() {
    local name=$1
    shift
    local tf=$work/$name.time
    if ! /usr/bin/time -v -o "$tf" "$@" </dev/null >"$work/$name.out" 2>"$work/$name.err"; then
        echo "memory.sh: $name failed: $(tail -n 2 "$work/$name.err")" >&2
        echo "- - -"
        return 0
    fi
    parse_time_report "$tf" | cut -d' ' -f1-3
}
run_quillet() { # NAME OUT INPUT...
    local name=$1 out=$2
    shift 2
    rm -rf "$out" "$work/quillet.ini"
    measure "$name" nice "$quillet" --settings "$work/quillet.ini" process --fit "${box}x${box}" \
        --quality "$quality" --keep-exif --on-conflict replace --dest "$out" "$@"
}
run_vips() { # NAME OUT INPUT...
    local name=$1 out=$2
    shift 2
    rm -rf "$out"
    mkdir -p "$out"
    measure "$name" nice vipsthumbnail -s "${box}x${box}" -o "$out/%s.jpg[Q=$quality]" "$@"
}
mb() { kb_to_mb "$1"; }

rows=()
row() { # LABEL QUILLET_REPORT VIPS_REPORT
    local q v
    read -r -a q <<< "$2"
    read -r -a v <<< "$3"
    local r
    r=$(ratio "${q[2]}" "${v[2]}")
    rows+=("| $1 | $(mb "${q[2]}") | $(mb "${v[2]}") | $r | $(at_most "$r" 1.50) | ${q[0]} | ${v[0]} |")
}

loadavg_start=$(cut -d' ' -f1-3 /proc/loadavg)
started=$(date -u '+%Y-%m-%d %H:%M UTC')
noisy_files=("$corpus"/noisy/noisy_*.jpg)
noisy_files=("${noisy_files[@]:0:$noisy}")
if ! skipped noisy; then
    mkdir -p "$work/sets/noisy"
    ln "${noisy_files[@]}" "$work/sets/noisy/"
    cat "${noisy_files[@]}" >/dev/null
    row "$noisy noisy 6000 x 4000 JPEGs" "$(run_quillet noisy-q "$work/out/q" "$work/sets/noisy/")" \
        "$(cd "$work/sets/noisy" && run_vips noisy-v "$work/out/v" ./*.jpg)"
fi
if ! skipped png; then
    row "one 12000 x 9000 PNG (108 MP)" "$(run_quillet png-q "$work/out/q" "$png")" \
        "$(run_vips png-v "$work/out/v" "$png")"
fi
if ! skipped tiff; then
    row "one 40000 x 25000 tiled TIFF (1 GP)" "$(run_quillet tiff-q "$work/out/q" "$tiff")" \
        "$(run_vips tiff-v "$work/out/v" "$tiff")"
fi
lines=()
if ! skipped batch; then
    # The same noisy pictures again and again (hard links, new names): only
    # the length of the batch changes.
    IFS=, read -r -a counts <<< "$sizes"
    for count in "${counts[@]}"; do
        set_dir=$work/sets/batch-$count
        mkdir -p "$set_dir"
        for ((i = 0; i < count; i++)); do
            ln "${noisy_files[i % ${#noisy_files[@]}]}" "$set_dir/$(printf 'p_%05d.jpg' "$i")"
        done
        read -r -a q <<< "$(run_quillet "batch-$count" "$work/out/q" "$set_dir/")"
        lines+=("| $count | $(mb "${q[2]}") | ${q[0]} | ${q[1]} |")
        rm -rf "$set_dir" "$work/out/q"
    done
fi
loadavg_end=$(cut -d' ' -f1-3 /proc/loadavg)

section() {
    echo "## Memory"
    echo
    echo "Taken $started by \`$invocation\`, one run per line, quillet and vipsthumbnail side by side; load average $loadavg_start at the start, $loadavg_end at the end. Job: fit in ${box} x ${box}, JPEG quality $quality, EXIF kept (\`--jobs\` left at one per core)."
    echo
    echo "| input | quillet peak RSS MB | vipsthumbnail peak RSS MB | ratio | goal ≤ 1.50 | quillet wall s | vipsthumbnail wall s |"
    echo "|---|---:|---:|---:|---|---:|---:|"
    printf '%s\n' "${rows[@]}"
    if [ ${#lines[@]} -gt 0 ]; then
        echo
        echo "Memory against batch length (the noisy pictures over and over):"
        echo
        echo "| files | quillet peak RSS MB | wall s | CPU s |"
        echo "|---:|---:|---:|---:|"
        printf '%s\n' "${lines[@]}"
    fi
}

if [ "$print" -eq 1 ]; then
    section
    exit 0
fi
[ -f "$output" ] || touch "$output"
# Everything before an earlier memory section, then the new one.
awk '/^## Memory$/ { exit } { print }' "$output" > "$work/results.md"
section >> "$work/results.md"
mv "$work/results.md" "$output"
echo "Memory section written to $output"
