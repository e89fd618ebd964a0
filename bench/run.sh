#!/usr/bin/env bash
# Times `quillet process` and `quillet info` against other tools doing the same
# job on the same pictures, and writes the table to bench/RESULTS.md.
#
#   bench/run.sh [options]
#
#   --quick            4 big and 100 small pictures, one run each: checks the
#                      whole script in a few minutes; the numbers mean little
#   --runs N           runs per tool on the big pictures (default 3)
#   --small-runs N     runs per tool on the small pictures and the listing (default 3)
#   --big N            synthetic big pictures (default 40; the real photos come on top)
#   --small N          small pictures (default 2000)
#   --jobs LIST        comma-separated subset of big,small,info (default all three)
#   --quillet PATH     time this quillet binary instead of building build/release/quillet
#   --output FILE      where to write the table (default bench/RESULTS.md)
#   --timeout S        stop a tool run after S seconds and count it failed (default 1800)
#   --work DIR         scratch folder for sets, outputs and logs (default bench/work)
#
# The job: fit in 1600 x 1600, JPEG quality 80, EXIF kept where the tool can.
# Each number is the median of the runs; tools are interleaved run by run so
# that a change in machine load hits them all alike.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
# shellcheck source=lib.sh
. "$here/lib.sh"

box=1600
hint=$((2 * box))
quality=80
big=40
small=2000
runs=3
small_runs=3
jobs=big,small,info
quillet=
output=$here/RESULTS.md
quick=0
limit=1800
work=$here/work
invocation="bench/run.sh${*:+ $*}"

while [ $# -gt 0 ]; do
    case $1 in
        --quick) quick=1; big=4; small=100; runs=1; small_runs=1; shift ;;
        --runs) runs=$2; shift 2 ;;
        --small-runs) small_runs=$2; shift 2 ;;
        --big) big=$2; shift 2 ;;
        --small) small=$2; shift 2 ;;
        --jobs) jobs=$2; shift 2 ;;
        --quillet) quillet=$2; shift 2 ;;
        --output) output=$2; shift 2 ;;
        --timeout) limit=$2; shift 2 ;;
        --work) work=$2; shift 2 ;;
        -h|--help) sed -n '2,22p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
        *) echo "run.sh: unknown option '$1' (see --help)" >&2; exit 2 ;;
    esac
done
for n in "$big" "$small" "$runs" "$small_runs" "$limit"; do
    case $n in ''|*[!0-9]*) echo "run.sh: counts must be whole numbers, got '$n'" >&2; exit 2 ;; esac
done
want() { case ",$jobs," in *",$1,"*) return 0 ;; *) return 1 ;; esac; }

# --- Tools -----------------------------------------------------------------

missing=()
for tool in vipsthumbnail vipsheader vips gm mogrify djpeg cjpeg exiftool g++ pkg-config; do
    command -v "$tool" >/dev/null || missing+=("$tool")
