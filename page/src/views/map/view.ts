// The map of a conversation.
import { conversationOf, type Arrow, type Card } from "../../conversation/conversation";
import type { Requests as DrawingRequests } from "../../drawing/protocol";
import { readOutline } from "../../listing/outline";
import type { Workers } from "../../remote/workers";
import { openScript, type State } from "../../state/state";
import type { Workbench } from "../../state/workbench";
import { button, element, svg } from "../../ui/dom";
import { download, withExtension } from "../../ui/download";
import { drawCard, wrapper } from "./cards";
import { drawPicture, labelOf, labelSize, type Picture } from "./picture";
import { asPng, asSvg } from "./save";

const margin = 24;
const smallest = 0.05;
const largest = 3;

export class MapView {
  private readonly canvas = svg("svg", {
    id: "map-picture",
    tabindex: 0,
    role: "group",
    "aria-label": "The conversation as a picture",
  });
  private readonly status = element("p", { className: "map-status", role: "status" });
  private readonly allArrows = element("input", { type: "checkbox", id: "map-back-arrows" });
  private listing: string | null = null;
  private picture: Picture | null = null;
  private drawn: SVGGElement | null = null;
  private zoom = 1;
  private left = 0;
  private top = 0;
  private run = 0;

  constructor(
    private readonly parent: HTMLElement,
    private readonly workbench: Workbench,
    private readonly drawing: Workers<DrawingRequests>,
  ) {
    const tool = (label: string, name: string, act: () => void, id: string) =>
      button(label, act, { title: name, ariaLabel: name, id });
    parent.append(
      element(
        "div",
        { className: "tools" },
        tool("−", "Smaller", () => this.scale(1 / 1.25), "map-smaller"),
        tool("+", "Larger", () => this.scale(1.25), "map-larger"),
        tool("Fit", "Fit the whole picture", () => this.fit(), "map-fit"),
        element("label", {}, this.allArrows, "Draw the ways back"),
        element("span", {
          className: "quiet",
          textContent: "Drag to move, scroll to zoom, click a card for its listing",
        }),
        element("span", { className: "space" }),
        tool("SVG", "Download as SVG", () => this.save("svg"), "map-svg"),
        tool("PNG", "Download as PNG", () => this.save("png"), "map-png"),
      ),
      this.status,
      this.canvas,
    );
    this.allArrows.addEventListener("change", () => void this.make());
    this.listenToMoves();
    workbench.store.listen((state) => this.draw(state));
  }

  private draw(state: State): void {
    this.parent.hidden = state.view !== "map";
    if (this.parent.hidden || !state.shown) return;
    const listing = openScript(state)?.draft?.listing ?? state.shown.listing;
    if (listing === this.listing) return;
    this.listing = listing;
    void this.make();
  }

  private async make(): Promise<void> {
    const run = ++this.run;
    this.drawn?.remove();
    this.drawn = this.picture = null;
    const { shown } = this.workbench.store.state;
    if (!shown || this.listing === null) return;
    if (shown.status !== 0) return this.say("There is no map: this script could not be listed.");
    this.say("Drawing…");
    try {
      const outline = this.listing === shown.listing ? shown.outline : readOutline(this.listing);
      const { cards, arrows } = conversationOf(outline);
      if (cards.length === 0) return this.say("Nothing is said in this script.");
      const picture = await this.layOut(cards, arrows);
      if (run !== this.run) return;
      this.picture = picture;
      this.say("");
      this.drawn = drawPicture(
        picture,
        (card) => this.open(card),
        (card) => this.moveTo(card, true),
      );
      this.canvas.append(this.drawn);
      this.begin();
    } catch (fault) {
      if (run === this.run) this.say(`This conversation can't be drawn. ${(fault as Error).message}`);
    }
  }

  private async layOut(cards: readonly Card[], arrows: readonly Arrow[]): Promise<Picture> {
    const isDrawn = (arrow: Arrow) => !arrow.isBack || this.allArrows.checked;
    const drawn = arrows.filter(isDrawn);
    const wrap = wrapper(`13px ${getComputedStyle(document.body).fontFamily}`);
    const leads = new Map<Card, Arrow[]>();
    for (const arrow of arrows) if (!isDrawn(arrow)) leads.set(arrow.from, [...(leads.get(arrow.from) ?? []), arrow]);
    const boxes = cards.map((card) => drawCard(card, leads.get(card) ?? [], wrap));
    const layout = await this.drawing.ask("layOut", {
      boxes: boxes.map(({ width, height }) => ({ width, height })),
      links: drawn.map((arrow) => ({ from: arrow.from.id, to: arrow.to.id, labelLength: labelOf(arrow).length })),
      labelSize,
    });
    return { cards: boxes, arrows: drawn, layout };
  }

  private say(text: string): void {
    this.status.textContent = text;
    this.status.hidden = text === "";
  }

  private open(card: Card): void {
    const { place } = this.workbench.store.state;
    if (place) this.workbench.show({ id: place.id, view: "listing", line: card.line });
  }

