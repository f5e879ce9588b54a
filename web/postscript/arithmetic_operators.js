// Operators on numbers and booleans.

import { Name, PostScriptError, PSArray, PSString, textOf } from "./values.js";
import { direction } from "./matrix.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

const degree = 180 / Math.PI;

/** @type {Record<string, (x: number) => number>} */
const ofOne = {
  abs: Math.abs,
  neg: (x) => -x,
  ceiling: Math.ceil,
  floor: Math.floor,
  round: (x) => Math.floor(x + 0.5),
  truncate: Math.trunc,
  sqrt: (x) => Math.sqrt(nonNegative(x)),
  sin: (x) => direction(x)[1],
  cos: (x) => direction(x)[0],
  ln: (x) => Math.log(positive(x)),
  log: (x) => Math.log10(positive(x)),
};

/** @type {Record<string, (x: number, y: number) => number>} */
const ofTwo = {
  add: (x, y) => x + y,
  sub: (x, y) => x - y,
  mul: (x, y) => x * y,
  div: (x, y) => x / nonZero(y),
  idiv: (x, y) => Math.trunc(Math.trunc(x) / nonZero(Math.trunc(y))),
  mod: (x, y) => Math.trunc(x) % nonZero(Math.trunc(y)),
  exp: (x, y) => finite(x ** y),
  atan: (x, y) => angle(x, y),
  bitshift: (x, y) => shifted(x, y),
};

/** @type {Record<string, (x: any, y: any) => boolean>} */
const comparisons = {
  lt: (x, y) => x < y,
  le: (x, y) => x <= y,
  gt: (x, y) => x > y,
  ge: (x, y) => x >= y,
};

/** @type {Record<string, [(x: boolean, y: boolean) => boolean, (x: number, y: number) => number]>} */
const logic = {
  and: [(x, y) => x && y, (x, y) => x & y],
  or: [(x, y) => x || y, (x, y) => x | y],
  xor: [(x, y) => x !== y, (x, y) => x ^ y],
};

/** @param {number} x @param {number} places  to the left, if they are not negative */
function shifted(x, places) {
  if (Math.abs(places) > 31) return 0;
  return places >= 0 ? x << places : x >>> -places;
}

/** @param {number} x */
function nonZero(x) {
  if (x === 0) throw new PostScriptError("undefinedresult");
  return x;
}

/** @param {number} x */
function finite(x) {
  if (!Number.isFinite(x)) throw new PostScriptError("undefinedresult");
  return x;
}

/** @param {number} x */
function nonNegative(x) {
  if (x < 0) throw new PostScriptError("rangecheck");
  return x;
}

/** @param {number} x */
function positive(x) {
  if (x <= 0) throw new PostScriptError("rangecheck");
  return x;
}

/**
 * The angle whose sine and cosine have this ratio, from 0 to 360 degrees.
 * @param {number} y
 * @param {number} x
 */
function angle(y, x) {
  if (x === 0 && y === 0) throw new PostScriptError("undefinedresult");
  const degrees = Math.atan2(y, x) * degree;
  return degrees < 0 ? degrees + 360 : degrees;
}

/**
 * Whether two values are equal: names and strings by their texts, arrays if they are the same part
 * of the same items.
 * @param {any} x
 * @param {any} y
 */
function areEqual(x, y) {
  if (x instanceof PSArray && y instanceof PSArray) {
    return x.items === y.items && x.start === y.start && x.length === y.length;
  }
  return comparable(x) === comparable(y);
}

/** @param {any} value */
function comparable(value) {
  if (value instanceof Name) return value.text;
  return value instanceof PSString ? textOf(value.bytes) : value;
}

/**
 * @param {Interpreter} interpreter
 * @param {(x: any, y: any) => boolean} compare
 */
function compareTwo(interpreter, compare) {
  const y = interpreter.peek(0);
  const x = interpreter.peek(1);
  const areNumbers = typeof x === "number" && typeof y === "number";
  const areStrings = x instanceof PSString && y instanceof PSString;
  if (!areNumbers && !areStrings) throw new PostScriptError("typecheck");
  interpreter.operands.length -= 2;
  interpreter.push(compare(comparable(x), comparable(y)));
}

/** The generator that makes the same numbers in every run. @param {Interpreter} interpreter */
function random(interpreter) {
  interpreter.seed = Number((BigInt(interpreter.seed) * 16807n) % 2147483647n);
  return interpreter.seed;
}

/** @param {Interpreter} interpreter */
export function defineArithmeticOperators(interpreter) {
  for (const [name, compute] of Object.entries(ofOne)) {
    interpreter.define(name, (machine) => {
      const result = compute(machine.peekNumber(0));
      machine.operands[machine.operands.length - 1] = result;
    });
  }
  for (const [name, compute] of Object.entries(ofTwo)) {
    interpreter.define(name, (machine) => {
      const y = machine.peekNumber(0);
      const result = compute(machine.peekNumber(1), y);
      machine.operands.length -= 1;
      machine.operands[machine.operands.length - 1] = result;
    });
  }
  for (const [name, compare] of Object.entries(comparisons)) {
    interpreter.define(name, (machine) => compareTwo(machine, compare));
  }
  for (const [name, [ofBooleans, ofNumbers]] of Object.entries(logic)) {
    interpreter.define(name, (machine) => {
      if (typeof machine.peek(0) === "boolean") {
        const y = machine.popBoolean();
        machine.push(ofBooleans(machine.popBoolean(), y));
      } else {
        const y = machine.popNumber();
        machine.push(ofNumbers(machine.popNumber(), y));
      }
    });
  }
  interpreter.define("not", (machine) => {
    const value = machine.pop();
    machine.push(typeof value === "number" ? ~value : !value);
  });
  interpreter.define("eq", (machine) => {
    const y = machine.pop();
    machine.push(areEqual(machine.pop(), y));
  });
  interpreter.define("ne", (machine) => {
    const y = machine.pop();
    machine.push(!areEqual(machine.pop(), y));
  });
  interpreter.define("rand", (machine) => machine.push(random(machine)));
  interpreter.define("srand", (machine) => {
    machine.seed = Math.max(1, Math.abs(machine.popInteger()) % 2147483647);
  });
  interpreter.define("rrand", (machine) => machine.push(machine.seed));
}
