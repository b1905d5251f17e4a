// What the page asks of the worker that lays a picture out. Lengths are pixels, y grows downwards.

export interface Box {
  readonly width: number;
  readonly height: number;
}

export interface Link {
  readonly from: number; // of the boxes
  readonly to: number;
  readonly labelLength: number; // in characters
}

export interface Point {
  readonly x: number;
  readonly y: number;
}

export interface Layout {
  readonly size: Box;
  readonly boxes: readonly Point[]; // their centres
  // Bezier curves: a start, then three points for each part. The label's centre, where there is one.
  readonly links: readonly { readonly curve: readonly Point[]; readonly label: Point | null }[];
}

export interface Requests {
  layOut: { input: { boxes: Box[]; links: Link[]; labelSize: number }; output: Layout };
}
