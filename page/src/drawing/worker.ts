// Lays a picture out with Graphviz, which sees sizes only and no text of a script.
import { instance, type Graph } from "@viz-js/viz";
import { answerRequests } from "../remote/answer";
import type { Layout, Point, Requests } from "./protocol";

const pointsInInch = 72;

interface Drawn {
  readonly bb: string;
  readonly objects?: readonly { readonly name: string; readonly pos: string }[];
  readonly edges?: readonly { readonly id: string; readonly pos: string; readonly lp?: string }[];
}

function graphOf({ boxes, links, labelSize }: Requests["layOut"]["input"]): Graph {
  return {
    graphAttributes: { rankdir: "LR", nodesep: 0.25, ranksep: 0.7, splines: "spline" },
    nodeAttributes: { shape: "box", fixedsize: true, label: "" },
    edgeAttributes: { fontsize: labelSize, fontname: "Courier", arrowhead: "none", tailport: "e", headport: "w" },
    nodes: boxes.map((box, index) => ({
      name: String(index),
      attributes: { width: box.width / pointsInInch, height: box.height / pointsInInch },
    })),
    edges: links.map((link, index) => ({
      tail: String(link.from),
      head: String(link.to),
      attributes: { id: String(index), label: "x".repeat(link.labelLength) },
    })),
  };
}

async function layOut(input: Requests["layOut"]["input"]): Promise<Layout> {
  const viz = await instance();
  const drawn = viz.renderJSON(graphOf(input)) as unknown as Drawn;
  const [, , width, height] = drawn.bb.split(",").map(Number) as [number, number, number, number];
  const point = (pair: string): Point => {
    const [x, y] = pair.split(",").map(Number) as [number, number];
    return { x, y: height - y };
  };
  const boxes: Point[] = [];
  for (const object of drawn.objects ?? []) boxes[Number(object.name)] = point(object.pos);
  const links: Layout["links"][number][] = [];
  for (const edge of drawn.edges ?? []) {
    const parts = edge.pos.split(" ").filter((part) => !/^[es],/.test(part));
    links[Number(edge.id)] = { curve: parts.map(point), label: edge.lp ? point(edge.lp) : null };
  }
  return { size: { width, height }, boxes, links };
}

answerRequests<Requests>(() => {}, { layOut });
