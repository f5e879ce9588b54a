// What the page and its workers say to each other. Every request gets any number of reports and one
// answer.

/**
 * How polygons are joined, in the engine's words.
 * @typedef {object} Settings
 * @property {number} mergeLimit     most points of a polygon that is taken up; 0 is no limit
 * @property {number} minSeparators  least number of operators between two polygons
 * @property {boolean} removeMesh    outlines are stroked, too
 * @property {boolean} verbose
 */

/**
 * A gzip file to unpack. The answer is Unpacked.
 * @typedef {object} UnpackRequest
 * @property {"unpack"} kind
 * @property {Blob} packed
 */

/**
 * @typedef {object} Unpacked
 * @property {"unpacked"} kind
 * @property {Blob} text
 */

/**
 * @typedef {object} RepairRequest
 * @property {"repair"} kind
 * @property {Blob} figure
 * @property {Uint8Array<ArrayBuffer>} program  the engine's WebAssembly
 * @property {Settings} settings
 */

/**
 * @typedef {object} Repair
 * @property {"repair"} kind
 * @property {"repaired" | "no operators" | "no safe name" | "collapsed path" | "bad coordinate"
 *   | "no memory" | "failed"} status
 * @property {string} message
 * @property {number} polygonsRead
 * @property {number} polygonsLeft
 * @property {number} mergers
 * @property {number} seconds
 * @property {string} console  what the program had to say
 * @property {Blob} result
 */

/**
 * Two figures to compare. The answer is a Judgement.
 * @typedef {object} JudgeRequest
 * @property {"judge"} kind
 * @property {Blob} before
 * @property {Blob} after
 * @property {boolean} meshClosed
 * @property {number} mergers  so many polygons fewer are drawn after the repair
 */

/**
 * What the comparison found: "unknown" where the pictures show nothing to be compared or were not
 * compared in time, "not drawn" when that of the figure could not be made, "broken" when that of the
 * result alone could not, or for another reason.
 * @typedef {object} Judgement
 * @property {"judgement"} kind
 * @property {"same" | "changed" | "broken" | "unknown" | "not drawn"} verdict
 * @property {number} pixels
 * @property {number} differing  pixels that differ at all
 * @property {number} wrong      pixels that differ for the eye, too
 * @property {string} reason
 * @property {{ before: number, after: number } | null} hairlines  pixels of them in a viewer
 */

/**
 * Two figures to look at. The answer is Opened; then views can be painted.
 * @typedef {object} OpenRequest
 * @property {"open"} kind
 * @property {Blob} before
 * @property {Blob} after
 */

/**
 * @typedef {object} Opened
 * @property {"opened"} kind
 * @property {[number, number, number, number]} box  left, bottom, right, top in points
 */

/**
 * The part of a page that a canvas shows.
 * @typedef {object} View
 * @property {number} scale   pixels a point
 * @property {number} left    x of the left edge in points
 * @property {number} top     y of the upper edge in points
 * @property {number} width   in pixels
 * @property {number} height
 */

/**
 * A view to paint. Asked for another one meanwhile, the worker gives this one up without an answer.
 * @typedef {object} PaintRequest
 * @property {"paint"} kind
 * @property {View} view
 */

/**
 * @typedef {object} Painted
 * @property {"painted"} kind
 * @property {View} view
 * @property {ImageBitmap} before
 * @property {ImageBitmap} after
 */

/**
 * Asks where hairlines are densest in the figure before.
 * @typedef {object} FindMeshRequest
 * @property {"find mesh"} kind
 */

/**
 * @typedef {object} Mesh
 * @property {"mesh"} kind
 * @property {{ x: number, y: number } | null} place  in points; null where there are no hairlines
 */

/**
 * @typedef {object} Progress
 * @property {"progress"} kind
 * @property {number} fraction
 */

/**
 * The answer to a request that came to nothing.
 * @typedef {object} Failure
 * @property {"failure"} kind
 * @property {string} reason
 */

/** @typedef {UnpackRequest | RepairRequest | JudgeRequest | OpenRequest | PaintRequest | FindMeshRequest} Request */
/** @typedef {Unpacked | Repair | Judgement | Opened | Painted | Mesh | Progress | Failure} Reply */

export {};
