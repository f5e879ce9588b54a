// save and restore, gsave and grestore. Restoring brings the graphics state and the dictionaries back;
// what was put into arrays and strings stays.

import { GraphicsState } from "./graphics_state.js";
import { bytesOf } from "./interpreter.js";
import { NotDrawn, PostScriptError, Save } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./values.js").Dictionary} Dictionary */

/**
 * @typedef {object} SavedState
 * @property {Save} token
 * @property {number} outerStamp
 * @property {number} graphicsCount  how many graphics states were saved
 * @property {{ dictionary: Dictionary, map: Map<any, any>, savedAt: number }[]} dictionaries
 *   as they were before they were first changed
 */

const deepestGraphics = 100000;
const mostCoordinates = 2e7;

/**
 * Paths are copied when they are changed, and those on the stack stay.
 * @param {Interpreter} interpreter
 */
function countSavedPath({ graphicsStack, graphics }) {
  const below = graphicsStack[graphicsStack.length - 1];
  const held = below ? below.heldCoordinates : 0;
  const isNew = below?.path !== graphics.path;
  graphics.heldCoordinates = held + (isNew ? graphics.path.coordinates.length : 0);
  if (graphics.heldCoordinates > mostCoordinates) throw new NotDrawn("gsave of too long paths");
}

/** @param {Interpreter} interpreter */
export function saveGraphics(interpreter) {
  const { graphicsStack, graphics } = interpreter;
  countSavedPath(interpreter);
  if (graphicsStack.length > deepestGraphics) throw new NotDrawn("gsave nested too deeply");
  graphicsStack.push(graphics);
  interpreter.graphics = graphics.copy();
}

/** @param {Interpreter} interpreter */
export function restoreGraphics(interpreter) {
  const { graphicsStack } = interpreter;
  const saved = graphicsStack[graphicsStack.length - 1];
  if (!saved) {
    interpreter.graphics = new GraphicsState(); // as at the begin of the figure
    return;
  }
  if (saved.isOfSave) {
    interpreter.graphics = saved.copy();
    return;
  }
  graphicsStack.length--;
  interpreter.graphics = saved;
}

/** @param {Interpreter} interpreter */
function restoreAllGraphics(interpreter) {
  const { graphicsStack } = interpreter;
  while (graphicsStack.length > 1 && !graphicsStack[graphicsStack.length - 1].isOfSave) {
    graphicsStack.length--;
  }
  restoreGraphics(interpreter);
}

/** @param {Interpreter} interpreter */
function save(interpreter) {
  const graphicsCount = interpreter.graphicsStack.length;
  saveGraphics(interpreter);
  interpreter.graphicsStack[graphicsCount].isOfSave = true;
  const token = new Save(interpreter.saves.length);
  interpreter.saves.push({
    token,
    outerStamp: interpreter.saveStamp,
    graphicsCount,
    dictionaries: [],
  });
  interpreter.saveStamp = ++interpreter.savesMade;
  interpreter.push(token);
}

/** @param {Interpreter} interpreter */
function restore(interpreter) {
  const token = interpreter.pop();
  if (!(token instanceof Save)) throw new PostScriptError("typecheck");
  if (interpreter.saves[token.level]?.token !== token) throw new PostScriptError("invalidrestore");
  while (interpreter.saves.length > token.level) undoLastSave(interpreter);
}

/** @param {Interpreter} interpreter */
function undoLastSave(interpreter) {
  const saved = interpreter.saves.pop();
  if (!saved) return;
  for (const { dictionary, map, savedAt } of saved.dictionaries) {
    dictionary.map = map;
    interpreter.bytesMade -= bytesOf.entry * map.size;
    dictionary.savedAt = savedAt;
  }
  interpreter.saveStamp = saved.outerStamp;
  interpreter.graphics = interpreter.graphicsStack[saved.graphicsCount];
  interpreter.graphics.isOfSave = false;
  interpreter.graphicsStack.length = saved.graphicsCount;
}

/** @param {Interpreter} interpreter @returns {GraphicsState} */
function popGraphics(interpreter) {
  return interpreter.popOf((value) => value instanceof GraphicsState);
}

/** @param {Interpreter} interpreter */
export function defineSaveOperators(interpreter) {
  interpreter.define("gsave", saveGraphics);
  interpreter.define("grestore", restoreGraphics);
  interpreter.define("grestoreall", restoreAllGraphics);
  interpreter.define("save", save);
  interpreter.define("restore", restore);
  interpreter.define("gstate", (machine) => {
    const { graphics } = machine;
    machine.countBytes(bytesOf.value + 2 * bytesOf.item * graphics.path.coordinates.length);
    machine.push(graphics.copy());
  });
  interpreter.define("currentgstate", (machine) => {
    popGraphics(machine);
    machine.push(machine.graphics.copy());
  });
  interpreter.define("setgstate", (machine) => {
    machine.graphics = popGraphics(machine).copy();
  });
}
