// Paints areas without anti-aliasing, by PostScript's rule: every pixel is painted that an area
// touches, so that no sliver vanishes, however thin. An edge that lies exactly between two pixels
// touches only the one on the area's side.

import { fractionBits, onePixel } from "./device_path.js";

/** @typedef {import("./device_path.js").DevicePath} DevicePath */
/** @typedef {import("./pixmap.js").Pixmap} Pixmap */
/** @typedef {import("./clip_regions.js").ClipRegion} ClipRegion */

/** Longer spans are filled faster by the engine itself. */
const shortSpan = 24;

export class AreaPainter {
  /** @param {Pixmap} pixmap */
  constructor({ width, height, pixels }) {
    this.width = width;
    this.pixels = pixels;
    this.colour = 0;
    this.left = 0;
    this.top = 0;
    this.right = width;
    this.bottom = height;
    /** @type {Uint32Array | null} */
    this.mask = null;
    this.maskWidth = 0;
    this.maskOffset = 0;
    // Of a monotone area in every row.
    this.leftmost = new Int32Array(height);
    this.rightmost = new Int32Array(height);
    // Of any other area where its edges cross the middle of rows: the place, and the direction in
    // the lowest bit.
    this.crossings = new Int32Array(1024);
    this.crossingRows = new Int32Array(1024);
    this.crossingCount = 0;
    this.sorted = new Int32Array(1024);
    this.rowEnds = new Int32Array(height + 1);
    this.firstRow = 0;
    this.lastRow = -1;
  }

  /** @param {ClipRegion} region */
  clipTo(region) {
    this.left = region.left;
    this.top = region.top;
    this.right = region.right;
    this.bottom = region.bottom;
    this.mask = region.mask;
    this.maskWidth = region.maskWidth;
    this.maskOffset = region.maskTop * region.maskWidth + region.maskLeft;
  }

  /**
   * @param {DevicePath} path
   * @param {boolean} evenOdd
   */
  fill(path, evenOdd) {
    if (path.subpaths === 1 && isMonotone(path.ys, path.length)) {
      this.fillMonotone(path.xs, path.ys, 0, path.length);
    } else {
      this.fillAny(path, evenOdd);
    }
  }

  /**
   * Fills between the leftmost and the rightmost place in every row.
   * @param {Int32Array} xs
   * @param {Int32Array} ys
   * @param {number} begin
   * @param {number} end
   */
  fillMonotone(xs, ys, begin, end) {
    let low = xs[begin];
    let high = low;
    let upper = ys[begin];
    let lower = upper;
    for (let i = begin + 1; i < end; ++i) {
      if (xs[i] < low) low = xs[i];
      else if (xs[i] > high) high = xs[i];
      if (ys[i] < upper) upper = ys[i];
      else if (ys[i] > lower) lower = ys[i];
    }
    const firstRow = upper >> fractionBits;
    const lastRow = lastTouched(upper, lower);
    if (firstRow === lastRow || low === high) {
      const first = Math.max(firstRow, this.top);
      const last = Math.min(lastRow, this.bottom - 1);
      for (let row = first; row <= last; ++row) this.paintSpan(row, low, high);
      return;
    }
    if (lastRow < this.top || firstRow >= this.bottom) return;
    if (high >> fractionBits < this.left || low >> fractionBits >= this.right) return;
    const first = Math.max(firstRow, this.top);
    const last = Math.min(lastRow, this.bottom - 1);
    for (let row = first; row <= last; ++row) {
      this.leftmost[row] = 0x7fffffff;
      this.rightmost[row] = -0x7fffffff;
    }
    let previous = end - 1;
    for (let i = begin; i < end; ++i) {
      this.widenRows(xs[previous], ys[previous], xs[i], ys[i]);
      previous = i;
    }
    for (let row = first; row <= last; ++row) {
      this.paintSpan(row, this.leftmost[row], this.rightmost[row]);
    }
  }

