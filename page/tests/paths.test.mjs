// The ways that a user takes through the page, checked by what is on the screen.
import assert from "node:assert/strict";
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { unzipSync } from "fflate";
import { click, downloaded, launch, openFiles, openPage, seen, valueOf } from "./page.mjs";
import { examples, run, temporary } from "./tools.mjs";

const [lantern, ferry, orchard] = examples;
const folder = temporary();

function file(name, bytes) {
  const path = join(folder, name);
  writeFileSync(path, bytes);
  return path;
}

let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

// A test on a page of its own, in which nothing may go wrong unseen.
function path(name, walk, options) {
  test(name, { timeout: 90_000 }, async () => {
    const page = await openPage(browser, options);
    try {
      await walk(page);
      assert.deepEqual(page.faults, []);
    } finally {
      await page.close({ runBeforeUnload: false });
    }
  });
}

const pressed = async (page, modifier, key) => {
  await page.keyboard.down(modifier);
  await page.keyboard.press(key);
  await page.keyboard.up(modifier);
};

// Goes to a text in the listing by its search, so that it is selected.
async function find(page, text) {
  await page.focus("#listing .cm-content");
  await pressed(page, "Control", "f");
  await page.waitForSelector(".cm-search input[name=search]");
  await page.$eval(".cm-search input[name=search]", (input) => input.select());
  await page.keyboard.type(text);
  await page.keyboard.press("Enter");
  await page.keyboard.press("Escape");
}

async function openExample(page, { game }) {
  await click(page, `#example-${game}`);
  await seen(page, "#listing .cm-line", /^; id:/);
}

path("1: a first visit is told what this is, and shows an example with a click", async (page) => {
  assert.equal((await page.$$("#welcome > p:not(.quiet)")).length, 3);
  await openExample(page, ferry);
  await seen(page, "#script-title", "salt-ferry.scr");
  await seen(page, "#script-bar", "Merrit Oxbow · Brenhollow");
});

path("1: a script of another game says which games list it, and the game is remembered", async (page) => {
  const ofFerry = file("of-ferry.scr", readFileSync(ferry.path));
  const { status } = run("varsul", ["--qf"], readFileSync(ferry.path));
  await page.select("#game", "qf");
  await openFiles(page, [ofFerry]);
  await seen(page, "#game-hint", status === 0 ? "Brenhollow" : "Read as Brenhollow");
  await page.select("#game", "bh");
  await seen(page, "#listing .cm-line", ".option --bh");
  await page.reload();
  assert.equal(await valueOf(page, "#game", (game) => game.value), "bh");
});

path("1: a folder, with progress and a way to stop; dropped files", async (page) => {
  const many = join(folder, "many");
  mkdirSync(many);
  const bytes = readFileSync(lantern.path);
  for (let count = 0; count < 400; ++count) writeFileSync(join(many, `${count}.scr`), bytes);
  await openFiles(page, [many], "#open-folder");
  const stop = () => !document.querySelector("#progress").hidden && (document.querySelector("#stop").click(), true);
  await page.waitForFunction(stop, { polling: 10 });
  await page.waitForSelector("#resume:not([hidden])");
  await seen(page, "#scripts .count", "400 of 400 scripts");
  await click(page, "#resume");
  await page.waitForSelector("#resume[hidden]", { timeout: 60_000 });
  await page.waitForSelector("#progress[hidden]", { timeout: 60_000 });
  await page.evaluate(
    (text) => {
      const dataTransfer = new DataTransfer();
      dataTransfer.items.add(new File([Uint8Array.from(text)], "dropped.scr"));
      document.dispatchEvent(new DragEvent("drop", { dataTransfer, cancelable: true }));
    },
    [...bytes],
  );
  await seen(page, "#script-title", "dropped.scr");
});

path("2: the table of scripts is sorted, filtered and moved in by keyboard", async (page) => {
  const broken = file("broken.scr", Buffer.from([0xa1, 0xd3, 0x01]));
  await openFiles(page, [lantern.path, broken, file("small.scr", Buffer.from([0xff, 9, 0x41, 0x62, 0x65, 0xd1]))]);
  await seen(page, "#scripts .table-row", /lantern-keeper\.scr23Odda MarrowickKelvorath4,32885listed/);
  await seen(page, "#scripts .table-row", /broken\.scr.*3\s*0failed/);
  const names = () =>
    page.$$eval("#scripts .table-body .table-row > :first-child", (all) => all.map((cell) => cell.textContent));
  const sort = async (title) =>
    (await page.$$("#scripts .table-sort")).map(
      async (button) => (await button.evaluate((head) => head.textContent)) === title && button.click(),
    );
  await Promise.all(await sort("Bytes"));
  assert.deepEqual(await names(), ["broken.scr", "small.scr", "lantern-keeper.scr"]);
  await Promise.all(await sort("Bytes"));
  assert.deepEqual(await names(), ["lantern-keeper.scr", "small.scr", "broken.scr"]);
  await page.type("#scripts-filter", "failed");
  assert.deepEqual(await names(), ["broken.scr"]);
  await page.$eval("#scripts-filter", (input) => input.select());
  await page.keyboard.type("scr");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("Enter");
  await seen(page, "#script-title", "small.scr");
});

