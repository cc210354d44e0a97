// The grid draws the cells that can be seen and no others, however many there are.

const row_height = 30;
const head_height = 34;
const tallest_space = 8000000; // pixels; browsers cut off much more
const printed_rows = 1000;

class Grid {
  constructor(on_sort, on_select) {
    this.box = by_id("grid");
    this.body = by_id("grid-body");
    this.on_sort = on_sort;
    this.on_select = on_select;
    this.table = null;
    this.view = [];
    this.words = [];
    this.selected = -1; // a place in the view
    this.drawn = ""; // which rows and columns
    this.box.addEventListener("scroll", () => this.draw(false), { passive: true });
    this.box.addEventListener("keydown", (event) => this.key(event));
    this.body.addEventListener("click", (event) => this.click(event));
    new ResizeObserver(() => this.draw(true)).observe(this.box);
    window.addEventListener("beforeprint", () => this.print());
    window.addEventListener("afterprint", () => this.draw(true));
  }

  show(table, view, words, sort) {
    const is_other_table = this.table !== table;
    this.table = table;
    this.view = view;
    this.words = words;
    this.selected = -1;
    this.widths = table.widths();
    this.draw_head(sort);
    if (is_other_table) {
      const sorted_head = by_id("grid-head").querySelector("[aria-sort]");
      this.box.scrollLeft = sorted_head === null ? 0 : sorted_head.offsetLeft - this.box.clientWidth / 3;
    }
    const space = by_id("grid-space");
    this.body.replaceChildren();
    const all = view.length * row_height + head_height;
    this.space_height = Math.min(all, tallest_space);
    space.style.height = "0px";
    this.box.scrollTop = 0;
    this.box.setAttribute("aria-rowcount", view.length + 1);
    this.box.setAttribute("aria-colcount", table.described.columns.length);
    this.draw(true);
  }

  draw_head(sort) {
    const sorted_column = sort.replace(/^-/, "");
    by_id("grid-head").replaceChildren(...this.table.described.columns.map((name, column) => {
      const direction = name === sorted_column ? (sort.startsWith("-") ? "descending" : "ascending") : null;
      const next_sort = { ascending: "-" + name, descending: "" }[direction] ?? name;
      const button = element("button",
        { type: "button", tabindex: column === 0 ? "0" : "-1", title: `Sort by ${name}` }, name);
      button.addEventListener("click", () => this.on_sort(next_sort));
      const cell = element("th",
        { role: "columnheader", scope: "col", "aria-sort": direction, "aria-colindex": column + 1 }, button);
      cell.style.width = `${this.widths[column]}px`;
      return cell;
    }));
    this.box.querySelector("table").style.width = `${this.widths.reduce((sum, width) => sum + width, 0)}px`;
  }

  /** How many rows fit, and where in the view the first of them stands. */
  window_now() {
    const fitting = Math.max(1, Math.floor((this.box.clientHeight - head_height) / row_height));
    const last_first = Math.max(0, this.view.length - fitting);
    const scrollable = this.box.scrollHeight - this.box.clientHeight;
    const at = scrollable > 0 ? this.box.scrollTop / scrollable : 0;
    return { fitting, last_first, first: Math.round(Math.min(1, at) * last_first) };
  }

  /** The first column that can be seen and the one behind the last. */
  columns_now() {
    const right = this.box.scrollLeft + this.box.clientWidth;
    let from = 0;
    let edge = this.widths[0];
    while (from < this.widths.length - 1 && edge <= this.box.scrollLeft) {
      edge += this.widths[++from];
    }
    let to = from + 1;
    while (to < this.widths.length && edge < right) {
      edge += this.widths[to++];
    }
    return [from, to];
  }

