// node tests/draw.js FILE.eps OUT.ppm [DPI]: draws a figure as it is drawn to be compared.

import { readFileSync, writeFileSync } from "node:fs";
import { drawSharp } from "../picture/sharp.js";
import { writePpm } from "./ppm.js";
import { readFigure } from "../postscript/reader.js";

const [input, output, dpi = "144"] = process.argv.slice(2);
const { list, problem } = readFigure(readFileSync(input));
if (problem) console.error(problem);
const scale = Number(dpi) / 72;
const [left, bottom, right, top] = list.box;
const width = Math.ceil(scale * (right - left));
const height = Math.ceil(scale * (top - bottom));
const picture = drawSharp(list, { scale, width, height });
if (picture.textsLeftOut > 0) console.error(`${picture.textsLeftOut} texts are left out`);
writeFileSync(output, writePpm(picture));