path("3: labels lead, say who jumps there, and there is a way back", async (page) => {
  await openExample(page, lantern);
  await seen(page, "#listing .cm-line", "{灯台守の表札");
  await seen(page, "#listing .cm-offsets", "00BF");
  await find(page, "hello,hi");
  await page.waitForSelector(".cm-reference[data-words]");
  assert.match(await valueOf(page, ".cm-reference[data-words]", (mark) => mark.dataset.words), /^“Odda trims a wick/);
  await click(page, ".cm-reference[data-words]");
  await seen(page, ".cm-activeLine", "L0017_000002F2:");
  await page.waitForSelector(".cm-activeLine .cm-sources");
  assert.equal(await valueOf(page, ".cm-activeLine .cm-sources", (button) => button.dataset.count), "← 7 ways here");
  await click(page, ".cm-activeLine .cm-sources");
  await click(page, ".menu:popover-open button:nth-child(3)");
  await seen(page, ".cm-activeLine", "jump L0017_000002F2");
  await click(page, "#back");
  await seen(page, ".cm-activeLine", "L0017_000002F2:");
  await pressed(page, "Alt", "ArrowLeft");
  await seen(page, ".cm-activeLine", "jump L0017_000002F2");
  await click(page, "#forward");
  await seen(page, ".cm-activeLine", "L0017_000002F2:");
});

path("3: blocks fold, and the options are switches", async (page) => {
  await openExample(page, orchard);
  await seen(page, "#listing .cm-line", "You found my @key");
  await click(page, ".cm-foldGutter span[title='Fold line']");
  await seen(page, ".cm-foldPlaceholder", "…");
  await click(page, "#options");
  await click(page, "#option-dump");
  await seen(page, "#listing .cm-line", /^; 00000000: FF 4D/);
  await click(page, "#option-textLabel");
  await click(page, "#option-omitEval");
  await seen(page, "#listing .cm-line", "T004D_0000");
  const { output } = run("varsul", ["--qf", "-d", "-T", "-t", "table", "--omit-eval"], readFileSync(orchard.path));
  const { name, bytes } = await downloaded(page, "#download-listing");
  assert.equal(name, "clockwork-orchard.lst");
  assert.deepEqual(bytes, output);
});

