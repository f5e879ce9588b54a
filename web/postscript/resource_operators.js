// Named resources, by category. Fonts are the font operators' own.

import { Dictionary, keyOf, PostScriptError } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

/** Those that every printer has. */
const commonFonts =
  /^(?:Courier|Helvetica|Symbol|ZapfDingbats)$|^(?:AvantGarde|Bookman|Courier|Helvetica|NewCenturySchlbk|Palatino|Times|ZapfChancery)-/;

/** The kinds of fonts whose glyphs are drawn. */
const fontTypes = [1, 3, 42];

/**
 * The resources of a category, which are kept in the system dictionary.
 * @param {Interpreter} interpreter
 * @param {string} category
 * @returns {Dictionary}
 */
export function resourcesOf({ systemDictionary }, category) {
  const key = `resources of ${category}`;
  const known = systemDictionary.get(key);
  if (known) return known;
  const resources = new Dictionary();
  systemDictionary.map.set(key, resources);
  return resources;
}

/**
 * Runs an operator of the system dictionary.
 * @param {Interpreter} interpreter
 * @param {string} name
 */
function runOperator(interpreter, name) {
  const operator = interpreter.systemDictionary.get(name);
  if (!operator) throw new PostScriptError("undefined", name);
  operator.run(interpreter);
}

/** What is not found leaves its name on the stack. @param {Interpreter} interpreter */
function findResource(interpreter) {
  const category = keyOf(interpreter.peek(0));
  const key = keyOf(interpreter.peek(1));
  const isFont = category === "Font";
  const value = isFont ? null : knownResource(interpreter, category, key);
  if (value === undefined) throw new PostScriptError("undefinedresource", String(key));
  interpreter.pop();
  if (isFont) {
    runOperator(interpreter, "findfont");
    return;
  }
  interpreter.pop();
  interpreter.push(value);
}

/**
 * @param {Interpreter} interpreter
 * @param {string} category
 * @param {any} key
 */
function knownResource(interpreter, category, key) {
  if (category === "FontType") return fontTypes.includes(key) ? key : undefined;
  const value = resourcesOf(interpreter, category).map.get(key);
  if (value !== undefined || category !== "Encoding") return value;
  return interpreter.systemDictionary.map.get(key);
}

/** @param {Interpreter} interpreter */
function defineResource(interpreter) {
  const category = keyOf(interpreter.pop());
  if (category === "Font") {
    runOperator(interpreter, "definefont");
    return;
  }
  const value = interpreter.pop();
  resourcesOf(interpreter, category).map.set(keyOf(interpreter.pop()), value);
  interpreter.push(value);
}

/** @param {Interpreter} interpreter */
function resourceStatus(interpreter) {
  const category = keyOf(interpreter.pop());
  const key = keyOf(interpreter.pop());
  const known =
    category === "Font"
      ? interpreter.systemDictionary.get("FontDirectory")?.map.has(key) || commonFonts.test(key)
      : knownResource(interpreter, category, key) !== undefined;
  if (known) interpreter.operands.push(0, -1);
  interpreter.push(Boolean(known));
}

/** @param {Interpreter} interpreter */
export function defineResourceOperators(interpreter) {
  interpreter.define("findresource", findResource);
  interpreter.define("defineresource", defineResource);
  interpreter.define("resourcestatus", resourceStatus);
  interpreter.define("undefineresource", (machine) => {
    const category = keyOf(machine.pop());
    resourcesOf(machine, category).map.delete(keyOf(machine.pop()));
  });
}
