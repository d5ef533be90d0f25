// The page's data, with its columns of steps added up.

const report = JSON.parse(byId('data').textContent);

function summed(steps) {
  let value = 0;
  return steps.map(step => value += step);
}

// {t, p, ...} of columns -> objects in the order of time.
function rows(list, extra) {
  const times = summed(list.t), places = summed(list.p);
  const all = times.map((t, i) => {
    const row = {t, p: places[i]};
    for (const name of extra) row[name] = list[name][i];
    return row;
  });
  return all.sort((a, b) => a.t - b.t);
}

function timelineOf(data) {
  const keys = rows(data.keys, ['size']), others = rows(data.others, ['size']);
  for (const unit of keys) unit.key = true;
  const units = keys.concat(others).sort((a, b) => a.t - b.t);
  const width = data.rate.width_us;
  const rates = data.rate.bytes.map(size => size * 8e6 / width);
  // The last stretch ends with the track: where its units go on to is told by how far apart they are.
  const last = rates.length - 1, spacing = (data.last_us - data.first_us) / Math.max(1, units.length - 1);
  if (last > 0) rates[last] *= width / Math.max(width / 4, Math.min(width, data.last_us + spacing - last * width));
  const stride = Math.max(data.keys.stride, data.others.stride);
  return {...data, keys, others, units, stride, rates, keyCount: data.keys.count, keyStride: data.keys.stride,
    unitCount: data.keys.count + data.others.count, cues: rows(data.cues, []), cueCount: data.cues.count,
    track: report.tracks.find(track => track.index === data.track) || {index: data.track, kind: ''}};
}

const timelines = report.timelines.map(timelineOf);
const clusters = rows(report.layout.clusters, ['size', 'blocks']);
const indexEntries = rows(report.index, []);

// From the first to the last thing that has a time; the declared duration counts only where nothing else does, so
// that a false one does not squeeze everything into a corner.
const timeSpan = (() => {
  let begin = 0, end = 0;
  for (const line of timelines) {
    begin = Math.min(begin, line.first_us || 0);
    end = Math.max(end, line.last_us || 0);
  }
  if (end === 0 && clusters.length > 0) end = clusters[clusters.length - 1].t;
  if (report.duration_us > end && report.duration_us < 2 * end) end = report.duration_us;
  return [begin, end > begin ? end : begin + (report.duration_us > 0 ? report.duration_us : 1e6)];
})();

const trackName = index => {
  const track = report.tracks.find(candidate => candidate.index === index);
  return track ? `index ${index} (${track.kind})` : `index ${index}`;
};
