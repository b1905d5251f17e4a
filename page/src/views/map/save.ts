// The picture as a file of its own, with the colours it has on the screen.

const carried = [
  "fill",
  "stroke",
  "stroke-width",
  "font-family",
  "font-size",
  "font-weight",
  "font-style",
  "text-anchor",
  "paint-order",
  "opacity",
];

export interface Extent {
  readonly width: number;
  readonly height: number;
}

const margin = 24;

export function asSvg(picture: SVGGElement, { width, height }: Extent): string {
  const copy = picture.cloneNode(true) as SVGGElement;
  const originals = [picture, ...picture.querySelectorAll<SVGElement>("*")];
  const copies = [copy, ...copy.querySelectorAll<SVGElement>("*")];
  originals.forEach((original, index) => {
    const style = getComputedStyle(original);
    const target = copies[index]!;
    for (const name of carried) target.setAttribute(name, style.getPropertyValue(name));
    for (const name of ["class", "tabindex", "role", "data-card"]) target.removeAttribute(name);
  });
  copy.setAttribute("transform", `translate(${margin} ${margin})`);
  const all = document.createElementNS("http://www.w3.org/2000/svg", "svg");
  const size = { width: Math.ceil(width + 2 * margin), height: Math.ceil(height + 2 * margin) };
  all.setAttribute("width", String(size.width));
  all.setAttribute("height", String(size.height));
  const paper = document.createElementNS("http://www.w3.org/2000/svg", "rect");
  paper.setAttribute("width", "100%");
  paper.setAttribute("height", "100%");
  paper.setAttribute("fill", getComputedStyle(document.body).backgroundColor);
  all.append(paper, copy);
  return new XMLSerializer().serializeToString(all);
}

// No side is longer than what browsers draw.
const longestSide = 12_000;

export async function asPng(source: string, { width, height }: Extent): Promise<Blob> {
  const url = URL.createObjectURL(new Blob([source], { type: "image/svg+xml" }));
  try {
    const image = new Image();
    image.src = url;
    await image.decode();
    const scale = Math.min(2, longestSide / Math.max(width, height));
    const canvas = document.createElement("canvas");
    canvas.width = Math.ceil((width + 2 * margin) * scale);
    canvas.height = Math.ceil((height + 2 * margin) * scale);
    canvas.getContext("2d")!.drawImage(image, 0, 0, canvas.width, canvas.height);
    return await new Promise((resolve, reject) =>
      canvas.toBlob((blob) => (blob ? resolve(blob) : reject(new Error("The picture is too large."))), "image/png"),
    );
  } finally {
    URL.revokeObjectURL(url);
  }
}
