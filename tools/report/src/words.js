// Words with their weights as bars.
import { bar, h } from "./dom.js";
import { count, number, plain } from "./text.js";

/** The heaviest words of a class. */
export function wordTable(one) {
  const most = one.words.reduce((a, [, weight]) => Math.max(a, weight ?? 0), 0);
  const left = one.word_count - one.words.length;
  return h("div", { class: "words" },
    h("table", null,
      h("caption", null, left > 0 ? `The ${count(one.words.length)} heaviest of ${count(one.word_count)} words` : "Words"),
      h("thead", { class: "unseen" }, h("tr", null, h("th", { scope: "col" }, "Word"), h("th", { scope: "col" }, "Weight"))),
      h("tbody", null, one.words.map(([word, weight]) =>
        h("tr", null,
          h("th", { scope: "row" }, h("bdi", null, plain(word))),
          h("td", null, h("span", { class: "weighted" }, bar(weight / most), h("span", { class: "value" }, number(weight)))))))));
}

/** Words of a document and a class, back to back. `rows`: [word, weight in the document, weight in the class]. */
export function comparisonTable({ caption, rows, nameOfDocument, nameOfClass }) {
  const most = rows.reduce((a, row) => Math.max(a, row[1] ?? 0, row[2] ?? 0), 0);
  const withProduct = rows.some((row) => row[1] && row[2]);
  const side = (weight, kind) => h("td", { class: kind },
    h("span", { class: "weighted" }, weight ? [bar(weight / most, kind), h("span", { class: "value" }, number(weight))] : h("span", { class: "value none" }, "\u2013")));
  return h("table", { class: "comparison" },
    h("caption", null, caption),
    h("thead", null, h("tr", null,
      h("th", { scope: "col", class: "document" }, nameOfDocument),
      h("th", { scope: "col", class: "word" }, "Word"),
      h("th", { scope: "col", class: "class" }, nameOfClass),
      withProduct && h("th", { scope: "col", class: "right" }, "Product"))),
    h("tbody", null, rows.map(([word, inDocument, inClass]) => h("tr", null,
      side(inDocument, "document"),
      h("th", { scope: "row", class: "word" }, h("bdi", null, plain(word))),
      side(inClass, "class"),
      withProduct && h("td", { class: "right" }, number(inDocument && inClass ? inDocument * inClass : null))))));
}
