// One figure on the page: its card, its job and what came out of it.

import { reasonOf } from "../worker/failure.js";
import { Card } from "./card.js";
import { repairedName } from "./format.js";
import { FigureError, openFigure } from "./figure_file.js";
import { runJob, unpackFigure } from "./repair_job.js";

/** @typedef {import("./options.js").Options} Options */
/** @typedef {import("./repair_job.js").Result} Result */

export class Task {
  #controller = new AbortController();
  #comparing = false;
  /** @type {{ name: string, content: Blob } | null} */
  #checked = null;

  /**
   * @param {File} file
   * @param {import("./repair_job.js").Queues} queues
   * @param {Omit<import("./card.js").Owner, "cancel">} owner
   */
  constructor(file, queues, owner) {
    this.file = file;
    this.queues = queues;
    this.card = new Card(file.name, { ...owner, cancel: () => this.cancel() });
  }

  /** A result whose picture was seen to be the same; null where there is no such thing (yet). */
  get checked() {
    return this.#checked;
  }

  cancel() {
    this.#controller.abort();
  }

  /**
   * Starts again where the figure was repaired already.
   * @param {Options} options
   * @returns {Promise<string>} what is to be said of it; empty when another run follows
   */
  async run(options) {
    this.cancel();
    const controller = new AbortController();
    this.#controller = controller;
    this.#comparing = false;
    this.#checked = null;
    this.card.phase("waiting");
    try {
      return await this.#repair(options, controller);
    } catch (error) {
      if (controller !== this.#controller) return ""; // another run has taken its place
      if (controller.signal.aborted) return this.#cancelled();
      return this.#failed(error);
    }
  }

  remove() {
    this.cancel();
    this.#controller = new AbortController(); // there is nothing more to say of the run
    this.card.remove();
  }

  /**
   * @param {Options} options
   * @param {AbortController} controller
   */
  async #repair(options, { signal }) {
    const phase = (/** @type {import("./repair_job.js").Phase} */ phase) => {
      if (signal.aborted) return;
      this.#comparing = phase === "comparing" || phase === "waiting to be compared";
      this.card.phase(phase);
    };
    const figure = await this.queues.repairs.run(
      () => openFigure(this.file, (packed) => unpackFigure(packed, signal, phase)),
      signal,
    );
    const result = await runJob(figure, options, this.queues, signal, {
      phase,
      progress: (fraction) => this.card.progress(fraction),
      offer: (offered) => this.card.offer(figure, offered),
    });
    signal.throwIfAborted();
    const { judgement, repair } = result;
    if (judgement?.verdict === "same") {
      this.#checked = { name: repairedName(figure.name), content: repair.result };
    }
    return this.card.judged(figure, result);
  }

  #cancelled() {
    if (!this.#comparing) this.card.clear();
    return this.card.cancelled();
  }

  /** @param {unknown} error */
  #failed(error) {
    const isKnown = error instanceof FigureError;
    const sentence = isKnown ? error.message : `The repair failed: ${reasonOf(error)}.`;
    this.card.failed(sentence, isKnown ? error.console : "");
    return sentence;
  }
}
