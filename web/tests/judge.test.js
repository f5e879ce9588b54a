// What is said of two pictures beyond what their pixels say.

import assert from "node:assert/strict";
import { test } from "node:test";
import { kind, noClip } from "../picture/display_list.js";
import { judge } from "../picture/judge.js";
import { addPath, emptyFigure } from "./figures.js";

const black = 0;

test("a figure that does not draw what was joined is not called the same", () => {
  const pieces = emptyFigure(8, 4);
  for (const piece of ["0,0 4,0 4,4 0,4", "4,0 8,0 8,4 4,4", "1,1 2,1 2,2"]) {
    pieces.addItem(kind.fill, addPath(pieces, piece), piece.startsWith("1") ? 0xff : black, noClip);
  }
  const joined = emptyFigure(8, 4);
  joined.addItem(kind.fill, addPath(joined, "0,0 8,0 8,4 0,4"), black, noClip);
  joined.addItem(kind.fill, addPath(joined, "1,1 2,1 2,2"), 0xff, noClip);
  assert.equal(judge(pieces, joined, { mergers: 1 }).verdict, "same");
  assert.equal(judge(joined, joined, { mergers: 1 }).verdict, "unknown");
  assert.equal(judge(pieces, emptyFigure(8, 4), { mergers: 9 }).verdict, "changed");
});
