// The report of classes that were learnt, or that a box holds.
import { h, opening, section } from "./dom.js";
import { curveChart, heatMap, pairsOf } from "./charts.js";
import { figures, head, notes, openForPrint } from "./frame.js";
import { mapChart, shareText } from "./map.js";
import { named, sign } from "./marks.js";
import { table } from "./table.js";
import { commonFolder, count, counted, number, plain } from "./text.js";
import { wordTable } from "./words.js";

const methods = { kmeans: "K-means", dbscan: "DBSCAN" };

/** Files as objects, without the folder that all are in. */
function filesOf(data) {
  const folder = commonFolder(data.files.map(([path]) => path));
  const files = data.files.map(([path, its, distance, x, y]) => ({
    path, name: path.slice(folder.length), class: its, distance, x: x ?? null, y: y ?? null,
  }));
  return { folder, files };
}

function parametersText(data) {
  return data.parameters.map(([name, value]) => `${name} ${typeof value === "number" ? number(value, value % 1 ? 4 : 0) : value}`).join(", ");
}

function overview(data, folder) {
  const isLearnt = data.kind === "learn";
  const listed = data.files.length;
  const onMap = data.files.filter((file) => file.length > 3).length;
  return section("overview", "Overview", null,
    figures([
      ["Classes", data.counts.classes],
      ["Files", isLearnt || data.counts.files > 0 ? data.counts.files : null],
      ["Words", data.counts.words],
      ["In no class", isLearnt ? data.counts.unclassified : null],
      ["Failed", isLearnt ? data.counts.failed : null],
      ["Method", methods[data.method] ?? data.method],
      ["Parameters", parametersText(data) || null],
    ]),
    notes([
      folder && ["All files are below ", h("code", null, plain(folder)), "."],
      !isLearnt && data.method === "kmeans" &&
        "A box of this method keeps the center and the radius of each class, not its files: which files a class was made of, and what was in no class, is shown by learn --report alone.",
      !isLearnt && data.method === "dbscan" &&
        "A box keeps the files of its classes by their names. What was in no class when it was learnt is shown by learn --report alone.",
      data.classes.length < data.counts.classes && `The first ${count(data.classes.length)} of ${count(data.counts.classes)} classes are described.`,
      listed < data.counts.files && `The first ${count(listed)} of ${count(data.counts.files)} files are listed.`,
      onMap < listed && `${count(onMap)} of the ${count(listed)} listed files are on the map, evenly picked.`,
    ]));
}

function mapPart(data, files, changed) {
  const holder = h("div", { class: "canvas" });
  const radii = h("input", { type: "checkbox", id: "radii", checked: data.files.length === 0, change: () => draw(last) });
  let last = { its: null, text: "" };
  const centers = data.classes.map((one, index) => ({ x: one.center[0], y: one.center[1], r: one.radius ?? 0, class: index, name: one.name,
    about: `${one.name}\nradius ${number(one.radius)}` })).filter((c) => c.x !== null && c.y !== null);
  const points = files.filter((file) => file.x !== null && file.y !== null).map((file) => ({ x: file.x, y: file.y, class: file.class,
    name: file.name, path: file.path, about: `${file.name}\n${data.classes[file.class]?.name ?? "in no class"}${file.distance === null ? "" : `\n${number(file.distance)} from its center`}` }));

  function draw(filter) {
    last = filter;
    const isOut = (its, path) => (filter.its !== null && its !== filter.its) || (filter.text !== "" && !path.toLowerCase().includes(filter.text));
    holder.replaceChildren(centers.length + points.length === 0
      ? h("p", null, "There is nothing to draw.")
      : mapChart({
          points: points.map((p) => ({ ...p, isOut: isOut(p.class, p.path) })),
          centers: centers.map((c) => ({ ...c, isOut: filter.its !== null && c.class !== filter.its,
            withRadius: radii.checked || c.class === filter.its })),
        }));
  }
  changed.push(draw);
  draw(last);
  return section("map", "Map",
    `The two dimensions in which ${points.length ? "the files" : "the centers of the classes"} differ most; they show ${shareText(data.map.shares)} of all differences. What lies apart here is apart; what lies together may differ in the others. Distances on the map are shortened, radii are not: a class reaches less far here than its circle.${points.length ? " The circle of a class is drawn where it is chosen, or one of its files is pointed at." : ""}`,
    h("p", { class: "tools" }, h("label", { for: "radii" }, radii, " All radii")),
    holder);
}

