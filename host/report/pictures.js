// Bars over time and bars per value, drawn as SVG in the width that there is.

function svg(name, attributes = {}, ...children) {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) {
    made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

const day_date = (day) => new Date(day * 86400000);
const month_of = (day) => day_date(day).getUTCFullYear() * 12 + day_date(day).getUTCMonth();
const month_text = (month) => `${Math.floor(month / 12)}-${two_digits(month % 12 + 1)}`;

// What one bar stands for, the finest first; of these the first is taken that needs no more bars than fit.
const time_units = [
  { name: "day", of: (day) => day, text: day_text },
  { name: "month", of: month_of, text: month_text },
  { name: "year", of: (day) => day_date(day).getUTCFullYear(), text: String },
  { name: "decade", of: (day) => Math.floor(day_date(day).getUTCFullYear() / 10), text: (ten) => `${ten}0s` },
];

/** The first and last day of the time that is drawn. Up to one row in twenty-five at each end is left out where a gap
    of a quarter of the time cuts it off: some dates of 1970 or 2099 must not press all others into one bar. */
function usual_range(days) {
  const spare = days.reduce((sum, [, rows]) => sum + rows, 0) / 25;
  let first = 0;
  let last = days.length - 1;
  // How many days from one end on, in steps of `step`, are few and far from the others.
  const strays = (end, step) => {
    const gap = (days[last][0] - days[first][0]) / 4;
    let found = 0;
    let passed = 0;
    for (let count = 1; count <= last - first; ++count) {
      const at = end + (count - 1) * step;
      passed += days[at][1];
      if (passed > spare) {
        break;
      }
      if (Math.abs(days[at + step][0] - days[at][0]) > gap) {
        found = count;
      }
    }
    return found;
  };
  for (let left_out = 1; left_out > 0;) {
    const before = strays(first, 1);
    first += before;
    const behind = strays(last, -1);
    last -= behind;
    left_out = before + behind;
  }
  return [days[first][0], days[last][0]];
}

function time_bars(picture, most_bars) {
  const [from, to] = usual_range(picture.days);
  const unit = time_units.find((candidate) => candidate.of(to) - candidate.of(from) < most_bars &&
    (candidate.name !== "day" || picture.step === 1)) ?? time_units[time_units.length - 1];
  const begin = unit.of(from);
  const bars = new Array(unit.of(to) - begin + 1).fill(0);
  let outside = 0;
  for (const [day, rows] of picture.days) {
    if (day < from || day > to) {
      outside += rows;
    } else {
      bars[unit.of(day) - begin] += rows;
    }
  }
  return { unit, begin, bars, outside };
}

// A round number that is not below the given one.
function round_above(number) {
  const power = 10 ** Math.floor(Math.log10(Math.max(number, 1)));
  return [1, 2, 4, 5, 6, 8, 10].map((factor) => factor * power).find((candidate) => candidate >= number);
}

function time_svg({ unit, begin, bars }, title, width) {
  const [left, top, height, below] = [52, 8, 170, 24];
  const room = width - left - 4;
  const highest = round_above(Math.max(...bars));
  const picture = svg("svg", { viewBox: `0 0 ${width} ${top + height + below}`, role: "img", "aria-label": title });
  for (const part of highest % 2 === 0 ? [0, 0.5, 1] : [0, 1]) {
    const y = top + height * (1 - part);
    picture.append(svg("line", { class: "axis", x1: left, x2: width, y1: y, y2: y }),
      svg("text", { x: left - 8, y: y + 4, "text-anchor": "end" }, number_text(highest * part)));
  }
  const step = room / bars.length;
  const bar_width = Math.max(1, Math.min(step - (step > 4 ? 1.5 : 0), 48));
  bars.forEach((rows, index) => {
    const x = left + index * step;
    const bar_height = rows === 0 ? 0 : Math.max(1.5, rows / highest * height);
    picture.append(svg("g", { class: "step" },
      svg("title", {}, `${unit.text(begin + index)}: ${number_text(rows)}`),
      svg("rect", { class: "reach", x, y: top, width: step, height }),
      svg("rect", { class: "bar", x: x + (step - bar_width) / 2, y: top + height - bar_height, width: bar_width,
        height: bar_height })));
  });
  const every = Math.max(1, Math.ceil(bars.length / Math.floor(room / 90)));
  for (let index = 0; index < bars.length; index += every) {
    picture.append(svg("text", { x: left + (index + 0.5) * step, y: top + height + 18, "text-anchor": "middle" },
      unit.text(begin + index)));
  }
  return picture;
}

function value_svg(picture, width) {
  const [line, gap] = [24, 10];
  const label_room = Math.min(260, width * 0.4);
  const count_room = 64;
  const highest = picture.values[0][2];
  const drawn = svg("svg", { viewBox: `0 0 ${width} ${picture.values.length * line}`, role: "group",
    "aria-label": picture.title });
  picture.values.forEach(([value, second, rows, filters], index) => {
    const y = index * line;
    const label = second === "" ? value : `${value} · ${second}`;
    const fitting = Math.floor(label_room / 7);
    const shown = svg("text", { class: "label", x: label_room - gap, y: y + 16, "text-anchor": "end" });
    append_text(shown, label.length > fitting ? label.slice(0, fitting - 1) + "…" : label);
    for (const escape of shown.querySelectorAll("span")) { // SVG knows no such element
      escape.replaceWith(escape.textContent);
    }
    const length = Math.max(2, rows / highest * (width - label_room - count_room));
    const f = filters.map(([column, text]) => `${column}=${text}`);
    drawn.append(svg(f.length > 0 ? "a" : "g", f.length > 0 ? { href: hash_of({ table: picture.table, f }) } : {},
      svg("title", {}, `${label}: ${number_text(rows)}`), shown,
      svg("rect", { class: "bar", x: label_room, y: y + 4, width: length, height: line - 8, rx: 2 }),
      svg("text", { x: label_room + length + 6, y: y + 16 }, number_text(rows))));
  });
  return drawn;
}

function draw_picture(picture, card) {
  const width = Math.max(300, card.clientWidth - 36);
  const hint = element("p", { class: "hint" });
  let drawn;
  if ((picture.days ?? picture.values).length === 0) {
    drawn = "";
  } else if (picture.days) {
    const bars = time_bars(picture, Math.floor(width / 7));
    const from = day_text(picture.days[0][0]);
    const to = day_text(picture.days[picture.days.length - 1][0]);
    hint.append(`One bar a ${bars.unit.name} (UTC), column ${picture.column}, from ${from} to ${to}.` +
      (bars.outside > 0
      ? ` Not drawn: ${number_text(bars.outside)} rows far before or behind the others.` : ""));
    drawn = time_svg(bars, picture.title, width);
  } else {
    hint.append(`Column ${picture.column}.` + (picture.others > 0
      ? ` ${number_text(picture.others)} more values have ${number_text(picture.other_rows)} rows together.` : ""));
    drawn = value_svg(picture, width);
  }
  if (picture.without > 0) {
    const what = picture.days ? "a date that can be read" : "a value";
    hint.append(` ${drawn === "" ? "None of " : ""}${number_text(picture.without)} rows ${drawn === ""
      ? `has ${what} in column ${picture.column}` : `without ${what} are not in the picture`}.`);
  }
  card.replaceChildren(element("h3", {}, picture.title), hint, drawn);
}

function show_pictures(pictures) {
  const cards = pictures.map((picture) =>
    [picture, element("div", { class: picture.days?.length > 0 ? "card picture wide" : "card picture" })]);
  by_id("picture-list").append(...cards.map(([, card]) => card));
  by_id("pictures").hidden = pictures.length === 0;
  const draw = () => cards.forEach(([picture, card]) => draw_picture(picture, card));
  draw();
  let waiting = 0;
  window.addEventListener("resize", () => {
    clearTimeout(waiting);
    waiting = setTimeout(draw, 150);
  });
}
