// Pages with data of their own, of the template that the build made.
import { writeFileSync } from "node:fs";

/** The data as the program writes them into a page. */
const scriptText = (data) => JSON.stringify(data).replace(/[<>&\u007f-\uffff]/g, (c) => `\\u${c.charCodeAt(0).toString(16).padStart(4, "0")}`);

export const writePage = (file, template, data) => writeFileSync(file, template.replace("@REPORT_DATA@", () => scriptText(data)));

const hostile = '</script><img src="http://example.invalid/x" onerror="document.title=1"><!-- \u202egpj.exe \u0007 合同';

/** A report in which all that documents decide is hostile. */
export const hostileClasses = () => ({
  schema: 1, kind: "learn", box: { id: hostile, file: hostile }, method: "dbscan", parameters: [["eps", 1.5], ["minpts", 2]],
  counts: { files: 2, classes: 2, words: 1, unclassified: 1, failed: 1 },
  classes: [0, 1].map(() => ({ name: hostile, id: hostile, size: 1, radius: 1, eps: 1.5, minpts: 2, center: [0, null], word_count: 1, words: [[hostile, 1]] })),
  files: [[hostile, 0, 0.5, 0, 0], [`${hostile}/2`, -1, null, 1, 1]],
  map: { shares: [0.5, null] }, distances: [[], [null]],
  curve: { eps: 1.5, minpts: 2, count: 2, values: [[1, 0.5], [2, null]] },
  failed: [[hostile, hostile]],
});

export const hostileMatch = () => ({
  schema: 1, kind: "match", counts: { files: 2, accepted: 1, refused: 0, failed: 1, classes: 3 },
  boxes: [{ id: hostile, method: "dbscan", by: "words" }],
  classes: [{ name: hostile, id: hostile, box: 0, limit: 1.5, asked: true, minpts: 2, size: 3 }],
  words: [hostile],
  files: [
    { decision: "accepted", file: hostile, classes: [{ class: 0, distance: 1, excess: -0.5, nearest: hostile, nearest_distance: 0.5, neighbours: 2 }],
      words: { shared: [[0, 1, 1]], document_only: [[0, 1]], class_only: [[0, 1]], counts: [1, 1, 1], squares: [0, 1, 1] } },
    { decision: "failed", file: `${hostile}/2`, reason: hostile },
  ],
});

/** As many files, classes and words as the program puts into a page. */
export function largeClasses() {
  const words = (seed) => Array.from({ length: 40 }, (_, i) => [`word-${seed}-${i}`, 1 / (i + 1)]);
  const turn = (i) => [Math.cos(i * 2.4), Math.sin(i * 2.4)];
  return {
    schema: 1, kind: "learn", box: { id: "large", file: "/boxes/large.box" }, method: "kmeans", parameters: [["k", 100]],
    counts: { files: 10_000, classes: 100, words: 80_000, unclassified: 0, failed: 0 },
    classes: Array.from({ length: 100 }, (_, i) => ({ name: `class ${i}`, id: `id-${i}`, size: 100, radius: 0.8, center: turn(i), word_count: 4000, words: words(i) })),
    files: Array.from({ length: 10_000 }, (_, i) => {
      const [x, y] = turn(i % 100);
      const [dx, dy] = turn(i);
      const file = [`corpus/folder-${i % 100}/document with a long name ${i}.docx`, i % 100, (i % 97) / 100];
      return i % 2 ? file : [...file, x + dx * 0.2, y + dy * 0.2];
    }),
    map: { shares: [0.1, 0.05] },
    distances: Array.from({ length: 60 }, (_, i) => Array.from({ length: i }, (_, j) => 1 + ((i * j) % 17) / 17)),
    failed: [],
  };
}

export function largeMatch() {
  const list = (i, n) => Array.from({ length: n }, (_, k) => [(i + k * 7) % 5000, 0.123456 + k]);
  return {
    schema: 1, kind: "match", counts: { files: 10_000, accepted: 5_000, refused: 5_000, failed: 0, classes: 100 },
    boxes: [{ id: "large", method: "kmeans", by: "words" }],
    classes: Array.from({ length: 100 }, (_, i) => ({ name: `class ${i}`, id: `id-${i}`, box: 0, limit: 0.8, asked: true })),
    words: Array.from({ length: 5000 }, (_, i) => `word-${i}`),
    files: Array.from({ length: 10_000 }, (_, i) => ({
      decision: i % 2 ? "refused" : "accepted", file: `inbox/folder-${i % 100}/document ${i}.docx`,
      classes: Array.from({ length: 5 }, (_, k) => ({ class: (i + k) % 100, distance: 0.7 + k / 10 + (i % 2) / 5, excess: -0.1 + k / 10 + (i % 2) / 5 })),
      words: { shared: list(i, 20).map(([n, w]) => [n, w, w / 2]), document_only: list(i, 12), class_only: list(i, 12), counts: [20, 40, 2000], squares: [0.1, 0.2, 0.3] },
    })),
  };
}
