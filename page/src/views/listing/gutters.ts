// Beside each line of a listing: where it lies in the script, and its first bytes.
import { StateEffect, StateField } from "@codemirror/state";
import { gutter, GutterMarker, type BlockInfo, type EditorView } from "@codemirror/view";

export interface Located {
  readonly offsets: Int32Array; // see listing/offsets
  readonly bytes: Uint8Array;
}

const mostBytes = 8;

export const setOffsets = StateEffect.define<Located>();

// Offsets hold for the listing as it was made; they go when lines come or go.
const located = StateField.define<Located | null>({
  create: () => null,
  update(value, transaction) {
    for (const effect of transaction.effects) if (effect.is(setOffsets)) return effect.value;
    return transaction.newDoc.lines === transaction.startState.doc.lines ? value : null;
  },
});

class Marker extends GutterMarker {
  constructor(private readonly text: string) {
    super();
  }
  override eq(other: Marker): boolean {
    return other.text === this.text;
  }
  override toDOM(): Node {
    return document.createTextNode(this.text);
  }
}

const hex = (value: number, digits: number) => value.toString(16).toUpperCase().padStart(digits, "0");

// The bytes up to where the next line begins.
function bytesFrom({ offsets, bytes }: Located, index: number): string {
  const from = offsets[index]!;
  let next = index + 1;
  while (next < offsets.length && offsets[next]! <= from) ++next;
  const end = next < offsets.length ? offsets[next]! : bytes.length;
  const shown = [...bytes.subarray(from, Math.min(end, from + mostBytes))].map((byte) => hex(byte, 2)).join(" ");
  return end - from > mostBytes ? `${shown} …` : shown;
}

function column(name: string, text: (located: Located, index: number) => string) {
  return gutter({
    class: name,
    lineMarker(view: EditorView, block: BlockInfo) {
      const value = view.state.field(located);
      const index = view.state.doc.lineAt(block.from).number - 1;
      if (!value || (value.offsets[index] ?? -1) < 0) return null;
      const isLabel = value.offsets[index] === value.offsets[index + 1];
      return isLabel ? null : new Marker(text(value, index));
    },
    lineMarkerChange: (update) => update.startState.field(located) !== update.state.field(located),
  });
}

export const bytesGutters = [
  located,
  column("cm-offsets", ({ offsets }, index) => hex(offsets[index]!, 4)),
  column("cm-bytes", bytesFrom),
];
