// The listing of the open script, to read and to change.
import { defaultKeymap, history, historyKeymap, isolateHistory } from "@codemirror/commands";
import { bracketMatching, foldKeymap, syntaxTree } from "@codemirror/language";
import { lintGutter, lintKeymap, setDiagnostics, type Diagnostic } from "@codemirror/lint";
import { highlightSelectionMatches, search, searchKeymap } from "@codemirror/search";
import {
  Annotation,
  Compartment,
  EditorSelection,
  EditorState,
  StateEffect,
  StateField,
  type Text,
} from "@codemirror/state";
import {
  Decoration,
  drawSelection,
  EditorView,
  highlightActiveLine,
  highlightActiveLineGutter,
  keymap,
  lineNumbers,
  type DecorationSet,
} from "@codemirror/view";
import { listingSupport } from "../../editor/language";
import { letters } from "../../editor/letters";
import { listingTheme } from "../../editor/theme";
import { readOutline } from "../../listing/outline";
import type { Editing } from "../../state/editing";
import { openScript, type Shown, type State } from "../../state/state";
import type { Workbench } from "../../state/workbench";
import { whenQuiet } from "../../ui/dom";
import { bytesGutters, setOffsets } from "./gutters";
import { definitionOf, links, setOutline } from "./links";

// How long typing rests before the listing is read again, in milliseconds.
const readAfter = 250;

// The line that was gone to lights up.
const setArrival = StateEffect.define<number>();
const arrivalLine = Decoration.line({ class: "cm-arrival" });
const arrival = StateField.define<DecorationSet>({
  create: () => Decoration.none,
  update(value, transaction) {
    for (const effect of transaction.effects) {
      if (effect.is(setArrival)) return Decoration.set(arrivalLine.range(effect.value));
    }
    return transaction.docChanged ? value.map(transaction.changes) : value;
  },
  provide: (field) => EditorView.decorations.from(field),
});

const wrapping = new Compartment();

// Marks a change that comes from the state, not from the user.
const fromState = Annotation.define<boolean>();

export class ListingView {
  private readonly view: EditorView;
  private shown: Shown | null = null;
  private known = ""; // the listing as the state knows it
  private knownDoc: Text | null = null; // and as the editor does
  private place: State["place"] = null;
  private faults: State["faults"] = [];

  constructor(
    private readonly parent: HTMLElement,
    private readonly workbench: Workbench,
    private readonly editing: Editing,
  ) {
    this.view = new EditorView({ parent, state: this.fresh("") });
    workbench.store.listen((state) => this.draw(state));
  }

  // Draws a listing and takes it away unseen, so that the first one to be seen finds all code compiled.
  rehearse(listing: string): void {
    new EditorView({ parent: document.body, state: this.fresh(listing) }).destroy();
  }

  // The line of the cursor.
  get line(): number {
    return this.view.state.doc.lineAt(this.view.state.selection.main.head).number;
  }

  // Hands the state what was typed, now.
  readonly flush = (): void => {
    const { doc } = this.view.state;
    if (!this.shown || this.knownDoc === doc) return;
    this.knownDoc = doc;
    this.known = doc.toString();
    this.editing.draft(this.shown.id, this.known);
  };

  private readonly readSoon = whenQuiet(readAfter, () => {
    this.flush();
    this.readOutline();
  });

  private readOutline(): void {
    const { state } = this.view;
    const tree = syntaxTree(state);
    if (tree.length < state.doc.length) return this.readSoon();
    this.view.dispatch({ effects: setOutline.of(readOutline(state.doc.toString(), tree)) });
  }

  private fresh(doc: string): EditorState {
    return EditorState.create({
      doc,
      extensions: [
        EditorView.cspNonce.of(document.body.dataset.nonce ?? ""),
        wrapping.of(this.workbench.store.state.look.wrap ? EditorView.lineWrapping : []),
        lineNumbers(),
        bytesGutters,
        lintGutter(),
        listingSupport,
        history(),
        drawSelection(),
        bracketMatching(),
        highlightActiveLine(),
        highlightActiveLineGutter(),
        highlightSelectionMatches({ minSelectionLength: 3 }),
        search({ top: true }),
        letters,
        arrival,
        links(
          (name) => this.follow(name),
          (line) => this.go(line),
        ),
        keymap.of([...defaultKeymap, ...historyKeymap, ...searchKeymap, ...foldKeymap, ...lintKeymap]),
        listingTheme,
        EditorView.contentAttributes.of({ "aria-label": "Listing", spellcheck: "false" }),
        EditorView.updateListener.of((update) => {
          if (update.docChanged && !update.transactions.some((transaction) => transaction.annotation(fromState))) {
            const script = openScript(this.workbench.store.state);
            if (script && !script.draft) this.flush();
            this.readSoon();
          }
        }),
      ],
    });
  }