function filters(data, changed, summary) {
  const text = h("input", { type: "search", id: "filter-text", autocomplete: "off", spellcheck: "false", placeholder: "part of a path" });
  const its = h("select", { id: "filter-class" }, h("option", { value: "" }, "All classes"),
    data.counts.unclassified > 0 && h("option", { value: "-1" }, "In no class"),
    data.classes.map((one, index) => h("option", { value: index }, plain(one.name))));
  const apply = () => {
    const filter = { its: its.value === "" ? null : Number(its.value), text: text.value.toLowerCase() };
    changed.forEach((each) => each(filter));
  };
  text.addEventListener("input", apply);
  its.addEventListener("change", apply);
  return h("form", { class: "filters", submit: (event) => event.preventDefault(), role: "search" },
    h("label", { for: "filter-class" }, "Class ", its), data.files.length > 0 && h("label", { for: "filter-text" }, "File ", text), summary);
}

function memberTable(data, members, tables) {
  const made = table({
    caption: "Files, the nearest to the center first",
    rows: members,
    pageSize: 20,
    sort: { column: 1, direction: "ascending" },
    columns: [
      { title: "File", value: (file) => file.name, cell: (file) => h("bdi", { title: plain(file.path) }, plain(file.name)) },
      { title: "From center", value: (file) => file.distance, cell: (file) => number(file.distance), align: "right" },
    ],
  });
  tables.push(made);
  return made.element;
}

function classCard(data, one, index, files, tables) {
  const members = files.filter((file) => file.class === index);
  return opening({ id: `class-${index}`, class: "card" },
    h("span", { class: "summary" }, h("span", { class: "name" }, named(index, plain(one.name))),
      h("span", { class: "muted" }, [one.size !== undefined && counted(one.size, "file", "files"), one.radius !== undefined && `radius ${number(one.radius)}`].filter(Boolean).join(", ")),
      h("span", { class: "muted strongest" }, one.words.slice(0, 6).map(([word]) => plain(word)).join(" "))),
    () => [
      h("p", { class: "muted id" }, "Class id ", h("code", null, plain(one.id)),
        one.eps !== undefined && `, eps ${number(one.eps)}, minpts ${one.minpts}`),
      h("div", { class: "columns" }, wordTable(one), members.length > 0 && memberTable(data, members, tables)),
    ]);
}

function classesPart(data, files, tables) {
  const means = data.classes.map((_, index) => {
    const distances = files.filter((file) => file.class === index && file.distance !== null).map((file) => file.distance);
    return distances.length ? distances.reduce((a, b) => a + b, 0) / distances.length : null;
  });
  const rows = data.classes.map((one, index) => ({ one, index, mean: means[index] }));
  const hasFiles = data.classes.some((one) => one.size !== undefined);
  const listed = table({
    caption: "Classes",
    rows,
    columns: [
      { title: "Class", value: (row) => row.one.name, cell: (row) => h("a", { href: `#class-${row.index}` }, sign(row.index), h("bdi", null, plain(row.one.name))) },
      hasFiles && { title: "Files", value: (row) => row.one.size, cell: (row) => count(row.one.size ?? 0), align: "right", first: "descending" },
      { title: "Radius", value: (row) => row.one.radius, cell: (row) => number(row.one.radius), align: "right", first: "descending" },
      files.length > 0 && { title: "Mean distance", value: (row) => row.mean, cell: (row) => number(row.mean), align: "right", first: "descending" },
      { title: "Strongest words", cell: (row) => h("span", { class: "muted" }, row.one.words.slice(0, 6).map(([word]) => plain(word)).join(" ")), align: "wide" },
    ].filter(Boolean),
  });
  tables.push(listed);
  return section("classes", "Classes",
    "The radius reaches from the center of a class to its farthest file. Each class opens to its words, the weights of its center, and its files.",
    listed.element,
    h("div", { class: "cards" }, data.classes.map((one, index) => classCard(data, one, index, files, tables))));
}

