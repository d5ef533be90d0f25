// What lies where in the file, and what of it is damaged.

const kinds = [
  ['r-head', 'description', ['EBML', 'Segment header', 'Segment', 'Info', 'Tracks', 'SeekHead']],
  ['r-media', 'media', ['Cluster']],
  ['r-seekable', 'Cues', ['Cues']],
  ['r-extra', 'chapters, attachments, tags', ['Chapters', 'Attachments', 'Tags']],
  ['r-bad', 'damaged or not reached', ['damaged', 'not reached']],
  ['r-void', 'padding and unknown elements', []],
];
const kindOf = name => kinds.find(([, , names]) => names.includes(name)) || kinds[kinds.length - 1];

const explained = {
  'damaged': 'damaged: skipped to find the next element',
  'not reached': 'not reached: behind the last readable element',
  'Segment header': 'Segment (its header)',
};

function layoutParts(regions, losses) {
  const all = regions.map(([name, begin, end, elements]) => ({t: begin, end, name, elements}));
  return {
    draw(plot, x) {
      const [left, right] = x.range();
      for (const region of all) {
        const from = Math.max(left, x(region.t)), to = Math.min(right, x(region.end));
        if (to < left || from > right) continue;
        plot.append('rect').attr('class', kindOf(region.name)[0]).attr('x', Math.min(from, right - 1)).attr('y', 16)
          .attr('width', Math.max(1, to - from)).attr('height', 30);
      }
      plot.append('path').attr('class', 'stop').attr('d', losses.filter(([, at]) => x(at) >= left && x(at) <= right)
        .map(([, at]) => `M${x(at)},4V50`).join(''));
    },
    nearest: at => all[Math.max(0, d3.bisector(region => region.t).right(all, at) - 1)] || null,
    place: region => region.t,
    tell: region => [explained[region.name] || (region.elements > 1 ? `${count(region.elements, region.name)}` : region.name),
      `bytes ${grouped.format(region.t)} to ${grouped.format(region.end)}`, exactBytes(region.end - region.t)],
    beside: (chosen, step) => besideOf(all, chosen, step),
  };
}

function percent(part, whole) {
  const share = whole > 0 ? 100 * part / whole : 0;
  return share > 0 && share < 0.001 ? '< 0.001 %' : `${share.toFixed(share < 0.1 ? 3 : 1)} %`;
}

function showLayout() {
  const {regions, bytes: byName, cut} = report.layout, chart = byId('layout-chart'), tables = byId('layout-tables');
  const view = new View([0, Math.max(report.size, 1)], (domain, most) => ({ticks: d3.ticks(...domain, Math.min(most, 8)), text: bytes}));
  const caption = el('figcaption', {}, el('strong', {}, 'From the first to the last byte'),
    el('span', {class: 'detail'}, exactBytes(report.size)));
  const seen = kinds.filter(kind => regions.some(([name]) => kindOf(name) === kind));
  chart.append(new Chart(view, 76, caption, 'The elements of the file in their order; the table below sums them up',
    layoutParts(regions, report.losses)).figure, legend(...seen.map(([name, text]) => [name, text])));
  if (cut) chart.append(paragraph(`Drawn: the first ${grouped.format(regions.length)} stretches; the table counts all.`));
  const sorted = [...byName].sort((a, b) => b[1] - a[1]);
  tables.append(table('Bytes by element', ['Element', '#Bytes', '#Share'],
    sorted.map(([name, size]) => [explained[name] || name, grouped.format(size), percent(size, report.size)])));
  if (report.shares) showShares(tables);
  showDamage(tables);
}

function showShares(place) {
  const names = {delivered: 'payload that is delivered', not_offered: 'payload of tracks that are not offered, and beside frames', metadata: 'headers, descriptions, attachments',
    padding: 'padding and checksums', damaged: 'damaged', unreachable: 'behind what is looked at'};
  place.append(el('h3', {}, 'What becomes of the bytes'), table('Share of the file', ['Bytes that are', '#Bytes', '#Share'],
    Object.entries(report.shares).filter(([, size]) => size > 0)
      .map(([name, size]) => [names[name] || name, grouped.format(size), percent(size, report.size)])));
}

function showDamage(place) {
  place.append(el('h3', {}, 'Damage'));
  const gaps = report.layout.regions.filter(([name]) => name === 'damaged' || name === 'not reached');
  if (report.losses.length === 0 && gaps.length === 0 && report.layout.missing === 0) {
    place.append(el('p', {class: 'good'}, 'No byte of this file was skipped, and nothing was lost in reading it.'));
    return;
  }
  const missing = report.layout.missing > 0 ? [['the Segment goes on behind the end of the file', grouped.format(report.size), grouped.format(report.layout.missing)]] : [];
  const damaged = gaps.map(([name, begin, end]) => [explained[name], grouped.format(begin), grouped.format(end - begin)]);
  const lost = report.losses.map(([what, at, size]) => [what, grouped.format(at), size > 0 ? grouped.format(size) : '']);
  place.append(table('What could not be read', ['What', '#At byte', '#Bytes'], missing.concat(damaged, lost)));
  if (report.losses_cut) place.append(paragraph('There may be more: the list of losses is full.'));
}
