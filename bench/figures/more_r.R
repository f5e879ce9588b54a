# Further figures that R draws: with lattice, fields and ggplot2.
suppressPackageStartupMessages({ library(lattice); library(fields); library(ggplot2) })
at <- seq(-2, 2, length = 91)
grid <- expand.grid(x = at, y = at)
grid$z <- with(grid, cos(1.7 * x) * sin(1.4 * y + 0.3) + 0.4 * exp(-(x + 0.6)^2 - y^2))
z <- matrix(grid$z, length(at))
directory <- commandArgs(TRUE)[1]
form <- commandArgs(TRUE)[2]

start <- function(name) {
  path <- file.path(directory, paste0(name, ".", form))
  if (form == "pdf") pdf(path, width = 4, height = 4)
  else postscript(path, width = 4, height = 4, onefile = FALSE, paper = "special", horizontal = FALSE)
}
done <- function() invisible(dev.off())
start("more-r-levelplot"); print(levelplot(z ~ x * y, grid, cuts = 8)); done()
start("more-r-imageplot"); image.plot(at, at, z, nlevel = 8); done()
bent <- with(grid, matrix(x + 0.1 * sin(2 * y), length(at)))
start("more-r-polyimage")
poly.image(bent, matrix(grid$y, length(at)), z, breaks = seq(-1.1, 1.3, 0.3), col = tim.colors(8))
done()
start("more-r-tile"); print(ggplot(grid, aes(x, y, fill = cut(z, 8))) + geom_tile()); done()
start("more-r-filled"); print(ggplot(grid, aes(x, y, z = z)) + geom_contour_filled()); done()
start("more-r-wireframe")
print(wireframe(z ~ x * y, grid, drape = TRUE, col = NA, cuts = 8))
done()
