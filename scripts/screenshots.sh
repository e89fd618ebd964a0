#!/usr/bin/env bash
# Starts the desktop application under Xvfb on the pictures of samples/, copied
# many times over so that the batch lasts long enough to be caught, with a
# scratch settings file and home folder, and saves into docs/screenshots/:
#   progress-sheet.png  the main window during the batch
#   main-window.png     the main window after it
#   activity-log.png    the activity log window after it
#   size-<mode>.png     the main window with each sizing mode chosen
#   watermarks.png      the watermark window
#   rename-panel.png    the renaming panel on its date scheme
#   main-window-dark.png  the main window in a dark palette
#   preview-pane.png    the main window with the preview of the samples
#   format-menu.png     the main window with the output format menu open
#   format-menu-without-jxl.png  the same on a system whose libvips has no
#                       JPEG XL module: the format disabled, with the reason
#   preset-window.png   the main window with a preset chosen
#   preset-menu.png     the preset menu open
#   preset-manager.png  the preset manager
#   preferences.png     the preferences sheet
#   about-box.png       the about box
#   scaling-folded.png  the main window with the sizing options folded away
#   inspector.png       the inspector listing the sample photos (../shared/samples/photos,
#                       else samples/)
#   inplace-<tab>.png   the in-place panel on its rotation, dates and icons tabs
#   versions.png        the main window with three versions in the settings column
#   metadata-choice.png the main window with a metadata policy beside "Keep EXIF data"
#   metadata-menu.png   the main window with the metadata menu open
#   webp-fast.png       the main window writing WebP with fast encoding
set -euo pipefail
[ -n "${QUILLET_TRACE:-}" ] && set -x
cd "$(dirname "$0")/.."
if [ "${1:-}" != "--inside" ]; then
    [ -x build/release/quillet-gui ] || scripts/build.sh release
    exec xvfb-run -a -s "-screen 0 1920x1200x24" "$0" --inside
fi

