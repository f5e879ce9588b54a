// The language itself: what programs leave on the operand stack.

import assert from "node:assert/strict";
import { test } from "node:test";

import { DisplayList } from "../picture/display_list.js";
import { newInterpreter } from "../postscript/reader.js";
import {
  Dictionary,
  Name,
  NotDrawn,
  PSArray,
  PSFile,
  PSString,
  PostScriptError,
  stringOf,
  textOf,
} from "../postscript/values.js";

/**
 * A value as a program would write it.
 * @param {any} value
 * @returns {string}
 */
function written(value) {
  if (value instanceof Name) return (value.executable ? "" : "/") + value.text;
  if (value instanceof PSString) return `(${textOf(value.bytes)})`;
  if (value instanceof Dictionary) return `<${value.map.size}>`;
  if (!(value instanceof PSArray)) return String(value?.name ?? value);
  const items = value.toArray().map(written).join(" ");
  return value.executable ? `{${items}}` : `[${items}]`;
}

/**
 * The operand stack after a program, bottom first.
 * @param {string} program
 */
function evaluate(program) {
  const interpreter = newInterpreter(new DisplayList());
  interpreter.runFile(new PSFile(stringOf(program).bytes));
  return interpreter.operands.map(written).join(" ");
}

/**
 * @param {[program: string, stack: string][]} cases
 */
function check(cases) {
  for (const [program, stack] of cases) assert.equal(evaluate(program), stack, program);
}

/**
 * @param {string} program
 * @param {string} error
 */
function fails(program, error) {
  assert.throws(
    () => evaluate(program),
    (thrown) => thrown instanceof PostScriptError && thrown.name === error,
    program,
  );
}

test("tokens", () => {
  check([
    ["1 -2 +3 .5 -.25 4. 1e3 1.5E-2 16#Ff 2#101", "1 -2 3 0.5 -0.25 4 1000 0.015 255 5"],
    ["123456789012345678 0.1234567890123456789\r\n7", "123456789012345680 0.12345678901234568 7"],
    ["/-  /1a /.5x /a/b{-.a 1-2}", "/- /1a /.5x /a /b {-.a 1-2}"],
    ["% (comment\r1% another }\n2", "1 2"],
    ["(a(b)c) (\\(\\)\\\\\\101\\7\\n) (x\\\ny) (p\r\nq)", "(a(b)c) (()\\A\x07\n) (xy) (p\nq)"],
    ["<4 1 42 4> <> <~87cURDZ~>", "(AB@) () (Hello)"],
    ["{1 {2 {}} % }\n 3}[4]<</a 5>>", "{1 {2 {}} 3} [4] <1>"],
    ["/x 7 def {//x x}", "{7 x}"],
    ["/x 7 def\n\n\0\fx x", "7 7"],
  ]);
  for (const program of ["(a", "{1", "}", ">"]) fails(program, "syntaxerror");
  fails("{//nothing}", "undefined");
});

test("numbers and booleans", () => {
  check([
    ["7 2 idiv -7 2 idiv 7 -3 mod -7 3 mod 7 2 div", "3 -3 1 -1 3.5"],
    ["-2.5 round 2.5 round -2.5 truncate -2.5 floor -2.5 ceiling -3 abs", "-2 3 -2 -3 -2 3"],
    ["1 0 atan -1 0 atan 0 -1 atan 90 cos 180 sin 30 sin 2 mul round", "90 270 180 0 0 1"],
    ["9 .5 exp 100 log 2 16 bitshift 131072 -16 bitshift", "3 2 131072 2"],
    ["12 10 and 12 10 or 12 10 xor true false xor 5 not true not", "8 14 6 true -6 false"],
    [
      "1 1.0 eq (a) /a eq (a) (b) lt 1 2 ge [1] dup eq [1] [1] eq",
      "true true true false true false",
    ],
    ["5 srand rand rand 5 srand rand rand 3 -1 roll eq 3 1 roll eq", "true true"],
  ]);
  fails("1 0 div", "undefinedresult");
  fails("-1 sqrt", "rangecheck");
  fails("1 (a) add", "typecheck");
  fails("1 (a) lt", "typecheck");
  fails("1 add", "stackunderflow");
});

test("the stack", () => {
  check([
    ["1 2 3 4 5 5 2 roll", "4 5 1 2 3"],
    ["1 2 3 4 5 5 -1 roll 0 7 roll", "2 3 4 5 1"],
    ["1 2 3 2 copy 4 index count", "1 2 3 2 3 1 6"],
    ["1 mark 2 3 counttomark 4 1 roll cleartomark", "1 2"],
    ["1 2 exch dup pop clear 9", "9"],
  ]);
  fails("1 2 3 4 roll", "stackunderflow");
  fails("1 2 5 index", "stackunderflow");
  fails("1 cleartomark", "unmatchedmark");
});

test("arrays, strings and their parts", () => {
  check([
    ["[1 2 3 4] dup 1 2 getinterval dup 0 9 put exch", "[9 3] [1 9 3 4]"],
    ["(abcd) dup 1 (XY) putinterval dup 2 1 getinterval", "(aXYd) (Y)"],
    ["[1 2] aload 1 3 array astore 2 array", "1 [2 [1 2] 1] [null null]"],
    ["[1 2 3] 5 array copy [4 5] 3 array dup 3 1 roll copy", "[1 2 3] [4 5 null] [4 5]"],
    [
      "(ab=cd) (=) search (abc) (x) search (abc) (ab) anchorsearch",
      "(cd) (=) (ab) true (abc) false (c) (ab) true",
    ],
    ["(12 foo) token (  ) token", "(foo) 12 true false"],
    ["3 string length [1 2] length /abc length << /a 1 /b 2 >> length", "3 2 3 2"],
    ["7 8 2 packedarray", "[7 8]"],
  ]);
  fails("[1] 1 get", "rangecheck");
  fails("(a) 1 1 getinterval", "rangecheck");
  fails("1 string (ab) exch copy", "rangecheck");
});

