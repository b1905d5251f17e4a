// The colours of a listing, by the page's own variables, so that they follow light and dark.
import { HighlightStyle, syntaxHighlighting } from "@codemirror/language";
import { EditorView } from "@codemirror/view";
import { tags } from "@lezer/highlight";

const colours = HighlightStyle.define([
  { tag: tags.lineComment, color: "var(--quiet)" },
  { tag: tags.meta, color: "var(--quiet)" },
  { tag: tags.processingInstruction, color: "var(--quiet)" },
  { tag: tags.labelName, class: "cm-label" },
  { tag: tags.definition(tags.labelName), class: "cm-label-definition" },
  { tag: tags.controlKeyword, color: "var(--code-flow)", fontWeight: "600" },
  { tag: tags.keyword, color: "var(--code-statement)" },
  { tag: tags.modifier, color: "var(--quiet)" },
  { tag: tags.function(tags.variableName), color: "var(--code-function)" },
  { tag: tags.variableName, color: "var(--code-variable)" },
  { tag: tags.number, color: "var(--code-number)" },
  { tag: tags.operator, color: "var(--text)" },
  { tag: tags.punctuation, color: "var(--quiet)" },
  { tag: tags.string, color: "var(--code-text)" },
  { tag: tags.special(tags.string), color: "var(--code-passage)" },
  { tag: tags.escape, color: "var(--code-escape)" },
  { tag: tags.link, color: "var(--code-offer)", fontWeight: "600" },
]);

const look = EditorView.theme({
  "&": { height: "100%", backgroundColor: "var(--paper)", color: "var(--text)", fontSize: "0.875rem" },
  "&.cm-focused": { outline: "none" },
  ".cm-scroller": { fontFamily: "var(--mono)", lineHeight: "1.6" },
  ".cm-content": { caretColor: "var(--accent)", padding: "8px 0 40vh" },
  ".cm-cursor": { borderLeftColor: "var(--accent)", borderLeftWidth: "2px" },
  ".cm-gutters": { backgroundColor: "var(--paper)", color: "var(--faint)", border: "none", paddingRight: "4px" },
  ".cm-activeLine": { backgroundColor: "var(--hover)" },
  ".cm-activeLineGutter": { backgroundColor: "var(--hover)", color: "var(--quiet)" },
  "&.cm-focused > .cm-scroller > .cm-selectionLayer .cm-selectionBackground, .cm-selectionBackground": {
    backgroundColor: "var(--selection)",
  },
  ".cm-searchMatch": { backgroundColor: "var(--match)", outline: "none" },
  ".cm-searchMatch-selected": { backgroundColor: "var(--match-now)" },
  ".cm-foldPlaceholder": { backgroundColor: "var(--hover)", border: "none", color: "var(--quiet)", padding: "0 6px" },
  ".cm-panels": { backgroundColor: "var(--panel)", color: "var(--text)", borderColor: "var(--line)" },
  ".cm-panels.cm-panels-top": { borderBottom: "1px solid var(--line)" },
  ".cm-tooltip": {
    backgroundColor: "var(--panel)",
    color: "var(--text)",
    border: "1px solid var(--line)",
    borderRadius: "6px",
  },
  ".cm-offsets": { minWidth: "5em", textAlign: "right" },
  ".cm-offsets .cm-gutterElement, .cm-bytes .cm-gutterElement": { padding: "0 8px 0 4px" },
  ".cm-bytes": { minWidth: "16.5em" },
});

export const listingTheme = [look, syntaxHighlighting(colours)];
