// Operators that show text, measure it, or make a path of it.

import { glyphName } from "./composite_faces.js";
import { faceOf } from "./faces.js";
import { multiply, transformDistance } from "./matrix.js";
import { Dictionary, NotDrawn, PostScriptError, PSArray, PSString } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("./faces.js").Face} Face */
/** @typedef {import("./faces.js").Glyph} Glyph */

/**
 * Draws a glyph, or does something else at its place, and returns its width.
 * @typedef {(interpreter: Interpreter, face: Face, glyph: Glyph, matrix: Matrix) =>
 *   [number, number]} Act
 */

/**
 * How far to go after a glyph, in user space.
 * @typedef {(width: [number, number], glyph: Glyph, index: number) => [number, number]} Advance
 */

/** @type {Act} */
const draw = (interpreter, face, glyph, matrix) => face.draw(interpreter, glyph, matrix);

/** @type {Act} */
const addOutline = ({ graphics }, face, glyph, matrix) =>
  face.outline(glyph, matrix, graphics.ownPath());

/** @type {Advance} */
const byWidth = (width) => width;

/**
 * The font and its matrix.
 * @param {Interpreter} interpreter
 * @returns {{ font: Dictionary, matrix: Matrix }}
 */
function currentFont({ graphics }) {
  const { font } = graphics;
  const matrix = font instanceof Dictionary ? font.get("FontMatrix") : null;
  if (
    !(matrix instanceof PSArray) ||
    matrix.length !== 6 ||
    !matrix.toArray().every(Number.isFinite)
  ) {
    throw new PostScriptError("invalidfont");
  }
  return { font, matrix: /** @type {Matrix} */ (matrix.toArray()) };
}

/**
 * @param {Dictionary} font
 * @param {Uint8Array} bytes
 * @returns {Glyph[]}
 */
function glyphsOf(font, bytes) {
  if (font.get("FontType") === 0) {
    if (bytes.length % 2 !== 0) throw new PostScriptError("rangecheck");
    return Array.from({ length: bytes.length >> 1 }, (_, i) => {
      return { code: (bytes[2 * i] << 8) | bytes[2 * i + 1], name: "" };
    });
  }
  return Array.from(bytes, (code) => ({ code, name: glyphName(font, code) }));
}

/**
 * @param {Interpreter} interpreter
 * @param {Glyph[]} glyphs
 * @param {Act} act
 * @param {Advance} advance
 */
function setGlyphs(interpreter, glyphs, act, advance) {
  if (!interpreter.graphics.path.hasPoint) throw new PostScriptError("nocurrentpoint");
  const { font, matrix } = currentFont(interpreter);
  if (glyphs.length === 0) return;
  const face = faceOf(font);
  glyphs.forEach((glyph, index) => {
    const { ctm, path } = interpreter.graphics;
    const { x, y } = path;
    const place = multiply(matrix, [ctm[0], ctm[1], ctm[2], ctm[3], x, y]);
    const width = act(interpreter, face, glyph, place);
    const distance = advance(transformDistance(matrix, ...width), glyph, index);
    const [dx, dy] = transformDistance(ctm, ...distance);
    interpreter.graphics.ownPath().moveTo(x + dx, y + dy);
  });
}

/**
 * @param {Interpreter} interpreter
 * @param {Uint8Array} bytes
 * @param {Advance} advance
 */
function showBytes(interpreter, bytes, advance) {
  setGlyphs(interpreter, glyphsOf(currentFont(interpreter).font, bytes), draw, advance);
}

/** @param {Interpreter} interpreter */
function show(interpreter) {
  showBytes(interpreter, interpreter.popString().bytes, byWidth);
}

/** A distance from two operands. @param {Interpreter} interpreter */
function popDistance(interpreter) {
  const y = interpreter.popNumber();
  return { x: interpreter.popNumber(), y };
}

/** @param {Interpreter} interpreter */
function showSpaced(interpreter) {
  const { bytes } = interpreter.popString();
  const { x, y } = popDistance(interpreter);
  showBytes(interpreter, bytes, ([width, height]) => [width + x, height + y]);
}

