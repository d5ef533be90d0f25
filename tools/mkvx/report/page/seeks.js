// Time against file position: where the media lies, where seeks land, and which bytes they read for it.

const soughtTracks = [...new Set(report.seeks.map(seek => seek.track))];
const seekHeight = 340;

// Where a mark of a seek goes up and down: where it landed, or else the last bytes it read.
function seekPlace(seek) {
  if (seek.position !== undefined) return seek.position;
  const last = seek.ranges[seek.ranges.length - 1];
  return last ? last[0] : 0;
}

function drawMedia(plot, x, y) {
  let path = '';
  for (const cluster of clusters) path += `${path ? 'L' : 'M'}${x(cluster.t).toFixed(1)},${y(cluster.p).toFixed(1)}`;
  if (path) path += `L${x(timeSpan[1]).toFixed(1)},${y(clusters[clusters.length - 1].p + clusters[clusters.length - 1].size).toFixed(1)}`;
  plot.append('path').attr('class', 'media').attr('d', path);
  const cues = timelines.flatMap(line => line.cues);
  plot.append('path').attr('class', 'cues')
    .attr('d', cues.map(cue => `M${x(cue.t).toFixed(1)},${(y(cue.p) - 5).toFixed(1)}v10`).join(''));
}

function drawSeek(plot, seek, x, y) {
  const color = `t${soughtTracks.indexOf(seek.track) % 3}`, target = x(seek.target_us), height = y(seekPlace(seek));
  const reads = seek.ranges.map(([begin, end]) => `M${target},${y(begin).toFixed(1)}V${y(end).toFixed(1)}`).join('');
  plot.append('path').attr('class', `reads ${color}`).attr('d', reads);
  if (seek.landed_us === undefined) return;
  plot.append('path').attr('class', `jump ${color}`).attr('d', `M${target},${height}H${x(seek.landed_us)}`);
  plot.append('circle').attr('class', `target ${color}`).attr('cx', target).attr('cy', height).attr('r', 3.5);
  plot.append('circle').attr('class', `landed ${color}`).attr('cx', x(seek.landed_us)).attr('cy', height).attr('r', 3.5);
}

function away(seek) {
  const us = seek.landed_us - seek.target_us;
  if (us === 0) return 'exactly there';
  return `${seconds(Math.abs(us))} ${us < 0 ? 'before' : 'after'} the target`;
}

function tellSeek(seek) {
  const landing = seek.landed_us === undefined ? ['ends the stream']
    : [`lands at ${clock(seek.landed_us)}, ${away(seek)}`,
       `${seek.sync ? 'key frame' : 'no key frame'}, ${exactBytes(seek.size)} at byte ${grouped.format(seek.position)}`];
  return [`Seek to ${clock(seek.target_us)} · ${trackName(seek.track)}`, ...landing,
    `${count(seek.reads, 'read')}, ${exactBytes(seek.read_bytes)}`];
}

// The whole file, or once zoomed in the stretch of it that holds the media of the time in view.
function positionsInView(x) {
  const [begin, end] = x.domain(), whole = [0, Math.max(report.size, 1)];
  if (clusters.length === 0 || end - begin > 0.99 * (timeSpan[1] - timeSpan[0])) return whole;
  const first = clusters[Math.max(0, firstFrom(clusters, begin) - 2)], last = clusters[Math.min(clusters.length - 1, firstFrom(clusters, end))];
  const from = Math.min(first.p, last.p), to = Math.max(first.p, last.p + last.size);
  return to > from ? [from, to] : whole;
}

