// The samples of images: from rows of bytes to red, green and blue.

import { rgbOf } from "./colours.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./graphics_state.js").ColourSpace} ColourSpace */

/**
 * What all samples of an image have in common.
 * @typedef {object} SampleFormat
 * @property {ColourSpace} space
 * @property {number} bits    of each component
 * @property {number[]} decode  the values of the least and the greatest sample, of each component
 */

/**
 * Cuts bytes into numbers of 1, 2, 4 or 8 bits.
 * @param {Uint8Array} bytes
 * @param {number} bits
 * @param {number} count
 */
export function unpacked(bytes, bits, count) {
  if (bits === 8) return bytes;
  const samples = new Uint8Array(count);
  const mask = (1 << bits) - 1;
  for (let i = 0, bit = 0; i < count; ++i, bit += bits) {
    samples[i] = (bytes[bit >> 3] >> (8 - bits - (bit & 7))) & mask;
  }
  return samples;
}

/**
 * The components' values by sample, a table for each component.
 * @param {SampleFormat} format
 */
function decodingTables({ space, bits, decode }) {
  const most = (1 << bits) - 1;
  return Array.from({ length: space.components }, (_, i) => {
    const [least, greatest] = [decode[2 * i], decode[2 * i + 1]];
    return Float64Array.from({ length: most + 1 }, (__, sample) => {
      return least + (sample * (greatest - least)) / most;
    });
  });
}

/**
 * Makes a function that puts a pixel into an image from samples, one of each component.
 * @param {Interpreter} interpreter
 * @param {SampleFormat} format
 * @returns {(rgba: Uint8ClampedArray, at: number, samples: Uint8Array, from: number) => void}
 */
export function pixelPainter(interpreter, format) {
  const { space } = format;
  const tables = decodingTables(format);
  if (space.components === 1) {
    const colours = Array.from(tables[0], (value) => rgbOf(interpreter, space, [value]));
    return (rgba, at, samples, from) => putColour(rgba, at, colours[samples[from]]);
  }
  const components = tables.map(() => 0);
  return (rgba, at, samples, from) => {
    for (let i = 0; i < tables.length; ++i) components[i] = tables[i][samples[from + i]];
    putColour(rgba, at, rgbOf(interpreter, space, components));
  };
}

/**
 * @param {Uint8ClampedArray} rgba
 * @param {number} at
 * @param {[number, number, number]} colour
 */
function putColour(rgba, at, [red, green, blue]) {
  rgba[at] = Math.floor(red * 255 + 0.5);
  rgba[at + 1] = Math.floor(green * 255 + 0.5);
  rgba[at + 2] = Math.floor(blue * 255 + 0.5);
  rgba[at + 3] = 255;
}
