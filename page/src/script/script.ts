// What a script is to the page.

export const games = ["kv", "bh", "qf"] as const;
export type Game = (typeof games)[number];
export const gameNames: Readonly<Record<Game, string>> = { kv: "Kelvorath", bh: "Brenhollow", qf: "Quillfen" };

export type Bytes = Uint8Array<ArrayBuffer>;

// The options of a listing, in the order of their bits in the C interface.
export const listOptions = [
  "dump",
  "textLabel",
  "noInt16ToText",
  "verbosityParenthesis",
  "omitDecl",
  "omitEval",
  "omitInt32",
  "verbose",
  "trace",
] as const;
export type ListOption = (typeof listOptions)[number];
export type ListOptions = ReadonlySet<ListOption>;

// What a run of the library made. The listing is incomplete where the status is not 0.
export interface Listed {
  readonly status: number;
  readonly listing: Bytes;
  readonly table: Bytes;
  readonly messages: string;
}

// Something wrong in a listing or its text table, at a position in its bytes.
export interface BuildFault {
  readonly file: "listing" | "table";
  readonly severity: "error" | "warning";
  readonly position: number;
  readonly text: string;
}

// What was made of a listing; no script where it has errors.
export interface Rebuilt {
  readonly script: Bytes | null;
  readonly faults: readonly BuildFault[];
}

export type Kind = "spoken" | "keyword" | "name" | "look" | "table";

// A text of a script and where it stands.
export interface TextRow {
  readonly label: string;
  readonly offset: number;
  readonly text: string;
  readonly kind: Kind;
  readonly place: string;
  readonly line: number; // of the plain listing, from 1
}

// What the page knows of a script once it was listed.
export interface Summary {
  readonly status: "listed" | "warnings" | "failed";
  readonly speakerId: number | null;
  readonly speakerName: string;
  readonly texts: readonly TextRow[];
  readonly messages: string;
  readonly listedBy: readonly Game[]; // the games that list it
  readonly alike: readonly Game[]; // the games that list it as the chosen one does
}
