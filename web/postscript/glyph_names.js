// The names of glyphs, and which characters they stand for.

/** From the space, character 32, on. */
export const asciiNames = `
space exclam quotedbl numbersign dollar percent ampersand quotesingle parenleft parenright
asterisk plus comma hyphen period slash zero one two three four five six seven eight nine colon
semicolon less equal greater question at A B C D E F G H I J K L M N O P Q R S T U V W X Y Z
bracketleft backslash bracketright asciicircum underscore grave a b c d e f g h i j k l m n o p q
r s t u v w x y z braceleft bar braceright asciitilde
`
  .trim()
  .split(/\s+/);

/** Names with their characters. */
const signs = `
exclamdown ¡ cent ¢ sterling £ currency ¤ yen ¥ brokenbar ¦ section § dieresis ¨ copyright ©
ordfeminine ª guillemotleft « logicalnot ¬ registered ® macron ¯ degree ° plusminus ± twosuperior
² threesuperior ³ acute ´ mu µ paragraph ¶ periodcentered · cedilla ¸ onesuperior ¹ ordmasculine º
guillemotright » onequarter ¼ onehalf ½ threequarters ¾ questiondown ¿ AE Æ Eth Ð multiply ×
Oslash Ø Thorn Þ germandbls ß ae æ eth ð divide ÷ oslash ø thorn þ Dcroat Đ dcroat đ dotlessi ı
Lslash Ł lslash ł OE Œ oe œ Tbar Ŧ florin ƒ circumflex ˆ caron ˇ breve ˘ dotaccent ˙ ring ˚ ogonek
˛ tilde ˜ hungarumlaut ˝ pi π endash – emdash — quoteleft ‘ quoteright ’ quotesinglbase ‚
quotedblleft “ quotedblright ” quotedblbase „ dagger † daggerdbl ‡ bullet • ellipsis … perthousand
‰ guilsinglleft ‹ guilsinglright › fraction ⁄ Euro € trademark ™ partialdiff ∂ Delta Δ product ∏
summation ∑ minus − radical √ infinity ∞ integral ∫ approxequal ≈ notequal ≠ lessequal ≤
greaterequal ≥ lozenge ◊ fi ﬁ fl ﬂ
`;

/** Those that only the Symbol font has. */
const symbols = `
universal ∀ existential ∃ suchthat ∋ asteriskmath ∗ congruent ≅ Alpha Α Beta Β Chi Χ Epsilon Ε Phi
Φ Gamma Γ Eta Η Iota Ι theta1 ϑ Kappa Κ Lambda Λ Mu Μ Nu Ν Omicron Ο Pi Π Theta Θ Rho Ρ Sigma Σ
Tau Τ Upsilon Υ sigma1 ς Omega Ω Xi Ξ Psi Ψ Zeta Ζ therefore ∴ perpendicular ⊥ radicalex ‾ alpha α
beta β chi χ delta δ epsilon ε phi φ gamma γ eta η iota ι phi1 ϕ kappa κ lambda λ nu ν omicron ο
theta θ rho ρ sigma σ tau τ upsilon υ omega1 ϖ omega ω xi ξ psi ψ zeta ζ similar ∼ Upsilon1 ϒ
minute ′ club ♣ diamond ♦ heart ♥ spade ♠ arrowboth ↔ arrowleft ← arrowup ↑ arrowright → arrowdown
↓ second ″ proportional ∝ equivalence ≡ arrowvertex ⏐ arrowhorizex ⎯ carriagereturn ↵ aleph ℵ
Ifraktur ℑ Rfraktur ℜ weierstrass ℘ circlemultiply ⊗ circleplus ⊕ emptyset ∅ intersection ∩ union
∪ propersuperset ⊃ reflexsuperset ⊇ notsubset ⊄ propersubset ⊂ reflexsubset ⊆ element ∈ notelement
∉ angle ∠ gradient ∇ registerserif ® copyrightserif © trademarkserif ™ dotmath ⋅ logicaland ∧
logicalor ∨ arrowdblboth ⇔ arrowdblleft ⇐ arrowdblup ⇑ arrowdblright ⇒ arrowdbldown ⇓ angleleft ⟨
registersans ® copyrightsans © trademarksans ™ parenlefttp ⎛ parenleftex ⎜ parenleftbt ⎝
bracketlefttp ⎡ bracketleftex ⎢ bracketleftbt ⎣ bracelefttp ⎧ braceleftmid ⎨ braceleftbt ⎩ braceex
⎪ angleright ⟩ integraltp ⌠ integralex ⎮ integralbt ⌡ parenrighttp ⎞ parenrightex ⎟ parenrightbt ⎠
bracketrighttp ⎤ bracketrightex ⎥ bracketrightbt ⎦ bracerighttp ⎫ bracerightmid ⎬ bracerightbt ⎭
`;

/** @type {Record<string, string>} */
const accents = {
  grave: "\u0300",
  acute: "\u0301",
  circumflex: "\u0302",
  tilde: "\u0303",
  macron: "\u0304",
  breve: "\u0306",
  dotaccent: "\u0307",
  dieresis: "\u0308",
  ring: "\u030a",
  hungarumlaut: "\u030b",
  caron: "\u030c",
  commaaccent: "\u0327",
  cedilla: "\u0327",
  ogonek: "\u0328",
};
const accentedName = new RegExp(`^([A-Za-z])(${Object.keys(accents).join("|")})$`);

/** @param {string} pairs */
function pairsOf(pairs) {
  const words = pairs.trim().split(/\s+/);
  return Array.from({ length: words.length / 2 }, (_, i) => [words[2 * i], words[2 * i + 1]]);
}

export const signNames = pairsOf(signs).map(([name]) => name);

/** @type {Map<string, string>} */
const characters = new Map([
  ...asciiNames.map((name, i) => /** @type {const} */ ([name, String.fromCharCode(32 + i)])),
  .../** @type {[string, string][]} */ (pairsOf(signs + symbols)),
]);

/**
 * The letter under an accent, and the accent; null if the name is none of both.
 * @param {string} name
 */
export function partsOfAccented(name) {
  const match = accentedName.exec(name);
  return match && { letter: match[1], accent: match[2] };
}

/**
 * The characters of a glyph; none if its name says nothing.
 * @param {string} name
 */
export function charactersOf(name) {
  const known = characters.get(name);
  if (known !== undefined) return known;
  const parts = partsOfAccented(name);
  if (parts) return (parts.letter + accents[parts.accent]).normalize("NFC");
  const code = /^(?:uni([0-9A-F]{4})|u([0-9A-F]{4,6}))$/.exec(name);
  return code ? characterOf(parseInt(code[1] ?? code[2], 16)) : "";
}

/** @param {number} code */
function characterOf(code) {
  return code > 0x10ffff ? "" : String.fromCodePoint(code);
}
