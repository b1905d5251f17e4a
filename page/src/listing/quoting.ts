// Texts and their form in a listing.

const letters = new Map([
  ["\t", "t"],
  ["\n", "n"],
  ['"', '"'],
  ["\\", "\\"],
]);
const characters = new Map([...letters].map(([character, letter]) => [letter, character]));

// The text of a quoted form, without its quotes. An unknown escape stands for its letter.
export const unescape = (escaped: string) =>
  escaped.includes("\\")
    ? escaped.replace(/\\(.)/gsu, (_, letter: string) => characters.get(letter) ?? letter)
    : escaped;

export const escape = (text: string) => text.replace(/[\t\n"\\]/g, (character) => "\\" + letters.get(character)!);

// The lines of a spoken text: each ends behind a line feed, or behind the brace that follows one.
export function quotedLines(text: string): string[] {
  const lines: string[] = [];
  let inPassage = false;
  let from = 0;
  for (let at = 0; at < text.length; ++at) {
    if (text[at] === "{") inPassage = true;
    else if (text[at] === "}") inPassage = false;
    else if (text[at] === "\n") {
      if (inPassage && text[at + 1] === "}") {
        ++at;
        inPassage = false;
      }
      lines.push(text.slice(from, at + 1));
      from = at + 1;
    }
  }
  if (from < text.length || lines.length === 0) lines.push(text.slice(from));
  return lines.map((line) => `"${escape(line)}"`);
}
