// How far the items of a figure reach, so that those beside a view need not be drawn.

import { kind, verb } from "./display_list.js";

/** @typedef {import("./display_list.js").DisplayList} DisplayList */
/** @typedef {import("./display_list.js").Matrix} Matrix */
/** @typedef {import("./display_list.js").Pen} Pen */

/** How far letters reach around where they begin, in ems. */
const textReach = 2;

/**
 * Left, bottom, right and top of every item, in points.
 * @param {DisplayList} list
 * @returns {Float32Array}
 */
export function itemBoxes(list) {
  const boxes = new Float32Array(4 * list.itemCount);
  for (let i = 0; i < list.itemCount; ++i) {
    const what = list.kinds.values[i];
    const subject = list.subjects.values[i];
    if (what === kind.image) {
      const { width, height, matrix } = list.images[subject];
      setMappedBox(boxes, 4 * i, matrix, [0, 0, width, height]);
    } else if (what === kind.text) {
      const { starts, matrix } = list.texts[subject];
      const right = starts.reduce((most, start) => Math.max(most, start), 0) + textReach;
      setMappedBox(boxes, 4 * i, matrix, [-textReach, -textReach, right, textReach]);
    } else {
      setPathBox(boxes, 4 * i, list, subject);
      if (what === kind.stroke) widen(boxes, 4 * i, list.pens[list.penIndices.values[i]]);
    }
  }
  return boxes;
}

/**
 * @param {Float32Array} boxes
 * @param {number} at
 * @param {DisplayList} list
 * @param {number} path
 */
function setPathBox(boxes, at, list, path) {
  let left = Infinity;
  let bottom = Infinity;
  let right = -Infinity;
  let top = -Infinity;
  const numbers = list.coordinates.values;
  let n = list.coordinateStarts.values[path];
  const end = list.verbEnd(path);
  for (let i = list.verbStarts.values[path]; i < end; ++i) {
    const what = list.verbs.values[i];
    if (what === verb.close) continue;
    for (let points = what === verb.curve ? 3 : 1; points > 0; --points, n += 2) {
      const x = numbers[n];
      const y = numbers[n + 1];
      if (x < left) left = x;
      if (x > right) right = x;
      if (y < bottom) bottom = y;
      if (y > top) top = y;
    }
  }
  boxes[at] = left;
  boxes[at + 1] = bottom;
  boxes[at + 2] = right;
  boxes[at + 3] = top;
}

/**
 * @param {Float32Array} boxes
 * @param {number} at
 * @param {Pen} pen
 */
function widen(boxes, at, { width, join, miterLimit, matrix: [a, b, c, d] }) {
  const half = (width / 2) * Math.max(Math.hypot(a, c), Math.hypot(b, d));
  const reach = half * (join === 0 ? Math.max(miterLimit, Math.SQRT2) : Math.SQRT2);
  boxes[at] -= reach;
  boxes[at + 1] -= reach;
  boxes[at + 2] += reach;
  boxes[at + 3] += reach;
}

/**
 * @param {Float32Array} boxes
 * @param {number} at
 * @param {Matrix} matrix
 * @param {number[]} box  left, bottom, right, top
 */
function setMappedBox(boxes, at, [a, b, c, d, e, f], [left, bottom, right, top]) {
  boxes[at] = e + Math.min(a * left, a * right) + Math.min(c * bottom, c * top);
  boxes[at + 1] = f + Math.min(b * left, b * right) + Math.min(d * bottom, d * top);
  boxes[at + 2] = e + Math.max(a * left, a * right) + Math.max(c * bottom, c * top);
  boxes[at + 3] = f + Math.max(b * left, b * right) + Math.max(d * bottom, d * top);
}
