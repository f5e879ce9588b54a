// How wide the glyphs are of the fonts that every printer has: two digits of base 36 for each, in
// thousandths of the font's size.

import { asciiNames, partsOfAccented, signNames } from "./glyph_names.js";
import { encodings } from "./encodings.js";

const textNames = [...asciiNames, ...signNames];
const symbolNames = [
  ...encodings.SymbolEncoding.slice(32, 127),
  ...encodings.SymbolEncoding.slice(160, 255),
];
const widthOfTypewriter = 600;

const tables = {
  sans: `
7q7q9vfgfgopij5b9999atg87q997q7qfgfgfgfgfgfgfgfgfgfg7q7qg8g8g8fgs7ijijk2k2ijgzlmk27qdwijfgn5k2lm
ijlmk2ijgzk2ijq8ijijgz7q7q7qd1fg99fgfgdwfgfg7qfgfg6666dw66n5fgfgfgfg99dw7qfgdwk2dwdwdw9a789ag899
fgfgfgfg78fg99khaafgg8kh99b4g8999999fgex7q9999a5fgn6n6n6gzrsk2g8lmijgzopfgg8gzfgk2fg7qfg66rsq8gz
fg9999999999999999j6fgrs666666999999fgfg9qrsrs99997qfgrsd8h0rorog8cljt7mf9f9f9f9d3dwdw
`,
  sansBold: `
7q99d6fgfgopk26m9999atg87q997q7qfgfgfgfgfgfgfgfgfgfg9999g8g8g8gzr3k2k2k2k2ijgzlmk27qfgk2gzn5k2lm
ijlmk2ijgzk2ijq8ijijgz997q99g8fg99fggzfggzfg99gzgz7q7qfg7qopgzgzgzgzatfg99gzfglmfgfgdwat7satg899
fgfgfgfg7sfg99khaafgg8kh99b4g8999999gzfg7q9999a5fgn6n6n6gzrsk2g8lmijgzopgzg8gzgzk2gz7qgz7qrsq8gz
fg9999999999999999lafgrs7q7q7qdwdwdwfgfg9qrsrs99997qfgrsdqh0rorog8f9jt7mf9f9f9f9dqgzgz
`,
  serif: `
6y99bcdwdwn5lm509999dwfo6y996y7qdwdwdwdwdwdwdwdwdwdw7q7qfofofoccplk2ijijk2gzfgk2k299atk2gzopk2k2
fgk2ijfggzk2k2q8k2k2gz997q99d1dw99ccdwccdwcc99dwdw7q7qdw7qlmdwdwdwdw99at7qdwdwk2dwdwccdc5kdcf199
dwdwdwdw5kdw99l47odwfol499b4fo8c8c99dwcl6y998c8mdwkukukuccopk2fok2fgdwijdwfodwdwk2dw7qgz7qopk2gz
dw9999999999999999e1dwrs999999ccccccdwdw9qrsrs99994ndwr8dwijrsrsfok2rsrsrsrsrsrsfyfgfg
`,
  serifBold: `
6y99ffdwdwrsn57q9999dwfu6y996y7qdwdwdwdwdwdwdwdwdwdw9999fufufudwpuk2ijk2k2ijgzlmlmatdwlmijq8k2lm
gzlmk2fgijk2k2rsk2k2ij997q99g5dw99dwfgccfgcc99dwfg7q99fg7qn5fgdwfgfgccat99fgdwk2dwdwccay64ayeg99
dwdwdwdw64dw99kr8cdwfukr99b4fu8c8c99fgf06y998c96dwkukukudwrsk2fulmgzfgk2dwfudwfgk2fg7qij7qrsk2ij
dw9999999999999999f8dwrs999999dwdwdwdwdw9qrsrs99994ndwrsdwijrsrsfuk2rsrsrsrsrsrsfyfgfg
`,
  serifItalic: `
6y99bodwdwn5lm5y9999dwir6y996y7qdwdwdwdwdwdwdwdwdwdw9999iririrdwpkgzgzijk2gzgzk2k299ccijfgn5ijk2
gzk2gzdwfgk2gzn5gzfgfgat7qatbqdw99dwdwccdwcc7qdwdw7q7qcc7qk2dwdwdwdwatat7qdwccijccccatb47nb4f1at
dwdwdwdw7ndw99l47odwirl499b4ir8c8c99dwej6y998c8mdwkukukudwopk2irk2gzdwijdwirdwdwk2dw7qfg7qq8ijfg
dw9999999999999999dxdwop999999fgfgfgdwdw9qoprs99994ndwr8dwijrsrsirk2rsrsrsrsrsrsfydwdw
`,
  serifBoldItalic: `
6yatffdwdwn5lm7q9999dwfu6y996y7qdwdwdwdwdwdwdwdwdwdw9999fufufudwn4ijijijk2ijijk2lmatdwijgzopk2k2
gzk2ijfggzk2ijopijgzgz997q99fudw99dwdwccdwcc99dwfg7q7qdw7qlmfgdwdwdwatat7qfgccijdwccat9o649ofuat
dwdwdwdw64dw99kr7edwgukr99b4fu8c8c99g0dw6y998c8cdwkukukudwq8k2fuk2gzdwk2dwfudwdwk2dw7qgz7qq8k2gz
dw9999999999999999f6dwrs999999dwdwdwdwdw9qrsrs99994ndwrsdwijrsrsguk2rsrsrsrsrsrsfyfgfg
`,
  symbol: `
6y99jtdwf9n5lmc79999dwf96yf96y7qdwdwdwdwdwdwdwdwdwdw7q7qf9f9f9ccf9k2ijk2h0gzl7grk299hjk2j2opk2k2
lcklfggggzj6c7lchxm3gz99nz99iadwdwhjf9f9dqc7ehbfgr95grf9f9g0ehf9f9ehf9grc7g0jtj2dpj2dqdc5kdcf9ku
h86vf94njtdwkxkxkxkxsyrfgrrfgrb4f9bff9f9jtdqcsf9f9f9f9rsgrrsiamvj2m3rflclcmvlclcjtjtjtjtjtjtjtlc
jtlylyoqmvf96yjtgrgrsyrfgrrfgrdq95lylylujtaoaoaoaoaoaodqdqdqdq6y957mj2j2j2aoaoaoaoaoaodqdqdq
`,
};

/** @typedef {keyof typeof tables | "mono"} WidthTable */

/** @type {Map<string, Map<string, number>>} */
const widthsOfTables = new Map();

/** @param {keyof typeof tables} table */
function widthsOf(table) {
  const known = widthsOfTables.get(table);
  if (known) return known;
  const names = table === "symbol" ? symbolNames : textNames;
  const digits = tables[table].replace(/\s/g, "");
  const widths = new Map(names.map((name, i) => [name, parseInt(digits.substr(2 * i, 2), 36)]));
  widthsOfTables.set(table, widths);
  return widths;
}

/**
 * The width of a glyph in ems; an unknown one is as wide as a space.
 * @param {WidthTable} table
 * @param {string} name
 */
export function glyphWidth(table, name) {
  if (table === "mono") return widthOfTypewriter / 1000;
  const widths = widthsOf(table);
  const width = widths.get(name) ?? widths.get(unaccented(name)) ?? widthsOf("symbol").get(name);
  return (width ?? widths.get("space") ?? 0) / 1000;
}

/** @param {string} name */
function unaccented(name) {
  const letter = partsOfAccented(name)?.letter ?? "";
  return letter === "i" ? "dotlessi" : letter;
}
