// The bar at the top: views, game, files, progress.
import { gameNames, games, type Game } from "../script/script";
import { fromDrop, fromInput, type Picked } from "../state/files";
import { hasChange, hasUnsaved, views, type View } from "../state/state";
import type { Editing } from "../state/editing";
import type { Workbench } from "../state/workbench";
import { button, byId, element, whenQuiet } from "../ui/dom";

const viewTitles: Readonly<Record<View, string>> = {
  scripts: "Scripts",
  texts: "Texts",
  listing: "Listing",
  map: "Map",
  compare: "Compare",
  bytes: "Bytes",
};

const ofOneScript: ReadonlySet<View> = new Set(["listing", "map", "bytes"]);

export function drawBar(workbench: Workbench, editing: Editing): void {
  const { store } = workbench;
  const tabs = views.map((view) => button(viewTitles[view], () => workbench.setView(view), { id: `view-${view}` }));
  byId("views").append(...tabs);

  const game = byId<HTMLSelectElement>("game");
  game.append(...games.map((value) => element("option", { value, textContent: gameNames[value] })));
  game.addEventListener("change", () => workbench.chooseGame(game.value as Game));

  takeFiles("open-files", (files) => workbench.open(files));
  takeFiles("open-folder", (files) => workbench.open(files));
  takeDrops((files) => workbench.open(files));

  byId("stop").addEventListener("click", () => workbench.stop());
  byId("resume").addEventListener("click", () => workbench.resume());
  const saveAll = byId<HTMLButtonElement>("download-changed");
  saveAll.addEventListener("click", () => void editing.downloadChanged());

  const draw = () => {
    const { view, scripts, place, progress } = store.state;
    views.forEach((value, index) => {
      const tab = tabs[index]!;
      tab.hidden = scripts.length === 0;
      tab.disabled = ofOneScript.has(value) && place === null;
      if (value === view) tab.setAttribute("aria-current", "page");
      else tab.removeAttribute("aria-current");
    });
    game.value = store.state.game;
    drawProgress(progress);
    byId("resume").hidden = progress !== null || scripts.every((script) => script.summary !== null);
    saveAll.hidden = !scripts.some(hasChange);
    saveAll.textContent = `Changed (${scripts.filter(hasChange).length}) ↓`;
    document.title = scripts.some(hasUnsaved) ? "• varsul" : "varsul";
  };
  store.listen(draw);
  draw();
  const hide = whenQuiet(6000, () => byId("notice").classList.remove("is-shown"));
  store.listen((state, before) => {
    if (state.notice === before.notice) return;
    byId("notice").textContent = state.notice.text;
    byId("notice").classList.add("is-shown");
    hide();
  });
}

function drawProgress(progress: { done: number; all: number } | null): void {
  const place = byId("progress");
  place.hidden = progress === null;
  if (!progress) return;
  const bar = place.querySelector("progress")!;
  bar.max = progress.all;
  bar.value = progress.done;
  place.querySelector("span")!.textContent = `${progress.done} of ${progress.all}`;
}

function takeFiles(id: string, open: (files: Picked[]) => unknown): void {
  const input = byId<HTMLInputElement>(id);
  input.addEventListener("change", () => {
    if (input.files?.length) open(fromInput(input.files));
    input.value = "";
  });
}

function takeDrops(open: (files: Picked[]) => unknown): void {
  const sign = byId("drop");
  let depth = 0;
  const hasFiles = (event: DragEvent) => event.dataTransfer?.types.includes("Files") ?? false;
  document.addEventListener("dragenter", (event) => {
    if (hasFiles(event)) sign.hidden = ++depth === 0;
  });
  document.addEventListener("dragleave", (event) => {
    if (hasFiles(event)) sign.hidden = --depth <= 0;
  });
  document.addEventListener("dragover", (event) => {
    if (hasFiles(event)) event.preventDefault();
  });
  document.addEventListener("drop", async (event) => {
    if (!hasFiles(event)) return;
    event.preventDefault();
    depth = 0;
    sign.hidden = true;
    open(await fromDrop(event.dataTransfer!));
  });
}
