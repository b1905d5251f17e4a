// The page in a browser, for the tests.
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import puppeteer from "puppeteer-core";
import { root } from "./tools.mjs";

export const pageFile = join(root, "build/page/varsul.html");
const quiet = "--disable-background-networking --disable-component-update --disable-sync --disable-quic --no-first-run";
const browsers = {
  chrome: { executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu", ...quiet.split(" ")] },
  firefox: { executablePath: "/usr/bin/firefox-esr", args: [] },
};

export const launch = (browser = "chrome") => puppeteer.launch({ browser, headless: true, ...browsers[browser] });

// Opens the page from the disk. `page.faults` collects what should never happen: errors in the page
// and requests that leave it.
export async function openPage(browser, { width = 1280, height = 800, dark = false } = {}) {
  const page = await (await browser.createBrowserContext()).newPage();
  await page.setViewport({ width, height });
  if (dark) await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: "dark" }]);
  page.faults = [];
  page.on("pageerror", (error) => page.faults.push(`error: ${error.message}`));
  page.on(
    "request",
    (request) => /^(file|blob|data):/.test(request.url()) || page.faults.push(`request: ${request.url()}`),
  );
  page.on("console", (message) => message.type() === "error" && page.faults.push(`console: ${message.text()}`));
  await page.goto(pathToFileURL(pageFile).href);
  await page.waitForSelector("#views button");
  return page;
}

export async function openFiles(page, paths, input = "#open-files") {
  await (await page.$(input)).uploadFile(...paths);
}

// Clicks as soon as it stands still: rows of tables are drawn anew whenever something becomes known.
export const click = (page, selector) => page.locator(selector).click();

export const textOf = (page, selector) => page.$eval(selector, (element) => element.textContent);
export const valueOf = (page, selector, read) => page.$eval(selector, read);

// Waits until what is on the screen holds a text, or matches an expression.
export async function seen(page, selector, wanted, timeout = 30_000) {
  const source = wanted instanceof RegExp ? wanted.source : wanted.replace(/[.*+?^${}()|[\]\\]/g, "\\$&");
  const holds = (selector, source) =>
    [...document.querySelectorAll(selector)].some((element) => new RegExp(source).test(element.textContent));
  try {
    await page.waitForFunction(holds, { timeout, polling: 50 }, selector, source);
  } catch {
    const shown = await page.$$eval(selector, (all) => all.map((element) => element.textContent.slice(0, 300)));
    throw new Error(`"${source}" was not seen in ${selector}: ${JSON.stringify(shown)}`);
  }
}

// Clicks what makes a download and returns its name and bytes.
export async function downloaded(page, selector) {
  await page.evaluate(() => {
    let last = null;
    const { createObjectURL } = URL;
    URL.createObjectURL = (blob) => createObjectURL.call(URL, (last = blob));
    window.taken = new Promise((resolve) => {
      HTMLAnchorElement.prototype.click = function () {
        URL.createObjectURL = createObjectURL;
        delete HTMLAnchorElement.prototype.click;
        resolve({ name: this.download, blob: last });
      };
    });
  });
  await click(page, selector);
  const { name, bytes } = await page.evaluate(async () => {
    const { name, blob } = await window.taken;
    return { name, bytes: [...new Uint8Array(await blob.arrayBuffer())] };
  });
  return { name, bytes: Buffer.from(bytes) };
}
