// Paints glyphs without anti-aliasing, as other renderers do: the pixels whose middles lie inside,
// and one pixel wherever a stem fits between two middles. As areas, they would come out bold.

import { fractionBits, onePixel } from "./device_path.js";

/** @typedef {import("./device_path.js").DevicePath} DevicePath */
/** @typedef {import("./area_painter.js").AreaPainter} AreaPainter */

const half = onePixel / 2;

/**
 * @param {AreaPainter} areas
 * @param {DevicePath} path
 */
export function paintGlyph(areas, path) {
  const { xs, ys, length } = path;
  const columns = middlesOf(xs, length);
  const rows = middlesOf(ys, length);
  let spans = 0;
  eachSpan(path, ys, xs, clamped(rows, areas.top, areas.bottom), (row, from, to) => {
    ++spans;
    const first = firstMiddle(from);
    const end = firstMiddle(to);
    if (first < end) areas.paintSpan(row, first * onePixel, end * onePixel);
    else paintPixel(areas, (from + to) >> (fractionBits + 1), row);
  });
  // Level stems can lie between the middles of two rows.
  eachSpan(path, xs, ys, clamped(columns, areas.left, areas.right), (column, from, to) => {
    ++spans;
    if (firstMiddle(from) < firstMiddle(to)) return;
    paintPixel(areas, column, (from + to) >> (fractionBits + 1));
  });
  // What is between all middles, or without extent, must not vanish.
  if (spans === 0) areas.fill(path, false);
}

/** The first pixel whose middle is not before a place. @param {number} place */
function firstMiddle(place) {
  return (place + half - 1) >> fractionBits;
}

/**
 * The rows or columns whose middles a path reaches.
 * @param {Int32Array} places
 * @param {number} length
 */
function middlesOf(places, length) {
  let low = Infinity;
  let high = -Infinity;
  for (let i = 0; i < length; ++i) {
    low = Math.min(low, places[i]);
    high = Math.max(high, places[i]);
  }
  return { first: firstMiddle(low), end: firstMiddle(high) };
}

/**
 * @param {{ first: number, end: number }} lines
 * @param {number} low
 * @param {number} high
 */
function clamped({ first, end }, low, high) {
  return { first: Math.max(first, low), end: Math.min(end, high) };
}

/**
 * The pieces inside a path along the middles of rows, or of columns if its coordinates are swapped.
 * @param {DevicePath} path
 * @param {Int32Array} alongs
 * @param {Int32Array} acrosses
 * @param {{ first: number, end: number }} lines
 * @param {(line: number, from: number, to: number) => void} act
 */
function eachSpan({ starts, subpaths }, alongs, acrosses, { first, end }, act) {
  if (first >= end) return;
  /** The places where each line is crossed, and the direction in the lowest bit. */
  const crossings = Array.from({ length: end - first }, () => /** @type {number[]} */ ([]));
  for (let subpath = 0; subpath < subpaths; ++subpath) {
    let previous = starts[subpath + 1] - 1;
    for (let i = starts[subpath]; i < starts[subpath + 1]; ++i) {
      const isDown = alongs[i] > alongs[previous];
      const upper = isDown ? previous : i;
      const lower = isDown ? i : previous;
      const slope = (acrosses[lower] - acrosses[upper]) / (alongs[lower] - alongs[upper]);
      const last = Math.min(end, firstMiddle(alongs[lower]));
      for (let line = Math.max(first, firstMiddle(alongs[upper])); line < last; ++line) {
        const middle = line * onePixel + half;
        const place = Math.floor(acrosses[upper] + (middle - alongs[upper]) * slope);
        crossings[line - first].push(2 * place + (isDown ? 1 : 0));
      }
      previous = i;
    }
  }
  for (const [i, places] of crossings.entries()) spansOf(places, first + i, act);
}

/**
 * @param {number[]} places
 * @param {number} line
 * @param {(line: number, from: number, to: number) => void} act
 */
function spansOf(places, line, act) {
  places.sort((a, b) => a - b);
  let winding = 0;
  let from = 0;
  for (const place of places) {
    const wasInside = winding !== 0;
    winding += place & 1 ? 1 : -1;
    if (!wasInside) from = place >> 1;
    else if (winding === 0 && place >> 1 > from) act(line, from, place >> 1);
  }
}

/**
 * @param {AreaPainter} areas
 * @param {number} x
 * @param {number} y
 */
function paintPixel(areas, x, y) {
  if (y < areas.top || y >= areas.bottom) return;
  areas.paintSpan(y, x * onePixel, (x + 1) * onePixel);
}
