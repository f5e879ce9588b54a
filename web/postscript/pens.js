// Pens in the display list. Most strokes of a figure are drawn with a few of them.

import { NotDrawn } from "./values.js";

/** @typedef {import("./graphics_state.js").GraphicsState} GraphicsState */
/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */
/** @typedef {import("../picture/display_list.js").Pen} Pen */

const mostPens = 1e6;
const widestPen = 1e6; // in points

/** @type {WeakMap<DisplayList, Map<string, number>>} */
const indicesOfLists = new WeakMap();

/**
 * The index of the current pen.
 * @param {GraphicsState} graphics
 * @param {DisplayList} list
 */
export function penOf(graphics, list) {
  if (graphics.pen >= 0) return graphics.pen;
  const last = list.pens.length - 1;
  graphics.pen = last >= 0 && isPen(list.pens[last], graphics) ? last : findPen(graphics, list);
  return graphics.pen;
}

/**
 * @param {Pen} pen
 * @param {GraphicsState} graphics
 */
function isPen(pen, graphics) {
  const { matrix } = pen;
  const { ctm } = graphics;
  return (
    pen.width === graphics.lineWidth &&
    pen.cap === graphics.cap &&
    pen.join === graphics.join &&
    pen.miterLimit === graphics.miterLimit &&
    pen.dashes === graphics.dashes &&
    pen.dashOffset === graphics.dashOffset &&
    matrix[0] === ctm[0] &&
    matrix[1] === ctm[1] &&
    matrix[2] === ctm[2] &&
    matrix[3] === ctm[3]
  );
}

/**
 * @param {GraphicsState} graphics
 * @param {DisplayList} list
 */
function findPen(graphics, list) {
  const { lineWidth, cap, join, miterLimit, dashes, dashOffset, ctm } = graphics;
  const [a, b, c, d] = ctm;
  const key = [lineWidth, cap, join, miterLimit, dashOffset, a, b, c, d, ...dashes].join(" ");
  const indices = indicesOfLists.get(list) ?? new Map();
  indicesOfLists.set(list, indices);
  const known = indices.get(key);
  if (known !== undefined) return known;
  const reach = lineWidth * Math.max(...ctm.slice(0, 4).map(Math.abs));
  if (!(reach < widestPen)) throw new NotDrawn("too wide a pen");
  if (list.pens.length > mostPens) throw new NotDrawn("too many different pens");
  list.pens.push({
    width: lineWidth,
    cap,
    join,
    miterLimit,
    dashes,
    dashOffset,
    matrix: [a, b, c, d, 0, 0],
  });
  indices.set(key, list.pens.length - 1);
  return list.pens.length - 1;
}
