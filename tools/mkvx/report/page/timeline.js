// The charts over time: one of the file, one of each track.

const timeView = new View(timeSpan, (domain, most) => {
  const {ticks, step} = timeTicks(domain, most);
  return {ticks, text: us => tickTime(us, step)};
});

const chapterMarks = report.chapters.map(chapter => ({t: chapter.start_us, title: chapter.title})).sort((a, b) => a.t - b.t);

function fileParts() {
  const lanes = [
    {name: 'clusters', list: clusters, top: 12, tell: item => [`Cluster ${clock(item.t)}`,
      `${exactBytes(item.size)} at byte ${grouped.format(item.p)}`, count(item.blocks, 'block')]},
    {name: 'index', kind: 'entries', list: indexEntries, top: 32, tell: item => [`Sync index entry ${clock(item.t)}`,
      `its Cluster at byte ${grouped.format(item.p)}`]},
    {name: 'chapters', kind: 'marks', list: chapterMarks, top: 52, tell: item => [item.title || 'Chapter', clock(item.t)]},
  ].filter(lane => lane.list.length > 0);
  for (const lane of lanes) for (const item of lane.list) item.lane = lane;
  return {
    height: 30 + 20 * lanes.length,
    draw(plot, x) {
      for (const [begin, end] of report.index.coarse) {
        const from = Math.max(x(begin), margin.left), to = Math.min(x(end), x.range()[1]);
        if (to > from)
          plot.append('rect').attr('class', 'coarse').attr('x', from).attr('width', to - from).attr('y', 4).attr('height', this.height - 26);
      }
      lanes.forEach((lane, i) => {
        lane.top = 8 + 20 * i;
        laneLabel(plot, lane.name, lane.top + 9);
        plot.append('path').attr('class', lane.kind || lane.name).attr('d', strokes(lane.list, x, lane.top, 11));
      });
    },
    nearest: (time, x, y) => lanes.length === 0 ? null
      : nearestOf(lanes[Math.max(0, Math.min(lanes.length - 1, Math.floor((y - 4) / 20)))].list, time),
    place: item => item.t,
    tell: item => item.lane.tell(item),
    beside: (chosen, step) => lanes.length === 0 ? null : besideOf((chosen ? chosen.lane : lanes[0]).list, chosen, step),
  };
}

// The part of a track's chart that has an amount: the bit rate, or once they are few enough the units themselves.
const plotTop = 8, plotBottom = 84;

function drawAmounts(plot, y, unit, x) {
  const ticks = y.ticks(3);
  plot.append('g').attr('class', 'grid').selectAll('line').data(ticks).enter().append('line')
    .attr('x1', x.range()[0]).attr('x2', x.range()[1]).attr('y1', value => y(value)).attr('y2', value => y(value));
  for (const value of ticks.filter(tick => tick > 0 || ticks.length === 1))
    laneLabel(plot, unit(value), y(value) + 4);
}

function drawRate(line, plot, x) {
  const width = line.rate.width_us, [begin, end] = x.domain();
  const from = Math.max(0, Math.floor(begin / width)), to = Math.min(line.rates.length, Math.ceil(end / width));
  const most = d3.max(line.rates.slice(from, to)) || 1;
  const y = d3.scaleLinear().domain([0, most]).nice(3).range([plotBottom, plotTop]);
  drawAmounts(plot, y, value => y.domain()[1] >= 2e6 ? `${value / 1e6} Mbit/s` : `${value / 1e3} kbit/s`, x);
  const clip = time => Math.max(x.range()[0], Math.min(x.range()[1], x(time))).toFixed(1);
  let path = `M${clip(from * width)},${plotBottom}`;
  for (let i = from; i < to; ++i) path += `V${y(line.rates[i]).toFixed(1)}H${clip((i + 1) * width)}`;
  plot.append('path').attr('class', 'rate').attr('d', `${path}V${plotBottom}Z`);
}

function drawSizes(units, plot, x) {
  const y = d3.scaleLinear().domain([0, d3.max(units, unit => unit.size) || 1]).nice(3).range([plotBottom, plotTop]);
  drawAmounts(plot, y, bytes, x);
  const path = units.map(unit => `M${x(unit.t).toFixed(1)},${plotBottom}V${y(unit.size).toFixed(1)}`).join('');
  plot.append('path').attr('class', 'sizes').attr('d', path);
}

function inView(units, x) {
  const [begin, end] = x.domain();
  return units.slice(firstFrom(units, begin), d3.bisector(unit => unit.t).right(units, end));
}

function trackParts(line) {
  const hasCues = line.cueCount > 0;
  return {
    height: (hasCues ? 148 : 130),
    draw(plot, x) {
      const seen = inView(line.units, x);
      const isZoomed = line.stride === 1 && seen.length > 0 && seen.length <= (x.range()[1] - x.range()[0]) / 4;
      if (isZoomed) drawSizes(seen, plot, x);
      else drawRate(line, plot, x);
      if (isZoomed) plot.append('path').attr('class', 'others').attr('d', strokes(line.others, x, plotBottom + 12, 6));
      laneLabel(plot, 'key', plotBottom + 16);
      plot.append('path').attr('class', 'keys').attr('d', strokes(line.keys, x, plotBottom + 6, 12));
      if (hasCues) laneLabel(plot, 'cues', plotBottom + 34);
      if (hasCues) plot.append('path').attr('class', 'cues').attr('d', strokes(line.cues, x, plotBottom + 25, 10));
      const stop = line.stops_after_us === undefined ? -1 : x(line.stops_after_us);
      if (stop >= x.range()[0] && stop <= x.range()[1])
        plot.append('path').attr('class', 'stop').attr('d', `M${stop},0V${plotBottom + 20}`);
    },
    nearest: time => nearestOf(line.units, time),
    place: unit => unit.t,
    tell: unit => tellUnit(line, unit),
    beside: (chosen, step, far) => {
      if (!far) return besideOf(line.units, chosen, step);
      const keys = line.keys;
      if (chosen === null) return keys[step > 0 ? 0 : keys.length - 1];
      return step > 0 ? keys[d3.bisector(unit => unit.t).right(keys, chosen.t)] : keys[firstFrom(keys, chosen.t) - 1];
    },
  };
}

