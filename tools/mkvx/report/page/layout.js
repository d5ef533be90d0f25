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

function showLayout() {
  const {regions, cut} = report.layout, chart = byId('layout-chart');
  const view = new View([0, Math.max(report.size, 1)], (domain, most) => ({ticks: d3.ticks(...domain, Math.min(most, 8)), text: bytes}));
  const caption = el('figcaption', {}, el('strong', {}, 'From the first to the last byte'),
    el('span', {class: 'detail'}, exactBytes(report.size)));
  const seen = kinds.filter(kind => regions.some(([name]) => kindOf(name) === kind));
  chart.append(new Chart(view, 76, caption, 'The elements of the file in their order; the table below sums them up',
    layoutParts(regions, report.losses)).figure, legend(...seen.map(([name, text]) => [name, text])));
  if (cut) chart.append(paragraph(`Drawn: the first ${grouped.format(regions.length)} stretches; the table counts all.`));
}
