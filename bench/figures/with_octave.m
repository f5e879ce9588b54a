% Figures that Octave draws, into the directory named, of the form named.
directory = argv(){end - 1}; form = argv(){end};
device = struct('pdf', '-dpdf', 'eps', '-depsc2').(form);
levels = 8; low = -1.1; high = 1.3;
[x, y] = meshgrid(linspace(-2, 2, 61));
z = cos(1.7 * x) .* sin(1.4 * y + 0.3) + 0.4 * exp(-(x + 0.6) .^ 2 - y .^ 2);
t = ((1:levels)' - 0.5) / levels;
figure('visible', 'off');
colormap([0.15 + 0.8 * t, 0.25 + 0.6 * sin(2 * t), 0.9 - 0.75 * t]);
surf(x, y, z, 1 + floor(levels * (z - low) / (high - low)), 'cdatamapping', 'direct');
shading flat;
print(fullfile(directory, ['few-octave-surface.' form]), device);
clf;
pcolor(x, y, z); shading flat; caxis([low high]); colorbar;
print(fullfile(directory, ['few-octave-pcolor.' form]), device);
