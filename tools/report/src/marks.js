// How classes are told apart: by eight colours that colour-blind people can tell, and by seven shapes, so that
// only the 57th class looks like the first.
import { h } from "./dom.js";

const shapes = ["circle", "square", "triangle", "diamond", "cross", "star", "wye"];

export const colourOf = (index) => (index < 0 ? "var(--muted)" : `var(--class-${index % 8})`);
export const shapeOf = (index) => (index < 0 ? "times" : shapes[index % shapes.length]);

const outlines = {
  circle: "M0,-5A5,5,0,1,1,0,5A5,5,0,1,1,0,-5Z",
  square: "M-4.4,-4.4H4.4V4.4H-4.4Z",
  triangle: "M0,-5.8L5.2,4H-5.2Z",
  diamond: "M0,-6.4L4.2,0L0,6.4L-4.2,0Z",
  cross: "M-5.4,-1.8H-1.8V-5.4H1.8V-1.8H5.4V1.8H1.8V5.4H-1.8V1.8H-5.4Z",
  star: "M0,-6.4L1.5,-2L6.1,-2L2.4,0.8L3.8,5.2L0,2.5L-3.8,5.2L-2.4,0.8L-6.1,-2L-1.5,-2Z",
  wye: "M0,-1.2L4.6,-3.9L6.1,-1.3L1.5,1.4V6.6H-1.5V1.4L-6.1,-1.3L-4.6,-3.9Z",
  times: "M-4,-5L0,-1L4,-5L5,-4L1,0L5,4L4,5L0,1L-4,5L-5,4L-1,0L-5,-4Z",
};

/** The sign of a class, beside its name. */
export function sign(index) {
  const svg = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  svg.setAttribute("viewBox", "-8 -8 16 16");
  svg.setAttribute("class", "sign");
  svg.setAttribute("aria-hidden", "true");
  const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
  path.setAttribute("d", outlines[shapeOf(index)]);
  path.setAttribute("fill", colourOf(index));
  svg.append(path);
  return svg;
}

/** The sign and the name. */
export const named = (index, name) => h("span", { class: "named" }, sign(index), h("bdi", null, name));
