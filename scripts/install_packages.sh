#!/usr/bin/env bash
# install_packages.sh PACKAGE...: installs the named Debian packages that this machine lacks.
# Asks nothing; uses sudo only when not root; does not touch the network when nothing is missing.
set -euo pipefail

if [ $# -eq 0 ] || [[ " $*" = *" -"* ]]; then
  echo "usage: scripts/install_packages.sh PACKAGE..." >&2
  exit 2
fi

missing=()
for package in "$@"; do
  if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)" != installed ]; then
    missing+=("$package")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get -qq update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get -qq install -y --no-install-recommends "${missing[@]}" </dev/null >/dev/null
