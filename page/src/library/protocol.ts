// What the page asks of the worker that runs the library, and what comes back.
import type { Bytes, Game, Listed, ListOption, Rebuilt, Summary } from "../script/script";

// A listing, and the same with its dump, which tells where each line lies in the script.
export interface ListedWithDump extends Listed {
  readonly withDump: Bytes;
}

export interface Requests {
  summarise: { input: { bytes: Bytes; game: Game }; output: Summary };
  list: { input: { bytes: Bytes; game: Game; options: ListOption[] }; output: ListedWithDump };
  rebuild: { input: { listing: Bytes; table: Bytes }; output: Rebuilt };
}
