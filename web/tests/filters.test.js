// Data that filters decode: right to the last byte, and none behind their end is lost.

import assert from "node:assert/strict";
import { test } from "node:test";
import { zlibSync } from "fflate";

import { readAll } from "../postscript/decoders.js";
import { makeFilter } from "../postscript/filters.js";
import {
  Dictionary,
  NotDrawn,
  PSFile,
  PostScriptError,
  stringOf,
  textOf,
} from "../postscript/values.js";

/** @param {string} text */
const bytesOf = (text) => stringOf(text).bytes;
/** @param {string} text */
const fileOf = (text) => new PSFile(bytesOf(text));

/** @param {Record<string, any>} entries */
function dictionaryOf(entries) {
  const dictionary = new Dictionary();
  for (const [key, value] of Object.entries(entries)) dictionary.map.set(key, value);
  return dictionary;
}

/**
 * @param {string} name
 * @param {string} text
 * @param {Record<string, any>} parameters
 */
function decode(name, text, parameters = {}) {
  const source = fileOf(text);
  const decoded = textOf(readAll(makeFilter(name, source, dictionaryOf(parameters))));
  return { decoded, left: textOf(readAll(source)) };
}

/** @param {string} bits */
function packed(bits) {
  const bytes = bits.match(/.{1,8}/g) ?? [];
  return String.fromCharCode(...bytes.map((byte) => parseInt(byte.padEnd(8, "0"), 2)));
}

/** @param {number[]} codes */
function nineBits(codes) {
  return packed(codes.map((code) => code.toString(2).padStart(9, "0")).join(""));
}

test("text encodings end at their mark and leave what follows", () => {
  assert.deepEqual(decode("ASCIIHexDecode", "48 65 6c\n6C 7>Q"), { decoded: "Hellp", left: "Q" });
  assert.deepEqual(decode("ASCII85Decode", "87cUR\nz87~>Q"), {
    decoded: "Hell\0\0\0\0H",
    left: "Q",
  });
  assert.deepEqual(decode("ASCII85Decode", "<~87cUR~>"), { decoded: "Hell", left: "" });
  assert.throws(() => decode("ASCIIHexDecode", "4g>"), PostScriptError);
});

test("run lengths and codes of strings", () => {
  assert.deepEqual(decode("RunLengthDecode", "\x02abc\xfed\x80Q"), {
    decoded: "abcddd",
    left: "Q",
  });
  // The last code names the string that it makes itself.
  const coded = nineBits([256, 97, 98, 258, 260, 257]);
  assert.equal(decode("LZWDecode", coded).decoded, "ab" + "ab" + "aba");
  assert.throws(() => decode("LZWDecode", nineBits([256, 300])), PostScriptError);
});

test("long codes of strings grow wider, early or not", () => {
  for (const early of [0, 1]) {
    const text = Array.from({ length: 600 }, (_, i) => String.fromCharCode((i * i) % 251)).join("");
    let bits = "";
    let next = 258;
    let width = 9;
    for (const [i, character] of [...text].entries()) {
      bits += character.charCodeAt(0).toString(2).padStart(width, "0");
      if (i > 0) ++next;
      if (next + early >= 1 << width) ++width;
    }
    bits += (257).toString(2).padStart(width, "0");
    assert.equal(decode("LZWDecode", packed(bits), { EarlyChange: early }).decoded, text);
  }
});

test("deflated data with predicted rows", () => {
  const rows = [1, 10, 1, 1, 2, 1, 1, 1, 4, 5, 5, 5];
  const deflated = textOf(zlibSync(Uint8Array.from(rows)));
  const parameters = { Predictor: 15, Columns: 3 };
  const { decoded } = decode("FlateDecode", deflated, parameters);
  assert.deepEqual([...bytesOf(decoded)], [10, 11, 12, 11, 12, 13, 16, 21, 26]);
  assert.throws(() => decode("FlateDecode", deflated.slice(0, 9)), PostScriptError);
  assert.throws(() => decode("DCTDecode", ""), NotDrawn);
});

test("parts of a file", () => {
  /**
   * @param {number} count
   * @param {string} mark
   */
  const part = (count, mark) =>
    decode("SubFileDecode", "one~two~three", { EODCount: count, EODString: stringOf(mark) });
  assert.deepEqual(part(5, ""), { decoded: "one~t", left: "wo~three" });
  assert.deepEqual(part(0, "~t"), { decoded: "one", left: "wo~three" });
  assert.deepEqual(part(2, "~"), { decoded: "one~two~", left: "three" });
  assert.deepEqual(part(0, ""), { decoded: "one~two~three", left: "" });
});

test("rows of a fax differ from those above", () => {
  const rows = ["001" + "0111" + "10" + "1", "011" + "010" + "1", "0001" + "1"];
  const coded = packed(rows.join("") + "000000000001".repeat(2));
  const fax = (/** @type {object} */ more) => [
    ...bytesOf(decode("CCITTFaxDecode", coded, { K: -1, Columns: 8, ...more }).decoded),
  ];
  assert.deepEqual(fax({ BlackIs1: true }), [0b00111000, 0b00010000, 0]);
  assert.deepEqual(fax({ Rows: 2 }), [0b11000111, 0b11101111]);
  assert.throws(() => fax({ K: 0 }), NotDrawn);
  assert.throws(() => decode("CCITTFaxDecode", "\x00\x80", { K: -1, Columns: 8 }), PostScriptError);
});
