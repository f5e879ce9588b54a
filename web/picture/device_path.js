// A path in pixels, its curves in straight pieces. Places are whole numbers of 1/256 pixel, so that
// an edge that is meant to lie between two pixels does, whatever the arithmetic before it lost.

import { verb } from "./display_list.js";

/** @typedef {import("./display_list.js").DisplayList} DisplayList */

export const fractionBits = 8;
export const onePixel = 1 << fractionBits;

/** Farther away than any picture reaches, and near enough to be counted with. */
const farthest = 1 << 29;

/** How far the straight pieces may be from their curve. */
const flatness = 0.1 * onePixel;
const mostPieces = 256;

/**
 * From points to pixels: x' = scale (x - left), y' = scale (top - y).
 * @typedef {object} View
 * @property {number} scale
 * @property {number} left
 * @property {number} top
 */

/**
 * The view whose first pixel is so many pixels to the right of the corner of the figure's frame,
 * and below it.
 * @param {DisplayList} list
 * @param {number} scale
 * @param {number} right
 * @param {number} down
 * @returns {View}
 */
export function viewOf(list, scale, right, down) {
  return { scale, left: list.box[0] + right / scale, top: list.box[3] - down / scale };
}

/** @param {number} pixels256 */
function onRaster(pixels256) {
  if (pixels256 > farthest) return farthest;
  if (pixels256 > -farthest) return Math.round(pixels256);
  return -farthest;
}

export class DevicePath {
  /** @param {View} view */
  constructor(view) {
    this.factor = view.scale * onePixel;
    this.left = view.left;
    this.top = view.top;
    this.xs = new Int32Array(256);
    this.ys = new Int32Array(256);
    this.length = 0;
    // Subpath i has the points from starts[i] up to starts[i + 1].
    this.starts = new Int32Array(64);
    this.isClosed = new Uint8Array(64);
    this.subpaths = 0;
  }

  /**
   * Takes a path of a list in place of what was there.
   * @param {DisplayList} list
   * @param {number} path
   */
  load(list, path) {
    this.length = 0;
    this.subpaths = 0;
    const verbs = list.verbs.values;
    const numbers = list.coordinates.values;
    const end = list.verbEnd(path);
    let n = list.coordinateStarts.values[path];
    let startX = 0;
    let startY = 0;
    let isOpen = false;
    for (let i = list.verbStarts.values[path]; i < end; ++i) {
      const what = verbs[i];
      if (what === verb.move) {
        startX = this.deviceX(numbers[n]);
        startY = this.deviceY(numbers[n + 1]);
        n += 2;
        isOpen = false;
        continue;
      }
      if (!isOpen) this.begin(startX, startY);
      isOpen = true;
      if (what === verb.line) {
        this.add(this.deviceX(numbers[n]), this.deviceY(numbers[n + 1]));
        n += 2;
      } else if (what === verb.curve) {
        this.addCurve(numbers, n);
        n += 6;
      } else {
        this.isClosed[this.subpaths - 1] = 1;
        isOpen = false;
      }
    }
    this.starts[this.subpaths] = this.length;
  }

  /** @param {number} x */
  deviceX(x) {
    return onRaster((x - this.left) * this.factor);
  }

  /** @param {number} y */
  deviceY(y) {
    return onRaster((this.top - y) * this.factor);
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  begin(x, y) {
    if (this.subpaths + 1 === this.starts.length) {
      this.starts = larger(this.starts, Int32Array);
      this.isClosed = larger(this.isClosed, Uint8Array);
    }
    this.starts[this.subpaths] = this.length;
    this.isClosed[this.subpaths++] = 0;
    this.add(x, y);
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  add(x, y) {
    if (this.length === this.xs.length) {
      this.xs = larger(this.xs, Int32Array);
      this.ys = larger(this.ys, Int32Array);
    }
    this.xs[this.length] = x;
    this.ys[this.length++] = y;
  }

  /**
   * @param {Float32Array} numbers
   * @param {number} n
   */
  addCurve(numbers, n) {
    const x0 = this.xs[this.length - 1];
    const y0 = this.ys[this.length - 1];
    const x1 = this.deviceX(numbers[n]);
    const y1 = this.deviceY(numbers[n + 1]);
    const x2 = this.deviceX(numbers[n + 2]);
    const y2 = this.deviceY(numbers[n + 3]);
    const x3 = this.deviceX(numbers[n + 4]);
    const y3 = this.deviceY(numbers[n + 5]);
    const bend = Math.max(
      Math.hypot(x0 - 2 * x1 + x2, y0 - 2 * y1 + y2),
      Math.hypot(x1 - 2 * x2 + x3, y1 - 2 * y2 + y3),
    );
    const pieces = Math.min(mostPieces, Math.ceil(Math.sqrt((0.75 * bend) / flatness)));
    for (let i = 1; i < pieces; ++i) {
      const t = i / pieces;
      const s = 1 - t;
      const a = s * s * s;
      const b = 3 * s * s * t;
      const c = 3 * s * t * t;
      const d = t * t * t;
      this.add(
        Math.round(a * x0 + b * x1 + c * x2 + d * x3),
        Math.round(a * y0 + b * y1 + c * y2 + d * y3),
      );
    }
    this.add(x3, y3);
  }
}

/**
 * A copy with room for twice as much.
 * @template {Int32Array | Uint8Array} T
 * @param {T} values
 * @param {new (length: number) => T} type
 */
function larger(values, type) {
  const copy = new type(2 * values.length);
  copy.set(values);
  return copy;
}
