// Changing scripts: drafts of listings, what is rebuilt from them, and taking it home.
import { zipSync } from "fflate";
import { offsetsOf } from "../listing/offsets";
import { withExactLines } from "../listing/lines";
import { parseTexts, readOutline } from "../listing/outline";
import { changedRows, withText } from "../listing/texts";
import { decode, encode } from "../script/encoding";
import type { BuildFault, Bytes } from "../script/script";
import { download, nameOf } from "../ui/download";
import { gameOf, hasChange, openScript, type Draft, type Fault, type Script } from "./state";
import type { Workbench } from "./workbench";

// A text that was changed in the table, and how its script was before.
interface TextChange {
  readonly id: number;
  readonly before: Pick<Script, "draft" | "summary">;
  readonly draft: Draft;
}

export class Editing {
  private readonly readDrafts = new WeakSet<Draft>(); // whose texts are in the table
  private readonly textChanges: TextChange[] = []; // the last one last

  constructor(private readonly workbench: Workbench) {}

  // Takes a listing as it was typed.
  draft(id: number, listing: string): void {
    const { shown, options } = this.workbench.store.state;
    const draft = this.workbench.script(id)?.draft;
    const isAsListed = shown?.id === id && listing === shown.listing;
    if (isAsListed) this.workbench.change(id, { draft: null });
    else if (draft) this.workbench.change(id, { draft: { ...draft, listing } });
    else if (shown?.id === id) {
      this.workbench.change(id, { draft: { listing, table: shown.table, options: [...options] } });
    }
    if (isAsListed) this.refuse([]);
  }

  // Goes back to the script as it was opened.
  discard(id: number): void {
    const script = this.workbench.script(id);
    if (!script) return;
    this.workbench.change(id, { draft: null, bytes: script.opened, isSaved: false });
    this.refuse([]);
    this.workbench.summaries.renew([this.workbench.script(id)!]);
    if (openScript(this.workbench.store.state)?.id === id) void this.workbench.relist();
  }

  // Changes one text of a script, by its place among them.
  async changeText(id: number, index: number, text: string): Promise<void> {
    const script = this.workbench.script(id);
    if (!script?.summary) return;
    try {
      const { draft, outline } = await this.beginDraft(script);
      const rows = changedRows(script.summary.texts, outline);
      const listing = rows && withText(draft.listing, outline, index, text);
      if (listing === null) return this.workbench.notice("The listing has changed; change this text there.");
      const summary = { ...script.summary, texts: rows!.map((row, at) => (at === index ? { ...row, text } : row)) };
      const changed = { ...draft, listing };
      this.textChanges.push({ id, before: { draft: script.draft, summary: script.summary }, draft: changed });
      this.workbench.change(id, { draft: changed, summary });
    } catch (fault) {
      this.workbench.notice((fault as Error).message);
    }
  }

  // The last change of a text can be undone while nothing else changed its script.
  get canUndoText(): boolean {
    const last = this.textChanges.at(-1);
    return last !== undefined && this.workbench.script(last.id)?.draft === last.draft;
  }

  undoText(): void {
    if (!this.canUndoText) return;
    const { id, before } = this.textChanges.pop()!;
    this.workbench.change(id, before);
  }

  // Brings the texts of listings that were changed into the table.
  readTexts(): void {
    for (const { id, draft, summary } of this.workbench.store.state.scripts) {
      if (!draft || !summary || this.readDrafts.has(draft)) continue;
      this.readDrafts.add(draft);
      const texts = changedRows(summary.texts, readOutline(draft.listing, parseTexts(draft.listing)));
      if (texts) this.workbench.change(id, { summary: { ...summary, texts } });
    }
  }

  // Makes a script of its changed listing. Says what is wrong where that fails.
  async build(id: number): Promise<boolean> {
    const script = this.workbench.script(id);
    const draft = script?.draft;
    if (!script || !draft) return true;
    const { faults } = encode(draft.listing);
    if (faults.length > 0) return this.refuse(faults.map(missingLetter));
    try {
      const { lines, isExact } = await this.exactLines(script, draft);
      const { bytes: listing } = encode(lines.join("\n"));
      const table = draft.options.includes("textLabel") ? draft.table : new Uint8Array(0);
      const built = await this.workbench.workers.ask("rebuild", { listing, table }, true);
      if (this.workbench.script(id)?.draft !== draft) return false;
      if (!built.script)
        return this.refuse(built.faults.map((fault) => placed(fault, draft.listing, listing, isExact)));
      this.take(script, built.script, built.faults);
      return true;
    } catch (fault) {
      this.workbench.notice((fault as Error).message);
      return false;
    }
  }

