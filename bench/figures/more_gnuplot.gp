# Further figures that gnuplot draws, with its postscript terminal, whatever the form.
height(x, y) = cos(1.7 * x) * sin(1.4 * y + 0.3) + 0.4 * exp(-(x + 0.6)**2 - y**2)
set terminal postscript eps color
set isosamples 90
set samples 90
unset key
set palette maxcolors 8
set xrange [-2:2]
set yrange [-2:2]
set output ARG1."/more-gnuplot-ps-surface.eps"
splot height(x, y) with pm3d
set output ARG1."/more-gnuplot-ps-map.eps"
set pm3d map
splot height(x, y) with pm3d
unset output
