// Operators that build the current path, and look at it.

import { appendArc, roundedCorner } from "./arcs.js";
import { coordinateCounts } from "./path.js";
import { flattened, reversed } from "./path_changes.js";
import { invert, transform, transformDistance } from "./matrix.js";
import { NotDrawn, PostScriptError } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("../picture/display_list.js").Matrix} Matrix */

const largestCoordinate = 1e7;

/**
 * Places so far away stand for none on paper.
 * @param {number} x
 * @param {number} y
 */
function check(x, y) {
  if (!(Math.abs(x) < largestCoordinate && Math.abs(y) < largestCoordinate)) {
    throw new PostScriptError("limitcheck");
  }
}

/** @param {Interpreter} interpreter */
export function moveTo(interpreter) {
  const uy = interpreter.popNumber();
  const ux = interpreter.popNumber();
  const { graphics } = interpreter;
  const m = graphics.ctm;
  const x = m[0] * ux + m[2] * uy + m[4];
  const y = m[1] * ux + m[3] * uy + m[5];
  check(x, y);
  graphics.ownPath().moveTo(x, y);
}

/** @param {Interpreter} interpreter */
function lineTo(interpreter) {
  const uy = interpreter.popNumber();
  const ux = interpreter.popNumber();
  const { graphics } = interpreter;
  const m = graphics.ctm;
  const x = m[0] * ux + m[2] * uy + m[4];
  const y = m[1] * ux + m[3] * uy + m[5];
  check(x, y);
  pathWithPoint(interpreter).lineTo(x, y);
}

/** @param {Interpreter} interpreter */
function pathWithPoint({ graphics }) {
  if (!graphics.path.hasPoint) throw new PostScriptError("nocurrentpoint");
  return graphics.ownPath();
}

/** @param {Interpreter} interpreter */
function popDistance(interpreter) {
  const y = interpreter.popNumber();
  const x = interpreter.popNumber();
  return transformDistance(interpreter.graphics.ctm, x, y);
}

/** @param {Interpreter} interpreter */
function moveBy(interpreter) {
  const [x, y] = popDistance(interpreter);
  const path = pathWithPoint(interpreter);
  check(path.x + x, path.y + y);
  path.moveTo(path.x + x, path.y + y);
}

/** @param {Interpreter} interpreter */
function lineBy(interpreter) {
  const [x, y] = popDistance(interpreter);
  const path = pathWithPoint(interpreter);
  check(path.x + x, path.y + y);
  path.lineTo(path.x + x, path.y + y);
}

/**
 * @param {Interpreter} interpreter
 * @param {Matrix} m      from the operands' space to points
 */
function appendCurve(interpreter, m) {
  const n = [];
  for (let i = 0; i < 6; ++i) n.push(interpreter.popNumber());
  const [x3, y3] = transform(m, n[1], n[0]);
  const [x2, y2] = transform(m, n[3], n[2]);
  const [x1, y1] = transform(m, n[5], n[4]);
  check(x1, y1);
  check(x2, y2);
  check(x3, y3);
  pathWithPoint(interpreter).curveTo(x1, y1, x2, y2, x3, y3);
}

/** @param {Interpreter} interpreter */
function curveBy(interpreter) {
  const { path, ctm } = interpreter.graphics;
  appendCurve(interpreter, [ctm[0], ctm[1], ctm[2], ctm[3], path.x, path.y]);
}

/** The work and the memory that an arc takes, in steps of a program. */
const arcSteps = 100;

/**
 * @param {Interpreter} interpreter
 * @param {number} turn  1 to the left, -1 to the right
 */
function arc(interpreter, turn) {
  const last = interpreter.popNumber();
  const first = interpreter.popNumber();
  const radius = interpreter.popNumber();
  const y = interpreter.popNumber();
  const x = interpreter.popNumber();
  let sweep = turn * (last - first);
  if (sweep < 0) sweep += 360 * Math.ceil(-sweep / 360);
  if (sweep > 360) sweep = 360 + (sweep % 360);
  const { graphics } = interpreter;
  check(...transform(graphics.ctm, x + radius, y + radius));
  const end = first + turn * sweep;
  interpreter.countSteps(arcSteps);
  appendArc(graphics.ownPath(), graphics.ctm, { x, y, radius }, first, end);
}

