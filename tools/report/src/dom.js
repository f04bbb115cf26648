// Elements of the page. What comes from documents only ever becomes text of an element or a value of an
// attribute that holds no code.

/** An element. `props`: attributes; functions are listeners, by the name of their event; null and false are left out. */
export function h(tag, props, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(props ?? {})) {
    if (typeof value === "function") {
      element.addEventListener(name, value);
    } else if (value !== null && value !== undefined && value !== false) {
      element.setAttribute(name, value === true ? "" : value);
    }
  }
  element.append(...children.flat(2).filter((child) => child !== null && child !== undefined && child !== false));
  return element;
}

/** The element with a length, a part of 1, for its style. */
export function sized(element, part) {
  const shown = Number.isFinite(part) ? Math.min(Math.max(part, 0), 1) : 0;
  element.style.setProperty("--part", `${(shown * 100).toFixed(2)}%`);
  return element;
}

/** The bar of a weight. */
export function bar(part, kind = "") {
  return sized(h("span", { class: `bar ${kind}`, "aria-hidden": "true" }), part);
}

/** A part of the page with a heading, which the navigation leads to. */
export function section(id, title, about, ...children) {
  return h("section", { id, "aria-labelledby": `${id}-title` },
    h("h2", { id: `${id}-title` }, title),
    about && h("p", { class: "about" }, about),
    children);
}

/** A part that opens and closes. What it holds is made when it is first opened. */
export function opening(props, summary, make) {
  const element = h("details", props, h("summary", null, summary));
  let isMade = false;
  const fill = () => {
    if (element.open && !isMade) {
      isMade = true;
      element.append(...[make()].flat());
    }
  };
  element.addEventListener("toggle", fill);
  // The event comes later than a print that opens everything.
  element.fill = fill;
  if (props?.open) {
    fill();
  }
  return element;
}
