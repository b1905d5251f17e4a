// Two listings to compare: their labels numbered in order, so that those that only moved look alike.
import { alignLines } from "./lines";

const label = /L[0-9A-F]{4}_[0-9A-F]{8}/g;
const definition = /^L[0-9A-F]{4}_[0-9A-F]{8}:$/;

// Labels that stand in the same place of both get the same number.
export function numberLabels(before: string, after: string): [string, string] {
  const one = before.split("\n");
  const other = after.split("\n");
  const numbers: [Map<string, string>, Map<string, string>] = [new Map(), new Map()];
  let next = 1;
  const give = (side: 0 | 1, name: string, number: string) => numbers[side].set(name, number);
  for (const [left, right] of alignLines(one, other, (line) => line.replace(label, "L"))) {
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
