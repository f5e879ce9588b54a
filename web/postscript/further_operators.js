// Operators that figures hardly ever use: what has no effect on a picture does nothing, and what might
// have one is said not to be drawn. A program that looks for them finds them.

import { countToMark } from "./stack_operators.js";
import { Dictionary, NotDrawn, PostScriptError, PSArray, PSString, literalName } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

const notDrawn = `
deletefile eoviewclip filenameforall fileposition ineofill infill instroke inueofill inufill
inustroke rectviewclip renamefile resourceforall setfileposition ustrokepath viewclip viewclippath
`;

// How many operands each of these takes.
const ignored = Object.freeze({
  "===": 1,
  handleerror: 0,
  initviewclip: 0,
  printobject: 2,
  setbbox: 4,
  setdevparams: 2,
  ucache: 0,
  write: 2,
  writehexstring: 2,
  writeobject: 3,
  writestring: 2,
});

// What caches of glyphs and paths tell of themselves: they are empty.
const cacheAnswers = Object.freeze({
  cachestatus: [0, 1e6, 0, 1000, 0, 10000, 12500],
  ucachestatus: [0, 1e6, 0, 1000, 1000],
});

/** What a program has said it will not change, or not look into. */
const writeProtected = new WeakSet();
const readProtected = new WeakSet();

/** @param {any} value */
function hasAccess(value) {
  return value instanceof PSArray || value instanceof PSString || value instanceof Dictionary;
}

/**
 * Arrays and strings are protected as this operand only, dictionaries as a whole.
 * @param {any} value
 */
function ownOperand(value) {
  if (value instanceof PSString) return new PSString(value.bytes, value.executable);
  if (!(value instanceof PSArray)) return value;
  const copy = new PSArray(value.items, value.executable, value.start, value.length);
  copy.packed = value.packed;
  return copy;
}

/**
 * @param {Interpreter} interpreter
 * @param {WeakSet<object>[]} protections
 */
function protect(interpreter, protections) {
  const value = interpreter.pop();
  if (!hasAccess(value)) {
    interpreter.push(value);
    return;
  }
  const own = ownOperand(value);
  for (const protection of protections) protection.add(own);
  interpreter.push(own);
}

/** @param {Interpreter} interpreter @param {WeakSet<object>} protection */
function isOpen(interpreter, protection) {
  const value = interpreter.pop();
  return !protection.has(value) && !(protection === writeProtected && value?.packed);
}

/** @param {Interpreter} interpreter */
function defineAccess(interpreter) {
  interpreter.define("readonly", (machine) => protect(machine, [writeProtected]));
  for (const name of ["executeonly", "noaccess"]) {
    interpreter.define(name, (machine) => protect(machine, [writeProtected, readProtected]));
  }
  interpreter.define("wcheck", (machine) => machine.push(isOpen(machine, writeProtected)));
  interpreter.define("rcheck", (machine) => machine.push(isOpen(machine, readProtected)));
}

/** Values that programs keep under numbers. @param {Interpreter} interpreter */
function defineUserObjects(interpreter) {
  /** @type {Map<number, any>} */
  const objects = new Map();
  interpreter.define("defineuserobject", (machine) => {
    const value = machine.pop();
    machine.countBytes(100);
    objects.set(machine.popCount(), value);
  });
  interpreter.define("undefineuserobject", (machine) => void objects.delete(machine.popCount()));
  interpreter.define("execuserobject", (machine) => {
    const index = machine.popCount();
    if (!objects.has(index)) throw new PostScriptError("rangecheck", "execuserobject");
    machine.execute(objects.get(index));
  });
}

/** @param {Interpreter} interpreter */
export function defineFurtherOperators(interpreter) {
  for (const name of notDrawn.trim().split(/\s+/)) {
    interpreter.define(name, () => {
      throw new NotDrawn(`the operator ${name}`);
    });
  }
  for (const [name, count] of Object.entries(ignored)) {
    interpreter.define(name, (machine) => {
      for (let i = 0; i < count; ++i) machine.pop();
    });
  }
  for (const [name, numbers] of Object.entries(cacheAnswers)) {
    interpreter.define(name, (machine) => machine.operands.push(...numbers));
  }
  for (const name of ["setcacheparams", "setucacheparams"]) {
    interpreter.define(name, (machine) => {
      machine.operands.length -= countToMark(machine) + 1;
    });
  }
  interpreter.define("currentcacheparams", (machine) => {
    machine.systemDictionary.get("mark").run(machine);
    machine.operands.push(1e6, 1250, 12500);
  });
  interpreter.define("currentdevparams", (machine) => {
    machine.pop();
    machine.push(new Dictionary());
  });
  interpreter.define("findcolorrendering", (machine) => {
    machine.pop();
    machine.operands.push(literalName("DefaultColorRendering"), false);
  });
  interpreter.systemDictionary.map.set("shareddict", interpreter.globalDictionary);
  interpreter.systemDictionary.map.set("=string", new PSString(new Uint8Array(128)));
  defineAccess(interpreter);
  defineUserObjects(interpreter);
}
