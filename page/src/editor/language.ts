// A listing for the editor: its language, and blocks that fold below the statement that governs them.
import {
  codeFolding,
  foldGutter,
  foldService,
  Language,
  LanguageSupport,
  LRLanguage,
  syntaxTree,
} from "@codemirror/language";
import { parser } from "../listing/listing.grammar";

export const listingLanguage: Language = LRLanguage.define({ parser, languageData: { commentTokens: { line: ";" } } });

const foldBlocks = foldService.of((state, _from, to) => {
  if (to >= state.doc.length) return null;
  let node = syntaxTree(state).resolveInner(to + 1, 1);
  while (node.parent && (node.name !== "Block" || node.from > to + 1)) node = node.parent;
  if (node.name !== "Block" || node.from !== to + 1) return null;
  const end = state.doc.lineAt(Math.max(to, node.to - 1)).to;
  return end > to ? { from: to, to: end } : null;
});

export const listingSupport = [
  new LanguageSupport(listingLanguage),
  foldBlocks,
  codeFolding(),
  foldGutter({ openText: "⌄", closedText: "›" }),
];
