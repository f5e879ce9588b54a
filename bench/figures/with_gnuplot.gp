# Figures that gnuplot draws, into the directory named by ARG1, of the form ARG2.
height(x, y) = cos(1.7 * x) * sin(1.4 * y + 0.3) + 0.4 * exp(-(x + 0.6)**2 - y**2)
bent_x(x, y) = x + 0.1 * sin(2 * y)
bent_y(x, y) = y + 0.1 * sin(1.6 * x)
if (ARG2 eq "pdf") set terminal pdfcairo size 10cm,10cm; else set terminal epscairo size 10cm,10cm
set isosamples 90
set samples 90
unset key
set title "pm3d"
set palette maxcolors 8
set cbrange [-1.1:1.3]
set pm3d corners2color c1
set xrange [-2.2:2.2]
set yrange [-2.2:2.2]
set urange [-2:2]
set vrange [-2:2]
set parametric

set output ARG1."/few-gnuplot-surface.".ARG2
set pm3d
set view 60,30
splot u, v, height(u, v) with pm3d

set output ARG1."/few-gnuplot-map.".ARG2
set pm3d map
splot u, v, height(u, v) with pm3d

set output ARG1."/few-gnuplot-bent.".ARG2
splot bent_x(u, v), bent_y(u, v), height(u, v) with pm3d

set output ARG1."/each-gnuplot-bent.".ARG2
set palette maxcolors 0
splot bent_x(u, v), bent_y(u, v), height(u, v) with pm3d
unset output
