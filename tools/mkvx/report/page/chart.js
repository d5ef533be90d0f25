// What all charts share: one span of time (or of the file) that they show together, zooming, the mark under the
// pointer, and what is said about it.

const margin = {left: 68, right: 10};

const tip = {
  show(lines, x, y) {
    const box = byId('tip');
    box.replaceChildren(...lines.map(line => el('div', {}, line)));
    box.hidden = false;
    const {width, height} = box.getBoundingClientRect();
    box.style.left = `${Math.max(8, Math.min(x + 14, innerWidth - width - 8))}px`;
    box.style.top = `${y - height - 14 > 8 ? y - height - 14 : y + 18}px`;
  },
  hide() { byId('tip').hidden = true; },
  speak(lines) { byId('spoken').textContent = lines.join(', '); },
};

// A span that several charts show, and the part of it that is in view.
class View {
  constructor(span, ticks) {
    this.span = span;
    this.ticks = ticks;  // (domain, most) -> {ticks, text(value)}
    this.charts = [];
    this.transform = d3.zoomIdentity;
    this.changed = () => {};
  }

  get domain() { return this.scale(1000).domain(); }

  scale(width) {
    // The transform is kept for a plot that is 1000 wide, so that charts of any width agree.
    const whole = d3.scaleLinear().domain(this.span).range([0, 1000]);
    return d3.scaleLinear().domain(this.transform.rescaleX(whole).domain()).range([margin.left, width - margin.right]);
  }

  add(chart) {
    this.charts.push(chart);
    chart.zoom = d3.zoom().scaleExtent([1, 20000]).filter(() => this.accepts())
      .on('zoom', () => this.follow(chart));
    d3.select(chart.svg).call(chart.zoom).style('touch-action', 'pan-y').on('dblclick.zoom', null);
    new ResizeObserver(() => this.resize(chart)).observe(chart.svg);
    chart.svg.addEventListener('keydown', event => this.pressed(event, chart));
  }

  // A wheel without Ctrl and a single finger scroll the page, unless there is something to move.
  accepts() {
    const event = d3.event;
    if (event.type === 'wheel') return event.ctrlKey || event.metaKey;
    if (event.type === 'touchstart') return event.touches.length > 1 || this.transform.k > 1;
    return !event.button;
  }

  resize(chart) {
    const width = Math.round(chart.svg.getBoundingClientRect().width);
    if (width === 0 || width === chart.width) return;
    chart.width = width;
    const box = [[margin.left, 0], [width - margin.right, chart.height]];
    chart.zoom.extent(box).translateExtent(box);
    chart.draw(this.scale(width), width);
    this.place(chart);
  }

  // The transform of a chart's own pixels, from and to that of the plot that is 1000 wide.
  place(chart) {
    const ratio = (chart.width - margin.left - margin.right) / 1000, {k, x} = this.transform;
    chart.svg.__zoom = d3.zoomIdentity.translate(margin.left + x * ratio - margin.left * k, 0).scale(k);
  }

  follow(chart) {
    if (!chart.width) return;
    const ratio = (chart.width - margin.left - margin.right) / 1000, {k, x} = d3.event.transform;
    this.set(d3.zoomIdentity.translate((x - margin.left + margin.left * k) / ratio, 0).scale(k));
  }

  set(transform) {
    const k = Math.min(20000, Math.max(1, transform.k));
    this.transform = d3.zoomIdentity.translate(Math.min(0, Math.max(1000 * (1 - k), transform.x)), 0).scale(k);
    for (const chart of this.charts) {
      if (!chart.width) continue;
      this.place(chart);
      chart.draw(this.scale(chart.width), chart.width);
    }
    this.changed();
  }

  // Around `at`, a place in 0 to 1000 of the plot.
  zoomBy(factor, at = 500) {
    const {k, x} = this.transform, next = Math.min(20000, Math.max(1, k * factor));
    this.set(d3.zoomIdentity.translate(at - (at - x) * next / k, 0).scale(next));
  }

  all() { this.set(d3.zoomIdentity); }

  pressed(event, chart) {
    if (event.key === '+' || event.key === '=') this.zoomBy(2);
    else if (event.key === '-') this.zoomBy(0.5);
    else if (event.key === '0') this.all();
    else if (event.key === 'ArrowLeft' || event.key === 'ArrowRight')
      chart.step(event.key === 'ArrowLeft' ? -1 : 1, event.shiftKey);
    else if (event.key === 'Escape') chart.leave();
    else return;
    event.preventDefault();
  }

  // Brings a value into view, in the middle if it was not.
  reveal(value) {
    const [begin, end] = this.domain;
    if (value >= begin && value <= end) return;
    const place = 1000 * (value - this.span[0]) / (this.span[1] - this.span[0]);
    this.set(d3.zoomIdentity.translate(500 - place * this.transform.k, 0).scale(this.transform.k));
  }
}

