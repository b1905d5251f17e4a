// The dialog in which one text is changed.
import { encode, shown, type Unencodable } from "../../script/encoding";
import type { TextRow } from "../../script/script";
import type { Script } from "../../state/state";
import type { Editing } from "../../state/editing";
import { button, element } from "../../ui/dom";

export function editText(editing: Editing, script: Script, row: TextRow, index: number): void {
  const area = element("textarea", { value: row.text, rows: 6, id: "text-edit", ariaLabel: "Text" });
  area.setAttribute("aria-describedby", "text-fault");
  const fault = element("p", { className: "fault", id: "text-fault", role: "alert" });
  const apply = button("Apply", () => void finish(), { className: "is-main", id: "text-apply" });
  const dialog = element(
    "dialog",
    { className: "text-dialog", ariaLabel: "Edit a text" },
    element("h2", { textContent: `${script.summary?.speakerName || script.path}` }),
    element("p", { className: "quiet", textContent: [row.kind, shown(row.place)].filter(Boolean).join(" · ") }),
    area,
    fault,
    element(
      "div",
      { className: "dialog-buttons" },
      button("Cancel", () => dialog.close()),
      apply,
    ),
  );
  const check = () => {
    const message = faultOf(area.value, row);
    fault.textContent = message?.text ?? "";
    apply.disabled = message !== null;
    return message;
  };
  const finish = async () => {
    const message = check();
    if (message) return area.setSelectionRange(message.at, message.at + 1);
    if (area.value !== row.text) await editing.changeText(script.id, index, area.value);
    dialog.close();
  };
  area.addEventListener("input", check);
  area.addEventListener("keydown", (event) => {
    if (event.key === "Enter" && (event.ctrlKey || event.metaKey)) void finish();
  });
  dialog.addEventListener("close", () => dialog.remove());
  document.body.append(dialog);
  dialog.showModal();
  area.focus();
}

// What is wrong with a text, and at which letter.
function faultOf(text: string, row: TextRow): { at: number; text: string } | null {
  const [missing] = encode(text).faults;
  if (missing) return { at: missing.at, text: missingLetter(missing) };
  if (text === "" && row.kind !== "table") return { at: 0, text: "This text may not be empty." };
  let inPassage = false;
  for (let at = 0; at < text.length; ++at) {
    const letter = text[at]!;
    if (letter === "{") inPassage = true;
    else if (letter === "}") inPassage = false;
    else if (!inPassage && letter > "~") {
      return {
        at,
        text: `Put “${shown(String.fromCodePoint(text.codePointAt(at)!))}” between { and }, as all double-byte letters.`,
      };
    }
  }
  if (inPassage) return { at: text.lastIndexOf("{"), text: "This { has no }." };
  return null;
}

export const missingLetter = ({ letter }: Unencodable) => `The scripts' encoding has no “${letter}”.`;
