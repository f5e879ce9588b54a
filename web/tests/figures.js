// Figures and pictures made by hand.

import { DisplayList, noClip, verb } from "../picture/display_list.js";

/** @typedef {import("../picture/pixmap.js").Pixmap} Pixmap */

/**
 * A figure of so many points, without items.
 * @param {number} width
 * @param {number} height
 */
export function emptyFigure(width, height) {
  const list = new DisplayList();
  list.box = [0, 0, width, height];
  return list;
}

/**
 * Closed polygons in one path, each "x,y x,y ..."; returns its index.
 * @param {DisplayList} list
 * @param {string[]} polygons
 */
export function addPath(list, ...polygons) {
  const path = list.beginPath();
  for (const polygon of polygons) {
    polygon.split(" ").forEach((point, i) => {
      list.verbs.push(i === 0 ? verb.move : verb.line);
      point.split(",").forEach((number) => list.coordinates.push(Number(number)));
    });
    list.verbs.push(verb.close);
  }
  return path;
}

/**
 * @param {DisplayList} list
 * @param {string} line  "x,y x,y ..."
 * @param {Partial<import("../picture/display_list.js").Pen>} [pen]
 */
export function addStroke(list, line, pen = {}) {
  const path = addPath(list, line);
  --list.verbs.length; // Open.
  list.pens.push({
    width: 1,
    cap: 0,
    join: 0,
    miterLimit: 10,
    dashes: [],
    dashOffset: 0,
    matrix: [1, 0, 0, 1, 0, 0],
    ...pen,
  });
  list.addItem(2, path, 0, noClip, list.pens.length - 1);
}

/**
 * A picture of which every character is a pixel.
 * @param {string[]} rows
 * @param {Record<string, number>} colours
 * @returns {Pixmap}
 */
export function picture(rows, colours) {
  const pixels = rows.flatMap((row) => [...row].map((character) => colours[character]));
  return { width: rows[0].length, height: rows.length, pixels: Uint32Array.from(pixels) };
}

/**
 * The rows of a picture, "#" for black, "." for white, "o" for all else.
 * @param {Pixmap} pixmap
 */
export function rowsOf({ width, height, pixels }) {
  return Array.from({ length: height }, (_, y) =>
    Array.from(pixels.subarray(y * width, (y + 1) * width), (colour) => {
      if (colour === 0) return "#";
      return colour === 0xffffff ? "." : "o";
    }).join(""),
  );
}
