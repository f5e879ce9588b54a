// Arcs of circles as curves, at most a quarter each.

import { direction, transform } from "./matrix.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("./path.js").Path} Path */

/**
 * @typedef {object} Circle
 * @property {number} x
 * @property {number} y
 * @property {number} radius
 */

/**
 * Appends an arc to the path, with a line to its begin if there is a current point.
 * @param {Path} path
 * @param {Matrix} matrix  from the circle's space to points
 * @param {Circle} circle
 * @param {number} first   degrees
 * @param {number} last    degrees; the arc turns left if it is the larger one
 */
export function appendArc(path, matrix, circle, first, last) {
  const { x, y, radius } = circle;
  const [startCosine, startSine] = direction(first);
  const start = transform(matrix, x + radius * startCosine, y + radius * startSine);
  if (path.hasPoint) path.lineTo(start[0], start[1]);
  else path.moveTo(start[0], start[1]);
  const count = Math.ceil(Math.abs(last - first) / 90);
  const step = (last - first) / count;
  for (let i = 0; i < count; ++i) {
    appendQuarter(
      path,
      matrix,
      circle,
      first + i * step,
      i === count - 1 ? last : first + (i + 1) * step,
    );
  }
}

/**
 * @param {Path} path
 * @param {Matrix} matrix
 * @param {Circle} circle
 * @param {number} from
 * @param {number} to  at most 90 degrees away
 */
function appendQuarter(path, matrix, { x, y, radius }, from, to) {
  const [cosine, sine] = direction(from);
  const [endCosine, endSine] = direction(to);
  const handle = (4 / 3) * Math.tan(((to - from) * Math.PI) / 720) * radius;
  const [x0, y0] = [x + radius * cosine, y + radius * sine];
  const [x3, y3] = [x + radius * endCosine, y + radius * endSine];
  const first = transform(matrix, x0 - handle * sine, y0 + handle * cosine);
  const second = transform(matrix, x3 + handle * endSine, y3 - handle * endCosine);
  const end = transform(matrix, x3, y3);
  path.curveTo(first[0], first[1], second[0], second[1], end[0], end[1]);
}

/**
 * Where the arc that rounds a corner touches its sides, and the arc. Null if the corner is straight.
 * @param {[number, number]} before
 * @param {[number, number]} corner
 * @param {[number, number]} after
 * @param {number} radius
 */
export function roundedCorner(before, corner, after, radius) {
  const inward = unit(before[0] - corner[0], before[1] - corner[1]);
  const outward = unit(after[0] - corner[0], after[1] - corner[1]);
  if (!inward || !outward) return null;
  const cross = inward[0] * outward[1] - inward[1] * outward[0];
  const dot = inward[0] * outward[0] + inward[1] * outward[1];
  if (Math.abs(cross) < 1e-12) return null;
  const distance = radius * Math.abs((1 + dot) / cross);
  const start = [corner[0] + distance * inward[0], corner[1] + distance * inward[1]];
  const end = [corner[0] + distance * outward[0], corner[1] + distance * outward[1]];
  const side = cross > 0 ? 1 : -1; // the centre is to this side of the way in
  const x = start[0] - side * radius * inward[1];
  const y = start[1] + side * radius * inward[0];
  const first = (Math.atan2(start[1] - y, start[0] - x) * 180) / Math.PI;
  let last = (Math.atan2(end[1] - y, end[0] - x) * 180) / Math.PI;
  while (last - first > 180) last -= 360;
  while (first - last > 180) last += 360;
  return { start, end, circle: { x, y, radius }, first, last };
}

/**
 * @param {number} x
 * @param {number} y
 * @returns {[number, number] | null}
 */
function unit(x, y) {
  const length = Math.hypot(x, y);
  return length === 0 ? null : [x / length, y / length];
}
