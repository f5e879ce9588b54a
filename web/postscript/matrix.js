// Matrices: x' = a x + c y + e, y' = b x + d y + f.

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */

/** @type {Matrix} */
export const identity = [1, 0, 0, 1, 0, 0];

/**
 * First m, then n.
 * @param {Matrix} m
 * @param {Matrix} n
 * @returns {Matrix}
 */
export function multiply(m, n) {
  return [
    m[0] * n[0] + m[1] * n[2],
    m[0] * n[1] + m[1] * n[3],
    m[2] * n[0] + m[3] * n[2],
    m[2] * n[1] + m[3] * n[3],
    m[4] * n[0] + m[5] * n[2] + n[4],
    m[4] * n[1] + m[5] * n[3] + n[5],
  ];
}

/**
 * The matrix that undoes m, or null if there is none.
 * @param {Matrix} m
 * @returns {Matrix | null}
 */
export function invert(m) {
  const determinant = m[0] * m[3] - m[1] * m[2];
  if (determinant === 0 || !Number.isFinite(determinant)) return null;
  const a = m[3] / determinant;
  const b = -m[1] / determinant;
  const c = -m[2] / determinant;
  const d = m[0] / determinant;
  return [a, b, c, d, -(m[4] * a + m[5] * c), -(m[4] * b + m[5] * d)];
}

/**
 * @param {Matrix} m
 * @param {number} x
 * @param {number} y
 * @returns {[number, number]}
 */
export function transform(m, x, y) {
  return [m[0] * x + m[2] * y + m[4], m[1] * x + m[3] * y + m[5]];
}

/**
 * A distance, which no translation moves.
 * @param {Matrix} m
 * @param {number} x
 * @param {number} y
 * @returns {[number, number]}
 */
export function transformDistance(m, x, y) {
  return [m[0] * x + m[2] * y, m[1] * x + m[3] * y];
}

/** @param {number} degrees @returns {Matrix} */
export function rotation(degrees) {
  const [cosine, sine] = direction(degrees);
  return [cosine, sine, -sine, cosine, 0, 0];
}

/**
 * Cosine and sine; right angles are exact.
 * @param {number} degrees
 * @returns {[number, number]}
 */
export function direction(degrees) {
  const quarters = degrees / 90;
  if (Number.isInteger(quarters)) {
    const turn = ((quarters % 4) + 4) % 4;
    return [[1, 0, -1, 0][turn], [0, 1, 0, -1][turn]];
  }
  const radians = (degrees * Math.PI) / 180;
  return [Math.cos(radians), Math.sin(radians)];
}
