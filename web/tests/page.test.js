// The parts of the page that need no browser.

import assert from "node:assert/strict";
import { test } from "node:test";
import { gzipSync } from "node:zlib";
import { openFigure } from "../page/figure_file.js";
import {
  commandLine,
  formatKilobytes,
  repairedName,
  uniqueNames,
  withoutTerminalControls,
} from "../page/format.js";
import { Queue } from "../page/queue.js";
import { verdictSentence } from "../page/sentences.js";
import { fittingView, movedView, placeOf, viewOfPlace, zoomedView } from "../page/view.js";
import { zipped } from "../page/zip.js";
import { unpack } from "../worker/unpack.js";

test("results are named as the program names them, and differ in an archive", () => {
  assert.equal(repairedName("plot.eps"), "plot_r.eps");
  assert.equal(repairedName("a.b.ps"), "a.b_r.ps");
  assert.equal(repairedName("plot"), "plot_r.eps");
  assert.equal(repairedName("../a\\b\u202espe.\u0007eps"), "__a_b_spe_r._eps");
  const names = ["a_r.eps", "A_r.eps", "a_r-2.eps", "a_r.eps", "none"];
  assert.deepEqual(uniqueNames(names), [
    "a_r.eps",
    "A_r-2.eps",
    "a_r-2-2.eps",
    "a_r-3.eps",
    "none",
  ]);
});

test("the command line says what was done, in words that a shell takes", () => {
  const plain = { mergeLimit: 0, minSeparators: 2, removeMesh: false, verbose: false };
  const line = (/** @type {string} */ name, settings = plain, packedName = "") =>
    commandLine({ name, packedName }, settings);
  assert.equal(line("plot.eps"), "trellion plot.eps");
  assert.equal(line("a.eps", plain, "a.eps.gz"), "gunzip -k a.eps.gz && trellion a.eps");
  const taken = [line("plot"), line("-r"), line("a\n.eps"), line("a.eps", plain, "a.eps")];
  assert.deepEqual(taken, ["", "", "", ""]);
  const all = { mergeLimit: 12, minSeparators: 1, removeMesh: true, verbose: false };
  assert.equal(line("it's one.eps", all), "trellion 'it'\\''s one.eps' -m12 -s1 -r");
  assert.equal(line("-r.eps"), "trellion ./-r.eps");
});

test("sizes and messages are written for people", () => {
  assert.equal(formatKilobytes(66_596), "67 kB");
  assert.equal(formatKilobytes(4_210), "4.2 kB");
  assert.equal(formatKilobytes(66_800_000), "66,800 kB");
  const terminal =
    "Group 1\n  Processing \n\x1b[1A  mergers : 0\n\x1b[1A  mergers : 9\n  Gathering";
  assert.equal(withoutTerminalControls(terminal), "Group 1\n  mergers : 9\n  Gathering");
});

test("only a picture that was seen to be the same is called so", () => {
  const found = { kind: /** @type {const} */ ("judgement"), pixels: 9, wrong: 0, reason: "shfill" };
  assert.match(
    verdictSentence({ ...found, verdict: "same", differing: 2, hairlines: null }),
    /the same: 2 of 9/,
  );
  for (const verdict of /** @type {const} */ (["changed", "broken", "not drawn"])) {
    const sentence = verdictSentence({ ...found, verdict, differing: 2, hairlines: null });
    assert.doesNotMatch(sentence, /same/);
    assert.match(sentence, /shfill\. /);
    assert.equal(sentence.includes("withheld"), verdict !== "not drawn");
  }
});

