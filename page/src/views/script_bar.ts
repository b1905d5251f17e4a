// The line above the open script: which it is, the way back, and what can be done with it.
import { gameNames, type ListOption } from "../script/script";
import { gameOf, hasUnsaved, isChanged, openScript, type Script, type State } from "../state/state";
import type { Editing } from "../state/editing";
import type { Workbench } from "../state/workbench";
import { button, element } from "../ui/dom";
import { download, withExtension } from "../ui/download";

const switches: readonly (readonly [ListOption, string, string])[] = [
  ["dump", "Dump", "Show the bytes before each line"],
  ["textLabel", "Text labels", "Show the labels of the text table in place of the texts"],
  ["verbosityParenthesis", "All parentheses", "Put every operation of two operands in parentheses"],
  ["noInt16ToText", "Keep number tables", "Keep a table of numbers where its rest looks like texts"],
  ["omitDecl", "Omit decl", "Leave out the word decl"],
  ["omitEval", "Omit eval", "Leave out the word eval"],
  ["omitInt32", "Omit int32", "Leave out the word int32 before labels in expressions"],
  ["verbose", "More messages", "Tell more of the analysis"],
  ["trace", "Trace", "Tell each step of the analysis"],
];

// `flush` hands the state what was typed in the listing.
export function drawScriptBar(place: HTMLElement, workbench: Workbench, editing: Editing, flush: () => void): void {
  const { store } = workbench;
  const back = button("‹", () => workbench.back(), { id: "back", ariaLabel: "Back", title: "Back (Alt+Left)" });
  const forward = button("›", () => workbench.forward(), {
    id: "forward",
    ariaLabel: "Forward",
    title: "Forward (Alt+Right)",
  });
  const title = element("h2", { id: "script-title" });
  const about = element("span", { className: "quiet" });
  const gameHint = element("span", { id: "game-hint" });

  const boxes = switches.map(([option, label, hint]) => {
    const box = element("input", {
      type: "checkbox",
      id: `option-${option}`,
      on: { change: () => workbench.toggleOption(option) },
    });
    return { option, box, line: element("label", { title: hint }, box, label) };
  });
  const looks = (["bytes", "wrap"] as const).map((name) => {
    const change = () => store.send({ is: "lookChosen", look: { ...store.state.look, [name]: box.checked } });
    const box = element("input", { type: "checkbox", id: `look-${name}`, on: { change } });
    return element("label", {}, box, name === "bytes" ? "Bytes beside" : "Wrap long lines");
  });
  const optionNote = element("p", {
    className: "quiet",
    textContent: "Rebuild or discard your changes to switch these.",
    hidden: true,
  });
  const panel = element(
    "div",
    { className: "menu options", popover: "auto", id: "options-panel" },
    ...looks,
    element("hr"),
    ...boxes.map((box) => box.line),
    optionNote,
  );
  const options = element("button", { type: "button", id: "options", textContent: "Options" });
  options.setAttribute("popovertarget", "options-panel");
  panel.addEventListener("toggle", (event) => {
    if (event.newState === "closed") return;
    const { right, bottom } = options.getBoundingClientRect();
    panel.style.left = `${Math.max(8, right - panel.offsetWidth)}px`;
    panel.style.top = `${bottom + 4}px`;
  });
  const saveListing = button("Listing ↓", () => saveShown("listing"), {
    id: "download-listing",
    title: "Download the listing",
  });
  const saveTable = button("Texts ↓", () => saveShown("table"), {
    id: "download-table",
    title: "Download the text table",
  });
  const saveShown = (what: "listing" | "table") => {
    const { shown } = store.state;
    const script = openScript(store.state);
    if (!shown || !script) return;
    const bytes = what === "listing" ? shown.listingBytes : shown.table;
    download(withExtension(script.path, what === "listing" ? ".lst" : ".txt"), bytes, "application/octet-stream");
  };
  const discard = button("Discard", () => discardChanges(), {
    id: "discard",
    title: "Go back to the script as it was opened",
  });
  const discardChanges = () => {
    const script = openScript(store.state);
    if (script && confirm("Discard every change to this script?")) editing.discard(script.id);
  };
  const buildOpen = () => {
    flush();
    const script = openScript(store.state);
    if (script) void editing.build(script.id);
  };
  const build = button("Rebuild", () => buildOpen(), {
    id: "build",
    className: "is-main",
    title: "Make a script of the listing",
  });
  const save = button("Script ↓", () => editing.downloadScript(), { id: "download", title: "Download the script" });
  const close = button("×", () => closeScript(), { id: "close", ariaLabel: "Close", title: "Close this script" });
  const closeScript = () => {
    const script = openScript(store.state);
    if (!script) return;
    if (!hasUnsaved(script) || confirm("Close this script and lose its changes?")) workbench.close(script.id);
  };
  const files = element("span", { className: "group" }, saveListing, saveTable);
  place.append(
    element("span", { className: "group" }, back, forward),
    title,
    about,
    gameHint,
    element("span", { className: "space" }),
    options,
    panel,
    files,
    discard,
    build,
    save,
    close,
  );

  document.addEventListener("keydown", (event) => {
    if (!event.altKey || event.ctrlKey || event.metaKey || event.shiftKey || !store.state.place) return;
    if (event.key === "ArrowLeft") workbench.back();
    else if (event.key === "ArrowRight") workbench.forward();
    else return;
    event.preventDefault();
  });

  const draw = (state: State) => {
    const script = openScript(state);
    back.disabled = state.back.length === 0;
    forward.disabled = state.forward.length === 0;
    if (!script) return;
    title.textContent = script.path.slice(script.path.lastIndexOf("/") + 1);
    title.title = script.path;
    about.textContent = [script.summary?.speakerName, gameNames[gameOf(state, script)]].filter(Boolean).join(" · ");
    drawGameHint(gameHint, script, state, workbench);
    const isDraft = script.draft !== null;
    for (const { option, box } of boxes) {
      box.checked = state.options.has(option);
      box.disabled = isDraft;
    }
    optionNote.hidden = !isDraft;
    const isListing = state.view === "listing";
    options.hidden = files.hidden = !isListing;
    build.disabled = !isDraft;
    discard.hidden = !isDraft && !isChanged(script);
    save.disabled = isDraft || script.bytes.length === 0;
    save.classList.toggle("is-main", isChanged(script) && !script.isSaved && !isDraft);
  };
  store.listen(draw);
}

// Which games list a script that its own does not, or that another reads in its own way.
function drawGameHint(place: HTMLElement, script: Script, state: State, workbench: Workbench): void {
  const { summary } = script;
  place.replaceChildren();
  if (!summary) return;
  const game = gameOf(state, script);
  const others = summary.listedBy.filter((other) => other !== game && !summary.alike.includes(other));
  if (others.length === 0) return;
  const names = others.map((other) => gameNames[other]).join(" and ");
  const hint =
    summary.status === "failed"
      ? `not a script of ${gameNames[game]}; ${names} can list it`
      : `${names} would read it differently`;
  place.append(hint);
  if (summary.status === "failed") {
    for (const other of others) {
      place.append(
        button(`Read as ${gameNames[other]}`, () => workbench.chooseOwnGame(script.id, other), {
          className: "is-small",
        }),
      );
    }
  }
}
