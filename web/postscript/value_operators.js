// Operators on arrays and strings, and those that change one kind of value into another.

import { GraphicsState } from "./graphics_state.js";
import { bytesOf } from "./interpreter.js";
import { numberOf, numberText } from "./number_text.js";
import { Scanner } from "./scanner.js";
import { copyOperands, countToMark } from "./stack_operators.js";
import {
  Dictionary,
  executableName,
  keyOf,
  literalName,
  MARK,
  Name,
  Operator,
  PostScriptError,
  PSArray,
  PSFile,
  PSString,
  Save,
  stringOf,
  textOf,
} from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

const largestArray = 1 << 24;

/**
 * @param {Interpreter} interpreter
 * @param {number} bytesOfPart
 */
function popSize(interpreter, bytesOfPart) {
  const size = interpreter.popCount();
  if (size > largestArray) throw new PostScriptError("limitcheck");
  interpreter.countSteps(size);
  interpreter.countBytes(bytesOf.value + bytesOfPart * size);
  return size;
}

/**
 * @param {number} index
 * @param {number} length
 */
function checkedIndex(index, length) {
  if (!(index >= 0 && index < length)) throw new PostScriptError("rangecheck");
  return Math.trunc(index);
}

/** @param {Interpreter} interpreter */
function get(interpreter) {
  const value = partAt(interpreter.peek(1), interpreter.peek(0));
  interpreter.operands.length -= 2;
  interpreter.push(value);
}

/**
 * @param {any} holder
 * @param {any} key
 */
function partAt(holder, key) {
  if (holder instanceof PSArray) return holder.get(checkedIndex(key, holder.length));
  if (holder instanceof PSString) return holder.bytes[checkedIndex(key, holder.bytes.length)];
  if (!(holder instanceof Dictionary)) throw new PostScriptError("typecheck");
  const value = holder.map.get(keyOf(key));
  if (value === undefined) throw new PostScriptError("undefined", String(keyOf(key)));
  return value;
}

/** @param {Interpreter} interpreter */
function put(interpreter) {
  const value = interpreter.pop();
  const key = interpreter.pop();
  const holder = interpreter.pop();
  if (holder instanceof Dictionary) interpreter.store(holder, key, value);
  else if (holder instanceof PSArray) {
    holder.items[holder.start + checkedIndex(key, holder.length)] = value;
  } else if (holder instanceof PSString) {
    holder.bytes[checkedIndex(key, holder.bytes.length)] = value;
  } else throw new PostScriptError("typecheck");
}

/**
 * A part that shares what it is a part of.
 * @param {any} value
 * @param {number} start
 * @param {number} length
 * @returns {any}
 */
function interval(value, start, length) {
  if (value instanceof PSString) {
    if (start + length > value.bytes.length) throw new PostScriptError("rangecheck");
    return new PSString(value.bytes.subarray(start, start + length), value.executable);
  }
  if (!(value instanceof PSArray)) throw new PostScriptError("typecheck");
  if (start + length > value.length) throw new PostScriptError("rangecheck");
  return new PSArray(value.items, value.executable, value.start + start, length);
}

/**
 * Copies parts into another value of the same kind, from an index on.
 * @param {any} target
 * @param {number} start
 * @param {any} source
 */
function copyInto(target, start, source) {
  if (target instanceof PSString && source instanceof PSString) {
    if (start + source.bytes.length > target.bytes.length) throw new PostScriptError("rangecheck");
    target.bytes.set(source.bytes, start);
  } else if (target instanceof PSArray && source instanceof PSArray) {
    if (start + source.length > target.length) throw new PostScriptError("rangecheck");
    source.toArray().forEach((item, i) => (target.items[target.start + start + i] = item));
  } else throw new PostScriptError("typecheck");
}

/** @param {Interpreter} interpreter */
function copy(interpreter) {
  if (typeof interpreter.peek(0) === "number") {
    copyOperands(interpreter);
    return;
  }
  const target = interpreter.pop();
  const source = interpreter.pop();
  if (target instanceof Dictionary && source instanceof Dictionary) {
    for (const [key, value] of source.map) interpreter.store(target, key, value);
    interpreter.push(target);
    return;
  }
  const length = source?.bytes?.length ?? source?.length;
  interpreter.countSteps(length);
  copyInto(target, 0, source);
  interpreter.push(interval(target, 0, length));
}

