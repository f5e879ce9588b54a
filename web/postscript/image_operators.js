// Operators that paint images, from all the places where a program may keep their samples.

import { kind } from "../picture/display_list.js";
import { fileOf } from "./filters.js";
import { cmyk, grey, rgb } from "./graphics_state.js";
import { invert, multiply } from "./matrix.js";
import { pixelPainter, unpacked } from "./samples.js";
import { Dictionary, NotDrawn, PostScriptError, PSArray } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */
/** @typedef {import("./values.js").PSFile} PSFile */

/** Of all images of a figure together. */
const mostPixels = 1 << 25;

/** @type {WeakMap<DisplayList, number>} */
const pixelsOfLists = new WeakMap();

/**
 * @typedef {object} ImageShape
 * @property {number} width
 * @property {number} height
 * @property {Matrix} matrix  from user space to image space
 */

/**
 * Where an image's bytes come from: one file, or one for each component.
 * @typedef {object} SampleSource
 * @property {PSFile[]} files
 * @property {number} samplesPerPixel  in each file
 * @property {number} bits
 */

/**
 * The samples of each row of an image, of all components by turns; null when the data are at their
 * end.
 * @param {SampleSource} source
 * @param {number} width
 */
function nextRow({ files, samplesPerPixel, bits }, width) {
  const count = width * samplesPerPixel;
  const size = Math.ceil((count * bits) / 8);
  const rows = [];
  for (const file of files) {
    const bytes = new Uint8Array(size);
    for (let i = 0; i < size; ++i) {
      const byte = file.readByte();
      if (byte < 0) return null;
      bytes[i] = byte;
    }
    rows.push(unpacked(bytes, bits, count));
  }
  return rows.length === 1 ? rows[0] : interleaved(rows, width);
}

/**
 * @param {Uint8Array[]} rows
 * @param {number} width
 */
function interleaved(rows, width) {
  const samples = new Uint8Array(rows.length * width);
  for (let i = 0; i < samples.length; ++i) {
    samples[i] = rows[i % rows.length][Math.floor(i / rows.length)];
  }
  return samples;
}

/**
 * @param {DisplayList} list
 * @param {number} count
 */
function countPixels(list, count) {
  const total = (pixelsOfLists.get(list) ?? 0) + count;
  if (total > mostPixels) throw new NotDrawn("images that are too large");
  pixelsOfLists.set(list, total);
}

/**
 * @param {Interpreter} interpreter
 * @param {ImageShape} shape
 * @param {SampleSource} source
 * @param {(rgba: Uint8ClampedArray, at: number, samples: Uint8Array, from: number) => void} paint
 */
function addImage({ list, graphics }, { width, height, matrix }, source, paint) {
  const toUser = invert(matrix);
  if (!toUser) throw new PostScriptError("undefinedresult");
  if (width <= 0 || height <= 0) return;
  countPixels(list, width * height);
  const rgba = new Uint8ClampedArray(4 * width * height);
  const components = source.samplesPerPixel * source.files.length;
  for (let y = 0; y < height; ++y) {
    const samples = nextRow(source, width);
    if (!samples) break; // what the data do not cover is not painted
    for (let x = 0; x < width; ++x) paint(rgba, 4 * (y * width + x), samples, x * components);
  }
  const place = multiply(toUser, graphics.ctm);
  list.images.push({ width, height, rgba, matrix: place });
  list.addItem(kind.image, list.images.length - 1, graphics.colour, graphics.clip);
}

/**
 * @param {Interpreter} interpreter
 * @param {ImageShape} shape
 * @param {SampleSource} source
 * @param {import("./graphics_state.js").ColourSpace} space
 * @param {number[]} decode
 */
function addColouredImage(interpreter, shape, source, space, decode) {
  if (decode.length < 2 * space.components) throw new PostScriptError("rangecheck");
  const format = { space, bits: source.bits, decode };
  addImage(interpreter, shape, source, pixelPainter(interpreter, format));
}

/**
 * @param {Interpreter} interpreter
 * @param {ImageShape} shape
 * @param {PSFile} file
 * @param {number} painted  0 or 1, the sample that is painted
 */
function addStencil(interpreter, shape, file, painted) {
  const { colour, isPattern } = interpreter.graphics;
  if (isPattern) throw new NotDrawn("a pattern");
  const [red, green, blue] = [colour >> 16, (colour >> 8) & 255, colour & 255];
  const source = { files: [file], samplesPerPixel: 1, bits: 1 };
  addImage(interpreter, shape, source, (rgba, at, samples, from) => {
    if (samples[from] !== painted) return;
    rgba[at] = red;
    rgba[at + 1] = green;
    rgba[at + 2] = blue;
    rgba[at + 3] = 255;
  });
}