function tellUnit(line, unit) {
  const place = unit.p > 0 ? ` at byte ${grouped.format(unit.p)}` : '';
  const bucket = Math.min(Math.floor(Math.max(unit.t, 0) / line.rate.width_us), line.rates.length - 1);
  const lines = [`${clock(unit.t)} · ${unit.key ? 'key frame' : 'no key frame'}`, `${exactBytes(unit.size)}${place}`,
    `${trackName(line.track.index)} · ${bitRate(line.rates[bucket])} over ${stretch(line.rate.width_us)}`];
  if (line.stride > 1) lines.push(`nearest of the units listed: 1 of ${line.stride}`);
  return lines;
}

function format(track) {
  if (track.width && track.height) return `${track.width} × ${track.height}`;
  return [track.sample_rate ? `${grouped.format(track.sample_rate)} Hz` : '', track.channels ? `${track.channels} ch` : '']
    .filter(Boolean).join(', ');
}

// Over the time from the first to the last unit.
function averageRate(line) {
  const span = line.last_us - line.first_us;
  return span > 0 ? line.bytes * 8e6 / span : 0;
}

function summaryOf(line) {
  if (!line.delivered) return 'nothing arrives: the master track has no source that reads past these events';
  if (line.unitCount === 0) return 'delivers no unit';
  const average = averageRate(line);
  return [count(line.unitCount, 'unit'), count(line.keyCount, 'key frame'), average > 0 ? `${bitRate(average)} on average` : '',
    line.cueCount > 0 ? count(line.cueCount, 'cue') : ''].filter(Boolean).join(' · ');
}

function trackFigure(line) {
  const title = el('span', {}, el('strong', {}, `Track ${line.track.index}`), ` ${line.track.mime || line.track.kind} `,
    el('span', {class: 'detail'}, format(line.track)));
  const caption = el('figcaption', {}, title, el('span', {class: 'detail'}, summaryOf(line)));
  if (line.unitCount === 0) return el('figure', {class: 'track'}, caption);
  const parts = trackParts(line);
  const label = `Bit rate, key frames and cues of ${trackName(line.track.index)} over time: ${summaryOf(line)}`;
  const figure = new Chart(timeView, parts.height, caption, label, parts).figure;
  figure.className = 'track';
  if (line.stride > 1)
    figure.append(paragraph(`Too many units to list: the page holds 1 of ${line.keyStride} key frames` +
      `${line.others.length > 0 ? ` and 1 of ${report.timelines.find(t => t.track === line.track.index).others.stride} other units` : ''}; ` +
      'the bit rate counts all of them.'));
  if (line.unreadable > 0) {
    const stop = line.stops_after_us === undefined ? '' : `: a player stops after ${clock(line.stops_after_us)} (dashed line)`;
    figure.append(el('p', {class: 'bad'}, `${count(line.unreadable, 'block')} could not be read${stop}.`));
  }
  return figure;
}

function fileFigure() {
  const parts = fileParts();
  if (clusters.length === 0 && indexEntries.length === 0) return null;
  const text = [count(report.layout.clusters.count, 'Cluster'), count(report.index.count, 'index entry').replace(/entrys$/, 'entries'),
    report.chapter_count > 0 ? count(report.chapter_count, 'chapter') : ''].filter(Boolean).join(' · ');
  const caption = el('figcaption', {}, el('strong', {}, 'File'), el('span', {class: 'detail'}, text));
  return new Chart(timeView, parts.height, caption, `Clusters, sync index and chapters over time: ${text}`, parts).figure;
}

function showTimeline() {
  const charts = byId('charts'), range = byId('zoom-range');
  charts.append(...[fileFigure(), ...timelines.map(trackFigure)].filter(Boolean));
  if (report.offered_count > timelines.length)
    charts.append(paragraph(`Drawn: the first ${timelines.length} of ${report.offered_count} tracks on offer.`));
  if (timelines.length === 0) charts.append(paragraph('No track is on offer, so nothing is delivered over time.'));
  charts.append(legend(['k-rate', 'bit rate'], ['k-keys', 'key frames'], ['k-others', 'other units, once zoomed in'],
    ['k-cues', 'cue points of the track'], ['k-clusters', 'Clusters'], ['k-entries', 'sync index entries'],
    ...(report.chapter_count > 0 ? [['k-marks', 'chapters']] : []),
    ...(report.index.coarse_count > 0 ? [['k-coarse', 'more than 10 s without a sync point']] : [])));
  timeView.changed = () => {
    const [begin, end] = timeView.domain;
    range.textContent = `${clock(begin)} – ${clock(end)}`;
  };
  timeView.changed();
  byId('zoom-in').addEventListener('click', () => timeView.zoomBy(2));
  byId('zoom-out').addEventListener('click', () => timeView.zoomBy(0.5));
  byId('zoom-all').addEventListener('click', () => timeView.all());
}
