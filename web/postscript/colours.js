// Colours of all spaces as red, green and blue. Inks become light by the plain rule, without a
// profile of any printer.

import { NotDrawn, PostScriptError, PSArray } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./graphics_state.js").ColourSpace} ColourSpace */

/** @param {number} component  from 0 to 1 */
function toByte(component) {
  if (!(component > 0)) return 0;
  return component >= 1 ? 255 : Math.floor(component * 255 + 0.5);
}

/**
 * @param {number} red
 * @param {number} green
 * @param {number} blue
 */
export function packed(red, green, blue) {
  return (toByte(red) << 16) | (toByte(green) << 8) | toByte(blue);
}

/** @param {number} component */
function limited(component) {
  return Math.min(1, Math.max(0, component));
}

/** @param {number[]} components @returns {[number, number, number]} */
export function rgbOfCmyk([cyan, magenta, yellow, black]) {
  const light = (/** @type {number} */ ink) => 1 - Math.min(1, limited(ink) + limited(black));
  return [light(cyan), light(magenta), light(yellow)];
}

/**
 * Red, green and blue, from 0 to 1, of a colour in some space.
 * @param {Interpreter} interpreter  of which Indexed and Separation spaces may run procedures
 * @param {ColourSpace} space
 * @param {number[]} components
 * @returns {[number, number, number]}
 */
export function rgbOf(interpreter, space, components) {
  switch (space.name) {
    case "DeviceGray":
      return [limited(components[0]), limited(components[0]), limited(components[0])];
    case "DeviceRGB":
      return [limited(components[0]), limited(components[1]), limited(components[2])];
    case "DeviceCMYK":
      return rgbOfCmyk(components);
    case "Indexed":
      return rgbOf(interpreter, baseOf(space), indexed(interpreter, space, components[0]));
    case "Separation":
      return rgbOf(interpreter, baseOf(space), transformed(interpreter, space, components));
    default:
      throw new NotDrawn(`colours in ${space.name}`);
  }
}

/**
 * A colour as 0xRRGGBB.
 * @param {Interpreter} interpreter
 * @param {ColourSpace} space
 * @param {number[]} components
 */
export function colourOf(interpreter, space, components) {
  if (space.name === "DeviceRGB") return packed(components[0], components[1], components[2]);
  return packed(...rgbOf(interpreter, space, components));
}

/** @param {ColourSpace} space @returns {ColourSpace} */
function baseOf(space) {
  if (!space.base) throw new PostScriptError("rangecheck");
  return space.base;
}

/**
 * The base space's components of an entry of the table.
 * @param {Interpreter} interpreter
 * @param {ColourSpace} space
 * @param {number} index
 */
function indexed(interpreter, space, index) {
  const entry = Math.min(Math.max(0, Math.trunc(index)), space.highest ?? 0);
  const count = baseOf(space).components;
  if (space.table instanceof PSArray) return transformed(interpreter, space, [entry]);
  const bytes = space.table.bytes.subarray(entry * count, (entry + 1) * count);
  return Array.from(bytes, (/** @type {number} */ byte) => byte / 255);
}

/**
 * What the space's procedure makes of some components.
 * @param {Interpreter} interpreter
 * @param {ColourSpace} space
 * @param {number[]} components
 */
function transformed(interpreter, space, components) {
  interpreter.operands.push(...components);
  interpreter.execute(space.table);
  const result = [];
  for (let i = 0; i < baseOf(space).components; ++i) result.unshift(interpreter.popNumber());
  return result;
}

/**
 * @param {number} hue
 * @param {number} saturation
 * @param {number} brightness
 * @returns {[number, number, number]}
 */
export function rgbOfHsb(hue, saturation, brightness) {
  const [h, s, b] = [limited(hue) * 6, limited(saturation), limited(brightness)];
  const channel = (/** @type {number} */ offset) => {
    const k = (offset + h) % 6;
    return b - b * s * Math.max(0, Math.min(k, 4 - k, 1));
  };
  return [channel(5), channel(3), channel(1)];
}

/**
 * @param {[number, number, number]} colour
 * @returns {[number, number, number]}
 */
export function hsbOfRgb([red, green, blue]) {
  const most = Math.max(red, green, blue);
  const range = most - Math.min(red, green, blue);
  if (range === 0) return [0, 0, most];
  let hue;
  if (most === red) hue = (green - blue) / range;
  else if (most === green) hue = 2 + (blue - red) / range;
  else hue = 4 + (red - green) / range;
  return [(hue < 0 ? hue + 6 : hue) / 6, range / most, most];
}
