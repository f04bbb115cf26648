// Tables that can be sorted and that show long lists page by page.
import { h } from "./dom.js";
import { count } from "./text.js";

/**
 * A table. `columns`: {title, value(row), cell(row), align, first}: `value` is what is sorted by, `cell` what is shown,
 * `first` the direction in which a click sorts first ("ascending" if not given). `detail(row)` makes what a row opens.
 * Returns the element, and `show(rows)` that replaces the rows.
 */
export function table({ caption, columns, rows, pageSize = 100, detail = null, empty = "Nothing to show.", sort = null }) {
  let all = rows;
  let shown = pageSize;
  let order = sort;
  const body = h("tbody");
  const more = h("p", { class: "more" });
  const headings = columns.map((column, index) => headingOf(column, index));
  const element = h("div", { class: "table" },
    h("div", { class: "scroll", tabindex: "0", role: "region", "aria-label": caption },
      h("table", null, h("caption", null, caption), h("thead", null, h("tr", null, headings)), body)),
    more);

  function headingOf(column, index) {
    const sortable = column.value !== undefined;
    return h("th", { scope: "col", class: column.align ?? "" },
      sortable
        ? h("button", { type: "button", class: "sort", click: () => sortBy(index) }, column.title)
        : column.title);
  }

  function sortBy(index) {
    const first = columns[index].first ?? "ascending";
    const other = first === "ascending" ? "descending" : "ascending";
    order = { column: index, direction: order?.column === index && order.direction === first ? other : first };
    render();
  }

  function sorted() {
    if (!order) {
      return all;
    }
    const { value } = columns[order.column];
    const turn = order.direction === "ascending" ? 1 : -1;
    const none = (x) => x === null || x === undefined;
    return all.toSorted((a, b) => {
      const [x, y] = [value(a), value(b)];
      if (none(x) || none(y)) {
        return none(x) - none(y);
      }
      return turn * (typeof x === "number" ? x - y : x < y ? -1 : x > y ? 1 : 0);
    });
  }

  function rowOf(row) {
    const cells = columns.map((column, index) =>
      h(index === 0 ? "th" : "td", { class: column.align ?? "", scope: index === 0 ? "row" : null }, column.cell(row)));
    return detail ? [h("tr", null, cells), ...detail(row, columns.length)] : [h("tr", null, cells)];
  }

  function render() {
    const page = sorted().slice(0, shown);
    headings.forEach((heading, index) => {
      if (order?.column === index) {
        heading.setAttribute("aria-sort", order.direction);
      } else {
        heading.removeAttribute("aria-sort");
      }
    });
    body.replaceChildren(...page.flatMap(rowOf));
    if (page.length === 0) {
      body.append(h("tr", { class: "empty" }, h("td", { colspan: columns.length }, empty)));
    }
    more.replaceChildren();
    if (all.length > page.length) {
      more.append(
        `${count(page.length)} of ${count(all.length)} are shown. `,
        h("button", { type: "button", click: () => grow(shown + pageSize) }, `Show ${count(Math.min(pageSize, all.length - page.length))} more`));
    }
  }

  function grow(size) {
    shown = size;
    render();
  }

  function show(next) {
    all = next;
    shown = pageSize;
    render();
  }

  render();
  return { element, show, grow };
}