done
[ -x /usr/bin/time ] || missing+=(/usr/bin/time)
if [ ${#missing[@]} -gt 0 ]; then
    echo "run.sh: missing ${missing[*]}; run scripts/install-deps.sh first" >&2
    exit 1
fi
pin=()
if command -v taskset >/dev/null && taskset -c 0 true 2>/dev/null; then pin=(taskset -c 0); fi

if [ -z "$quillet" ]; then
    echo "Building quillet (release preset)"
    (cd "$root" && cmake --preset release >/dev/null && cmake --build --preset release --target quillet >/dev/null)
    quillet=$root/build/release/quillet
fi
quillet=$(cd "$(dirname "$quillet")" && pwd)/$(basename "$quillet")
[ -x "$quillet" ] || { echo "run.sh: no quillet binary at '$quillet'" >&2; exit 1; }

# --- Corpus and working sets -------------------------------------------------

"$here/make_corpus.sh" --big "$big" --small "$small"
corpus=$here/corpus
mkdir -p "$work"
work=$(cd "$work" && pwd)
# Only what this script makes: the folder may be one the user handed in.
rm -rf "$work/sets" "$work/out" "$work/logs" "$work/times" "$work/results" "$work/floor.sh" "$work/quillet.ini"
mkdir -p "$work/sets" "$work/out" "$work/logs" "$work/times" "$work/results"

# The sets are hard links into the cache, so a run sees exactly the files
# asked for whatever else the cache holds.
link_set() {
    local dest=$1 file
    shift
    mkdir -p "$dest"
    for file in "$@"; do ln "$file" "$dest/" 2>/dev/null || cp "$file" "$dest/"; done
}
big_files=()
for ((i = 0; i < big; i++)); do big_files+=("$corpus/big/$(printf 'big_%02d.jpg' "$i")"); done
real_files=()
for file in "$corpus"/real/*.jpg; do [ -f "$file" ] && real_files+=("$file"); done
small_files=()
for ((i = 0; i < small; i++)); do small_files+=("$corpus/small/$(printf 'small_%04d.jpg' "$i")"); done
link_set "$work/sets/big" "${big_files[@]}" "${real_files[@]}"
link_set "$work/sets/small" "${small_files[@]}"

# describe_set DIR -> "N files, M MP in all (A to B MP each), S MB"
describe_set() {
    # One exiftool for the folder: a process per file takes a minute on 2,000 files.
    exiftool -q -T -n -File:ImageWidth -File:ImageHeight -FileSize -ext jpg "$1" | awk '{
        mp = $1 * $2 / 1e6; total += mp; bytes += $3; n++
        if (n == 1 || mp < lo) lo = mp
        if (mp > hi) hi = mp
    } END { printf "%d files, %.0f MP in all (%.1f to %.1f MP each), %.0f MB\n", n, total, lo, hi, bytes / 1048576 }'
}

# --- One timed run -------------------------------------------------------------

# tool_command JOB TOOL SET OUT: sets `cmd` and `cwd` for one run.
tool_command() {
    local job=$1 tool=$2 set=$3 out=$4
    local names=()
    local file
    for file in "$set"/*.jpg; do names+=("${file##*/}"); done
    cwd=$set
    case $tool in
        quillet)
            cwd=$work
            if [ "$job" = info ]; then
                cmd=("$quillet" --settings "$work/quillet.ini" info --json "${names[@]/#/$set/}")
            else
                cmd=("$quillet" --settings "$work/quillet.ini" process --fit "${box}x${box}" --quality "$quality"
                     --keep-exif --on-conflict replace --dest "$out" "$set/")
            fi ;;
        vipsthumbnail) cmd=(vipsthumbnail -s "${box}x${box}" -o "$out/%s.jpg[Q=$quality]" "${names[@]}") ;;
        gm) cmd=(gm mogrify -output-directory "$out" -size "${hint}x${hint}" -resize "${box}x${box}"
                 -quality "$quality" "${names[@]}") ;;
        imagemagick) cmd=(mogrify -path "$out" -define "jpeg:size=${hint}x${hint}" -resize "${box}x${box}"
                          -quality "$quality" "${names[@]}") ;;
        floor) cmd=("${pin[@]}" bash "$work/floor.sh" "$out") ;;
        exiftool) cmd=(exiftool -json "${names[@]}") ;;
    esac
}

# The floor: libjpeg-turbo decoding straight at the shrink factor and encoding
# that, one file after the other. Written out beforehand so that working out
# the factors is not timed.
write_floor_script() {
    local set=$1 file w h
    {
        echo 'set -euo pipefail'
        for file in "$set"/*.jpg; do
            w=$(vipsheader -f width "$file")
            h=$(vipsheader -f height "$file")
            # shellcheck disable=SC2016 # "$1" is the floor script's own argument
            printf 'djpeg -scale 1/%d %q | cjpeg -quality %d -outfile "$1"/%q\n' \
                "$(shrink_factor "$w" "$h" "$box")" "$file" "$quality" "${file##*/}"
        done
    } > "$work/floor.sh"
}

