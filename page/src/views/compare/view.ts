// Two versions of a script side by side.
import { MergeView } from "@codemirror/merge";
import { search, searchKeymap } from "@codemirror/search";
import { EditorState } from "@codemirror/state";
import { EditorView, keymap } from "@codemirror/view";
import { numberLabels } from "../../listing/numbering";
import { decode } from "../../script/encoding";
import type { Game } from "../../script/script";
import { fromInput } from "../../state/files";
import { gameOf, hasUnsaved, openScript, sideScript, type Script, type Side, type State } from "../../state/state";
import type { Workbench } from "../../state/workbench";
import { element } from "../../ui/dom";
import { Table } from "../../ui/table";
import { letters } from "../../editor/letters";
import { listingSupport } from "../../editor/language";
import { listingTheme } from "../../editor/theme";
import { matchOf, pairsOf, type Pair } from "./pairs";

const keyOf = ({ is, id }: Side) => `${is} ${id}`;
const sideOf = (key: string): Side => {
  const [is, id] = key.split(" ");
  return { is: is as Side["is"], id: Number(id) };
};

export function drawCompare(place: HTMLElement, workbench: Workbench): void {
  const { store } = workbench;
  const before = element("select", { id: "compare-before", ariaLabel: "Before" });
  const after = element("select", { id: "compare-after", ariaLabel: "After" });
  const bytes = element("input", { type: "checkbox", id: "compare-bytes" });
  const result = element("p", { className: "count", role: "status", id: "compare-result" });
  const merged = element("div", { className: "merged" });
  const table = new Table<Pair>({
    label: "Scripts of both versions",
    rowHeight: 32,
    columns: [
      { name: "file", title: "File", width: "minmax(0, 1fr)", cell: (pair) => pair.name },
      { name: "state", title: "State", width: "110px", className: "is-quiet", cell: (pair) => pair.state },
    ],
    open: ({ before, after }) => {
      if (before && after) store.send({ is: "sidesChosen", compared: { before, after } });
    },
  });
  const other = opener("open-other", "Open another version", false, workbench);
  const otherFolder = opener("open-other-folder", "Another folder", true, workbench);
  place.append(
    element(
      "div",
      { className: "tools" },
      element("label", { className: "field" }, "Before", before),
      element("label", { className: "field" }, "After", after),
      element("label", {}, bytes, "With bytes"),
      result,
      element("span", { className: "space" }),
      ...other,
      ...otherFolder,
    ),
    element("div", { className: "compared" }, table.element, merged),
  );

  const choose = () => {
    if (!before.value || !after.value) return;
    store.send({ is: "sidesChosen", compared: { before: sideOf(before.value), after: sideOf(after.value) } });
  };
  before.addEventListener("change", choose);
  after.addEventListener("change", choose);
  const merge = new Merged(merged, result, workbench);
  bytes.addEventListener("change", () => void merge.draw(store.state, bytes.checked));

  store.listen((state, last) => {
    if (state.view !== "compare") return;
    const isNew =
      state.scripts !== last.scripts ||
      state.other !== last.other ||
      state.view !== last.view ||
      state.compared !== last.compared;
    if (!isNew) return;
    if (!state.compared) {
      const compared = proposal(state);
      if (compared) return store.send({ is: "sidesChosen", compared });
    }
    fill(before, state, state.compared?.before);
    fill(after, state, state.compared?.after);
    table.element.hidden = state.other.length < 2;
    if (!table.element.hidden) table.show(pairsOf(state.scripts, state.other));
    void merge.draw(state, bytes.checked);
  });
}

function opener(id: string, label: string, isFolder: boolean, workbench: Workbench): HTMLElement[] {
  const input = element("input", {
    id,
    className: "unseen",
    type: "file",
    multiple: true,
    webkitdirectory: isFolder,
    ariaLabel: label,
  });
  input.addEventListener("change", () => {
    if (input.files?.length) void workbench.openOther(fromInput(input.files));
    input.value = "";
  });
  return [element("label", { className: "button", htmlFor: id, textContent: label }), input];
}

