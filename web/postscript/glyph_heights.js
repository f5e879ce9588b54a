// From where to where the ink of a glyph goes up, for the characters 32 to 126 of the fonts that every
// printer has: two digits of base 36 for the bottom and two for the top, in thousandths of the font's
// size and 360 more. Programs place labels by it.

import { charactersOf, partsOfAccented } from "./glyph_names.js";
import { encodings } from "./encodings.js";

const offset = 360;
const heightOfAccents = 200;

const tables = {
  sans: `
a0a0a0u9mwtp9gtd6ive9gtp9dtpntu944u944u9m9u99qn65xcwgoioa0cw9gu99du3a0u3a1u39du3a0u39dtp9du3a0tp
9du39du3a0ok5xok9rn6d3jt9rn6a0ul62ula0u9a0u99dula0u9a0u9a0u99dula0u9a0u99du9a0u9a0u9a0u9a0u99dul
a0u98dula0u99dula0u99du9a0u9a0u9a0u9a0u9a0u944u99gu944u9j5tp546in9tp9doz9du99doz9du99doza0uc3yoz
a0u9a0u93yu9a0u9a0u9a0oza0oz9doz3yoz3yoza0oz9doz9dsk9doka0oka0oka0ok3yoka0ok44u944u944u9hgm6
`,
  serif: `
a0a09rsslzssa0se7lu79nss9nssm1ss53ss53sshdssa0o263cufeh59pcs9mss9mssa0ssa0ss9mssa0ss9mt49mt09sse
9mss9ess9pmr63mrbeqkdckqbeqk9sss9mssa0sqa0se9mssa0sea0sea0se9mssa0sea0se9msea0sea0sea0se9pse9mss
a0se52ssa0se9mssa0se9mse9pse9psea0sea0sea0se5ose9mss5osei7s96c7qm1ss9qms9qsz9qms9qsz9qmsa0sz3yms
a0sza0sz3ysza0sza0sza0msa0ms9qms3zms3zmsa0ms9qms9qq39qmi9mmi9mmia0mi3ymia0mi4zsw33ut4zswfij7
`,
  symbol: `
a0a09nt2a0spa0rja0sp9tsp9nsr9nnz58sw58swdjp6a0ot6ocugni69ncsa0sp9nt2a0spa0t29nt2a0sw9ntf9nt19tsp
9nt29nt29nmv6omva0oidykva0oi9nt2a0n7a0spa0spa0spa0t4a0spa0spa0spa0spa0sp9nt2a0spa0t4a0spa0sp9nt2
a0sp9nt2a0spa0spa0spa0sp3uo9a0t2a0spa0t2a0sp5fsp9nm15fspa0sp304axtzd9no93uuk46o99nuk9no93ut23xo9
3uo99no93uo9a0o99nuk3xnw9no99no99nnw9nt23wo99nnw9nnw9no99nq79no93uva3uo93uv05fsp53sp5fspfgj1
`,
};

/**
 * The bottom and the top of a glyph in ems; of one without ink both are 0.
 * @param {"sans" | "serif" | "symbol"} table
 * @param {string} name
 * @returns {[number, number]}
 */
export function inkHeight(table, name) {
  const index = table === "symbol" ? encodings.SymbolEncoding.indexOf(name) : codeOf(name);
  if (index <= 32 || index > 126) return name === "space" ? [0, 0] : [0, 0.7];
  const digits = tables[table].replace(/\s/g, "").slice(4 * (index - 32));
  const bottom = parseInt(digits.slice(0, 2), 36) - offset;
  const top = parseInt(digits.slice(2, 4), 36) - offset;
  return [bottom / 1000, (top + (partsOfAccented(name) ? heightOfAccents : 0)) / 1000];
}

/** @param {string} name */
function codeOf(name) {
  const letter = partsOfAccented(name)?.letter;
  return (letter ?? charactersOf(name)).charCodeAt(0);
}
