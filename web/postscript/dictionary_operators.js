// Operators on dictionaries, and the dictionaries that every program finds.

import { bytesOf } from "./interpreter.js";
import { countToMark } from "./stack_operators.js";
import { Dictionary, keyOf, Name, PostScriptError, PSArray, PSString } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

const permanentDictionaries = 3;

/** @param {Interpreter} interpreter */
function newDictionary(interpreter) {
  interpreter.countBytes(2 * bytesOf.value);
  const dictionary = new Dictionary();
  dictionary.global = interpreter.globalAllocation;
  dictionary.savedAt = interpreter.saveStamp;
  return dictionary;
}

/** @param {Interpreter} interpreter */
function define(interpreter) {
  const value = interpreter.pop();
  const key = interpreter.pop();
  interpreter.store(interpreter.dictionaries[interpreter.dictionaries.length - 1], key, value);
}

/**
 * The topmost dictionary that has a key, or null.
 * @param {Interpreter} interpreter
 * @param {any} key
 */
function holderOf({ dictionaries }, key) {
  for (let i = dictionaries.length - 1; i >= 0; --i) {
    if (dictionaries[i].map.has(key)) return dictionaries[i];
  }
  return null;
}

/** @param {Interpreter} interpreter */
function load(interpreter) {
  const key = keyOf(interpreter.peek(0));
  const value = interpreter.lookup(key);
  if (value === undefined) throw new PostScriptError("undefined", String(key));
  interpreter.pop();
  interpreter.push(value);
}

/** @param {Interpreter} interpreter */
function storeWhereDefined(interpreter) {
  const value = interpreter.pop();
  const key = interpreter.pop();
  const current = interpreter.dictionaries[interpreter.dictionaries.length - 1];
  interpreter.store(holderOf(interpreter, keyOf(key)) ?? current, key, value);
}

/** @param {Interpreter} interpreter */
function where(interpreter) {
  const holder = holderOf(interpreter, keyOf(interpreter.pop()));
  if (holder) interpreter.push(holder);
  interpreter.push(holder !== null);
}

/** @param {Interpreter} interpreter */
function undefine(interpreter) {
  const key = keyOf(interpreter.pop());
  const dictionary = interpreter.popDictionary();
  if (!dictionary.map.has(key)) return;
  interpreter.store(dictionary, key, null);
  dictionary.map.delete(key);
}

/** @param {Interpreter} interpreter */
function endOfDictionary(interpreter) {
  const count = countToMark(interpreter);
  if (count % 2 === 1) throw new PostScriptError("rangecheck");
  const dictionary = newDictionary(interpreter);
  interpreter.countBytes((count / 2) * bytesOf.entry);
  const parts = interpreter.operands.splice(interpreter.operands.length - count, count);
  interpreter.pop();
  for (let i = 0; i < count; i += 2) dictionary.map.set(keyOf(parts[i]), parts[i + 1]);
  interpreter.push(dictionary);
}

/** @param {Interpreter} interpreter */
function end({ dictionaries }) {
  if (dictionaries.length <= permanentDictionaries) throw new PostScriptError("dictstackunderflow");
  dictionaries.length--;
}

/** How many parts a value has. @param {any} value */
function lengthOf(value) {
  if (value instanceof PSArray) return value.length;
  if (value instanceof PSString) return value.bytes.length;
  if (value instanceof Dictionary) return value.map.size;
  if (value instanceof Name) return value.text.length;
  throw new PostScriptError("typecheck");
}

/** @param {Interpreter} interpreter */
function defineWellKnown(interpreter) {
  const system = interpreter.systemDictionary;
  system.map.set("systemdict", system);
  system.map.set("globaldict", interpreter.globalDictionary);
  system.map.set("userdict", interpreter.userDictionary);
  for (const name of ["statusdict", "errordict", "$error"]) system.map.set(name, new Dictionary());
  system.get("$error").map.set("newerror", false);
  const status = system.get("statusdict").map;
  status.set("product", new PSString(new Uint8Array(0)));
  status.set("setduplexmode", new PSArray([system.get("pop")], true));
}

/** @param {Interpreter} interpreter */
export function defineDictionaryOperators(interpreter) {
  interpreter.define("dict", (machine) => {
    const capacity = machine.popCount();
    const dictionary = newDictionary(machine);
    dictionary.capacity = capacity;
    machine.push(dictionary);
  });
  interpreter.define("<<", (machine) => interpreter.systemDictionary.get("mark").run(machine));
  interpreter.define(">>", endOfDictionary);
  interpreter.define("begin", (machine) => {
    if (machine.dictionaries.length > 1000) throw new PostScriptError("dictstackoverflow");
    machine.dictionaries.push(machine.popDictionary());
  });
  interpreter.define("end", end);
  interpreter.define("def", define);
  interpreter.define("load", load);
  interpreter.define("store", storeWhereDefined);
  interpreter.define("where", where);
  interpreter.define("known", (machine) => {
    const key = keyOf(machine.pop());
    machine.push(machine.popDictionary().map.has(key));
  });
  interpreter.define("undef", undefine);
  interpreter.define("length", (machine) => machine.push(lengthOf(machine.pop())));
  interpreter.define("maxlength", (machine) => {
    const dictionary = machine.popDictionary();
    machine.push(Math.max(dictionary.capacity, dictionary.map.size));
  });
  interpreter.define("currentdict", (machine) => {
    machine.push(machine.dictionaries[machine.dictionaries.length - 1]);
  });
  interpreter.define("countdictstack", (machine) => machine.push(machine.dictionaries.length));
  interpreter.define("cleardictstack", (machine) => {
    machine.dictionaries.length = permanentDictionaries;
  });
  interpreter.define("dictstack", (machine) => {
    const array = machine.popArray();
    const { dictionaries } = machine;
    if (array.length < dictionaries.length) throw new PostScriptError("rangecheck");
    dictionaries.forEach((dictionary, i) => (array.items[array.start + i] = dictionary));
    machine.push(new PSArray(array.items, false, array.start, dictionaries.length));
  });
  defineWellKnown(interpreter);
}
