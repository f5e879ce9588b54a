// Areas filled with a pattern: its cell is drawn wherever it meets the area, clipped to the area.

import { kind } from "../picture/display_list.js";
import { clipToPath } from "./clips.js";
import { invert, multiply, transform } from "./matrix.js";
import { Path, rectanglePath } from "./path.js";
import { restoreGraphics, saveGraphics } from "./save_operators.js";
import { Dictionary, NotDrawn, PostScriptError, PSArray } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./graphics_state.js").GraphicsState} GraphicsState */

const mostCells = 20000;

/** In points. Smaller samples are smoothed in patterns, by every renderer in its own way. */
const smallestSample = 0.5;

/** A pattern that was made: its dictionary, and the graphics state in which its cell is drawn. */
export class Pattern extends Dictionary {
  /**
   * @param {Dictionary} prototype
   * @param {GraphicsState} graphics
   */
  constructor(prototype, graphics) {
    super();
    this.map = new Map(prototype.map);
    this.graphics = graphics;
  }

  /** Whether its cell is drawn in the colour that is set with it. */
  get isStencil() {
    return this.get("PaintType") === 2;
  }
}

/** @param {Interpreter} interpreter */
export function makePattern(interpreter) {
  const matrix = interpreter.popMatrix();
  const prototype = interpreter.popDictionary();
  const graphics = interpreter.graphics.copy();
  graphics.ctm = multiply(matrix, graphics.ctm);
  graphics.pen = -1;
  graphics.path = new Path();
  graphics.isPattern = false;
  interpreter.push(new Pattern(prototype, graphics));
}

/**
 * @param {Interpreter} interpreter
 * @param {Path} path
 * @param {number} what  a kind of fill
 */
export function fillWithPattern(interpreter, path, what) {
  const { pattern, colour } = interpreter.graphics;
  if (!pattern || pattern.get("PatternType") !== 1) throw new NotDrawn("a pattern");
  const { box, images } = interpreter.list;
  const cells = cellsOver(pattern, path, box);
  let nextImage = images.length;
  saveGraphics(interpreter);
  interpreter.graphics.path = path;
  clipToPath(interpreter, what === kind.evenOddFill);
  const { clip } = interpreter.graphics;
  for (const [x, y] of cells) {
    interpreter.graphics = cellGraphics(pattern, x, y);
    interpreter.graphics.clip = clip;
    if (pattern.isStencil) interpreter.graphics.colour = colour;
    drawCell(interpreter, pattern);
    if (images.slice(nextImage).some(isFine)) throw new NotDrawn("a pattern of a fine image");
    nextImage = images.length;
  }
  restoreGraphics(interpreter);
}

/**
 * @param {Pattern} pattern
 * @param {number} x
 * @param {number} y
 */
function cellGraphics(pattern, x, y) {
  const graphics = pattern.graphics.copy();
  graphics.ctm = multiply([1, 0, 0, 1, x, y], graphics.ctm);
  graphics.newPath();
  return graphics;
}

/** @param {Interpreter} interpreter @param {Pattern} pattern */
function drawCell(interpreter, pattern) {
  const { graphics } = interpreter;
  const [left, bottom, right, top] = boxOf(pattern);
  graphics.path = rectanglePath(graphics.ctm, left, bottom, right - left, top - bottom);
  clipToPath(interpreter, false);
  graphics.newPath();
  const count = interpreter.graphicsStack.length;
  interpreter.push(pattern);
  interpreter.execute(pattern.get("PaintProc"));
  interpreter.graphicsStack.length = count;
}

/** @param {import("../picture/display_list.js").Image} image */
function isFine({ matrix: [a, b, c, d] }) {
  return Math.min(Math.hypot(a, b), Math.hypot(c, d)) < smallestSample;
}

/** @param {Pattern} pattern @returns {number[]} */
function boxOf(pattern) {
  const box = pattern.get("BBox");
  if (!(box instanceof PSArray) || box.length !== 4) throw new PostScriptError("typecheck");
  return box.toArray();
}

/**
 * Where the cells are that may be seen, in the pattern's own space.
 * @param {Pattern} pattern
 * @param {Path} path
 * @param {number[]} frame
 * @returns {[number, number][]}
 */
function cellsOver(pattern, path, frame) {
  const inverse = invert(pattern.graphics.ctm);
  const [across, up] = [pattern.get("XStep"), pattern.get("YStep")].map(Math.abs);
  if (!inverse || !(across > 0 && up > 0)) throw new PostScriptError("rangecheck");
  const area = path.box();
  const [x0, y0] = [Math.max(area[0], frame[0]), Math.max(area[1], frame[1])];
  const [x1, y1] = [Math.min(area[2], frame[2]), Math.min(area[3], frame[3])];
  if (x0 > x1 || y0 > y1) return [];
  const corners = [transform(inverse, x0, y0), transform(inverse, x1, y0)];
  corners.push(transform(inverse, x1, y1), transform(inverse, x0, y1));
  const xs = corners.map(([x]) => x);
  const ys = corners.map(([, y]) => y);
  const [left, bottom, right, top] = boxOf(pattern);
  const columns = steps(Math.min(...xs) - right, Math.max(...xs) - left, across);
  const rows = steps(Math.min(...ys) - top, Math.max(...ys) - bottom, up);
  if (!(columns.count * rows.count < mostCells)) throw new NotDrawn("a pattern of many cells");
  /** @type {[number, number][]} */
  const cells = [];
  for (let row = 0; row < rows.count; ++row) {
    for (let column = 0; column < columns.count; ++column) {
      cells.push([(columns.first + column) * across, (rows.first + row) * up]);
    }
  }
  return cells;
}

/**
 * The multiples of a step between two limits.
 * @param {number} from
 * @param {number} to
 * @param {number} step
 */
function steps(from, to, step) {
  const first = Math.ceil(from / step);
  return { first, count: Math.max(0, Math.floor(to / step) - first + 1) };
}
