// Paths made from other paths: with lines for curves, and the other way round.

import { verb } from "../picture/display_list.js";
import { Path } from "./path.js";

const linesPerCurve = 32;

/**
 * @param {Path} path
 * @returns {Path}
 */
export function flattened(path) {
  const flat = new Path();
  flat.substituteFor = path.substituteFor;
  const c = path.coordinates;
  path.forEachPart((what, i) => {
    if (what === verb.move) flat.moveTo(c[i], c[i + 1]);
    else if (what === verb.line) flat.lineTo(c[i], c[i + 1]);
    else if (what === verb.close) flat.close();
    else appendLines(flat, c.slice(i, i + 6));
  });
  return flat;
}

/**
 * @param {Path} path
 * @param {number[]} curve
 */
function appendLines(path, [x1, y1, x2, y2, x3, y3]) {
  const { x, y } = path;
  for (let i = 1; i <= linesPerCurve; ++i) {
    const t = i / linesPerCurve;
    const s = 1 - t;
    const [a, b, c, d] = [s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t];
    path.lineTo(a * x + b * x1 + c * x2 + d * x3, a * y + b * y1 + c * y2 + d * y3);
  }
}

/**
 * Every subpath backwards, in the same order.
 * @param {Path} path
 * @returns {Path}
 */
export function reversed(path) {
  const result = new Path();
  result.substituteFor = path.substituteFor;
  /** The subpath's verbs but the first, and its coordinates. @type {number[]} */
  let verbs = [];
  /** @type {number[]} */
  let points = [];
  const finish = () => {
    appendReversed(result, verbs, points);
    verbs = [];
    points = [];
  };
  path.forEachPart((what, at) => {
    if (what === verb.move) finish();
    else verbs.push(what);
    const count = what === verb.curve ? 6 : what === verb.close ? 0 : 2;
    points.push(...path.coordinates.slice(at, at + count));
  });
  finish();
  return result;
}

/**
 * @param {Path} path
 * @param {number[]} verbs
 * @param {number[]} points
 */
function appendReversed(path, verbs, points) {
  if (points.length === 0) return;
  let at = points.length - 2;
  const next = () => {
    const point = /** @type {[number, number]} */ ([points[at], points[at + 1]]);
    at -= 2;
    return point;
  };
  path.moveTo(...next());
  for (const what of verbs.toReversed()) {
    if (what === verb.line) path.lineTo(...next());
    else if (what === verb.curve) path.curveTo(...next(), ...next(), ...next());
  }
  if (verbs[verbs.length - 1] === verb.close) path.close();
}
