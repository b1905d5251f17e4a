// The C interface of the library, as wasm/varsul.cpp declares it.
import { decode } from "../script/encoding";
import {
  type BuildFault,
  games,
  listOptions,
  type Bytes,
  type Game,
  type Listed,
  type ListOptions,
  type Rebuilt,
} from "../script/script";

interface Exports {
  readonly memory: WebAssembly.Memory;
  _initialize(): void;
  varsul_input(size: number): number;
  varsul_list(game: number, options: number): number;
  varsul_rebuild(listingSize: number): number;
  varsul_part(part: number): number;
  varsul_part_size(part: number): number;
}

const enum Part {
  listing,
  table,
  messages,
  script,
}

// The library asks the system for nothing: it reads and writes memory alone.
const refuse = () => 52; // the system's number for "there is no such function"
const imports: WebAssembly.Imports = {
  env: { emscripten_notify_memory_growth: () => {} },
  wasi_snapshot_preview1: new Proxy({}, { get: () => refuse }) as WebAssembly.ModuleImports,
};

export class Library {
  private readonly exports: Exports;

  constructor(module: WebAssembly.Module) {
    this.exports = new WebAssembly.Instance(module, imports).exports as unknown as Exports;
    this.exports._initialize();
  }

  list(script: Uint8Array, game: Game, options: ListOptions): Listed {
    if (script.length === 0) return { status: 1, listing: empty, table: empty, messages: "ERROR: the file is empty\n" };
    this.put(script);
    const bits = listOptions.reduce((sum, option, bit) => sum + (options.has(option) ? 2 ** bit : 0), 0);
    const status = this.exports.varsul_list(games.indexOf(game), bits);
    return {
      status,
      listing: this.part(Part.listing),
      table: this.part(Part.table),
      messages: decode(this.part(Part.messages)),
    };
  }

  // The script of a listing, whose text labels stand in the table.
  rebuild(listing: Uint8Array, table: Uint8Array): Rebuilt {
    const both = new Uint8Array(listing.length + table.length);
    both.set(listing);
    both.set(table, listing.length);
    this.put(both);
    const outcome = this.exports.varsul_rebuild(listing.length);
    if (outcome === 2) throw new RangeError("the memory is exhausted");
    const faults = decode(this.part(Part.messages)).split("\n").slice(0, -1).map(faultOf);
    return { script: outcome === 0 ? this.part(Part.script) : null, faults };
  }

  // How much memory the library holds; it gives none back.
  get memory(): number {
    return this.exports.memory.buffer.byteLength;
  }

  private put(bytes: Uint8Array): void {
    const place = this.exports.varsul_input(bytes.length);
    if (place === 0) throw new RangeError("the memory is exhausted");
    new Uint8Array(this.exports.memory.buffer, place, bytes.length).set(bytes);
  }

  private part(part: Part): Bytes {
    const size = this.exports.varsul_part_size(part);
    return new Uint8Array(this.exports.memory.buffer, this.exports.varsul_part(part), size).slice();
  }
}

function faultOf(line: string): BuildFault {
  const [file, severity, position, ...text] = line.split("\t");
  return { file, severity, position: Number(position), text: text.join("\t") } as BuildFault;
}

const empty = new Uint8Array(0);
