// The bytes of the open script, and the texts that can be read in them.
import { decode, shown } from "../script/encoding";
import { openScript, type Script } from "../state/state";
import type { Workbench } from "../state/workbench";
import { element } from "../ui/dom";
import { Table } from "../ui/table";

const width = 16;

// A run of characters that may be a text.
interface Found {
  readonly offset: number;
  readonly text: string;
}

const hex = (value: number, digits: number) => value.toString(16).toUpperCase().padStart(digits, "0");
const isCharacter = (byte: number) => byte >= 0x20 && byte < 0x7f;

export function drawBytes(place: HTMLElement, workbench: Workbench): void {
  const { store } = workbench;
  let script: Script | null = null;
  let marked = -1;
  const row = (offset: number, draw: (byte: number) => string, between: string) => {
    const end = Math.min(offset + width, script!.bytes.length);
    const parts: (string | Node)[] = [];
    for (let at = offset; at < end; ++at) {
      const text = draw(script!.bytes[at]!);
      parts.push(at === marked ? element("mark", { textContent: text }) : text, at + 1 < end ? between : "");
    }
    return element("span", {}, ...parts);
  };
  const table = new Table<number>({
    label: "Bytes",
    rowHeight: 24,
    columns: [
      { name: "offset", title: "Offset", width: "76px", className: "is-quiet", cell: (offset) => hex(offset, 8) },
      { name: "bytes", title: "Bytes", width: "400px", cell: (offset) => row(offset, (byte) => hex(byte, 2), " ") },
      {
        name: "characters",
        title: "Characters",
        width: "150px",
        cell: (offset) => row(offset, (byte) => (isCharacter(byte) ? String.fromCharCode(byte) : "·"), ""),
      },
    ],
  });
  const texts = new Table<Found>({
    label: "Texts in the bytes",
    rowHeight: 30,
    columns: [
      { name: "offset", title: "Offset", width: "76px", className: "is-quiet", cell: ({ offset }) => hex(offset, 8) },
      {
        name: "text",
        title: "Texts that can be read",
        width: "1fr",
        cell: ({ text }) => shown(text).replace(/\s+/g, " "),
      },
    ],
    open: ({ offset }) => workbench.show({ id: script!.id, view: "bytes", offset }),
    empty: "No texts can be read.",
  });
  table.element.classList.add("hex");
  place.append(table.element, texts.element);
  let offsets: number[] = [];
  store.listen((state) => {
    place.hidden = state.view !== "bytes";
    const now = openScript(state);
    if (place.hidden || !now) return;
    if (now.bytes !== script?.bytes) {
      script = now;
      offsets = Array.from({ length: Math.ceil(now.bytes.length / width) }, (_, line) => line * width);
      table.show(offsets);
      texts.show(textsIn(now.bytes));
    }
    script = now;
    const offset = state.place?.offset ?? -1;
    if (offset === marked) return;
    marked = offset;
    table.show(offsets);
    const line = offsets[Math.floor(marked / width)];
    if (line !== undefined) table.reveal(line);
  });
}

const shortest = 4;

// Double-byte passages count where they are whole.
function textsIn(bytes: Uint8Array): Found[] {
  const found: Found[] = [];
  let from = 0;
  const take = (end: number) => {
    if (end - from >= shortest) found.push({ offset: from, text: decode(bytes.subarray(from, end)).trim() });
  };
  for (let at = 0; at < bytes.length; ++at) {
    const byte = bytes[at]!;
    if (isCharacter(byte) || byte === 0x0a || byte === 0x09) {
      const end = byte === 0x7b ? endOfPassage(bytes, at + 1) : -1;
      if (end > 0) at = end;
      continue;
    }
    take(at);
    from = at + 1;
  }
  take(bytes.length);
  return found.filter(({ text }) => text.length >= shortest);
}

function endOfPassage(bytes: Uint8Array, from: number): number {
  for (let at = from; at < bytes.length; ++at) {
    const byte = bytes[at]!;
    if (byte === 0x7d) return at;
    if (byte < 0x0a) return -1;
    if ((byte >= 0x81 && byte <= 0x9f) || byte >= 0xe0) ++at;
  }
  return -1;
}
