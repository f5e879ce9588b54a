// The graphics state: what gsave keeps and grestore brings back.

import { noClip } from "../picture/display_list.js";
import { identity } from "./matrix.js";
import { Path } from "./path.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */

/**
 * A colour space: its name, how many components it has, and, if it is indexed, its base and table.
 * @typedef {object} ColourSpace
 * @property {string} name
 * @property {number} components
 * @property {any} operand        what currentcolorspace gives
 * @property {ColourSpace} [base]
 * @property {number} [highest]   the largest index
 * @property {any} [table]        a PSString of the base's components, or a procedure
 */

/** @type {ColourSpace} */
export const grey = { name: "DeviceGray", components: 1, operand: null };
/** @type {ColourSpace} */
export const rgb = { name: "DeviceRGB", components: 3, operand: null };
/** @type {ColourSpace} */
export const cmyk = { name: "DeviceCMYK", components: 4, operand: null };

export class GraphicsState {
  constructor() {
    /** From user space to points. It is replaced, never changed. @type {Matrix} */
    this.ctm = identity;
    this.path = new Path();
    /** Index of a clip, or noClip. */
    this.clip = noClip;
    /** The clips that clipsave kept. @type {{ clip: number, outer: any } | null} */
    this.keptClips = null;
    /** 0xRRGGBB. */
    this.colour = 0;
    this.colourSpace = grey;
    /** The current colour's components. It is replaced, never changed. @type {number[]} */
    this.components = [0];
    /** Whether areas are filled with the pattern instead of the colour. */
    this.isPattern = false;
    /** @type {import("./patterns.js").Pattern | null} */
    this.pattern = null;
    this.lineWidth = 1;
    /** @type {0 | 1 | 2} */
    this.cap = 0;
    /** @type {0 | 1 | 2} */
    this.join = 0;
    this.miterLimit = 10;
    /** @type {number[]} */
    this.dashes = [];
    this.dashOffset = 0;
    this.flatness = 1;
    this.strokeAdjust = false;
    /** The pen in the display list, or -1 if it has to be looked for. */
    this.pen = -1;
    /** The font dictionary. @type {any} */
    this.font = null;
    /** Whether `save` kept this one, so that grestore leaves it on the stack. */
    this.isOfSave = false;
    /** How many coordinates the graphics states hold that are saved up to this one. */
    this.heldCoordinates = 0;
  }

  copy() {
    const copy = new GraphicsState();
    copy.ctm = this.ctm;
    copy.path = this.path;
    this.path.shared = true;
    copy.clip = this.clip;
    copy.keptClips = this.keptClips;
    copy.colour = this.colour;
    copy.colourSpace = this.colourSpace;
    copy.components = this.components;
    copy.isPattern = this.isPattern;
    copy.pattern = this.pattern;
    copy.lineWidth = this.lineWidth;
    copy.cap = this.cap;
    copy.join = this.join;
    copy.miterLimit = this.miterLimit;
    copy.dashes = this.dashes;
    copy.dashOffset = this.dashOffset;
    copy.flatness = this.flatness;
    copy.strokeAdjust = this.strokeAdjust;
    copy.pen = this.pen;
    copy.font = this.font;
    return copy;
  }

  /** The path, to be changed. */
  ownPath() {
    if (this.path.shared) this.path = this.path.copy();
    return this.path;
  }

  newPath() {
    if (this.path.shared) this.path = new Path();
    else this.path.clear();
  }
}
