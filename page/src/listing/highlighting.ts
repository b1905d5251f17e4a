import { styleTags, tags } from "@lezer/highlight";

// The colours of a listing's words; the listing view gives the tags their style.
export const highlighting = styleTags({
  "Id Comment End": tags.lineComment,
  Dump: tags.meta,
  "Option/...": tags.processingInstruction,
  LabelName: tags.labelName,
  "LabelDefinition/LabelName": tags.definition(tags.labelName),
  FlowWord: tags.controlKeyword,
  StatementName: tags.keyword,
  KindWord: tags.modifier,
  Call: tags.function(tags.variableName),
  "( ) [ ] ,": tags.punctuation,
  Variable: tags.variableName,
  Number: tags.number,
  "Operator Assignment": tags.operator,
  TextLabel: tags.string,
  "Text Characters": tags.string,
  Escape: tags.escape,
  "Passage PassageCharacters": tags.special(tags.string),
  Offer: tags.link,
});
