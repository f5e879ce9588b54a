// Fonts made of other fonts, with codes of several bytes. Of the tables of codes only the one that
// changes nothing is known.

import { mapping } from "./composite_faces.js";
import { resourcesOf } from "./resource_operators.js";
import { Dictionary, keyOf, Operator, PSArray } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

/** The lists in a description of codes: what they say is not kept. */
const lists = ["codespacerange", "cidrange", "cidchar", "notdefrange", "notdefchar", "bfrange"];

/**
 * The operators that describe codes: each list begins with its count and ends behind its entries.
 * @returns {Dictionary}
 */
function codeOperators() {
  const operators = new Dictionary();
  const define = (/** @type {string} */ name, /** @type {(machine: Interpreter) => void} */ run) =>
    operators.map.set(name, new Operator(name, run));
  for (const list of lists) {
    define(`begin${list}`, (machine) => {
      machine.popCount();
      machine.execute(machine.systemDictionary.get("mark"));
    });
    define(`end${list}`, (machine) => {
      machine.execute(machine.systemDictionary.get("cleartomark"));
    });
  }
  define("begincmap", () => {});
  define("endcmap", () => {});
  define("usefont", (machine) => machine.pop());
  define("usecmap", (machine) => machine.pop());
  return operators;
}

/** @param {Interpreter} interpreter */
function composeFont(interpreter) {
  const parts = interpreter.popArray();
  const codes = keyOf(interpreter.pop());
  const font = new Dictionary();
  if (codes === "Identity-H") font.map.set("FMapType", mapping.table);
  font.map.set("FontType", 0);
  font.map.set("FontMatrix", new PSArray([1, 0, 0, 1, 0, 0]));
  const known = resourcesOf(interpreter, "CIDFont").map;
  const fonts = parts.toArray().map((part) => known.get(keyOf(part)) ?? part);
  font.map.set("FDepVector", new PSArray(fonts));
  interpreter.push(font);
  interpreter.execute(interpreter.systemDictionary.get("definefont"));
}

/** @param {Interpreter} interpreter */
export function defineCompositeFonts(interpreter) {
  resourcesOf(interpreter, "ProcSet").map.set("CIDInit", codeOperators());
  interpreter.define("composefont", composeFont);
}
