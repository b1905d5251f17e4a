// The library as the page calls it makes the same bytes as the command line, for every golden case and
// example: listing, text table, messages and the script that is rebuilt.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { Library } from "../src/library/library";
import { decode } from "../src/script/encoding";
import { games, type Game, type ListOption } from "../src/script/script";
// @ts-expect-error: no types
import { examples, goldenScripts, root, run } from "./tools.mjs";

const library = new Library(new WebAssembly.Module(readFileSync(join(root, "build/wasm/page/wasm/varsul.wasm"))));

const optionNames: Readonly<Record<string, ListOption>> = {
  "-d": "dump",
  "--dump": "dump",
  "-T": "textLabel",
  "--text-label": "textLabel",
  "--no-int16-to-text": "noInt16ToText",
  "--verbosity-parenthesis": "verbosityParenthesis",
  "--omit-decl": "omitDecl",
  "--omit-eval": "omitEval",
  "--omit-int32": "omitInt32",
  "-V": "verbose",
};

interface Case {
  options: string[];
  bytes: Buffer;
}

const exampleCases: Case[] = examples.map(({ path, game }: { path: string; game: string }) => ({
  options: [`--${game}`],
  bytes: readFileSync(path),
}));

// The options that the page knows; the files of a case stay out.
function known(options: readonly string[]) {
  const game = (options.findLast((option) => games.includes(option.slice(2) as Game))?.slice(2) ?? "kv") as Game;
  const names = options.filter((option) => option in optionNames);
  const chosen = new Set(names.map((name) => optionNames[name]!));
  if (names.filter((name) => name === "-V").length > 1) chosen.add("trace");
  return { game, names, chosen };
}

const kinds: ListOption[][] = [[], ["verbosityParenthesis"], ["dump", "omitEval", "omitDecl", "omitInt32"]];
const flags = Object.fromEntries(Object.entries(optionNames).map(([flag, name]) => [name, flag]));

// Source lines and identities of nodes are those of one build.
const plain = (messages: string) => messages.replace(/^([A-Z]+)\(\d+\)/gm, "$1").replace(/next=[0-9A-F]{8}/g, "next=");

test("listings, text tables and messages", () => {
  const cases: Case[] = [...goldenScripts(), ...exampleCases];
  assert.ok(cases.length > 80, `only ${cases.length} cases`);
  for (const { options, bytes } of cases) {
    if (bytes.length === 0) continue;
    const { game, names, chosen } = known(options);
    for (const more of kinds) {
      const arguments_ = [`--${game}`, ...names, ...more.map((name) => flags[name]!), "-t", "table"];
      const expected = run("varsul", arguments_, bytes);
      const listed = library.list(bytes, game, new Set([...chosen, ...more]));
      const what = `${arguments_.join(" ")} on ${bytes.toString("hex").slice(0, 80)}`;
      assert.equal(listed.status, expected.status, what);
      assert.deepEqual(Buffer.from(listed.listing), expected.output, what);
      if (expected.status === 0) assert.deepEqual(Buffer.from(listed.table), expected.files.table, what);
      assert.equal(plain(listed.messages), plain(decode(expected.messages)), what);
    }
  }
});

test("rebuilt scripts, and what is refused", () => {
  let rebuilt = 0;
  for (const { options, bytes } of [...goldenScripts(), ...exampleCases]) {
    for (const kind of [[], ["verbosityParenthesis"], ["verbosityParenthesis", "dump"]] as ListOption[][]) {
      const listed = library.list(bytes, known(options).game, new Set(kind));
      if (listed.status !== 0) continue;
      const expected = run("varsul-as", ["-o", "script"], listed.listing);
      const shown = decode(expected.messages);
      const { script, faults } = library.rebuild(listed.listing, new Uint8Array(0));
      assert.equal(script === null, expected.status !== 0, shown);
      if (script) assert.deepEqual(Buffer.from(script), expected.files.script);
      for (const { severity, text } of faults) assert.ok(shown.includes(`${severity}: ${text}`), shown);
      rebuilt += script ? 1 : 0;
    }
  }
  assert.ok(rebuilt > 40, `only ${rebuilt} scripts were rebuilt`);
});
