// Operators that set the colour and its space.

import { colourOf, hsbOfRgb, rgbOf, rgbOfHsb } from "./colours.js";
import { cmyk, grey, rgb } from "./graphics_state.js";
import { makePattern, Pattern } from "./patterns.js";
import { Name, NotDrawn, PostScriptError, PSArray, keyOf, literalName } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("./graphics_state.js").ColourSpace} ColourSpace */

/** @type {ColourSpace} */
const patterns = { name: "Pattern", components: 0, operand: null };

/** @type {Record<string, ColourSpace>} */
const plainSpaces = {
  DeviceGray: grey,
  DeviceRGB: rgb,
  DeviceCMYK: cmyk,
  Pattern: patterns,
};

/**
 * Spaces of measured colours whose components are those of a device, and where their ranges are.
 * @type {Record<string, [space: ColourSpace, range: string]>}
 */
const measuredSpaces = {
  CIEBasedA: [grey, "RangeA"],
  CIEBasedABC: [rgb, "RangeABC"],
  CIEBasedDEF: [rgb, "RangeDEF"],
  CIEBasedDEFG: [cmyk, "RangeDEFG"],
};

/** What makes a measured grey another one than the device's. */
const greyChanges = ["DecodeA", "MatrixA", "DecodeLMN", "MatrixLMN"];

/**
 * A measured space stands for that of the device, unless its numbers are of another kind.
 * @param {PSArray} operand
 * @param {string} name
 */
function measuredSpace(operand, name) {
  const [space, key] = measuredSpaces[name];
  const description = operand.get(1);
  const range = description?.get(key);
  const isUsual =
    !range ||
    range.toArray().every((/** @type {any} */ end, /** @type {number} */ i) => end === i % 2);
  const isBent = name === "CIEBasedA" && greyChanges.some((change) => description?.get(change));
  if (!isUsual || isBent) throw new NotDrawn(`colours in ${name}`);
  return space;
}

/**
 * The colour space that a name or array describes.
 * @param {any} operand
 * @returns {ColourSpace}
 */
export function colourSpaceOf(operand) {
  const name = operand instanceof PSArray ? operand.get(0) : operand;
  if (!(name instanceof Name)) throw new PostScriptError("typecheck");
  const plain = plainSpaces[name.text];
  if (plain === patterns && operand.length > 1) {
    return { ...patterns, operand, base: colourSpaceOf(operand.get(1)) };
  }
  if (plain) return plain;
  if (!(operand instanceof PSArray)) throw new PostScriptError("undefined", name.text);
  if (measuredSpaces[name.text]) return measuredSpace(operand, name.text);
  switch (name.text) {
    case "Indexed": {
      const base = colourSpaceOf(operand.get(1));
      const [highest, table] = [operand.get(2), operand.get(3)];
      return { name: "Indexed", components: 1, operand, base, highest, table };
    }
    case "Separation":
      if (keyOf(operand.get(1)) === "None") throw new NotDrawn("the ink None");
      return separation(operand, 1);
    case "DeviceN":
      return separation(operand, operand.get(1).length);
    default:
      throw new NotDrawn(`colours in ${name.text}`);
  }
}

/**
 * Inks that a procedure turns into a colour of another space.
 * @param {PSArray} operand
 * @param {number} components
 * @returns {ColourSpace}
 */
function separation(operand, components) {
  const base = colourSpaceOf(operand.get(2));
  return { name: "Separation", components, operand, base, table: operand.get(3) };
}

/**
 * @param {Interpreter} interpreter
 * @param {ColourSpace} space
 * @param {number[]} components
 */
function setColour(interpreter, space, components) {
  const { graphics } = interpreter;
  graphics.colour = colourOf(interpreter, space, components);
  graphics.colourSpace = space;
  graphics.components = components;
  graphics.isPattern = false;
}

/** @param {Interpreter} interpreter @param {number} count */
function popComponents(interpreter, count) {
  const components = new Array(count);
  for (let i = count - 1; i >= 0; --i) components[i] = interpreter.popNumber();
  return components;
}

