// The rows of one table: taken out of their blocks when the table is first shown, then searched and sorted.

/** Hands control back to the browser when work has gone on for so long that a frame is lost. */
function make_pause() {
  let since = performance.now();
  return async () => {
    if (performance.now() - since > 12) {
      await new Promise((go_on) => setTimeout(go_on));
      since = performance.now();
    }
  };
}

/** Sorts in pieces and merges these, with pauses: comparing texts as people order them is slow. */
async function sort_with_pauses(entries, compare, pause) {
  const piece = 1000;
  let runs = [];
  for (let begin = 0; begin < entries.length; begin += piece) {
    runs.push(entries.slice(begin, begin + piece).sort(compare));
    await pause();
  }
  while (runs.length > 1) {
    const merged = [];
    for (let at = 0; at < runs.length; at += 2) {
      merged.push(at + 1 < runs.length ? await merge(runs[at], runs[at + 1], compare, pause) : runs[at]);
    }
    runs = merged;
  }
  return runs[0] ?? [];
}

async function merge(left, right, compare, pause) {
  const merged = [];
  let [at_left, at_right] = [0, 0];
  while (at_left < left.length && at_right < right.length) {
    merged.push(compare(left[at_left], right[at_right]) <= 0 ? left[at_left++] : right[at_right++]);
    if ((merged.length & 1023) === 0) {
      await pause();
    }
  }
  return merged.concat(left.slice(at_left), right.slice(at_right));
}

class TableRows {
  constructor(described, number) {
    this.described = described;
    this.times = new Set(described.times);
    this.block_name = `rows-${number}`;
    this.rows = null;
    this.texts = []; // of the rows, lower case, made when first searched
  }

  async load() {
    if (this.rows !== null) {
      return;
    }
    const rows = [];
    const pause = make_pause();
    for (const block of document.querySelectorAll(`script[data-block="${this.block_name}"]`)) {
      for (const row of JSON.parse(block.textContent)) {
        rows.push(row);
      }
      await pause();
    }
    if (this.rows === null) {
      this.rows = rows;
    }
  }

  text_of(index) {
    return this.texts[index] ??= this.rows[index].map((value, column) =>
      search_text(value, this.times.has(column))).join("\n").toLowerCase();
  }

  /** Whether the row has the text in the column; one that is left out is empty in every row. */
  has(index, [name, text]) {
    const value = this.rows[index][this.described.columns.indexOf(name)] ?? "";
    return !Array.isArray(value) && String(value) === text;
  }

  /** The indexes of the rows that pass the filters, pairs of a column and its text, and hold all words, in the order
      wanted; null where `is_stale` says to give up. */
  async view(filters, words, sort, is_stale) {
    const pause = make_pause();
    const found = [];
    for (let index = 0; index < this.rows.length; ++index) {
      if (filters.every((filter) => this.has(index, filter)) &&
          words.every((word) => this.text_of(index).includes(word))) {
        found.push(index);
      }
      if ((index & 1023) === 0) {
        await pause();
        if (is_stale()) {
          return null;
        }
      }
    }
    const column = this.described.columns.indexOf(sort.replace(/^-/, ""));
    const view = column < 0 ? found : await this.sorted(found, column, sort.startsWith("-"), pause);
    return is_stale() ? null : view;
  }

  /** Numbers first by size, then texts as people order them; absent and empty values last in either direction. */
  async sorted(indexes, column, is_descending, pause) {
    const numbers = [];
    const texts = [];
    const blanks = [];
    for (const index of indexes) {
      const value = this.rows[index][column];
      const number = typeof value === "string" && /^-?\d+(\.\d+)?$/.test(value) ? Number(value) : value;
      if (value === null || value === "") {
        blanks.push(index);
      } else if (typeof number === "number") {
        numbers.push({ index, key: number });
      } else {
        texts.push({ index, key: search_text(value, false).slice(0, 200) });
      }
    }
    const compare_texts = new Intl.Collator("en", { numeric: true }).compare;
    const turn = is_descending ? -1 : 1;
    const ordered_numbers = await sort_with_pauses(numbers,
      (one, other) => turn * (one.key - other.key) || one.index - other.index, pause);
    const ordered_texts = await sort_with_pauses(texts,
      (one, other) => turn * compare_texts(one.key, other.key) || one.index - other.index, pause);
    const valued = is_descending ? ordered_texts.concat(ordered_numbers) : ordered_numbers.concat(ordered_texts);
    return valued.map((entry) => entry.index).concat(blanks);
  }

  /** Widths in pixels by the longest of the first values, within bounds. */
  widths() {
    const looked_at = this.rows.slice(0, 200);
    return this.described.columns.map((name, column) => {
      const is_time = this.times.has(column);
      const longest = looked_at.reduce((most, row) => Math.max(most, search_text(row[column], is_time).length), 4);
      return Math.round(Math.max(name.length * 7.6 + 38, Math.min(longest, 44) * 7.4 + 24));
    });
  }
}
