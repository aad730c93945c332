// Short ways to the page's elements. Text is only ever set as text: it may come from anywhere.

export const byId = (id) => document.getElementById(id);

const SVG = "http://www.w3.org/2000/svg";

function fill(made, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== null && value !== undefined) made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

export function element(name, attributes = {}, ...children) {
  return fill(document.createElement(name), attributes, children);
}

export function svgElement(name, attributes = {}, ...children) {
  return fill(document.createElementNS(SVG, name), attributes, children);
}

/** Leaves an unchanged text alone, so that a selection in it stays. */
export function setText(target, text) {
  if (target.textContent !== text) target.textContent = text;
}

export function setHidden(target, isHidden) {
  if (target.hidden !== isHidden) target.hidden = isHidden;
}

/** Puts what has changed only: `make` is called when the text of `content` is another one. */
export function createOnChange() {
  let shown;
  return (content, make) => {
    const text = JSON.stringify(content);
    if (text === shown) return;
    shown = text;
    make();
  };
}
