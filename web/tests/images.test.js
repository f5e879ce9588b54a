// Images of all depths, colours and places that their samples come from.

import assert from "node:assert/strict";
import { test } from "node:test";

import { figureOf, itemsOf } from "./drawn_items.js";

/**
 * The only image that a program paints: its pixels as #RRGGBB, or "" if they are not painted.
 * @param {string} program
 */
function imageOf(program) {
  const items = itemsOf(program);
  assert.equal(items.length, 1);
  const { image } = items[0];
  assert.ok(image);
  const bytes = Buffer.from(image.rgba);
  const pixels = Array.from({ length: bytes.length / 4 }, (_, i) =>
    bytes[4 * i + 3] === 255 ? bytes.toString("hex", 4 * i, 4 * i + 3) : "",
  );
  return { image, pixels };
}

test("grey images of one, two, four and eight bits, from a procedure's strings", () => {
  const paint = (/** @type {string} */ size, /** @type {string} */ data) =>
    imageOf(`${size} matrix { <${data}> } image`).pixels;
  assert.deepEqual(paint("3 1 1", "a0"), ["ffffff", "000000", "ffffff"]);
  assert.deepEqual(paint("3 1 2", "1b"), ["000000", "555555", "aaaaaa"]);
  assert.deepEqual(paint("2 2 4", "f3"), ["ffffff", "333333", "ffffff", "333333"]);
  assert.deepEqual(paint("2 1 8", "7f"), ["7f7f7f", "7f7f7f"]);
  assert.match(figureOf("1 1 12 matrix {<0000>} image").problem ?? "", /not drawn: .* 12 bits/);
});

test("where an image lies", () => {
  const { image } = imageOf("10 20 translate 8 4 scale 2 1 8 [2 0 0 -1 0 1] {<00ff>} image");
  assert.deepEqual([image.width, image.height], [2, 1]);
  assert.deepEqual(
    image.matrix.map((value) => value + 0),
    [4, 0, 0, -4, 10, 24],
  );
  assert.match(figureOf("1 1 8 [0 0 0 0 0 0] {<00>} image").problem ?? "", /undefinedresult/);
  assert.match(figureOf("9999 9999 8 matrix {<00>} image").problem ?? "", /not drawn/);
});

test("dictionaries: decoding, tables of colours, samples behind the operator", () => {
  const table = `[/Indexed /DeviceRGB 2 <ff0000 00ff00 0000ff>] setcolorspace
    << /ImageType 1 /Width 3 /Height 1 /BitsPerComponent 2 /ImageMatrix matrix /Decode [0 3]
    /DataSource currentfile /ASCIIHexDecode filter >> image 18>`;
  assert.deepEqual(imageOf(table).pixels, ["ff0000", "00ff00", "0000ff"]);
  const inverted = `/DeviceRGB setcolorspace << /ImageType 1 /Width 1 /Height 1 /BitsPerComponent 8
    /ImageMatrix matrix /Decode [1 0 0 1 0 0.5] /DataSource <0080ff> >> image`;
  assert.deepEqual(imageOf(inverted).pixels, ["ff8080"]);
  const masked = "/DeviceGray setcolorspace << /ImageType 4 /Width 1 /Height 1 >> image";
  assert.match(figureOf(masked).problem ?? "", /not drawn: an image with a mask/);
});

test("coloured images, of samples by turns or in a string for each colour", () => {
  assert.deepEqual(imageOf("2 1 8 matrix {<112233445566>} false 3 colorimage").pixels, [
    "112233",
    "445566",
  ]);
  const split = "2 1 8 matrix {<1144>} {<2255>} {<3366>} true 3 colorimage";
  assert.deepEqual(imageOf(split).pixels, ["112233", "445566"]);
  assert.deepEqual(imageOf("1 1 8 matrix {<00ff0000>} false 4 colorimage").pixels, ["ff00ff"]);
});

test("stencils, and images whose data end early", () => {
  const stencil = "1 0 0 setrgbcolor 4 1 true matrix {<a0>} imagemask";
  assert.deepEqual(imageOf(stencil).pixels, ["ff0000", "", "ff0000", ""]);
  assert.deepEqual(imageOf(stencil.replace("true", "false")).pixels, ["", "ff0000", "", "ff0000"]);
  const dictionary = `<< /ImageType 1 /Width 2 /Height 1 /BitsPerComponent 1 /ImageMatrix matrix
    /Decode [0 1] /DataSource <40> >> imagemask`;
  assert.deepEqual(imageOf(dictionary).pixels, ["000000", ""]);
  assert.deepEqual(imageOf("1 3 8 matrix (a) image").pixels, ["616161", "", ""]);
});
