// What a first visit sees: what this is, and where to begin.
import lantern from "../../../examples/lantern-keeper.scr";
import orchard from "../../../examples/clockwork-orchard.scr";
import ferry from "../../../examples/salt-ferry.scr";
import { gameNames, type Bytes, type Game } from "../script/script";
import type { Workbench } from "../state/workbench";
import { button, byId, element } from "../ui/dom";

interface Example {
  readonly path: string;
  readonly title: string;
  readonly about: string;
  readonly game: Game;
  readonly bytes: Bytes;
}

export const examples: readonly Example[] = [
  {
    path: "lantern-keeper.scr",
    title: "The lantern keeper",
    about: "Odda and her seven lanterns, one of which whistles before rain",
    game: "kv",
    bytes: lantern,
  },
  {
    path: "salt-ferry.scr",
    title: "The salt ferry",
    about: "Merrit rows you over, for a price",
    game: "bh",
    bytes: ferry,
  },
  {
    path: "clockwork-orchard.scr",
    title: "The clockwork orchard",
    about: "Aunt Verrily, a tin gardener, has lost her key",
    game: "qf",
    bytes: orchard,
  },
];

const sentences = [
  "Open the compiled conversation scripts of Kelvorath, Brenhollow or Quillfen, one or a whole folder, or drop them here.",
  "Read each as a listing, search all their texts, see a conversation as a map, change what is said and rebuild the script.",
  "Everything happens in this page: no script ever leaves your computer.",
];

export function drawWelcome(place: HTMLElement, workbench: Workbench): void {
  const { store } = workbench;
  const openers = element(
    "div",
    { className: "openers" },
    element("label", { className: "button is-main", htmlFor: "open-files", textContent: "Open files" }),
    element("label", { className: "button", htmlFor: "open-folder", textContent: "Open folder" }),
  );
  const list = element(
    "ul",
    { className: "examples" },
    ...examples.map((example) => element("li", {}, card(example, workbench))),
  );
  place.append(
    element("h2", { textContent: "Conversations, opened up" }),
    ...sentences.map((text) => element("p", { textContent: text })),
    openers,
    element("h3", { textContent: "Or look at an example" }),
    list,
    element(
      "p",
      { className: "quiet" },
      `varsul ${VERSION} · `,
      button("What it is made of", showNotices, { className: "link" }),
    ),
  );
  const draw = () => (place.hidden = store.state.scripts.length > 0);
  store.listen(draw);
  draw();
}

function card({ path, title, about, game, bytes }: Example, workbench: Workbench): HTMLElement {
  const open = () => void workbench.open([{ path, size: bytes.length, read: async () => bytes }], game);
  const made = button("", open, { className: "example", id: `example-${game}` });
  made.append(
    element("strong", { textContent: title }),
    element("span", { textContent: about }),
    element("small", { textContent: gameNames[game] }),
  );
  return made;
}

// The licences of what the page is made of.
function showNotices(): void {
  const text = element("pre", { textContent: byId("notices").textContent, tabIndex: 0 });
  const dialog = element("dialog", { ariaLabel: "What the page is made of" }, text);
  dialog.append(
    element(
      "div",
      { className: "dialog-buttons" },
      button("Close", () => dialog.close()),
    ),
  );
  dialog.addEventListener("close", () => dialog.remove());
  document.body.append(dialog);
  dialog.showModal();
}
