// Runs the library, away from the page.
import { parseTexts, readOutline, type Outline } from "../listing/outline";
import { offsetsOf } from "../listing/offsets";
import { textCount, textRows } from "../listing/texts";
import { answerRequests } from "../remote/answer";
import { decode } from "../script/encoding";
import { games, type Bytes, type Game, type Listed, type Summary, type TextRow } from "../script/script";
import { Library } from "./library";
import type { ListedWithDump, Requests } from "./protocol";

const none: ReadonlySet<never> = new Set();

// A library that grew beyond this many bytes makes way for a new one.
const mostMemory = 128 * 1024 * 1024;

// The longest listing that a page can show, in bytes.
const longestListing = 48 * 1024 * 1024;

let module: WebAssembly.Module;
let library: Library | null = null;

function withLibrary<T>(use: (library: Library) => T): T {
  library ??= new Library(module);
  try {
    const result = use(library);
    if (library.memory > mostMemory) library = null;
    return result;
  } catch (fault) {
    library = null;
    // Memory or stack: what a script nests takes stack, of which a page has less than a program.
    throw new Error("This script needs more memory, or is nested deeper, than a page can take.", { cause: fault });
  }
}

// A listing without its option lines, which name the game.
const body = (listing: Bytes) => decode(listing).replace(/^ {4}\.option .*\n/gm, "");

function summarise(bytes: Bytes, game: Game): Summary {
  return withLibrary((library) => {
    const listed = library.list(bytes, game, none);
    const others = games
      .filter((other) => other !== game)
      .map((other) => Object.assign(library.list(bytes, other, none), { game: other }));
    const alike = (other: Listed) => other.status === 0 && sameBytes(other, listed);
    const { outline, texts } = textsOf(listed, () => library.list(bytes, game, new Set(["dump"])));
    return {
      status: listed.status !== 0 ? "failed" : listed.messages.includes("WARNING") ? "warnings" : "listed",
      speakerId: outline.speakerId,
      speakerName: texts.find((row) => row.kind === "name")?.text ?? "",
      texts,
      messages: listed.messages,
      listedBy: [
        ...(listed.status === 0 ? [game] : []),
        ...others.filter((other) => other.status === 0).map((other) => other.game),
      ],
      alike: others.filter(alike).map((other) => other.game),
    };
  });
}

// Where one text ends and another begins is not certain without the dump, and seldom in doubt.
function textsOf(listed: Listed, withDump: () => Listed): { outline: Outline; texts: TextRow[] } {
  const listing = decode(listed.listing);
  const table = decode(listed.table);
  const tree = parseTexts(listing);
  const outline = readOutline(listing, tree);
  const texts = textRows(table, outline);
  if (texts.length === textCount(table)) return { outline, texts };
  const offsets = offsetsOf(listing, decode(withDump().listing));
  return {
    outline,
    texts: textRows(
      table,
      readOutline(listing, tree, (line) => offsets[line - 1]! >= 0),
    ),
  };
}

function sameBytes(one: Listed, other: Listed): boolean {
  return one.listing.length === other.listing.length && body(one.listing) === body(other.listing);
}

function list({ bytes, game, options }: Requests["list"]["input"]): ListedWithDump {
  const both = withLibrary((library) => {
    const listed = library.list(bytes, game, new Set(options));
    const withDump = library.list(bytes, game, new Set([...options, "dump"])).listing;
    return { ...listed, withDump };
  });
  if (both.listing.length > longestListing) throw new Error("The listing of this script is too long for a page.");
  return both;
}

answerRequests<Requests, WebAssembly.Module>((start) => (module = start), {
  summarise: ({ bytes, game }) => summarise(bytes, game),
  list,
  rebuild: ({ listing, table }) => withLibrary((library) => library.rebuild(listing, table)),
});
