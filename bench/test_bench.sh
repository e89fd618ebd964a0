#!/usr/bin/env bash
# Checks the benchmark's own machinery: report parsing, statistics, the decode
# shrink factor, target verdicts, and the corpus builder's promises (real
# sizes in the EXIF, same bytes every time, rebuild only on change).
#
#   bench/test_bench.sh          everything (the corpus part takes a minute)
#   bench/test_bench.sh --fast   without the corpus part
set -uo pipefail

here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=lib.sh
. "$here/lib.sh"

failures=0
checks=0
expect() { # NAME EXPECTED ACTUAL
    checks=$((checks + 1))
    if [ "$2" != "$3" ]; then
        echo "FAIL: $1: expected '$2', got '$3'"
        failures=$((failures + 1))
    fi
}

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# --- /usr/bin/time -v reports ---------------------------------------------------

# Real report shapes: under a minute, over an hour, a failing command whose
# report starts with an extra line, and values that must add up.
cat > "$scratch/short.txt" <<'EOF'
	Command being timed: "vipsthumbnail -s 1600x1600 a.jpg"
	User time (seconds): 12.34
	System time (seconds): 0.56
	Percent of CPU this job got: 180%
	Elapsed (wall clock) time (h:mm:ss or m:ss): 0:07.15
	Maximum resident set size (kbytes): 204800
	Exit status: 0
EOF
expect "wall and CPU under a minute" "7.15 12.90 204800 0" "$(parse_time_report "$scratch/short.txt")"

cat > "$scratch/long.txt" <<'EOF'
	Command being timed: "mogrify -path out *.jpg"
	User time (seconds): 3700.00
	System time (seconds): 10.00
	Elapsed (wall clock) time (h:mm:ss or m:ss): 1:02:03.50
	Maximum resident set size (kbytes): 1000
	Exit status: 0
EOF
expect "wall over an hour" "3723.50 3710.00 1000 0" "$(parse_time_report "$scratch/long.txt")"

cat > "$scratch/failed.txt" <<'EOF'
Command exited with non-zero status 2
	Command being timed: "quillet process"
	User time (seconds): 0.01
	System time (seconds): 0.00
	Elapsed (wall clock) time (h:mm:ss or m:ss): 1:00.00
	Maximum resident set size (kbytes): 9000
	Exit status: 2
EOF
expect "failing command keeps its status" "60.00 0.01 9000 2" "$(parse_time_report "$scratch/failed.txt")"

echo "/usr/bin/time: cannot run nosuchtool: No such file or directory" > "$scratch/notrun.txt"
parse_time_report "$scratch/notrun.txt" > /dev/null
expect "a report without timings is refused" 1 $?
parse_time_report "$scratch/absent.txt" > /dev/null 2>&1 && status=0 || status=1
expect "a missing report is refused" 1 "$status"

# The real thing, so the parser follows the installed time's wording; a
# crash must not pass for success.
/usr/bin/time -v -o "$scratch/real.txt" bash -c 'exit 3' 2>/dev/null
expect "exit status from a real report" 3 "$(parse_time_report "$scratch/real.txt" | cut -d' ' -f4)"
/usr/bin/time -v -o "$scratch/crash.txt" timeout 10 bash -c 'kill -SEGV $$' 2>/dev/null
expect "a crash counts as failure" 139 "$(parse_time_report "$scratch/crash.txt" | cut -d' ' -f4)"

# --- statistics ---------------------------------------------------------------

expect "median of an odd count, unsorted" "2.50" "$(median 9.1 2.5 1.0)"
expect "median of an even count" "3.00" "$(median 4 1 2 10)"
expect "median of one" "7.00" "$(median 7)"
expect "median compares numbers, not text" "9.00" "$(median 10 9 8.5 100 2)"
median > /dev/null
expect "median of nothing fails" 1 $?
expect "spread" "0.90-12.00" "$(spread 12 0.9 3)"

# --- decode shrink factor ----------------------------------------------------------

# libjpeg's scaled size is rounded up, and only the longer side has to cover
# the box when the box is square.
while read -r w h want; do
    expect "shrink factor for ${w}x${h}" "$want" "$(shrink_factor "$w" "$h" 1600)"
done <<'EOF'
6000 4000 2
4000 6000 2
6400 4800 4
6399 4800 4
6396 4800 2
12800 100 8
25600 25600 8
3200 2400 2
3199 2400 2
3197 2400 1
1600 1200 1
640 480 1
EOF

# --- fitting, ratios and verdicts ----------------------------------------------------

expect "fit a landscape picture" "1600 1067" "$(fitted_size 6000 4000 1600)"
expect "fit a portrait picture" "1067 1600" "$(fitted_size 4000 6000 1600)"
expect "fit enlarges a small picture" "1600 1200" "$(fitted_size 640 480 1600)"
expect "fit a square picture" "1600 1600" "$(fitted_size 500 500 1600)"
expect "fit rounds halves up" "1600 900" "$(fitted_size 720 405 1600)"

