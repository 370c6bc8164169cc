#!/usr/bin/env bash
# Installs those of the named Debian packages that are missing; says and does nothing when none is. The words engine and
# desktop stand for what building the engine with its console programs takes, and what the desktop programs take more.
set -eu

packages=()
for word in "$@"; do
    case $word in
    engine) packages+=(g++ cmake ninja-build libcli11-dev nlohmann-json3-dev libxlsxwriter-dev pkg-config libcairo2-dev) ;;
    desktop) packages+=(qt6-base-dev libqt6svg6 fonts-dejavu-core) ;;
    *) packages+=("$word") ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=()
elif command -v sudo >/dev/null 2>&1; then
    as_root=(sudo)
else
    echo "These Debian packages are missing: ${missing[*]}. Install them as root, or install sudo, and try again." >&2
    exit 1
fi

echo "Installing ${missing[*]} ..."
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update &&
       "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install --yes --no-install-recommends \
           "${missing[@]}"; } >"$log" 2>&1; then
    cat "$log" >&2
    echo "The packages could not be installed: ${missing[*]}." >&2
    exit 1
fi
