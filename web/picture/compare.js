// Compares two pictures of the same size.

/** @typedef {import("./pixmap.js").Pixmap} Pixmap */

/**
 * @typedef {object} Difference
 * @property {number} pixels     of one picture
 * @property {number} differing  those whose colours differ
 * @property {number} wrong      those of either one whose colour the other has nowhere near
 * @property {boolean} blank     one of the pictures has a single colour: it shows nothing
 */

/**
 * A pixel is wrong when its colour is none of those of the same pixel and its eight neighbours in
 * the other picture: an edge that moved by a pixel is not, a line that vanished is.
 * @param {Pixmap} a
 * @param {Pixmap} b
 * @returns {Difference}
 */
export function compare(a, b) {
  if (a.width !== b.width || a.height !== b.height) {
    throw new RangeError("the pictures differ in their sizes");
  }
  const pixels = a.pixels.length;
  let differing = 0;
  let wrong = 0;
  for (let i = 0; i < pixels; ++i) {
    if (a.pixels[i] === b.pixels[i]) continue;
    ++differing;
    if (!occursNear(a.pixels[i], b, i)) ++wrong;
    if (!occursNear(b.pixels[i], a, i)) ++wrong;
  }
  return { pixels, differing, wrong, blank: isBlank(a) || isBlank(b) };
}

/**
 * @param {number} colour
 * @param {Pixmap} picture
 * @param {number} at
 */
function occursNear(colour, { width, height, pixels }, at) {
  const x = at % width;
  const y = (at - x) / width;
  const right = Math.min(x + 1, width - 1);
  const bottom = Math.min(y + 1, height - 1);
  for (let row = Math.max(y - 1, 0); row <= bottom; ++row) {
    for (let column = Math.max(x - 1, 0); column <= right; ++column) {
      if (pixels[row * width + column] === colour) return true;
    }
  }
  return false;
}

/** @param {Pixmap} picture */
function isBlank({ pixels }) {
  return pixels.every((colour) => colour === pixels[0]);
}