  /**
   * @param {number} x0
   * @param {number} y0
   * @param {number} x1
   * @param {number} y1
   */
  widenRows(x0, y0, x1, y1) {
    if (y0 > y1) {
      this.widenRows(x1, y1, x0, y0);
      return;
    }
    const first = Math.max(y0 >> fractionBits, this.top);
    const last = Math.min((y1 - 1) >> fractionBits, this.bottom - 1);
    const slope = (x1 - x0) / (y1 - y0);
    for (let row = first; row <= last; ++row) {
      const upper = row * onePixel;
      const lower = upper + onePixel;
      const a = upper <= y0 ? x0 : Math.floor(x0 + (upper - y0) * slope);
      const b = lower >= y1 ? x1 : Math.floor(x0 + (lower - y0) * slope);
      const low = a < b ? a : b;
      const high = a < b ? b : a;
      if (low < this.leftmost[row]) this.leftmost[row] = low;
      if (high > this.rightmost[row]) this.rightmost[row] = high;
    }
  }

  /**
   * Paints along the edges, and inside at the middle of every row.
   * @param {DevicePath} path
   * @param {boolean} evenOdd
   */
  fillAny(path, evenOdd) {
    this.crossingCount = 0;
    this.firstRow = this.bottom;
    this.lastRow = -1;
    const { xs, ys, starts } = path;
    for (let i = 0; i < path.subpaths; ++i) {
      if (isFlat(xs, ys, starts[i], starts[i + 1])) {
        this.fillMonotone(xs, ys, starts[i], starts[i + 1]);
        continue;
      }
      let previous = starts[i + 1] - 1;
      for (let n = starts[i]; n < starts[i + 1]; ++n) {
        if (ys[n] > ys[previous]) this.addEdge(xs[previous], ys[previous], xs[n], ys[n], 1);
        else this.addEdge(xs[n], ys[n], xs[previous], ys[previous], 0);
        previous = n;
      }
    }
    this.sortByRows();
    let begin = 0;
    for (let row = this.firstRow; row <= this.lastRow; ++row) {
      const end = this.rowEnds[row];
      sortPart(this.sorted, begin, end);
      this.paintInside(row, begin, end, evenOdd);
      begin = end;
    }
  }

  /**
   * @param {number} x0
   * @param {number} y0  not below y1
   * @param {number} x1
   * @param {number} y1
   * @param {number} direction
   */
  addEdge(x0, y0, x1, y1, direction) {
    const first = Math.max(y0 >> fractionBits, this.top);
    const last = Math.min((y1 - 1) >> fractionBits, this.bottom - 1);
    const slope = (x1 - x0) / (y1 - y0);
    for (let row = first; row <= last; ++row) {
      const upper = row * onePixel;
      const lower = upper + onePixel;
      const a = upper <= y0 ? x0 : Math.floor(x0 + (upper - y0) * slope);
      const b = lower >= y1 ? x1 : Math.floor(x0 + (lower - y0) * slope);
      // Straight down between two pixels it touches neither.
      if (a !== b || a % onePixel !== 0) this.paintSpan(row, Math.min(a, b), Math.max(a, b));
      const middle = upper + onePixel / 2;
      if (middle >= y0 && middle < y1) {
        this.addCrossing(row, Math.floor(x0 + (middle - y0) * slope), direction);
      }
    }
  }

  /**
   * @param {number} row
   * @param {number} x
   * @param {number} direction
   */
  addCrossing(row, x, direction) {
    const n = this.crossingCount++;
    if (n === this.crossings.length) {
      this.crossings = grown(this.crossings);
      this.crossingRows = grown(this.crossingRows);
      this.sorted = new Int32Array(this.crossings.length);
    }
    this.crossings[n] = 2 * x + direction;
    this.crossingRows[n] = row;
    if (row < this.firstRow) this.firstRow = row;
    if (row > this.lastRow) this.lastRow = row;
  }