// A chart is a figure with a caption and an SVG. `parts` draws it and knows what is under the pointer:
//   draw(plot, x, width)      plot: a d3 selection to fill, x: the scale
//   nearest(value, x, y)      the thing nearest to a value of the axis, or null
//   place(thing)              its value on the axis
//   tell(thing)               lines of text
//   beside(thing, step, far)  the next thing in a direction, for the keyboard
class Chart {
  constructor(view, height, caption, label, parts) {
    Object.assign(this, {view, height, parts, chosen: null});
    this.svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
    const attributes = {height, role: 'application', tabindex: '0', 'aria-label': label};
    for (const [name, value] of Object.entries(attributes)) this.svg.setAttribute(name, value);
    this.figure = el('figure', {}, caption, this.svg);
    this.plot = d3.select(this.svg).append('g');
    this.mark = d3.select(this.svg).append('path').attr('class', 'place');
    this.svg.addEventListener('pointermove', event => this.point(event));
    this.svg.addEventListener('pointerdown', event => this.point(event));
    this.svg.addEventListener('pointerleave', () => this.leave());
    this.svg.addEventListener('blur', () => this.leave());
    view.add(this);
  }

  draw(x, width) {
    this.x = x;
    this.svg.setAttribute('viewBox', `0 0 ${width} ${this.height}`);  // on paper the drawing shrinks as a whole
    this.plot.selectAll('*').remove();
    this.parts.draw(this.plot, x, width);
    this.drawAxis(x, width);
    this.drawMark();
  }

  drawAxis(x, width) {
    const {ticks, text} = this.view.ticks(x.domain(), Math.max(2, Math.floor((width - margin.left) / 75)));
    this.plot.append('g').attr('transform', `translate(0,${this.height - 20})`)
      .call(d3.axisBottom(x).tickValues(ticks).tickFormat(text).tickSizeOuter(0).tickSize(4));
    // A label at the very edge would be cut off.
    this.plot.selectAll('.tick text').filter(value => x(value) > width - 24).attr('text-anchor', 'end');
  }

  drawMark() {
    const at = this.chosen === null ? null : this.x(this.parts.place(this.chosen));
    const isSeen = at !== null && at >= margin.left - 1 && at <= this.width - margin.right + 1;
    this.mark.attr('d', isSeen ? `M${at.toFixed(1)},0V${this.height - 20}` : null);
    return isSeen ? at : null;
  }

  point(event) {
    if (!this.x) return;
    const box = this.svg.getBoundingClientRect(), x = event.clientX - box.left;
    this.chosen = x < margin.left - 4 ? null : this.parts.nearest(this.x.invert(x), this.x, event.clientY - box.top);
    this.drawMark();
    if (this.chosen === null) tip.hide();
    else tip.show(this.parts.tell(this.chosen), event.clientX, event.clientY);
  }

  step(direction, far) {
    const next = this.parts.beside(this.chosen, direction, far);
    if (!next) return;
    this.chosen = next;
    this.view.reveal(this.parts.place(next));
    const at = this.drawMark(), box = this.svg.getBoundingClientRect(), lines = this.parts.tell(next);
    tip.show(lines, box.left + (at || margin.left), box.top + 20);
    tip.speak(lines);
  }

  leave() {
    this.chosen = null;
    if (this.x) this.drawMark();
    tip.hide();
  }
}

// The index of the first of `sorted` that is not before `time`.
const firstFrom = (sorted, time) => d3.bisector(item => item.t).left(sorted, time);

function nearestOf(sorted, time) {
  if (sorted.length === 0) return null;
  const at = firstFrom(sorted, time), before = sorted[at - 1], behind = sorted[at];
  if (!before || !behind) return before || behind;
  return time - before.t <= behind.t - time ? before : behind;
}

function besideOf(sorted, chosen, direction) {
  if (chosen === null) return sorted[direction > 0 ? 0 : sorted.length - 1];
  return sorted[sorted.indexOf(chosen) + direction];
}

// Upright strokes at the times that are in view. More than the eye can tell apart are drawn once a half pixel.
function strokes(sorted, x, top, height) {
  const [begin, end] = x.domain();
  const from = firstFrom(sorted, begin), to = d3.bisector(item => item.t).right(sorted, end);
  const isDense = to - from > 6000;
  let path = '', last = -1;
  for (let i = from; i < to; ++i) {
    const at = Math.round(x(sorted[i].t) * 2) / 2;
    if (isDense && at === last) continue;
    last = at;
    path += `M${at},${top}v${height}`;
  }
  return path;
}

function laneLabel(plot, text, y) {
  plot.append('text').attr('x', margin.left - 6).attr('y', y).attr('text-anchor', 'end').text(text);
}

function legend(...entries) {
  return el('ul', {class: 'legend', 'aria-hidden': 'true'},
    ...entries.map(([name, text]) => el('li', {}, el('i', {class: name}), text)));
}