expect "ratio" "0.50" "$(ratio 1 2)"
expect "ratio with a failed tool" "-" "$(ratio - 2)"
expect "ratio by zero" "-" "$(ratio 3 0)"
expect "at most, on the limit" pass "$(at_most 0.60 0.60)"
expect "at most, above" FAIL "$(at_most 0.61 0.60)"
expect "at most, no measurement" n/a "$(at_most - 0.60)"
expect "at least, on the limit" pass "$(at_least 20 20)"
expect "at least, below" FAIL "$(at_least 19.99 20)"
expect "at least, no measurement" n/a "$(at_least "" 1.5)"
expect "kilobytes to megabytes" 200 "$(kb_to_mb 204800)"

# --- corpus builder ---------------------------------------------------------------

if [ "${1:-}" != --fast ]; then
    corpus=$scratch/corpus
    if ! "$here/make_corpus.sh" --dir "$corpus" --big 0 --small 3 > "$scratch/build.log" 2>&1; then
        expect "corpus builds" 0 1
        cat "$scratch/build.log"
    else
        expect "small pictures made" 3 "$(find "$corpus/small" -name '*.jpg' | wc -l)"
        # The pixel-size tags must describe the new picture, not the camera's.
        for file in "$corpus"/small/*.jpg; do
            expect "EXIF size of $(basename "$file")" \
                "$(vipsheader -f width "$file") $(vipsheader -f height "$file")" \
                "$(exiftool -s3 -ExifImageWidth -ExifImageHeight "$file" | paste -sd' ' -)"
            [ -n "$(exiftool -s3 -Make "$file")" ]
            expect "camera make in $(basename "$file")" 0 $?
        done
        sums=$(cd "$corpus/small" && md5sum ./*.jpg)
        touch -d '2001-01-01' "$corpus"/small/*.jpg

        # Asking again changes nothing; asking for more adds only the new file.
        "$here/make_corpus.sh" --dir "$corpus" --big 0 --small 4 > "$scratch/again.log" 2>&1
        expect "cached files kept" 3 "$(find "$corpus/small" -name '*.jpg' ! -newermt '2002-01-01' | wc -l)"
        expect "one new file" 4 "$(find "$corpus/small" -name '*.jpg' | wc -l)"

        # A changed stamp (as after editing the generator) rebuilds, to the same bytes.
        echo stale > "$corpus/.stamp"
        "$here/make_corpus.sh" --dir "$corpus" --big 0 --small 3 > "$scratch/rebuild.log" 2>&1
        expect "rebuilt after a change" 0 "$(find "$corpus/small" -name '*.jpg' ! -newermt '2002-01-01' | wc -l)"
        expect "same bytes after a rebuild" "$sums" "$(cd "$corpus/small" && md5sum ./*.jpg)"
    fi
fi

# --- a tool that does not do the job is reported, never timed -----------------------

# A stand-in quillet whose fault is chosen by FAKE_FAULT: it exits with an
# error, writes pictures of the wrong size, or leaves a picture out of its
# listing. The other tools still run and are timed.
if [ "${1:-}" != --fast ]; then
    fake=$scratch/quillet
    cat > "$fake" <<'FAKE'
#!/usr/bin/env bash
[ "$1" = --version ] && { echo "quillet stand-in"; exit 0; }
shift 2
command=$1
shift
case $FAKE_FAULT in
    exit) echo "process is broken" >&2; exit 2 ;;
    silent) exit 3 ;;
    size)
        while [ $# -gt 1 ]; do [ "$1" = --dest ] && dest=$2; shift; done
        mkdir -p "$dest/small" && cp "${1%/}"/*.jpg "$dest/small/" ;;
    listing) [ "$command" = info ] && shift && shift && exiftool -json "$@" ;;
esac
FAKE
    chmod +x "$fake"
    bench() { # FAULT JOBS
        FAKE_FAULT=$1 "$here/run.sh" --jobs "$2" --big 0 --small 3 --small-runs 1 --quillet "$fake" \
            --work "$scratch/work" --output "$scratch/results.md" > "$scratch/run.log" 2>&1
        expect "benchmark with a quillet fault '$1' completes" 0 $?
    }
    row() { grep "^| $1 |" "$scratch/results.md" | sed -n 1p; }

    bench exit small
    case $(row quillet) in *"FAILED: exit status 2: process is broken"*) ok=yes ;; *) ok="$(row quillet)" ;; esac
    expect "failing run shown with its message" yes "$ok"
    case $(row vipsthumbnail) in *"| yes |") ok=yes ;; *) ok="$(row vipsthumbnail)" ;; esac
    expect "other tools still timed" yes "$ok"
    expect "target without a measurement" 1 "$(grep -c '| n/a |$' "$scratch/results.md")"

    bench silent info
    case $(row quillet) in *"FAILED: exit status 3 |"*) ok=yes ;; *) ok="$(row quillet)" ;; esac
    expect "silent failure reported" yes "$ok"

    bench size small
    case $(row quillet) in *"small_0000.jpg is 640x480, expected 1600x1200"*) ok=yes ;; *) ok="$(row quillet)" ;; esac
    expect "unscaled output caught" yes "$ok"

    bench listing info
    case $(row quillet) in *"listed 2 of 3 pictures"*) ok=yes ;; *) ok="$(row quillet)" ;; esac
    expect "incomplete listing caught" yes "$ok"
fi

echo "$checks checks, $failures failed"
[ "$failures" -eq 0 ]
