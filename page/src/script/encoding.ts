// The scripts' encoding, Shift_JIS (code page 932), and Unicode. Every byte string has a text of its
// own that gives the same bytes back: what is no character, and what is a second code of a
// character, stands in the text as a character of a private plane.

const privatePlane = 0xf0000;

const isLead = (byte: number) => (byte >= 0x81 && byte <= 0x9f) || (byte >= 0xe0 && byte <= 0xfc);
const isTrail = (byte: number) => byte >= 0x40 && byte <= 0xfc && byte !== 0x7f;
const isPlain = (byte: number) => (byte >= 0x20 && byte < 0x7f) || byte === 0x09 || byte === 0x0a;

interface Tables {
  // The text of a code: a byte, or lead byte * 256 + trail byte.
  readonly textOf: readonly (string | undefined)[];
  readonly codeOf: ReadonlyMap<string, number>;
  // The characters that codes without a text of their own show, where they show any.
  readonly shownOf: ReadonlyMap<number, string>;
}

let made: Tables | undefined;

function tables(): Tables {
  if (made) return made;
  const decoder = new TextDecoder("shift_jis");
  const textOf: (string | undefined)[] = [];
  const codeOf = new Map<string, number>();
  const shownOf = new Map<number, string>();
  const add = (code: number, bytes: number[]) => {
    const character = decoder.decode(Uint8Array.from(bytes));
    const isCharacter = [...character].length === 1 && character !== "\ufffd" && character !== "\u0080";
    if (isCharacter && !codeOf.has(character)) {
      textOf[code] = character;
      codeOf.set(character, code);
    } else {
      textOf[code] = String.fromCodePoint(privatePlane + code);
      if (isCharacter) shownOf.set(code, character);
    }
  };
  for (let byte = 0; byte < 0x100; ++byte) {
    if (isPlain(byte)) add(byte, [byte]);
    else if (byte >= 0xa1 && byte <= 0xdf) add(byte, [byte]);
    else textOf[byte] = String.fromCodePoint(privatePlane + byte);
  }
  for (let lead = 0x81; lead <= 0xfc; ++lead) {
    if (!isLead(lead)) continue;
    for (let trail = 0x40; trail <= 0xfc; ++trail) if (isTrail(trail)) add(lead * 256 + trail, [lead, trail]);
  }
  return (made = { textOf, codeOf, shownOf });
}

export function decode(bytes: Uint8Array): string {
  const parts: string[] = [];
  let plainFrom = 0;
  const plain = new TextDecoder("latin1");
  for (let at = 0; at < bytes.length; ++at) {
    const byte = bytes[at]!;
    if (isPlain(byte)) continue;
    if (plainFrom < at) parts.push(plain.decode(bytes.subarray(plainFrom, at)));
    const pair = isLead(byte) && isTrail(bytes[at + 1] ?? 0);
    parts.push(tables().textOf[pair ? byte * 256 + bytes[++at]! : byte]!);
    plainFrom = at + 1;
  }
  if (plainFrom < bytes.length) parts.push(plain.decode(bytes.subarray(plainFrom)));
  return parts.join("");
}

// A letter that the encoding lacks, and where in the text it stands.
export interface Unencodable {
  readonly at: number;
  readonly letter: string;
}

export function encode(text: string): { bytes: Uint8Array<ArrayBuffer>; faults: Unencodable[] } {
  const bytes = new Uint8Array(text.length * 2);
  const faults: Unencodable[] = [];
  let size = 0;
  for (let at = 0; at < text.length; ++at) {
    const unit = text.charCodeAt(at);
    if (isPlain(unit)) {
      bytes[size++] = unit;
      continue;
    }
    const letter = String.fromCodePoint(text.codePointAt(at)!);
    const code = codeOfLetter(letter);
    if (code === undefined) faults.push({ at, letter });
    else if (code > 0xff) {
      bytes[size++] = code >> 8;
      bytes[size++] = code & 0xff;
    } else bytes[size++] = code;
    at += letter.length - 1;
  }
  return { bytes: bytes.slice(0, size), faults };
}

function codeOfLetter(letter: string): number | undefined {
  const point = letter.codePointAt(0)!;
  return point >= privatePlane && point < privatePlane + 0x10000 ? point - privatePlane : tables().codeOf.get(letter);
}

const privateLetters = /[\u{f0000}-\u{fffff}]/gu;

// What a letter of the private plane shows: its character, or its bytes in hexadecimal.
export function shownLetter(letter: string): string {
  const code = letter.codePointAt(0)! - privatePlane;
  return tables().shownOf.get(code) ?? `‹${code.toString(16).toUpperCase().padStart(2, "0")}›`;
}

// A text as people read it; it no longer tells its bytes.
export const shown = (text: string) => text.replace(privateLetters, shownLetter);
