// The table of scripts.
import { gameNames } from "../script/script";
import { gameOf, hasUnsaved, type Script } from "../state/state";
import type { Workbench } from "../state/workbench";
import { element } from "../ui/dom";
import { Table, type Column } from "../ui/table";

const statusWords = { listed: "listed", warnings: "warnings", failed: "failed", waiting: "waiting" };
type Status = keyof typeof statusWords;
const statuses = Object.keys(statusWords) as Status[];

const statusOf = (script: Script): Status => script.summary?.status ?? "waiting";
const numberFormat = new Intl.NumberFormat("en");
const byText = new Intl.Collator("en", { numeric: true }).compare;

export function drawScripts(place: HTMLElement, workbench: Workbench): void {
  const { store } = workbench;
  const speakerId = (script: Script) => script.summary?.speakerId ?? -1;
  const texts = (script: Script) => script.summary?.texts.length ?? 0;
  const columns: Column<Script>[] = [
    {
      name: "file",
      title: "File",
      width: "minmax(220px, 3fr)",
      cell: (script) => script.path + (hasUnsaved(script) ? " •" : ""),
      order: (one, other) => byText(one.path, other.path),
    },
    {
      name: "id",
      title: "Id",
      width: "70px",
      className: "is-number",
      cell: (script) => (speakerId(script) < 0 ? "" : String(speakerId(script))),
      order: (one, other) => speakerId(one) - speakerId(other),
    },
    {
      name: "speaker",
      title: "Speaker",
      width: "minmax(140px, 2fr)",
      cell: (script) => script.summary?.speakerName ?? "",
      order: (one, other) => byText(one.summary?.speakerName ?? "", other.summary?.speakerName ?? ""),
    },
    {
      name: "game",
      title: "Game",
      width: "120px",
      cell: (script) => gameNames[gameOf(store.state, script)],
      order: (one, other) => byText(gameOf(store.state, one), gameOf(store.state, other)),
    },
    {
      name: "size",
      title: "Bytes",
      width: "90px",
      className: "is-number",
      cell: (script) => numberFormat.format(script.bytes.length),
      order: (one, other) => one.bytes.length - other.bytes.length,
    },
    {
      name: "texts",
      title: "Texts",
      width: "80px",
      className: "is-number",
      cell: (script) => numberFormat.format(texts(script)),
      order: (one, other) => texts(one) - texts(other),
    },
    {
      name: "status",
      title: "Status",
      width: "120px",
      cell: (script) => statusMark(statusOf(script)),
      order: (one, other) => statuses.indexOf(statusOf(one)) - statuses.indexOf(statusOf(other)),
    },
  ];
  const table = new Table<Script>({
    label: "Scripts",
    columns,
    rowHeight: 34,
    open: (script) => workbench.show({ id: script.id, view: "listing" }),
    isMarked: (script) => script.id === store.state.place?.id,
    empty: "No script fits the filter.",
  });
  const filter = element("input", {
    type: "search",
    id: "scripts-filter",
    placeholder: "Filter by file, speaker or status",
    ariaLabel: "Filter the scripts",
  });
  const count = element("span", { className: "count", role: "status" });
  place.append(element("div", { className: "tools" }, filter, count), table.element);

  const draw = () => {
    const { scripts } = store.state;
    const words = filter.value.toLowerCase().split(/\s+/).filter(Boolean);
    const fits = (script: Script) => {
      const all =
        `${script.path} ${speakerId(script)} ${script.summary?.speakerName ?? ""} ${statusOf(script)}`.toLowerCase();
      return words.every((word) => all.includes(word));
    };
    const shown = words.length > 0 ? scripts.filter(fits) : scripts;
    table.show(shown);
    count.textContent = `${numberFormat.format(shown.length)} of ${numberFormat.format(scripts.length)} scripts`;
  };
  filter.addEventListener("input", draw);
  filter.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") table.element.focus();
  });
  store.listen((state, before) => {
    const isNew = state.scripts !== before.scripts || state.view !== before.view || state.game !== before.game;
    if (isNew && state.view === "scripts") draw();
  });
}

function statusMark(status: Status): HTMLElement {
  return element("span", { className: `status is-${status}`, textContent: statusWords[status] });
}
