// Operators that find, define and choose fonts.

import { encodings, latinNames } from "./encodings.js";
import { DecryptedFile } from "./encryption.js";
import { standInKey } from "./faces.js";
import { fileOf } from "./filters.js";
import { multiply } from "./matrix.js";
import { isSymbolFont } from "./stand_ins.js";
import {
  Dictionary,
  keyOf,
  literalName,
  Name,
  PostScriptError,
  PSArray,
  PSString,
} from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("../picture/display_list.js").Matrix} Matrix */

/** What tells fonts that are defined from mere dictionaries. */
const fontIdentity = Object.freeze({ font: true });

/** @param {Interpreter} interpreter */
function directoryOf({ systemDictionary }) {
  return /** @type {Dictionary} */ (systemDictionary.get("FontDirectory"));
}

/**
 * @param {Interpreter} interpreter
 * @param {string} name
 */
function encodingNamed({ systemDictionary }, name) {
  return systemDictionary.get(name);
}

/**
 * A font dictionary such as a printer has for its own fonts, for one that is not in the file.
 * @param {Interpreter} interpreter
 * @param {string} name
 */
function makeStandIn(interpreter, name) {
  const isSymbol = isSymbolFont(name);
  const encoding = isSymbol ? "SymbolEncoding" : "StandardEncoding";
  const charstrings = new Dictionary();
  // By what is missing in Symbol programs tell that it keeps its encoding.
  for (const glyph of isSymbol ? encodings.SymbolEncoding : latinNames) {
    charstrings.map.set(glyph, new PSString(new Uint8Array(0)));
  }
  const font = new Dictionary();
  font.map = new Map(
    Object.entries({
      FontType: 1,
      FontName: literalName(name),
      FontMatrix: new PSArray([0.001, 0, 0, 0.001, 0, 0]),
      FontBBox: new PSArray([-168, -218, 1000, 898]),
      PaintType: 0,
      Encoding: encodingNamed(interpreter, encoding),
      CharStrings: charstrings,
      Private: new Dictionary(),
      FontInfo: new Dictionary(),
      FID: fontIdentity,
      [standInKey]: literalName(name),
    }),
  );
  return font;
}

/**
 * @param {Interpreter} interpreter
 * @param {any} key
 * @returns {Dictionary}
 */
function fontOf(interpreter, key) {
  const directory = directoryOf(interpreter);
  const known = directory.map.get(keyOf(key));
  if (known) return known;
  if (!(key instanceof Name || key instanceof PSString)) throw new PostScriptError("invalidfont");
  const font = makeStandIn(interpreter, String(keyOf(key)));
  directory.map.set(keyOf(key), font);
  return font;
}

/** @param {Interpreter} interpreter */
function defineFont(interpreter) {
  const font = interpreter.popDictionary();
  const key = interpreter.pop();
  interpreter.store(font, literalName("FID"), fontIdentity);
  directoryOf(interpreter).map.set(keyOf(key), font);
  interpreter.push(font);
}

/**
 * @param {Dictionary} font
 * @param {Matrix} matrix
 */
function transformedFont(font, matrix) {
  const fontMatrix = font.get("FontMatrix");
  if (!(fontMatrix instanceof PSArray)) throw new PostScriptError("invalidfont");
  const copy = new Dictionary();
  copy.map = new Map(font.map);
  const own = /** @type {Matrix} */ (fontMatrix.toArray());
  copy.map.set("FontMatrix", new PSArray(multiply(own, matrix)));
  return copy;
}

/**
 * The size of a font, or the matrix that tells more than that.
 * @param {Interpreter} interpreter
 * @returns {Matrix}
 */
function popSize(interpreter) {
  if (interpreter.peek(0) instanceof PSArray) return interpreter.popMatrix();
  const size = interpreter.popNumber();
  return [size, 0, 0, size, 0, 0];
}

/** @param {Interpreter} interpreter */
function resize(interpreter) {
  const matrix = popSize(interpreter);
  interpreter.push(transformedFont(interpreter.popDictionary(), matrix));
}

/** @param {Interpreter} interpreter */
function selectFont(interpreter) {
  const matrix = popSize(interpreter);
  const font = fontOf(interpreter, interpreter.pop());
  interpreter.graphics.font = transformedFont(font, matrix);
}

/**
 * Runs the encrypted part of a font.
 * @param {Interpreter} interpreter
 */
function runEncrypted(interpreter) {
  const { dictionaries, systemDictionary } = interpreter;
  const file = new DecryptedFile(fileOf(interpreter, interpreter.pop()));
  dictionaries.push(systemDictionary);
  interpreter.runFile(file);
  if (dictionaries[dictionaries.length - 1] === systemDictionary && dictionaries.length > 3) {
    dictionaries.length--;
  }
}

/** @param {Interpreter} interpreter */
export function defineFontOperators(interpreter) {
  const { map } = interpreter.systemDictionary;
  for (const [name, glyphs] of Object.entries(encodings)) {
    map.set(name, new PSArray(glyphs.map(literalName)));
  }
  const directory = new Dictionary();
  map.set("FontDirectory", directory);
  map.set("GlobalFontDirectory", directory);

  interpreter.define("findfont", (machine) => machine.push(fontOf(machine, machine.pop())));
  interpreter.define("definefont", defineFont);
  interpreter.define("undefinefont", (machine) => {
    directoryOf(machine).map.delete(keyOf(machine.pop()));
  });
  interpreter.define("scalefont", resize);
  interpreter.define("makefont", resize);
  interpreter.define("setfont", (machine) => {
    machine.graphics.font = machine.popDictionary();
  });
  interpreter.define("selectfont", selectFont);
  for (const name of ["currentfont", "rootfont"]) {
    interpreter.define(name, (machine) => {
      machine.push(machine.graphics.font ?? fontOf(machine, literalName("Invalid")));
    });
  }
  interpreter.define("findencoding", (machine) => {
    const encoding = encodingNamed(machine, machine.popName().text);
    if (!encoding) throw new PostScriptError("undefinedresource");
    machine.push(encoding);
  });
  interpreter.define("eexec", runEncrypted);
}