function seekParts(seeks) {
  const y = d3.scaleLinear().range([seekHeight - 28, 10]);
  const sorted = seeks.map(seek => Object.assign(seek, {t: seek.target_us})).sort((a, b) => a.t - b.t);
  return {
    draw(plot, x, width) {
      y.domain(positionsInView(x));
      drawAmounts(plot, y, bytes, x);
      // Marks outside the time in view stay out of the margin.
      const inner = plot.append('svg').attr('x', margin.left - 5).attr('width', width - margin.left - margin.right + 10)
        .attr('height', seekHeight - 20).append('g').attr('transform', `translate(${5 - margin.left},0)`);
      drawMedia(inner, x, y);
      for (const seek of sorted) drawSeek(inner, seek, x, y);
    },
    nearest: (time, x, height) => {
      const distance = seek => Math.hypot(x(seek.t) - x(time), (y(seekPlace(seek)) - height) / 3);
      const [begin, end] = x.domain(), isSeen = at => at >= begin && at <= end;
      const seen = sorted.filter(seek => isSeen(seek.target_us) || isSeen(seek.landed_us));
      return seen.reduce((best, seek) => best === null || distance(seek) < distance(best) ? seek : best, null);
    },
    place: seek => seek.target_us,
    tell: tellSeek,
    beside: (chosen, step) => besideOf(sorted, chosen, step),
  };
}

// One line for each track that was sought: what its seeks cost.
function seekFigures(track) {
  const seeks = report.seeks.filter(seek => seek.track === track), landed = seeks.filter(seek => seek.landed_us !== undefined);
  const distances = landed.map(seek => Math.abs(seek.landed_us - seek.target_us));
  return [trackName(track), count(seeks.length, 'seek'), String(seeks.length - landed.length),
    landed.length > 0 ? seconds(d3.median(distances)) : '', landed.length > 0 ? seconds(d3.max(distances)) : '',
    grouped.format(d3.median(seeks, seek => seek.reads)), bytes(d3.median(seeks, seek => seek.read_bytes)), bytes(d3.max(seeks, seek => seek.read_bytes))];
}

function sourceOfIndex() {
  const {source, points, master_points: own, master_track: master} = report.index;
  if (source === 'cues')
    return `The file's Cues have ${count(points, 'point')}; seeks look only at those that name the master track ` +
           `(number ${master}): ${grouped.format(own)}.`;
  if (source === 'scan')
    return 'The file has no Cues: opening it visits every Cluster to make an index, unless the source says that it caches ' +
           'a network stream.';
  return 'The file has neither Cues nor Clusters that an index could be made from.';
}

function showSeeks() {
  const summary = byId('seek-summary');
  summary.append(el('p', {}, sourceOfIndex()));
  if (report.seeks.length === 0) {
    summary.append(el('p', {class: 'odd'}, report.duration_us > 0 ? 'No video or audio track is on offer, so nothing was sought.'
      : 'There is no duration that seeks can use: each ends the stream, whatever its target.'));
    byId('seek-details').remove();
    return;
  }
  const titles = ['Track', 'Seeks', '#Ending the stream', '#Typically off by', '#At most off by', '#Typical reads', '#Typical bytes', '#Most bytes'];
  summary.append(table('What a seek and its first unit cost', titles, soughtTracks.map(seekFigures)));
  const caption = el('figcaption', {}, el('strong', {}, 'Time against file position'),
    el('span', {class: 'detail'}, 'across: time; up: bytes from the start of the file'));
  const label = `Time against file position, with ${count(report.seeks.length, 'seek')}; the table above sums them up`;
  byId('seek-chart').append(new Chart(timeView, seekHeight, caption, label, seekParts(report.seeks)).figure,
    legend(['k-clusters', 'where the media lies'], ['k-cues', 'cue points'],
      ...soughtTracks.map((track, i) => [`k-t${i % 3}`, `seeks of ${trackName(track)}: ring at the target, dot where it lands, bar where it reads`])));
  byId('seek-details').querySelector('div').append(table('', ['#Track', '#Target', '#Landed', '#Away', 'Unit', '#Reads', '#Bytes read'],
    report.seeks.map(seek => [String(seek.track), clock(seek.target_us), seek.landed_us === undefined ? 'end of stream' : clock(seek.landed_us),
      seek.landed_us === undefined ? '' : seconds(seek.landed_us - seek.target_us),
      seek.landed_us === undefined ? '' : `${seek.sync ? 'key frame' : 'no key frame'}, ${exactBytes(seek.size)}`,
      grouped.format(seek.reads), grouped.format(seek.read_bytes)])));
}
