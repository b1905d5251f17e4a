// Where blocks begin and end: by indentation, as in the listings of varsul. A label, a dump and an
// empty line belong to the line below them.
import { ContextTracker, ExternalTokenizer, type InputStream } from "@lezer/lr";
import { dedent, indent } from "./listing.grammar.terms";

const newline = 10,
  space = 32,
  tab = 9;

// The listing's first level.
const baseDepth = 4;

class Level {
  readonly hash: number;
  constructor(
    readonly outer: Level | null,
    readonly depth: number,
  ) {
    this.hash = ((outer ? outer.hash * 31 : 7) + depth) | 0;
  }
}

export const blocks = new ContextTracker<Level>({
  start: new Level(null, baseDepth),
  shift(level, term, _stack, input) {
    if (term === indent) return new Level(level, nextDepth(input));
    if (term === dedent) return level.outer ?? level;
    return level;
  },
  hash: (level) => level.hash,
});

// The depth of the first indented line from the input's position on, which begins a line.
function nextDepth(input: InputStream): number {
  for (let at = 0; ;) {
    let depth = 0;
    for (; input.peek(at) === space || input.peek(at) === tab; ++at) ++depth;
    const first = input.peek(at);
    if (first < 0) return 0;
    if (depth > 0 && first !== newline) return Math.max(depth, baseDepth);
    for (let character = first; character !== newline; character = input.peek(++at)) {
      if (character < 0) return 0;
    }
    ++at;
  }
}

export const blockEdges = new ExternalTokenizer(
  (input, stack) => {
    if (input.pos > 0 && input.peek(-1) !== newline) return;
    const level = stack.context as Level;
    const depth = nextDepth(input);
    if (depth > level.depth && stack.canShift(indent)) input.acceptToken(indent);
    else if (depth < level.depth && stack.canShift(dedent)) input.acceptToken(dedent);
  },
  { contextual: true, fallback: false },
);
