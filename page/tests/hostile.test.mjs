// Scripts that mean harm: nothing from them becomes markup, nothing leaves the page, nothing ends it.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, statSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { click, launch, openFiles, openPage, pageFile, seen } from "./page.mjs";
import { temporary } from "./tools.mjs";

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

const folder = temporary();

function file(name, bytes) {
  const path = join(folder, name);
  writeFileSync(path, bytes);
  return path;
}

const harm = [
  "<script>window.harmed=1<\/script>",
  "<img src=x onerror=window.harmed=1>",
  '"><svg onload=window.harmed=1>',
  "</text></svg><iframe src=javascript:harmed=1>",
  "${window.harmed=1} `${harmed=1}` {{harmed}}".replaceAll("{", "(").replaceAll("}", ")"),
  "@<b>bold</b> @constructor @__proto__",
  '\\"\\N\\G & < > \' " ; // --> ]]>',
];

// sident, slook, texts, keywords, a table of texts: each of them hostile.
function hostileScript() {
  const text = (value) => Buffer.from(value, "latin1");
  const keywords = harm.map((value) =>
    Buffer.concat([Buffer.from([0xef]), text(`${value},__proto__`), Buffer.from([0xf6]), text(`${value}\n`)]),
  );
  const parts = [
    Buffer.from([0xff, 7]),
    text(harm[0]),
    Buffer.from([0xf1]),
    text(harm[1]),
    Buffer.from([0xf2]),
    text(harm.join("\n")),
    Buffer.from([0xf7]),
    ...keywords,
    Buffer.from([0xee, 0xd1]),
  ];
  return Buffer.concat(parts);
}

test("texts stay texts in every view", { timeout: 60_000 }, async () => {
  const page = await openPage(browser);
  const names = ["<img src=x onerror=harmed=1>.scr", "__proto__"];
  await openFiles(
    page,
    names.map((name) => file(name, hostileScript())),
  );
  await seen(page, "#scripts .table-row", "<img src=x onerror=harmed=1>.scr");
  await seen(page, "#scripts .table-row", "<script>window.harmed=1<");
  await click(page, "#scripts .table-body .table-row");
  await seen(page, "#listing .cm-line", "onerror=window.harmed=1");
  for (const view of ["texts", "listing", "bytes", "compare", "map"]) await click(page, `#view-${view}`);
  await seen(page, "#map .keywords", "<script>window.harmed");
  await click(page, "#view-texts");
  await page.focus("#texts .table");
  await page.keyboard.press("F2");
  await seen(page, ".text-dialog h2", "<script>window.harmed=1<");
  await page.keyboard.press("Escape");
  const found = await page.evaluate(() => ({
    harmed: "harmed" in window,
    scripts: document.scripts.length,
    elements: document.querySelectorAll("img, iframe, b, foreignObject, svg [onload], [onerror]").length,
  }));
  assert.deepEqual(found, { harmed: false, scripts: 2, elements: 0 });
  assert.deepEqual(page.faults, []);
  await page.close();
});

test("the policy forbids connections and code that is not the page's", async () => {
  const source = readFileSync(pageFile, "utf8");
  const policy = /http-equiv="Content-Security-Policy" content="([^"]*)"/.exec(source)[1];
  assert.match(policy, /^default-src 'none'; script-src 'sha256-[\w+/=]+' 'wasm-unsafe-eval'; worker-src blob:;/);
  assert.doesNotMatch(policy, /connect-src|unsafe-inline|'unsafe-eval'|https?:|\*/);
  assert.ok(statSync(pageFile).size <= 4 * 2 ** 20, `the page has ${statSync(pageFile).size} bytes`);
  const page = await openPage(browser);
  const refused = await page.evaluate(async () => {
    const refused = [];
    const attempt = async (name, act) =>
      Promise.resolve()
        .then(act)
        .catch(() => refused.push(name));
    await attempt("fetch", () => fetch("https://example.org/"));
    await attempt("fetch in a worker", async () => {
      const code = "fetch('https://example.org/').then(() => postMessage(1), () => postMessage(0))";
      const worker = new Worker(URL.createObjectURL(new Blob([code])));
      if (!(await new Promise((resolve) => (worker.onmessage = ({ data }) => resolve(data))))) throw new Error();
    });
    await attempt("eval", () => (0, eval)("1"));
    await attempt("inline script", async () => {
      const script = document.createElement("script");
      script.textContent = "window.ran = true";
      document.body.append(script);
      script.remove();
      if (!window.ran) throw new Error();
    });
    return refused;
  });
  assert.deepEqual(refused, ["fetch", "fetch in a worker", "eval", "inline script"]);
  await page.close();
});

test("scripts that exhaust memory or stack end with a message, and the page goes on", { timeout: 90_000 }, async () => {
  const page = await openPage(browser);
  const nested = (depth, rest) => Buffer.concat([...Array(depth).fill(Buffer.from([0xa1, 0x01, 0xa7])), rest]);
  const blocks = [
    file("deep.scr", nested(4000, Buffer.concat(Array(4000).fill(Buffer.from([0xa2]))))),
    file("wide.scr", nested(1000, Buffer.concat([Buffer.alloc(400_000, 0xcb), Buffer.alloc(1000, 0xa2)]))),
  ];
  for (const path of blocks) {
    await openFiles(page, [path]);
    await seen(page, "#script-title", path.slice(path.lastIndexOf("/") + 1));
    await page.waitForFunction(
      () =>
        document.querySelector("#listing .cm-line")?.textContent.startsWith("; id") ||
        document.querySelector("#messages li.is-error"),
      { timeout: 40_000 },
    );
  }
  await seen(page, "#messages li", /memory|too long/);
  await openFiles(page, [file("good.scr", Buffer.from([0xff, 9, 0x41, 0x62, 0x65, 0xd1]))]);
  await seen(page, "#listing .cm-line", /sident 9, "Abe"/);
  await page.close();
});

test("any bytes at all are listed or refused with a message", { timeout: 60_000 }, async () => {
  const page = await openPage(browser);
  let seed = 1;
  const random = () => (seed = (seed * 48271) % 0x7fffffff) & 0xff;
  const many = join(folder, "many");
  mkdirSync(many);
  for (let index = 0; index < 60; ++index)
    writeFileSync(join(many, `${index}.scr`), Buffer.from(Array.from({ length: index * 40 }, random)));
  await openFiles(page, [many], "#open-folder");
  await seen(page, "#scripts .count", "60 of 60");
  await page.waitForFunction(
    () => document.querySelector("#progress").hidden && !document.querySelector(".is-waiting"),
  );
  await click(page, "#scripts .table-body .table-row:nth-child(9)");
  await page.waitForFunction(
    () => document.querySelector("#listing .cm-line").textContent !== "" || document.querySelector("#messages li"),
  );
  assert.deepEqual(page.faults, []);
  await page.close();
});
