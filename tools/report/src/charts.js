// The heat map of distances and the curve of neighbour distances.
import * as Plot from "@observablehq/plot";
import { number, plain, short, textWidth } from "./text.js";

/** All pairs of classes of a triangle of distances, in both orders, and the classes with themselves. */
export function pairsOf(distances) {
  const pairs = [];
  distances.forEach((row, i) => {
    pairs.push({ i, j: i, distance: 0 });
    row.forEach((distance, j) => pairs.push({ i, j, distance }, { i: j, j: i, distance }));
  });
  return pairs;
}

/** Near classes are dark: those are what may be taken for each other. */
export function heatMap(distances, classes) {
  const pairs = pairsOf(distances);
  const others = pairs.filter((p) => p.i !== p.j && p.distance !== null).map((p) => p.distance);
  const least = others.reduce((a, b) => Math.min(a, b), Infinity);
  const most = others.reduce((a, b) => Math.max(a, b), -Infinity);
  const strength = (p) => (p.distance === null ? 0 : most > least ? (most - p.distance) / (most - least) : 0.5);
  const size = distances.length;
  const cell = size <= 12 ? 52 : size <= 30 ? 26 : 13;
  const names = distances.map((_, i) => i);
  const label = (i) => short(classes[i].name, 16);
  const margin = 16 + Math.max(...names.map((i) => textWidth(label(i), 12)));
  const other = pairs.filter((p) => p.i !== p.j);
  return Plot.plot({
    className: "chart",
    width: margin + cell * size + 12,
    height: margin + cell * size * 0.72 + 8,
    marginLeft: margin,
    marginBottom: margin,
    marginTop: 4,
    marginRight: 12,
    ariaLabel: "Distances between classes",
    ariaDescription: "The table below says the same in numbers.",
    x: { type: "band", domain: names, tickFormat: label, tickRotate: -45, label: null, tickSize: 0, padding: 0.04 },
    y: { type: "band", domain: names, tickFormat: label, label: null, tickSize: 0, padding: 0.04 },
    color: { type: "identity" },
    opacity: { type: "identity" },
    marks: [
      Plot.cell(other, { x: "j", y: "i", fill: () => "var(--accent)", fillOpacity: (p) => 0.06 + 0.86 * strength(p), rx: 2 }),
      size > 12 ? null : Plot.text(other, { x: "j", y: "i", text: (p) => number(p.distance, 2), fontSize: 11,
        fill: (p) => (strength(p) > 0.55 ? "var(--on-accent)" : "var(--ink)") }),
      Plot.tip(other, Plot.pointer({ x: "j", y: "i", fill: "var(--surface)", stroke: "var(--line)",
        title: (p) => `${plain(classes[p.i].name)} \u2013 ${plain(classes[p.j].name)}\n${number(p.distance)}` })),
    ],
  });
}

/** The distances to the minpts-th neighbour, ascending, and eps across them. */
export function curveChart({ values, eps, minpts, count }) {
  const known = values.filter(([, distance]) => distance !== null);
  const most = known.reduce((a, [, distance]) => Math.max(a, distance), eps ?? 0);
  return Plot.plot({
    className: "chart",
    width: 980,
    height: 320,
    marginLeft: 52,
    marginTop: 28,
    marginBottom: 40,
    ariaLabel: "Neighbour distances",
    ariaDescription: "The table below says the same in numbers.",
    x: { label: "files, the one with the nearest neighbours first", domain: [1, Math.max(count, 2)] },
    y: { label: `distance to neighbour ${minpts}`, domain: [0, most * 1.08 || 1], grid: true },
    color: { type: "identity" },
    marks: [
      Plot.ruleY([0], { stroke: "var(--line)" }),
      Plot.areaY(known, { x: "0", y: "1", fill: "var(--accent)", fillOpacity: 0.1 }),
      Plot.lineY(known, { x: "0", y: "1", stroke: "var(--accent)", strokeWidth: 2 }),
      eps === null ? null : Plot.ruleY([eps], { stroke: "var(--limit)", strokeWidth: 1.5, strokeDasharray: "5 3" }),
      eps === null ? null : Plot.text([[1, eps]], { x: "0", y: "1", text: () => `eps ${number(eps)}`, fill: "var(--limit)",
        textAnchor: "start", dx: 6, dy: -8, fontWeight: 600, fontSize: 12, stroke: "var(--surface)", strokeWidth: 4 }),
      Plot.tip(known, Plot.pointerX({ x: "0", y: "1", fill: "var(--surface)", stroke: "var(--line)",
        title: ([at, distance]) => `file ${at} of ${count}\n${number(distance)}` })),
    ],
  });
}
