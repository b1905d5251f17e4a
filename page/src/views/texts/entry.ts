// A row of the table of texts.
import type { TextRow } from "../../script/script";
import type { Script } from "../../state/state";

export interface Entry {
  readonly script: Script;
  readonly row: TextRow;
  readonly index: number; // among the script's texts
  readonly searched: string;
}
