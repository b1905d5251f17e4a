// What the build puts in.
declare module "*.grammar" {
  import type { LRParser } from "@lezer/lr";
  export const parser: LRParser;
}
declare module "*.grammar.terms" {
  const term: number;
  export { term as indent, term as dedent };
}
declare module "*.scr" {
  const bytes: Uint8Array<ArrayBuffer>;
  export default bytes;
}
declare const LIBRARY_WORKER: string;
declare const DRAWING_WORKER: string;
declare const LIBRARY_WASM: string;
declare const VERSION: string;
