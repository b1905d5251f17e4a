// What a user can have done: each act asks the workers where it must, and sends messages to the state.
import type { ListedWithDump, Requests as LibraryRequests } from "../library/protocol";
import { offsetsOf } from "../listing/offsets";
import { readOutline, type Outline } from "../listing/outline";
import { Stopped, type Workers } from "../remote/workers";
import { decode } from "../script/encoding";
import type { Bytes, Game, ListOption } from "../script/script";
import type { Picked } from "./files";
import { gameOf, openScript, type Place, type Script, type ScriptChange, type Shown, type View } from "./state";
import type { Store } from "./store";
import { Summaries } from "./summaries";

// Files longer than this are no conversations.
const mostBytes = 64 * 1024 * 1024;

export class Workbench {
  private nextId = 1;
  private listRun = 0;
  private stops = 0;
  readonly summaries: Summaries;

  constructor(
    readonly store: Store,
    readonly workers: Workers<LibraryRequests>,
  ) {
    this.summaries = new Summaries(store, workers);
  }

  // Opens scripts; one alone is shown at once.
  async open(files: readonly Picked[], ownGame: Game | null = null): Promise<void> {
    const known = files.filter((file) => !nameStartsWithDot(file.path));
    if (known.length === 1) {
      const [script] = await this.read(known, ownGame);
      if (!script) return;
      this.store.send({ is: "opened", scripts: [script] });
      this.show({ id: script.id, view: "listing" });
      this.summaries.ask([script]);
      return;
    }
    this.setView("scripts");
    const { stops } = this;
    for (let from = 0; from < known.length; from += 64) {
      const scripts = await this.read(known.slice(from, from + 64), ownGame);
      this.store.send({ is: "opened", scripts });
      if (stops === this.stops) this.summaries.ask(scripts);
    }
  }

  async openOther(files: readonly Picked[]): Promise<void> {
    const scripts = await this.read(files, null);
    this.store.send({ is: "otherOpened", scripts });
    this.notice(`${scripts.length} ${scripts.length === 1 ? "script" : "scripts"} to compare with`);
  }

  // Lists some scripts for nobody, so that the first one of the user finds all workers awake. Gives a listing.
  async warmUp(scripts: readonly { bytes: Bytes; game: Game }[]): Promise<string> {
    const listed = scripts.map(({ bytes, game }) => this.workers.ask("list", { bytes, game, options: [] }));
    return decode((await Promise.all(listed))[0]!.listing);
  }

  close(id: number): void {
    this.store.send({ is: "closed", id });
  }

  stop(): void {
    ++this.stops;
    this.workers.stop();
  }

  // Lists what was left when the listing of many scripts was stopped.
  resume(): void {
    this.summaries.ask(this.store.state.scripts.filter((script) => script.summary === null));
  }

  chooseGame(game: Game): void {
    this.store.send({ is: "gameChosen", game });
    this.summaries.renew(this.store.state.scripts.filter((script) => script.ownGame === null));
    this.relist();
  }

  // Reads one script as another game's than the rest.
  chooseOwnGame(id: number, game: Game): void {
    this.change(id, { ownGame: game });
    this.summaries.renew(this.store.state.scripts.filter((script) => script.id === id));
    this.relist();
  }

  toggleOption(option: ListOption): void {
    const options = new Set(this.store.state.options);
    if (!options.delete(option)) options.add(option);
    this.store.send({ is: "optionsChosen", options });
    this.relist();
  }

  setView(view: View): void {
    const { place } = this.store.state;
    this.store.send({ is: "viewChosen", view });
    if (place && !this.store.state.shown) this.relist();
  }

  show(place: Place, leftAt?: number): void {
    this.store.send(leftAt === undefined ? { is: "wentTo", place } : { is: "wentTo", place, leftAt });
    if (!this.store.state.shown) this.relist();
  }

  back(): void {
    this.store.send({ is: "wentBack" });
    if (!this.store.state.shown) this.relist();
  }

  forward(): void {
    this.store.send({ is: "wentForward" });
    if (!this.store.state.shown) this.relist();
  }

  notice(notice: string): void {
    this.store.send({ is: "noticed", notice });
  }

  script(id: number): Script | undefined {
    return this.store.state.scripts.find((script) => script.id === id);
  }

  change(id: number, change: ScriptChange): void {
    this.store.send({ is: "scriptsChanged", changes: new Map([[id, change]]) });
  }

  // A listing of some bytes.
  list(bytes: Bytes, game: Game, options: readonly ListOption[]) {
    return this.workers.ask("list", { bytes, game, options: [...options] }, true);
  }

  private async read(files: readonly Picked[], ownGame: Game | null): Promise<Script[]> {
    const scripts: Script[] = [];
    for (const file of files) {
      try {
        if (file.size > mostBytes) throw new Error("it is too long for a conversation script");
        const bytes = await file.read();
        const id = this.nextId++;
        const draft = null;
        scripts.push({ id, path: file.path, opened: bytes, bytes, ownGame, summary: null, draft, isSaved: false });
      } catch (fault) {
        this.notice(`${file.path} was not opened: ${fault instanceof Error ? fault.message : "it can't be read"}`);
      }
    }
    return scripts;
  }

  // Makes the listing of the open script anew.
  async relist(): Promise<void> {
    const script = openScript(this.store.state);
    if (!script) return;
    const run = ++this.listRun;
    const options = [...this.store.state.options];
    const { id, bytes } = script;
    try {
      const listed = await this.list(bytes, gameOf(this.store.state, script), options);
      if (run !== this.listRun) return;
      this.store.send({ is: "listed", shown: shownFrom(id, bytes, listed) });
    } catch (fault) {
      if (run !== this.listRun || fault instanceof Stopped) return;
      this.store.send({ is: "listed", shown: failedListing(script, (fault as Error).message) });
    }
  }
}

const nameStartsWithDot = (path: string) => /(^|\/)\.[^/]*$/.test(path);

// The outline is read when it is first asked for, so that the listing can be seen before.
function shownFrom(id: number, bytes: Bytes, listed: ListedWithDump): Shown {
  const listing = decode(listed.listing);
  const offsets = offsetsOf(listing, decode(listed.withDump));
  const { status, table, messages } = listed;
  let outline: Outline | undefined;
  return {
    ...{ id, bytes, status, listing, listingBytes: listed.listing, table, messages, offsets },
    get outline() {
      return (outline ??= readOutline(listing, undefined, (line) => offsets[line - 1]! >= 0));
    },
  };
}

const failedListing = ({ id, bytes }: Script, message: string) => ({
  id,
  bytes,
  status: 1,
  listing: "",
  listingBytes: new Uint8Array(0),
  table: new Uint8Array(0),
  messages: `ERROR: ${message}\n`,
  offsets: new Int32Array(0),
  outline: readOutline(""),
});
