# Figures that programs make of triangles written in their own words, into the directory named.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$1"
mesh() { python3 -B "$here/mesh.py" "$@"; }

mesh svg 70 >mesh.svg
rsvg-convert -f pdf -o few-rsvg.pdf mesh.svg
HOME=$PWD inkscape --export-type=pdf -o few-inkscape.pdf mesh.svg
mesh asymptote 70 >mesh.asy
asy -noV -f pdf -o few-asymptote mesh.asy
mesh pgf 50 >few-pgf.tex
pdflatex -interaction=batchmode few-pgf
cp "$here/paper.tex" few-paper.tex
for _ in 1 2; do pdflatex -interaction=batchmode few-paper; done
find . -mindepth 1 ! -name '*.pdf' -delete
