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

// From the first to the last thing that has a time: nothing that the charts draw lies outside, whether a unit is
// delivered there or not.
const timeSpan = (() => {
  const times = [0, report.duration_us, ...report.seeks.map(seek => seek.target_us)];
  for (const line of timelines) times.push(line.first_us || 0, line.last_us || 0);
  for (const list of [clusters, indexEntries, ...timelines.map(line => line.cues)])
    if (list.length > 0) times.push(list[0].t, list[list.length - 1].t);
  for (const chapter of report.chapters) times.push(chapter.start_us);
  const [begin, end] = d3.extent(times);
  return [begin, end > begin ? end : begin + 1e6];
})();

const trackName = index => {
  const track = report.tracks.find(candidate => candidate.index === index);
  return track ? `index ${index} (${track.kind})` : `index ${index}`;
};
