// Repairs a figure in memory.

import { readFile } from "node:fs/promises";
import { createEngine } from "../engine/engine.js";

/**
 * @typedef {import("../engine/engine.js").Settings} Settings
 * @typedef {import("../engine/engine.js").Summary} Summary
 */

/**
 * @typedef {object} Repair
 * @property {Uint8Array} figure  the repaired text; whole only if the status is "repaired"
 * @property {Summary} summary
 * @property {string} console     what the program says
 */

const largestInteger = 0x7fffffff;

/** @type {Promise<Uint8Array<ArrayBuffer>> | undefined} */
let moduleBytes;

/**
 * Joins the polygons of an EPS figure. A figure in which nothing can be joined is no error: the
 * summary's status tells.
 * @param {Uint8Array} figure  is left as it is
 * @param {Settings} [settings]
 * @returns {Promise<Repair>}
 */
export async function repair(figure, settings = {}) {
  if (!(figure instanceof Uint8Array)) throw new TypeError("the figure is no Uint8Array");
  checkWholeNumber("mergeLimit", settings.mergeLimit, 0);
  checkWholeNumber("minSeparators", settings.minSeparators, 1);
  moduleBytes ??= readFile(new URL("../engine/trellion.wasm", import.meta.url));
  const engine = await createEngine(await moduleBytes);
  let position = 0;
  let said = "";
  /** @type {Uint8Array[]} */
  const parts = [];
  const summary = engine.repair(
    {
      size: figure.length,
      read: (buffer) => {
        const part = figure.subarray(position, position + buffer.length);
        buffer.set(part);
        position += part.length;
        return part.length;
      },
      write: (bytes) => parts.push(bytes.slice()),
      console: (text) => (said += text),
    },
    settings,
  );
  return { figure: joined(parts), summary, console: said };
}

/**
 * @param {string} name
 * @param {number | undefined} value
 * @param {number} least
 */
function checkWholeNumber(name, value, least) {
  if (value === undefined) return;
  if (Number.isInteger(value) && value >= least && value <= largestInteger) return;
  throw new RangeError(`${name} is no whole number from ${least} to ${largestInteger}`);
}

/** @param {Uint8Array[]} parts */
function joined(parts) {
  const whole = new Uint8Array(parts.reduce((size, part) => size + part.length, 0));
  let position = 0;
  for (const part of parts) {
    whole.set(part, position);
    position += part.length;
  }
  return whole;
}
