// Some programs write the same clip anew for every polygon: here they are told apart only where
// their shapes differ.

/** @typedef {import("./display_list.js").DisplayList} DisplayList */

/**
 * For every clip the first one that has the same shape.
 * @param {DisplayList} list
 * @returns {Int32Array}
 */
export function clipShapes(list) {
  const bits = new Int32Array(list.coordinates.values.buffer);
  const shapes = new Int32Array(list.clips.length);
  /** By their hashes. @type {Map<number, number[]>} */
  const known = new Map();
  list.clips.forEach(({ parent, path, evenOdd }, i) => {
    const parentShape = parent < 0 ? parent : shapes[parent];
    const { begin, end } = coordinatesOf(list, path);
    let hash = 2 * parentShape + (evenOdd ? 1 : 0);
    for (let n = begin; n < end; ++n) hash = Math.imul(hash, 31) + bits[n];
    const alike = known.get(hash | 0) ?? [];
    if (alike.length === 0) known.set(hash | 0, alike);
    const same = alike.find((other) => {
      const clip = list.clips[other];
      const hasSameParent = (clip.parent < 0 ? clip.parent : shapes[clip.parent]) === parentShape;
      return hasSameParent && clip.evenOdd === evenOdd && isSamePath(list, clip.path, list, path);
    });
    if (same === undefined) alike.push(i);
    shapes[i] = same ?? i;
  });
  return shapes;
}

/**
 * @param {DisplayList} list
 * @param {number} path
 */
function coordinatesOf(list, path) {
  const begin = list.coordinateStarts.values[path];
  const isLast = path + 1 === list.pathCount;
  return {
    begin,
    end: isLast ? list.coordinates.length : list.coordinateStarts.values[path + 1],
  };
}

/**
 * Whether two paths have the same parts at the same places.
 * @param {DisplayList} listA
 * @param {number} a
 * @param {DisplayList} listB
 * @param {number} b
 */
export function isSamePath(listA, a, listB, b) {
  const verbsA = listA.verbs.values.subarray(listA.verbStarts.values[a], listA.verbEnd(a));
  const verbsB = listB.verbs.values.subarray(listB.verbStarts.values[b], listB.verbEnd(b));
  const partA = coordinatesOf(listA, a);
  const partB = coordinatesOf(listB, b);
  return (
    areEqual(verbsA, verbsB) &&
    areEqual(
      listA.coordinates.values.subarray(partA.begin, partA.end),
      listB.coordinates.values.subarray(partB.begin, partB.end),
    )
  );
}

/**
 * @param {Uint8Array | Float32Array} a
 * @param {Uint8Array | Float32Array} b
 */
function areEqual(a, b) {
  return a.length === b.length && a.every((value, i) => value === b[i]);
}
