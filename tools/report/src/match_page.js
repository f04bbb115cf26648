// The report of a match: why each file was taken by a class, or by none.
import { bar, h, opening, section, sized } from "./dom.js";
import { figures, head, notes, openForPrint } from "./frame.js";
import { table } from "./table.js";
import { commonFolder, count, counted, number, plain, signed } from "./text.js";
import { comparisonTable } from "./words.js";

const labels = { accepted: "accepted", refused: "refused", failed: "failed" };

const badge = (decision) => h("span", { class: `badge ${decision}` }, labels[decision]);

/** A class by its name, with its box where several were asked. */
function nameOf(data, index) {
  const one = data.classes[index];
  return data.boxes.length > 1 ? `${plain(one.name)} (box ${plain(data.boxes[one.box].id)})` : plain(one.name);
}

const isByMembers = (one) => one.minpts !== undefined;

/** One sentence on how a file lies to a class. */
function sentence(data, file) {
  const lies = file.classes[0];
  if (!lies) {
    return ["No class was asked."];
  }
  const one = data.classes[lies.class];
  const name = h("b", null, h("bdi", null, nameOf(data, lies.class)));
  const accepted = file.decision === "accepted";
  if (isByMembers(one)) {
    const need = `${counted(lies.neighbours, "file", "files")} of the class within eps ${number(one.limit)}, and ${count(one.minpts)} needed`;
    const nearest = lies.nearest && ["; the nearest is ", h("bdi", null, plain(lies.nearest)), ` at ${number(lies.nearest_distance)}`];
    return accepted
      ? ["Taken by ", name, `: ${need}`, nearest, "."]
      : ["Closest to ", name, `: ${need}`, nearest, lies.distance !== null && lies.excess > 0
          ? `. To have enough of them, eps would have to be ${number(lies.distance)}, ${number(lies.excess)} more.` : "."];
  }
  if (accepted) {
    return ["Taken by ", name, `: its center is the nearest of all, ${number(lies.distance)} away, within its radius of ${number(one.limit)} with ${number(-lies.excess)} to spare.`];
  }
  if (lies.nearer !== undefined) {
    return ["Not taken by ", name, `, ${number(lies.distance)} away: the center of `, h("b", null, h("bdi", null, nameOf(data, lies.nearer))), " is nearer, and only the nearest class of a box may take a file."];
  }
  return ["Closest to ", name, `: its center is ${number(lies.distance)} away, ${number(lies.excess)} more than its radius of ${number(one.limit)}.`];
}

/** A bar for a distance with a mark at the limit. */
function reach(distance, limit, most) {
  const track = h("span", { class: "reach", "aria-hidden": "true" });
  track.append(sized(h("span", { class: `bar ${distance !== null && distance <= limit ? "within" : "beyond"}` }), (distance ?? most) / most), sized(h("span", { class: "limit" }), limit / most));
  return track;
}

function nearestTable(data, file) {
  const most = 1.05 * file.classes.reduce((a, lies) => Math.max(a, lies.distance ?? 0, data.classes[lies.class].limit ?? 0), 0) || 1;
  return h("table", { class: "nearest" },
    h("caption", null, "The classes it lies nearest to"),
    h("thead", null, h("tr", null, h("th", { scope: "col" }, "Class"), h("th", { scope: "col" }, "Distance, and the limit as a line"),
      h("th", { scope: "col", class: "right" }, "Distance"), h("th", { scope: "col", class: "right" }, "Limit"), h("th", { scope: "col", class: "right" }, "Over it"))),
    h("tbody", null, file.classes.map((lies) => {
      const { limit } = data.classes[lies.class];
      return h("tr", null,
        h("th", { scope: "row" }, h("bdi", null, nameOf(data, lies.class)), lies.nearer !== undefined && h("span", { class: "muted" }, " not the nearest")),
        h("td", { class: "track" }, reach(lies.distance, limit, most)),
        h("td", { class: "right" }, number(lies.distance)), h("td", { class: "right" }, number(limit)), h("td", { class: "right" }, signed(lies.excess)));
    })));
}

