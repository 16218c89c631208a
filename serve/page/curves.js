"use strict";

import {el, svg} from "./elements.js";

// Small curves of numbers. What was read, by path: times in seconds, and numbers, null where none was read.
const curves = new Map();
const DAY = 86400;
const MOST_POINTS = 9000;
const MOST_DRAWN = 200;
const PATHS_AT_ONCE = 32;

// `interval` is that of the cycles, in seconds.
export function remember(path, time, value, interval) {
  const points = curves.get(path) ?? [];
  const last = points.at(-1)?.[0] ?? time;
  if (time - last > 2 * interval + 5) {
    points.push([last + 1, null]);
  }
  if (points.length === 0 || time > last) {
    points.push([time, value]);
  }
  while (points.length > MOST_POINTS || points[0][0] < time - DAY) {
    points.shift();
  }
  curves.set(path, points);
}

// Of each of as many parts of the time as are drawn the least and the greatest number.
function thinned(points) {
  const [first, last] = [points[0][0], points.at(-1)[0]];
  const width = (last - first) / MOST_DRAWN;
  if (points.length <= 2 * MOST_DRAWN || width === 0) {
    return points;
  }
  const parts = [];
  for (const point of points) {
    const part = Math.min(MOST_DRAWN - 1, Math.floor((point[0] - first) / width));
    (parts[part] ??= []).push(point);
  }
  return parts.flatMap((part) => {
    const numbers = part.filter(([, value]) => value !== null).sort((one, other) => one[1] - other[1]);
    const ends = numbers.length > 1 ? [numbers[0], numbers.at(-1)] : numbers;
    return [...ends, ...part.filter(([, value]) => value === null).slice(0, 1)].sort((one, other) => one[0] - other[0]);
  });
}

// The runs of points between which there is nothing.
function runsOf(points) {
  const runs = [[]];
  for (const point of points) {
    if (point[1] === null) {
      runs.push([]);
    } else {
      runs.at(-1).push(point);
    }
  }
  return runs.filter((run) => run.length > 0);
}

// Nothing where no number was read.
export function curve(path, name, unit) {
  const points = curves.get(path) ?? [];
  const numbers = points.map(([, value]) => value).filter((value) => value !== null);
  if (numbers.length === 0) {
    return [];
  }
  const least = numbers.reduce((one, other) => Math.min(one, other));
  const most = numbers.reduce((one, other) => Math.max(one, other));
  const [first, length] = [points[0][0], points.at(-1)[0] - points[0][0] || 1];
  const height = (value) => most === least ? 10 : 19 - 18 * (value - least) / (most - least);
  const place = ([time, value]) => `${((time - first) * 100 / length).toFixed(2)},${height(value).toFixed(2)}`;
  const range = `${most === least ? least : `${least} to ${most}`} ${unit}`;
  const since = new Date(first * 1000).toLocaleString();
  return [
    svg("svg", {class: "curve", viewBox: "0 0 100 20", preserveAspectRatio: "none", role: "img", "aria-label": `${name} since ${since}: ${range}`},
      ...runsOf(thinned(points)).map((run) => svg("polyline", {points: [run[0], ...run].map(place).join(" ")}))),
    el("p", {class: "faint curve-note"}, `${range} since ${since}`)];
}

// Asks for what was read before, as far as there is a history of it, in place of what there is. Fails, and leaves
// what there is, when it gets no answer.
export async function recall(wanted) {
  const list = await fetch("/history.json");
  if (!list.ok) {
    throw new Error("no history: " + list.status);
  }
  const read = new Map();
  const known = new Set((await list.json()).Series);
  const paths = wanted.filter((path) => known.has(path));
  for (let at = 0; at < paths.length; at += PATHS_AT_ONCE) {
    const query = paths.slice(at, at + PATHS_AT_ONCE).map((path) => "path=" + encodeURIComponent(path)).join("&");
    const answer = await fetch("/history.json?" + query);
    if (!answer.ok) {
      continue;  // one of them has just gone
    }
    const history = await answer.json();
    for (const series of history.Series) {
      read.set(series.Path, history.Times.map((time, index) => [time, series.Values[index]]));
    }
  }
  curves.clear();
  read.forEach((points, path) => curves.set(path, points));
}
