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
  const sent = summary.pictures.find((picture) => picture.days?.length > 0 && picture.table === "messages");
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
  notices.append(log_notice(summary.log));
}

/** What the log beside the results says, and how far that goes. */
function log_notice(log) {
  const path = element("code");
  append_text(path, log.path);
  if (log.count === undefined) {
    return element("p", { class: "notice plain" }, "Whether a run had failures cannot be told: no log stands at ",
      path, ".");
  }
  const end = log.end === undefined ? "no time in its last line" : `last line ${utc_text(log.end)} UTC`;
  const is_of_results = log.changed === undefined;
  const reach = [`Only this log was looked at (${end}): runs with a log of their own, and earlier runs whose log it ` +
    "has replaced, are not in it."];
  if (!is_of_results) {
    reach.push(element("strong", {}, ` The result database was changed after it, at ${utc_text(log.changed)} UTC: ` +
      "another run may have written it, or it is a copy with a new time."));
  }
  if (log.count === 0) {
    return element("p", { class: is_of_results ? "notice plain" : "notice" }, "No failure stands in ", path, ". ",
      ...reach);
  }
  const lines = element("ul", {}, ...log.lines.map((line) => {
    const item = element("li");
    append_text(item, line);
    return item;
  }));
  if (log.count > log.told) {
    lines.append(element("li", {}, `and ${number_text(log.count - log.told)} more`));
  }
  return element("details", { class: "notice" },
    element("summary", {}, `Failures in `, path, `: ${number_text(log.count)}. `, ...reach), lines);
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
      element("td", {}, element("a", { href: hash_of({ table, f: [`source_count_name=${name}`] }) }, table)),
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
