% Further figures that Octave draws, into the directory named, of the form named.
directory = argv(){end - 1}; form = argv(){end};
device = struct('pdf', '-dpdf', 'eps', '-depsc2').(form);
[x, y] = meshgrid(linspace(-2, 2, 61));
z = cos(1.7 * x) .* sin(1.4 * y + 0.3) + 0.4 * exp(-(x + 0.6) .^ 2 - y .^ 2);
figure('visible', 'off');
colormap(jet(8));
contourf(x, y, z, 8, 'linestyle', 'none');
print(fullfile(directory, ['more-octave-contourf.' form]), device);
clf;
surf(x, y, z); shading interp;
print(fullfile(directory, ['more-octave-interp.' form]), device);
