// Letters that Unicode lacks, or has twice, are drawn as what they show; the text keeps their bytes.
import {
  Decoration,
  MatchDecorator,
  ViewPlugin,
  WidgetType,
  type DecorationSet,
  type EditorView,
  type ViewUpdate,
} from "@codemirror/view";
import { shownLetter } from "../script/encoding";
import { element } from "../ui/dom";

class Letter extends WidgetType {
  constructor(private readonly shown: string) {
    super();
  }
  override eq(other: Letter): boolean {
    return other.shown === this.shown;
  }
  override toDOM(): HTMLElement {
    return element("span", { className: "cm-letter", textContent: this.shown });
  }
}

const matches = new MatchDecorator({
  regexp: /[\u{f0000}-\u{fffff}]/gu,
  decoration: ([letter]) => Decoration.replace({ widget: new Letter(shownLetter(letter)) }),
});

export const letters = ViewPlugin.fromClass(
  class {
    decorations: DecorationSet;
    constructor(view: EditorView) {
      this.decorations = matches.createDeco(view);
    }
    update(update: ViewUpdate): void {
      this.decorations = matches.updateDeco(update, this.decorations);
    }
  },
  { decorations: (plugin) => plugin.decorations },
);
