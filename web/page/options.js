// The form with the options.

import { part } from "./parts.js";

/**
 * @typedef {object} Options
 * @property {boolean} removeMesh
 * @property {"by itself" | 1 | 2} separators
 * @property {number} mergeLimit
 */

export class OptionsForm {
  #mergeLimit = 0; // the last one that was right

  /** @param {HTMLFormElement} form */
  constructor(form) {
    this.form = form;
    this.limitField = /** @type {HTMLInputElement} */ (part(form, "largest"));
  }

  /** @returns {Options} */
  read() {
    const fields = new FormData(this.form);
    const separators = fields.get("separators");
    return {
      removeMesh: fields.has("close"),
      separators: separators === "2" ? 2 : separators === "1" ? 1 : "by itself",
      mergeLimit: this.#mergeLimit,
    };
  }

  /** @param {() => void} changed */
  watch(changed) {
    this.form.addEventListener("change", (event) => {
      if (event.target !== this.limitField || this.#takeLimit()) changed();
    });
    this.form.addEventListener("submit", (event) => event.preventDefault());
  }

  /** What is no limit is said, and not used. */
  #takeLimit() {
    const isRight = this.limitField.validity.valid;
    this.limitField.setAttribute("aria-invalid", String(!isRight));
    part(this.form, "largest-problem").textContent = isRight
      ? ""
      : `A whole number from 0 to 2,147,483,647 is needed; still in use is ${this.#mergeLimit}.`;
    if (isRight) this.#mergeLimit = Number(this.limitField.value);
    return isRight;
  }
}
