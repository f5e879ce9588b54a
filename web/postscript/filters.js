// The operator `filter`: files that decode another file while they are read.

import { base85Chunks, hexChunks, inflatedChunks, lzwChunks, runLengthChunks } from "./decoders.js";
import { faxChunks } from "./fax.js";
import { predictedChunks } from "./predictors.js";
import { Dictionary, NotDrawn, PostScriptError, PSArray, PSFile, PSString } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

/** What a generator of chunks of bytes yields. */
class DecodedFile extends PSFile {
  /** @param {Generator<Uint8Array, void>} chunks */
  constructor(chunks) {
    super();
    this.chunks = chunks;
  }

  refill() {
    for (;;) {
      const { value, done } = this.chunks.next();
      if (done || !value) return false;
      if (value.length > 0) return this.hold(value);
    }
  }

  /** @param {Uint8Array} bytes */
  hold(bytes) {
    this.bytes = bytes;
    this.position = 0;
    this.limit = bytes.length;
    return true;
  }
}

/** What a procedure gives, string by string, until an empty one. */
class ProcedureFile extends PSFile {
  /**
   * @param {Interpreter} interpreter
   * @param {PSArray} procedure
   */
  constructor(interpreter, procedure) {
    super();
    this.interpreter = interpreter;
    this.procedure = procedure;
  }

  refill() {
    this.interpreter.run(this.procedure);
    this.bytes = this.interpreter.popString().bytes;
    this.position = 0;
    this.limit = this.bytes.length;
    return this.limit > 0;
  }
}

/** What a function gives byte by byte; nothing is read from its source too early. */
class PartOfFile extends PSFile {
  /** @param {() => number} next  the next byte, or -1 */
  constructor(next) {
    super(new Uint8Array(1));
    this.next = next;
    this.position = 1;
  }

  refill() {
    const byte = this.next();
    if (byte < 0) return false;
    this.bytes[0] = byte;
    this.position = 0;
    return true;
  }
}

/**
 * @param {PSFile} source
 * @param {number} count
 */
function countedBytes(source, count) {
  let left = count;
  return () => (--left < 0 ? -1 : source.readByte());
}

/**
 * The bytes up to the end of the n-th mark.
 * @param {PSFile} source
 * @param {Uint8Array} mark
 * @param {number} count
 */
function bytesThroughMarks(source, mark, count) {
  /** @type {number[]} */
  let latest = [];
  let left = count;
  return () => {
    if (left === 0) return -1;
    const byte = source.readByte();
    latest.push(byte);
    if (latest.length > mark.length) latest.shift();
    if (latest.length === mark.length && mark.every((expected, i) => latest[i] === expected)) {
      latest = [];
      --left;
    }
    return byte;
  };
}

/**
 * The bytes before the first mark; the mark is read, but not given.
 * @param {PSFile} source
 * @param {Uint8Array} mark
 */
function bytesBeforeMark(source, mark) {
  /** @type {number[]} */
  const ahead = [];
  let ended = false;
  return () => {
    while (!ended && ahead.length < mark.length) {
      const byte = source.readByte();
      if (byte < 0) ended = true;
      else ahead.push(byte);
    }
    if (ahead.length === mark.length && mark.every((expected, i) => ahead[i] === expected)) {
      ended = true;
      ahead.length = 0;
    }
    return ahead.shift() ?? -1;
  };
}

/**
 * @param {PSFile} source
 * @param {number} count
 * @param {Uint8Array} mark
 */
function partOfFile(source, count, mark) {
  if (mark.length > 0 && count > 0) return new PartOfFile(bytesThroughMarks(source, mark, count));
  if (mark.length > 0) return new PartOfFile(bytesBeforeMark(source, mark));
  return new PartOfFile(countedBytes(source, count === 0 ? Infinity : count));
}

/**
 * @param {Interpreter} interpreter
 * @param {any} value  a file, string or procedure
 * @returns {PSFile}
 */
export function fileOf(interpreter, value) {
  if (value instanceof PSFile) return value;
  if (value instanceof PSString) return new PSFile(value.bytes);
  if (value instanceof PSArray) return new ProcedureFile(interpreter, value);
  throw new PostScriptError("typecheck");
}

/**
 * @param {PSFile} file
 * @param {Dictionary} parameters
 */
function predicted(file, parameters) {
  const predictor = parameters.get("Predictor") ?? 1;
  if (predictor < 2) return file;
  return new DecodedFile(
    predictedChunks(file, {
      predictor,
      colors: parameters.get("Colors") ?? 1,
      bits: parameters.get("BitsPerComponent") ?? 8,
      columns: parameters.get("Columns") ?? 1,
    }),
  );
}

/**
 * @param {string} name
 * @param {PSFile} source
 * @param {Dictionary} parameters
 * @returns {PSFile}
 */
export function makeFilter(name, source, parameters) {
  switch (name) {
    case "ASCIIHexDecode":
      return new DecodedFile(hexChunks(source));
    case "ASCII85Decode":
      return new DecodedFile(base85Chunks(source));
    case "RunLengthDecode":
      return new DecodedFile(runLengthChunks(source));
    case "LZWDecode": {
      const earlyChange = parameters.get("EarlyChange") !== 0;
      return predicted(new DecodedFile(lzwChunks(source, earlyChange)), parameters);
    }
    case "FlateDecode":
      return predicted(new DecodedFile(inflatedChunks(source)), parameters);
    case "CCITTFaxDecode":
      return new DecodedFile(
        faxChunks(source, {
          kind: parameters.get("K") ?? 0,
          columns: parameters.get("Columns") ?? 1728,
          rows: parameters.get("Rows") ?? 0,
          isAligned: parameters.get("EncodedByteAlign") === true,
          blackIs1: parameters.get("BlackIs1") === true,
        }),
      );
    case "SubFileDecode":
      return partOfFile(
        source,
        parameters.get("EODCount") ?? 0,
        parameters.get("EODString")?.bytes ?? new Uint8Array(0),
      );
    default:
      throw new NotDrawn(`data encoded with ${name}`);
  }
}

/**
 * @param {Interpreter} interpreter
 * @param {string} name
 */
function popParameters(interpreter, name) {
  if (interpreter.peek(0) instanceof Dictionary) return interpreter.popDictionary();
  const parameters = new Dictionary();
  if (name === "SubFileDecode") {
    parameters.map.set("EODString", interpreter.popString());
    parameters.map.set("EODCount", interpreter.popCount());
  }
  return parameters;
}

/** @param {Interpreter} interpreter */
export function defineFilterOperators(interpreter) {
  interpreter.define("filter", (machine) => {
    const name = machine.popName().text;
    const parameters = popParameters(machine, name);
    const source = fileOf(machine, machine.pop());
    const file = makeFilter(name, source, parameters);
    file.source = source;
    machine.push(file);
  });
}
