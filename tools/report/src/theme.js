// Light, dark, or as the system has it.
import { h } from "./dom.js";

const key = "morvaai-report-theme";

function stored() {
  try {
    return localStorage.getItem(key);
  } catch {
    return null;
  }
}

function apply(theme) {
  document.documentElement.dataset.theme = theme;
  try {
    localStorage.setItem(key, theme);
  } catch {
    // A browser that stores nothing for files shows the choice all the same.
  }
}

export function themeSwitch() {
  const known = ["auto", "light", "dark"];
  const now = known.includes(stored()) ? stored() : "auto";
  document.documentElement.dataset.theme = now;
  const select = h("select", { id: "theme", change: (event) => apply(event.target.value) },
    known.map((name) => h("option", { value: name, selected: name === now }, name[0].toUpperCase() + name.slice(1))));
  return h("label", { class: "theme" }, "Theme ", select);
}