  // Shows the beginning, as large as it can be read.
  private begin(): void {
    const { height } = this.picture!.layout.size;
    const room = this.canvas.clientHeight - 2 * margin;
    this.zoom = Math.max(0.9, Math.min(1, room / height));
    const first = this.picture!.layout.boxes[0]!;
    this.left = margin;
    this.top = this.canvas.clientHeight / 2 - first.y * this.zoom;
    if (height * this.zoom <= room) this.top = (this.canvas.clientHeight - height * this.zoom) / 2;
    this.place();
  }

  private fit(): void {
    if (!this.picture) return;
    const { width, height } = this.picture.layout.size;
    const { clientWidth, clientHeight } = this.canvas;
    this.zoom = Math.max(
      smallest,
      Math.min(1, (clientWidth - 2 * margin) / width, (clientHeight - 2 * margin) / height),
    );
    this.left = (clientWidth - width * this.zoom) / 2;
    this.top = (clientHeight - height * this.zoom) / 2;
    this.place();
  }

  private moveTo(card: Card, withFocus: boolean): void {
    const centre = this.picture!.layout.boxes[card.id]!;
    this.left = this.canvas.clientWidth / 2 - centre.x * this.zoom;
    this.top = this.canvas.clientHeight / 2 - centre.y * this.zoom;
    this.place();
    if (withFocus) this.canvas.querySelector<SVGElement>(`[data-card="${card.id}"]`)?.focus();
  }

  private scale(by: number, x = this.canvas.clientWidth / 2, y = this.canvas.clientHeight / 2): void {
    const zoom = Math.max(smallest, Math.min(largest, this.zoom * by));
    this.left = x - ((x - this.left) * zoom) / this.zoom;
    this.top = y - ((y - this.top) * zoom) / this.zoom;
    this.zoom = zoom;
    this.place();
  }

  private move(x: number, y: number): void {
    this.left += x;
    this.top += y;
    this.place();
  }

  private place(): void {
    this.drawn?.setAttribute("transform", `translate(${this.left} ${this.top}) scale(${this.zoom})`);
  }

  private listenToMoves(): void {
    const { canvas } = this;
    canvas.addEventListener(
      "wheel",
      (event) => {
        event.preventDefault();
        const { left, top } = canvas.getBoundingClientRect();
        this.scale(Math.exp(-event.deltaY / 400), event.clientX - left, event.clientY - top);
      },
      { passive: false },
    );
    let held: { x: number; y: number; hasMoved: boolean } | null = null;
    canvas.addEventListener("pointerdown", (event) => {
      if (event.button === 0) held = { x: event.clientX, y: event.clientY, hasMoved: false };
    });
    canvas.addEventListener("pointermove", (event) => {
      if (!held) return;
      const x = event.clientX - held.x;
      const y = event.clientY - held.y;
      if (!held.hasMoved && Math.hypot(x, y) < 4) return;
      if (!held.hasMoved) canvas.setPointerCapture(event.pointerId);
      this.move(x, y);
      held = { x: event.clientX, y: event.clientY, hasMoved: true };
    });
    canvas.addEventListener("pointerup", () => (held = null));
    canvas.addEventListener("pointercancel", () => (held = null));
    const step = 60;
    const keys: Readonly<Record<string, () => void>> = {
      "+": () => this.scale(1.25),
      "-": () => this.scale(1 / 1.25),
      "0": () => this.fit(),
      ArrowLeft: () => this.move(step, 0),
      ArrowRight: () => this.move(-step, 0),
      ArrowUp: () => this.move(0, step),
      ArrowDown: () => this.move(0, -step),
    };
    canvas.addEventListener("keydown", (event) => {
      const act = keys[event.key];
      if (!act || event.altKey || event.ctrlKey || event.metaKey) return;
      event.preventDefault();
      act();
    });
    // A card that gets the focus comes into sight.
    canvas.addEventListener("focusin", (event) => {
      const id = (event.target as SVGElement).dataset.card;
      const box = (event.target as SVGElement).getBoundingClientRect();
      const frame = canvas.getBoundingClientRect();
      const isInSight =
        box.left >= frame.left && box.right <= frame.right && box.top >= frame.top && box.bottom <= frame.bottom;
      const card = this.picture?.cards[Number(id)]?.card;
      if (id !== undefined && card && !isInSight && !held) this.moveTo(card, false);
    });
  }

  private async save(kind: "svg" | "png"): Promise<void> {
    const script = openScript(this.workbench.store.state);
    if (!this.drawn || !this.picture || !script) return;
    const { size } = this.picture.layout;
    const source = asSvg(this.drawn, size);
    const name = withExtension(script.path, `.${kind}`);
    try {
      if (kind === "svg") download(name, source, "image/svg+xml");
      else download(name, await asPng(source, size), "image/png");
    } catch (fault) {
      this.workbench.notice((fault as Error).message);
    }
  }
}
