// Lets a few tasks run at once; the others wait for their turn.

export class Queue {
  #running = 0;
  /** @type {(() => void)[]} */
  #waiting = [];

  /** @param {number} limit */
  constructor(limit) {
    this.limit = limit;
  }

  /**
   * @template T
   * @param {() => Promise<T>} task
   * @param {AbortSignal} signal  gives the place up, also while waiting
   * @returns {Promise<T>}
   */
  async run(task, signal) {
    await this.#turn(signal);
    try {
      signal.throwIfAborted();
      return await task();
    } finally {
      this.#pass();
    }
  }

  /** @param {AbortSignal} signal */
  async #turn(signal) {
    if (this.#running < this.limit) {
      ++this.#running;
      return;
    }
    /** @type {Promise<void>} */
    const turn = new Promise((resolve, reject) => {
      this.#waiting.push(resolve);
      signal.addEventListener("abort", () => {
        const place = this.#waiting.indexOf(resolve);
        if (place < 0) return;
        this.#waiting.splice(place, 1);
        reject(signal.reason);
      });
    });
    await turn;
  }

  /** The place goes to the next one that waits; it is free only if there is none. */
  #pass() {
    const next = this.#waiting.shift();
    if (next) next();
    else --this.#running;
  }
}