  // The table itself stays where it is; scrolling moves an empty space beneath it and chooses which rows are in it.
  draw(must_draw) {
    if (this.table === null) {
      return;
    }
    const rows_drawn = Math.min(this.view.length, Math.floor((this.box.clientHeight - head_height) / row_height));
    const drawn_height = rows_drawn * row_height + head_height;
    by_id("grid-space").style.height = `${Math.max(0, this.space_height - drawn_height)}px`;
    const { fitting, first } = this.window_now();
    const columns = this.columns_now();
    const drawn = `${first} ${columns}`;
    if (!must_draw && drawn === this.drawn) {
      return;
    }
    this.drawn = drawn;
    this.body.replaceChildren(...this.view.slice(first, first + fitting).map((index, line) =>
      this.row(index, first + line, columns)));
    if (this.selected >= first && this.selected < first + fitting) {
      this.box.setAttribute("aria-activedescendant", `row-${this.selected}`);
    } else {
      this.box.removeAttribute("aria-activedescendant");
    }
  }

  row(index, place, [from, to]) {
    const values = this.table.rows[index];
    const cells = values.slice(from, to).map((value, offset) => {
      const column = from + offset;
      const is_time = this.table.times.has(column);
      const cell = element("td", { role: "gridcell", "aria-colindex": column + 1,
        class: is_time ? "time" : typeof value === "number" ? "number" : null });
      append_value(cell, value, is_time, this.words);
      return cell;
    });
    for (const [unseen, add] of [[from, "unshift"], [values.length - to, "push"]]) {
      if (unseen > 0) {
        cells[add](element("td", { role: "presentation", colspan: unseen }));
      }
    }
    return element("tr", { role: "row", id: `row-${place}`, "aria-rowindex": place + 2, "data-place": place,
      "aria-selected": place === this.selected ? "true" : "false" }, ...cells);
  }

  select(place, is_opened) {
    if (this.view.length === 0) {
      return;
    }
    this.selected = Math.max(0, Math.min(place, this.view.length - 1));
    const { fitting, last_first, first } = this.window_now();
    const wanted = this.selected < first ? this.selected
      : this.selected >= first + fitting ? this.selected - fitting + 1 : first;
    if (wanted !== first) {
      this.box.scrollTop = wanted / Math.max(1, last_first) * (this.box.scrollHeight - this.box.clientHeight);
    }
    this.draw(true);
    this.on_select(this.selected, is_opened);
  }

  key(event) {
    const { fitting } = this.window_now();
    const places = { ArrowDown: this.selected + 1, ArrowUp: this.selected - 1, PageDown: this.selected + fitting,
      PageUp: this.selected - fitting, Home: 0, End: this.view.length - 1 };
    if (event.target.tagName === "BUTTON") {
      this.head_key(event);
    } else if (event.key in places && !event.altKey && !event.metaKey) {
      event.preventDefault();
      this.select(places[event.key], false);
    } else if (event.key === "Enter" && this.selected >= 0) {
      this.select(this.selected, true);
    }
  }

  // Of the column heads one is in the order of Tab; the arrows go on from it.
  head_key(event) {
    const step = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    const buttons = [...by_id("grid-head").querySelectorAll("button")];
    const next = step && buttons[buttons.indexOf(event.target) + step];
    if (next) {
      event.preventDefault();
      buttons.forEach((button) => button.setAttribute("tabindex", button === next ? "0" : "-1"));
      next.focus();
    }
  }

  click(event) {
    const row = event.target.closest("tr");
    if (row !== null && String(getSelection()) === "") {
      this.select(Number(row.dataset.place), true);
    }
  }

  print() {
    if (this.table !== null) {
      this.body.replaceChildren(...this.view.slice(0, printed_rows).map((index, place) =>
        this.row(index, place, [0, this.widths.length])));
      const rows = Math.min(printed_rows, this.view.length);
      by_id("print-note").textContent = `Printed of ${this.table.described.name}: ${number_text(rows)} of ` +
        `${number_text(this.view.length)} rows, at most twelve columns.`;
    }
  }
}