# check_outputs JOB TOOL SET OUT STDOUT: prints why the run did not do the job,
# or nothing when it did.
check_outputs() {
    local job=$1 tool=$2 set=$3 out=$4 stdout=$5
    local expected
    expected=$(find "$set" -maxdepth 1 -name '*.jpg' | wc -l)
    if [ "$job" = info ]; then
        local listed
        listed=$( (grep -o '[a-z]*_[0-9]*\.jpg' "$stdout" || true) | sort -u | wc -l)
        [ "$listed" -eq "$expected" ] || echo "listed $listed of $expected pictures"
        return 0
    fi
    local written
    written=$(find "$out" -type f \( -iname '*.jpg' -o -iname '*.jpeg' \) | wc -l)
    if [ "$written" -ne "$expected" ]; then
        echo "wrote $written of $expected pictures"
        return 0
    fi
    [ "$tool" = floor ] && return 0
    # Spot-check sizes on the first, middle and last picture.
    local inputs=("$set"/*.jpg) index input result w h want
    for index in 0 $((expected / 2)) $((expected - 1)); do
        input=${inputs[index]}
        result=$(find "$out" -type f -name "$(basename "${input%.*}").*" | sed -n 1p)
        if [ -z "$result" ]; then
            echo "no output named after $(basename "$input")"
            return 0
        fi
        w=$(vipsheader -f width "$result") h=$(vipsheader -f height "$result")
        want=$(fitted_size "$(vipsheader -f width "$input")" "$(vipsheader -f height "$input")" "$box")
        # One pixel of slack on the short side: tools round differently.
        if ! awk -v w="$w" -v h="$h" -v want="$want" 'BEGIN {
                split(want, s, " "); dw = w - s[1]; dh = h - s[2]
                exit !(dw * dw <= 1 && dh * dh <= 1) }'; then
            echo "$(basename "$result") is ${w}x${h}, expected ${want/ /x}"
            return 0
        fi
    done
}

# last_line FILE: the last non-blank line, cut short; nothing for an empty file.
last_line() { awk 'NF { line = $0 } END { print substr(line, 1, 160) }' "$1" 2>/dev/null || true; }

# run_tool JOB TOOL SET RUN: times one run and appends "WALL CPU RSS" to the
# tool's result file, or records why it failed; a failed tool is not run again.
run_tool() {
    local job=$1 tool=$2 set=$3 run=$4
    local base=$work/results/$job-$tool
    [ -f "$base.failed" ] && return 0
    local out=$work/out/$job-$tool tf=$work/times/$job-$tool-$run.txt
    local stdout=$work/logs/$job-$tool-$run.out stderr=$work/logs/$job-$tool-$run.err
    rm -rf "$out" "$work/quillet.ini"
    mkdir -p "$out"
    tool_command "$job" "$tool" "$set" "$out"
    printf '  %-7s run %d: %-14s' "$job" "$run" "$tool"
    # No terminal on stdin, so that nothing waits for an answer; a hung tool
    # is stopped rather than stalling the whole benchmark.
    (cd "$cwd" && /usr/bin/time -v -o "$tf" timeout -k 10 "$limit" "${cmd[@]}" </dev/null >"$stdout" 2>"$stderr") || true

    local report wall cpu rss status problem=
    if ! report=$(parse_time_report "$tf"); then
        problem="could not be run: $(tail -n 1 "$tf" 2>/dev/null)"
    else
        read -r wall cpu rss status <<< "$report"
        local said
        said=$(last_line "$stderr")
        if [ "$status" -eq 124 ]; then
            problem="stopped after the $limit s time limit"
        elif [ "$status" -gt 128 ]; then
            problem="killed by signal $((status - 128))${said:+: $said}"
        elif [ "$status" -ne 0 ]; then
            problem="exit status $status${said:+: $said}"
        else
            problem=$(check_outputs "$job" "$tool" "$set" "$out" "$stdout")
        fi
    fi
    if [ -n "$problem" ]; then
        echo "FAILED ($problem)"
        echo "$problem" > "$base.failed"
        return 0
    fi
    echo "$wall s wall, $cpu s CPU, $(kb_to_mb "$rss") MB"
    echo "$wall $cpu $rss" >> "$base.runs"
    if [ "$job" != info ] && [ ! -f "$base.exif" ]; then
        local first
        first=$(find "$out" -type f -name '*.jpg' | sort | sed -n 1p)
        if [ -n "$(exiftool -s3 -Make "$first" 2>/dev/null)" ]; then echo yes; else echo no; fi > "$base.exif"
    fi
}

# run_job JOB RUNS TOOL...: warms the page cache, then runs every tool once per
# round, round after round.
run_job() {
    local job=$1 count=$2 set
    shift 2
    set=$work/sets/$([ "$job" = big ] && echo big || echo small)
    cat "$set"/*.jpg > /dev/null
    echo "Job '$job': $count run(s) of $*"
    local run tool
    for ((run = 1; run <= count; run++)); do
        for tool in "$@"; do run_tool "$job" "$tool" "$set" "$run"; done
    done
}

loadavg_start=$(cut -d' ' -f1-3 /proc/loadavg)
started=$(date -u '+%Y-%m-%d %H:%M UTC')
if want big; then
    write_floor_script "$work/sets/big"
    run_job big "$runs" quillet vipsthumbnail gm imagemagick floor
fi
want small && run_job small "$small_runs" quillet vipsthumbnail gm imagemagick
want info && run_job info "$small_runs" quillet exiftool
loadavg_end=$(cut -d' ' -f1-3 /proc/loadavg)

# --- Report ----------------------------------------------------------------------

# stat_of JOB TOOL FIELD(1 wall, 2 CPU, 3 RSS): median over the runs, or "-".
stat_of() {
    local file=$work/results/$1-$2.runs
    [ -s "$file" ] || { echo -; return; }
    # shellcheck disable=SC2046 # one word per run on purpose
    median $(cut -d' ' -f"$3" "$file")
}

# table JOB PICTURES TOOL...: the markdown table of one job.
table() {
    local job=$1 pictures=$2 tool
    shift 2
    local qwall qcpu qrss
    qwall=$(stat_of "$job" quillet 1) qcpu=$(stat_of "$job" quillet 2) qrss=$(stat_of "$job" quillet 3)
    echo "| tool | wall s (median; range) | CPU s | CPU ms per picture | peak RSS MB | wall ÷ quillet | CPU ÷ quillet | RSS ÷ quillet | EXIF kept |"
    echo "|---|---:|---:|---:|---:|---:|---:|---:|---|"
    for tool in "$@"; do
        local base=$work/results/$job-$tool label=$tool
        [ "$tool" = floor ] && label="floor (djpeg -scale + cjpeg, 1 core)"
        [ "$tool" = imagemagick ] && label="ImageMagick mogrify"
        [ "$tool" = gm ] && label="GraphicsMagick gm mogrify"
        if [ -f "$base.failed" ]; then
            echo "| $label | FAILED: $(sed 's/|/\\|/g' "$base.failed") | | | | | | | |"
            continue
        fi
        [ -s "$base.runs" ] || continue
        local wall cpu rss exif=n/a
        wall=$(stat_of "$job" "$tool" 1) cpu=$(stat_of "$job" "$tool" 2) rss=$(stat_of "$job" "$tool" 3)
        local range
        # shellcheck disable=SC2046 # one word per run on purpose
        range=$(spread $(cut -d' ' -f1 "$base.runs"))
        [ -f "$base.exif" ] && exif=$(cat "$base.exif")
        [ "$tool" = floor ] && exif="no (cannot)"
        printf '| %s | %s (%s) | %s | %s | %s | %s | %s | %s | %s |\n' "$label" "$wall" "$range" "$cpu" \
            "$(awk -v c="$cpu" -v n="$pictures" 'BEGIN { ms = 1000 * c / n; printf(ms < 10 ? "%.1f" : "%.0f", ms) }')" "$(kb_to_mb "$rss")" \
            "$(ratio "$wall" "$qwall")" "$(ratio "$cpu" "$qcpu")" "$(ratio "$rss" "$qrss")" "$exif"
    done
}

# The first line of a command's output; the rest is read too, so that the
# command never dies of a closed pipe.
version_of() { "$@" 2>&1 | sed -n 1p || true; }
nbig=$(find "$work/sets/big" -name '*.jpg' | wc -l)
nsmall=$(find "$work/sets/small" -name '*.jpg' | wc -l)
real_names=$(for f in "${real_files[@]}"; do basename "$f"; done | paste -sd, - | sed 's/,/, /g')
commit=$(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo unknown)

{
    echo "# Benchmark results"
    echo
    if [ "$quick" -eq 1 ]; then
        echo "> **Quick run (\`--quick\`): few pictures, one run each, on a machine that was busy. Noisy, not the record.**"
        echo
    fi
    echo "Taken $started by \`$invocation\` (see bench/README.md for how to read it)."
    echo
    echo "## Machine and tools"
    echo
    echo "- Cores: $(nproc); CPU: $(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)"
    echo "- Memory: $(awk '/MemTotal/ { printf "%.1f GB", $2 / 1048576 }' /proc/meminfo); kernel $(uname -r)"
    echo "- Load average (1, 5, 15 min): $loadavg_start at the start, $loadavg_end at the end"
    echo "- quillet: $(version_of "$quillet" --version) (commit $commit), \`$quillet\`"
    echo "- libvips: $(version_of vips --version)"
    echo "- GraphicsMagick: $(version_of gm version)"
    echo "- ImageMagick: $(version_of mogrify -version)"
    echo "- libjpeg-turbo: $(version_of djpeg -version)"
    echo "- ExifTool: $(exiftool -ver)"
    echo
    echo "## Corpus"
    echo
    echo "- Big pictures: $(describe_set "$work/sets/big"); $big synthetic camera pictures (JPEG quality 92, 4:2:0, EXIF of seven sample cameras) plus the real photos: ${real_names:-none (sample folder absent)}."
    want small || want info && echo "- Small pictures: $(describe_set "$work/sets/small")."
    echo
    echo "Job: fit in ${box} x ${box} (small pictures are enlarged, as quillet's fit does by default), JPEG quality $quality, EXIF kept where the tool can. Every number is the median of the runs; ratios are the tool's number divided by quillet's, so above 1 means quillet is faster or smaller."
    if want big; then
        echo
        echo "## Big pictures ($runs run(s))"
        echo
        table big "$nbig" quillet vipsthumbnail gm imagemagick floor
    fi
    if want small; then
        echo
        echo "## Small pictures ($small_runs run(s))"
        echo
        table small "$nsmall" quillet vipsthumbnail gm imagemagick
    fi
    if want info; then
        echo
        echo "## Metadata listing of the small pictures ($small_runs run(s))"
        echo
        table info "$nsmall" quillet exiftool
    fi

    echo
    echo "## Targets"
    echo
    echo "| target | measured | goal | result |"
    echo "|---|---:|---:|---|"
    if want big; then
        w=$(ratio "$(stat_of big quillet 1)" "$(stat_of big vipsthumbnail 1)")
        echo "| big pictures: quillet wall ÷ vipsthumbnail wall | $w | ≤ 0.60 | $(at_most "$w" 0.60) |"
        m=$(ratio "$(stat_of big quillet 3)" "$(stat_of big vipsthumbnail 3)")
        echo "| big pictures: quillet peak RSS ÷ vipsthumbnail peak RSS | $m | ≤ 1.50 | $(at_most "$m" 1.50) |"
        c=$(ratio "$(stat_of big quillet 2)" "$(stat_of big floor 2)")
        echo "| big pictures: quillet CPU per picture ÷ floor CPU per picture | $c | ≤ 1.30 | $(at_most "$c" 1.30) |"
    fi
    if want small; then
        s=$(ratio "$(stat_of small vipsthumbnail 1)" "$(stat_of small quillet 1)")
        echo "| small pictures: vipsthumbnail wall ÷ quillet wall | $s | ≥ 1.5 | $(at_least "$s" 1.5) |"
    fi
    if want info; then
        e=$(ratio "$(stat_of info exiftool 1)" "$(stat_of info quillet 1)")
        echo "| listing: exiftool wall ÷ quillet info wall | $e | ≥ 20 | $(at_least "$e" 20) |"
    fi
    echo
    echo "## Commands"
    echo
    echo "Run in the picture folder, with OUT a fresh folder per run:"
    echo
    echo '```'
    echo "quillet --settings SCRATCH.ini process --fit ${box}x${box} --quality $quality --keep-exif --on-conflict replace --dest OUT SET/"
    echo "vipsthumbnail -s ${box}x${box} -o 'OUT/%s.jpg[Q=$quality]' *.jpg      # 8.14 keeps metadata unless told to strip"
    echo "gm mogrify -output-directory OUT -size ${hint}x${hint} -resize ${box}x${box} -quality $quality *.jpg"
    echo "mogrify -path OUT -define jpeg:size=${hint}x${hint} -resize ${box}x${box} -quality $quality *.jpg"
    echo "${pin[*]:+${pin[*]} }bash floor.sh OUT   # per file: djpeg -scale 1/N FILE | cjpeg -quality $quality, N the largest of 1, 2, 4, 8 keeping ${box} px"
    echo "quillet --settings SCRATCH.ini info --json *.jpg"
    echo "exiftool -json *.jpg"
    echo '```'
} > "$output"

echo
echo "Results written to $output"
sed -n '/^## Targets/,/^## Commands/p' "$output" | sed '$d'
