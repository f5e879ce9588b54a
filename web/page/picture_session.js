// The picture worker of one comparison: both figures are read once, then views of them are painted
// as they are asked for.

import { reasonOf } from "../worker/failure.js";
import { startWorker } from "./workers.js";

/** @typedef {import("../worker/messages.js").Reply} Reply */
/** @typedef {import("../worker/messages.js").Request} Request */
/** @typedef {import("../worker/messages.js").View} View */

/**
 * @typedef {object} Listener
 * @property {(fraction: number) => void} progress
 * @property {(box: [number, number, number, number]) => void} opened
 * @property {(painted: import("../worker/messages.js").Painted) => void} painted
 * @property {(place: { x: number, y: number } | null) => void} mesh
 * @property {(reason: string) => void} failed
 */

export class PictureSession {
  /**
   * @param {Blob} before
   * @param {Blob} after
   * @param {Listener} listener
   */
  constructor(before, after, listener) {
    this.#listener = listener;
    this.#start().catch((error) => listener.failed(reasonOf(error)));
    this.#send({ kind: "open", before, after });
  }

  /** @type {Listener} */
  #listener;
  /** @type {Worker | null} */
  #worker = null;
  /** What is asked before the worker is there. @type {Request[]} */
  #waiting = [];
  #ended = false;

  /** @param {View} view */
  paint(view) {
    this.#send({ kind: "paint", view });
  }

  findMesh() {
    this.#send({ kind: "find mesh" });
  }

  end() {
    this.#ended = true;
    this.#worker?.terminate();
  }

  async #start() {
    const worker = await startWorker("picture-worker");
    if (this.#ended) {
      worker.terminate();
      return;
    }
    this.#worker = worker;
    worker.onmessage = (/** @type {MessageEvent<Reply>} */ { data }) => this.#hear(data);
    worker.onerror = (event) => {
      event.preventDefault();
      this.#listener.failed(event.message || "a worker of this page has stopped");
    };
    for (const request of this.#waiting) worker.postMessage(request);
  }

  /** @param {Reply} reply */
  #hear(reply) {
    if (reply.kind === "progress") this.#listener.progress(reply.fraction);
    if (reply.kind === "opened") this.#listener.opened(reply.box);
    if (reply.kind === "painted") this.#listener.painted(reply);
    if (reply.kind === "mesh") this.#listener.mesh(reply.place);
    if (reply.kind === "failure") this.#listener.failed(reply.reason);
  }

  /** @param {Request} request */
  #send(request) {
    if (this.#worker) this.#worker.postMessage(request);
    else this.#waiting.push(request);
  }
}
