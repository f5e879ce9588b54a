// The thinnest line there is: one pixel in every row or column, whichever it crosses more of.

import { fractionBits, onePixel } from "./device_path.js";

/** @typedef {import("./area_painter.js").AreaPainter} AreaPainter */

const half = onePixel / 2;

/**
 * Places are in 1/256 pixel.
 * @param {AreaPainter} areas
 * @param {number} x0
 * @param {number} y0
 * @param {number} x1
 * @param {number} y1
 */
export function paintThinLine(areas, x0, y0, x1, y1) {
  const isSteep = Math.abs(y1 - y0) > Math.abs(x1 - x0);
  if (isSteep) paintSteep(areas, x0, y0, x1, y1);
  else paintShallow(areas, x0, y0, x1, y1);
}

/**
 * @param {AreaPainter} areas
 * @param {number} x0
 * @param {number} y0
 * @param {number} x1
 * @param {number} y1
 */
function paintSteep(areas, x0, y0, x1, y1) {
  if (y0 > y1) {
    paintSteep(areas, x1, y1, x0, y0);
    return;
  }
  const first = y0 >> fractionBits;
  const last = (y1 - 1) >> fractionBits;
  const slope = (x1 - x0) / (y1 - y0);
  const end = Math.min(last, areas.bottom - 1);
  for (let row = Math.max(first, areas.top); row <= end; ++row) {
    const y = Math.min(y1, Math.max(y0, row * onePixel + half));
    const x = x0 + (y - y0) * slope;
    paintPixel(areas, Math.floor(x / onePixel), row);
  }
}

/**
 * @param {AreaPainter} areas
 * @param {number} x0
 * @param {number} y0
 * @param {number} x1
 * @param {number} y1
 */
function paintShallow(areas, x0, y0, x1, y1) {
  if (x0 > x1) {
    paintShallow(areas, x1, y1, x0, y0);
    return;
  }
  const first = x0 >> fractionBits;
  const last = (x1 - 1) >> fractionBits;
  if (y0 === y1) {
    paintRow(areas, y0 >> fractionBits, first, last);
    return;
  }
  const slope = (y1 - y0) / (x1 - x0);
  const end = Math.min(last, areas.right - 1);
  for (let column = Math.max(first, areas.left); column <= end; ++column) {
    const x = Math.min(x1, Math.max(x0, column * onePixel + half));
    const y = y0 + (x - x0) * slope;
    paintPixel(areas, column, Math.floor(y / onePixel));
  }
}

/**
 * @param {AreaPainter} areas
 * @param {number} row
 * @param {number} first
 * @param {number} last
 */
function paintRow(areas, row, first, last) {
  if (row < areas.top || row >= areas.bottom) return;
  areas.paintSpan(row, first * onePixel, (last + 1) * onePixel);
}

/**
 * @param {AreaPainter} areas
 * @param {number} x
 * @param {number} y
 */
function paintPixel(areas, x, y) {
  paintRow(areas, y, x, x);
}
