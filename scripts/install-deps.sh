#!/usr/bin/env bash
# Installs every Debian package Quillet needs to build, test and benchmark.
# Does nothing when everything is already present.
set -euo pipefail

packages=(
  # build
  cmake ninja-build g++ pkg-config clang-format
  qt6-base-dev qt6-qpa-plugins libvips-dev
  libgtest-dev libgmock-dev
  # runtime tools and fonts
  libjpeg-turbo-progs fonts-dejavu-core
  # the WebP and JPEG XL encoders behind libvips, and libheif with libaom's
  # AV1 encoder, which writes AVIF directly (libvips pulls most in; named
  # here for what we use)
  libwebp7 libjxl0.7 libheif-dev libheif1 libaom3
  # test oracle, fuzzing, GUI tests and screenshots
  libimage-exiftool-perl clang libclang-rt-14-dev xvfb x11-utils
  # benchmark competitors and measurement
  libvips-tools graphicsmagick imagemagick time
  # the Debian package, its checks (launcher, metainfo, a private session bus
  # for the notifications) and the icon renderer
  dpkg-dev fakeroot file desktop-file-utils appstream dbus-daemon librsvg2-bin
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
[ "$(id -u)" -ne 0 ] && sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
