// The one state of the page. Views draw it; only messages change it.
import type { Outline } from "../listing/outline";
import type { Bytes, Game, ListOption, Summary } from "../script/script";

export const views = ["scripts", "texts", "listing", "map", "compare", "bytes"] as const;
export type View = (typeof views)[number];

export interface Script {
  readonly id: number;
  readonly path: string; // with its folders, below the one that was opened
  readonly opened: Bytes; // as it came
  readonly bytes: Bytes; // as it is now: rebuilt, or as it came
  readonly ownGame: Game | null; // where it is not the page's
  readonly summary: Summary | null; // null until it was listed
  readonly draft: Draft | null;
  readonly isSaved: boolean; // what was rebuilt was downloaded
}

// A listing that is being changed.
export interface Draft {
  readonly listing: string;
  readonly table: Bytes; // for the text labels in it
  readonly options: readonly ListOption[]; // it was listed with
}

// The listing of the script that is open.
export interface Shown {
  readonly id: number;
  readonly bytes: Bytes; // that it was made from
  readonly status: number;
  readonly listing: string;
  readonly listingBytes: Bytes;
  readonly table: Bytes;
  readonly messages: string;
  readonly offsets: Int32Array; // by line - 1, see listing/offsets
  readonly outline: Outline;
}

// One of the two that are compared: a script as it came, as it is now, or of the other version.
export interface Side {
  readonly is: "opened" | "now" | "other";
  readonly id: number;
}

// A place in a script: a line of its listing or an offset of its bytes.
export interface Place {
  readonly id: number;
  readonly view: View;
  readonly line?: number;
  readonly offset?: number;
}

// Something wrong in a draft, from and to positions in it.
export interface Fault {
  readonly from: number;
  readonly to: number;
  readonly severity: "error" | "warning";
  readonly message: string;
}

// How a listing is shown, whatever its options.
export interface Look {
  readonly bytes: boolean; // beside it
  readonly wrap: boolean; // long lines
}

export interface State {
  readonly scripts: readonly Script[];
  readonly game: Game;
  readonly options: ReadonlySet<ListOption>;
  readonly look: Look;
  readonly place: Place | null; // what is open and where
  readonly view: View;
  readonly shown: Shown | null;
  readonly back: readonly Place[];
  readonly forward: readonly Place[];
  readonly progress: { readonly done: number; readonly all: number } | null;
  readonly faults: readonly Fault[];
  readonly notice: { readonly text: string }; // the last thing that happened
  readonly other: readonly Script[]; // the other version, for comparing
  readonly compared: { readonly before: Side; readonly after: Side } | null;
}

export const initialState = (game: Game): State => ({
  scripts: [],
  game,
  options: new Set(),
  look: { bytes: false, wrap: false },
  place: null,
  view: "scripts",
  shown: null,
  back: [],
  forward: [],
  progress: null,
  faults: [],
  notice: { text: "" },
  other: [],
  compared: null,
});

export const sideScript = (state: State, side: Side): Script | undefined =>
  (side.is === "other" ? state.other : state.scripts).find((script) => script.id === side.id);

export const openScript = (state: State): Script | null =>
  state.scripts.find((script) => script.id === state.place?.id) ?? null;

export const gameOf = (state: State, script: Script): Game => script.ownGame ?? state.game;

export const isChanged = (script: Script) => script.bytes !== script.opened;

export const hasChange = (script: Script) => script.draft !== null || isChanged(script);

export const hasUnsaved = (script: Script) => script.draft !== null || (isChanged(script) && !script.isSaved);

export type ScriptChange = Partial<Omit<Script, "id">>;

export type Message =
  | { is: "opened"; scripts: Script[] }
  | { is: "otherOpened"; scripts: Script[] }
  | { is: "sidesChosen"; compared: State["compared"] }
  | { is: "closed"; id: number }
  | { is: "scriptsChanged"; changes: ReadonlyMap<number, ScriptChange> }
  | { is: "gameChosen"; game: Game }
  | { is: "optionsChosen"; options: ReadonlySet<ListOption> }
  | { is: "lookChosen"; look: Look }
  | { is: "viewChosen"; view: View }
  | { is: "wentTo"; place: Place; leftAt?: number } // the line that was left
  | { is: "wentBack" }
  | { is: "wentForward" }
  | { is: "listed"; shown: Shown | null }
  | { is: "progressed"; progress: State["progress"] }
  | { is: "faultsFound"; faults: Fault[] }
  | { is: "noticed"; notice: string };

export function update(state: State, message: Message): State {
  switch (message.is) {
    case "opened":
      return { ...state, scripts: [...state.scripts, ...message.scripts] };
    case "otherOpened":
      return { ...state, other: message.scripts, compared: null };
    case "sidesChosen":
      return { ...state, compared: message.compared };
    case "closed":
      return close(state, message.id);
    case "scriptsChanged": {
      const change = (script: Script): Script => {
        const changes = message.changes.get(script.id);
        return changes ? { ...script, ...changes } : script;
      };
      return { ...state, scripts: state.scripts.map(change) };
    }
    case "gameChosen":
      return { ...state, game: message.game };
    case "optionsChosen":
      return { ...state, options: message.options };
    case "lookChosen":
      return { ...state, look: message.look };
    case "viewChosen":
      return { ...state, view: message.view };
    case "wentTo": {
      const left = state.place && message.leftAt ? { ...state.place, line: message.leftAt } : state.place;
      const back = left ? [...state.back.slice(-99), left] : state.back;
      return { ...arriveAt(state, message.place), back, forward: [] };
    }
    case "wentBack": {
      const place = state.back.at(-1);
      if (!place) return state;
      const forward = state.place ? [...state.forward, state.place] : state.forward;
      return { ...arriveAt(state, place), back: state.back.slice(0, -1), forward };
    }
    case "wentForward": {
      const place = state.forward.at(-1);
      if (!place) return state;
      const back = state.place ? [...state.back, state.place] : state.back;
      return { ...arriveAt(state, place), back, forward: state.forward.slice(0, -1) };
    }
    case "listed":
      return { ...state, shown: message.shown };
    case "progressed":
      return { ...state, progress: message.progress };
    case "faultsFound":
      return { ...state, faults: message.faults };
    case "noticed":
      return { ...state, notice: { text: message.notice } };
  }
}

function arriveAt(state: State, place: Place): State {
  const isSame = state.place?.id === place.id;
  return { ...state, place, view: place.view, shown: isSame ? state.shown : null, faults: isSame ? state.faults : [] };
}

function close(state: State, id: number): State {
  const stays = (place: Place) => place.id !== id;
  const isOpen = state.place?.id === id;
  return {
    ...state,
    scripts: state.scripts.filter((script) => script.id !== id),
    place: isOpen ? null : state.place,
    shown: isOpen ? null : state.shown,
    view: isOpen ? "scripts" : state.view,
    compared: null,
    back: state.back.filter(stays),
    forward: state.forward.filter(stays),
  };
}
