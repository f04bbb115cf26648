// What all reports have: the head, the navigation, the figures at the top, what goes before a print.
import { h } from "./dom.js";
import { themeSwitch } from "./theme.js";
import { count } from "./text.js";

/** The head of the page, with links to its sections. */
export function head(title, about, sections) {
  document.title = `${title} \u2013 morvaai report`;
  return [
    h("a", { class: "skip", href: "#content" }, "Skip to the content"),
    h("header", null,
      h("div", { class: "line" }, h("span", { class: "product" }, "morvaai report"), themeSwitch()),
      h("h1", null, h("bdi", null, title)),
      h("p", { class: "about" }, about)),
    h("nav", { "aria-label": "Sections" }, sections.map((each) =>
      h("a", { href: `#${each.id}` }, each.querySelector("h2").textContent))),
  ];
}

/** Figures: [name, value]; those without a value are left out. */
export const figures = (list) =>
  h("dl", { class: "figures" }, list.filter(([, value]) => value !== null && value !== undefined).map(([name, value]) =>
    h("div", null, h("dt", null, name), h("dd", null, typeof value === "number" ? count(value) : value))));

/** What the reader has to know beside the figures. */
export const notes = (list) => {
  const said = list.filter(Boolean);
  return said.length > 0 && h("ul", { class: "notes" }, said.map((text) => h("li", null, text)));
};

/** Opens and fills all that opens, for a print, and closes it behind. */
export function openForPrint(tables) {
  let opened = [];
  addEventListener("beforeprint", () => {
    opened = [...document.querySelectorAll("details:not([open])")];
    for (const each of opened) {
      each.open = true;
      each.fill?.();
    }
    tables.forEach((each) => each.grow(500));
  });
  addEventListener("afterprint", () => {
    opened.forEach((each) => (each.open = false));
  });
}

/** Opens what the address leads to, and what it stands in, and goes there. */
export function followAddress() {
  const follow = () => {
    const target = location.hash.length > 1 && document.getElementById(decodeURIComponent(location.hash.slice(1)));
    if (!target) {
      return;
    }
    for (let each = target; each; each = each.parentElement) {
      if (each instanceof HTMLDetailsElement) {
        each.open = true;
        each.fill?.();
      }
    }
    target.scrollIntoView({ block: "start" });
    target.querySelector("summary")?.focus({ preventScroll: true });
  };
  addEventListener("hashchange", follow);
  follow();
}
