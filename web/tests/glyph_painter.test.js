// How glyphs are drawn that are in the file.

import assert from "node:assert/strict";
import { test } from "node:test";

import { kind, noClip } from "../picture/display_list.js";
import { drawSharp } from "../picture/sharp.js";
import { addPath, emptyFigure, rowsOf } from "./figures.js";

test("glyphs are as thin as their outlines, and no stem vanishes", () => {
  const glyph = (/** @type {string[]} */ ...polygons) => {
    const list = emptyFigure(8, 4);
    list.addItem(kind.glyph, addPath(list, ...polygons), 0, noClip);
    return rowsOf(drawSharp(list, { scale: 1, width: 8, height: 4 }));
  };
  const bar = ["........", ".###....", ".###....", "........"];
  assert.deepEqual(glyph("0.6,0.6 4.4,0.6 4.4,3.4 0.6,3.4"), bar);
  assert.deepEqual(
    glyph("0.6,0.6 4.4,0.6 4.4,3.4 0.6,3.4", "1.6,1.6 2.4,1.6 2.4,3.4 1.6,3.4"),
    bar,
  );
  assert.deepEqual(glyph("1,1 4,1 4,3 1,3", "2,1 2,2 3,2 3,1"), [
    bar[0],
    bar[1],
    ".#.#....",
    bar[3],
  ]);
  assert.deepEqual(glyph("4.6,1 4.9,1 4.9,3 4.6,3")[1], "....#...");
  assert.deepEqual(glyph("1,2.6 7,2.6 7,2.9 1,2.9")[1], ".######.");
  assert.deepEqual(glyph("5.6,2.6 5.9,2.6 5.9,2.9 5.6,2.9")[1], ".....#..");
  assert.deepEqual(glyph("1.2,1.5 6.2,1.5")[2], ".######.");
  assert.deepEqual(glyph("-9,-9 -8.9,-9 -8.9,-8.9"), Array(4).fill("........"));
});
