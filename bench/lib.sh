# shellcheck shell=bash
# Helpers shared by the benchmark scripts: measurement parsing, statistics and
# target checks. Sourced, never run; only plain POSIX awk is used, so mawk (the
# Debian default) and gawk give the same answers.

# parse_time_report FILE
# Prints "WALL CPU RSS_KB STATUS" from a `/usr/bin/time -v` report: wall clock
# and user+system seconds, the peak resident set in kilobytes, the exit status
# (128 + N for a command killed by signal N).
# Prints nothing and fails when the report has no elapsed time (the command
# could not be started, or time itself was killed).
parse_time_report() {
    awk -F': ' '
        /User time \(seconds\)/        { user = $2 }
        /System time \(seconds\)/      { sys = $2 }
        /Maximum resident set size/    { rss = $2 }
        # A command killed by a signal still reads "Exit status: 0" further
        # down; report it the way the shell would, as 128 + the signal.
        /^Command terminated by signal/ { n = split($0, w, " "); signaled = 128 + w[n] }
        /Exit status/                  { status = $2 }
        /Elapsed \(wall clock\) time/  {
            # "m:ss.ss" below an hour, "h:mm:ss" from an hour on.
            n = split($NF, part, ":")
            wall = 0
            for (i = 1; i <= n; i++) wall = wall * 60 + part[i]
            seen = 1
        }
        END {
            if (!seen) exit 1
            if (status == "") status = 0
            if (signaled) status = signaled
            printf "%.2f %.2f %d %d\n", wall, user + sys, rss, status
        }' "$1"
}

# median NUMBER...
# The middle value, or the mean of the two middle values for an even count.
median() {
    [ $# -gt 0 ] || return 1
    printf '%s\n' "$@" | sort -g | awk '
        { v[NR] = $1 }
        END {
            if (NR % 2) printf "%.2f\n", v[(NR + 1) / 2]
            else printf "%.2f\n", (v[NR / 2] + v[NR / 2 + 1]) / 2
        }'
}

# spread NUMBER...
# "min-max" of the values, to show how noisy a median is.
spread() {
    printf '%s\n' "$@" | sort -g | awk 'NR == 1 { lo = $1 } { hi = $1 } END { printf "%.2f-%.2f\n", lo, hi }'
}

# shrink_factor WIDTH HEIGHT BOX
# The largest JPEG decode shrink (1, 2, 4 or 8) after which the picture still
# covers BOX x BOX along its longer side, as libjpeg rounds scaled sizes up.
shrink_factor() {
    awk -v w="$1" -v h="$2" -v box="$3" 'BEGIN {
        long = (w > h) ? w : h
        n = 1
        for (f = 2; f <= 8; f *= 2) {
            scaled = int((long + f - 1) / f)
            if (scaled >= box) n = f
        }
        print n
    }'
}

# ratio A B
# A / B to two decimals, or "-" when either is missing or B is zero.
ratio() {
    awk -v a="$1" -v b="$2" 'BEGIN {
        if (a == "" || b == "" || a == "-" || b == "-" || b + 0 == 0) print "-"
        else printf "%.2f\n", a / b
    }'
}

# at_most VALUE LIMIT
# Prints "pass" when VALUE <= LIMIT, "FAIL" when above, "n/a" when either is
# missing (a tool that failed gives no number to compare).
at_most() {
    awk -v v="$1" -v l="$2" 'BEGIN {
        if (v == "" || l == "" || v == "-" || l == "-") print "n/a"
        else if (v + 0 <= l + 0) print "pass"
        else print "FAIL"
    }'
}

# kb_to_mb KILOBYTES
kb_to_mb() {
    awk -v k="$1" 'BEGIN { if (k == "" || k == "-") print "-"; else printf "%.0f\n", k / 1024 }'
}

# at_least VALUE LIMIT
# Prints "pass" when VALUE >= LIMIT, "FAIL" when below, "n/a" when missing.
at_least() {
    awk -v v="$1" -v l="$2" 'BEGIN {
        if (v == "" || l == "" || v == "-" || l == "-") print "n/a"
        else if (v + 0 >= l + 0) print "pass"
        else print "FAIL"
    }'
}

# fitted_size WIDTH HEIGHT BOX
# "W H" of a WIDTH x HEIGHT picture scaled to fit inside BOX x BOX, larger or
# smaller, rounding halves up.
fitted_size() {
    awk -v w="$1" -v h="$2" -v box="$3" 'BEGIN {
        if (w > h) printf "%d %d\n", box, int(box * h / w + 0.5)
        else printf "%d %d\n", int(box * w / h + 0.5), box
    }'
}
