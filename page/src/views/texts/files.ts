// Texts as files for other programs, in UTF-8.
import { shown } from "../../script/encoding";
import type { Entry } from "./entry";

const fields = ["file", "speaker_id", "speaker", "kind", "place", "label", "offset", "text"] as const;
type Fields = Record<(typeof fields)[number], string | number | null>;

const fieldsOf = ({ script, row }: Entry): Fields => ({
  file: script.path,
  speaker_id: script.summary?.speakerId ?? null,
  speaker: shown(script.summary?.speakerName ?? ""),
  kind: row.kind,
  place: shown(row.place),
  label: row.label,
  offset: row.offset,
  text: shown(row.text),
});

export const textsAsJson = (entries: readonly Entry[]) => `${JSON.stringify(entries.map(fieldsOf), null, 1)}\n`;

// With the mark by which spreadsheet programs know UTF-8, and their line ends.
export function textsAsCsv(entries: readonly Entry[]): string {
  const quoted = (value: string | number | null) => `"${String(value ?? "").replaceAll('"', '""')}"`;
  const lines = entries.map(fieldsOf).map((entry) => fields.map((field) => quoted(entry[field])).join(","));
  return `\ufeff${[fields.join(","), ...lines].join("\r\n")}\r\n`;
}
