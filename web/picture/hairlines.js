// Drawn with anti-aliasing, a pixel on the edge of two areas has a mixture of their colours, and
// each part of it lies between theirs. Where two polygons only just meet, what is below them shines
// through: the mixture has a part that lies outside. This is judged part by part, as a white mesh
// over yellow shows in the blue alone and hardly in the brightness.

/** @typedef {import("./pixmap.js").Pixmap} Pixmap */

const visibleStep = 8;
const parts = [16, 8, 0];

/** So wide and high are the places among which that with the densest mesh is looked for. */
const cell = 24;

/**
 * How many pixels of a drawing with anti-aliasing have a part that is more than a visible step
 * above, or below, that of all true colours within one pixel of them.
 * @param {Pixmap} smooth
 * @param {Pixmap} sharp  the same page without anti-aliasing
 */
export function hairlinePixels(smooth, sharp) {
  let count = 0;
  visitOutside(smooth, [sharp], () => ++count);
  return count;
}

/**
 * How many pixels of the drawing after a repair have a part outside of everything that the two
 * drawings before it show within one pixel of them: what was not there before.
 * @param {Pixmap} smoothBefore
 * @param {Pixmap} sharpBefore
 * @param {Pixmap} smoothAfter
 */
export function newHairlines(smoothBefore, sharpBefore, smoothAfter) {
  let count = 0;
  visitOutside(smoothAfter, [smoothBefore, sharpBefore], () => ++count);
  return count;
}

/**
 * Where most hairlines are, in points; nothing where there are none.
 * @param {Pixmap} smooth
 * @param {Pixmap} sharp
 * @param {import("./device_path.js").View} view  that both show
 * @returns {{ x: number, y: number } | null}
 */
export function densest(smooth, sharp, { scale, left, top }) {
  const columns = Math.ceil(smooth.width / cell);
  const counts = new Uint32Array(columns * Math.ceil(smooth.height / cell));
  visitOutside(smooth, [sharp], (x, y) => {
    ++counts[Math.floor(y / cell) * columns + Math.floor(x / cell)];
  });
  const most = counts.reduce((best, count, i) => (count > counts[best] ? i : best), 0);
  if (!counts[most]) return null;
  return {
    x: left + (((most % columns) + 0.5) * cell) / scale,
    y: top - ((Math.floor(most / columns) + 0.5) * cell) / scale,
  };
}

/**
 * Visits the pixels of a picture that lie outside what the others show near them.
 * @param {Pixmap} picture
 * @param {Pixmap[]} others
 * @param {(x: number, y: number) => void} visit
 */
function visitOutside({ width, height, pixels }, others, visit) {
  if (others.some((other) => other.width !== width || other.height !== height)) {
    throw new RangeError("the pictures differ in their sizes");
  }
  const ranges = parts.map((shift) => new ColumnRanges(width, shift));
  for (let y = 0; y < height; ++y) {
    for (const range of ranges) range.takeRows(others, y);
    for (let x = 0; x < width; ++x) {
      const colour = pixels[y * width + x];
      if (ranges.some((range) => range.isOutside(colour, x))) visit(x, y);
    }
  }
}

/** Of one part of the colours the least and the greatest value in every column of three rows. */
class ColumnRanges {
  /**
   * @param {number} width
   * @param {number} shift
   */
  constructor(width, shift) {
    this.shift = shift;
    // With a column more at either end, so that all have two neighbours.
    this.low = new Uint8Array(width + 2);
    this.high = new Uint8Array(width + 2);
  }

  /**
   * @param {Pixmap[]} pictures
   * @param {number} y
   */
  takeRows(pictures, y) {
    const { low, high, shift } = this;
    low.fill(255);
    high.fill(0);
    for (const { width, height, pixels } of pictures) {
      const end = Math.min(y + 2, height) * width;
      for (let row = Math.max(y - 1, 0) * width; row < end; row += width) {
        for (let x = 0; x < width; ++x) {
          const value = (pixels[row + x] >> shift) & 255;
          if (value < low[x + 1]) low[x + 1] = value;
          if (value > high[x + 1]) high[x + 1] = value;
        }
      }
    }
  }

  /**
   * @param {number} colour
   * @param {number} x
   */
  isOutside(colour, x) {
    const { low, high } = this;
    const value = (colour >> this.shift) & 255;
    return (
      value > Math.max(high[x], high[x + 1], high[x + 2]) + visibleStep ||
      value < Math.min(low[x], low[x + 1], low[x + 2]) - visibleStep
    );
  }
}