/** @param {Interpreter} interpreter */
function setColourSpace(interpreter) {
  const space = colourSpaceOf(interpreter.pop());
  const { graphics } = interpreter;
  graphics.colourSpace = space;
  graphics.isPattern = space.name === "Pattern";
  graphics.pattern = null;
  if (graphics.isPattern) return;
  const full = space.name === "Separation" ? 1 : 0;
  const components = new Array(space.components).fill(full);
  if (space === cmyk) components[3] = 1;
  setColour(interpreter, space, components);
}

/** @param {Interpreter} interpreter */
function setColourOfSpace(interpreter) {
  const { graphics } = interpreter;
  if (interpreter.peek(0) instanceof Pattern) {
    setPattern(interpreter);
    return;
  }
  if (graphics.isPattern) throw new PostScriptError("typecheck");
  const space = graphics.colourSpace;
  setColour(interpreter, space, popComponents(interpreter, space.components));
}

/** @param {Interpreter} interpreter @returns {[number, number, number]} */
function currentRgb(interpreter) {
  const { colourSpace, components, isPattern } = interpreter.graphics;
  return isPattern ? [0, 0, 0] : rgbOf(interpreter, colourSpace, components);
}

/** @param {Interpreter} interpreter */
function pushCmyk(interpreter) {
  const { colourSpace, components } = interpreter.graphics;
  if (colourSpace === cmyk) {
    interpreter.operands.push(...components);
    return;
  }
  const inks = currentRgb(interpreter).map((light) => 1 - light);
  const black = Math.min(...inks);
  interpreter.operands.push(...inks.map((ink) => ink - black), black);
}

/** @param {Interpreter} interpreter */
function pushColourSpace(interpreter) {
  const { operand, name } = interpreter.graphics.colourSpace;
  interpreter.push(operand instanceof PSArray ? operand : new PSArray([literalName(name)]));
}

/** A stencil's colour is below it, in the space that patterns have below them. @param {Interpreter} interpreter */
function setPattern(interpreter) {
  const { graphics } = interpreter;
  const pattern = interpreter.popOf((value) => value instanceof Pattern);
  const isSpace = graphics.colourSpace.name === "Pattern";
  const space = isSpace ? graphics.colourSpace : { ...patterns, base: graphics.colourSpace };
  if (pattern.isStencil && !space.base) throw new PostScriptError("rangecheck");
  if (pattern.isStencil && space.base) {
    setColour(interpreter, space.base, popComponents(interpreter, space.base.components));
  }
  graphics.colourSpace = space;
  graphics.isPattern = true;
  graphics.pattern = pattern;
}

/** @param {Interpreter} interpreter */
export function defineColourOperators(interpreter) {
  interpreter.define("setgray", (machine) => {
    setColour(machine, grey, [machine.popNumber()]);
  });
  interpreter.define("setrgbcolor", (machine) =>
    setColour(machine, rgb, popComponents(machine, 3)),
  );
  interpreter.define("setcmykcolor", (machine) => {
    setColour(machine, cmyk, popComponents(machine, 4));
  });
  interpreter.define("sethsbcolor", (machine) => {
    const [hue, saturation, brightness] = popComponents(machine, 3);
    setColour(machine, rgb, rgbOfHsb(hue, saturation, brightness));
  });
  interpreter.define("setcolorspace", setColourSpace);
  interpreter.define("setcolor", setColourOfSpace);
  interpreter.define("currentgray", (machine) => {
    const [red, green, blue] = currentRgb(machine);
    machine.push(red === green && green === blue ? red : 0.3 * red + 0.59 * green + 0.11 * blue);
  });
  interpreter.define("currentrgbcolor", (machine) => machine.operands.push(...currentRgb(machine)));
  interpreter.define("currenthsbcolor", (machine) => {
    machine.operands.push(...hsbOfRgb(currentRgb(machine)));
  });
  interpreter.define("currentcmykcolor", pushCmyk);
  interpreter.define("currentcolor", (machine) => {
    const { components, isPattern, pattern } = machine.graphics;
    if (isPattern) machine.operands.push(...(pattern?.isStencil ? components : []), pattern);
    else machine.operands.push(...components);
  });
  interpreter.define("currentcolorspace", pushColourSpace);
  interpreter.define("makepattern", makePattern);
  interpreter.define("setpattern", setPattern);
}