  // A listing need not tell how operations were grouped; where it was not changed, the script does.
  private async exactLines(script: Script, draft: Draft): Promise<{ lines: string[]; isExact: boolean[] }> {
    if (draft.options.includes("verbosityParenthesis")) return withExactLines("", "\n", draft.listing);
    const game = gameOf(this.workbench.store.state, script);
    const [plain, exact] = await Promise.all([
      this.workbench.list(script.bytes, game, draft.options),
      this.workbench.list(script.bytes, game, [...draft.options, "verbosityParenthesis"]),
    ]);
    return withExactLines(decode(plain.listing), decode(exact.listing), draft.listing);
  }

  downloadScript(): void {
    const script = openScript(this.workbench.store.state);
    if (!script) return;
    download(nameOf(script.path), script.bytes, "application/octet-stream");
    this.workbench.change(script.id, { isSaved: true });
  }

  // All scripts that were changed, in their folders.
  async downloadChanged(): Promise<void> {
    const changed = () => this.workbench.store.state.scripts.filter(hasChange);
    for (const script of changed()) {
      if (!script.draft) continue;
      const { place } = this.workbench.store.state;
      if (place?.id !== script.id) this.workbench.show({ id: script.id, view: "listing" });
      if (!(await this.build(script.id))) return this.workbench.notice(`${script.path} can't be rebuilt yet.`);
    }
    const scripts = changed();
    const files = Object.create(null) as Record<string, Bytes>;
    for (const script of scripts) files[freeName(script.path, files)] = script.bytes;
    download("changed-scripts.zip", new Uint8Array(zipSync(files)), "application/zip");
    const changes = new Map(scripts.map((script) => [script.id, { isSaved: true }]));
    this.workbench.store.send({ is: "scriptsChanged", changes });
  }

  // The draft of a script, where there is none yet one that loses nothing.
  private async beginDraft(script: Script) {
    if (script.draft) return { draft: script.draft, outline: readOutline(script.draft.listing) };
    const game = gameOf(this.workbench.store.state, script);
    const options = ["verbosityParenthesis"] as const;
    const listed = await this.workbench.list(script.bytes, game, options);
    const listing = decode(listed.listing);
    const offsets = offsetsOf(listing, decode(listed.withDump));
    const outline = readOutline(listing, undefined, (line) => offsets[line - 1]! >= 0);
    return { draft: { listing, table: listed.table, options }, outline };
  }

  private take(script: Script, bytes: Bytes, warnings: readonly BuildFault[]): void {
    const isAsOpened = sameBytes(bytes, script.opened);
    this.workbench.change(script.id, { bytes: isAsOpened ? script.opened : bytes, draft: null, isSaved: false });
    this.refuse([]);
    const result = isAsOpened ? "Rebuilt: the same bytes as opened." : `Rebuilt: ${bytes.length} bytes.`;
    this.workbench.notice([result, ...warnings.map(({ text }) => `Warning: ${text}`)].join(" "));
    this.workbench.summaries.ask([this.workbench.script(script.id)!]);
    if (openScript(this.workbench.store.state)?.id === script.id) void this.workbench.relist();
  }

  private refuse(faults: Fault[]): false {
    if (faults.length > 0 || this.workbench.store.state.faults.length > 0) {
      this.workbench.store.send({ is: "faultsFound", faults });
    }
    return false;
  }
}

const sameBytes = (one: Bytes, other: Bytes) =>
  one.length === other.length && one.every((byte, at) => byte === other[at]);

// Scripts of the same name are kept apart.
function freeName(path: string, taken: Readonly<Record<string, Bytes>>): string {
  let name = path;
  for (let count = 2; name in taken; ++count) name = path.replace(/(\.[^./]*)?$/, ` (${count})$1`);
  return name;
}

const missingLetter = ({ at, letter }: { at: number; letter: string }): Fault => ({
  from: at,
  to: at + letter.length,
  severity: "error",
  message: `The scripts' encoding has no “${letter}”.`,
});

// A fault of the listing's bytes in the text on the screen: the word there, or its whole line where
// that has another form.
function placed(
  { file, severity, position, text }: BuildFault,
  listing: string,
  bytes: Bytes,
  isExact: readonly boolean[],
): Fault {
  if (file === "table") return { from: 0, to: 0, severity, message: `In the text table: ${text}` };
  const before = decode(bytes.subarray(0, position)).split("\n");
  const index = before.length - 1;
  const lines = listing.split("\n");
  const line = lines[index] ?? "";
  const start = lines.slice(0, index).reduce((sum, { length }) => sum + length + 1, 0);
  const indentation = line.length - line.trimStart().length;
  if (isExact[index]) return { from: start + indentation, to: start + line.length, severity, message: text };
  const column = Math.min(before[index]!.length, line.length);
  const word = /^(\w+|"[^"]*"?|\S)/.exec(line.slice(column))?.[0].length ?? 0;
  // At a line's end its last letter is marked.
  return {
    from: start + (word > 0 ? column : Math.max(0, column - 1)),
    to: start + column + word,
    severity,
    message: text,
  };
}
