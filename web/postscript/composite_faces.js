// Fonts whose glyphs have codes of two bytes: made of several fonts of one byte, or of a big one.

import { multiply, transformDistance } from "./matrix.js";
import { Dictionary, Name, NotDrawn, PostScriptError, PSArray, PSString } from "./values.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./faces.js").Face} Face */
/** @typedef {import("./faces.js").Glyph} Glyph */

/** How codes choose glyphs: the first byte chooses a font, or a table of codes is asked. */
export const mapping = Object.freeze({ fontByFirstByte: 2, table: 9 });

/**
 * A glyph of one of the fonts that a composite one is made of.
 * @typedef {object} Part
 * @property {Face} face
 * @property {Glyph} glyph
 * @property {Matrix} matrix  of the font that it belongs to
 */

/** Leaves the drawing to the fonts that it is made of. */
class CompositeFace {
  /** @param {(code: number) => Part} partOf */
  constructor(partOf) {
    this.partOf = partOf;
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   */
  width(interpreter, { code }) {
    const { face, glyph, matrix } = this.partOf(code);
    return transformDistance(matrix, ...face.width(interpreter, glyph));
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   * @param {Matrix} place
   */
  draw(interpreter, { code }, place) {
    const { face, glyph, matrix } = this.partOf(code);
    const width = face.draw(interpreter, glyph, multiply(matrix, place));
    return transformDistance(matrix, ...width);
  }

  /**
   * @param {Glyph} glyph
   * @param {Matrix} place
   * @param {import("./path.js").Path} path
   */
  outline({ code }, place, path) {
    const { face, glyph, matrix } = this.partOf(code);
    return transformDistance(matrix, ...face.outline(glyph, multiply(matrix, place), path));
  }
}

/** @param {Dictionary} font */
function matrixOf(font) {
  const matrix = font.get("FontMatrix");
  if (!(matrix instanceof PSArray)) throw new PostScriptError("invalidfont");
  return /** @type {Matrix} */ (matrix.toArray());
}

/**
 * The name of a font's glyph.
 * @param {Dictionary} font
 * @param {number} code
 */
export function glyphName(font, code) {
  const encoding = font.get("Encoding");
  const name = encoding instanceof PSArray ? encoding.get(code) : null;
  return name instanceof Name ? name.text : ".notdef";
}

/**
 * @param {Dictionary} font
 * @param {(font: Dictionary) => Face} faceOf
 */
function fontsByFirstByte(font, faceOf) {
  const fonts = font.get("FDepVector");
  const indices = font.get("Encoding");
  /** @type {Map<Dictionary, Face>} */
  const faces = new Map();
  return new CompositeFace((code) => {
    const part = fonts.get(indices.get(code >> 8));
    if (!(part instanceof Dictionary)) throw new PostScriptError("invalidfont");
    const face = faces.get(part) ?? faceOf(part);
    faces.set(part, face);
    const low = code & 255;
    return { face, glyph: { code: low, name: glyphName(part, low) }, matrix: matrixOf(part) };
  });
}

/**
 * @param {Dictionary} font
 * @param {(font: Dictionary, indexOf: (glyph: Glyph) => number) => Face} trueTypeFace
 */
function bigFont(font, trueTypeFace) {
  const [part] = font.get("FDepVector").toArray();
  const map = part?.get("CIDMap");
  if (part?.get("CIDFontType") !== 2 || !(map instanceof PSString) || part.get("GDBytes") !== 2) {
    throw new NotDrawn("a font with codes of many bytes");
  }
  const { bytes } = map;
  const face = trueTypeFace(part, ({ code }) => (bytes[2 * code] << 8) | bytes[2 * code + 1]);
  const matrix = matrixOf(part);
  return new CompositeFace((code) => ({ face, glyph: { code, name: "" }, matrix }));
}

/**
 * @param {Dictionary} font
 * @param {(font: Dictionary) => Face} faceOf
 * @param {(font: Dictionary, indexOf: (glyph: Glyph) => number) => Face} trueTypeFace
 * @returns {Face}
 */
export function compositeFace(font, faceOf, trueTypeFace) {
  const how = font.get("FMapType");
  if ((font.get("WMode") ?? 0) !== 0) throw new NotDrawn("text from top to bottom");
  if (how === mapping.fontByFirstByte) return fontsByFirstByte(font, faceOf);
  if (how === mapping.table) return bigFont(font, trueTypeFace);
  throw new NotDrawn("a font made of fonts");
}
