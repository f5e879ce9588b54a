// Operators on the operand stack.

import { MARK, PostScriptError } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

/**
 * How many operands there are above the topmost mark.
 * @param {Interpreter} interpreter
 */
export function countToMark({ operands }) {
  const at = operands.lastIndexOf(MARK);
  if (at < 0) throw new PostScriptError("unmatchedmark");
  return operands.length - 1 - at;
}

/** @param {Interpreter} interpreter */
function exchange(interpreter) {
  const { operands } = interpreter;
  const top = interpreter.peek(0);
  const last = operands.length - 1;
  operands[last] = interpreter.peek(1);
  operands[last - 1] = top;
}

/** `copy` with a number. @param {Interpreter} interpreter */
export function copyOperands(interpreter) {
  const count = interpreter.popCount();
  const { operands } = interpreter;
  const start = operands.length - count;
  if (start < 0) throw new PostScriptError("stackunderflow");
  interpreter.countOperands(count);
  interpreter.countSteps(count);
  for (let i = 0; i < count; ++i) operands.push(operands[start + i]);
}

/** @param {Interpreter} interpreter */
function roll(interpreter) {
  const turns = interpreter.popInteger();
  const count = interpreter.popCount();
  const { operands } = interpreter;
  const start = operands.length - count;
  if (start < 0) throw new PostScriptError("stackunderflow");
  if (count === 0) return;
  interpreter.countSteps(count);
  const shift = ((turns % count) + count) % count;
  const moved = operands.splice(operands.length - shift, shift);
  operands.splice(start, 0, ...moved);
}

/** @param {Interpreter} interpreter */
export function defineStackOperators(interpreter) {
  interpreter.define("pop", (machine) => void machine.pop());
  interpreter.define("exch", exchange);
  interpreter.define("dup", (machine) => machine.push(machine.peek(0)));
  interpreter.define("index", (machine) => machine.push(machine.peek(machine.popCount())));
  interpreter.define("roll", roll);
  interpreter.define("clear", ({ operands }) => void (operands.length = 0));
  interpreter.define("count", ({ operands }) => void operands.push(operands.length));
  interpreter.define("mark", (machine) => machine.push(MARK));
  interpreter.define("counttomark", (machine) => machine.push(countToMark(machine)));
  interpreter.define("cleartomark", (machine) => {
    machine.operands.length -= countToMark(machine) + 1;
  });
}
