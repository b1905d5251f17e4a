// Holds the state, and tells those who draw it when it changed.
import { update, type Message, type State } from "./state";

export class Store {
  private readonly listeners: ((state: State, before: State) => void)[] = [];
  private isTelling = false;
  private told: State;

  constructor(private current: State) {
    this.told = current;
  }

  get state(): State {
    return this.current;
  }

  send(message: Message): void {
    this.current = update(this.current, message);
    this.tell();
  }

  // Calls back after each change. Changes that a listener makes are told after its round.
  listen(listener: (state: State, before: State) => void): void {
    this.listeners.push(listener);
  }

  private tell(): void {
    if (this.isTelling) return;
    this.isTelling = true;
    try {
      while (this.told !== this.current) {
        const before = this.told;
        const now = this.current;
        this.told = now;
        for (const listener of this.listeners) listener(now, before);
      }
    } finally {
      this.isTelling = false;
    }
  }
}
