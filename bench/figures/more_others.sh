# Further figures of programs that write one form of file only, into the directory named: EPS of
# MetaPost, Asymptote and GDL, PDF of pgfplots.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$1"
if [ "$2" = eps ]; then
  python3 -B "$here/mesh.py" metapost 70 >mesh.mp
  mpost -interaction=batchmode mesh.mp
  python3 -B "$here/mesh.py" asymptote 70 >mesh.asy
  asy -noV -f eps -o more-asymptote mesh.asy
  xvfb-run -a gdl -quiet "$here/gdl.pro"
else
  cp "$here/pgfplots.tex" more-pgfplots.tex
  pdflatex -interaction=batchmode more-pgfplots
fi
find . -mindepth 1 ! -name "*.$2" -delete
