// Operators that decide what is executed.

import { EXIT, QUIT, STOP } from "./interpreter.js";
import {
  Dictionary,
  Name,
  Operator,
  PostScriptError,
  PSArray,
  PSString,
  literalName,
  valueOfKey,
} from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

/** @param {Interpreter} interpreter */
function ifElse(interpreter) {
  const otherwise = interpreter.pop();
  const then = interpreter.pop();
  interpreter.execute(interpreter.popBoolean() ? then : otherwise);
}

/** @param {number} x @param {number} y */
const wholeSum = (x, y) => x + y;

/**
 * Real numbers are short ones, as in printers: how often 0 0.1 1 {} for runs hangs on it.
 * @param {number} x
 * @param {number} y
 */
const shortSum = (x, y) => Math.fround(x + Math.fround(y));

/** @param {Interpreter} interpreter */
function forLoop(interpreter) {
  const body = interpreter.popProcedure();
  const limit = interpreter.popNumber();
  const step = interpreter.popNumber();
  const first = interpreter.popNumber();
  const next = Number.isInteger(first) && Number.isInteger(step) ? wholeSum : shortSum;
  for (let value = first; step >= 0 ? value <= limit : value >= limit; value = next(value, step)) {
    interpreter.push(value);
    if (!interpreter.runLoopBody(body)) return;
  }
}

/** @param {Interpreter} interpreter */
function repeat(interpreter) {
  const body = interpreter.popProcedure();
  const count = interpreter.popCount();
  for (let i = 0; i < count; ++i) {
    if (!interpreter.runLoopBody(body)) return;
  }
}

/** @param {Interpreter} interpreter */
function loop(interpreter) {
  const body = interpreter.popProcedure();
  while (interpreter.runLoopBody(body));
}

/** @param {Interpreter} interpreter */
function forAll(interpreter) {
  const body = interpreter.popProcedure();
  const value = interpreter.pop();
  for (const operands of partsOf(value)) {
    for (const operand of operands) interpreter.push(operand);
    if (!interpreter.runLoopBody(body)) return;
  }
}

/**
 * @param {any} value
 * @returns {Iterable<any[]>}
 */
function* partsOf(value) {
  if (value instanceof PSArray) {
    for (let i = 0; i < value.length; ++i) yield [value.get(i)];
  } else if (value instanceof PSString) {
    for (const byte of value.bytes) yield [byte];
  } else if (value instanceof Dictionary) {
    for (const [key, item] of [...value.map]) yield [valueOfKey(key), item];
  } else throw new PostScriptError("typecheck");
}

/**
 * Executes an operand; says whether an error or `stop` ended it.
 * @param {Interpreter} interpreter
 */
function stopped(interpreter) {
  const body = interpreter.pop();
  const { depth } = interpreter;
  const files = interpreter.files.length;
  try {
    interpreter.execute(body);
    interpreter.push(false);
  } catch (thrown) {
    if (thrown !== STOP && !(thrown instanceof PostScriptError)) throw thrown;
    interpreter.depth = depth;
    interpreter.files.length = files;
    if (thrown instanceof PostScriptError) noteError(interpreter, thrown);
    interpreter.push(true);
  }
}

/**
 * @param {Interpreter} interpreter
 * @param {PostScriptError} error
 */
function noteError(interpreter, error) {
  const note = interpreter.lookup("$error");
  if (!(note instanceof Dictionary)) return;
  note.map.set("newerror", true);
  note.map.set("errorname", literalName(error.name));
  note.map.set("command", literalName(error.where));
}

/** The items of procedures that are bound; some procedures contain themselves. */
const bound = new WeakSet();

/**
 * Puts operators in the place of their names, in inner procedures too.
 * @param {Interpreter} interpreter
 * @param {PSArray} procedure
 */
function bind(interpreter, procedure) {
  const end = procedure.start + procedure.length;
  const { items } = procedure;
  if (bound.has(items)) return;
  bound.add(items);
  for (let i = procedure.start; i < end; ++i) {
    const value = items[i];
    if (value instanceof Name && value.executable) {
      const meaning = interpreter.lookup(value.text);
      if (meaning instanceof Operator) items[i] = meaning;
    } else if (value instanceof PSArray && value.executable) bind(interpreter, value);
  }
}

/** @param {Interpreter} interpreter */
export function defineControlOperators(interpreter) {
  interpreter.define("exec", (machine) => machine.execute(machine.pop()));
  interpreter.define("if", (machine) => {
    const then = machine.pop();
    if (machine.popBoolean()) machine.execute(then);
  });
  interpreter.define("ifelse", ifElse);
  interpreter.define("for", forLoop);
  interpreter.define("repeat", repeat);
  interpreter.define("loop", loop);
  interpreter.define("forall", forAll);
  interpreter.define("exit", () => {
    throw EXIT;
  });
  interpreter.define("stop", () => {
    throw STOP;
  });
  interpreter.define("quit", () => {
    throw QUIT;
  });
  interpreter.define("stopped", stopped);
  interpreter.define("countexecstack", (machine) => machine.push(machine.depth));
  interpreter.define("execstack", (machine) => {
    const array = machine.popArray();
    machine.push(new PSArray(array.items, false, array.start, 0));
  });
  interpreter.define("bind", (machine) => {
    const procedure = machine.peek(0);
    if (procedure instanceof PSArray) bind(machine, procedure);
  });
}