// What is most likely meant: what changed, the same script of the other version, or the script itself.
function proposal(state: State): State["compared"] {
  const script = openScript(state) ?? state.scripts[0];
  if (!script) return null;
  const now: Side = { is: "now", id: script.id };
  const match = matchOf(script, state.other);
  if (match) return { before: now, after: { is: "other", id: match.id } };
  const [only] = state.other;
  if (only && state.other.length === 1) return { before: now, after: { is: "other", id: only.id } };
  return { before: { is: "opened", id: script.id }, after: now };
}

function fill(select: HTMLSelectElement, state: State, chosen: Side | undefined): void {
  const item = (side: Side, label: string) => element("option", { value: keyOf(side), textContent: label });
  const items = state.scripts.flatMap((script) => [
    item({ is: "now", id: script.id }, script.path),
    ...(hasUnsaved(script) || script.bytes !== script.opened
      ? [item({ is: "opened", id: script.id }, `${script.path}, as opened`)]
      : []),
  ]);
  items.push(...state.other.map((script) => item({ is: "other", id: script.id }, `${script.path}, other version`)));
  const key = chosen && keyOf(chosen);
  if (chosen && !items.some((option) => option.value === key)) {
    items.unshift(item(chosen, `${sideScript(state, chosen)?.path ?? ""}, as opened`));
  }
  select.replaceChildren(...items);
  if (key) select.value = key;
}

class Merged {
  private view: MergeView | null = null;
  private run = 0;

  constructor(
    private readonly parent: HTMLElement,
    private readonly result: HTMLElement,
    private readonly workbench: Workbench,
  ) {}

  async draw(state: State, withBytes: boolean): Promise<void> {
    const run = ++this.run;
    const { compared } = state;
    const scripts = compared && [compared.before, compared.after].map((side) => sideScript(state, side));
    if (!compared || !scripts?.[0] || !scripts[1]) return this.show(null, "Choose two scripts.");
    const game = gameOf(state, compared.before.is === "other" ? scripts[1] : scripts[0]);
    const draft = compared.after.is === "now" ? scripts[1].draft : null;
    try {
      const [one, other] = await Promise.all([
        this.listing(scripts[0], compared.before, game, withBytes, draft),
        this.listing(scripts[1], compared.after, game, withBytes, draft),
      ]);
      if (run === this.run) this.show(numberLabels(one, other));
    } catch (fault) {
      if (run === this.run) this.show(null, (fault as Error).message);
    }
  }

  // Both sides are listed alike; a listing that is being changed has no bytes yet.
  private async listing(
    script: Script,
    side: Side,
    game: Game,
    withBytes: boolean,
    draft: Script["draft"],
  ): Promise<string> {
    if (draft && side.is === "now" && script.draft === draft) return draft.listing;
    const bytes = side.is === "opened" ? script.opened : script.bytes;
    const options = draft ? draft.options : withBytes ? (["dump"] as const) : [];
    const { listing, status } = await this.workbench.list(bytes, game, options);
    if (status !== 0) throw new Error(`${script.path} could not be listed.`);
    return decode(listing).replace(/^; [0-9A-F]{8}: /gm, "; ");
  }

  private show(listings: [string, string] | null, message = ""): void {
    this.view?.destroy();
    this.view = null;
    this.result.textContent = message;
    if (!listings) return;
    const extensions = (label: string) => [
      EditorView.cspNonce.of(document.body.dataset.nonce ?? ""),
      EditorState.readOnly.of(true),
      EditorView.contentAttributes.of({ "aria-label": label, tabindex: "0" }),
      listingSupport,
      letters,
      search({ top: true }),
      keymap.of(searchKeymap),
      listingTheme,
    ];
    this.view = new MergeView({
      a: { doc: listings[0], extensions: extensions("Before") },
      b: { doc: listings[1], extensions: extensions("After") },
      parent: this.parent,
      collapseUnchanged: { margin: 3, minSize: 6 },
      diffConfig: { scanLimit: 1000, timeout: 2000 },
    });
    const { length } = this.view.chunks;
    this.result.textContent =
      length === 0 ? "No difference" : length === 1 ? "1 place differs" : `${length} places differ`;
  }
}
