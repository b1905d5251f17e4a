// Two listings to compare: their labels numbered in order, so that those that only moved look alike.
import { diff } from "@codemirror/merge";

const label = /L[0-9A-F]{4}_[0-9A-F]{8}/g;
const definition = /^L[0-9A-F]{4}_[0-9A-F]{8}:$/;

// Labels that stand in the same place of both get the same number.
export function numberLabels(before: string, after: string): [string, string] {
  const one = before.split("\n");
  const other = after.split("\n");
  const numbers: [Map<string, string>, Map<string, string>] = [new Map(), new Map()];
  let next = 1;
  const give = (side: 0 | 1, name: string, number: string) => numbers[side].set(name, number);
  for (const [left, right] of pairs(one, other)) {
    const names = [one[left] ?? "", other[right] ?? ""].map((line) =>
      definition.test(line) ? line.slice(0, -1) : null,
    );
    const number = String(next);
    if (names.some((name) => name !== null)) ++next;
    names.forEach((name, side) => name !== null && give(side as 0 | 1, name, number));
  }
  const rename = (listing: string, side: 0 | 1) =>
    listing.replace(label, (name) => {
      const number = numbers[side].get(name);
      return number === undefined ? name : `L_${number}`;
    });
  return [rename(before, 0), rename(after, 1)];
}

// The lines of both in order, those that are alike but for their labels in pairs; -1 stands for none.
function* pairs(one: readonly string[], other: readonly string[]): Generator<[number, number]> {
  const codes = new Map<string, string>();
  const coded = (lines: readonly string[]) =>
    lines
      .map((line) => {
        const plain = line.replace(label, "L");
        let code = codes.get(plain);
        // More kinds of line than there are codes look alike: that costs precision only.
        if (code === undefined) codes.set(plain, (code = String.fromCharCode(codes.size % 0xd000)));
        return code;
      })
      .join("");
  let left = 0;
  let right = 0;
  for (const change of [...diff(coded(one), coded(other), { scanLimit: 1000 }), null]) {
    const end = change ? change.fromA : one.length;
    while (left < end) yield [left++, right++];
    if (!change) return;
    while (left < change.toA) yield [left++, -1];
    while (right < change.toB) yield [-1, right++];
  }
}
