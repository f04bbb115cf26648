// The map of a corpus: files and centers of classes in two dimensions, radii as circles of their true length.
import * as Plot from "@observablehq/plot";
import { colourOf, shapeOf } from "./marks.js";
import { number, plain, shortPath, textWidth } from "./text.js";

const width = 980;
const margins = { marginTop: 28, marginRight: 12, marginBottom: 34, marginLeft: 44 };
const tallest = 0.72;

/** The ends of both axes, of one scale, around everything. */
function frameOf(points, circles) {
  const xs = [...points.map((p) => p.x), ...circles.flatMap((c) => [c.x - c.r, c.x + c.r])];
  const ys = [...points.map((p) => p.y), ...circles.flatMap((c) => [c.y - c.r, c.y + c.r])];
  const ends = (values) => [
    values.reduce((a, b) => Math.min(a, b), Infinity),
    values.reduce((a, b) => Math.max(a, b), -Infinity),
  ];
  const [x, y] = [ends(xs), ends(ys)];
  const extent = Math.max(x[1] - x[0], (y[1] - y[0]) / tallest, 1e-6) * 1.06;
  const height = Math.max((y[1] - y[0]) * 1.08, extent * 0.3);
  const around = ([a, b], size) => [(a + b) / 2 - size / 2, (a + b) / 2 + size / 2];
  return { x: around(x, extent), y: around(y, height), ratio: height / extent };
}

/** A radius is a line and no area: circles are large beside the files, and lie across each other. */
const circle = { fill: "none", stroke: (c) => colourOf(c.class), strokeWidth: 1.3, strokeDasharray: "5 4", clip: true };

const labelSize = 12;
const labelHeight = 15;

/** Names beside their centers, moved up or down where they would lie across each other, left out where that is far. */
function labelsOf(centers, pixels, above) {
  const placed = [];
  for (const center of centers) {
    const text = shortPath(center.name, 22);
    const reach = textWidth(text, labelSize) / 2;
    const isFree = (y) => placed.every((other) => Math.abs(other.y - y) * pixels >= labelHeight
      || Math.abs(other.x - center.x) * pixels >= other.reach + reach + 4);
    const y = [0, 1, -1, 2, -2, 3, -3].map((step) => center.y + (above + step * labelHeight) / pixels).find(isFree);
    if (y !== undefined) {
      placed.push({ x: center.x, y, text, reach, class: center.class });
    }
  }
  return placed;
}

/** The radius of the class of the file that is pointed at. */
function pointedRadius(points, centers, pixels) {
  const centerOf = new Map(centers.map((c) => [c.class, c]));
  const classified = points.filter((p) => centerOf.has(p.class));
  return Plot.dot(classified, Plot.pointer({ ...circle, px: "x", py: "y", maxRadius: 24,
    x: (p) => centerOf.get(p.class).x, y: (p) => centerOf.get(p.class).y, r: (p) => centerOf.get(p.class).r * pixels }));
}

/**
 * `points`: {x, y, class, name, isOut}, of which those that are out are faded; `centers`: {x, y, r, class, name, isOut,
 * withRadius}. The map holds all circles that it draws, beside that of the file that is pointed at.
 */
export function mapChart({ points, centers }) {
  const circles = centers.filter((c) => c.withRadius && c.r > 0);
  const frame = frameOf([...points, ...centers], circles);
  const inner = width - margins.marginLeft - margins.marginRight;
  const pixels = inner / (frame.x[1] - frame.x[0]);
  const isNear = (p) => !p.isOut;
  const size = points.length > 300 ? 3.2 : 4.2;
  const dots = (list, opacity) => [
    Plot.dot(list.filter((p) => p.class >= 0), { x: "x", y: "y", fill: (p) => colourOf(p.class),
      symbol: (p) => shapeOf(p.class), r: size, fillOpacity: opacity }),
    // The cross of what is in no class is a line.
    Plot.dot(list.filter((p) => p.class < 0), { x: "x", y: "y", stroke: colourOf(-1), symbol: "times", r: size * 0.8,
      strokeOpacity: opacity }),
  ];
  return Plot.plot({
    className: "chart",
    width,
    height: Math.round(inner * frame.ratio) + margins.marginTop + margins.marginBottom,
    ...margins,
    ariaLabel: "Map of the corpus",
    ariaDescription: "The tables of classes and files say the same in words.",
    x: { domain: frame.x, label: "first component", ticks: 6 },
    y: { domain: frame.y, label: "second component", ticks: 6 },
    r: { type: "identity" },
    symbol: { type: "identity" },
    color: { type: "identity" },
    marks: [
      Plot.gridX({ ticks: 6 }),
      Plot.gridY({ ticks: 6 }),
      Plot.dot(circles, { ...circle, x: "x", y: "y", r: (c) => c.r * pixels, strokeOpacity: (c) => (c.isOut ? 0.25 : 1) }),
      pointedRadius(points, centers, pixels),
      dots(points.filter((p) => p.isOut), 0.13),
      dots(points.filter(isNear), 0.85),
      Plot.text(labelsOf(centers.filter(isNear), pixels, points.length ? 0 : 14), { x: "x", y: "y", text: "text",
        fill: (c) => colourOf(c.class), stroke: "var(--surface)", strokeWidth: 4, fontSize: labelSize, fontWeight: 600 }),
      points.length ? null : dots(centers.filter(isNear), 0.95),
      Plot.tip(points.length ? points : centers, Plot.pointer({ x: "x", y: "y", maxRadius: 24,
        title: (p) => plain(p.about ?? p.name), fill: "var(--surface)", stroke: "var(--line)" })),
    ],
  });
}

/** What part of all differences a map shows. */
export const shareText = (shares) =>
  `${number(100 * (shares[0] ?? 0), 0)}\u202f% and ${number(100 * (shares[1] ?? 0), 0)}\u202f%`;