shots=$(pwd)/docs/screenshots
mkdir -p "$shots"
work=$(mktemp -d /var/tmp/quillet-screenshots-XXXXXX)
app=
cleanup() {
    [ -n "$app" ] && kill "$app" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

mkdir -p "$work/home" "$work/Holiday 2024"
for i in $(seq -w 1 150); do
    for f in samples/*.jpg samples/phone/*.jpg; do
        name=$(basename "$f" .jpg)
        cp "$f" "$work/Holiday 2024/$name-$i.jpg"
    done
done
cat > "$work/settings.ini" <<'INI'
[General]
OnTheFlyFolder=false
RevealFolder=false
ActivityLogVisible=true
Rotation=4
ScaleType=4
Width=1600
Height=1200
JpegQuality=85
INI
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config
unset DBUS_SESSION_BUS_ADDRESS

# The geometry (WxH+X+Y) of the application's window whose title begins with
# the given text, while it is on screen.
geometry() {
    local id
    for id in $(xwininfo -root -tree | awk -v t="\"$1" 'index($0, t) == index($0, "\"") && /"quillet-gui"/ {print $1}'); do
        xwininfo -id "$id" | awk '
            /Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF}
            /Width:/ {w=$NF} /Height:/ {h=$NF} /Map State: IsViewable/ {v=1}
            END {if (v) printf "%sx%s+%s+%s\n", w, h, x, y}'
    done | awk 'NR == 1'
}
wait_for() { # name, tries of 0.1 s
    for _ in $(seq "$2"); do
        g=$(geometry "$1")
        [ -n "$g" ] && { echo "$g"; return 0; }
        sleep 0.1
    done
    return 1
}
shoot() { # geometry, file
    import -window root -crop "$1" +repage "$2"
    echo "saved $2"
}

build/release/quillet-gui --settings "$work/settings.ini" "$work/Holiday 2024" 2>"$work/stderr.log" &
app=$!
main=$(wait_for Quillet 100)
wait_for Processing 100 >/dev/null
sleep 2
shoot "$main" "$shots/progress-sheet.png"
# The sheet goes when the batch ends.
for _ in $(seq 600); do
    [ -z "$(geometry Processing)" ] && break
    sleep 0.1
done
sleep 1
shoot "$main" "$shots/main-window.png"
shoot "$(wait_for 'Activity Log' 10)" "$shots/activity-log.png"
ls "$work/home/Desktop/Holiday 2024" | wc -l | xargs echo "outputs on the scratch desktop:"
kill "$app" 2>/dev/null || true
wait "$app" 2>/dev/null || true
app=

# The window alone, started on a store written beforehand; extra arguments go
# to quillet-gui. Waits for the window titled $1 and saves it as $2.
still() { # title, file, store lines, arguments...
    local title=$1 file=$2 lines=$3 settle=${SETTLE:-1}
    shift 3
    printf '[General]\nOnTheFlyFolder=false\nShowAutoRotateHint=false\n%b\n' "$lines" >"$work/still.ini"
    # Preset files named in PRESETS go into the store as `quillet presets` puts them.
    for preset in ${PRESETS:-}; do
        build/release/quillet --settings "$work/still.ini" presets import "$preset" >/dev/null
    done
    # Under heavy load Qt has been seen to abort while it sets up its X
    # connection, before any of the program runs; such a start is said and
    # tried once more. Any other failure ends the script.
    local attempt status
    for attempt in 1 2; do
        build/release/quillet-gui --settings "$work/still.ini" "$@" 2>>"$work/stderr.log" &
        app=$!
        wait_for Quillet 100 >/dev/null && break
        if kill -0 "$app" 2>/dev/null; then
            echo "quillet-gui showed no window for $(basename "$file")" >&2
            return 1
        fi
        status=0
        wait "$app" || status=$?
        app=
        echo "quillet-gui ended (status $status) before its window showed, for $(basename "$file"):" >&2
        tail -n 5 "$work/stderr.log" >&2
        [ "$attempt" = 2 ] && return 1
    done
    sleep "$settle"
    shoot "$(wait_for "$title" 50)" "$file"
    kill "$app" 2>/dev/null || true
    wait "$app" 2>/dev/null || true
    app=
}

sizes='Width=1600\nHeight=1200\nCropAreaPercentage=90\nScalePercent=50'
mode=1
for name in none width height fit crop stretch percent fill; do
    still Quillet "$shots/size-$name.png" "ScaleType=$mode\n$sizes"
    mode=$((mode + 1))
done
cp "samples/Canon_40D.jpg" "$work/logo.jpg"
still Watermarks "$shots/watermarks.png" \
    "WatermarkEnabled=true\nImageWatermarkEnabled=true\nWatermarkPath=$work/logo.jpg\nWatermarkOpacity=60\nDynWatermarkEnabled=true\nDynWatermarkFields=1, 3" \
    --show watermarks
still 'Output File Names' "$shots/rename-panel.png" "SelectedRename=3\nRenamePrefix=trip-" --show rename
still Quillet "$shots/main-window-dark.png" "ScaleType=4\n$sizes\nFileFormat=102" --dark
still Quillet "$shots/format-menu.png" "ScaleType=4\n$sizes" --show formats
# libvips looks for its modules (JPEG XL among them) under VIPSHOME.
mkdir -p "$work/no-modules"
(export VIPSHOME=$work/no-modules; still Quillet "$shots/format-menu-without-jxl.png" "ScaleType=4\n$sizes" --show formats)
preset() { # file, name, record keys (those left out read as 0 or off)
    local base='"Rotation": 4, "ScaleQuality": 0, "SizeLimit": 100, "PreserveHeader": true, "BackgroundColor": "rgba(1, 1, 1, 1)", "WatermarkOpacity": 100, "WatermarkLocation": 2, "DynWatermarkSize": 2, "DynWatermarkStyle": 1'
    printf '{"format": "quillet-preset", "version": 1, "preset": {"Name": "%s", %s, %s}}\n' "$2" "$base" "$3" >"$1"
}
jpeg='"FileFormat": 101, "JpegQuality": 85, "Resolution": 72'
preset "$work/web.json" "Web 1600" "\"ScaleType\": 4, \"Width\": 1600, \"Height\": 1200, $jpeg"
preset "$work/square.json" "Square 1080" "\"ScaleType\": 5, \"Width\": 1080, \"Height\": 1080, \"CropAreaPercentage\": 100, $jpeg"
preset "$work/print.json" "Print 300 dpi" '"ScaleType": 1, "Resolution": 300, "FileFormat": 103'
preset "$work/mark.json" "Web with date" "\"ScaleType\": 4, \"Width\": 1200, \"Height\": 1200, $jpeg, \"WatermarkEnabled\": true, \"DynWatermarkEnabled\": true, \"DynWatermarkFields\": [3]"
export PRESETS="$work/web.json $work/square.json $work/print.json $work/mark.json"
still Quillet "$shots/preset-window.png" "SelectedPreset=2"
still Quillet "$shots/preset-menu.png" "SelectedPreset=2" --show presets
still Presets "$shots/preset-manager.png" "SelectedPreset=2" --show preset-manager
unset PRESETS
still Preferences "$shots/preferences.png" "SingleFile=1\nHideOnDeactivate=true" --show preferences
still 'About Quillet' "$shots/about-box.png" "" --show about
still Quillet "$shots/scaling-folded.png" "ScaleType=4\n$sizes\nScaleOptionsExpanded=false"
still Quillet "$shots/metadata-choice.png" "ScaleType=4\n$sizes\nMetadataPolicy=1"
still Quillet "$shots/metadata-menu.png" "ScaleType=4\n$sizes\nMetadataPolicy=1" --show metadata
still Quillet "$shots/webp-fast.png" "ScaleType=4\n$sizes\nFileFormat=104\nFastEncoding=true"
mkdir -p "$work/preview"
cp samples/*.jpg samples/phone/*.jpg "$work/preview/"
# The pictures are opened, so a batch runs first; the preview follows the drop.
SETTLE=5 still Quillet "$shots/preview-pane.png" \
    "PreviewVisible=true\nRotation=4\nScaleType=4\nWidth=800\nHeight=800\nJpegQuality=90\nHasFizeLimit=true\nSizeLimit=40\nWatermarkEnabled=true\nDynWatermarkEnabled=true\nDynWatermarkFields=0, 3\nSelectedRename=3\nRenamePrefix=web-" \
    "$work/preview"
photos=../shared/samples/photos
[ -d "$photos" ] || photos=samples
mkdir -p "$work/inspector"
find "$photos" -maxdepth 2 -type f \( -iname '*.jpg' -o -iname '*.jpeg' -o -iname '*.heic' -o -iname '*.png' \) \
    -exec cp {} "$work/inspector/" \;
SETTLE=4 still Inspector "$shots/inspector.png" "SelectedRename=3\nRenamePrefix=trip-" \
    --show inspector "$work/inspector"/*
# The in-place panel on each of its tabs.
still 'In-Place' "$shots/inplace-rotation.png" "KeepBackup=true" --show rotation
still 'In-Place' "$shots/inplace-dates.png" "" --show dates
still 'In-Place' "$shots/inplace-icons.png" "" --show icons
# Three versions: the current settings, a preset into its own folder and one
# beside them with a suffix. The presets go in through the tool first.
printf '[General]\nOnTheFlyFolder=false\nShowAutoRotateHint=false\nScaleType=4\n%b\nOutputVersions=*, Web, Thumbnail:_thumb\n' \
    "$sizes" >"$work/versions.ini"
for preset in "Web 1280 104 80" "Thumbnail 320 101 70"; do
    set -- $preset
    printf '{"format": "quillet-preset", "version": 1, "preset": {"Name": "%s", "ScaleType": 4, "Width": %s, "Height": %s, "FileFormat": %s, "JpegQuality": %s}}\n' \
        "$1" "$2" "$2" "$3" "$4" >"$work/$1.json"
    build/release/quillet --settings "$work/versions.ini" presets import "$work/$1.json" >/dev/null
done
build/release/quillet-gui --settings "$work/versions.ini" --show versions 2>>"$work/stderr.log" &
app=$!
main=$(wait_for Quillet 100)
sleep 1
shoot "$main" "$shots/versions.png"
kill "$app" 2>/dev/null || true
wait "$app" 2>/dev/null || true
app=
