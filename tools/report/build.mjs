// Makes one page of the sources, which loads nothing, and puts it into a C++ file for the program.
// Usage: node build.mjs FOLDER   (writes report_template.cpp and template.html there)
import { createHash } from "node:crypto";
import { mkdirSync, readdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));
const dataMark = "@REPORT_DATA@";

async function bundled(entry) {
  const result = await build({
    entryPoints: [join(here, entry)],
    bundle: true,
    minify: true,
    write: false,
    format: "iife",
    target: "es2022",
    charset: "ascii",
    legalComments: "none",
    logLevel: "warning",
    metafile: true,
    absWorkingDir: here,
  });
  return { text: result.outputFiles[0].text.trim(), inputs: Object.keys(result.metafile.inputs) };
}

// What the licences of the bundled packages ask for: their texts, each once, with those whom they name.
function licencesOf(inputs) {
  const packages = [...new Set(inputs.flatMap((input) => /^node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(input)?.[1] ?? []))];
  const namesOf = new Map();
  for (const name of packages.sort()) {
    const folder = join(here, "node_modules", name);
    const file = readdirSync(folder).find((each) => /^licen[cs]e/i.test(each));
    const lines = file ? readFileSync(join(folder, file), "utf8").split(/\r?\n/) : [JSON.parse(readFileSync(join(folder, "package.json"), "utf8")).license];
    const isHolder = (line) => /^\s*copyright\b/i.test(line);
    const body = lines.filter((line) => !isHolder(line)).join(" ").replace(/\s+/g, " ").trim();
    namesOf.set(body, [...(namesOf.get(body) ?? []), `${name}: ${lines.filter(isHolder).join(" ").trim()}`]);
  }
  const parts = [...namesOf].map(([body, names]) => `${names.join("\n")}\n${body}`);
  return `/*\n${parts.join("\n\n").replaceAll("*/", "* /").replace(/[^\n\x20-\x7e]/g, "?")}\n*/\n`;
}

const hashOf = (text) => `'sha256-${createHash("sha256").update(text, "utf8").digest("base64")}'`;

// The chart library puts a style element of always the same text into each chart, which the policy has to know.
function chartStyle() {
  const source = readFileSync(join(here, "node_modules/@observablehq/plot/src/plot.js"), "utf8");
  const found = /svg\.append\("style"\)\.text\(\s*`([^`]*)`/.exec(source);
  if (!found) {
    throw new Error("the chart library sets its style in another way than this script knows");
  }
  return found[1].replaceAll("${className}", "chart");
}

function filled(template, values) {
  return template.replace(/@([A-Z]+)@/g, (mark, name) => values[name] ?? mark);
}

function pageOf(script, style) {
  for (const [name, text, forbidden] of [["script", script, /<\/script|<!--/i], ["style", style, /<\/style/i]]) {
    if (forbidden.test(text) || text.includes(dataMark)) {
      throw new Error(`the ${name} holds what would end it within the page`);
    }
  }
  const policy = [
    "default-src 'none'",
    `script-src ${hashOf(script)}`,
    `style-src ${hashOf(style)} ${hashOf(chartStyle())}`,
    "base-uri 'none'",
    "form-action 'none'",
  ].join("; ");
  const template = readFileSync(join(here, "page.html"), "utf8");
  return filled(template, { POLICY: policy, SCRIPT: script, STYLE: style });
}

// As string literals in ASCII, in pieces of a length that every compiler takes.
function literals(text) {
  const bytes = Buffer.from(text, "utf8");
  const lines = [];
  for (let at = 0; at < bytes.length; at += 4000) {
    let line = "";
    for (const byte of bytes.subarray(at, at + 4000)) {
      const isPlain = byte >= 0x20 && byte < 0x7f && byte !== 0x22 && byte !== 0x5c && byte !== 0x3f;
      line += isPlain ? String.fromCharCode(byte) : "\\" + byte.toString(8).padStart(3, "0");
    }
    lines.push(`      "${line}"sv,`);
  }
  return lines.join("\n");
}

const folder = process.argv[2];
if (!folder) {
  console.error("usage: node build.mjs FOLDER");
  process.exit(2);
}
const script = await bundled("src/main.js");
const style = await bundled("src/style.css");
const page = pageOf(licencesOf(script.inputs) + script.text, style.text);
mkdirSync(folder, { recursive: true });
writeFileSync(join(folder, "template.html"), page);
writeFileSync(
  join(folder, "report_template.cpp"),
  `#include "report/report_template.h"

#include <string>

namespace tool {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view pieces[] = {
${literals(page)}
};

}  // namespace

std::string_view report_template() {
  static std::string const page = [] {
    std::string all;
    for (std::string_view const piece : pieces) {
      all += piece;
    }
    return all;
  }();
  return page;
}

}  // namespace tool
`,
);
