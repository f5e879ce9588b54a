#!/usr/bin/env bash
# package.sh BUILD SOURCE: makes the Debian package, looks it over, unpacks it into a directory of its
# own, and uses what is in it.
set -euo pipefail
build=$1 source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

(cd "$build" && cpack -D CPACK_OUTPUT_FILE_PREFIX="$scratch") >/dev/null
package=$(ls "$scratch"/trellion_*.deb)
lintian --fail-on error --allow-root "$package"
dpkg -x "$package" "$scratch/root"

cp "$source/examples/surface.eps" "$scratch"
cd "$scratch"
root/usr/bin/trellion surface.eps -r | grep '^Repaired filename is'
root/usr/bin/trellion-batch -f -q surface.eps
if [ -e root/usr/bin/trellion-pdf ]; then root/usr/bin/trellion-pdf --version; fi
for page in root/usr/share/man/man1/*.gz; do
  # Pages of programs that are not installed here are referred to, too.
  complaints=$(mandoc -Tlint "$page" 2>/dev/null | grep -v 'referenced manual not found' || true)
  if [ -n "$complaints" ]; then
    echo "$complaints"
    exit 1
  fi
done
