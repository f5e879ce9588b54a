// What draws the glyphs of a font, after its type.

import { kind } from "../picture/display_list.js";
import { outlineOfCharstring } from "./charstring.js";
import { compositeFace } from "./composite_faces.js";
import { Outline } from "./outline.js";
import { ProcedureFace } from "./procedure_face.js";
import { StandInFace } from "./stand_ins.js";
import { TrueTypeFont } from "./truetype.js";
import { Dictionary, Name, NotDrawn, PostScriptError, PSArray, PSString } from "./values.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./path.js").Path} Path */

/** @typedef {{ code: number, name: string }} Glyph  the code is -1 if only the name is known */

/**
 * Matrices lead from the units of glyphs to points, with the glyph at its place. Widths are in the
 * units of glyphs.
 * @typedef {object} Face
 * @property {(interpreter: Interpreter, glyph: Glyph) => [number, number]} width
 * @property {(interpreter: Interpreter, glyph: Glyph, matrix: Matrix) => [number, number]} draw
 *   returns the width
 * @property {(glyph: Glyph, matrix: Matrix, path: Path) => [number, number]} outline
 *   adds to a path, returns the width
 */

/** The entry of a font dictionary that names the font which is not in the file. */
export const standInKey = "name of the stand-in";

/** Outlines by the string that is the glyph's program. @type {WeakMap<PSString, Outline>} */
const outlinesOfPrograms = new WeakMap();

/** @type {WeakMap<PSArray, TrueTypeFont>} */
const trueTypeFonts = new WeakMap();

/** Fills outlines. */
class OutlineFace {
  /**
   * @param {Dictionary} font
   * @param {(glyph: Glyph) => Outline} outlineOf
   */
  constructor(font, outlineOf) {
    this.metrics = font.get("Metrics");
    this.font = font;
    this.outlineOf = outlineOf;
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   */
  width(interpreter, glyph) {
    return this.widthOf(glyph, this.outlineOf(glyph));
  }

  /**
   * The glyph's own width, unless the font sets another one.
   * @param {Glyph} glyph
   * @param {Outline} outline
   * @returns {[number, number]}
   */
  widthOf({ name }, outline) {
    const width = this.metrics instanceof Dictionary ? this.metrics.get(name) : undefined;
    if (width === undefined) return outline.width;
    if (typeof width !== "number") throw new NotDrawn("a font that moves its glyphs");
    return [width, 0];
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   * @param {Matrix} matrix
   */
  draw({ list, graphics }, glyph, matrix) {
    const outline = this.outlineOf(glyph);
    const paintType = this.font.get("PaintType") ?? 0;
    const width = this.widthOf(glyph, outline);
    if (outline.verbs.length === 0 || paintType === 3) return width;
    if (graphics.isPattern) throw new NotDrawn("a pattern");
    const path = outline.addTo(list, matrix);
    if (paintType === 2) {
      list.addItem(kind.stroke, path, graphics.colour, graphics.clip, list.pens.length);
      list.pens.push(this.penOfOutline(graphics, matrix));
    } else {
      list.addItem(kind.glyph, path, graphics.colour, graphics.clip);
    }
    return width;
  }

  /**
   * @param {import("./graphics_state.js").GraphicsState} graphics
   * @param {Matrix} matrix
   * @returns {import("../picture/display_list.js").Pen}
   */
  penOfOutline({ cap, join, miterLimit }, matrix) {
    const width = this.font.get("StrokeWidth") ?? 0;
    return { width, cap, join, miterLimit, dashes: [], dashOffset: 0, matrix };
  }

  /**
   * @param {Glyph} glyph
   * @param {Matrix} matrix
   * @param {Path} path
   */
  outline(glyph, matrix, path) {
    const outline = this.outlineOf(glyph);
    outline.appendTo(path, matrix);
    return this.widthOf(glyph, outline);
  }
}

/**
 * @param {Dictionary} font
 * @param {string} key
 */
function dictionaryOf(font, key) {
  const value = font.get(key);
  if (!(value instanceof Dictionary)) throw new PostScriptError("invalidfont", key);
  return value;
}

/** @param {Dictionary} font */
function charstringFace(font) {
  const charstrings = dictionaryOf(font, "CharStrings");
  const secret = dictionaryOf(font, "Private");
  const subroutines = secret.get("Subrs");
  const programs = {
    glyph: (/** @type {string} */ name) => charstrings.get(name)?.bytes,
    subroutine: (/** @type {number} */ index) =>
      subroutines instanceof PSArray ? subroutines.get(index)?.bytes : undefined,
    skipped: secret.get("lenIV") ?? 4,
  };
  return new OutlineFace(font, ({ name }) => {
    const program = charstrings.get(name) ?? charstrings.get(".notdef");
    if (!program) return new Outline();
    if (!(program instanceof PSString)) throw new NotDrawn("a font of procedures and outlines");
    const known = outlinesOfPrograms.get(program);
    if (known) return known;
    const outline = outlineOfCharstring(programs, program.bytes);
    outlinesOfPrograms.set(program, outline);
    return outline;
  });
}

/**
 * Joins the strings that a font is cut into; odd ones end with a byte that is not the font's.
 * @param {PSArray} strings
 */
function joined(strings) {
  const parts = strings.toArray().map((string) => {
    if (!(string instanceof PSString)) throw new PostScriptError("invalidfont", "sfnts");
    return string.bytes.subarray(0, string.bytes.length & ~1);
  });
  const whole = new Uint8Array(parts.reduce((length, part) => length + part.length, 0));
  let end = 0;
  for (const part of parts) {
    whole.set(part, end);
    end += part.length;
  }
  return whole;
}

/** @param {PSArray} strings */
function trueTypeFont(strings) {
  const known = trueTypeFonts.get(strings);
  if (known) return known;
  try {
    const font = new TrueTypeFont(joined(strings));
    trueTypeFonts.set(strings, font);
    return font;
  } catch (thrown) {
    throw thrown instanceof RangeError ? new PostScriptError("invalidfont") : thrown;
  }
}

/**
 * @param {Dictionary} font
 * @param {(glyph: Glyph) => number} indexOf
 */
function trueTypeFace(font, indexOf) {
  const strings = font.get("sfnts");
  if (!(strings instanceof PSArray)) throw new PostScriptError("invalidfont", "sfnts");
  if (font.get("GlyphDirectory")) throw new NotDrawn("a font with a GlyphDirectory");
  const trueType = trueTypeFont(strings);
  return new OutlineFace(font, (glyph) => trueType.outline(indexOf(glyph)));
}

/** @param {Dictionary} font */
function namedTrueTypeFace(font) {
  const indices = dictionaryOf(font, "CharStrings");
  return trueTypeFace(font, ({ name }) => indices.get(name) ?? indices.get(".notdef") ?? 0);
}

/**
 * @param {any} font
 * @returns {Face}
 */
export function faceOf(font) {
  if (!(font instanceof Dictionary)) throw new PostScriptError("invalidfont");
  const standIn = font.get(standInKey);
  if (standIn instanceof Name) return new StandInFace(standIn.text);
  switch (font.get("FontType")) {
    case 0:
      return compositeFace(font, faceOf, trueTypeFace);
    case 1:
      return charstringFace(font);
    case 3:
      return new ProcedureFace(font);
    case 42:
      return namedTrueTypeFace(font);
    default:
      throw new NotDrawn(`a font of type ${font.get("FontType")}`);
  }
}