test("files are told by how they begin, packed or not", async () => {
  const file = (/** @type {BlobPart} */ content, name = "a.eps") => new File([content], name);
  const figure = "%!PS-Adobe-3.0 EPSF-3.0\n";
  const opened = await openFigure(file(gzipSync(figure), "a.eps.gz"), unpack);
  assert.equal(opened.name, "a.eps");
  assert.equal(await opened.text.text(), figure);
  assert.equal(
    await (await openFigure(file(`\x04\n${figure}`), unpack)).text.text(),
    `\x04\n${figure}`,
  );

  const damaged = gzipSync(figure).subarray(0, 20);
  /** @type {[BlobPart, RegExp][]} */
  const refused = [
    ["", /empty/],
    [gzipSync(""), /empty/],
    [damaged, /damaged/],
    [new Uint8Array([0xc5, 0xd0, 0xd3, 0xc6, 1]), /DOS preview header/],
    ["%PDF-1.4\n", /For PDF use trellion-batch/],
    ["Dear editor,", /not an EPS file/],
  ];
  for (const [content, reason] of refused) {
    await assert.rejects(openFigure(file(content), unpack), reason);
  }
});

test("a queue runs so many at once, in order, and lets those that wait go", async () => {
  const queue = new Queue(2);
  const { signal } = new AbortController();
  /** @type {(() => void)[]} */
  const finish = [];
  /** @type {number[]} */
  const begun = [];
  const run = (/** @type {number} */ i, given = signal) =>
    queue.run(() => {
      begun.push(i);
      return /** @type {Promise<void>} */ (new Promise((resolve) => (finish[i] = resolve)));
    }, given);
  const turns = () => new Promise((resolve) => setImmediate(resolve));

  const first = run(0);
  const second = run(1);
  const impatient = new AbortController();
  const third = run(2, impatient.signal);
  const fourth = run(3);
  await turns();
  assert.deepEqual(begun, [0, 1]);
  impatient.abort();
  await assert.rejects(third, { name: "AbortError" });
  finish[0]();
  const fifth = run(4); // comes after the one whose turn it is
  await turns();
  assert.deepEqual(begun, [0, 1, 3]);
  finish[1]();
  await turns();
  assert.deepEqual(begun, [0, 1, 3, 4]);
  finish[3]();
  finish[4]();
  await Promise.all([first, second, fourth, fifth]);
});

test("a view zooms about a point, moves with the hand and shows old pictures in place", () => {
  /** @type {[number, number, number, number]} */
  const box = [10, 20, 210, 120];
  const whole = fittingView(box, 800, 600);
  const corner = placeOf({ ...whole, left: 10, top: 120 }, whole);
  assert(corner.x > 0 && corner.x + 200 * whole.scale < 800);
  assert(Math.abs(corner.x - (800 - (corner.x + 200 * whole.scale))) < 1e-9);

  const point = { x: 150, y: 400 };
  const placeAt = (/** @type {import("../page/view.js").View} */ view) => [
    view.left + point.x / view.scale,
    view.top - point.y / view.scale,
  ];
  const zoomed = zoomedView(whole, box, 3, point);
  placeAt(zoomed).forEach((value, i) => assert(Math.abs(value - placeAt(whole)[i]) < 1e-9));
  assert(zoomedView(whole, box, 1e9, point).scale < 1e4 * whole.scale);

  const moved = placeOf(zoomed, movedView(zoomed, 30, -20));
  assert(Math.abs(moved.x - 30) < 1e-9 && Math.abs(moved.y + 20) < 1e-9);

  const near = viewOfPlace(whole, box, { x: 50, y: 60 });
  assert(near.scale > whole.scale);
  assert(Math.abs(near.left + 400 / near.scale - 50) < 1e-9);
  assert(Math.abs(near.top - 300 / near.scale - 60) < 1e-9);
});

test("an archive holds what was put in", async () => {
  const { unzipSync } = await import("fflate");
  const large = new Uint8Array(600_000).map((_, i) => (i * i) >> 3);
  const archive = await zipped([
    { name: "a_r.eps", content: new Blob([large]) },
    { name: "ü_r.eps", content: new Blob([]) },
  ]);
  const files = unzipSync(new Uint8Array(await archive.arrayBuffer()));
  assert.deepEqual(Object.keys(files), ["a_r.eps", "ü_r.eps"]);
  assert.deepEqual(files["a_r.eps"], large);
  assert.equal(files["ü_r.eps"].length, 0);
});
