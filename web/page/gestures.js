// Moves and zooms of pointer, wheel and keys over a canvas.

/**
 * @typedef {object} Mover
 * @property {(x: number, y: number) => void} move  by CSS pixels
 * @property {(factor: number, point: { x: number, y: number } | null) => void} zoom  null: the middle
 * @property {() => void} fit
 * @property {() => void} hint  how to zoom
 */

const keyStep = 40;
export const zoomStep = 1.5;

/**
 * @param {HTMLElement} element
 * @param {Mover} mover
 */
export function watchGestures(element, mover) {
  watchPointers(element, mover);

  element.addEventListener(
    "wheel",
    (event) => {
      const isMeant = event.ctrlKey || event.metaKey || document.activeElement === element;
      if (!isMeant) return mover.hint(); // the page scrolls
      event.preventDefault();
      const lines = event.deltaMode === WheelEvent.DOM_DELTA_LINE ? 16 : 1;
      mover.zoom(Math.exp(-0.002 * lines * event.deltaY), { x: event.offsetX, y: event.offsetY });
    },
    { passive: false },
  );

  element.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const action = keyAction(event.key, mover);
    if (!action) return;
    event.preventDefault();
    action();
  });
}

/**
 * @param {string} key
 * @param {Mover} mover
 */
function keyAction(key, mover) {
  switch (key) {
    case "ArrowLeft":
      return () => mover.move(keyStep, 0);
    case "ArrowRight":
      return () => mover.move(-keyStep, 0);
    case "ArrowUp":
      return () => mover.move(0, keyStep);
    case "ArrowDown":
      return () => mover.move(0, -keyStep);
    case "+":
    case "=":
      return () => mover.zoom(zoomStep, null);
    case "-":
      return () => mover.zoom(1 / zoomStep, null);
    case "0":
      return () => mover.fit();
    default:
      return null;
  }
}

/**
 * One pointer drags; two pinch.
 * @param {HTMLElement} element
 * @param {Mover} mover
 */
function watchPointers(element, mover) {
  /** @type {Map<number, { x: number, y: number }>} */
  const pointers = new Map();
  const place = (/** @type {PointerEvent} */ event) => ({ x: event.offsetX, y: event.offsetY });

  element.addEventListener("pointerdown", (event) => {
    if (event.button !== 0) return;
    element.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, place(event));
  });

  element.addEventListener("pointermove", (event) => {
    const last = pointers.get(event.pointerId);
    if (!last) return;
    const now = place(event);
    const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
    if (other) {
      const middle = { x: (now.x + other.x) / 2, y: (now.y + other.y) / 2 };
      mover.zoom(distance(now, other) / Math.max(distance(last, other), 1), middle);
    }
    const share = other ? 0.5 : 1;
    mover.move(share * (now.x - last.x), share * (now.y - last.y));
    pointers.set(event.pointerId, now);
  });

  for (const end of /** @type {const} */ (["pointerup", "pointercancel", "lostpointercapture"])) {
    element.addEventListener(end, (event) => pointers.delete(event.pointerId));
  }
}

/**
 * @param {{ x: number, y: number }} a
 * @param {{ x: number, y: number }} b
 */
function distance(a, b) {
  return Math.hypot(a.x - b.x, a.y - b.y);
}
