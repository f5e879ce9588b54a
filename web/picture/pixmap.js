// A picture in memory, without transparency.

export const white = 0xffffff;

/**
 * Rows from top to bottom, a number 0xRRGGBB for every pixel.
 * @typedef {object} Pixmap
 * @property {number} width
 * @property {number} height
 * @property {Uint32Array} pixels
 */

/**
 * A white one.
 * @param {number} width
 * @param {number} height
 * @returns {Pixmap}
 */
export function blankPixmap(width, height) {
  return { width, height, pixels: new Uint32Array(width * height).fill(white) };
}

/**
 * What a canvas shows, on white where it is transparent.
 * @param {{ width: number, height: number, data: Uint8ClampedArray }} image
 * @returns {Pixmap}
 */
export function pixmapOfImageData({ width, height, data }) {
  const pixels = new Uint32Array(width * height);
  for (let i = 0; i < pixels.length; ++i) {
    const alpha = data[4 * i + 3];
    const onWhite = (/** @type {number} */ part) =>
      Math.round((data[4 * i + part] * alpha) / 255 + 255 - alpha);
    pixels[i] = (onWhite(0) << 16) | (onWhite(1) << 8) | onWhite(2);
  }
  return { width, height, pixels };
}
