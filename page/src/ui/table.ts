// A table of any length: only the rows in sight exist. Sorted by its heads, moved in by keyboard.
import { element } from "./dom";

export interface Column<Row> {
  readonly name: string;
  readonly title: string;
  readonly width: string; // of a grid's column
  readonly cell: (row: Row) => string | Node;
  readonly order?: (one: Row, other: Row) => number;
  readonly className?: string;
}

export interface TableOptions<Row> {
  readonly label: string;
  readonly columns: readonly Column<Row>[];
  readonly rowHeight: number;
  readonly open?: (row: Row) => void;
  readonly edit?: (row: Row) => void; // by F2
  readonly isMarked?: (row: Row) => boolean;
  readonly empty?: string; // what stands in place of no rows
}

let tables = 0;

export class Table<Row> {
  readonly element: HTMLElement;
  private readonly heading: HTMLElement;
  private readonly body: HTMLElement;
  private readonly heads: HTMLElement[];
  private readonly id = `table-${++tables}`;
  private given: readonly Row[] = [];
  private rows: readonly Row[] = [];
  private sortedBy: Column<Row> | null = null;
  private isDescending = false;
  private active = 0;

  constructor(private readonly options: TableOptions<Row>) {
    const { columns, label } = options;
    this.heads = columns.map((column) => this.head(column));
    const head = element("div", { className: "table-row table-head", role: "row" }, ...this.heads);
    head.setAttribute("aria-rowindex", "1");
    this.heading = element("div", { role: "rowgroup", className: "table-heads" }, head);
    this.body = element("div", { className: "table-body", role: "rowgroup" });
    this.element = element(
      "div",
      {
        className: "table",
        role: "grid",
        tabIndex: 0,
        ariaLabel: label,
        on: { keydown: (event) => this.press(event), scroll: () => this.draw() },
      },
      this.heading,
      this.body,
    );
    this.element.setAttribute("aria-colcount", String(columns.length));
    this.element.style.setProperty("--columns", columns.map((column) => column.width).join(" "));
    this.element.style.setProperty("--row-height", `${options.rowHeight}px`);
    this.body.addEventListener("click", (event) => this.click(event));
    new ResizeObserver(() => this.draw()).observe(this.element);
  }

  show(rows: readonly Row[]): void {
    this.given = rows;
    this.sort();
  }

  // Puts a row into sight and makes it the active one.
  reveal(row: Row): void {
    const index = this.rows.indexOf(row);
    if (index >= 0) this.activate(index, true);
  }

  get count(): number {
    return this.rows.length;
  }

  private head(column: Column<Row>): HTMLElement {
    const head = element("div", { role: "columnheader", className: column.className ?? "" });
    if (column.order) {
      const sort = element("button", {
        type: "button",
        className: "table-sort",
        textContent: column.title,
        tabIndex: 0,
      });
      sort.addEventListener("click", () => this.sortBy(column));
      head.append(sort);
    } else head.append(column.title);
    return head;
  }

  private sortBy(column: Column<Row>): void {
    this.isDescending = this.sortedBy === column && !this.isDescending;
    this.sortedBy = column;
    this.sort();
  }

  private sort(): void {
    const order = this.sortedBy?.order;
    const sign = this.isDescending ? -1 : 1;
    this.rows = order ? [...this.given].sort((one, other) => sign * order(one, other)) : this.given;
    this.options.columns.forEach((column, index) => {
      const isSorted = column === this.sortedBy;
      this.heads[index]!.ariaSort = isSorted ? (this.isDescending ? "descending" : "ascending") : "none";
    });
    this.active = Math.min(this.active, Math.max(0, this.rows.length - 1));
    this.element.setAttribute("aria-rowcount", String(this.rows.length + 1));
    this.body.style.height = `${this.rows.length * this.options.rowHeight}px`;
    this.draw();
  }

  private draw(): void {
    const { rowHeight, empty } = this.options;
    const { scrollTop } = this.element;
    const first = Math.max(0, Math.floor(scrollTop / rowHeight) - 4);
    const last = Math.min(this.rows.length, Math.ceil((scrollTop + this.room) / rowHeight) + 4);
    const drawn: HTMLElement[] = [];
    for (let index = first; index < last; ++index) drawn.push(this.row(index));
    if (this.rows.length === 0 && empty) drawn.push(element("p", { className: "table-empty", textContent: empty }));
    this.body.replaceChildren(...drawn);
    this.body.setAttribute("role", this.rows.length === 0 ? "presentation" : "rowgroup");
    const isActiveDrawn = this.active >= first && this.active < last;
    if (isActiveDrawn) this.element.setAttribute("aria-activedescendant", this.rowId(this.active));
    else this.element.removeAttribute("aria-activedescendant");
  }

  // The height in which rows are seen.
  private get room(): number {
    return this.element.clientHeight - this.heading.offsetHeight;
  }

  private rowId(index: number): string {
    return `${this.id}-row-${index}`;
  }

  private row(index: number): HTMLElement {
    const row = this.rows[index]!;
    const { columns, rowHeight, isMarked } = this.options;
    const cells = columns.map((column) => {
      const content = column.cell(row);
      const cell = element("div", { role: "gridcell", className: column.className ?? "" }, content);
      if (typeof content === "string") cell.title = content;
      return cell;
    });
    const made = element("div", { role: "row", id: this.rowId(index), className: "table-row" }, ...cells);
    made.setAttribute("aria-rowindex", String(index + 2));
    made.classList.toggle("is-active", index === this.active);
    made.classList.toggle("is-marked", isMarked?.(row) ?? false);
    made.style.top = `${index * rowHeight}px`;
    return made;
  }

  // Rows may be drawn anew while the button is held, so that the place counts and not the element.
  private click(event: MouseEvent): void {
    const index = Math.floor((event.clientY - this.body.getBoundingClientRect().top) / this.options.rowHeight);
    const row = this.rows[index];
    if (!row) return;
    this.active = index;
    this.draw();
    this.options.open?.(row);
  }

  private press(event: KeyboardEvent): void {
    if (event.target !== this.element || event.altKey || event.ctrlKey || event.metaKey) return;
    const page = Math.max(1, Math.floor(this.room / this.options.rowHeight) - 1);
    const steps: Readonly<Record<string, number>> = {
      ArrowDown: 1,
      ArrowUp: -1,
      PageDown: page,
      PageUp: -page,
      Home: -this.rows.length,
      End: this.rows.length,
    };
    const row = this.rows[this.active];
    if (event.key in steps) this.activate(this.active + steps[event.key]!);
    else if (event.key === "Enter" && row) this.options.open?.(row);
    else if (event.key === "F2" && row) this.options.edit?.(row);
    else return;
    event.preventDefault();
  }

  private activate(index: number, inMiddle = false): void {
    const { rowHeight } = this.options;
    this.active = Math.max(0, Math.min(this.rows.length - 1, index));
    const top = this.active * rowHeight;
    const { scrollTop } = this.element;
    const isAbove = top < scrollTop;
    if (isAbove || top + rowHeight > scrollTop + this.room) {
      this.element.scrollTop = inMiddle ? top - this.room / 2 : isAbove ? top : top + rowHeight - this.room;
    }
    this.draw();
  }
}
