// Operators on files. A figure can read itself and what it has packed; what it prints goes nowhere.

import { hexDigit } from "./decoders.js";
import { PostScriptError, PSFile, PSString } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

const lineFeed = 10;
const carriageReturn = 13;

/**
 * Pushes the part of a string that was read, and whether all of it was.
 * @param {Interpreter} interpreter
 * @param {PSString} string
 * @param {number} count
 */
function pushRead(interpreter, string, count) {
  const whole = count === string.bytes.length;
  interpreter.push(whole ? string : new PSString(string.bytes.subarray(0, count)));
  interpreter.push(whole);
}

/** @param {Interpreter} interpreter */
function readString(interpreter) {
  const string = interpreter.popString();
  const file = interpreter.popFile();
  let count = 0;
  while (count < string.bytes.length) {
    const byte = file.readByte();
    if (byte < 0) break;
    string.bytes[count++] = byte;
  }
  pushRead(interpreter, string, count);
}

/** What is no hexadecimal digit is passed over. @param {PSFile} file */
function readHexDigit(file) {
  for (;;) {
    const byte = file.readByte();
    if (byte < 0) return -1;
    const digit = hexDigit(byte);
    if (digit >= 0) return digit;
  }
}

/** @param {Interpreter} interpreter */
function readHexString(interpreter) {
  const string = interpreter.popString();
  const file = interpreter.popFile();
  let count = 0;
  while (count < string.bytes.length) {
    const high = readHexDigit(file);
    const low = high < 0 ? -1 : readHexDigit(file);
    if (low < 0) break;
    string.bytes[count++] = 16 * high + low;
  }
  pushRead(interpreter, string, count);
}

/** @param {Interpreter} interpreter */
function readLine(interpreter) {
  const { bytes } = interpreter.popString();
  const file = interpreter.popFile();
  let count = 0;
  let byte = file.readByte();
  while (byte >= 0 && byte !== lineFeed && byte !== carriageReturn) {
    if (count === bytes.length) throw new PostScriptError("rangecheck");
    bytes[count++] = byte;
    byte = file.readByte();
  }
  if (byte === carriageReturn) skipLineFeed(file);
  interpreter.push(new PSString(bytes.subarray(0, count)));
  interpreter.push(byte >= 0);
}

/** @param {PSFile} file */
function skipLineFeed(file) {
  const byte = file.readByte();
  if (byte >= 0 && byte !== lineFeed) file.unreadByte();
}

/** @param {PSFile} file */
function readToEnd(file) {
  while (file.readByte() >= 0);
}

/** @param {Interpreter} interpreter */
export function defineFileOperators(interpreter) {
  interpreter.define("currentfile", (machine) => {
    machine.push(machine.files[machine.files.length - 1] ?? new PSFile());
  });
  interpreter.define("read", (machine) => {
    const byte = machine.popFile().readByte();
    if (byte >= 0) machine.push(byte);
    machine.push(byte >= 0);
  });
  interpreter.define("readstring", readString);
  interpreter.define("readhexstring", readHexString);
  interpreter.define("readline", readLine);
  interpreter.define("closefile", (machine) => machine.popFile().close());
  interpreter.define("flushfile", (machine) => readToEnd(machine.popFile()));
  interpreter.define("resetfile", (machine) => void machine.popFile());
  interpreter.define("bytesavailable", (machine) => {
    const file = machine.popFile();
    machine.push(file.limit - file.position);
  });
  interpreter.define("status", (machine) => {
    const value = machine.pop();
    machine.push(value instanceof PSFile && !value.closed);
  });
  for (const name of ["run", "file"]) {
    interpreter.define(name, () => {
      throw new PostScriptError("undefinedfilename", name);
    });
  }
  for (const name of ["=", "==", "print"]) interpreter.define(name, (machine) => machine.pop());
  for (const name of ["flush", "stack", "pstack"]) interpreter.define(name, () => {});
}
