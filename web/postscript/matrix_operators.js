// Operators on matrices and the current one. The program sees a device of many dots to the point:
// some programs round places and widths of lines to whole dots, and must not round much away.

import { identity, invert, multiply, rotation, transform, transformDistance } from "./matrix.js";
import { PostScriptError, PSArray } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("../picture/display_list.js").Matrix} Matrix */

const dotsPerPoint = 64;
/** @type {Matrix} */
const toDots = [dotsPerPoint, 0, 0, dotsPerPoint, 0, 0];
/** @type {Matrix} */
const fromDots = [1 / dotsPerPoint, 0, 0, 1 / dotsPerPoint, 0, 0];

/** @param {Matrix} matrix */
function inverseOf(matrix) {
  const inverse = invert(matrix);
  if (!inverse) throw new PostScriptError("undefinedresult");
  return inverse;
}

/**
 * @param {Interpreter} interpreter
 * @param {Matrix} matrix
 */
export function setMatrix(interpreter, matrix) {
  interpreter.graphics.ctm = matrix;
  interpreter.graphics.pen = -1;
}

/** @param {Interpreter} interpreter @param {Matrix} matrix */
function concatenate(interpreter, matrix) {
  setMatrix(interpreter, multiply(matrix, interpreter.graphics.ctm));
}

/**
 * Fills the array on top of the stack with a matrix.
 * @param {Interpreter} interpreter
 * @param {Matrix} matrix
 */
function fillMatrix(interpreter, matrix) {
  const array = interpreter.peek(0);
  if (!(array instanceof PSArray)) throw new PostScriptError("typecheck");
  if (array.length !== 6) throw new PostScriptError("rangecheck");
  matrix.forEach((value, i) => (array.items[array.start + i] = value));
}

/**
 * translate, scale and rotate change the current matrix, or fill the one that they are given.
 * @param {Interpreter} interpreter
 * @param {(popNumber: () => number) => Matrix} make
 */
function changeOrFill(interpreter, make) {
  const popNumber = () => interpreter.popNumber();
  const target = interpreter.peek(0);
  if (!(target instanceof PSArray)) {
    concatenate(interpreter, make(popNumber));
    return;
  }
  interpreter.pop();
  const matrix = make(popNumber);
  interpreter.push(target);
  fillMatrix(interpreter, matrix);
}

/** @type {Record<string, (popNumber: () => number) => Matrix>} */
const changes = {
  translate: (popNumber) => {
    const y = popNumber();
    return [1, 0, 0, 1, popNumber(), y];
  },
  scale: (popNumber) => {
    const y = popNumber();
    return [popNumber(), 0, 0, y, 0, 0];
  },
  rotate: (popNumber) => rotation(popNumber()),
};

/**
 * transform and its kin take the current matrix or the one that they are given.
 * @param {Interpreter} interpreter
 * @param {(given: Matrix) => Matrix} matrixToUse
 * @param {typeof transform} apply
 */
function transformOperands(interpreter, matrixToUse, apply) {
  const given =
    interpreter.peek(0) instanceof PSArray
      ? interpreter.popMatrix()
      : multiply(interpreter.graphics.ctm, toDots);
  const y = interpreter.popNumber();
  const x = interpreter.popNumber();
  interpreter.operands.push(...apply(matrixToUse(given), x, y));
}

/** @param {Matrix} matrix */
const asIs = (matrix) => matrix;

/** @param {Interpreter} interpreter */
export function defineMatrixOperators(interpreter) {
  interpreter.define("matrix", (machine) => machine.push(new PSArray([...identity])));
  interpreter.define("identmatrix", (machine) => fillMatrix(machine, identity));
  interpreter.define("defaultmatrix", (machine) => fillMatrix(machine, toDots));
  interpreter.define("initmatrix", (machine) => setMatrix(machine, identity));
  interpreter.define("currentmatrix", (machine) => {
    fillMatrix(machine, multiply(machine.graphics.ctm, toDots));
  });
  interpreter.define("setmatrix", (machine) => {
    setMatrix(machine, multiply(machine.popMatrix(), fromDots));
  });
  interpreter.define("concat", (machine) => concatenate(machine, machine.popMatrix()));
  for (const [name, make] of Object.entries(changes)) {
    interpreter.define(name, (machine) => changeOrFill(machine, make));
  }
  interpreter.define("concatmatrix", (machine) => {
    const target = machine.popArray();
    const second = machine.popMatrix();
    const first = machine.popMatrix();
    machine.push(target);
    fillMatrix(machine, multiply(first, second));
  });
  interpreter.define("invertmatrix", (machine) => {
    const target = machine.popArray();
    const inverse = inverseOf(machine.popMatrix());
    machine.push(target);
    fillMatrix(machine, inverse);
  });
  interpreter.define("transform", (machine) => transformOperands(machine, asIs, transform));
  interpreter.define("dtransform", (machine) => {
    transformOperands(machine, asIs, transformDistance);
  });
  interpreter.define("itransform", (machine) => transformOperands(machine, inverseOf, transform));
  interpreter.define("idtransform", (machine) => {
    transformOperands(machine, inverseOf, transformDistance);
  });
}
