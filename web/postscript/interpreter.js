// Runs PostScript: the stacks, and how values are executed. What the operators do is elsewhere.

import { Scanner } from "./scanner.js";
import { GraphicsState } from "./graphics_state.js";
import {
  Dictionary,
  Name,
  NotDrawn,
  Operator,
  PostScriptError,
  PSArray,
  PSFile,
  PSString,
  keyOf,
} from "./values.js";

// A figure that needs more than this is not read: it would never end, or end in the browser's own
// limits.
const stepLimit = 5e8;
const depthLimit = 2500;
const operandLimit = 4e6;
const byteLimit = 1e9;

const tokensPerReport = 1 << 16;

/** About how much memory values take, besides what they hold. */
export const bytesOf = Object.freeze({ value: 100, item: 8, entry: 50, text: 250 });

/** Thrown by `exit`, caught by loops. */
export const EXIT = Object.freeze({ exit: true });
/** Thrown by `stop`, caught by `stopped`. */
export const STOP = Object.freeze({ stop: true });
/** Thrown by `quit`: the program is over. */
export const QUIT = Object.freeze({ quit: true });

export class Interpreter {
  /** @param {import("../picture/display_list.js").DisplayList} list */
  constructor(list) {
    this.list = list;
    /** @type {any[]} */
    this.operands = [];
    this.systemDictionary = new Dictionary();
    this.globalDictionary = new Dictionary();
    this.userDictionary = new Dictionary();
    this.systemDictionary.global = true;
    this.globalDictionary.global = true;
    this.dictionaries = [this.systemDictionary, this.globalDictionary, this.userDictionary];
    this.graphics = new GraphicsState();
    /** @type {GraphicsState[]} */
    this.graphicsStack = [];
    /** The files being executed, innermost last. @type {PSFile[]} */
    this.files = [];
    /** The operator that was run last. @type {Operator | null} */
    this.operator = null;
    this.depth = 0;
    this.steps = 0;
    /** About how many bytes the program has made values of. */
    this.bytesMade = 0;
    this.globalAllocation = false;
    /** Whether the procedures that are read are packed. */
    this.packing = false;
    /** What `restore` brings back, of each save. @type {import("./save_operators.js").SavedState[]} */
    this.saves = [];
    /** Which save is the innermost, 0 for none. */
    this.saveStamp = 0;
    this.savesMade = 0;
    /** How many items there were when the page was first shown. @type {number | null} */
    this.itemsOfPage = null;
    /** The random number generator's state. */
    this.seed = 1;
    /** Called with the part of the main file that has been run. @type {(fraction: number) => void} */
    this.progress = () => {};
  }

  /**
   * Puts an operator into the system dictionary.
   * @param {string} name
   * @param {(interpreter: Interpreter) => void} run
   */
  define(name, run) {
    this.systemDictionary.map.set(name, new Operator(name, run));
  }

  /**
   * Changes a dictionary in a way that `restore` can undo.
   * @param {Dictionary} dictionary
   * @param {any} key
   * @param {any} value
   */
  store(dictionary, key, value) {
    if (dictionary.savedAt !== this.saveStamp) this.keepForRestore(dictionary);
    const { map } = dictionary;
    const { size } = map;
    map.set(keyOf(key), value);
    if (map.size !== size) this.countBytes(bytesOf.entry);
  }

  /** @param {Dictionary} dictionary */
  keepForRestore(dictionary) {
    const { savedAt } = dictionary;
    dictionary.savedAt = this.saveStamp;
    if (dictionary.global || this.saves.length === 0) return;
    const save = this.saves[this.saves.length - 1];
    this.countBytes(bytesOf.entry * dictionary.map.size);
    save.dictionaries.push({ dictionary, map: new Map(dictionary.map), savedAt });
  }

  /**
   * The value of a name, undefined if it has none.
   * @param {any} key
   */
  lookup(key) {
    for (let i = this.dictionaries.length - 1; i >= 0; --i) {
      const value = this.dictionaries[i].map.get(key);
      if (value !== undefined) return value;
    }
    return undefined;
  }

  /** @param {Name} name */
  executeName(name) {
    const value = this.lookup(name.text);
    if (typeof value === "number") this.operands.push(value);
    else if (value instanceof Operator) this.runOperator(value);
    else if (value instanceof PSArray && value.executable) this.run(value);
    else if (value === undefined) throw new PostScriptError("undefined", name.text);
    else this.execute(value);
  }

  /**
   * Executes a value, as `exec` does.
   * @param {any} value
   */
  execute(value) {
    if (value instanceof Operator) this.runOperator(value);
    else if (value === null || typeof value !== "object" || !value.executable) {
      this.operands.push(value);
    } else if (value instanceof PSArray) this.run(value);
    else if (value instanceof Name) {
      this.enter();
      this.executeName(value);
      --this.depth;
    } else if (value instanceof PSString) this.runTokens(new PSFile(value.bytes));
    else if (value instanceof PSFile) this.runFile(value);
    else this.operands.push(value);
  }

  /** @param {Operator} operator */
  runOperator(operator) {
    this.operator = operator;
    operator.run(this);
  }

  /** One level deeper; who comes back up, or catches an exception, lowers `depth` again. */
  enter() {
    if (++this.depth > depthLimit) throw new NotDrawn("procedures nested too deeply");
    this.countOperands(0);
  }

  /**
   * Large copies count as many steps, too.
   * @param {number} count
   */
  countSteps(count) {
    this.steps += count;
    if (this.steps > stepLimit) throw new NotDrawn("a program that does not end");
  }

