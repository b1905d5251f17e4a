// What a listing says: its statements with the blocks they govern, its labels, who refers to them.
import type { SyntaxNodeRef, Tree } from "@lezer/common";
import { parser } from "./listing.grammar";
import { unescape } from "./quoting";

export interface Label {
  readonly name: string;
  readonly from: number;
  readonly line: number;
  readonly statement: Statement | null; // the one below it
}

export interface Reference {
  readonly name: string;
  readonly from: number;
  readonly to: number;
  readonly line: number;
  readonly statement: Statement;
}

// A statement, a spoken text with all its lines (named "text"), or an element of a table (".data").
export interface Statement {
  readonly name: string;
  readonly from: number; // without indentation and labels
  to: number;
  readonly line: number; // from 1
  readonly labels: string[];
  operands: string; // as they are written
  text: string | null; // of the first text among them
  textFrom: number; // where that stands, with its quotes
  textTo: number;
  offers: string[]; // words behind "@" in it
  readonly block: Statement[];
}

export interface Outline {
  readonly speakerId: number | null; // null where the script names none
  readonly statements: readonly Statement[];
  readonly labels: ReadonlyMap<string, Label>;
  readonly references: readonly Reference[];
  readonly isComplete: boolean;
}

// Enough for an outline whose texts alone are looked at; it has no references.
const textsParser = parser.configure({ dialect: "texts" });
export const parseTexts = (listing: string): Tree => textsParser.parse(listing);

// Whether a new text begins on a line. Without it lines of text that may be one are taken as one.
export type BeginsText = (line: number) => boolean;

export function readOutline(listing: string, tree: Tree = parser.parse(listing), beginsText?: BeginsText): Outline {
  return new Reader(listing, beginsText).read(tree);
}

const endsTextLine = /\\n\}?"$/;

class Reader {
  private readonly labels = new Map<string, Label>();
  private readonly references: Reference[] = [];
  private readonly lists: Statement[][] = [[]];
  private pending: { name: string; from: number; line: number }[] = [];
  private speakerId: number | null = null;
  private isComplete = false;
  private line = 1;
  private lineEnd: number;
  private current: Statement | null = null;

  constructor(
    private readonly listing: string,
    private readonly beginsText: BeginsText | undefined,
  ) {
    this.lineEnd = listing.indexOf("\n");
  }

  read(tree: Tree): Outline {
    tree.iterate({ enter: (node) => this.enter(node), leave: (node) => this.leave(node) });
    for (const { name, from, line } of this.pending) this.define(name, from, line, null);
    return {
      speakerId: this.speakerId,
      statements: this.lists[0]!,
      labels: this.labels,
      references: this.references,
      isComplete: this.isComplete,
    };
  }

  private enter(node: SyntaxNodeRef): boolean | void {
    switch (node.name) {
      case "Id": {
        const id = /\((\d+)\)/.exec(this.slice(node));
        if (id && id[1] !== "65535") this.speakerId = Number(id[1]);
        return false;
      }
      case "End":
        this.isComplete = true;
        return false;
      case "Dump":
      case "Comment":
      case "Option":
        return false;
      case "Block":
        this.lists.push(this.list.at(-1)?.block ?? []);
        return;
      case "LabelDefinition":
        this.pending.push({ name: this.slice(node).slice(0, -1), from: node.from, line: this.lineOf(node.from) });
        return false;
      case "Statement":
      case "DataLine":
      case "UnknownLine":
        this.begin(node);
        return;
      case "Text":
        return this.enterText(node);
      case "TextLabel":
        if (!this.inLine(node)) this.begin(node, "text");
        return false;
      case "LabelName":
        if (this.current) {
          const name = this.slice(node);
          this.references.push({
            name,
            from: node.from,
            to: node.to,
            line: this.current.line,
            statement: this.current,
          });
        }
        return false;
      case "Offer":
        this.current?.offers.push(this.slice(node).slice(1));
        return false;
    }
  }

  private leave(node: SyntaxNodeRef): void {
    if (node.name === "Block") this.lists.pop();
  }

  private enterText(node: SyntaxNodeRef): void {
    const escaped = this.listing.slice(node.from + 1, node.to - 1);
    if (this.inLine(node)) {
      if (this.current!.text === null) this.setText(this.current!, node, unescape(escaped));
      return;
    }
    const last = this.list.at(-1);
    const line = this.lineOf(node.from);
    const goesOn =
      last?.name === "text" &&
      this.pending.length === 0 &&
      (this.beginsText ? !this.beginsText(line) : endsTextLine.test(this.listing.slice(last.to - 4, last.to)));
    if (goesOn) {
      last.text += unescape(escaped);
      last.to = last.textTo = node.to;
      this.current = last;
    } else {
      this.setText(this.begin(node, "text"), node, unescape(escaped));
    }
  }

  private setText(statement: Statement, node: SyntaxNodeRef, text: string): void {
    statement.text = text;
    statement.textFrom = node.from;
    statement.textTo = node.to;
  }

  // Whether a text is an operand of the statement that stands before it on its line.
  private inLine(node: SyntaxNodeRef): boolean {
    return this.current !== null && node.to <= this.current.to && this.current.name !== "text";
  }

  private begin(node: SyntaxNodeRef, textName?: string): Statement {
    const source = this.slice(node);
    const name = textName ?? /^(\.\w+|\$?\w*)/.exec(source)![0];
    const line = this.lineOf(node.from);
    const statement: Statement = {
      name,
      from: node.from,
      to: node.to,
      line,
      labels: this.pending.map((label) => label.name),
      operands: textName ? source : source.slice(name.length).trimStart(),
      text: null,
      textFrom: -1,
      textTo: -1,
      offers: [],
      block: [],
    };
    for (const label of this.pending) this.define(label.name, label.from, label.line, statement);
    this.pending = [];
    this.list.push(statement);
    this.current = statement;
    return statement;
  }

  private define(name: string, from: number, line: number, statement: Statement | null): void {
    if (!this.labels.has(name)) this.labels.set(name, { name, from, line, statement });
  }

  private get list(): Statement[] {
    return this.lists.at(-1)!;
  }

  private slice(node: { from: number; to: number }): string {
    return this.listing.slice(node.from, node.to);
  }

  // Positions are asked for from front to back.
  private lineOf(position: number): number {
    while (this.lineEnd >= 0 && this.lineEnd < position) {
      ++this.line;
      this.lineEnd = this.listing.indexOf("\n", this.lineEnd + 1);
    }
    return this.line;
  }
}

// An expression as people read it: without the words that only tell how a number is stored.
export const readable = (operands: string) => operands.replace(/\b(eval|byte|int16|int32) /g, "");

// The keywords of a "keywords" or "askc" statement.
export const keywordsOf = (statement: Statement) =>
  (statement.text ?? "")
    .split(",")
    .map((word) => word.trim())
    .filter((word) => word !== "");
