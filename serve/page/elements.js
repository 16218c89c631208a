"use strict";

// Making elements. All text is inserted as text.

const SVG = "http://www.w3.org/2000/svg";

function fill(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}
export const el = (name, attributes = {}, ...children) => fill(document.createElement(name), attributes, children);
export const svg = (name, attributes = {}, ...children) => fill(document.createElementNS(SVG, name), attributes, children);
// Text that comes from rows and files: whatever turns its reading direction turns nothing else.
export const foreign = (text) => el("bdi", {}, String(text));
