#!/bin/sh
# Installs the Debian packages that building and testing Tindle needs, if any are missing.
# Uses sudo when not run as root. Safe to run again: with everything present it only checks.
# With the argument "bench" it also installs what the benchmarks compare against, with "fuzz" the
# compiler and runtime of the fuzzing build.
set -eu

packages="
build-essential cmake ninja-build ccache pkg-config
juce-modules-source
libasound2-dev libjack-jackd2-dev libfreetype-dev libx11-dev libxrandr-dev libxinerama-dev
libxcursor-dev libxext-dev libgl-dev lv2-dev
libflac-dev libvorbis-dev libogg-dev libpng-dev libjpeg-dev zlib1g-dev
libfftw3-dev
libgtest-dev libgmock-dev libbenchmark-dev
xvfb xauth fonts-dejavu-core clang-format git python3
locales
"
case "${1:-}" in
bench) packages="$packages ffmpeg" ;;
fuzz) packages="$packages clang libclang-rt-14-dev llvm" ;;
esac

missing=""
for p in $packages; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
    [ "$status" = "installed" ] || missing="$missing $p"
done

[ -z "$missing" ] && exit 0

echo "Installing missing Debian packages:$missing"
if [ "$(id -u)" -eq 0 ]; then
    as_root=""
elif command -v sudo >/dev/null 2>&1; then
    as_root="sudo"
else
    echo "error: packages are missing and neither root nor sudo is available:$missing" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -q
# shellcheck disable=SC2086
$as_root apt-get install -y -q --no-install-recommends $missing
