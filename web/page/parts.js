// Parts of the page's templates, found by name.

/**
 * @param {ParentNode} root
 * @param {string} name
 * @returns {HTMLElement}
 */
export function part(root, name) {
  const found = root.querySelector(`[data-part="${name}"]`);
  if (!(found instanceof HTMLElement)) throw new Error(`the page lacks its part “${name}”`);
  return found;
}

/**
 * A copy of what a template holds.
 * @param {string} id
 * @returns {HTMLElement}
 */
export function fromTemplate(id) {
  const template = document.getElementById(id);
  if (!(template instanceof HTMLTemplateElement)) throw new Error(`the page lacks “${id}”`);
  const copy = template.content.firstElementChild?.cloneNode(true);
  if (!(copy instanceof HTMLElement)) throw new Error(`“${id}” is empty`);
  return copy;
}
