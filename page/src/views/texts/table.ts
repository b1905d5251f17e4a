// The table of all texts.
import { shown } from "../../script/encoding";
import type { Kind, TextRow } from "../../script/script";
import type { Editing } from "../../state/editing";
import type { Workbench } from "../../state/workbench";
import { button, element, whenQuiet } from "../../ui/dom";
import { download } from "../../ui/download";
import { Table, type Column } from "../../ui/table";
import { editText } from "./editor";
import type { Entry } from "./entry";
import { textsAsCsv, textsAsJson } from "./files";

const kinds: readonly Kind[] = ["spoken", "keyword", "name", "look", "table"];
const numberFormat = new Intl.NumberFormat("en");
const byText = new Intl.Collator("en", { numeric: true }).compare;

export function drawTexts(place: HTMLElement, workbench: Workbench, editing: Editing): void {
  const { store } = workbench;
  const open = ({ script, row }: Entry) => workbench.show({ id: script.id, view: "listing", line: row.line });
  const edit = ({ script, row, index }: Entry) => editText(editing, script, row, index);
  const columns: Column<Entry>[] = [
    {
      name: "file",
      title: "File",
      width: "minmax(120px, 1fr)",
      cell: ({ script }) => script.path,
      order: (one, other) => byText(one.script.path, other.script.path),
    },
    {
      name: "speaker",
      title: "Speaker",
      width: "minmax(100px, 1fr)",
      cell: ({ script }) => script.summary?.speakerName ?? "",
      order: (one, other) => byText(one.script.summary?.speakerName ?? "", other.script.summary?.speakerName ?? ""),
    },
    {
      name: "kind",
      title: "Kind",
      width: "84px",
      cell: ({ row }) => element("span", { className: `kind is-${row.kind}`, textContent: row.kind }),
      order: (one, other) => byText(one.row.kind, other.row.kind),
    },
    {
      name: "place",
      title: "Place",
      width: "minmax(120px, 1.3fr)",
      className: "is-quiet",
      cell: ({ row }) => shown(row.place),
      order: (one, other) => byText(one.row.place, other.row.place),
    },
    {
      name: "text",
      title: "Text",
      width: "minmax(240px, 4fr)",
      className: "is-text",
      cell: ({ row }) => shown(row.text.trimEnd()),
      order: (one, other) => byText(one.row.text, other.row.text),
    },
    {
      name: "edit",
      title: "",
      width: "64px",
      cell: (entry) => {
        const label = "Edit";
        const made = button(label, () => {}, { className: "is-small", tabIndex: -1 });
        made.addEventListener("click", (event) => {
          event.stopPropagation();
          edit(entry);
        });
        return made;
      },
    },
  ];
  const table = new Table<Entry>({
    label: "Texts",
    columns,
    rowHeight: 44,
    open,
    edit,
    empty: "No text fits the search.",
  });
  const search = element("input", {
    type: "search",
    id: "texts-search",
    placeholder: "Search in all texts",
    ariaLabel: "Search in all texts",
  });
  const kind = element(
    "select",
    { id: "texts-kind", ariaLabel: "Kind of text" },
    element("option", { value: "", textContent: "every kind" }),
    ...kinds.map((value) => element("option", { value, textContent: value })),
  );
  const only = element("select", { id: "texts-scripts", ariaLabel: "Scripts" });
  only.append(
    element("option", { value: "", textContent: "all scripts" }),
    element("option", { value: "open", textContent: "the open script" }),
  );
  const count = element("span", { className: "count", role: "status" });
  const undo = button("Undo", () => editing.undoText(), {
    id: "texts-undo",
    title: "Undo the last change of a text (Ctrl+Z)",
  });
  table.element.addEventListener("keydown", (event) => {
    if (event.key === "z" && (event.ctrlKey || event.metaKey)) editing.undoText();
  });
  const hint = element("span", { className: "quiet", textContent: "Enter: listing · F2: edit" });

  let entries: Entry[] = [];
  let matching: Entry[] = [];
  const filter = () => {
    const words = search.value.toLowerCase();
    const openId = store.state.place?.id;
    matching = entries.filter(
      ({ script, row, searched }) =>
        (words === "" || searched.includes(words)) &&
        (kind.value === "" || row.kind === kind.value) &&
        (only.value === "" || script.id === openId),
    );
    table.show(matching);
    count.textContent = `${numberFormat.format(matching.length)} of ${numberFormat.format(entries.length)} texts`;
  };
  const known = new WeakMap<readonly TextRow[], Entry[]>();
  const collect = () => {
    entries = store.state.scripts.flatMap((script) => {
      const texts = script.summary?.texts ?? [];
      let made = known.get(texts);
      if (!made || made[0]?.script !== script) {
        made = texts.map((row, index) => ({ script, row, index, searched: shown(row.text).toLowerCase() }));
        known.set(texts, made);
      }
      return made;
    });
    filter();
  };
  const save = (name: string, type: string, write: (entries: readonly Entry[]) => string) =>
    button(name, () => download(`texts.${name.toLowerCase()}`, write(matching), type), {
      id: `texts-${name.toLowerCase()}`,
      title: `Download the texts shown as ${name}`,
    });
  place.append(
    element(
      "div",
      { className: "tools" },
      search,
      kind,
      only,
      count,
      hint,
      element("span", { className: "space" }),
      undo,
      save("CSV", "text/csv;charset=utf-8", textsAsCsv),
      save("JSON", "application/json", textsAsJson),
    ),
    table.element,
  );
  search.addEventListener("input", whenQuiet(60, filter));
  search.addEventListener("keydown", (event) => {
    if (event.key === "ArrowDown") table.element.focus();
  });
  kind.addEventListener("change", filter);
  only.addEventListener("change", filter);
  let isStale = true;
  store.listen((state, before) => {
    isStale ||= state.scripts !== before.scripts;
    if (state.view !== "texts") return;
    undo.hidden = !editing.canUndoText;
    if (state.view !== before.view) editing.readTexts();
    if (isStale) collect();
    else if (state.place?.id !== before.place?.id) filter();
    isStale = false;
  });
}
