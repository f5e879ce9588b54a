// Fonts that are not in the file: what the browser is to draw in place of each, and how wide its
// glyphs are.

import { symbolNames } from "./encodings.js";
import { inkHeight } from "./glyph_heights.js";
import { charactersOf } from "./glyph_names.js";
import { glyphWidth } from "./glyph_widths.js";
import { bytesOf } from "./interpreter.js";
import { invert, multiply, transform } from "./matrix.js";
import { kind } from "../picture/display_list.js";
import { NotDrawn } from "./values.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("../picture/display_list.js").Text} Text */
/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./faces.js").Glyph} Glyph */

/**
 * @typedef {object} StandIn
 * @property {"sans" | "serif" | "mono"} family
 * @property {boolean} bold
 * @property {boolean} italic
 * @property {import("./glyph_widths.js").WidthTable} widths
 */

const pictures = /dingbat|wingding|webding/i;
const symbols = /^symbol/i;
const typewriters = /cour|mono|typewriter|console|fixed|cmtt/i;
const serifs = /times|roman|serif|book|palat|century|garamond|georgia|minion|charter|utopia|^cm/i;
/** @type {import("./glyph_widths.js").WidthTable[]} */
const serifWidths = ["serif", "serifItalic", "serifBold", "serifBoldItalic"];

/** @param {string} name */
export const isSymbolFont = (name) => symbols.test(name);

/**
 * What stands in for a font.
 * @param {string} name
 * @returns {StandIn}
 */
export function standInFor(name) {
  if (pictures.test(name)) throw new NotDrawn(`text in ${name}`);
  if (isSymbolFont(name)) return { family: "serif", bold: false, italic: false, widths: "symbol" };
  const bold = /bold|demi|black|heavy/i.test(name);
  const italic = /ital|obli|slant/i.test(name);
  if (typewriters.test(name)) return { family: "mono", bold, italic, widths: "mono" };
  if (serifs.test(name) && !/sans/i.test(name)) {
    const widths = serifWidths[(bold ? 2 : 0) + (italic ? 1 : 0)];
    return { family: "serif", bold, italic, widths };
  }
  return { family: "sans", bold, italic, widths: bold ? "sansBold" : "sans" };
}

const unitsPerEm = 1000;

/** Draws a font's glyphs as text. */
export class StandInFace {
  /** @param {string} name */
  constructor(name) {
    this.standIn = standInFor(name);
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   * @returns {[number, number]}
   */
  width(interpreter, { name }) {
    return [unitsPerEm * glyphWidth(this.standIn.widths, name), 0];
  }

  /**
   * @param {Interpreter} interpreter
   * @param {Glyph} glyph
   * @param {Matrix} matrix
   */
  draw(interpreter, glyph, matrix) {
    const isMissing = this.standIn.widths === "symbol" && !symbolNames.has(glyph.name);
    const characters = isMissing ? "" : charactersOf(glyph.name);
    if (characters.trim()) this.addCharacters(interpreter, characters, matrix);
    return this.width(interpreter, glyph);
  }

  /**
   * @param {Interpreter} interpreter
   * @param {string} characters
   * @param {Matrix} matrix
   */
  addCharacters(interpreter, characters, matrix) {
    const { list, graphics } = interpreter;
    if (graphics.isPattern) throw new NotDrawn("a pattern");
    interpreter.countBytes(bytesOf.text);
    const place = multiply([unitsPerEm, 0, 0, unitsPerEm, 0, 0], matrix);
    const last = list.itemCount - 1;
    const goesOn =
      last >= 0 &&
      list.kinds.values[last] === kind.text &&
      list.colours.values[last] === graphics.colour &&
      list.clipIndices.values[last] === graphics.clip &&
      this.continues(list.texts[list.subjects.values[last]], characters, place);
    if (goesOn) return;
    const { family, bold, italic } = this.standIn;
    list.texts.push({ glyphs: [characters], starts: [0], family, bold, italic, matrix: place });
    list.addItem(kind.text, list.texts.length - 1, graphics.colour, graphics.clip);
  }

  /**
   * Adds to a text that is in the same font and on the same baseline; says whether it was.
   * @param {Text} text
   * @param {string} characters
   * @param {Matrix} place
   */
  continues(text, characters, place) {
    const { family, bold, italic } = this.standIn;
    if (text.family !== family || text.bold !== bold || text.italic !== italic) return false;
    for (let i = 0; i < 4; ++i) if (text.matrix[i] !== place[i]) return false;
    const toEms = invert(text.matrix);
    if (!toEms) return false;
    const [x, y] = transform(toEms, place[4], place[5]);
    if (Math.abs(y) > 1e-6) return false;
    text.glyphs.push(characters);
    text.starts.push(x);
    return true;
  }

  /**
   * Adds the frame of the glyph's ink, which tells programs the size of a label. It cannot be
   * painted.
   * @param {Glyph} glyph
   * @param {Matrix} matrix
   * @param {import("./path.js").Path} path
   * @returns {[number, number]}
   */
  outline(glyph, matrix, path) {
    const { family, widths } = this.standIn;
    const table = widths === "symbol" ? widths : family === "serif" ? "serif" : "sans";
    const [bottom, top] = inkHeight(table, glyph.name).map((height) => unitsPerEm * height);
    const width = unitsPerEm * glyphWidth(widths, glyph.name);
    if (bottom !== top) {
      path.moveTo(...transform(matrix, 0, bottom));
      path.lineTo(...transform(matrix, width, bottom));
      path.lineTo(...transform(matrix, width, top));
      path.lineTo(...transform(matrix, 0, top));
      path.close();
    }
    path.substituteFor = "outlines of a font that is not in the file";
    return [width, 0];
  }
}