/** Where the squared distance comes from. */
function squaresText(words) {
  const all = words.squares.reduce((a, x) => a + (x ?? 0), 0);
  const part = (x) => `${number(all > 0 ? (100 * x) / all : 0, 0)}\u202f%`;
  return `Of the squared distance ${number(all)}, ${part(words.squares[0])} come from different weights of shared words, ${part(words.squares[1])} from words that only the document has, ${part(words.squares[2])} from words that only the class has.`;
}

function wordsPart(data, file) {
  const { words } = file;
  if (!words) {
    return [h("p", { class: "muted" }, "This box compares fingerprints, not words.")];
  }
  const one = data.classes[file.classes[0].class];
  const sides = { nameOfDocument: "In the document", nameOfClass: isByMembers(one) ? "In the nearest file" : "In the class" };
  const text = (n) => data.words[n] ?? "";
  const caption = (shown, all, what) => (shown < all ? `${what}: the ${shown} heaviest of ${count(all)}` : `${what}: ${count(all)}`);
  const [shared, document, its] = words.counts;
  const part = (list, title, rows) => list.length > 0 && comparisonTable({ caption: title, rows, ...sides });
  return [
    h("p", null, squaresText(words)),
    shared === 0 && h("p", null, "They share no word."),
    h("div", { class: "comparisons" },
      part(words.shared, caption(words.shared.length, shared, "Shared words"), words.shared.map(([n, a, b]) => [text(n), a, b])),
      h("div", null,
        part(words.document_only, caption(words.document_only.length, document, "Words that the class lacks"), words.document_only.map(([n, a]) => [text(n), a, null])),
        part(words.class_only, caption(words.class_only.length, its, "Words that the document lacks"), words.class_only.map(([n, b]) => [text(n), null, b])))),
  ];
}

function detailOf(data, file, columns) {
  if (file.decision === "failed") {
    return [h("tr", { class: "detail" }, h("td", { colspan: columns }, plain(file.reason)))];
  }
  const details = opening({ id: `file-${file.index}` }, "Why, word by word", () => [
    nearestTable(data, file), ...wordsPart(data, file),
  ].filter(Boolean));
  return [h("tr", { class: "detail" }, h("td", { colspan: columns }, h("p", { class: "why" }, sentence(data, file)), details))];
}

function overview(data, folder) {
  const listed = data.classes.filter((one) => one.asked).length;
  return section("overview", "Overview", null,
    figures([
      ["Files", data.counts.files], ["Accepted", data.counts.accepted], ["Refused", data.counts.refused], ["Failed", data.counts.failed],
      [data.boxes.length === 1 ? "Box" : "Boxes", data.boxes.map((box) => plain(box.id)).join(", ")], ["Classes asked", data.counts.classes],
    ]),
    notes([
      folder && ["All files are below ", h("code", null, plain(folder)), "."],
      data.files.length < data.counts.files && `The first ${count(data.files.length)} of ${count(data.counts.files)} files are listed.`,
      listed < data.counts.classes && `${counted(listed, "class is", "classes are")} listed of the ${count(data.counts.classes)}: those that a listed file lies near to.`,
      "K-means classes take a file whose nearest center of the box is theirs and lies within their radius; DBSCAN classes one that has enough of their files within eps.",
    ]));
}

function takenPart(data) {
  const taken = data.classes.map((one, index) => ({ one, index, size: 0 }));
  for (const file of data.files) {
    if (file.decision === "accepted") {
      taken[file.classes[0].class].size += 1;
    }
  }
  const rows = taken.filter((row) => row.one.asked);
  const most = rows.reduce((a, row) => Math.max(a, row.size), 0);
  const made = table({
    caption: "Classes and the files that they took",
    rows,
    sort: { column: 1, direction: "descending" },
    pageSize: 30,
    columns: [
      { title: "Class", value: (row) => row.one.name, cell: (row) => h("a", { href: "#files", "data-class": row.index }, h("bdi", null, nameOf(data, row.index))) },
      { title: "Files", value: (row) => row.size, first: "descending", cell: (row) => h("span", { class: "weighted" }, row.size > 0 && bar(row.size / most), h("span", { class: "value" }, count(row.size))) },
      { title: "Limit", value: (row) => row.one.limit, cell: (row) => `${isByMembers(row.one) ? "eps" : "radius"} ${number(row.one.limit)}`, align: "right" },
    ],
  });
  return { made, element: section("classes", "Classes", null, made.element) };
}

