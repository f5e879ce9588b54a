// What programs ask about the machine, and what they ask it to do that has no effect on a figure.

import { countToMark } from "./stack_operators.js";
import { Dictionary, NotDrawn, PSArray, PSString, stringOf } from "./values.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */

// How many operands each of these takes.
const ignored = Object.freeze({
  setuserparams: 1,
  setsystemparams: 1,
  setdistillerparams: 1,
  setvmthreshold: 1,
  vmreclaim: 1,
  setobjectformat: 1,
  setjobtimeout: 1,
  echo: 1,
});

const pageSizes = "letter legal ledger note 11x17 lettersmall a3 a4 a4small a5 b5".split(" ");

/** @param {Interpreter} interpreter */
function defineFacts(interpreter) {
  const system = interpreter.systemDictionary.map;
  system.set("true", true);
  system.set("false", false);
  system.set("null", null);
  system.set("languagelevel", 3);
  system.set("version", stringOf("3010"));
  system.set("product", stringOf(""));
  system.set("revision", 1);
  system.set("serialnumber", 0);
}

/** The frame is the page, and a point of it a pixel. @param {Interpreter} interpreter */
function pageDevice({ list }) {
  const [left, bottom, right, top] = list.box;
  const device = new Dictionary();
  device.map.set("PageSize", new PSArray([right - left, top - bottom]));
  device.map.set("HWResolution", new PSArray([72, 72]));
  return device;
}

/** Sizes and trays change nothing, but procedures of pages may draw. @param {Interpreter} interpreter */
function setPageDevice(interpreter) {
  const settings = interpreter.popDictionary();
  for (const key of ["Install", "BeginPage", "EndPage"]) {
    if (settings.get(key)?.length > 0) throw new NotDrawn(`setpagedevice with ${key}`);
  }
}

/** @param {Interpreter} interpreter */
function defineAnswers(interpreter) {
  const internal = new Dictionary();
  interpreter.define("usertime", (machine) => machine.push(0));
  interpreter.define("realtime", (machine) => machine.push(0));
  interpreter.define("vmstatus", (machine) => machine.operands.push(0, 1e6, 1e8));
  interpreter.define("gcheck", (machine) => {
    const value = machine.pop();
    const isComposite =
      value instanceof PSArray || value instanceof PSString || value instanceof Dictionary;
    machine.push(!isComposite || Boolean(/** @type {any} */ (value).global));
  });
  interpreter.define("currentpacking", (machine) => machine.push(machine.packing));
  interpreter.define("setpacking", (machine) => {
    machine.packing = machine.popBoolean();
  });
  interpreter.define("currentobjectformat", (machine) => machine.push(0));
  interpreter.define("setpagedevice", setPageDevice);
  interpreter.define("currentpagedevice", (machine) => machine.push(pageDevice(machine)));
  for (const name of ["userparams", "systemparams", "distillerparams"]) {
    interpreter.define(`current${name}`, (machine) => machine.push(new Dictionary()));
  }
  interpreter.define("internaldict", (machine) => {
    machine.popNumber();
    machine.push(internal);
  });
  interpreter.define("currentglobal", (machine) => machine.push(machine.globalAllocation));
  interpreter.define("setglobal", (machine) => {
    machine.globalAllocation = machine.popBoolean();
  });
}

/** @param {Interpreter} interpreter */
export function defineMiscellaneousOperators(interpreter) {
  defineFacts(interpreter);
  defineAnswers(interpreter);
  interpreter.define("\u0004", () => {}); // the end of a job, as some systems send it to printers
  interpreter.define("pdfmark", (machine) => {
    machine.operands.length -= countToMark(machine) + 1;
  });
  for (const [name, count] of Object.entries(ignored)) {
    interpreter.define(name, (machine) => {
      for (let i = 0; i < count; ++i) machine.pop();
    });
  }
  for (const name of pageSizes) interpreter.define(name, () => {}); // the frame is the page
  for (const name of ["nulldevice", "startjob", "exitserver", "execform"]) {
    interpreter.define(name, () => {
      throw new NotDrawn(name);
    });
  }
  const status = interpreter.systemDictionary.get("statusdict");
  status.map.set("jobtimeout", 0);
  status.map.set("waittimeout", 0);
  status.map.set("manualfeed", false);
  status.map.set("languagelevel", 3);
  status.map.set("buildtime", 0);
  status.map.set("byteorder", false);
  interpreter.systemDictionary.get("$error").map.set("errorinfo", new PSArray([]));
}
