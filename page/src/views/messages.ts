// The messages about the open script, with offsets that lead to its bytes.
import { openScript, type State } from "../state/state";
import type { Workbench } from "../state/workbench";
import { button, element } from "../ui/dom";

const most = 500;

export function drawMessages(place: HTMLElement, workbench: Workbench): void {
  const { store } = workbench;
  const title = element("h2");
  const list = element("ul");
  place.append(title, list);
  const draw = (state: State) => {
    const script = openScript(state);
    const isOfScript = state.view === "listing" || state.view === "bytes" || state.view === "map";
    const lines = (state.shown?.messages ?? "").split("\n").filter((line) => line !== "");
    const faults = state.faults;
    place.hidden = !script || !isOfScript || lines.length + faults.length === 0;
    if (place.hidden || !script) return;
    const isFailed = state.shown !== null && state.shown.status !== 0;
    title.textContent =
      faults.length > 0
        ? "The listing can't be rebuilt yet"
        : isFailed
          ? "This script could not be listed"
          : "Messages";
    const items =
      faults.length > 0
        ? faults.map((fault) => faultItem(fault, state, workbench))
        : lines.slice(0, most).map((line) => messageItem(line, script.id, workbench));
    if (faults.length === 0 && lines.length > most) items.push(element("li", {}, `and ${lines.length - most} more`));
    if (isFailed && faults.length === 0 && state.view !== "bytes") {
      items.push(
        element(
          "li",
          {},
          button("See the bytes and the texts in them", () => workbench.setView("bytes"), { className: "link" }),
        ),
      );
    }
    list.replaceChildren(...items);
  };
  store.listen((state, before) => {
    if (
      state.shown !== before.shown ||
      state.faults !== before.faults ||
      state.view !== before.view ||
      state.place !== before.place
    ) {
      draw(state);
    }
  });
}

function messageItem(line: string, id: number, workbench: Workbench): HTMLElement {
  const parts = line.split(/\b([0-9A-F]{8})\b/);
  const item = element("li", { className: /^ERROR/.test(line) ? "is-error" : "" });
  parts.forEach((part, index) => {
    if (index % 2 === 0) return item.append(part);
    const offset = parseInt(part, 16);
    item.append(
      button(part, () => workbench.show({ id, view: "bytes", offset }), {
        className: "link",
        title: "Show these bytes",
      }),
    );
  });
  return item;
}

function faultItem(fault: State["faults"][number], state: State, workbench: Workbench): HTMLElement {
  const draft = openScript(state)?.draft?.listing ?? "";
  const line = draft.slice(0, fault.from).split("\n").length;
  const go = () => state.place && workbench.show({ id: state.place.id, view: "listing", line });
  return element(
    "li",
    { className: `is-${fault.severity}` },
    button(`line ${line}`, go, { className: "link" }),
    `: ${fault.message}`,
  );
}
