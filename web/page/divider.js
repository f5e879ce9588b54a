// The divider between the picture before and the one after, moved by pointer and keys.

const step = 0.02;
const largeStep = 0.1;

export class Divider {
  /** What is left of it, from 0 to 1. */
  position = 0.5;

  /**
   * @param {HTMLElement} handle
   * @param {HTMLElement} stage  over whose width it moves
   * @param {() => void} moved
   */
  constructor(handle, stage, moved) {
    this.handle = handle;
    this.moved = moved;
    handle.addEventListener("keydown", (event) => this.#key(event));
    handle.addEventListener("pointerdown", (event) => {
      event.preventDefault();
      handle.focus();
      handle.setPointerCapture(event.pointerId);
    });
    handle.addEventListener("pointermove", (event) => {
      if (!handle.hasPointerCapture(event.pointerId)) return;
      const { left, width } = stage.getBoundingClientRect();
      this.#set((event.clientX - left) / width);
    });
    this.#set(this.position);
  }

  /** @param {KeyboardEvent} event */
  #key(event) {
    const position = this.#positionAfter(event.key);
    if (position === null) return;
    event.preventDefault();
    this.#set(position);
  }

  /** @param {string} key */
  #positionAfter(key) {
    switch (key) {
      case "ArrowLeft":
      case "ArrowDown":
        return this.position - step;
      case "ArrowRight":
      case "ArrowUp":
        return this.position + step;
      case "PageDown":
        return this.position - largeStep;
      case "PageUp":
        return this.position + largeStep;
      case "Home":
        return 0;
      case "End":
        return 1;
      default:
        return null;
    }
  }

  /** @param {number} position */
  #set(position) {
    this.position = Math.min(Math.max(position, 0), 1);
    const percent = Math.round(100 * this.position);
    this.handle.style.left = `${100 * this.position}%`;
    this.handle.setAttribute("aria-valuenow", String(percent));
    this.handle.setAttribute("aria-valuetext", `${percent} % before, ${100 - percent} % after`);
    this.moved();
  }
}
