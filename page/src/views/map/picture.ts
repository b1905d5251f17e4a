// A conversation as a picture: cards where the layout puts them, arrows between them.
import { type Arrow, type Card } from "../../conversation/conversation";
import type { Layout, Point } from "../../drawing/protocol";
import { shown } from "../../script/encoding";
import { svg } from "../../ui/dom";
import { headHeight, lineHeight, padding, type DrawnCard, type Line } from "./cards";

export const labelSize = 11;

export interface Picture {
  readonly cards: readonly DrawnCard[];
  readonly arrows: readonly Arrow[]; // those that are drawn
  readonly layout: Layout;
}

export const labelOf = (arrow: Arrow) => {
  const label = shown(arrow.condition);
  return label.length > 34 ? `${label.slice(0, 33)}…` : label;
};

// `open` is called with a card to show in the listing, `lead` with one to move to in the picture.
export function drawPicture(
  { cards, arrows, layout }: Picture,
  open: (card: Card) => void,
  lead: (card: Card) => void,
): SVGGElement {
  const links = arrows.map((arrow, index) => drawArrow(arrow, layout.links[index]));
  const boxes = cards.map((card, index) => drawBox(card, layout.boxes[index]!, open, lead));
  return svg("g", {}, svg("g", { class: "arrows" }, ...links.filter((link) => link !== null)), ...boxes);
}

function drawArrow(arrow: Arrow, link: Layout["links"][number] | undefined): SVGGElement | null {
  if (!link || link.curve.length < 4) return null;
  const [start, ...points] = link.curve as [Point, ...Point[]];
  const at = ({ x, y }: Point) => `${x.toFixed(1)},${y.toFixed(1)}`;
  const path = `M${at(start)}C${points.map(at).join(" ")}`;
  const parts: Node[] = [
    svg("path", { d: path, class: arrow.isBack ? "arrow is-back" : "arrow" }),
    arrowHead(points.at(-2)!, points.at(-1)!),
  ];
  if (link.label) {
    const label = svg("text", { x: link.label.x, y: link.label.y + 4, class: "condition" }, labelOf(arrow));
    label.append(svg("title", {}, shown(arrow.condition)));
    parts.push(label);
  }
  return svg("g", {}, ...parts);
}

// The layout's curve ends where the arrow's point is.
function arrowHead(before: Point, tip: Point): SVGPathElement {
  const angle = Math.atan2(tip.y - before.y, tip.x - before.x);
  const corner = (side: number) => {
    const turned = angle + side * 0.42;
    return `${(tip.x - 9 * Math.cos(turned)).toFixed(1)},${(tip.y - 9 * Math.sin(turned)).toFixed(1)}`;
  };
  return svg("path", {
    d: `M${tip.x.toFixed(1)},${tip.y.toFixed(1)}L${corner(1)}L${corner(-1)}Z`,
    class: "arrow-head",
  });
}

function drawBox(drawn: DrawnCard, centre: Point, open: (card: Card) => void, lead: (card: Card) => void): SVGGElement {
  const { card, head, lines, width, height, isDot } = drawn;
  const left = centre.x - width / 2;
  const top = centre.y - height / 2;
  if (isDot)
    return svg(
      "g",
      { class: "dot", "data-card": card.id },
      svg("circle", { cx: centre.x, cy: centre.y, r: width / 2 - 2 }),
    );
  const kind = card.end !== null ? " is-end" : card.asks ? " is-asking" : "";
  const box = svg("g", {
    class: `card${kind}`,
    "data-card": card.id,
    tabindex: 0,
    role: "button",
    transform: `translate(${left.toFixed(1)} ${top.toFixed(1)})`,
  });
  box.append(svg("rect", { width, height, rx: 8, class: "card-box" }));
  if (head !== "") {
    const edge = height > headHeight ? `H0` : `a8,8 0 0 1 -8,8H8a8,8 0 0 1 -8,-8`;
    const side = height > headHeight ? `V${headHeight}` : `V${headHeight - 8}`;
    box.append(svg("path", { d: `M0,8a8,8 0 0 1 8,-8H${width - 8}a8,8 0 0 1 8,8${side}${edge}Z`, class: "card-head" }));
    box.append(svg("text", { x: padding, y: 19, class: "keywords" }, `${head} `));
  }
  const from = (head !== "" ? headHeight : 0) + padding * 0.75;
  lines.forEach((line, index) => box.append(drawLine(line, from + index * lineHeight + 12.5, lead)));
  box.addEventListener("click", () => open(card));
  box.addEventListener("keydown", (event) => {
    if (event.key !== "Enter" || event.target !== box) return;
    event.preventDefault();
    open(card);
  });
  return box;
}

function drawLine(line: Line, y: number, lead: (card: Card) => void): SVGTextElement {
  const text = svg(
    "text",
    { x: padding, y, class: `line is-${line.kind}` },
    (line.kind === "warning" ? "⚠ " : "") + line.text,
  );
  const { target } = line;
  if (target) {
    text.addEventListener("click", (event) => {
      event.stopPropagation();
      lead(target);
    });
  }
  return text;
}