/** @param {Interpreter} interpreter */
function endOfArray(interpreter) {
  const count = countToMark(interpreter);
  interpreter.countBytes(bytesOf.value + bytesOf.item * count);
  const items = interpreter.operands.splice(interpreter.operands.length - count, count);
  interpreter.pop();
  interpreter.push(new PSArray(items));
}

/** @param {Interpreter} interpreter */
function arrayOfOperands(interpreter) {
  const array = interpreter.popArray();
  for (let i = array.length - 1; i >= 0; --i) array.items[array.start + i] = interpreter.pop();
  interpreter.push(array);
}

/** @param {Interpreter} interpreter */
function operandsOfArray(interpreter) {
  const array = interpreter.popArray();
  interpreter.countOperands(array.length);
  interpreter.countSteps(array.length);
  for (let i = 0; i < array.length; ++i) interpreter.push(array.get(i));
  interpreter.push(array);
}

/**
 * The same value with another attribute.
 * @param {any} value
 * @param {boolean} executable
 */
function withAttribute(value, executable) {
  if (value instanceof Name && value.executable !== executable) return value.twin;
  if (value instanceof PSArray) {
    const array = new PSArray(value.items, executable, value.start, value.length);
    array.packed = value.packed;
    return array;
  }
  if (value instanceof PSString) return new PSString(value.bytes, executable);
  if (value instanceof PSFile) value.executable = executable;
  return value;
}

/** @param {any} value */
function isExecutable(value) {
  return value instanceof Operator || Boolean(value?.executable);
}

/** @param {any} value */
function typeOf(value) {
  if (typeof value === "number") return Number.isInteger(value) ? "integertype" : "realtype";
  if (typeof value === "boolean") return "booleantype";
  if (value instanceof Name) return "nametype";
  if (value instanceof PSString) return "stringtype";
  if (value instanceof PSArray) return value.packed ? "packedarraytype" : "arraytype";
  if (value instanceof Dictionary) return "dicttype";
  if (value instanceof Operator) return "operatortype";
  if (value instanceof PSFile) return "filetype";
  if (value instanceof Save) return "savetype";
  if (value instanceof GraphicsState) return "gstatetype";
  return value === MARK ? "marktype" : "nulltype";
}

/** @param {any} value */
function textOfValue(value) {
  if (typeof value === "number") return numberText(value);
  if (typeof value === "boolean") return String(value);
  if (value instanceof Name) return value.text;
  if (value instanceof PSString) return textOf(value.bytes);
  return value instanceof Operator ? value.name : "--nostringval--";
}

/** @param {Interpreter} interpreter */
function toNumber(interpreter) {
  const value = interpreter.pop();
  if (typeof value === "number") return value;
  if (!(value instanceof PSString)) throw new PostScriptError("typecheck");
  const number = numberOf(textOf(value.bytes).trim());
  if (number === null) throw new PostScriptError("syntaxerror");
  return number;
}

/**
 * Puts a text into a string and gives the part that it fills.
 * @param {Interpreter} interpreter
 * @param {PSString} target
 * @param {string} text
 */
function fillString(interpreter, target, text) {
  copyInto(target, 0, stringOf(text));
  interpreter.push(interval(target, 0, text.length));
}

/** @param {Interpreter} interpreter */
function toRadixText(interpreter) {
  const target = interpreter.popString();
  const base = interpreter.popCount();
  const value = interpreter.popNumber();
  if (base < 2 || base > 36) throw new PostScriptError("rangecheck");
  const text = base === 10 ? numberText(value) : (Math.trunc(value) >>> 0).toString(base);
  fillString(interpreter, target, text.toUpperCase());
}

/**
 * @param {Interpreter} interpreter
 * @param {(text: string, sought: string) => number} find
 * @param {(found: Interpreter, before: PSString, match: PSString, after: PSString) => void} pushFound
 */
