// Which script of one version is which of the other: by its place in the folders, else by its name.
import type { Script, Side } from "../../state/state";

export interface Pair {
  readonly name: string;
  readonly state: "same" | "changed" | "only before" | "only after";
  readonly before: Side | null;
  readonly after: Side | null;
}

const nameOf = (path: string) => path.slice(path.lastIndexOf("/") + 1);
// The folders that were opened may have different names.
const belowFolder = (path: string) => path.slice(path.indexOf("/") + 1);

export function matchOf(script: Script, others: readonly Script[]): Script | undefined {
  return (
    others.find((other) => belowFolder(other.path) === belowFolder(script.path)) ??
    others.find((other) => nameOf(other.path) === nameOf(script.path))
  );
}

export function pairsOf(scripts: readonly Script[], others: readonly Script[]): Pair[] {
  const byPlace = new Map(others.map((other) => [belowFolder(other.path), other]));
  const byName = new Map(others.map((other) => [nameOf(other.path), other]));
  const taken = new Set<Script>();
  const pairs: Pair[] = scripts.map((script) => {
    const other = byPlace.get(belowFolder(script.path)) ?? byName.get(nameOf(script.path));
    if (other) taken.add(other);
    const before: Side = { is: "now", id: script.id };
    const after: Side | null = other ? { is: "other", id: other.id } : null;
    return { name: belowFolder(script.path), state: stateOf(script, other), before, after };
  });
  for (const other of others) {
    if (taken.has(other)) continue;
    pairs.push({
      name: belowFolder(other.path),
      state: "only after",
      before: null,
      after: { is: "other", id: other.id },
    });
  }
  const order = ["changed", "only after", "only before", "same"];
  return pairs.sort((one, another) => order.indexOf(one.state) - order.indexOf(another.state));
}

function stateOf(script: Script, other: Script | undefined): Pair["state"] {
  if (!other) return "only before";
  const { bytes } = script;
  return bytes.length === other.bytes.length && bytes.every((byte, at) => byte === other.bytes[at])
    ? "same"
    : "changed";
}
