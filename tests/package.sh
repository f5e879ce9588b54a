#!/usr/bin/env bash
# package.sh BUILD SOURCE: makes the Debian package, looks it over, unpacks it into a directory of its
# own, and uses what is in it.
set -euo pipefail
build=$1 source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

(cd "$build" && cpack -D CPACK_OUTPUT_FILE_PREFIX="$scratch") >/dev/null
package=$(ls "$scratch"/trellion_*.deb)
lintian --fail-on error,warning --allow-root "$package"
version=$(dpkg-deb -f "$package" Version)
dpkg-deb -f "$package" Homepage | grep '^https://'
# A place where words in need of quotes show.
root="$scratch/a röot"
dpkg -x "$package" "$root"

docs=$root/usr/share/doc/trellion
cp "$docs/examples/surface.eps" "$root"
cmp "$root/surface.eps" "$source/examples/surface.eps"
zcat "$docs/changelog.gz" | grep -F "($version)"
export PATH="$root/usr/bin:$PATH"
cd "$root"
trellion surface.eps -r | grep '^Repaired filename is'
trellion-batch -f -q surface.eps
trellion-frames surface.eps frames >/dev/null
ls frames/intermediate/frame00001.eps
for program in "$root"/usr/bin/trellion-*; do
  [ "$("$program" --version)" = "${program##*/} $version" ]
done
for page in usr/share/man/man1/*.gz; do
  [ -e "usr/bin/$(basename "$page" .1.gz)" ]
  # Pages of programs that are not installed here are referred to, too.
  complaints=$(mandoc -Tlint "$page" 2>/dev/null | grep -v 'referenced manual not found' || true)
  if [ -n "$complaints" ]; then
    echo "$complaints"
    exit 1
  fi
done

# Installed by hand it has the same, but for where zsh looks.
cmake --install "$build" --prefix "$scratch/by händ" >/dev/null
list() { (cd "$1" && find . -type f | sed 's/vendor-completions/site-functions/' | sort); }
diff <(list "$root/usr") <(list "$scratch/by händ")
