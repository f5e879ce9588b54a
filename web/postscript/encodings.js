// Which glyph each character code means. `-` is none.

import { asciiNames } from "./glyph_names.js";

const standardSigns = `
exclamdown cent sterling fraction yen florin section currency quotesingle quotedblleft
guillemotleft guilsinglleft guilsinglright fi fl - endash dagger daggerdbl periodcentered -
paragraph bullet quotesinglbase quotedblbase quotedblright guillemotright ellipsis perthousand -
questiondown - grave acute circumflex tilde macron breve dotaccent dieresis - ring cedilla -
hungarumlaut ogonek caron emdash - - - - - - - - - - - - - - - - AE - ordfeminine - - - - Lslash
Oslash OE ordmasculine - - - - - ae - - - dotlessi - - lslash oslash oe germandbls
`;

const latinAccents = `
dotlessi grave acute circumflex tilde macron breve dotaccent dieresis - ring cedilla -
hungarumlaut ogonek caron
`;

const latinSigns = `
exclamdown cent sterling currency yen brokenbar section dieresis copyright ordfeminine
guillemotleft logicalnot hyphen registered macron degree plusminus twosuperior threesuperior acute
mu paragraph periodcentered cedilla onesuperior ordmasculine guillemotright onequarter onehalf
threequarters questiondown Agrave Aacute Acircumflex Atilde Adieresis Aring AE Ccedilla Egrave
Eacute Ecircumflex Edieresis Igrave Iacute Icircumflex Idieresis Eth Ntilde Ograve Oacute
Ocircumflex Otilde Odieresis multiply Oslash Ugrave Uacute Ucircumflex Udieresis Yacute Thorn
germandbls agrave aacute acircumflex atilde adieresis aring ae ccedilla egrave eacute ecircumflex
edieresis igrave iacute icircumflex idieresis eth ntilde ograve oacute ocircumflex otilde
odieresis divide oslash ugrave uacute ucircumflex udieresis yacute thorn ydieresis
`;

const symbolSigns = `
space exclam universal numbersign existential percent ampersand suchthat parenleft parenright
asteriskmath plus comma minus period slash zero one two three four five six seven eight nine colon
semicolon less equal greater question congruent Alpha Beta Chi Delta Epsilon Phi Gamma Eta Iota
theta1 Kappa Lambda Mu Nu Omicron Pi Theta Rho Sigma Tau Upsilon sigma1 Omega Xi Psi Zeta
bracketleft therefore bracketright perpendicular underscore radicalex alpha beta chi delta epsilon
phi gamma eta iota phi1 kappa lambda mu nu omicron pi theta rho sigma tau upsilon omega1 omega xi
psi zeta braceleft bar braceright similar
`;

const symbolMoreSigns = `
Euro Upsilon1 minute lessequal fraction infinity florin club diamond heart spade arrowboth
arrowleft arrowup arrowright arrowdown degree plusminus second greaterequal multiply proportional
partialdiff bullet divide notequal equivalence approxequal ellipsis arrowvertex arrowhorizex
carriagereturn aleph Ifraktur Rfraktur weierstrass circlemultiply circleplus emptyset intersection
union propersuperset reflexsuperset notsubset propersubset reflexsubset element notelement angle
gradient registerserif copyrightserif trademarkserif product radical dotmath logicalnot logicaland
logicalor arrowdblboth arrowdblleft arrowdblup arrowdblright arrowdbldown lozenge angleleft
registersans copyrightsans trademarksans summation parenlefttp parenleftex parenleftbt
bracketlefttp bracketleftex bracketleftbt bracelefttp braceleftmid braceleftbt braceex -
angleright integral integraltp integralex integralbt parenrighttp parenrightex parenrightbt
bracketrighttp bracketrightex bracketrightbt bracerighttp bracerightmid bracerightbt
`;

const moreLatinNames = "Scaron scaron Zcaron zcaron Ydieresis trademark Euro";

/**
 * 256 names, nothing but for those that are given.
 * @param {[number, string[]][]} ranges  the first code, and the names from there on
 */
function encodingOf(ranges) {
  const names = new Array(256).fill(".notdef");
  for (const [first, range] of ranges) {
    range.forEach((name, i) => (names[first + i] = name === "-" ? ".notdef" : name));
  }
  return names;
}

/** @param {string} text */
function words(text) {
  return text.trim().split(/\s+/);
}

/** @type {[number, string[]][]} */
const ascii = [
  [32, asciiNames],
  [39, ["quoteright"]],
  [96, ["quoteleft"]],
];

/** @type {Record<string, string[]>} */
export const encodings = {
  StandardEncoding: encodingOf([...ascii, [161, words(standardSigns)]]),
  ISOLatin1Encoding: encodingOf([
    ...ascii,
    [45, ["minus"]],
    [144, words(latinAccents)],
    [160, ["space"]],
    [161, words(latinSigns)],
  ]),
  SymbolEncoding: encodingOf([
    [32, words(symbolSigns)],
    [160, words(symbolMoreSigns)],
  ]),
};

/** The glyphs of a font for Latin text; programs look for them to know such a font. */
export const latinNames = [
  ...encodings.StandardEncoding,
  ...encodings.ISOLatin1Encoding,
  ...words(moreLatinNames),
];

/** The glyphs of the Symbol font. */
export const symbolNames = new Set(encodings.SymbolEncoding);
