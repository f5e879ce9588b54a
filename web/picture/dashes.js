// Cuts polylines into dashes.

/** @typedef {import("./stroke_painter.js").Polyline} Polyline */
/** @typedef {import("./display_list.js").Pen} Pen */

/** More dashes than anybody could see: the line counts as solid. */
const mostDashes = 100_000;

/**
 * @param {Polyline} line
 * @param {Pen} pen
 * @param {(x: number, y: number) => number} lengthOf  in the pen's units
 * @returns {Polyline[]}
 */
export function dashed(line, { dashes, dashOffset }, lengthOf) {
  const points = line.isClosed ? [...line.points, ...line.points.slice(0, 2)] : line.points;
  const period = dashes.reduce((sum, dash) => sum + dash, 0);
  let total = 0;
  for (let i = 2; i < points.length; i += 2) {
    total += lengthOf(points[i] - points[i - 2], points[i + 1] - points[i - 1]);
  }
  if (!(period > 0) || (total / period) * dashes.length > mostDashes) return [line];

  let { index, left, isOn } = phaseAt(dashes, period, dashOffset);
  const startsOn = isOn;
  /** @type {Polyline[]} */
  const result = [];
  let dash = isOn ? points.slice(0, 2) : [];
  for (let i = 2; i < points.length; i += 2) {
    const x0 = points[i - 2];
    const y0 = points[i - 1];
    const length = lengthOf(points[i] - x0, points[i + 1] - y0);
    let done = 0;
    while (length - done > left) {
      done += left;
      const x = x0 + ((points[i] - x0) * done) / length;
      const y = y0 + ((points[i + 1] - y0) * done) / length;
      if (isOn) result.push({ points: [...dash, x, y], isClosed: false });
      dash = isOn ? [] : [x, y];
      isOn = !isOn;
      index = (index + 1) % dashes.length;
      left = dashes[index];
    }
    left -= length - done;
    if (isOn) dash.push(points[i], points[i + 1]);
  }
  if (dash.length === 0) return result.map(withoutRepeats);
  // What goes around the corner at which a closed line begins is one dash.
  const goesOn = line.isClosed && result.length > 0 && startsOn;
  if (goesOn) result[0].points.unshift(...dash);
  else result.push({ points: dash, isClosed: false });
  return result.map(withoutRepeats);
}

/**
 * @param {number[]} dashes
 * @param {number} period
 * @param {number} offset
 */
function phaseAt(dashes, period, offset) {
  // An odd number of dashes changes places with the gaps from one period to the next.
  let left = offset % (2 * period);
  if (left < 0) left += 2 * period;
  let index = 0;
  let isOn = true;
  while (left >= dashes[index]) {
    left -= dashes[index];
    index = (index + 1) % dashes.length;
    isOn = !isOn;
  }
  return { index, left: dashes[index] - left, isOn };
}

/** @param {Polyline} line */
function withoutRepeats({ points, isClosed }) {
  const kept = points.slice(0, 2);
  for (let i = 2; i < points.length; i += 2) {
    if (points[i] !== kept.at(-2) || points[i + 1] !== kept.at(-1)) {
      kept.push(points[i], points[i + 1]);
    }
  }
  return { points: kept, isClosed };
}
