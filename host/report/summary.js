// What the page says of the result database as a whole.

const byte_text = (bytes) => bytes < 1e6 ? `${number_text(Math.ceil(bytes / 1e3))} KB`
  : `${number_text(Math.round(bytes / 1e5) / 10)} MB`;

function show_figures(summary) {
  const rows = summary.tables.reduce((sum, table) => sum + table.rows, 0);
  const sources = new Set(summary.sources.map((entry) => entry.source).filter((name) => name !== ""));
  const users = new Set(summary.sources.map((entry) => entry.user ?? "").filter((name) => name !== ""));
  const figures = [["Rows", number_text(rows)], ["Tables with rows", number_text(summary.tables.length)],
    ["Sources", number_text(sources.size)]];
  if (users.size > 0) {
    figures.push(["Users", number_text(users.size)]);
  }
  const sent = summary.pictures.find((picture) => picture.days && picture.table === "messages");
  if (sent) {
    const [from, to] = usual_range(sent.days);
    figures.push(["Messages sent, mostly", `${day_text(from)} to ${day_text(to)}`]);
  }
  by_id("figures").append(...figures.map(([name, value]) =>
    element("div", {}, element("dt", {}, name), element("dd", { class: value.length > 12 ? "words" : null }, value))));
}

function show_notices(summary) {
  const notices = by_id("notices");
  for (const table of summary.tables.filter((candidate) => candidate.embedded < candidate.rows)) {
    notices.append(element("p", { class: "notice" },
      `${table.name} is cut: this page holds its first ${number_text(table.embedded)} of ` +
      `${number_text(table.rows)} rows. All are given by `,
      element("code", {}, `mail-extract show DIR ${table.name} --csv > ${table.name}.csv`), "."));
  }
  if (summary.log.path === undefined) {
    return;
  }
  const scope = `It is the log of one run, which ended at ${utc_text(summary.log.ended)} UTC: what other runs into ` +
    "this result failed to read does not stand in it." +
    (summary.log.is_older ? " The result database was changed after that." : "");
  if (summary.log.count === 0) {
    notices.append(element("p", { class: "notice" }, `${summary.log.path} holds no failure. ${scope}`));
    return;
  }
  const lines = element("ul", {}, ...summary.log.lines.map((line) => {
    const item = element("li");
    append_text(item, line);
    return item;
  }));
  if (summary.log.count > summary.log.told) {
    const others = number_text(summary.log.count - summary.log.told);
    lines.append(element("li", {}, `and ${others} more in ${summary.log.path}`));
  }
  notices.append(element("details", { class: "notice" },
    element("summary", {}, `Failures in ${summary.log.path}: ${number_text(summary.log.count)}`),
    element("p", {}, scope), lines));
}

function file_list(entries) {
  const files = new Map(); // users of one file stand in one line
  for (const entry of entries) {
    const name = entry.others ? `${number_text(entry.others)} more files` : entry.file;
    files.set(name, (files.get(name) ?? 0) + entry.rows);
  }
  const items = [...files].map(([file, rows]) => {
    const name = element("span", { class: "mono" });
    append_text(name, file === "" ? "(no file named)" : file);
    return element("li", {}, name, element("span", { class: "number" }, number_text(rows)));
  });
  const list = element("ul", {}, ...items);
  const count = files.size + entries.reduce((sum, entry) => sum + (entry.others ? entry.others - 1 : 0), 0);
  return items.length === 1 ? list
    : element("details", {}, element("summary", {}, `${number_text(count)} files`), list);
}

function source_card(name, entries) {
  const schemes = [...new Set(entries.map((entry) => entry.scheme ?? "").filter((text) => text !== ""))];
  const users = [...new Set(entries.map((entry) => entry.user ?? "").filter((text) => text !== ""))];
  const title = name.replace(/^Source(\d+)$/, "Source $1") || "No source named";
  const head = element("div", { class: "source-head" }, element("h3", {}, title));
  for (const scheme of schemes) {
    const tag = element("span", { class: "tag" });
    append_text(tag, scheme);
    head.append(tag);
  }
  const who = element("p", { class: "hint" });
  if (users.length > 0) {
    append_text(who, (users.length === 1 ? "User: " : "Users: ") + users.slice(0, 30).join(", ") +
      (users.length > 30 ? ", …" : ""));
  }
  const tables = [...new Set(entries.map((entry) => entry.table))];
  const body = element("tbody", {}, ...tables.map((table) => {
    const own = entries.filter((entry) => entry.table === table);
    const rows = own.reduce((sum, entry) => sum + entry.rows, 0);
    return element("tr", {},
      element("td", {}, element("a", { href: hash_of({ table, q: name }) }, table)),
      element("td", { class: "number" }, number_text(rows)), element("td", {}, file_list(own)));
  }));
  return element("div", { class: "card" }, head, who, element("table", { class: "files" },
    element("thead", {}, element("tr", {}, element("th", {}, "Artifact"), element("th", { class: "number" }, "Rows"),
      element("th", {}, "Files of the source, with their rows"))), body));
}

function show_sources(sources) {
  const named = sources.filter((entry) => entry.rows > 0);
  const in_number_order = new Intl.Collator("en", { numeric: true }).compare;
  const names = [...new Set(named.map((entry) => entry.source))].sort(in_number_order);
  by_id("source-list").append(...names.map((name) =>
    source_card(name, named.filter((entry) => entry.source === name))));
}

function show_summary(summary) {
  const written = `${utc_text(summary.written)} UTC`;
  append_text(by_id("origin"), `${summary.database.path} · written ${written}`);
  by_id("origin").firstChild.remove(); // what stood there while the page was read
  show_figures(summary);
  show_notices(summary);
  show_sources(summary.sources);
  show_pictures(summary.pictures);
  append_text(by_id("footer"), `mail-extract ${summary.version}. Result database: ${summary.database.path}, ` +
    `${byte_text(summary.database.bytes)}, SHA-256 ${summary.database.sha256}. Texts longer than ` +
    `${number_text(summary.value_limit)} characters are cut in this page; mail-extract show --csv gives them whole.`);
}