test("values that become others", () => {
  check([
    ["(3.7) cvi 3.7 cvi (1e2) cvr (abc) cvn (abc) cvx cvn /a cvx", "3 3 100 /abc abc a"],
    [
      "12 5 string cvs 0.1 9 string cvs 1e-7 9 string cvs 255 16 4 string cvrs",
      "(12) (0.1) (1e-07) (FF)",
    ],
    ["[1 2] cvx {a} cvlit xcheck {a} xcheck", "{1 2} false true"],
    [
      "1 type 1.5 type (a) type /a type {} type null type true type",
      "integertype realtype stringtype nametype arraytype nulltype booleantype",
    ],
  ]);
  fails("123 2 string cvs", "rangecheck");
});

test("dictionaries", () => {
  check([
    ["/a 1 def << /a 2 >> begin a /a 3 def a end a", "2 3 1"],
    ["/a 1 def 5 dict begin /a 2 store end a", "2"],
    ["/d 3 dict def d (k) 5 put d /k get d 1.0 6 put d 1 get d /x known", "5 6 false"],
    ["/a where {pop (yes)} {(no)} ifelse /add where exch pop", "(no) true"],
    ["<< /a 1 /b 2 >> { } forall", "/a 1 /b 2"],
    ["<< /a 1 >> dup /a undef length countdictstack userdict begin countdictstack", "0 3 4"],
    ["/add {sub} def 5 3 add 5 3 systemdict /add get exec", "2 8"],
  ]);
  fails("end", "dictstackunderflow");
  fails("<< /a >>", "rangecheck");
  fails("<< >> /a get", "undefined");
});

test("control", () => {
  check([
    ["0 1 1 4 {add} for 3 -1 1 {} for 0 0.5 1 {} for", "10 3 2 1 0 0.5 1"],
    ["0 0 0.1 1 {pop 1 add} for", "10"],
    ["3 {7} repeat 0 {1 add dup 5 ge {exit} if} loop", "7 7 7 5"],
    ["[1 2 3] {dup 2 eq {exit} if} forall (AB) {} forall", "1 2 65 66"],
    ["true {1} if false {2} {3} ifelse {4} exec (5 6 add) cvx exec", "1 3 4 11"],
    ["{1 stop 2} stopped {3} stopped {(x) 1 add} stopped", "1 true 3 false (x) 1 true"],
    ["/a /C {findresource} stopped /x {load} stopped", "/a /C true /x true"],
    ["<< >> /a {get} stopped /k 3 /C defineresource /k /C findresource", "<0> /a true 3 3"],
    ["{1 0 div} stopped 1 32 bitshift 1 -32 bitshift 1 4 bitshift", "1 0 true 0 0 16"],
    ["(a) readonly dup wcheck exch rcheck {1} noaccess rcheck (a) wcheck", "false true false true"],
    ["true setpacking {1} type false setpacking {1} type", "packedarraytype arraytype"],
    ["currenthalftone /HalftoneType get (=string) cvn load length", "1 128"],
    [
      "7 [3] defineuserobject 7 execuserobject mark 9 setcacheparams (a) gcheck 1 gcheck",
      "[3] false true",
    ],
    ["/Times-Roman /Font resourcestatus /Nobody /Font resourcestatus", "0 -1 true false"],
    ["{nothing} stopped $error /errorname get", "true /undefined"],
    ["{ {{stop} stopped exit} loop } stopped", "true false"],
    ["/f {1 add} bind def /g {1 add} def 1 f /add {sub} def f g", "2"],
    ["1 2 moveto 3 5 lineto 9 9 moveto pathbbox", "1 2 3 5"],
    ["/p {dup 0 gt {1 sub p} if} def 1000 p", "0"],
    ["/p {dup 0 gt {dup 1 sub p} if} def 3 p", "3 2 1 0"],
  ]);
  assert.throws(() => evaluate("/p {p 1} def p"), NotDrawn);
  assert.throws(() => evaluate("systemdict /viewclip known {{viewclip} stopped} if"), NotDrawn);
});

test("a program reads what stands in its own file", () => {
  check([
    [
      "currentfile 4 string readstring\nab c currentfile 3 string readhexstring\n4 1zz4243",
      "(ab c) true (ABC) true",
    ],
    [
      "/s 20 string def currentfile s readline\nfirst\r\ncurrentfile read\r\nX",
      "(first) true 88 true",
    ],
    ["currentfile 9 string readstring\rabc", "(abc) false"],
    ["currentfile /ASCIIHexDecode filter cvx exec\n31203220616464>7", "3 7"],
    ["1 (gone) print (gone) = 2", "1 2"],
  ]);
});

test("restore brings dictionaries back, but those of global memory and strings", () => {
  check([
    ["/a 1 def save /a 2 def /b 3 def restore a /b where", "1 false"],
    ["/a 1 def save save /a 2 def restore /a 3 def a exch restore a", "3 1"],
    ["/a 1 def save save restore /a 2 def restore a save /a 5 def restore a", "1 1"],
    ["/s (abc) def save s 0 88 put globaldict /g 4 put restore s g", "(Xbc) 4"],
  ]);
  fails("save dup restore restore", "invalidrestore");
});