/**
 * What a character adds to its width.
 * @param {Interpreter} interpreter
 * @returns {Advance}
 */
function popExtraOfCharacter(interpreter) {
  const wide = interpreter.popCount();
  const { x, y } = popDistance(interpreter);
  return ([width, height], { code }) => (code === wide ? [width + x, height + y] : [width, height]);
}

/** @param {Interpreter} interpreter */
function showWide(interpreter) {
  const { bytes } = interpreter.popString();
  showBytes(interpreter, bytes, popExtraOfCharacter(interpreter));
}

/** @param {Interpreter} interpreter */
function showWideAndSpaced(interpreter) {
  const { bytes } = interpreter.popString();
  const { x, y } = popDistance(interpreter);
  const extra = popExtraOfCharacter(interpreter);
  showBytes(interpreter, bytes, ([width, height], ...rest) =>
    extra([width + x, height + y], ...rest),
  );
}

/**
 * @param {Interpreter} interpreter
 * @param {(numbers: number[], index: number) => [number, number]} distance
 */
function showPlaced(interpreter, distance) {
  if (interpreter.peek(0) instanceof PSString) throw new NotDrawn("widths of text in a string");
  const numbers = interpreter.popNumbers();
  const { bytes } = interpreter.popString();
  showBytes(interpreter, bytes, (width, glyph, index) => {
    const [x, y] = distance(numbers, index);
    if (x === undefined || y === undefined) throw new PostScriptError("rangecheck");
    return [x, y];
  });
}

/** @param {Interpreter} interpreter */
function showWithProcedure(interpreter) {
  const { bytes } = interpreter.popString();
  const procedure = interpreter.popProcedure();
  for (let i = 0; i < bytes.length; ++i) {
    showBytes(interpreter, bytes.subarray(i, i + 1), byWidth);
    if (i + 1 === bytes.length) return;
    interpreter.operands.push(bytes[i], bytes[i + 1]);
    interpreter.execute(procedure);
  }
}

/** @param {Interpreter} interpreter */
function showGlyph(interpreter) {
  const name = interpreter.popName().text;
  setGlyphs(interpreter, [{ code: -1, name }], draw, byWidth);
}

/** @param {Interpreter} interpreter */
function measure(interpreter) {
  const { bytes } = interpreter.popString();
  const { font, matrix } = currentFont(interpreter);
  const sum = [0, 0];
  if (bytes.length > 0) {
    const face = faceOf(font);
    for (const glyph of glyphsOf(font, bytes)) {
      const [x, y] = transformDistance(matrix, ...face.width(interpreter, glyph));
      sum[0] += x;
      sum[1] += y;
    }
  }
  interpreter.operands.push(...sum);
}

/** @param {Interpreter} interpreter */
function addOutlines(interpreter) {
  interpreter.popBoolean();
  const { bytes } = interpreter.popString();
  const glyphs = glyphsOf(currentFont(interpreter).font, bytes);
  setGlyphs(interpreter, glyphs, addOutline, byWidth);
}

/** @param {Interpreter} interpreter */
export function defineTextOperators(interpreter) {
  interpreter.define("show", show);
  interpreter.define("ashow", showSpaced);
  interpreter.define("widthshow", showWide);
  interpreter.define("awidthshow", showWideAndSpaced);
  interpreter.define("xshow", (machine) => showPlaced(machine, (numbers, i) => [numbers[i], 0]));
  interpreter.define("yshow", (machine) => showPlaced(machine, (numbers, i) => [0, numbers[i]]));
  interpreter.define("xyshow", (machine) => {
    showPlaced(machine, (numbers, i) => [numbers[2 * i], numbers[2 * i + 1]]);
  });
  interpreter.define("kshow", showWithProcedure);
  interpreter.define("glyphshow", showGlyph);
  interpreter.define("stringwidth", measure);
  interpreter.define("charpath", addOutlines);
  interpreter.define("cshow", () => {
    throw new NotDrawn("cshow");
  });
}
