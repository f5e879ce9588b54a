# Figures that R draws, into the directory named, of the form named.
directory <- commandArgs(TRUE)[1]
form <- commandArgs(TRUE)[2]
low <- -1.1; high <- 1.3; levels <- 8
height <- function(x, y) cos(1.7 * x) * sin(1.4 * y + 0.3) + 0.4 * exp(-(x + 0.6)^2 - y^2)
breaks <- seq(low, high, length = levels + 1)
t <- (seq_len(levels) - 0.5) / levels
colours <- rgb(0.15 + 0.8 * t, 0.25 + 0.6 * sin(2 * t), 0.9 - 0.75 * t)
paint <- function(z) colours[pmin(levels, pmax(1, 1 + floor(levels * (z - low) / (high - low))))]

start <- function(name) {
  path <- file.path(directory, paste0(name, ".", form))
  if (form == "pdf") pdf(path, width = 4, height = 4)
  else postscript(path, width = 4, height = 4, onefile = FALSE, paper = "special", horizontal = FALSE)
}
done <- function() invisible(dev.off())
at <- seq(-2, 2, length = 91)
z <- outer(at, at, height)

start("few-r-image"); image(at, at, z, breaks = breaks, col = colours); done()
start("few-r-filled"); filled.contour(at, at, z, levels = breaks, col = colours); done()

start("few-r-persp")
n <- length(at)
means <- (z[-1, -1] + z[-1, -n] + z[-n, -1] + z[-n, -n]) / 4
persp(at, at, z, col = paint(means), border = NA, theta = 35, phi = 25, ticktype = "detailed")
done()

start("few-r-polygons")
at <- seq(-2, 2, length = 61)
plot(c(-2, 2), c(-2, 2), type = "n", xlab = "x", ylab = "y", main = "polygons")
for (j in 1:60) for (i in 1:60) for (half in 1:2) {
  x <- at[i + if (half == 1) c(0, 1, 1) else c(0, 1, 0)]
  y <- at[j + if (half == 1) c(0, 0, 1) else c(0, 1, 1)]
  polygon(x, y, border = NA, col = paint(mean(height(x, y))))
}
done()