/** @param {number} bits */
function checkedBits(bits) {
  if (bits === 12) throw new NotDrawn("an image of 12 bits");
  if (![1, 2, 4, 8].includes(bits)) throw new PostScriptError("rangecheck");
  return bits;
}

/**
 * @param {import("./graphics_state.js").ColourSpace} space
 * @param {number} bits
 */
function plainDecode(space, bits) {
  if (space.name === "Indexed") return [0, (1 << bits) - 1];
  return Array.from({ length: 2 * space.components }, (_, i) => i % 2);
}

/**
 * @param {Interpreter} interpreter
 * @param {boolean} hasBits  whether the number of bits is an operand, or the stencil's polarity
 */
function popShape(interpreter, hasBits) {
  const matrix = interpreter.popMatrix();
  const detail = hasBits ? interpreter.popInteger() : interpreter.popBoolean();
  const height = interpreter.popInteger();
  return { shape: { matrix, height, width: interpreter.popInteger() }, detail };
}

/**
 * @param {Dictionary} dictionary
 * @param {string} key
 */
function numberOf(dictionary, key) {
  const value = dictionary.get(key);
  if (typeof value !== "number") throw new PostScriptError("typecheck", key);
  return value;
}

/**
 * @param {Dictionary} dictionary
 * @param {string} key
 * @returns {any[]}
 */
function arrayOf(dictionary, key) {
  const value = dictionary.get(key);
  if (!(value instanceof PSArray)) throw new PostScriptError("typecheck", key);
  return value.toArray();
}

/** @param {Dictionary} dictionary @returns {ImageShape} */
function shapeOf(dictionary) {
  if (dictionary.get("ImageType") !== 1) throw new NotDrawn("an image with a mask");
  const matrix = /** @type {Matrix} */ (arrayOf(dictionary, "ImageMatrix"));
  return { width: numberOf(dictionary, "Width"), height: numberOf(dictionary, "Height"), matrix };
}

/**
 * @param {Interpreter} interpreter
 * @param {Dictionary} dictionary
 */
function paintDictionary(interpreter, dictionary) {
  const shape = shapeOf(dictionary);
  const space = interpreter.graphics.colourSpace;
  const bits = checkedBits(numberOf(dictionary, "BitsPerComponent"));
  const isSplit = dictionary.get("MultipleDataSources") === true;
  const data = isSplit ? arrayOf(dictionary, "DataSource") : [dictionary.get("DataSource")];
  const files = data.map((value) => fileOf(interpreter, value));
  const source = { files, bits, samplesPerPixel: isSplit ? 1 : space.components };
  const decode = dictionary.get("Decode")
    ? arrayOf(dictionary, "Decode")
    : plainDecode(space, bits);
  addColouredImage(interpreter, shape, source, space, decode);
}

/** @param {Interpreter} interpreter */
function paintImage(interpreter) {
  if (interpreter.peek(0) instanceof Dictionary) {
    paintDictionary(interpreter, interpreter.popDictionary());
    return;
  }
  const file = fileOf(interpreter, interpreter.pop());
  const { shape, detail } = popShape(interpreter, true);
  const bits = checkedBits(Number(detail));
  addColouredImage(interpreter, shape, { files: [file], samplesPerPixel: 1, bits }, grey, [0, 1]);
}

/** @param {Interpreter} interpreter */
function paintStencil(interpreter) {
  if (interpreter.peek(0) instanceof Dictionary) {
    const dictionary = interpreter.popDictionary();
    const shape = shapeOf(dictionary);
    const [first] = arrayOf(dictionary, "Decode");
    const file = fileOf(interpreter, dictionary.get("DataSource"));
    addStencil(interpreter, shape, file, first === 0 ? 0 : 1);
    return;
  }
  const file = fileOf(interpreter, interpreter.pop());
  const { shape, detail } = popShape(interpreter, false);
  addStencil(interpreter, shape, file, detail ? 1 : 0);
}

/** @param {Interpreter} interpreter */
function paintColouredImage(interpreter) {
  const components = interpreter.popInteger();
  const space = { 1: grey, 3: rgb, 4: cmyk }[components];
  if (!space) throw new PostScriptError("rangecheck");
  const isSplit = interpreter.popBoolean();
  const files = [];
  for (let i = 0; i < (isSplit ? components : 1); ++i) {
    files.unshift(fileOf(interpreter, interpreter.pop()));
  }
  const { shape, detail } = popShape(interpreter, true);
  const bits = checkedBits(Number(detail));
  const source = { files, bits, samplesPerPixel: isSplit ? 1 : components };
  addColouredImage(interpreter, shape, source, space, plainDecode(space, bits));
}

/** @param {Interpreter} interpreter */
export function defineImageOperators(interpreter) {
  interpreter.define("image", paintImage);
  interpreter.define("imagemask", paintStencil);
  interpreter.define("colorimage", paintColouredImage);
}
