// Labels as links: a click goes where a label leads, a jump shows the first words there, and each label
// tells who jumps to it.
import { syntaxTree } from "@codemirror/language";
import { RangeSetBuilder, StateEffect, StateField, type Extension } from "@codemirror/state";
import { Decoration, EditorView, ViewPlugin, WidgetType, type DecorationSet, type ViewUpdate } from "@codemirror/view";
import { readable, type Outline, type Reference, type Statement } from "../../listing/outline";
import { shown } from "../../script/encoding";
import { button, element } from "../../ui/dom";

// What the listing said when it was last read; positions may have moved since, names hold.
interface Known {
  readonly outline: Outline | null;
  readonly sources: ReadonlyMap<string, readonly Reference[]>;
  readonly firstWords: ReadonlyMap<string, string>;
}

export const setOutline = StateEffect.define<Outline>();

const known = StateField.define<Known>({
  create: () => ({ outline: null, sources: new Map(), firstWords: new Map() }),
  update(value, transaction) {
    for (const effect of transaction.effects) if (effect.is(setOutline)) return knownOf(effect.value);
    return value;
  },
});

function knownOf(outline: Outline): Known {
  const sources = new Map<string, Reference[]>();
  for (const reference of outline.references) {
    const list = sources.get(reference.name);
    if (list) list.push(reference);
    else sources.set(reference.name, [reference]);
  }
  return { outline, sources, firstWords: firstWordsOf(outline) };
}

// The first text that stands behind each label; a table of numbers has none.
function firstWordsOf(outline: Outline): Map<string, string> {
  const words = new Map<string, string>();
  let waiting: string[] = [];
  const visit = (statements: readonly Statement[]): void => {
    for (const statement of statements) {
      waiting.push(...statement.labels);
      const isTable = statement.name.startsWith(".");
      if (isTable && statement.text === null) waiting = [];
      if (statement.text !== null && statement.text.trim() !== "") {
        for (const label of waiting) words.set(label, shorten(statement.text));
        waiting = [];
      }
      visit(statement.block);
    }
  };
  visit(outline.statements);
  return words;
}

function shorten(text: string): string {
  const line = shown(text)
    .replace(/\s+/g, " ")
    .trim()
    .replace(/^"(.*?)"?$/, "$1");
  return line.length > 48 ? `${line.slice(0, 46).trimEnd()}…` : line;
}

class Sources extends WidgetType {
  constructor(
    private readonly name: string,
    private readonly sources: readonly Reference[],
    private readonly go: (line: number) => void,
  ) {
    super();
  }
  override eq(other: Sources): boolean {
    return other.name === this.name && other.sources === this.sources;
  }
  override ignoreEvent(): boolean {
    return true;
  }
  override toDOM(): HTMLElement {
    const count = this.sources.length;
    const made = button("", () => this.open(made), { className: "cm-sources" });
    made.dataset.count = count === 1 ? "← 1 way here" : `← ${count} ways here`;
    made.ariaLabel = `${this.name} is named by ${count} ${count === 1 ? "line" : "lines"}`;
    return made;
  }
  private open(anchor: HTMLElement): void {
    if (this.sources.length === 1) return this.go(this.sources[0]!.line);
    const menu = element("div", { className: "menu", popover: "auto" });
    for (const { line, statement } of this.sources) {
      const label = `${line}: ${statement.name} ${readable(statement.operands)}`;
      menu.append(button(label, () => (menu.hidePopover(), this.go(line))));
    }
    menu.addEventListener("toggle", (event) => event.newState === "closed" && menu.remove());
    document.body.append(menu);
    menu.showPopover();
    const { left, bottom } = anchor.getBoundingClientRect();
    menu.style.left = `${left}px`;
    menu.style.top = `${Math.min(bottom, innerHeight - menu.offsetHeight - 8)}px`;
    menu.querySelector("button")?.focus();
  }
}

// Where a label stands in the text as it is now, or -1.
export function definitionOf(view: EditorView, name: string): number {
  const text = view.state.doc.toString();
  if (text.startsWith(`${name}:`)) return 0;
  const at = text.indexOf(`\n${name}:`);
  return at < 0 ? -1 : at + 1;
}

function decorate(view: EditorView, go: (line: number) => void): DecorationSet {
  const { sources, firstWords } = view.state.field(known);
  const builder = new RangeSetBuilder<Decoration>();
  for (const { from, to } of view.visibleRanges) {
    syntaxTree(view.state).iterate({
      from,
      to,
      enter(node) {
        if (node.name === "LabelDefinition") {
          const name = view.state.sliceDoc(node.from, node.to - 1);
          const list = sources.get(name);
          if (list) builder.add(node.to, node.to, Decoration.widget({ side: 1, widget: new Sources(name, list, go) }));
          return false;
        }
        if (node.name !== "LabelName") return;
        const { from: line } = node.node.parent ?? node;
        const isJump = view.state.sliceDoc(line, line + 5) === "jump ";
        const words = firstWords.get(view.state.sliceDoc(node.from, node.to));
        const attributes = {
          ...(words && { title: `“${words}”` }),
          ...(words && isJump && { "data-words": `“${words}”` }),
        };
        builder.add(node.from, node.to, Decoration.mark({ class: "cm-reference", attributes }));
        return false;
      },
    });
  }
  return builder.finish();
}

// `follow` is called with the name of a label that is clicked, `go` with a line.
export function links(follow: (name: string) => void, go: (line: number) => void): Extension {
  const plugin = ViewPlugin.fromClass(
    class {
      decorations: DecorationSet;
      private tree;
      constructor(view: EditorView) {
        this.tree = syntaxTree(view.state);
        this.decorations = decorate(view, go);
      }
      update(update: ViewUpdate): void {
        const tree = syntaxTree(update.state);
        const isTold = update.transactions.some((transaction) =>
          transaction.effects.some((effect) => effect.is(setOutline)),
        );
        if (update.docChanged || update.viewportChanged || isTold || tree !== this.tree) {
          this.tree = tree;
          this.decorations = decorate(update.view, go);
        }
      }
    },
    { decorations: (value) => value.decorations },
  );
  const labelAt = (view: EditorView, position: number) => {
    const node = syntaxTree(view.state).resolveInner(position, 1);
    return node.name === "LabelName" && node.parent?.name !== "LabelDefinition"
      ? view.state.sliceDoc(node.from, node.to)
      : null;
  };
  const clicks = EditorView.domEventHandlers({
    click(event, view) {
      const target = event.target as HTMLElement;
      if (event.button !== 0 || !target.closest?.(".cm-reference") || !view.state.selection.main.empty) return false;
      const position = view.posAtDOM(target.closest(".cm-reference")!);
      const name = labelAt(view, position);
      if (name) follow(name);
      return name !== null;
    },
    keydown(event, view) {
      if (event.key !== "F12") return false;
      const name = labelAt(view, view.state.selection.main.head);
      if (name) follow(name);
      return name !== null;
    },
  });
  return [known, plugin, clicks];
}
