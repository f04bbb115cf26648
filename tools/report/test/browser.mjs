// A headless browser that tells of everything a page does wrong: errors, warnings, and requests of the network.
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const flags = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
  "--disable-background-networking", "--disable-component-update", "--disable-sync"];

export class Browser {
  static async start() {
    const browser = new Browser();
    browser.folder = mkdtempSync(join(tmpdir(), "morvaai-report-"));
    browser.context = await chromium.launchPersistentContext(browser.folder, {
      executablePath: "/usr/bin/chromium", args: flags, viewport: { width: 1280, height: 900 },
    });
    return browser;
  }

  /** Opens a file. The page has a list `wrongs` of what went wrong on it so far. */
  async open(file, { width = 1280, colorScheme = "light", address = "" } = {}) {
    const page = await this.context.newPage();
    page.wrongs = [];
    page.setDefaultTimeout(20_000);
    const url = pathToFileURL(file).href;
    page.on("console", (message) => ["error", "warning"].includes(message.type()) && page.wrongs.push(message.text()));
    page.on("pageerror", (error) => page.wrongs.push(String(error)));
    page.on("request", (request) => request.url().split("#")[0] !== url && page.wrongs.push(`request of ${request.url()}`));
    await page.setViewportSize({ width, height: 900 });
    await page.emulateMedia({ colorScheme });
    await page.goto(url + address);
    await page.waitForSelector("main section");
    return page;
  }

  async stop() {
    await this.context.close();
    rmSync(this.folder, { recursive: true, force: true });
  }
}
