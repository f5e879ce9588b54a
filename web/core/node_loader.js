// The compiler's loader is older than Node's own fetch, which knows no files: without that the loader
// reads the module itself. It runs in a file of CommonJS.
// @ts-nocheck
// eslint-disable-next-line no-var, no-unused-vars
var fetch;
