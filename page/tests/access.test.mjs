// Everyone can use the page: no serious findings of axe in any view, light and dark; and one whole path in
// another browser.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { test } from "node:test";
import { click, downloaded, launch, openFiles, openPage, seen } from "./page.mjs";
import { examples, run } from "./tools.mjs";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

async function findings(page) {
  await page.evaluate(axe);
  const { violations } = await page.evaluate(() => window.axe.run(document));
  return violations
    .filter(({ impact }) => impact === "serious" || impact === "critical")
    .map(({ id, nodes }) => `${id}: ${nodes.slice(0, 3).map((node) => node.html.slice(0, 160))}`);
}

for (const dark of [false, true]) {
  test(`every view in ${dark ? "dark" : "light"}`, { timeout: 120_000 }, async () => {
    const browser = await launch();
    try {
      const page = await openPage(browser, { dark, width: 1024, height: 700 });
      assert.deepEqual(await findings(page), [], "welcome");
      await openFiles(
        page,
        examples.map(({ path }) => path),
      );
      await seen(page, "#scripts .table-row", /Odda Marrowick.*listed/);
      await click(page, "#scripts .table-body .table-row");
      await seen(page, "#listing .cm-line", /^; id:/);
      for (const view of ["scripts", "texts", "listing", "compare", "bytes", "map"]) {
        await click(page, `#view-${view}`);
        if (view === "map") await page.waitForSelector("#map .card");
        assert.deepEqual(await findings(page), [], view);
      }
      await click(page, "#view-texts");
      await page.focus("#texts .table");
      await page.keyboard.press("F2");
      await page.waitForSelector(".text-dialog");
      assert.deepEqual(await findings(page), [], "the dialog of a text");
    } finally {
      await browser.close();
    }
  });
}

test("firefox opens, lists, changes and rebuilds", { timeout: 120_000 }, async () => {
  const browser = await launch("firefox");
  try {
    const page = await openPage(browser);
    const [{ path }] = examples;
    await openFiles(page, [path]);
    await seen(page, "#listing .cm-line", "Odda Marrowick");
    await click(page, "#view-texts");
    await page.type("#texts-search", "no lantern of mine");
    await seen(page, "#texts .count", /^1 of/);
    await page.focus("#texts .table");
    await page.keyboard.press("F2");
    await page.waitForSelector("#text-edit");
    await page.$eval("#text-edit", (area) => area.select());
    await page.keyboard.type("That is a pub.");
    await click(page, "#text-apply");
    await click(page, "#view-listing");
    await page.waitForSelector("#build:not(:disabled)");
    await click(page, "#build");
    await seen(page, "#notice", /^Rebuilt/);
    const listing = run("varsul", ["--kv", "--verbosity-parenthesis"], readFileSync(path)).output.toString("latin1");
    const changed = listing.replace('"\\"That is no lantern of mine. That is a pub.\\"\\n"', '"That is a pub."');
    const { files } = run("varsul-as", ["-o", "script"], Buffer.from(changed, "latin1"));
    assert.deepEqual((await downloaded(page, "#download")).bytes, files.script);
  } finally {
    await browser.close();
  }
});
