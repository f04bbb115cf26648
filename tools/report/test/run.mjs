// Looks at the pages that the program wrote, and at some of its own, in a headless browser.
// Usage: node test/run.mjs FOLDER TEMPLATE [--shots]   (FOLDER: learn-kmeans, learn-dbscan, box and match, each .html;
// with --shots, pictures of the pages are left there)
import assert from "node:assert/strict";
import { readFileSync, statSync } from "node:fs";
import { join } from "node:path";
import { Browser } from "./browser.mjs";
import { hostileClasses, hostileMatch, largeClasses, largeMatch, writePage } from "./pages.mjs";

const [folder, templateFile, option] = process.argv.slice(2);
const template = readFileSync(templateFile, "utf8");
const file = (name) => join(folder, `${name}.html`);
writePage(file("hostile-classes"), template, hostileClasses());
writePage(file("hostile-match"), template, hostileMatch());
writePage(file("large-classes"), template, largeClasses());
writePage(file("large-match"), template, largeMatch());

const real = ["learn-kmeans", "learn-dbscan", "box", "match"];
const tests = [];
const test = (name, run) => tests.push({ name, run });
const rowsOf = (page, section) => page.locator(`#${section} > .table tbody tr:not(.detail):not(.empty)`);

for (const name of [...real, "hostile-classes", "hostile-match"]) {
  test(`${name} opens without a wrong, with all that opens, in light and in dark`, async (browser) => {
    const page = await browser.open(file(name));
    await page.evaluate(() => document.querySelectorAll("details").forEach((each) => (each.open = true)));
    await page.waitForTimeout(50);
    assert.deepEqual(page.wrongs, []);
    const groundIn = async (colorScheme) => {
      await page.emulateMedia({ colorScheme });
      return page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    };
    assert.equal(await groundIn("light"), "rgb(246, 247, 248)");
    assert.equal(await groundIn("dark"), "rgb(18, 22, 26)");
    return page;
  });
}

test("hostile names are text, and what is hidden in them is named", async (browser) => {
  for (const name of ["hostile-classes", "hostile-match"]) {
    const page = await browser.open(file(name));
    await page.evaluate(() => document.querySelectorAll("details").forEach((each) => (each.open = true)));
    assert.equal(await page.locator("img, iframe, object").count(), 0);
    assert.match(await page.locator("main").innerText(), /<\/script><img src="http:.*‹U\+202E›gpj/);
    assert.match(await page.title(), /morvaai report$/);
    await page.close();
  }
});

test("the theme is chosen by the switch, whatever the system has", async (browser) => {
  const page = await browser.open(file("box"), { colorScheme: "light" });
  await page.selectOption("#theme", "dark");
  assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), "rgb(18, 22, 26)");
  await page.selectOption("#theme", "auto");
  return page;
});

test("the radius of the class that is chosen is drawn, and all where that is wanted", async (browser) => {
  const page = await browser.open(file("learn-kmeans"));
  const circles = () => page.locator("#map g[stroke-dasharray] path, #map g[stroke-dasharray] circle").count();
  assert.equal(await circles(), 0);
  await page.selectOption("#filter-class", "1");
  assert.equal(await circles(), 1);
  await page.check("#radii");
  assert.ok(await circles() > 1);
  return page;
});

test("files are filtered by class and by name", async (browser) => {
  const page = await browser.open(file("learn-kmeans"));
  const all = Number(/^(\d+)/.exec(await page.locator("output").innerText())[1]);
  await page.selectOption("#filter-class", "0");
  const ofClass = await rowsOf(page, "files").count();
  assert.ok(ofClass > 0 && ofClass < all);
  assert.equal(await page.locator("output").innerText(), `${ofClass} of ${all} files`);
  await page.fill("#filter-text", "no such file");
  assert.equal(await rowsOf(page, "files").count(), 0);
  return page;
});

test("a match is filtered by decision, and says why word by word", async (browser) => {
  const page = await browser.open(file("match"));
  await page.selectOption("#filter-decision", "refused");
  const badges = await page.locator("#files .badge").allInnerTexts();
  assert.ok(badges.length > 0 && badges.every((text) => text === "refused"));
  await page.locator("#files details summary").first().click();
  await page.waitForSelector("#files .comparison");
  assert.match(await page.locator("#files .detail").first().innerText(), /Of the squared distance/);
  return page;
});