function searchFor(interpreter, find, pushFound) {
  const sought = interpreter.popString();
  const string = interpreter.popString();
  const length = sought.bytes.length;
  interpreter.countSteps(string.bytes.length);
  interpreter.countBytes(3 * bytesOf.value);
  const at = find(textOf(string.bytes), textOf(sought.bytes));
  if (at < 0) {
    interpreter.push(string);
    interpreter.push(false);
    return;
  }
  const after = interval(string, at + length, string.bytes.length - at - length);
  pushFound(interpreter, interval(string, 0, at), interval(string, at, length), after);
  interpreter.push(true);
}

/** @param {Interpreter} interpreter */
function token(interpreter) {
  const source = interpreter.pop();
  const isString = source instanceof PSString;
  if (!isString && !(source instanceof PSFile)) throw new PostScriptError("typecheck");
  const file = isString ? new PSFile(source.bytes) : source;
  const value = new Scanner(file, interpreter).next();
  if (value !== undefined) {
    if (isString) interpreter.push(new PSString(source.bytes.subarray(file.position)));
    interpreter.push(value);
  }
  interpreter.push(value !== undefined);
}

/** @param {Interpreter} interpreter */
function defineConversions(interpreter) {
  interpreter.define("cvx", (machine) => machine.push(withAttribute(machine.pop(), true)));
  interpreter.define("cvlit", (machine) => machine.push(withAttribute(machine.pop(), false)));
  interpreter.define("xcheck", (machine) => machine.push(isExecutable(machine.pop())));
  interpreter.define("type", (machine) => machine.push(executableName(typeOf(machine.pop()))));
  interpreter.define("cvi", (machine) => machine.push(Math.trunc(toNumber(machine))));
  interpreter.define("cvr", (machine) => machine.push(toNumber(machine)));
  interpreter.define("cvn", (machine) => {
    const { bytes, executable } = machine.popString();
    machine.countBytes(bytesOf.value);
    machine.push(executable ? executableName(textOf(bytes)) : literalName(textOf(bytes)));
  });
  interpreter.define("cvs", (machine) => {
    const target = machine.popString();
    fillString(machine, target, textOfValue(machine.pop()));
  });
  interpreter.define("cvrs", toRadixText);
}

/** @param {Interpreter} interpreter */
export function defineValueOperators(interpreter) {
  interpreter.define("array", (machine) => {
    machine.push(new PSArray(new Array(popSize(machine, bytesOf.item)).fill(null)));
  });
  interpreter.define("packedarray", (machine) => {
    const count = popSize(machine, bytesOf.item);
    if (machine.operands.length < count) throw new PostScriptError("stackunderflow");
    const array = new PSArray(machine.operands.splice(machine.operands.length - count, count));
    array.packed = true;
    machine.push(array);
  });
  interpreter.define("string", (machine) => {
    machine.push(new PSString(new Uint8Array(popSize(machine, 1))));
  });
  interpreter.define("[", (machine) => machine.push(MARK));
  interpreter.define("]", endOfArray);
  interpreter.define("astore", arrayOfOperands);
  interpreter.define("aload", operandsOfArray);
  interpreter.define("get", get);
  interpreter.define("put", put);
  interpreter.define("copy", copy);
  interpreter.define("getinterval", (machine) => {
    const length = machine.popCount();
    const start = machine.popCount();
    machine.countBytes(bytesOf.value);
    machine.push(interval(machine.pop(), start, length));
  });
  interpreter.define("putinterval", (machine) => {
    const source = machine.pop();
    machine.countSteps(source?.bytes?.length ?? source?.length ?? 0);
    const start = machine.popCount();
    copyInto(machine.pop(), start, source);
  });
  interpreter.define("search", (machine) => {
    searchFor(
      machine,
      (text, sought) => text.indexOf(sought),
      (found, before, match, after) => found.operands.push(after, match, before),
    );
  });
  interpreter.define("anchorsearch", (machine) => {
    searchFor(
      machine,
      (text, sought) => (text.startsWith(sought) ? 0 : -1),
      (found, before, match, after) => found.operands.push(after, match),
    );
  });
  interpreter.define("token", token);
  defineConversions(interpreter);
}
