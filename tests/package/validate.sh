#!/bin/sh
# Runs a desktop validator, saying which package brings it when it is missing.
command -v "$1" >/dev/null 2>&1 || {
  echo "$1 is missing: run scripts/install-deps.sh (desktop-file-utils, appstream)" >&2
  exit 1
}
exec "$@"
