// Texts and numbers as they are shown.

const hidden = /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u115f\u1160\u180e\u200b\u200e\u200f\u2028-\u202e\u2060-\u206f\u3164\ufeff\ufff9-\ufffb]/gu;

/** A text of a document: what would not be seen, or would turn the rest around, is named. */
export function plain(text) {
  return String(text).replace(hidden, (c) => `\u2039U+${c.codePointAt(0).toString(16).toUpperCase().padStart(4, "0")}\u203a`);
}

/** The text, or its beginning with an ellipsis. */
export function short(text, length) {
  const characters = Array.from(plain(text));
  return characters.length > length ? `${characters.slice(0, length - 1).join("")}\u2026` : characters.join("");
}

/** The text, or its beginning and its end, which of a path says more. */
export function shortPath(text, length) {
  const characters = Array.from(plain(text));
  const head = Math.floor((length - 1) / 3);
  return characters.length > length
    ? `${characters.slice(0, head).join("")}\u2026${characters.slice(head + 1 - length).join("")}`
    : characters.join("");
}

/** About how wide a text is in the font of the page, in pixels. */
export const textWidth = (text, size) => size * [...text].reduce((sum, c) => sum + (c > "\u2e80" ? 1 : 0.6), 0);

const whole = new Intl.NumberFormat("en-US");

export const count = (n) => whole.format(n);

export const counted = (n, one, several) => `${count(n)} ${n === 1 ? one : several}`;

/** A distance or weight; a dash for none. */
export function number(x, digits = 3) {
  if (x === null || x === undefined) {
    return "\u2013";
  }
  return Math.abs(x) >= 1e6 || (x !== 0 && Math.abs(x) < 1e-4) ? x.toPrecision(3) : x.toFixed(digits);
}

export const signed = (x) => (x === null ? "\u2013" : `${x > 0 ? "+" : x < 0 ? "\u2212" : ""}${number(Math.abs(x))}`);

/** The folder that all paths begin with, with its slash; empty where there is none. */
export function commonFolder(paths) {
  if (paths.length < 2) {
    return "";
  }
  let prefix = paths[0];
  for (const path of paths) {
    while (!path.startsWith(prefix)) {
      prefix = prefix.slice(0, -1);
    }
  }
  return prefix.slice(0, prefix.lastIndexOf("/") + 1);
}