  sortByRows() {
    const { rowEnds, crossings, crossingRows, sorted, firstRow, lastRow } = this;
    if (lastRow < 0) return;
    rowEnds.fill(0, firstRow, lastRow + 2);
    for (let i = 0; i < this.crossingCount; ++i) ++rowEnds[crossingRows[i] + 1];
    for (let row = firstRow + 1; row <= lastRow; ++row) rowEnds[row] += rowEnds[row - 1];
    // So far the begins; every one moves to its end as the row is filled.
    for (let i = 0; i < this.crossingCount; ++i) sorted[rowEnds[crossingRows[i]]++] = crossings[i];
  }

  /**
   * @param {number} row
   * @param {number} begin
   * @param {number} end
   * @param {boolean} evenOdd
   */
  paintInside(row, begin, end, evenOdd) {
    let winding = 0;
    let from = 0;
    for (let i = begin; i < end; ++i) {
      const x = this.sorted[i] >> 1;
      const wasInside = winding !== 0;
      if (evenOdd) winding ^= 1;
      else winding += this.sorted[i] & 1 ? 1 : -1;
      if (!wasInside) from = x;
      else if (winding === 0 && x > from) this.paintSpan(row, from, x);
    }
  }

  /**
   * @param {number} x  within the clip's box
   * @param {number} y
   * @param {number} colour
   */
  setPixel(x, y, colour) {
    const { mask } = this;
    if (mask !== null && mask[y * this.maskWidth - this.maskOffset + x] === 0) return;
    this.pixels[y * this.width + x] = colour;
  }

  /**
   * The pixels of a row that a piece touches. A piece of no length touches one.
   * @param {number} row
   * @param {number} from
   * @param {number} to
   */
  paintSpan(row, from, to) {
    let begin = from >> fractionBits;
    let end = lastTouched(from, to) + 1;
    if (begin < this.left) begin = this.left;
    if (end > this.right) end = this.right;
    if (begin >= end) return;
    const { pixels, colour, mask } = this;
    const start = row * this.width;
    if (mask !== null) {
      const shift = row * this.maskWidth - this.maskOffset;
      for (let x = begin; x < end; ++x) if (mask[shift + x] !== 0) pixels[start + x] = colour;
    } else if (end - begin < shortSpan) {
      for (let i = start + begin; i < start + end; ++i) pixels[i] = colour;
    } else {
      pixels.fill(colour, start + begin, start + end);
    }
  }
}

/**
 * The last pixel that a piece touches.
 * @param {number} from
 * @param {number} to
 */
function lastTouched(from, to) {
  return (to > from ? to - 1 : to) >> fractionBits;
}

/**
 * Whether a subpath has no extent at all in one direction.
 * @param {Int32Array} xs
 * @param {Int32Array} ys
 * @param {number} begin
 * @param {number} end
 */
function isFlat(xs, ys, begin, end) {
  let sameX = true;
  let sameY = true;
  for (let i = begin + 1; i < end && (sameX || sameY); ++i) {
    sameX &&= xs[i] === xs[begin];
    sameY &&= ys[i] === ys[begin];
  }
  return sameX || sameY;
}

/**
 * Whether an outline goes down once and up once: then it is in one piece in every row.
 * @param {Int32Array} ys
 * @param {number} length
 */
function isMonotone(ys, length) {
  if (length <= 3) return true;
  let turns = 0;
  let previous = ys[length - 1];
  let wasDown = previous > ys[length - 2];
  for (let i = 0; i < length && turns <= 2; ++i) {
    const y = ys[i];
    if (y !== previous && y > previous !== wasDown) {
      wasDown = !wasDown;
      ++turns;
    }
    previous = y;
  }
  return turns <= 2;
}

/**
 * @param {Int32Array} values
 * @param {number} begin
 * @param {number} end
 */
function sortPart(values, begin, end) {
  if (end - begin > 24) {
    values.subarray(begin, end).sort();
    return;
  }
  for (let i = begin + 1; i < end; ++i) {
    const value = values[i];
    let hole = i;
    for (; hole > begin && values[hole - 1] > value; --hole) values[hole] = values[hole - 1];
    values[hole] = value;
  }
}

/** @param {Int32Array} values */
function grown(values) {
  const copy = new Int32Array(2 * values.length);
  copy.set(values);
  return copy;
}
