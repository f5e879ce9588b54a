// The picture before and after on one canvas, with a divider between them. Until the worker has
// painted a new view the last one is shown, scaled.

import { Divider } from "./divider.js";
import { watchGestures, zoomStep } from "./gestures.js";
import { fromTemplate, part } from "./parts.js";
import { PictureSession } from "./picture_session.js";
import { notDrawnReason } from "./sentences.js";
import {
  fittingView,
  frameIn,
  isSameView,
  movedView,
  placeOf,
  resizedView,
  viewOfPlace,
  zoomedView,
} from "./view.js";

/** @typedef {import("../worker/messages.js").View} View */
/** @typedef {import("../worker/messages.js").Painted} Painted */
/** @typedef {import("./view.js").Area} Area */

export class CompareView {
  element = fromTemplate("compare-template");
  #canvas = /** @type {HTMLCanvasElement} */ (part(this.element, "canvas"));
  #progress = /** @type {HTMLProgressElement} */ (part(this.element, "progress"));
  #note = part(this.element, "note");
  #pixelRatio = window.devicePixelRatio || 1;
  /** @type {[number, number, number, number] | null} */
  #box = null;
  /** @type {View | null} */
  #view = null;
  /** @type {Painted | null} */
  #painted = null;
  #isFitted = false; // a fitting view stays one on a canvas of another size
  #drawn = 0; // the request of the browser for the next frame

  /**
   * @param {Blob} before
   * @param {Blob} after
   */
  constructor(before, after) {
    this.#session = new PictureSession(before, after, {
      progress: (fraction) => (this.#progress.value = fraction),
      opened: (box) => this.#open(box),
      painted: (painted) => this.#take(painted),
      mesh: (place) => this.#showMesh(place),
      failed: (reason) => this.#fail(reason),
    });
    const stage = part(this.element, "stage");
    this.#divider = new Divider(part(this.element, "divider"), stage, () => this.#draw());
    this.#watchButtons();
    watchGestures(this.#canvas, {
      move: (x, y) => this.#move(x, y),
      zoom: (factor, point) => this.#zoom(factor, point),
      fit: () => this.#fit(),
      hint: () => (this.#note.textContent = "With Ctrl or ⌘ the wheel zooms, or after a click."),
    });
    this.#resizes.observe(stage);
  }

  /** @type {PictureSession} */
  #session;
  /** @type {Divider} */
  #divider;
  #resizes = new ResizeObserver(() => this.#resize());

  end() {
    this.#session.end();
    this.#resizes.disconnect();
    cancelAnimationFrame(this.#drawn);
    this.element.remove();
  }

  #watchButtons() {
    const press = (/** @type {string} */ name, /** @type {() => void} */ action) =>
      part(this.element, name).addEventListener("click", action);
    press("zoom-in", () => this.#zoom(zoomStep, null));
    press("zoom-out", () => this.#zoom(1 / zoomStep, null));
    press("fit", () => this.#fit());
    press("to-mesh", () => {
      this.#note.textContent = "Looking for the mesh…";
      this.#session.findMesh();
    });
  }

  /** @param {[number, number, number, number]} box */
  #open(box) {
    this.#box = box;
    part(this.element, "loading").hidden = true;
    for (const button of this.element.querySelectorAll("button")) button.disabled = false;
    this.#fit();
  }

  /** @param {string} reason */
  #fail(reason) {
    part(this.element, "loading").hidden = true;
    this.#note.textContent = `Not drawn: ${notDrawnReason(reason)}`;
  }

  /** @param {Painted} painted */
  #take(painted) {
    this.#painted?.before.close();
    this.#painted?.after.close();
    this.#painted = painted;
    this.element.dataset.sharp = String(this.#view && isSameView(painted.view, this.#view));
    this.#draw();
  }

  /** @param {{ x: number, y: number } | null} place */
  #showMesh(place) {
    this.#note.textContent = place ? "" : "There are no hairlines in this figure.";
    if (place && this.#view && this.#box) this.#show(viewOfPlace(this.#view, this.#box, place));
  }

  #fit() {
    const { width, height } = this.#canvas;
    if (!this.#box) return;
    this.#show(fittingView(this.#box, width, height));
    this.#isFitted = true;
    this.element.dataset.zoomed = "false";
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  #move(x, y) {
    const ratio = this.#pixelRatio;
    if (this.#view) this.#show(movedView(this.#view, ratio * x, ratio * y));
  }

  /**
   * @param {number} factor
   * @param {{ x: number, y: number } | null} point
   */
  #zoom(factor, point) {
    if (!this.#view || !this.#box) return;
    const ratio = this.#pixelRatio;
    const centre = { x: this.#view.width / 2, y: this.#view.height / 2 };
    const pixel = point ? { x: ratio * point.x, y: ratio * point.y } : centre;
    this.#show(zoomedView(this.#view, this.#box, factor, pixel));
  }

  #resize() {
    this.#pixelRatio = window.devicePixelRatio || 1;
    const { width, height } = this.#canvas.getBoundingClientRect();
    this.#canvas.width = Math.max(Math.round(width * this.#pixelRatio), 1);
    this.#canvas.height = Math.max(Math.round(height * this.#pixelRatio), 1);
    if (!this.#view || this.#isFitted) this.#fit();
    else this.#show(resizedView(this.#view, this.#canvas.width, this.#canvas.height));
  }

  /** @param {View} view */
  #show(view) {
    this.#view = view;
    this.#isFitted = false;
    this.element.dataset.zoomed = "true";
    this.element.dataset.sharp = "false";
    this.#session.paint(view);
    this.#draw();
  }

  #draw() {
    cancelAnimationFrame(this.#drawn);
    this.#drawn = requestAnimationFrame(() => this.#drawNow());
  }

  #drawNow() {
    const context = this.#canvas.getContext("2d");
    if (!context || !this.#painted || !this.#view || !this.#box) return;
    const { width, height } = this.#canvas;
    const { before, after, view } = this.#painted;
    const at = placeOf(view, this.#view);
    const frame = frameIn(this.#box, this.#view);
    const middle = Math.round(this.#divider.position * width);
    context.clearRect(0, 0, width, height);
    drawPart(context, before, at, frame, 0, middle);
    drawPart(context, after, at, frame, middle, width);
  }
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {ImageBitmap} bitmap
 * @param {Area} at
 * @param {Area} frame    beyond it nothing is shown
 * @param {number} left   only what is from here
 * @param {number} right  to here is drawn
 */
function drawPart(context, bitmap, at, frame, left, right) {
  context.save();
  context.beginPath();
  context.rect(left, 0, right - left, context.canvas.height);
  context.clip();
  context.beginPath();
  context.rect(frame.x, frame.y, frame.width, frame.height);
  context.clip();
  context.drawImage(bitmap, at.x, at.y, at.width, at.height);
  context.restore();
}
