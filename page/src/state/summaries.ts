// Has scripts listed for their summaries, many at once, and tells how far that is.
import type { Requests } from "../library/protocol";
import { Stopped, type Workers } from "../remote/workers";
import type { Game, Summary } from "../script/script";
import { gameOf, type Script, type ScriptChange } from "./state";
import type { Store } from "./store";

// So many milliseconds pass between two looks at what was listed.
const drawInterval = 120;

export class Summaries {
  private asked = 0;
  private answered = 0;
  private results = new Map<number, ScriptChange>();
  private timer = 0;

  constructor(
    private readonly store: Store,
    private readonly workers: Workers<Requests>,
  ) {}

  ask(scripts: readonly Script[]): void {
    this.asked += scripts.length;
    for (const script of scripts) {
      const game = gameOf(this.store.state, script);
      void this.workers
        .ask("summarise", { bytes: script.bytes, game })
        .catch((fault: Error) => (fault instanceof Stopped ? null : failed(fault.message)))
        .then((summary) => this.take(script, game, summary));
    }
    this.drawSoon();
  }

  // Drops the summaries that scripts have and asks for new ones.
  renew(scripts: readonly Script[]): void {
    const changes = new Map(scripts.map((script) => [script.id, { summary: null }]));
    this.store.send({ is: "scriptsChanged", changes });
    this.ask(scripts);
  }

  private take(script: Script, game: Game, summary: Summary | null): void {
    ++this.answered;
    const now = this.store.state.scripts.find(({ id }) => id === script.id);
    const isStillAsked = now?.bytes === script.bytes && gameOf(this.store.state, now) === game;
    if (summary && isStillAsked) this.results.set(script.id, { summary });
    this.drawSoon();
  }

  private drawSoon(): void {
    this.timer ||= window.setTimeout(() => this.draw(), drawInterval);
  }

  private draw(): void {
    this.timer = 0;
    const changes = this.results;
    this.results = new Map();
    const isDone = this.answered === this.asked;
    const progress = isDone ? null : { done: this.answered, all: this.asked };
    if (isDone) this.answered = this.asked = 0;
    if (changes.size > 0) this.store.send({ is: "scriptsChanged", changes });
    this.store.send({ is: "progressed", progress });
  }
}

const failed = (message: string): Summary => ({
  status: "failed",
  speakerId: null,
  speakerName: "",
  texts: [],
  messages: `ERROR: ${message}\n`,
  listedBy: [],
  alike: [],
});
