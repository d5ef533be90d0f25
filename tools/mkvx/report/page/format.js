'use strict';
document.documentElement.dataset.scripts = 'on';  // shows what only scripts fill

// Numbers and times as this page writes them, and elements made of plain text: no string of the file is ever
// parsed as markup.

const grouped = new Intl.NumberFormat('en');

const count = (value, noun) => `${grouped.format(value)} ${noun}${value === 1 ? '' : 's'}`;

const exactBytes = value => count(value, 'byte');

function bytes(value) {
  const units = ['B', 'kB', 'MB', 'GB', 'TB'];
  let unit = 0;
  while (Math.abs(value) >= 1000 && unit < units.length - 1) {
    value /= 1000;
    ++unit;
  }
  return `${unit === 0 || value >= 100 ? grouped.format(Math.round(value)) : Number(value.toPrecision(3))} ${units[unit]}`;
}

function bitRate(bitsPerSecond) {
  const kilo = bitsPerSecond / 1000;
  if (kilo >= 10000) return `${(kilo / 1000).toFixed(1)} Mbit/s`;
  return `${kilo >= 100 ? grouped.format(Math.round(kilo)) : Number(kilo.toPrecision(3))} kbit/s`;
}

const padded = (value, digits) => String(value).padStart(digits, '0');

// HH:MM:SS.mmm, cut to the millisecond.
function clock(us) {
  const ms = Math.floor(Math.abs(us) / 1000);
  return `${us < 0 ? '-' : ''}${padded(Math.floor(ms / 3600000), 2)}:${padded(Math.floor(ms / 60000) % 60, 2)}:` +
         `${padded(Math.floor(ms / 1000) % 60, 2)}.${padded(ms % 1000, 3)}`;
}

const inSeconds = new Intl.NumberFormat('en', {minimumFractionDigits: 3, maximumFractionDigits: 3});
const seconds = us => `${inSeconds.format(us / 1e6)} s`;
// The length of a stretch of time that was chosen to be round.
const stretch = us => `${grouped.format(us / 1e6)} s`;

// Of an axis whose ticks are `stepUs` apart: no more digits than they need.
function tickTime(us, stepUs) {
  const ms = Math.round(us / 1000), hours = Math.floor(ms / 3600000);
  const minutes = Math.floor(ms / 60000) % 60, part = padded(ms % 1000, 3).slice(0, stepUs >= 100000 ? 1 : stepUs >= 10000 ? 2 : 3);
  const end = padded(Math.floor(ms / 1000) % 60, 2) + (stepUs < 1000000 ? `.${part}` : '');
  return hours > 0 ? `${hours}:${padded(minutes, 2)}:${end}` : `${minutes}:${end}`;
}

const timeSteps = [1, 2, 5, 10, 20, 50, 100, 200, 500].map(ms => ms * 1e3)
  .concat([1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200].map(s => s * 1e6));

function timeTicks([begin, end], most) {
  let step = timeSteps.find(candidate => (end - begin) / candidate <= most);
  if (step === undefined) step = d3.tickStep(begin, end, most);
  const ticks = [];
  for (let at = Math.ceil(begin / step) * step; at <= end && ticks.length < 100; at += step) ticks.push(at);
  return {ticks, step};
}

function el(tag, attributes, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes || {})) element.setAttribute(name, value);
  element.append(...children.filter(child => child !== null && child !== undefined && child !== ''));
  return element;
}

const byId = id => document.getElementById(id);

const paragraph = text => el('p', {class: 'note'}, text);