  /**
   * What is pushed at once must fit.
   * @param {number} count
   */
  countOperands(count) {
    if (this.operands.length + count > operandLimit) throw new NotDrawn("too many operands");
  }

  /**
   * What a program makes counts even if it is thrown away again: nobody knows what is still in use.
   * @param {number} count
   */
  countBytes(count) {
    this.bytesMade += count;
    if (this.bytesMade > byteLimit) throw new NotDrawn("more values than fit into memory");
  }

  /**
   * Runs a procedure.
   * @param {PSArray} procedure
   */
  run(procedure) {
    this.enter();
    this.countSteps(procedure.length + 1);
    const operands = this.operands;
    const items = procedure.items;
    const end = procedure.start + procedure.length;
    for (let i = procedure.start; i < end; ++i) {
      const value = items[i];
      if (typeof value === "number") operands.push(value);
      else if (value instanceof Operator) this.runOperator(value);
      else if (value instanceof Name && value.executable) this.executeName(value);
      else operands.push(value);
    }
    --this.depth;
  }

  /**
   * Runs a procedure, or executes another value, until its end or an `exit`. Returns whether to go
   * on.
   * @param {any} body
   * @returns {boolean}
   */
  runLoopBody(body) {
    const depth = this.depth;
    try {
      this.execute(body);
      return true;
    } catch (thrown) {
      if (thrown !== EXIT) throw thrown;
      this.depth = depth;
      return false;
    }
  }

  /**
   * Runs a file; it is the current file meanwhile.
   * @param {PSFile} file
   */
  runFile(file) {
    this.files.push(file);
    const count = this.files.length;
    try {
      this.runTokens(file);
    } finally {
      this.files.length = count - 1;
    }
  }

  /** @param {PSFile} file */
  runTokens(file) {
    this.enter();
    const scanner = new Scanner(file, this);
    const isMain = this.files.length === 1 && this.files[0] === file;
    if (isMain) this.progress(0);
    let untilReport = tokensPerReport;
    for (;;) {
      const value = scanner.next();
      if (typeof value === "number") this.operands.push(value);
      else if (value instanceof Name && value.executable) this.executeName(value);
      else if (value === undefined) break;
      else if (value instanceof Operator) this.runOperator(value);
      else this.operands.push(value);
      if (--untilReport < 0) {
        untilReport = tokensPerReport;
        this.countSteps(tokensPerReport);
        this.countOperands(0);
        if (isMain) this.progress(file.position / Math.max(1, file.limit));
      }
    }
    --this.depth;
  }

  /** @param {any} value */
  push(value) {
    this.operands.push(value);
  }

  /** @returns {any} */
  pop() {
    if (this.operands.length === 0) throw new PostScriptError("stackunderflow");
    return this.operands.pop();
  }

  /**
   * The operand so many below the top, which stays.
   * @param {number} depth
   * @returns {any}
   */
  peek(depth) {
    const index = this.operands.length - 1 - depth;
    if (index < 0) throw new PostScriptError("stackunderflow");
    return this.operands[index];
  }

  /**
   * An operand that stays until the operator has its result: one that fails leaves it.
   * @param {number} depth
   * @returns {number}
   */
  peekNumber(depth) {
    const value = this.peek(depth);
    if (typeof value !== "number") throw new PostScriptError("typecheck");
    return value;
  }

  /** @returns {number} */
  popNumber() {
    const { operands } = this;
    const value = operands[operands.length - 1];
    if (typeof value !== "number") {
      throw new PostScriptError(operands.length === 0 ? "stackunderflow" : "typecheck");
    }
    operands.pop();
    return value;
  }

  /** A number whose fraction does not count. */
  popInteger() {
    return Math.trunc(this.popNumber());
  }

  /** A whole number that is not negative. */
  popCount() {
    const value = this.popInteger();
    if (value < 0) throw new PostScriptError("rangecheck");
    return value;
  }

  /** @returns {boolean} */
  popBoolean() {
    return this.popOf((value) => typeof value === "boolean");
  }

  /** @returns {Name} */
  popName() {
    return this.popOf((value) => value instanceof Name);
  }

  /** @returns {PSString} */
  popString() {
    return this.popOf((value) => value instanceof PSString);
  }

  /** @returns {PSArray} */
  popArray() {
    return this.popOf((value) => value instanceof PSArray);
  }

  /** @returns {Dictionary} */
  popDictionary() {
    return this.popOf((value) => value instanceof Dictionary);
  }

  /** @returns {PSFile} */
  popFile() {
    return this.popOf((value) => value instanceof PSFile);
  }

  /** @returns {PSArray} */
  popProcedure() {
    return this.popOf((value) => value instanceof PSArray && value.executable);
  }

  /** The numbers of an array. @returns {number[]} */
  popNumbers() {
    const numbers = this.popArray().toArray();
    if (numbers.some((value) => typeof value !== "number")) throw new PostScriptError("typecheck");
    return numbers;
  }

  /** @returns {import("../picture/display_list.js").Matrix} */
  popMatrix() {
    const numbers = this.popNumbers();
    if (numbers.length !== 6) throw new PostScriptError("rangecheck");
    return /** @type {any} */ (numbers);
  }

  /**
   * @param {(value: any) => boolean} isRight
   * @returns {any}
   */
  popOf(isRight) {
    const value = this.peek(0);
    if (!isRight(value)) throw new PostScriptError("typecheck");
    return this.operands.pop();
  }
}