/** @param {Interpreter} interpreter @returns {number[]} where the arc touches its sides */
function arcOfCorner(interpreter) {
  const radius = interpreter.popNumber();
  const y2 = interpreter.popNumber();
  const x2 = interpreter.popNumber();
  const y1 = interpreter.popNumber();
  const x1 = interpreter.popNumber();
  const path = pathWithPoint(interpreter);
  const before = userPoint(interpreter, path.x, path.y);
  const { ctm } = interpreter.graphics;
  const rounded = roundedCorner(before, [x1, y1], [x2, y2], radius);
  if (!rounded) {
    path.lineTo(...transform(ctm, x1, y1));
    return [x1, y1, x1, y1];
  }
  appendArc(path, ctm, rounded.circle, rounded.first, rounded.last);
  return [...rounded.start, ...rounded.end];
}

/**
 * @param {Interpreter} interpreter
 * @param {number} x
 * @param {number} y
 */
function userPoint({ graphics }, x, y) {
  const inverse = invert(graphics.ctm);
  if (!inverse) throw new PostScriptError("undefinedresult");
  return transform(inverse, x, y);
}

/** @param {Interpreter} interpreter */
function pushPathBox(interpreter) {
  const { path } = interpreter.graphics;
  if (path.isEmpty) throw new PostScriptError("nocurrentpoint");
  const [left, bottom, right, top] = path.box();
  const corners = [
    userPoint(interpreter, left, bottom),
    userPoint(interpreter, right, bottom),
    userPoint(interpreter, right, top),
    userPoint(interpreter, left, top),
  ];
  const xs = corners.map(([x]) => x);
  const ys = corners.map(([, y]) => y);
  interpreter.operands.push(Math.min(...xs), Math.min(...ys), Math.max(...xs), Math.max(...ys));
}

/** Calls a procedure for each part, in user space. @param {Interpreter} interpreter */
function forEachPart(interpreter) {
  const bodies = Array.from({ length: 4 }, () => interpreter.popProcedure()).reverse();
  const path = interpreter.graphics.path.copy();
  const inverse = invert(interpreter.graphics.ctm);
  if (!inverse) throw new PostScriptError("undefinedresult");
  let at = 0;
  for (const what of path.verbs) {
    const end = at + coordinateCounts[what];
    for (; at < end; at += 2) {
      const point = transform(inverse, path.coordinates[at], path.coordinates[at + 1]);
      interpreter.operands.push(...point);
    }
    if (!interpreter.runLoopBody(bodies[what])) return;
  }
}

/** @param {Interpreter} interpreter */
export function definePathOperators(interpreter) {
  interpreter.define("newpath", ({ graphics }) => graphics.newPath());
  interpreter.define("moveto", moveTo);
  interpreter.define("lineto", lineTo);
  interpreter.define("rmoveto", moveBy);
  interpreter.define("rlineto", lineBy);
  interpreter.define("curveto", (machine) => appendCurve(machine, machine.graphics.ctm));
  interpreter.define("rcurveto", curveBy);
  interpreter.define("closepath", ({ graphics }) => graphics.ownPath().close());
  interpreter.define("arc", (machine) => arc(machine, 1));
  interpreter.define("arcn", (machine) => arc(machine, -1));
  interpreter.define("arct", (machine) => void arcOfCorner(machine));
  interpreter.define("arcto", (machine) => machine.operands.push(...arcOfCorner(machine)));
  interpreter.define("currentpoint", (machine) => {
    const { path } = machine.graphics;
    if (!path.hasPoint) throw new PostScriptError("nocurrentpoint");
    machine.operands.push(...userPoint(machine, path.x, path.y));
  });
  interpreter.define("pathbbox", pushPathBox);
  interpreter.define("pathforall", forEachPart);
  interpreter.define("flattenpath", ({ graphics }) => (graphics.path = flattened(graphics.path)));
  interpreter.define("reversepath", ({ graphics }) => (graphics.path = reversed(graphics.path)));
  for (const name of ["strokepath", "upath", "uappend", "ufill", "ueofill", "ustroke"]) {
    interpreter.define(name, () => {
      throw new NotDrawn(name);
    });
  }
}
