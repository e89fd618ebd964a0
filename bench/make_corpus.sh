#!/usr/bin/env bash
# Builds the benchmark corpus, or the part of it that is missing, and caches it.
#
#   make_corpus.sh [--dir DIR] [--big N] [--small N]
#
# DIR (default bench/corpus) receives:
#   big/big_NN.jpg        synthetic camera pictures, 12 to 24 megapixels
#   small/small_NNNN.jpg  synthetic 0.3 megapixel pictures
#   real/*.jpg            the larger sample photos that decode cleanly
# Every synthetic file carries the full EXIF block of one of the sample
# cameras, with the pixel-size tags set to the file's real size. File N is the
# same bytes whatever the counts asked for, so a quick run reuses the full
# corpus and vice versa. The cache is thrown away when the generator, the
# recipe below (sizes, cameras, quality, seeds), libvips, exiftool or the
# sample cameras change.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
samples=${QUILLET_SAMPLES:-$root/../shared/samples/photos}
dir=$here/corpus
big=40
small=2000

while [ $# -gt 0 ]; do
    case $1 in
        --dir) dir=$2; shift 2 ;;
        --big) big=$2; shift 2 ;;
        --small) small=$2; shift 2 ;;
        -h|--help) sed -n '2,15p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
        *) echo "make_corpus.sh: unknown option '$1'" >&2; exit 2 ;;
    esac
done

# Camera-like sizes (width x height), portraits included, 12.0 to 24.0 MP.
big_sizes=(4000x3000 4288x2848 4608x3456 4928x3264 3456x4608 5184x3456
           5472x3648 3648x5472 5616x3744 6000x4000 4000x6000 4896x3264)
small_sizes=(640x480 640x480 480x640 720x405 600x500)
cameras=(Canon_40D Nikon_D70 Pentax_K10D Panasonic_DMC-FZ30 Kodak_CX7530
         Olympus_C8080WZ Fujifilm_FinePix_E500)
quality=92
big_seed=1000
small_seed=50000

for camera in "${cameras[@]}"; do
    if [ ! -f "$samples/$camera.jpg" ]; then
        echo "make_corpus.sh: the sample photos are needed for their EXIF blocks and" >&2
        echo "  '$samples/$camera.jpg' is missing (set QUILLET_SAMPLES to their folder)" >&2
        exit 1
    fi
done

mkdir -p "$dir"
# Two runs filling the same cache would trip over each other's staging files.
exec 9>"$dir/.lock"
if ! flock -n 9; then
    echo "Waiting for another run that is building the corpus in $dir"
    flock 9
fi
# The recipe: everything that decides the bytes of the files.
stamp=$( {
    cat "$here/corpusgen.cpp"
    echo "${big_sizes[*]} / ${small_sizes[*]} / ${cameras[*]} / $quality / $big_seed $small_seed"
    vips --version
    exiftool -ver
    for camera in "${cameras[@]}"; do cat "$samples/$camera.jpg"; done
} | sha256sum | cut -c1-16)
if [ "$(cat "$dir/.stamp" 2>/dev/null)" != "$stamp" ]; then
    rm -rf "$dir/big" "$dir/small" "$dir/real" "$dir/.bin" "$dir/.staging"
    echo "$stamp" > "$dir/.stamp"
fi
mkdir -p "$dir/big" "$dir/small" "$dir/real" "$dir/.bin"

generator=$dir/.bin/corpusgen
if [ ! -x "$generator" ]; then
    echo "Compiling the corpus generator"
    # shellcheck disable=SC2046 # pkg-config prints several words on purpose
    g++ -std=c++20 -O2 -Wall -Wextra "$here/corpusgen.cpp" -o "$generator.tmp" $(pkg-config --cflags --libs vips-cpp)
    mv "$generator.tmp" "$generator"
fi

# make_set KIND COUNT SEED_BASE SIZES...
# Generates the missing files of one set in a staging folder, gives them their
# EXIF, and only then moves them in: an interrupted run leaves no half-made file.
make_set() {
    local kind=$1 count=$2 seedBase=$3
    shift 3
    local sizes=("$@")
    local staging=$dir/.staging/$kind
    rm -rf "$staging"
    mkdir -p "$staging"
    local jobs=() name size i
    for ((i = 0; i < count; i++)); do
        if [ "$kind" = big ]; then name=$(printf 'big_%02d.jpg' "$i"); else name=$(printf 'small_%04d.jpg' "$i"); fi
        [ -f "$dir/$kind/$name" ] && continue
        size=${sizes[i % ${#sizes[@]}]}
        jobs+=("$staging/$name ${size%x*} ${size#*x} $((seedBase + i))")
        printf '%s\n' "$staging/$name" >> "$staging/camera-$((i % ${#cameras[@]})).list"
    done
    [ ${#jobs[@]} -eq 0 ] && return 0

    echo "Generating ${#jobs[@]} $kind pictures"
    printf '%s\n' "${jobs[@]}" | "$generator" "$quality"

    echo "Copying camera EXIF into the $kind pictures"
    local c list
    for ((c = 0; c < ${#cameras[@]}; c++)); do
        list=$staging/camera-$c.list
        [ -f "$list" ] || continue
        # The camera's whole block, then the pixel sizes of the new picture.
        exiftool -q -q -overwrite_original -TagsFromFile "$samples/${cameras[c]}.jpg" -all:all \
            -TagsFromFile @ '-ExifImageWidth<File:ImageWidth' '-ExifImageHeight<File:ImageHeight' \
            -@ "$list"
    done
    mv "$staging"/*.jpg "$dir/$kind/"
    rm -rf "$staging"
}

make_set big "$big" "$big_seed" "${big_sizes[@]}"
make_set small "$small" "$small_seed" "${small_sizes[@]}"

# The larger real photos, when the samples are there: at least 2 MP and
# decoding without a single libjpeg warning (the damaged samples would make
# every tool fail or complain, which is not what is being timed).
for photo in "$samples"/*.jpg; do
    name=$(basename "$photo")
    [ -f "$dir/real/$name" ] && continue
    w=$(vipsheader -f width "$photo" 2>/dev/null) || continue
    h=$(vipsheader -f height "$photo" 2>/dev/null) || continue
    [ $((w * h)) -ge 2000000 ] || continue
    if [ -z "$(djpeg "$photo" 2>&1 >/dev/null)" ]; then
        install -m 644 "$photo" "$dir/real/$name"
    fi
done