test("tables are sorted by their headings", async (browser) => {
  const page = await browser.open(file("learn-kmeans"));
  await page.locator("#classes th button", { hasText: "Radius" }).click();
  const cells = await page.locator("#classes > .table tbody tr td:nth-child(3)").allInnerTexts();
  assert.deepEqual(cells, cells.toSorted((a, b) => b - a));
  assert.equal(await page.locator("#classes th[aria-sort=descending]").innerText().then((text) => text.trim()), "Radius");
  return page;
});

test("an address leads to a class, and opens it", async (browser) => {
  const page = await browser.open(file("learn-kmeans"), { address: "#class-3" });
  assert.equal(await page.locator("#class-3").evaluate((each) => each.open), true);
  assert.ok(await page.locator("#class-3 .words tr").count() > 1);
  return page;
});

test("all that can be done is reached by the keyboard, and seen to be", async (browser) => {
  const page = await browser.open(file("learn-kmeans"));
  const reached = new Set();
  for (let i = 0; i < 120; ++i) {
    await page.keyboard.press("Tab");
    const at = await page.evaluate(() => {
      const each = document.activeElement;
      return { name: each.id || each.className || each.tagName, outline: getComputedStyle(each).outlineStyle, isBody: each === document.body };
    });
    if (!at.isBody) {
      assert.equal(at.outline !== "none", true, `${at.name} has focus and does not show it`);
      reached.add(at.name);
    }
  }
  for (const name of ["skip", "theme", "radii", "filter-class", "filter-text", "sort", "SUMMARY"]) {
    assert.ok(reached.has(name), `${name} is not reached`);
  }
  await page.locator("#class-0 > summary").focus();
  await page.keyboard.press("Enter");
  assert.equal(await page.locator("#class-0").evaluate((each) => each.open), true);
  return page;
});

test("nothing is wider than a narrow window", async (browser) => {
  for (const name of real) {
    const page = await browser.open(file(name), { width: 400 });
    await page.evaluate(() => document.querySelectorAll("details").forEach((each) => (each.open = true)));
    const width = await page.evaluate(() => document.documentElement.scrollWidth);
    assert.ok(width <= 400, `${name} is ${width} wide`);
    await page.close();
  }
});

test("a print has everything open", async (browser) => {
  const page = await browser.open(file("learn-kmeans"), { colorScheme: "dark" });
  await page.emulateMedia({ media: "print", colorScheme: "dark" });
  await page.evaluate(() => dispatchEvent(new Event("beforeprint")));
  assert.equal(await page.locator("details:not([open])").count(), 0);
  assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), "rgb(255, 255, 255)");
  assert.equal(await page.evaluate(() => getComputedStyle(document.body).color), "rgb(0, 0, 0)");
  await page.evaluate(() => dispatchEvent(new Event("afterprint")));
  const pdf = await page.pdf({ format: "A4", ...(option === "--shots" ? { path: join(folder, "print.pdf") } : {}) });
  assert.ok(pdf.length > 20_000);
  return page;
});

for (const name of ["large-classes", "large-match"]) {
  test(`${name}, of 10,000 files, opens in five seconds and is smaller than 20 MB`, async (browser) => {
    assert.ok(statSync(file(name)).size < 20_000_000);
    const begin = performance.now();
    const page = await browser.open(file(name));
    const seconds = (performance.now() - begin) / 1000;
    console.log(`  ${name}: ${(statSync(file(name)).size / 1e6).toFixed(1)} MB, ${seconds.toFixed(1)} s`);
    assert.ok(seconds < 5);
    await page.fill("#filter-text", "document");
    assert.deepEqual(page.wrongs, []);
    return page;
  });
}

async function takeShots(browser) {
  for (const name of real) {
    for (const [kind, options] of Object.entries({ light: {}, dark: { colorScheme: "dark" }, narrow: { width: 400 } })) {
      const page = await browser.open(file(name), options);
      await page.evaluate(() => document.querySelectorAll(".card, .detail details").forEach((each, i) => (each.open = i < 2)));
      await page.waitForTimeout(100);
      await page.screenshot({ path: join(folder, `${name}-${kind}.png`), fullPage: true });
      await page.close();
    }
  }
}

const browser = await Browser.start();
let failed = 0;
for (const { name, run } of tests) {
  try {
    await (await run(browser))?.close();
    console.log(`ok    ${name}`);
  } catch (error) {
    failed += 1;
    console.log(`WRONG ${name}\n      ${error.message}`);
  }
}
if (option === "--shots") {
  await takeShots(browser);
}
await browser.stop();
console.log(failed === 0 ? `${tests.length} tests of the page passed` : `${failed} of ${tests.length} tests of the page failed`);
process.exit(failed === 0 ? 0 : 1);
