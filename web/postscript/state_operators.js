// Operators on lines' looks, and on what has no effect on a figure but must be accepted.

import { Dictionary, NotDrawn, PostScriptError, PSArray } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./graphics_state.js").GraphicsState} GraphicsState */

/** @type {Record<string, "lineWidth" | "cap" | "join" | "miterLimit" | "flatness">} */
const numbers = {
  linewidth: "lineWidth",
  linecap: "cap",
  linejoin: "join",
  miterlimit: "miterLimit",
  flat: "flatness",
};

// How many operands each of these takes.
const ignored = Object.freeze({
  setscreen: 3,
  setcolorscreen: 12,
  sethalftone: 1,
  setsmoothness: 1,
  setcolorrendering: 1,
  setoverprint: 1,
  setblackgeneration: 1,
  setundercolorremoval: 1,
  setcachelimit: 1,
});

function halftone() {
  const values = { HalftoneType: 1, Frequency: 60, Angle: 45, SpotFunction: new PSArray([], true) };
  const dictionary = new Dictionary();
  for (const [key, value] of Object.entries(values)) dictionary.map.set(key, value);
  return dictionary;
}

/**
 * What the current value of something ignored is.
 * @returns {Record<string, any[]>}
 */
function initialValues() {
  const nothing = () => new PSArray([], true);
  return {
    currentscreen: [60, 45, nothing()],
    currentcolorscreen: [
      60,
      45,
      nothing(),
      60,
      45,
      nothing(),
      60,
      45,
      nothing(),
      60,
      45,
      nothing(),
    ],
    currenthalftone: [halftone()],
    currentsmoothness: [0.02],
    currentcolorrendering: [new Dictionary()],
    currentoverprint: [false],
    currentblackgeneration: [nothing()],
    currentundercolorremoval: [nothing()],
    currenttransfer: [nothing()],
    currentcolortransfer: [nothing(), nothing(), nothing(), nothing()],
  };
}

/**
 * @param {"lineWidth" | "cap" | "join" | "miterLimit" | "flatness"} property
 * @param {number} value
 * @returns {any}
 */
function allowed(property, value) {
  if (property === "lineWidth") return Math.abs(value);
  if (property === "miterLimit" && value < 1) throw new PostScriptError("rangecheck");
  if (property !== "cap" && property !== "join") return value;
  if (value !== 0 && value !== 1 && value !== 2) throw new PostScriptError("rangecheck");
  return value;
}

/** @param {Interpreter} interpreter */
function setDash(interpreter) {
  const offset = interpreter.popNumber();
  const dashes = interpreter.popNumbers();
  const { graphics } = interpreter;
  const sum = dashes.reduce((total, dash) => total + dash, 0);
  if (dashes.some((dash) => dash < 0) || (dashes.length > 0 && !(sum > 0))) {
    throw new PostScriptError("rangecheck");
  }
  graphics.dashes = dashes;
  graphics.dashOffset = offset;
  graphics.pen = -1;
}

/**
 * Transfer functions change colours: only those that change nothing are accepted.
 * @param {Interpreter} interpreter
 * @param {number} count
 */
function setTransfer(interpreter, count) {
  for (let i = 0; i < count; ++i) {
    const transfer = interpreter.popArray();
    if (transfer.length > 0) throw new NotDrawn("settransfer");
  }
}

/** @param {Interpreter} interpreter */
function initializeGraphics(interpreter) {
  for (const name of ["initmatrix", "newpath", "initclip"]) {
    interpreter.systemDictionary.get(name).run(interpreter);
  }
  const { graphics } = interpreter;
  graphics.lineWidth = 1;
  graphics.cap = 0;
  graphics.join = 0;
  graphics.miterLimit = 10;
  graphics.dashes = [];
  graphics.dashOffset = 0;
  graphics.pen = -1;
  interpreter.push(0);
  interpreter.systemDictionary.get("setgray").run(interpreter);
}

/** @param {Interpreter} interpreter */
export function defineStateOperators(interpreter) {
  for (const [name, property] of Object.entries(numbers)) {
    interpreter.define(`set${name}`, (machine) => {
      const { graphics } = machine;
      graphics[property] = allowed(property, machine.popNumber());
      graphics.pen = -1;
    });
    interpreter.define(`current${name}`, (machine) => machine.push(machine.graphics[property]));
  }
  interpreter.define("setdash", setDash);
  interpreter.define("currentdash", ({ graphics, operands }) => {
    operands.push(new PSArray([...graphics.dashes]), graphics.dashOffset);
  });
  interpreter.define("setstrokeadjust", (machine) => {
    machine.graphics.strokeAdjust = machine.popBoolean();
  });
  interpreter.define("currentstrokeadjust", (machine) => {
    machine.push(machine.graphics.strokeAdjust);
  });
  interpreter.define("settransfer", (machine) => setTransfer(machine, 1));
  interpreter.define("setcolortransfer", (machine) => setTransfer(machine, 4));
  interpreter.define("initgraphics", initializeGraphics);
  for (const [name, count] of Object.entries(ignored)) {
    interpreter.define(name, (machine) => {
      for (let i = 0; i < count; ++i) machine.pop();
    });
  }
  for (const [name, values] of Object.entries(initialValues())) {
    interpreter.define(name, (machine) => machine.operands.push(...values));
  }
}