path("4: texts of all scripts are searched, lead to the listing, and leave as CSV and JSON", async (page) => {
  await openFiles(page, [lantern.path, file("ferry.scr", readFileSync(ferry.path))]);
  await seen(page, "#scripts .table-row", "Merrit Oxbow");
  await click(page, "#view-texts");
  await page.type("#texts-search", "no lantern of mine");
  await seen(page, "#texts .count", /^1 of \d+ texts$/);
  await seen(
    page,
    "#texts .table-row",
    /spokenlantern, lanterns, light › if \$var\[1\] > 6"That is no lantern of mine/,
  );
  const json = JSON.parse((await downloaded(page, "#texts-json")).bytes.toString("utf8"));
  assert.equal(json.length, 1);
  assert.equal(json[0].text, '"That is no lantern of mine. That is a pub."\n');
  assert.deepEqual([json[0].file, json[0].speaker_id, json[0].offset], ["lantern-keeper.scr", 23, 0x068d]);
  const csv = (await downloaded(page, "#texts-csv")).bytes.toString("utf8");
  assert.match(
    csv,
    /^\ufeff"?file"?,.*\r\n"lantern-keeper.scr","23",.*"""That is no lantern of mine\. That is a pub\.""\n"\r\n$/s,
  );
  await click(page, "#texts .table-body .table-row");
  await seen(page, ".cm-activeLine", "That is no lantern of mine");
});

path("5: the map shows what is said and heard, and what no keyword answers", async (page) => {
  const script = readFileSync(lantern.path)
    .toString("latin1")
    .replace("@weather", "@weasels")
    .replace("bye,farewell", "oil,farewell");
  await openFiles(page, [file("map.scr", Buffer.from(script, "latin1"))]);
  await seen(page, "#script-title", "map.scr");
  await click(page, "#view-map");
  await seen(page, "#map .keywords", "hello, hi");
  await seen(page, "#map .card", "Seven lanterns, and one of them");
  await seen(page, "#map .condition", "objcount(1, 40) >= $var");
  await seen(page, "#map .line.is-warning", "no keyword answers “weasels”");
  await seen(page, "#map .line.is-warning", "“oil” is answered earlier");
  await seen(page, "#map .line.is-leads", "↩ Odda trims a wick");
  await seen(page, "#map .line.is-end", "the conversation ends");
  const arrows = (await page.$$("#map .arrow")).length;
  await click(page, "#map-back-arrows");
  await page.waitForFunction((count) => document.querySelectorAll("#map .arrow").length > count, {}, arrows);
  const place = () => valueOf(page, "#map-picture > g", (group) => group.getAttribute("transform"));
  const before = await place();
  await click(page, "#map-larger");
  assert.notEqual(await place(), before);
  await click(page, "#map-fit");
  const svg = (await downloaded(page, "#map-svg")).bytes.toString("utf8");
  assert.match(svg, /^<svg [^>]*width="\d+".*Seven lanterns/s);
  const png = (await downloaded(page, "#map-png")).bytes;
  assert.equal(png.subarray(1, 4).toString(), "PNG");
  await page.$$eval("#map .card", (cards) => cards.find((card) => card.textContent.includes("pub")).focus());
  await page.keyboard.press("Enter");
  await seen(page, ".cm-activeLine", "That is a pub");
});

path("6: the listing is changed, rebuilt and compared with what was opened", async (page) => {
  await openExample(page, lantern);
  assert.equal(await valueOf(page, "#build", (button) => button.disabled), true);
  await find(page, "Cold-pressed");
  await page.keyboard.type("Freshly pressed");
  await click(page, "#build");
  await seen(page, "#notice", "Rebuilt: 4331 bytes.");
  const listing = run("varsul", ["--kv", "--verbosity-parenthesis"], readFileSync(lantern.path)).output.toString(
    "latin1",
  );
  const changed = listing.replace("Cold-pressed", "Freshly pressed");
  const expected = run("varsul-as", ["-o", "script"], Buffer.from(changed, "latin1")).files.script;
  await click(page, "#view-compare");
  await seen(page, "#compare-result", "1 place differs");
  await seen(page, ".cm-merge-b .cm-changedLine", "Freshly pressed");
  await click(page, "#compare-bytes");
  await seen(page, ".cm-merge-b .cm-changedLine", "; A6 01 B2 A8 D2 6D 0E");
  await click(page, "#view-listing");
  const { name, bytes } = await downloaded(page, "#download");
  assert.equal(name, "lantern-keeper.scr");
  assert.deepEqual(bytes, expected);
  await page.focus("#listing .cm-content");
  const isUndone = () => page.$eval("#listing .cm-content", (content) => content.textContent.includes("Cold-pressed"));
  for (let step = 0; step < 40 && !(await isUndone()); ++step) await pressed(page, "Control", "z");
  await seen(page, "#listing .cm-line", "Cold-pressed");
});

path("6: each fault is underlined where it is, and a slip loses nothing", async (page) => {
  await openExample(page, ferry);
  await find(page, "sconverse");
  await page.keyboard.type("sconwerse");
  await find(page, "endanswer");
  await page.keyboard.type("endanswer 5 ü");
  await click(page, "#build");
  await seen(page, "#messages", "The scripts' encoding has no “ü”.");
  await page.focus("#listing .cm-content");
  await page.keyboard.press("Backspace");
  await click(page, "#build");
  await seen(page, "#messages .is-error", /line \d+: .*sconwerse/);
  await seen(page, "#listing .cm-lintRange-error", "sconwerse");
  assert.equal((await page.$$("#messages .is-error")).length, 2);
  const asked = new Promise((resolve) =>
    page.once("dialog", async (dialog) => (resolve(dialog.type()), await dialog.dismiss())),
  );
  await page.close({ runBeforeUnload: true });
  assert.equal(await asked, "beforeunload");
  page.on("dialog", (dialog) => dialog.accept());
  await click(page, "#discard");
  await page.waitForSelector("#discard[hidden]");
  await seen(page, "#listing .cm-line", "    sconverse");
});

path("6: texts are changed in their table; all that changed leaves as a zip", async (page) => {
  await openFiles(page, [lantern.path, file("second.scr", readFileSync(lantern.path))]);
  await seen(page, "#scripts .count", "2 of 2");
  await click(page, "#view-texts");
  await page.type("#texts-search", "opens one eye");
  await seen(page, "#texts .count", /^2 of/);
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("F2");
  const area = await page.waitForSelector("#text-edit");
  const text = await area.evaluate((element) => element.value);
  assert.match(text, /\{ﾆｬｰ\.\}"\n$/);
  const replace = async (text) => {
    await area.evaluate((element) => element.select());
    await page.keyboard.sendCharacter(text);
  };
  await replace("Ünd");
  await seen(page, "#text-fault", "encoding has no “Ü”");
  await replace("猫");
  await seen(page, "#text-fault", "between { and }");
  await replace('Both eyes {猫} are "open".\nNow.\n');
  await click(page, "#text-apply");
  await seen(page, "#download-changed", "Changed (1) ↓");
  await click(page, "#texts-undo");
  await page.waitForSelector("#download-changed[hidden]");
  await page.focus("#texts .table");
  await page.keyboard.press("F2");
  await page.waitForSelector("#text-edit");
  await page.$eval("#text-edit", (element) => element.select());
  await page.keyboard.sendCharacter('Both eyes {猫} are "open".\nNow.\n');
  await click(page, "#text-apply");
  await seen(page, "#download-changed", "Changed (1) ↓");
  const { name, bytes } = await downloaded(page, "#download-changed");
  const files = unzipSync(bytes);
  assert.deepEqual([name, Object.keys(files)], ["changed-scripts.zip", ["lantern-keeper.scr"]]);
  const table = run("varsul", ["--kv", "-t", "table"], Buffer.from(files["lantern-keeper.scr"])).files.table;
  const added = table
    .toString("latin1")
    .split("\n")
    .filter((line) => line.includes("Both eyes"));
  assert.deepEqual(
    added.map((line) => Buffer.from(line, "latin1").toString("hex").includes("7b944c7d")),
    [true],
  );
  assert.match(added[0], /are \\"open\\"\.\\nNow\.\\n"$/);
});

path("7: two versions of a folder, and what changed in a script", async (page) => {
  const bytes = readFileSync(lantern.path);
  const versions = ["before", "after"].map((name) => join(folder, name));
  versions.forEach((version) => mkdirSync(version));
  for (const version of versions) writeFileSync(join(version, "same.scr"), bytes);
  writeFileSync(join(versions[0], "odda.scr"), bytes);
  const listing = run("varsul", ["--kv", "--verbosity-parenthesis"], bytes).output.toString("latin1");
  const longer = run(
    "varsul-as",
    ["-o", "script"],
    Buffer.from(listing.replace("one hour before", "a whole hour before"), "latin1"),
  );
  writeFileSync(join(versions[1], "odda.scr"), longer.files.script);
  await openFiles(page, [versions[0]], "#open-folder");
  await seen(page, "#scripts .count", "2 of 2");
  await click(page, "#view-compare");
  await openFiles(page, [versions[1]], "#open-other-folder");
  await seen(page, "#compare .table-row", "odda.scrchanged");
  await seen(page, "#compare .table-row", "same.scrsame");
  await click(page, "#compare .table-body .table-row");
  await seen(page, "#compare-result", "1 place differs");
  await seen(page, ".cm-merge-b .cm-changedLine", "a whole hour before");
});

path("8: a damaged script leads to its bytes and the texts in them", async (page) => {
  const bytes = Buffer.concat([readFileSync(lantern.path).subarray(0, 0x700), Buffer.from([0xa1])]);
  const { status, messages } = run("varsul", ["--kv"], bytes);
  assert.equal(status, 1);
  await openFiles(page, [file("damaged.scr", bytes)]);
  await seen(page, "#messages", "This script could not be listed");
  const [first] = messages.toString().split("\n");
  await seen(page, "#messages li", first.replace(/^ERROR\(\d+\): /, ""));
  await click(page, "#messages .link");
  await page.waitForSelector("#bytes .hex mark");
  await seen(page, "#bytes .table-row", "Has he been useful?");
});

path(
  "9: dark, at twice the size, without scrolling sideways",
  async (page) => {
    await openExample(page, lantern);
    for (const view of ["scripts", "texts", "listing", "map", "compare", "bytes"]) {
      await click(page, `#view-${view}`);
      const [width, room] = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
      assert.ok(width <= room, `${view} is ${width} wide in ${room}`);
    }
    const ground = await valueOf(page, "body", (body) => getComputedStyle(body).backgroundColor);
    assert.match(ground, /rgb\(\s*2\d,/);
  },
  { width: 512, height: 400, dark: true },
);
