// What the page takes from a listing: statements, blocks, labels, texts with their place, offsets.
import assert from "node:assert/strict";
import { test } from "node:test";
import { conversationOf, titleOf } from "../src/conversation/conversation";
import { withExactLines } from "../src/listing/lines";
import { parser } from "../src/listing/listing.grammar";
import { numberLabels } from "../src/listing/numbering";
import { offsetsOf } from "../src/listing/offsets";
import { readOutline, type Statement } from "../src/listing/outline";
import { escape, quotedLines, unescape } from "../src/listing/quoting";
import { changedRows, textRows, withText } from "../src/listing/texts";
import { decode, encode, shown } from "../src/script/encoding";

const listing = (...lines: string[]) => ["; id: 07(7)", "    .option --kv", "", ...lines, "; END", ""].join("\n");

const gate = listing(
  '    sident 7, "Bree"',
  "L0007_00000007:",
  '    "The gate is shut.\\n"',
  '    "Ask about the @toll or the @moon."',
  "    ask",
  '    keywords "toll,coin"',
  "        answer",
  "        if eval objcount(byte 1, byte 40) >= byte 3",
  "            dprint int32 L0007_00000091, eval $var[1]",
  "            bye",
  "        else",
  '            "No."',
  "            jump L0007_00000007",
  "        endif",
  '    keywords "coin"',
  "        answer",
  "    endanswer",
  "    end",
  "L0007_00000091:",
  '    .data "a {店\\n} b"',
  "    .data 0x0010 ; 16",
  "    enddata",
);

test("a listing has no part that the grammar does not know", () => {
  const others = [
    "; comment\n  $var[1] := byte 7 ; why\nmine:\n    jump mine\n    .unknown.byte 0x43 ; 67\n    T0007_0001\n    setf 1 + 2 * (3 - 4) || data(L0007_00000091, 1) && $str[0] != 5\n",
    '\n; 00000000: A1 D2 08 00 00 00 A7                            : .......\n    if eval 1\n\nL0007_00000008:\n; 00000008: A3                                              : .\n        "x"\n\n; 0000000D: END\n',
    '    "no line feed at the end"',
    "",
  ];
  for (const text of [gate, ...others]) {
    parser.parse(text).iterate({
      enter: (node) => assert.ok(!node.type.isError, `at ${node.from} of ${JSON.stringify(text)}`),
    });
  }
});

test("statements hang below those that govern them", () => {
  const tree = (statements: readonly Statement[]): unknown[] =>
    statements.map(({ name, block }) => (block.length > 0 ? [name, ...tree(block)] : name));
  const outline = readOutline(gate);
  assert.deepEqual(tree(outline.statements), [
    "sident",
    "text",
    "ask",
    ["keywords", "answer", ["if", "dprint", "bye"], ["else", "text", "jump"], "endif"],
    ["keywords", "answer"],
    "endanswer",
    "end",
    ".data",
    ".data",
    "enddata",
  ]);
  assert.equal(outline.speakerId, 7);
  assert.ok(outline.isComplete);
  assert.deepEqual(
    [...outline.labels.values()].map(({ name, line, statement }) => [name, line, statement?.name]),
    [
      ["L0007_00000007", 5, "text"],
      ["L0007_00000091", 22, ".data"],
    ],
  );
  assert.deepEqual(
    outline.references.map(({ name, line }) => [name.slice(-2), line]),
    [
      ["91", 12],
      ["07", 16],
    ],
  );
});

test("a listing that is cut or wrong still says the rest", () => {
  const cut = readOutline(gate.slice(0, gate.indexOf("        endif")).replace("ask\n", "ask ) (\n"));
  assert.equal(cut.isComplete, false);
  assert.ok(cut.labels.has("L0007_00000007"));
  assert.equal(cut.statements.find(({ name }) => name === "keywords")?.text, "toll,coin");
});

test("texts with kind and place", () => {
  const texts = [
    "Bree",
    "The gate is shut.\nAsk about the @toll or the @moon.",
    "toll,coin",
    "No.",
    "coin",
    "a {店\n} b",
  ];
  const table = [
    "# label\toffset\ttext",
    ...texts.map((text, at) => `T0007_000${at}\t0x0000000${at}\t"${escape(text)}"`),
    "# end",
    "",
  ].join("\n");
  const rows = textRows(table, readOutline(gate));
  assert.deepEqual(
    rows.map(({ text, kind, place, line, offset }) => [text, kind, place, line, offset]),
    [
      [texts[0], "name", "", 4, 0],
      [texts[1], "spoken", "", 6, 1],
      [texts[2], "keyword", "", 9, 2],
      [texts[3], "spoken", "toll, coin › unless objcount(1, 40) >= 3", 15, 3],
      [texts[4], "keyword", "", 18, 4],
      [texts[5], "table", "L0007_00000091", 23, 5],
    ],
  );
  const changed = withText(gate, readOutline(gate), 3, 'Two\n"{店\n}" lines')!;
  assert.match(changed, /^ {12}"Two\\n"\n {12}"\\"\{店\\n\}"\n {12}"\\" lines"$/m);
  assert.deepEqual(
    changedRows(rows, readOutline(changed))
      ?.map(({ text, line }) => [text, line])
      .slice(3),
    [
      ['Two\n"{店\n}" lines', 15],
      ["coin", 20],
      ["a {店\n} b", 25],
    ],
  );
  assert.equal(changedRows(rows, readOutline(changed.replace('"Bree"', "8"))), null);
});