  private follow(name: string): void {
    const at = definitionOf(this.view, name);
    if (at >= 0) this.go(this.view.state.doc.lineAt(at).number);
    else this.workbench.notice(`No line has the label ${name}.`);
  }

  private go(line: number): void {
    const { place } = this.workbench.store.state;
    if (!place) return;
    this.flush();
    this.workbench.show({ id: place.id, view: "listing", line }, this.line);
  }

  private draw(state: State): void {
    const isVisible = state.view === "listing";
    this.parent.hidden = !isVisible;
    if (!isVisible) return;
    if (state.shown !== this.shown) this.drawListing(state);
    else this.drawDraft(state);
    this.drawLook(state.look);
    if (state.faults !== this.faults) this.drawFaults(state);
    if (state.place !== this.place && this.shown && this.shown.id === state.place?.id) {
      this.place = state.place;
      if (state.place.line) this.arrive(state.place.line);
      this.view.focus();
    }
  }

  private drawLook(look: State["look"]): void {
    this.parent.classList.toggle("shows-bytes", look.bytes);
    if (look.wrap === this.view.lineWrapping) return;
    this.view.dispatch({ effects: wrapping.reconfigure(look.wrap ? EditorView.lineWrapping : []) });
  }

  private drawListing(state: State): void {
    this.flush();
    const before = this.shown;
    this.shown = state.shown;
    this.faults = [];
    const draft = this.shown && this.workbench.script(this.shown.id)?.draft;
    const listing = draft?.listing ?? this.shown?.listing ?? "";
    const isRebuilt = before !== null && before.id === this.shown?.id && before.bytes !== this.shown.bytes;
    if (isRebuilt) this.replace(listing);
    else this.view.setState(this.fresh(listing));
    this.known = listing;
    this.knownDoc = this.view.state.doc;
    if (!this.shown) return;
    const { shown, knownDoc } = this;
    if (!draft) this.view.dispatch({ effects: setOffsets.of({ offsets: shown.offsets, bytes: shown.bytes }) });
    // The listing is to be seen first.
    requestIdleCallback(
      () => {
        if (this.shown !== shown || this.view.state.doc !== knownDoc) return;
        this.view.dispatch({ effects: setOutline.of(draft ? readOutline(draft.listing) : shown.outline) });
      },
      { timeout: readAfter },
    );
  }

  // A draft that came from elsewhere, as from the table of texts.
  private drawDraft(state: State): void {
    const listing = openScript(state)?.draft?.listing ?? this.shown?.listing;
    if (listing === undefined || listing === this.known) return;
    this.known = listing;
    this.replace(listing);
    this.knownDoc = this.view.state.doc;
    this.readOutline();
  }

  // Puts another listing in, as one step that can be undone.
  private replace(listing: string): void {
    const before = this.view.state.doc.toString();
    let from = 0;
    let end = 0;
    const most = Math.min(before.length, listing.length);
    while (from < most && before[from] === listing[from]) ++from;
    while (end < most - from && before.at(-1 - end) === listing.at(-1 - end)) ++end;
    this.view.dispatch({
      changes: { from, to: before.length - end, insert: listing.slice(from, listing.length - end) },
      annotations: [fromState.of(true), isolateHistory.of("full")],
    });
  }

  private drawFaults(state: State): void {
    this.faults = state.faults;
    const { length } = this.view.state.doc;
    const diagnostics: Diagnostic[] = state.faults.map((fault) => ({
      ...fault,
      from: Math.min(fault.from, length),
      to: Math.min(fault.to, length),
    }));
    this.view.dispatch(setDiagnostics(this.view.state, diagnostics));
    const [first] = diagnostics;
    if (first) this.view.dispatch({ effects: EditorView.scrollIntoView(first.from, { y: "center" }) });
  }

  private arrive(number: number): void {
    const { doc } = this.view.state;
    const line = doc.line(Math.max(1, Math.min(number, doc.lines)));
    const first = line.from + (line.text.length - line.text.trimStart().length);
    this.view.dispatch({
      selection: EditorSelection.cursor(first),
      effects: [EditorView.scrollIntoView(line.from, { y: "center" }), setArrival.of(line.from)],
    });
  }
}
