// Reads figures, compares their pictures and paints views of them.

import { viewOf } from "../picture/device_path.js";
import { densest } from "../picture/hairlines.js";
import { judge, judgeHairlines } from "../picture/judge.js";
import { PaintedFigure, Painting } from "../picture/paint.js";
import { pixmapOfImageData } from "../picture/pixmap.js";
import { resolutions } from "../picture/resolutions.js";
import { drawSharp } from "../picture/sharp.js";
import { makeTextMask } from "../picture/text_mask.js";
import { readFigure } from "../postscript/reader.js";
import { reasonOf } from "./failure.js";

/** @typedef {import("./messages.js").Request} Request */
/** @typedef {import("./messages.js").Reply} Reply */
/** @typedef {import("./messages.js").View} View */
/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */
/** @typedef {import("../picture/sharp.js").Part} Part */

const sliceMilliseconds = 30;
/** Shares of the work of a comparison that are done after its parts. */
const done = { reading: 0.5, judging: 0.8, drawingBefore: 0.95 };

const unseen = { pixels: 0, differing: 0, wrong: 0, hairlines: null };

/** @type {{ before: PaintedFigure, after: PaintedFigure } | null} */
let figures = null;
/** The view asked for last. @type {View | null} */
let wanted = null;

/**
 * @param {Reply} reply
 * @param {Transferable[]} [transferred]
 */
function answer(reply, transferred = []) {
  postMessage(reply, { transfer: transferred });
}

/** @param {number} fraction */
function report(fraction) {
  answer({ kind: "progress", fraction });
}

/**
 * @param {Blob} figure
 * @param {(fraction: number) => void} progress
 */
function read(figure, progress) {
  const bytes = new Uint8Array(new FileReaderSync().readAsArrayBuffer(figure));
  return readFigure(bytes, progress);
}

/**
 * @param {Blob} before
 * @param {Blob} after
 * @param {number} share  of the work that reading is
 */
function readBoth(before, after, share) {
  const size = before.size + after.size;
  const first = read(before, (part) => report((share * part * before.size) / size));
  const second = read(after, (part) => report((share * (before.size + part * after.size)) / size));
  return {
    lists: { before: first.list, after: second.list },
    problems: { before: first.problem, after: second.problem },
  };
}

/** @param {Part} part */
function canvasFor({ width, height }) {
  const canvas = new OffscreenCanvas(width, height);
  const context = canvas.getContext("2d");
  if (!context) throw new Error("the browser has no canvas to draw on");
  return { canvas, context };
}

/**
 * As viewers draw it, and without anti-aliasing.
 * @param {PaintedFigure} figure
 * @param {Part} part
 */
function drawings(figure, part) {
  const { context } = canvasFor(part);
  new Painting(context, figure, part).paintUntil(Infinity);
  const smooth = pixmapOfImageData(context.getImageData(0, 0, part.width, part.height));
  return { smooth, sharp: drawSharp(figure.list, part, makeTextMask()) };
}

/**
 * @param {import("./messages.js").JudgeRequest} request
 * @returns {import("./messages.js").Judgement}
 */
function compare({ before, after, meshClosed, mergers }) {
  const kind = "judgement";
  const { lists, problems } = readBoth(before, after, done.reading);
  // A program that ends in another way is another one, even where neither draws to its end.
  if (problems.after && problems.after !== problems.before) {
    return { kind, ...unseen, verdict: "broken", reason: problems.after };
  }
  if (problems.before) return { kind, ...unseen, verdict: "not drawn", reason: problems.before };
  report(done.reading);
  const found = judge(lists.before, lists.after, {
    textMask: makeTextMask(),
    meshClosed,
    mergers,
    progress: (part) => report(done.reading + (done.judging - done.reading) * part),
  });
  const looks = resolutions(lists.before);
  if (found.verdict !== "same" || !looks) return { kind, ...found, hairlines: null };

  const drawingsBefore = drawings(new PaintedFigure(lists.before), looks.coarse);
  report(done.drawingBefore);
  const drawingsAfter = drawings(new PaintedFigure(lists.after), looks.coarse);
  const hairlines = judgeHairlines(drawingsBefore, drawingsAfter);
  const { reason } = hairlines;
  return { kind, ...found, hairlines, ...(reason && { verdict: "changed", reason }) };
}

/** @param {import("./messages.js").OpenRequest} request */
function open({ before, after }) {
  const { lists, problems } = readBoth(before, after, 1);
  const problem = problems.before ?? problems.after;
  if (problem) throw new Error(problem);
  figures = { before: new PaintedFigure(lists.before), after: new PaintedFigure(lists.after) };
  answer({ kind: "opened", box: lists.before.box });
}

/** @returns {Promise<void>} */
function nextMessage() {
  return new Promise((resolve) => setTimeout(resolve));
}

/**
 * @param {DisplayList} list
 * @param {View} view
 * @returns {Part}
 */
function partSeen({ box: [left, , , top] }, { scale, width, height, ...corner }) {
  const fromLeft = scale * (corner.left - left);
  const fromTop = scale * (top - corner.top);
  return { scale, width, height, left: fromLeft, top: fromTop };
}

/**
 * Null when another view is wanted meanwhile.
 * @param {PaintedFigure} figure
 * @param {View} view
 */
async function paint(figure, view) {
  const part = partSeen(figure.list, view);
  const { canvas, context } = canvasFor(part);
  const painting = new Painting(context, figure, part);
  while (!painting.paintUntil(performance.now() + sliceMilliseconds)) {
    await nextMessage();
    if (wanted !== view) return null;
  }
  return canvas.transferToImageBitmap();
}

/** @param {View} view */
async function paintBoth(view) {
  wanted = view;
  await nextMessage();
  if (wanted !== view || !figures) return;
  const before = await paint(figures.before, view);
  const after = before && (await paint(figures.after, view));
  if (before && after) answer({ kind: "painted", view, before, after }, [before, after]);
}

function findMesh() {
  if (!figures) return;
  const { list } = figures.before;
  const looks = resolutions(list);
  if (!looks) return answer({ kind: "mesh", place: null });
  const { smooth, sharp } = drawings(figures.before, looks.coarse);
  const view = viewOf(list, looks.coarse.scale, 0, 0);
  answer({ kind: "mesh", place: densest(smooth, sharp, view) });
}

/** @param {Request} request */
async function serve(request) {
  switch (request.kind) {
    case "judge":
      return answer(compare(request));
    case "open":
      return open(request);
    case "paint":
      return paintBoth(request.view);
    case "find mesh":
      return findMesh();
  }
}

onmessage = async (/** @type {MessageEvent<Request>} */ event) => {
  try {
    await serve(event.data);
  } catch (error) {
    answer({ kind: "failure", reason: reasonOf(error) });
  }
};
