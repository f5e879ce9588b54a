// Reads a figure: runs its program and gives what it draws, and what of it could not be drawn.

import { DisplayList } from "../picture/display_list.js";
import { defineArithmeticOperators } from "./arithmetic_operators.js";
import { defineColourOperators } from "./colour_operators.js";
import { defineCompositeFonts } from "./composite_fonts.js";
import { defineControlOperators } from "./control_operators.js";
import { defineDictionaryOperators } from "./dictionary_operators.js";
import { defineFileOperators } from "./file_operators.js";
import { defineFilterOperators } from "./filters.js";
import { defineFontOperators } from "./font_operators.js";
import { defineFurtherOperators } from "./further_operators.js";
import { findFrame } from "./frame.js";
import { defineImageOperators } from "./image_operators.js";
import { EXIT, Interpreter, QUIT, STOP } from "./interpreter.js";
import { defineMatrixOperators } from "./matrix_operators.js";
import { defineMiscellaneousOperators } from "./miscellaneous_operators.js";
import { definePaintingOperators } from "./painting_operators.js";
import { definePathOperators } from "./path_operators.js";
import { defineGlyphWidthOperators } from "./procedure_face.js";
import { defineResourceOperators } from "./resource_operators.js";
import { defineSaveOperators } from "./save_operators.js";
import { defineStackOperators } from "./stack_operators.js";
import { defineStateOperators } from "./state_operators.js";
import { defineTextOperators } from "./text_operators.js";
import { defineValueOperators } from "./value_operators.js";
import { Scanner } from "./scanner.js";
import { NotDrawn, PostScriptError, PSFile, executableName } from "./values.js";

const endOfJob = executableName("\u0004");
const binaryHeader = [0xc5, 0xd0, 0xd3, 0xc6];

/**
 * An interpreter that knows all operators.
 * @param {DisplayList} list  what is drawn goes there
 */
export function newInterpreter(list) {
  const interpreter = new Interpreter(list);
  defineStackOperators(interpreter);
  defineArithmeticOperators(interpreter);
  defineValueOperators(interpreter);
  defineDictionaryOperators(interpreter);
  defineControlOperators(interpreter);
  defineFileOperators(interpreter);
  defineFilterOperators(interpreter);
  defineMatrixOperators(interpreter);
  defineSaveOperators(interpreter);
  defineStateOperators(interpreter);
  defineColourOperators(interpreter);
  definePathOperators(interpreter);
  definePaintingOperators(interpreter);
  defineFontOperators(interpreter);
  defineGlyphWidthOperators(interpreter);
  defineTextOperators(interpreter);
  defineImageOperators(interpreter);
  defineResourceOperators(interpreter);
  defineCompositeFonts(interpreter);
  defineMiscellaneousOperators(interpreter);
  defineFurtherOperators(interpreter);
  return interpreter;
}

/**
 * What an exception says about the figure, null if nothing is wrong.
 * @param {unknown} thrown
 * @param {Interpreter} interpreter
 * @returns {string | null}
 */
function problemOf(thrown, interpreter) {
  if (thrown === QUIT) return null;
  if (thrown === STOP || thrown === EXIT) return "the program stops by itself";
  if (thrown instanceof NotDrawn) return `not drawn: ${thrown.reason}`;
  if (thrown instanceof PostScriptError) {
    return thrown.where ? `${thrown.name}: ${thrown.where}` : problemIn(thrown.name, interpreter);
  }
  if (thrown instanceof RangeError) return "not drawn: too large, or nested too deeply";
  if (thrown instanceof TypeError) return problemIn("typecheck", interpreter);
  throw thrown;
}

/**
 * @param {string} problem
 * @param {Interpreter} interpreter
 */
function problemIn(problem, { operator }) {
  return operator ? `${problem} in ${operator.name}` : problem;
}

/**
 * Whether there is more than comments and the end of a job.
 * @param {PSFile} file
 * @param {Interpreter} interpreter
 */
function hasMore(file, interpreter) {
  try {
    const scanner = new Scanner(file, interpreter);
    let value = scanner.next();
    while (value === endOfJob) value = scanner.next();
    return value !== undefined;
  } catch {
    return true;
  }
}

/**
 * @param {Interpreter} interpreter
 * @param {Uint8Array} bytes
 * @returns {string | null}
 */
function run(interpreter, bytes) {
  const file = new PSFile(bytes);
  try {
    interpreter.runFile(file);
  } catch (thrown) {
    const problem = problemOf(thrown, interpreter);
    if (problem) return problem;
    if (hasMore(file, interpreter)) return "the program ends before its text does";
  }
  const { itemsOfPage, list } = interpreter;
  return itemsOfPage !== null && itemsOfPage < list.itemCount ? "more than one page" : null;
}

/**
 * @param {Uint8Array} bytes
 * @param {(fraction: number) => void} [progress]
 * @returns {{ list: DisplayList, problem: string | null }}
 */
export function readFigure(bytes, progress = () => {}) {
  const list = new DisplayList();
  if (binaryHeader.every((byte, i) => bytes[i] === byte)) {
    return { list, problem: "not drawn: a figure with a binary header" };
  }
  const box = findFrame(bytes);
  if (!box) return { list, problem: "no BoundingBox" };
  list.box = box;
  const interpreter = newInterpreter(list);
  interpreter.progress = progress;
  return { list, problem: run(interpreter, bytes) };
}
