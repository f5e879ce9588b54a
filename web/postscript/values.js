// The values of a PostScript program. Numbers, booleans and null are JavaScript's own; an integer is
// a number without a fraction.

/** Begins a list on the operand stack. */
export const MARK = Object.freeze({ mark: true });

/** Names are interned: the same text and attribute are the same object. */
export class Name {
  /**
   * @param {string} text
   * @param {boolean} executable
   */
  constructor(text, executable) {
    this.text = text;
    this.executable = executable;
    /** The same text with the other attribute. @type {Name | null} */
    this.twin = null;
  }
}

/** @type {Map<string, Name>} */
const literalNames = new Map();

/** @param {string} text */
export function literalName(text) {
  let name = literalNames.get(text);
  if (!name) {
    name = new Name(text, false);
    name.twin = new Name(text, true);
    name.twin.twin = name;
    literalNames.set(text, name);
  }
  return name;
}

/** @param {string} text */
export function executableName(text) {
  return /** @type {Name} */ (literalName(text).twin);
}

/** A string; parts of it share its bytes. */
export class PSString {
  /**
   * @param {Uint8Array} bytes
   * @param {boolean} [executable]
   */
  constructor(bytes, executable = false) {
    this.bytes = bytes;
    this.executable = executable;
  }
}

/** @param {string} text  of characters below 256 */
export function stringOf(text) {
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return new PSString(bytes);
}

/** @param {Uint8Array} bytes */
export function textOf(bytes) {
  let text = "";
  for (const byte of bytes) text += String.fromCharCode(byte);
  return text;
}

/** An array, or, if executable, a procedure; parts of it share its items. */
export class PSArray {
  /**
   * @param {any[]} items
   * @param {boolean} [executable]
   * @param {number} [start]
   * @param {number} [length]
   */
  constructor(items, executable = false, start = 0, length = items.length) {
    this.items = items;
    this.start = start;
    this.length = length;
    this.executable = executable;
    /** Whether programs may know that it cannot be changed. */
    this.packed = false;
  }

  /** @param {number} index */
  get(index) {
    return this.items[this.start + index];
  }

  /** A copy of the items. */
  toArray() {
    return this.items.slice(this.start, this.start + this.length);
  }
}

/** A dictionary. Names and strings are kept under their text, other keys as they are. */
export class Dictionary {
  constructor() {
    /** @type {Map<any, any>} */
    this.map = new Map();
    /** Whether `restore` leaves it alone. */
    this.global = false;
    /** The `save` since which it was first changed. */
    this.savedAt = 0;
    this.capacity = 0;
  }

  /** @param {string} text */
  get(text) {
    return this.map.get(text);
  }
}

/**
 * The key under which a dictionary keeps a value.
 * @param {any} value
 */
export function keyOf(value) {
  if (value instanceof Name) return value.text;
  if (value instanceof PSString) return textOf(value.bytes);
  return value;
}

/**
 * The value that stands for a key.
 * @param {any} key
 */
export function valueOfKey(key) {
  return typeof key === "string" ? literalName(key) : key;
}

/** What a name of the system dictionary does. */
export class Operator {
  /**
   * @param {string} name
   * @param {(interpreter: any) => void} run
   */
  constructor(name, run) {
    this.name = name;
    this.run = run;
  }
}

const nothing = new Uint8Array(0);

/** Bytes to read, from memory; filters override `refill`. */
export class PSFile {
  /** @param {Uint8Array} [bytes] */
  constructor(bytes = nothing) {
    this.bytes = bytes;
    this.position = 0;
    this.limit = bytes.length;
    this.executable = false;
    this.closed = false;
    /** What a filter reads from. @type {any} */
    this.source = null;
  }

  /**
   * Puts the next bytes into `bytes`, from `position` up to `limit`. Returns whether there were any.
   * @returns {boolean}
   */
  refill() {
    return false;
  }

  /** The next byte, or -1 at the end. */
  readByte() {
    if (this.position < this.limit) return this.bytes[this.position++];
    if (this.closed || !this.refill()) return -1;
    return this.bytes[this.position++];
  }

  /** Puts the byte just read back. */
  unreadByte() {
    --this.position;
  }

  close() {
    this.closed = true;
    this.position = this.limit;
  }
}

/** What `save` leaves on the operand stack. */
export class Save {
  /** @param {number} level */
  constructor(level) {
    this.level = level;
  }
}

/** An error of the program, which `stopped` catches. */
export class PostScriptError {
  /**
   * @param {string} name
   * @param {string} [where]  in which operator
   */
  constructor(name, where = "") {
    this.name = name;
    this.where = where;
  }
}

/** What this reader cannot draw; nothing in the program catches it. */
export class NotDrawn {
  /** @param {string} reason */
  constructor(reason) {
    this.reason = reason;
  }
}
