// Which line of one listing is which of another.
import { diff } from "@codemirror/merge";

// Codes for kinds of line, below the surrogates.
const mostCodes = 0xd000;

// The indices of both in order, in pairs where the lines are of a kind; -1 stands for none.
export function* alignLines(
  one: readonly string[],
  other: readonly string[],
  kindOf: (line: string) => string = (line) => line,
): Generator<[number, number]> {
  const codes = new Map<string, number>();
  const coded = (lines: readonly string[]) =>
    lines
      .map((line) => {
        const kind = kindOf(line);
        if (!codes.has(kind)) codes.set(kind, codes.size);
        // With more kinds than codes some look alike.
        return String.fromCharCode(codes.get(kind)! % mostCodes);
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

// A listing that was changed, with each line that was not in its exact form: `plain` and `exact` list
// the same script, line by line. Returns the lines and which of them are exact.
export function withExactLines(plain: string, exact: string, changed: string): { lines: string[]; isExact: boolean[] } {
  const before = plain.split("\n");
  const sure = exact.split("\n");
  const lines = changed.split("\n");
  const isExact = lines.map(() => false);
  if (before.length !== sure.length) return { lines, isExact };
  for (const [left, right] of alignLines(before, [...lines])) {
    if (left < 0 || right < 0 || before[left] !== lines[right] || before[left] === sure[left]) continue;
    lines[right] = sure[left]!;
    isExact[right] = true;
  }
  return { lines, isExact };
}
