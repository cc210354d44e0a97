"use strict";
// Evidence text on its way to the screen. Nothing here or elsewhere in the page makes elements out of text.

const by_id = (id) => document.getElementById(id);
const number_format = new Intl.NumberFormat("en");
const number_text = (number) => number_format.format(number);

/** An element with attributes, and children that are elements or texts. */
function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value !== null && value !== undefined) {
      made.setAttribute(key, value);
    }
  }
  made.append(...children);
  return made;
}

const two_digits = (number) => String(number).padStart(2, "0");
const day_names = new Map(); // made once each: dates are by far the slowest part of a search

/** Days since 1970 as "2020-01-06". */
function day_text(day) {
  let name = day_names.get(day);
  if (name === undefined) {
    name = new Date(day * 86400000).toISOString().slice(0, 10);
    day_names.set(day, name);
  }
  return name;
}

/** Seconds since 1970 as "2020-01-06 10:40:00"; empty where they are no time in the years 1 to 9999. */
function utc_text(seconds) {
  const number = typeof seconds === "string" && seconds.trim() !== "" ? Number(seconds) : seconds;
  if (typeof number !== "number" || !(number >= -62135596800 && number <= 253402300799)) {
    return "";
  }
  const day = Math.floor(number / 86400);
  const rest = Math.floor(number) - day * 86400;
  const clock = [Math.floor(rest / 3600), Math.floor(rest / 60) % 60, rest % 60];
  return `${day_text(day)} ${clock.map(two_digits).join(":")}`;
}

/** The same for a column of times, where several in one text have ";" or ";++::++;" between them; "?" is a part that is
    no time. Empty where none is one. */
function times_text(value) {
  if (typeof value !== "string" || !value.includes(";")) {
    return utc_text(value);
  }
  const times = value.split(/;(?:\+\+::\+\+;)?/).map(utc_text);
  return times.some((time) => time !== "") ? times.map((time) => time || "?").join("; ") : "";
}

// What cannot be seen, or turns the reading direction; line ends and tabs only where a cell shows one line.
const unseen_in_line = /[\u0000-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g;
const unseen_in_text = /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g;
const short_escapes = { "\n": "\u21b5", "\r": "", "\t": " " };

function escape_of(character) {
  return short_escapes[character] ?? "\\u" + character.charCodeAt(0).toString(16).padStart(4, "0");
}

function append_marked(parent, text, words) {
  const lower = words.length > 0 ? text.toLowerCase() : "";
  if (lower.length !== text.length) { // a letter whose lower case is longer shifts what follows
    parent.append(text);
    return;
  }
  let done = 0;
  while (done < text.length) {
    let found = -1;
    let length = 0;
    for (const word of words) {
      const at = lower.indexOf(word, done);
      if (at >= 0 && (found < 0 || at < found || (at === found && word.length > length))) {
        found = at;
        length = word.length;
      }
    }
    if (found < 0) {
      break;
    }
    parent.append(text.slice(done, found), element("mark", {}, text.slice(found, found + length)));
    done = found + length;
  }
  parent.append(text.slice(done));
}

/** Appends the text; what cannot be seen is shown as escapes, and the words (lower case) are marked. */
function append_text(parent, text, words = [], in_one_line = true) {
  const unseen = in_one_line ? unseen_in_line : unseen_in_text;
  let done = 0;
  for (const match of text.matchAll(unseen)) {
    append_marked(parent, text.slice(done, match.index), words);
    parent.append(element("span", { class: "escape" }, escape_of(match[0])));
    done = match.index + 1;
  }
  append_marked(parent, text.slice(done), words);
}

/** Appends a value of a table: NULL, a time with its seconds, a text that was cut, or what it is. */
function append_value(parent, value, is_time, words = [], in_one_line = true) {
  if (value === null) {
    parent.append(element("span", { class: "null" }, "NULL"));
    return;
  }
  const time = is_time ? times_text(value) : "";
  if (time !== "") {
    append_marked(parent, time, words);
    const seconds = element("span", { class: "seconds" });
    append_marked(seconds, String(value), words);
    parent.append(seconds);
    return;
  }
  const [text, length] = Array.isArray(value) ? value : [String(value), 0];
  append_text(parent, in_one_line ? text.slice(0, 300) : text, words, in_one_line);
  if (length > 0) {
    parent.append(element("span", { class: "cut" }, ` … ${number_text(length - text.length)} more characters`));
  }
}

/** What a value is searched by and sorted by as text. */
function search_text(value, is_time) {
  if (value === null) {
    return "";
  }
  const time = is_time ? times_text(value) : "";
  return time + (time === "" ? "" : " ") + (Array.isArray(value) ? value[0] : String(value));
}