function filesPart(data, files) {
  const columnCount = 5;
  const nameIn = (file) => (file.classes?.length ? nameOf(data, file.classes[0].class) : "");
  const listed = table({
    caption: "Files",
    rows: files,
    pageSize: 50,
    empty: "No file goes with the filter.",
    detail: (file) => detailOf(data, file, columnCount),
    columns: [
      { title: "File", value: (file) => file.name, cell: (file) => h("bdi", { title: plain(file.file) }, plain(file.name)) },
      { title: "Decision", value: (file) => file.decision, cell: (file) => badge(file.decision) },
      { title: "Class, or the nearest", value: nameIn, cell: (file) => h("bdi", { class: file.decision === "accepted" ? "" : "muted" }, nameIn(file)) },
      { title: "Distance", value: (file) => file.classes?.[0]?.distance, cell: (file) => number(file.classes?.[0]?.distance), align: "right" },
      { title: "Over the limit", value: (file) => file.classes?.[0]?.excess, cell: (file) => signed(file.classes?.[0]?.excess ?? null), align: "right" },
    ],
  });
  const text = h("input", { type: "search", id: "filter-text", autocomplete: "off", spellcheck: "false", placeholder: "part of a path" });
  const decision = h("select", { id: "filter-decision" }, h("option", { value: "" }, "All decisions"), Object.keys(labels).map((name) => h("option", { value: name }, labels[name])));
  const its = h("select", { id: "filter-class" }, h("option", { value: "" }, "All classes"), data.classes.map((one, index) => one.asked && h("option", { value: index }, nameOf(data, index))));
  const summary = h("output", { class: "muted" }, counted(files.length, "file", "files"));
  const apply = () => {
    const part = text.value.toLowerCase();
    const rows = files.filter((file) => (decision.value === "" || file.decision === decision.value)
      && (its.value === "" || file.classes?.[0]?.class === Number(its.value)) && file.file.toLowerCase().includes(part));
    summary.textContent = `${count(rows.length)} of ${counted(files.length, "file", "files")}`;
    listed.show(rows);
  };
  text.addEventListener("input", apply);
  decision.addEventListener("change", apply);
  its.addEventListener("change", apply);
  const choose = (index) => {
    its.value = String(index);
    apply();
  };
  const form = h("form", { class: "filters", submit: (event) => event.preventDefault(), role: "search" },
    h("label", { for: "filter-decision" }, "Decision ", decision), h("label", { for: "filter-class" }, "Class ", its), h("label", { for: "filter-text" }, "File ", text), summary);
  const showFile = () => {
    const index = Number(/^#file-(\d+)$/.exec(location.hash)?.[1] ?? -1);
    const file = files[index];
    if (file && !document.getElementById(`file-${index}`)) {
      text.value = file.file;
      apply();
    }
  };
  return { listed, choose, showFile, element: section("files", "Files", "The distance is that to the center; of a class that keeps its files, how far the file must reach for as many of them as are needed.", form, listed.element) };
}

/** The whole page. */
export function matchPage(data) {
  const folder = commonFolder(data.files.map((file) => file.file));
  const files = data.files.map((file, index) => ({ ...file, index, name: file.file.slice(folder.length) }));
  const listed = filesPart(data, files);
  const taken = takenPart(data);
  taken.element.addEventListener("click", (event) => {
    const index = event.target.closest("a[data-class]")?.dataset.class;
    if (index !== undefined) {
      listed.choose(index);
    }
  });
  addEventListener("hashchange", listed.showFile);
  const sections = [overview(data, folder), taken.element, listed.element];
  openForPrint([taken.made, listed.listed]);
  const { accepted, refused, failed } = data.counts;
  const result = [
    ...head("Match", [`${count(accepted)} accepted, ${count(refused)} refused${failed ? `, ${count(failed)} failed` : ""}`], sections),
    h("main", { id: "content", tabindex: "-1" }, sections),
  ];
  queueMicrotask(listed.showFile);
  return result;
}