function distancesPart(data, tables) {
  const shown = data.distances.length;
  if (shown < 2) {
    return null;
  }
  const pairs = pairsOf(data.distances).filter((pair) => pair.j < pair.i);
  const name = (index) => named(index, plain(data.classes[index].name));
  return section("distances", "Distances between classes",
    `From center to center. Dark cells are classes that lie close together and may be taken for each other${shown < data.counts.classes ? `; the first ${shown} of ${count(data.counts.classes)} classes` : ""}.`,
    h("div", { class: "canvas scroll", tabindex: "0", role: "region", "aria-label": "Heat map" }, heatMap(data.distances, data.classes)),
    opening({ id: "distances-table" }, "The pairs, the nearest first", () => {
      const made = table({
        caption: "Distances between classes",
        rows: pairs,
        pageSize: 50,
        sort: { column: 2, direction: "ascending" },
        columns: [
          { title: "Class", value: (pair) => data.classes[pair.j].name, cell: (pair) => name(pair.j) },
          { title: "Other class", value: (pair) => data.classes[pair.i].name, cell: (pair) => name(pair.i) },
          { title: "Distance", value: (pair) => pair.distance, cell: (pair) => number(pair.distance), align: "right" },
        ],
      });
      tables.push(made);
      return made.element;
    }));
}

function curvePart(curve) {
  if (!curve || curve.values.length === 0) {
    return null;
  }
  const known = curve.values.filter(([, distance]) => distance !== null);
  const within = known.filter(([, distance]) => distance <= curve.eps).length / known.length;
  const at = (part) => known[Math.round(part * (known.length - 1))];
  return section("curve", "Neighbour distances",
    `How far each file must reach for ${counted(curve.minpts, "other file", "other files")}, sorted. ${number(100 * within, 0)}\u202f% of them have so many within eps. A good eps lies where the curve begins to rise steeply.`,
    h("div", { class: "canvas" }, curveChart(curve)),
    opening({ id: "curve-table" }, "The curve in numbers", () => h("table", { class: "narrow" },
      h("caption", null, "Neighbour distances"),
      h("thead", null, h("tr", null, h("th", { scope: "col" }, "Part of the files"), h("th", { scope: "col", class: "right" }, "Distance within"))),
      h("tbody", null, [0, 0.1, 0.25, 0.5, 0.75, 0.9, 0.95, 1].map((part) =>
        h("tr", null, h("th", { scope: "row" }, `${Math.round(part * 100)}\u202f%`), h("td", { class: "right" }, number(at(part)?.[1]))))))));
}

function filesPart(data, files, changed, tables) {
  if (files.length === 0) {
    return null;
  }
  const listed = table({
    caption: "Files",
    rows: files,
    empty: "No file goes with the filter.",
    columns: [
      { title: "File", value: (file) => file.name, cell: (file) => h("bdi", { title: plain(file.path) }, plain(file.name)) },
      { title: "Class", value: (file) => data.classes[file.class]?.name ?? "\uffff", cell: (file) => file.class < 0 ? h("span", { class: "muted" }, "in none")
        : data.classes[file.class] ? h("a", { href: `#class-${file.class}` }, sign(file.class), h("bdi", null, plain(data.classes[file.class].name))) : `class ${file.class}` },
      { title: "From center", value: (file) => file.distance, cell: (file) => number(file.distance), align: "right", first: "descending" },
    ],
  });
  tables.push(listed);
  const summary = h("output", { class: "muted" }, counted(files.length, "file", "files"));
  changed.push((filter) => {
    const rows = files.filter((file) => (filter.its === null || file.class === filter.its) && file.path.toLowerCase().includes(filter.text));
    summary.textContent = `${count(rows.length)} of ${counted(files.length, "file", "files")}`;
    listed.show(rows);
  });
  return { summary, element: section("files", "Files", null, listed.element, failures(data)) };
}

function failures(data) {
  return data.failed.length > 0 && opening({ id: "failed" }, counted(data.counts.failed, "file failed", "files failed"), () => h("ul", { class: "failed" },
    data.failed.map(([path, reason]) => h("li", null, h("bdi", null, plain(path)), ": ", plain(reason)))));
}

/** The whole page. */
export function classesPage(data) {
  const { folder, files } = filesOf(data);
  const changed = [];
  const tables = [];
  const map = mapPart(data, files, changed);
  const listed = filesPart(data, files, changed, tables);
  const sections = [
    overview(data, folder),
    map,
    classesPart(data, files, tables),
    distancesPart(data, tables),
    curvePart(data.curve),
    listed?.element,
  ].filter(Boolean);
  map.querySelector(".tools").append(filters(data, changed, listed?.summary));
  openForPrint(tables);
  const what = data.kind === "learn" ? "Learnt by" : "A box of";
  return [
    ...head(`Box ${plain(data.box.id)}`, [`${what} ${methods[data.method] ?? data.method}: `, h("code", null, plain(data.box.file))], sections),
    h("main", { id: "content", tabindex: "-1" }, sections),
  ];
}
