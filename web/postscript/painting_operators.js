// Operators that paint the current path, or clip to it.

import { kind, noClip } from "../picture/display_list.js";
import { clipToPath, pathOfClip } from "./clips.js";
import { identity } from "./matrix.js";
import { Path, rectanglePath } from "./path.js";
import { fillWithPattern } from "./patterns.js";
import { penOf } from "./pens.js";
import { NotDrawn, PostScriptError, PSArray, PSString } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {[number, number, number, number]} Rectangle  x, y, width, height */

/**
 * Fills a path.
 * @param {Interpreter} interpreter
 * @param {Path} path
 * @param {number} what  a kind of fill
 */
export function fillPath(interpreter, path, what) {
  const { graphics, list } = interpreter;
  if (path.verbs.length < 2) return;
  if (graphics.isPattern) fillWithPattern(interpreter, path, what);
  else list.addItem(what, path.addTo(list), graphics.colour, graphics.clip);
}

/**
 * @param {Interpreter} interpreter
 * @param {Path} path
 */
export function strokePath({ graphics, list }, path) {
  if (path.verbs.length < 2) return;
  if (graphics.isPattern) throw new NotDrawn("a pattern");
  const pen = penOf(graphics, list);
  list.addItem(kind.stroke, path.addTo(list), graphics.colour, graphics.clip, pen);
}

/**
 * @param {Interpreter} interpreter
 * @param {number} what
 */
function fill(interpreter, what) {
  fillPath(interpreter, interpreter.graphics.path, what);
  interpreter.graphics.newPath();
}

/** @param {Interpreter} interpreter */
function stroke(interpreter) {
  strokePath(interpreter, interpreter.graphics.path);
  interpreter.graphics.newPath();
}

/**
 * One rectangle's four numbers, or an array of many.
 * @param {Interpreter} interpreter
 * @returns {number[]}
 */
function popRectangles(interpreter) {
  const top = interpreter.peek(0);
  if (top instanceof PSString) throw new NotDrawn("rectangles in a string");
  if (top instanceof PSArray) return interpreter.popNumbers();
  const height = interpreter.popNumber();
  const width = interpreter.popNumber();
  const y = interpreter.popNumber();
  return [interpreter.popNumber(), y, width, height];
}

/** @param {Interpreter} interpreter */
function popRectanglePath(interpreter) {
  const numbers = popRectangles(interpreter);
  if (numbers.length % 4 !== 0) throw new PostScriptError("rangecheck");
  const { ctm } = interpreter.graphics;
  const path = new Path();
  for (let i = 0; i < numbers.length; i += 4) {
    const [x, y, width, height] = numbers.slice(i, i + 4);
    path.append(rectanglePath(ctm, x, y, width, height));
  }
  return path;
}

/** @param {Interpreter} interpreter */
function strokeRectangles(interpreter) {
  const top = interpreter.peek(0);
  if (top instanceof PSArray && top.length === 6) throw new NotDrawn("rectstroke with a matrix");
  strokePath(interpreter, popRectanglePath(interpreter));
}

/** @param {Interpreter} interpreter */
function clipToRectangles(interpreter) {
  interpreter.graphics.path = popRectanglePath(interpreter);
  clipToPath(interpreter, false);
  interpreter.graphics.newPath();
}

/** Pictures that are seen through are not drawn. @param {Interpreter} interpreter */
function defineTransparency(interpreter) {
  interpreter.define(".setblendmode", (machine) => {
    const { text } = machine.popName();
    if (text !== "Normal" && text !== "Compatible") throw new NotDrawn("transparency");
  });
  for (const kindOfAlpha of ["opacity", "shape", "fillconstant", "strokeconstant"]) {
    interpreter.define(`.set${kindOfAlpha}alpha`, (machine) => {
      if (machine.popNumber() !== 1) throw new NotDrawn("transparency");
    });
  }
}

/** The page is over; what is drawn after it would be on another one. @param {Interpreter} interpreter */
function showPage(interpreter) {
  interpreter.itemsOfPage ??= interpreter.list.itemCount;
}

/** @param {Interpreter} interpreter */
export function definePaintingOperators(interpreter) {
  interpreter.define("fill", (machine) => fill(machine, kind.fill));
  interpreter.define("eofill", (machine) => fill(machine, kind.evenOddFill));
  interpreter.define("stroke", stroke);
  interpreter.define("rectfill", (machine) => {
    fillPath(machine, popRectanglePath(machine), kind.fill);
  });
  interpreter.define("rectstroke", strokeRectangles);
  interpreter.define("rectclip", clipToRectangles);
  interpreter.define("clip", (machine) => clipToPath(machine, false));
  interpreter.define("eoclip", (machine) => clipToPath(machine, true));
  interpreter.define("initclip", ({ graphics }) => void (graphics.clip = noClip));
  interpreter.define("clipsave", ({ graphics }) => {
    graphics.keptClips = { clip: graphics.clip, outer: graphics.keptClips };
  });
  interpreter.define("cliprestore", ({ graphics }) => {
    const kept = graphics.keptClips;
    graphics.clip = kept?.clip ?? noClip;
    graphics.keptClips = kept?.outer ?? null;
  });
  interpreter.define("clippath", (machine) => void (machine.graphics.path = pathOfClip(machine)));
  defineTransparency(interpreter);
  interpreter.define("showpage", showPage);
  interpreter.define("copypage", showPage);
  interpreter.define("erasepage", ({ list }) => {
    const [left, bottom, right, top] = list.box;
    const page = rectanglePath(identity, left, bottom, right - left, top - bottom);
    list.addItem(kind.fill, page.addTo(list), 0xffffff, noClip);
  });
  interpreter.define("shfill", () => {
    throw new NotDrawn("shfill");
  });
}
