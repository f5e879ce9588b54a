# Figures that GMT draws, into the directory named, of the form named.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
declare -A devices=([pdf]=f [eps]=e)
device=${devices[$2]}
cd "$1"
python3 -B "$here/mesh.py" nodes 90 >nodes.txt
gmt makecpt -Cviridis -T-1.1/1.3/0.3 -N >levels.cpt
gmt xyz2grd nodes.txt -R-2/2/-2/2 -I91+n/91+n -Gnodes.nc

# draw NAME MODULE ARGUMENT...
draw() {
  local name=$1
  shift
  gmt "$@" -JX9c -Clevels.cpt -Baf -P >"$name.ps"
  gmt psconvert "$name.ps" -T"$device" -A -F"$name"
}
draw few-gmt-contour pscontour nodes.txt -R-2/2/-2/2 -I
draw few-gmt-view grdview nodes.nc -R-2/2/-2/2/-1.5/1.5 -JZ3c -p140/35 -Qs
draw few-gmt-tiles grdview nodes.nc -R-2/2/-2/2 -T
rm -f nodes.txt nodes.nc levels.cpt gmt.* ./*.ps
