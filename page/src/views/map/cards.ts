// The cards of a conversation as lines of text, wrapped and measured for the picture.
import { titleOf, type Arrow, type Card, type Said } from "../../conversation/conversation";
import { shown } from "../../script/encoding";

export const cardWidth = 264;
export const padding = 12;
export const lineHeight = 17;
export const headHeight = 28;
const dotSize = 14;
const mostSaid = 6; // lines of what is said

export type LineKind = Said["kind"] | "more" | "warning" | "end" | "asks" | "leads";

export interface Line {
  readonly text: string;
  readonly kind: LineKind;
  readonly target?: Card; // of a line that leads to another card
}

export interface DrawnCard {
  readonly card: Card;
  readonly head: string; // "" for none
  readonly hasHidden: boolean;
  readonly lines: readonly Line[];
  readonly width: number;
  readonly height: number;
  readonly isDot: boolean; // ways meet and part there, nothing is said
}

// `leads` are the arrows of the card that are written in it and not drawn.
export function drawCard(card: Card, leads: readonly Arrow[], wrap: (text: string) => string[]): DrawnCard {
  const head = card.keywords.join(", ");
  const lines = [...saidLines(card, wrap)];
  for (const word of card.hidden) lines.push({ text: `“${word}” is answered earlier`, kind: "warning" });
  for (const { word, isAnswered } of card.offers) {
    if (!isAnswered) lines.push({ text: `no keyword answers “${word}”`, kind: "warning" });
  }
  if (card.asks) lines.push({ text: "waits for a word", kind: "asks" });
  for (const { to, condition } of leads) {
    const where = titleOf(to) || "where ways meet";
    lines.push({
      text: fit(`↩ ${condition ? `${shown(condition)}: ` : ""}${shown(where)}`),
      kind: "leads",
      target: to,
    });
  }
  if (card.end !== null) lines.push({ text: "the conversation ends", kind: "end" });
  const isDot = head === "" && lines.length === 0;
  const body = lines.length > 0 ? lines.length * lineHeight + padding * 1.5 : 0;
  const size = isDot
    ? { width: dotSize, height: dotSize }
    : { width: cardWidth, height: (head ? headHeight : 0) + body };
  return { card, head: fit(shown(head)), hasHidden: card.hidden.length > 0, lines, isDot, ...size };
}

const fit = (text: string) => (text.length > 38 ? `${text.slice(0, 37)}…` : text);

function saidLines(card: Card, wrap: (text: string) => string[]): Line[] {
  const lines: Line[] = [];
  for (const { text, kind } of card.said) {
    for (const paragraph of shown(text).split("\n")) {
      if (paragraph.trim() === "") continue;
      const wrapped = kind === "action" || kind === "input" ? [fit(paragraph)] : wrap(paragraph.trim());
      lines.push(...wrapped.map((line) => ({ text: line, kind })));
      if (lines.length > 200) break;
    }
  }
  if (lines.length <= mostSaid) return lines;
  const rest = lines.length - mostSaid + 1;
  return [...lines.slice(0, mostSaid - 1), { text: `… ${rest} more lines`, kind: "more" }];
}

// Wraps at spaces, and inside what is longer than a line.
export function wrapper(font: string): (text: string) => string[] {
  const context = document.createElement("canvas").getContext("2d")!;
  context.font = font;
  const room = cardWidth - 2 * padding;
  const fits = (text: string) => context.measureText(text).width <= room;
  return (text) => {
    const lines: string[] = [];
    let line = "";
    for (const word of text.slice(0, 1000).split(/(?<=\s)|(?<=[\u3000-\u9fff])/)) {
      if (line !== "" && !fits(line + word.trimEnd())) {
        lines.push(line.trimEnd());
        line = "";
      }
      line += word;
      while (!fits(line) && line.length > 1) {
        let end = line.length - 1;
        while (end > 1 && !fits(line.slice(0, end))) --end;
        lines.push(line.slice(0, end));
        line = line.slice(end);
      }
    }
    if (line.trim() !== "") lines.push(line.trimEnd());
    return lines;
  };
}
