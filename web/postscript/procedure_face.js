// Fonts whose glyphs are procedures of the program itself.

import { saveGraphics } from "./save_operators.js";
import { kind } from "../picture/display_list.js";
import { literalName, NotDrawn, PostScriptError } from "./values.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./values.js").Dictionary} Dictionary */
/** @typedef {import("./faces.js").Glyph} Glyph */

/** Thrown when a glyph that is only measured has told its width. */
const WIDTH_KNOWN = Object.freeze({ widthKnown: true });

/**
 * A glyph that is being drawn or measured.
 * @typedef {object} GlyphRun
 * @property {[number, number] | null} width
 * @property {boolean} isMeasured
 * @property {boolean} isStencil  it has no colours of its own
 */

/** The glyphs being run, one inside the other. @type {WeakMap<Interpreter, GlyphRun[]>} */
const glyphRuns = new WeakMap();

/** @param {Interpreter} interpreter */
function runsOf(interpreter) {
  const known = glyphRuns.get(interpreter);
  if (known) return known;
  /** @type {GlyphRun[]} */
  const runs = [];
  glyphRuns.set(interpreter, runs);
  return runs;
}

export class ProcedureFace {
  /** @param {Dictionary} font */
  constructor(font) {
    this.font = font;
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   */
  width(interpreter, glyph) {
    return this.run(interpreter, glyph, interpreter.graphics.ctm, true);
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   * @param {Matrix} matrix
   */
  draw(interpreter, glyph, matrix) {
    return this.run(interpreter, glyph, matrix, false);
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   * @param {Matrix} matrix
   * @param {boolean} isMeasured
   * @returns {[number, number]}
   */
  run(interpreter, glyph, matrix, isMeasured) {
    const { list, graphics, graphicsStack, dictionaries, operands, files, depth } = interpreter;
    const stacks = [dictionaries, operands, files];
    const counts = stacks.map(({ length }) => length);
    const graphicsCount = graphicsStack.length;
    const firstItem = list.itemCount;
    const runs = runsOf(interpreter);
    /** @type {GlyphRun} */
    const run = { width: null, isMeasured, isStencil: false };
    runs.push(run);
    saveGraphics(interpreter);
    interpreter.graphics.ctm = matrix;
    interpreter.graphics.pen = -1;
    interpreter.graphics.newPath();
    try {
      this.build(interpreter, glyph);
    } catch (thrown) {
      if (thrown !== WIDTH_KNOWN) throw thrown;
      for (const [i, stack] of stacks.entries()) shorten(stack, counts[i]);
      interpreter.depth = depth;
    } finally {
      runs.pop();
      shorten(graphicsStack, graphicsCount);
      interpreter.graphics = graphics;
    }
    if (!run.width) throw new PostScriptError("undefinedresult", "a glyph without a width");
    if (run.isStencil) paintAlike(list, firstItem, graphics.colour);
    return run.width;
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   */
  build(interpreter, { code, name }) {
    const { font } = this;
    const byName = font.get("BuildGlyph");
    interpreter.push(font);
    if (byName) {
      interpreter.push(literalName(name));
      interpreter.execute(byName);
      return;
    }
    const byCode = font.get("BuildChar");
    if (!byCode || code < 0) throw new PostScriptError("invalidfont");
    interpreter.push(code);
    interpreter.execute(byCode);
  }

  /** @returns {never} */
  outline() {
    throw new NotDrawn("outlines of a font of procedures");
  }
}

/**
 * @param {any[]} stack
 * @param {number} length
 */
function shorten(stack, length) {
  stack.length = Math.min(stack.length, length);
}

/**
 * Gives all items from one on the colour of the text.
 * @param {import("../picture/display_list.js").DisplayList} list
 * @param {number} first
 * @param {number} colour
 */
function paintAlike(list, first, colour) {
  for (let i = first; i < list.itemCount; ++i) {
    if (list.kinds.values[i] !== kind.image) list.colours.values[i] = colour;
  }
}

/**
 * @param {Interpreter} interpreter
 * @param {number} count  of operands, of which the first two are the width
 * @param {boolean} isStencil
 */
function setWidth(interpreter, count, isStencil) {
  /** @type {number[]} */
  const numbers = [];
  for (let i = 0; i < count; ++i) numbers.unshift(interpreter.popNumber());
  const run = runsOf(interpreter).at(-1);
  if (!run) throw new PostScriptError("undefined");
  run.width = [numbers[0], numbers[1]];
  run.isStencil = isStencil;
  if (run.isMeasured) throw WIDTH_KNOWN;
}

/** @param {Interpreter} interpreter */
export function defineGlyphWidthOperators(interpreter) {
  interpreter.define("setcharwidth", (machine) => setWidth(machine, 2, false));
  interpreter.define("setcachedevice", (machine) => setWidth(machine, 6, true));
  interpreter.define("setcachedevice2", (machine) => setWidth(machine, 10, true));
}