test("two texts that follow each other are told apart by their offsets", () => {
  const two = listing('    "one\\n"', '    "two"');
  const merged = readOutline(two).statements.map(({ text }) => text);
  const apart = readOutline(two, undefined, () => true).statements.map(({ text }) => text);
  assert.deepEqual([merged, apart], [["one\ntwo"], ["one\n", "two"]]);
  const dumped =
    '; id: 07(7)\n    .option --kv\n\n; 00000000: 6F 0A                                           : o.\n    "one\\n"\n    "two"\n\n; 00000005: END\n';
  assert.deepEqual([...offsetsOf(two, dumped)], [-1, -1, -1, 0, -1, -1, -1]);
});

test("quoting and encoding lose nothing", () => {
  for (const text of ['a\tb\n"c\\', "{店\n}\n", "", "\n\n"]) {
    assert.equal(unescape(escape(text)), text);
    assert.equal(
      quotedLines(text)
        .map((line) => unescape(line.slice(1, -1)))
        .join(""),
      text,
    );
  }
  const all: number[] = [];
  for (let lead = 0; lead < 256; ++lead) for (let trail = 0; trail < 256; ++trail) all.push(lead, trail);
  const text = decode(Uint8Array.from(all));
  assert.deepEqual([...encode(text).bytes], all);
  assert.equal(text.includes("\r"), false);
  assert.equal(shown(decode(Uint8Array.from([0x93, 0x94, 0xed, 0x40, 0xff]))), "灯纊‹FF›");
  assert.deepEqual(encode("a店ü😀").faults, [
    { at: 2, letter: "ü" },
    { at: 3, letter: "😀" },
  ]);
});

test("a conversation: what leads where, what is not answered, what is hidden", () => {
  const { cards, arrows } = conversationOf(readOutline(gate));
  const name = (card: (typeof cards)[number]) => card.keywords.join() || titleOf(card);
  assert.deepEqual(
    arrows.map(({ from, to, condition, isBack }) => [name(from), name(to), condition, isBack]),
    [
      ["Bree", "The gate is shut. Ask about the @toll…", "", false],
      ["The gate is shut. Ask about the @toll…", "toll,coin", "", false],
      ["toll,coin", "one of “a {店 } b” …", "objcount(1, 40) >= 3", false],
      ["toll,coin", "No.", "else", false],
      ["The gate is shut. Ask about the @toll…", "coin", "", false],
      ["coin", "", "", false],
      ["No.", "The gate is shut. Ask about the @toll…", "", true],
    ],
  );
  const offers = cards.flatMap((card) => card.offers);
  assert.deepEqual(offers, [
    { word: "toll", isAnswered: true },
    { word: "moon", isAnswered: false },
  ]);
  assert.deepEqual(cards.map((card) => card.hidden).flat(), ["coin"]);
  assert.deepEqual(
    cards.filter((card) => card.end).map((card) => card.end),
    ["bye", "end"],
  );
});

test("labels that only moved look alike", () => {
  const moved = gate.replaceAll("L0007_00000007", "L0007_00000017").replaceAll("L0007_00000091", "L0007_000000A5");
  const [before, after] = numberLabels(gate, moved);
  assert.equal(before, after);
  const more = moved.replace("    ask", "L0007_00000099:\n    ask");
  const [one, other] = numberLabels(gate, more);
  const added = other.split("\n").filter((line) => !one.split("\n").includes(line));
  assert.equal(added.length, 1);
});

test("lines that were not changed take their exact form", () => {
  const plain = "a\n1 - (2 == 3) - 4\nb\n1 - 2 - 3\n";
  const exact = "a\n(1 - ((2 == 3) - 4))\nb\n((1 - 2) - 3)\n";
  const { lines, isExact } = withExactLines(plain, exact, "a\nnew\n1 - (2 == 3) - 4\nb\n1 - 2 - 5\n");
  assert.deepEqual(lines, ["a", "new", "(1 - ((2 == 3) - 4))", "b", "1 - 2 - 5", ""]);
  assert.deepEqual(isExact, [false, false, true, false, false, false]);
});
