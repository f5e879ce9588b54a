// Paints images without anti-aliasing: a pixel takes the sample in which its middle lies.

/** @typedef {import("./display_list.js").Image} Image */
/** @typedef {import("./area_painter.js").AreaPainter} AreaPainter */
/** @typedef {import("./device_path.js").View} View */

const opaque = 128;

/**
 * @param {AreaPainter} areas
 * @param {Image} image
 * @param {View} view
 */
export function paintImage(areas, image, { scale, left, top }) {
  const { width, height } = image;
  if (width === 0 || height === 0) return;
  const [a, b, c, d, e, f] = image.matrix;
  const columns = middles(scale * (e - left), scale * a * width, scale * c * height);
  const rows = middles(scale * (top - f), -scale * b * width, -scale * d * height);
  const determinant = a * d - b * c;
  const isNarrow = columns.end - columns.first === 1 || rows.end - rows.first === 1;
  // Only then can a pixel be painted whose middle lies beside the image.
  const sample = isNarrow
    ? (/** @type {number} */ at, /** @type {number} */ count) =>
        Math.min(count - 1, Math.max(0, Math.floor(at) || 0))
    : Math.floor;
  for (let row = Math.max(areas.top, rows.first); row < Math.min(areas.bottom, rows.end); ++row) {
    const y = top - (row + 0.5) / scale - f;
    const endColumn = Math.min(areas.right, columns.end);
    for (let column = Math.max(areas.left, columns.first); column < endColumn; ++column) {
      const x = left + (column + 0.5) / scale - e;
      const u = sample((d * x - c * y) / determinant, width);
      const v = sample((a * y - b * x) / determinant, height);
      if (u < 0 || u >= width || v < 0 || v >= height) continue;
      paintSample(areas, image, 4 * (v * width + u), column, row);
    }
  }
}

/**
 * The rows or columns whose middles lie in an image that begins at an origin and reaches from there
 * in two directions. There is one at least: what is narrower must not vanish.
 * @param {number} origin
 * @param {number} along
 * @param {number} across
 */
function middles(origin, along, across) {
  const low = origin + Math.min(0, along) + Math.min(0, across);
  const high = origin + Math.max(0, along) + Math.max(0, across);
  const first = Math.ceil(low - 0.5);
  const end = Math.ceil(high - 0.5);
  if (first < end) return { first, end };
  const only = Math.floor((low + high) / 2);
  return { first: only, end: only + 1 };
}

/**
 * @param {AreaPainter} areas
 * @param {Image} image
 * @param {number} at
 * @param {number} x
 * @param {number} y
 */
function paintSample(areas, { rgba }, at, x, y) {
  if (rgba[at + 3] < opaque) return;
  areas.setPixel(x, y, (rgba[at] << 16) | (rgba[at + 1] << 8) | rgba[at + 2]);
}
