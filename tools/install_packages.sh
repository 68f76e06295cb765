#!/usr/bin/env bash
# Installs the Debian packages that are missing: `build` for what the program needs, `test` for the checks
# as well. Needs root or sudo only when something is missing.
set -euo pipefail
build=(g++ cmake ninja-build pkg-config ca-certificates libicu-dev libxcb1-dev nlohmann-json3-dev
       libcli11-dev libmozjs-102-dev)
test=(clang-14 clang-format-14 clang-tidy-14 libclang-rt-14-dev libgtest-dev python3
      git attr libimage-exiftool-perl unrtf xvfb)
case "${1:-build}" in
    build) wanted=("${build[@]}") ;;
    test) wanted=("${build[@]}" "${test[@]}") ;;
    *) echo "usage: $0 [build | test]" >&2; exit 2 ;;
esac
missing=()
for package in "${wanted[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "not root and no sudo: install ${missing[*]} first" >&2; exit 1; }
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
