#!/usr/bin/env bash
# Installs, with apt-get, whatever a brand-new Debian 12 machine lacks to build
# qvcl3, its tests and its benchmarks. Does nothing when all is present.
set -euo pipefail

need=()
have_pkg() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"; }
for pkg in build-essential cmake pkg-config libgtest-dev libgmock-dev python3 "$@"; do
  have_pkg "$pkg" || need+=("$pkg")
done
if [ ${#need[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo_cmd apt-get update -qq
  $sudo_cmd apt-get install -y -qq --no-install-recommends "${need[@]}"
fi
