// The page's state stands in its address, "#table=messages&f=mailbox_name%3DINBOX&q=invoice&sort=-subject&row=3", so that
// a view can be kept as a bookmark and the browser's way back works. Each "f" is a column and the text it must have.

/** The address of a view; blank parts are left out. */
function hash_of(state) {
  const parts = new URLSearchParams();
  for (const key of ["table", "f", "q", "sort", "row"]) {
    for (const part of [state[key] ?? ""].flat().filter((text) => text !== "")) {
      parts.append(key, part);
    }
  }
  return "#" + parts;
}

function start_page() {
  const summary = JSON.parse(document.querySelector('script[data-block="summary"]').textContent);
  const tables = new Map(summary.tables.map((described, number) => [described.name, new TableRows(described, number)]));
  let state = {};
  let work_number = 0;
  const go_to = (changes, is_new_step = true) => {
    const hash = hash_of({ ...state, ...changes });
    if (is_new_step) {
      location.hash = hash;
    } else {
      history.replaceState(null, "", hash);
      void follow_hash();
    }
  };

  const grid = new Grid((sort) => go_to({ sort, row: "" }), (place, is_opened) => {
    if (is_opened || !by_id("detail").hidden) {
      go_to({ row: String(place + 1) }, false);
    }
  });

  function show_tabs() {
    by_id("table-tabs").replaceChildren(...[...tables.values()].map(({ described }) => {
      const is_shown = described.name === state.table;
      const tab = element("button",
        { type: "button", role: "tab", "aria-selected": String(is_shown), tabindex: is_shown ? "0" : "-1" },
        described.name, element("span", { class: "count" }, number_text(described.rows)));
      tab.addEventListener("click", () => go_to({ table: described.name, f: [], sort: "", row: "" }));
      return tab;
    }));
  }

  function show_found(table) {
    const { rows, embedded } = table.described;
    const all = embedded < rows ? `${number_text(embedded)} rows here, ${number_text(rows)} in all`
      : `${number_text(rows)} rows`;
    by_id("found").textContent = state.f.length > 0 || grid.words.length > 0
      ? `${number_text(grid.view.length)} found in ${all}` : all;
  }

  function show_filters() {
    by_id("filters").replaceChildren(...state.f.map((filter) => {
      const button = element("button", { type: "button", title: "Remove this filter" });
      append_text(button, filter.replace("=", " = ") + " ×");
      button.addEventListener("click", () => go_to({ f: state.f.filter((other) => other !== filter), row: "" }));
      return button;
    }));
  }

  function show_detail(place) {
    const panel = by_id("detail");
    const index = grid.view[place];
    panel.hidden = index === undefined;
    if (panel.hidden) {
      return;
    }
    const { described, rows, times } = grid.table;
    const list = element("dl");
    described.columns.forEach((name, column) => {
      const value = element("dd");
      append_value(value, rows[index][column], times.has(column), grid.words, false);
      list.append(element("dt", {}, name), value);
    });
    const close = element("button", { type: "button" }, "Close");
    close.addEventListener("click", () => close_detail());
    const title = element("h3", {}, `Row ${number_text(index + 1)} of ${described.name}`);
    panel.replaceChildren(element("header", {}, title, close), list);
    panel.scrollTop = 0;
    if (grid.selected !== place) {
      grid.select(place, false);
    }
  }

  function close_detail() {
    go_to({ row: "" }, false);
    by_id("grid").focus();
  }

  let shown_view = null; // of which table, words and order the grid's rows are
  async function follow_hash() {
    const given = new URLSearchParams(location.hash.slice(1));
    const name = given.get("table");
    if (name === null && shown_view !== null) {
      return; // a place in the page
    }
    const table = tables.get(name) ?? tables.get("messages") ?? tables.values().next().value;
    if (table === undefined) {
      by_id("found").textContent = "The result database has no rows.";
      return;
    }
    const part = (key) => given.get(key) ?? "";
    state = { table: table.described.name, f: given.getAll("f"), q: part("q"), sort: part("sort"), row: part("row") };
    const wanted_view = hash_of({ ...state, row: "" });
    if (wanted_view !== shown_view) {
      const number = ++work_number;
      const is_stale = () => number !== work_number;
      show_tabs();
      show_filters();
      if (by_id("search").value.trim() !== state.q) {
        by_id("search").value = state.q;
      }
      by_id("found").textContent = "Reading …";
      await table.load();
      const words = state.q.toLowerCase().split(/\s+/).filter((word) => word !== "");
      const filters = state.f.map((filter) => [filter.replace(/=.*/s, ""), filter.replace(/^[^=]*=?/, "")]);
      const view = is_stale() ? null : await table.view(filters, words, state.sort, is_stale);
      if (view === null) {
        return;
      }
      grid.show(table, view, words, state.sort);
      shown_view = wanted_view;
      show_found(table);
    }
    show_detail(state.row === "" ? -1 : Number(state.row) - 1);
  }

  let typing = 0;
  by_id("search").addEventListener("input", () => {
    clearTimeout(typing);
    typing = setTimeout(() => go_to({ q: by_id("search").value.trim(), row: "" }, false), 150);
  });
  by_id("table-tabs").addEventListener("keydown", (event) => {
    const step = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    const names = [...tables.keys()];
    const next = step && names[names.indexOf(state.table) + step];
    if (next) {
      event.preventDefault();
      go_to({ table: next, f: [], sort: "", row: "" }, false);
      by_id("table-tabs").querySelector('[aria-selected="true"]').focus();
    }
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "/" && event.target.tagName !== "INPUT") {
      event.preventDefault();
      by_id("search").focus();
    } else if (event.key === "Escape" && !by_id("detail").hidden) {
      close_detail();
    }
  });
  window.addEventListener("hashchange", () => {
    if (location.hash.startsWith("#table=")) {
      by_id("tables").scrollIntoView();
    }
    void follow_hash();
  });

  show_summary(summary);
  show_tabs();
  if (location.hash.startsWith("#table=")) {
    by_id("tables").scrollIntoView({ behavior: "instant" });
  }
  void follow_hash();
}

start_page();
