import js from "@eslint/js";
import globals from "globals";

export default [
  { ignores: ["node_modules/"] },
  js.configs.recommended,
  {
    languageOptions: { globals: { ...globals.browser, ...globals.worker, ...globals.node } },
    rules: {
      "max-lines": ["error", 400],
      "no-var": "error",
      "prefer-const": "error",
      eqeqeq: "error",
      curly: ["error", "multi-line"],
    },
  },
];
