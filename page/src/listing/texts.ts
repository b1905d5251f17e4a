// The texts of a script, each with its kind and its place in the conversation.
import type { Kind, TextRow } from "../script/script";
import { keywordsOf, readable, type Outline, type Statement } from "./outline";
import { escape, quotedLines, unescape } from "./quoting";

const kinds = new Map<string, Kind>([
  ["text", "spoken"],
  ["keywords", "keyword"],
  ["askc", "keyword"],
  ["sident", "name"],
  ["slook", "look"],
  [".data", "table"],
]);

// How many texts a text table has, between its head and its end.
export const textCount = (table: string) => Math.max(0, table.split("\n").length - 3);

const tableLine = /^(T\w+)\t0x([0-9A-F]{8})\t"(.*)"$/;

// Joins the text table, whose rows stand in the order of the listing, with what the outline of the
// plain listing says of each text.
export function textRows(table: string, outline: Outline): TextRow[] {
  const rows: TextRow[] = [];
  const lines = table.split("\n");
  let next = 1; // behind the head
  visitTexts(outline.statements, [], (statement, place) => {
    const fields = tableLine.exec(lines[next++] ?? "");
    if (!fields) return;
    rows.push({
      label: fields[1]!,
      offset: parseInt(fields[2]!, 16),
      text: unescape(fields[3]!),
      kind: kinds.get(statement.name) ?? "spoken",
      place: place.join(" › "),
      line: statement.line,
    });
  });
  return rows;
}

type Visit = (statement: Statement, place: readonly string[]) => void;

// Calls back for each statement that holds a text, with the keywords and conditions around it.
export function visitTexts(statements: readonly Statement[], place: readonly string[], visit: Visit): void {
  let condition = "";
  let table = "";
  for (const statement of statements) {
    if (statement.name === "if") condition = readable(statement.operands);
    if (statement.labels.length > 0) table = statement.labels[0]!;
    if (statement.text !== null) visit(statement, statement.name === ".data" ? [...place, table] : place);
    if (statement.block.length === 0) continue;
    const step =
      statement.name === "keywords"
        ? keywordsOf(statement).join(", ")
        : statement.name === "else"
          ? `unless ${condition}`
          : statement.name === "if"
            ? `if ${condition}`
            : statement.name;
    visitTexts(statement.block, [...place, step], visit);
  }
}

// The rows of a listing that was changed since; null when it has other texts than before.
export function changedRows(rows: readonly TextRow[], outline: Outline): TextRow[] | null {
  const changed: TextRow[] = [];
  let count = 0;
  visitTexts(outline.statements, [], ({ text, line }, place) => {
    const row = rows[count++];
    if (row) changed.push({ ...row, text: text ?? "", place: place.join(" › "), line });
  });
  return count === rows.length ? changed : null;
}

// A listing with another text in the place of the one with that index; null when it has none.
export function withText(listing: string, outline: Outline, index: number, text: string): string | null {
  const found: Statement[] = [];
  visitTexts(outline.statements, [], (statement) => found.push(statement));
  const statement = found[index];
  if (!statement) return null;
  const { textFrom, textTo, name } = statement;
  const indentation = listing.slice(listing.lastIndexOf("\n", textFrom) + 1, textFrom);
  const quoted = name === "text" ? quotedLines(text).join(`\n${indentation}`) : `"${escape(text)}"`;
  return listing.slice(0, textFrom) + quoted + listing.slice(textTo);
}
