// Tables and lists. A title that begins with '#' is a column of numbers. A column that is empty in every row is left
// out.

function table(caption, allTitles, allRows) {
  const isUsed = allTitles.map((title, i) => allRows.some(cells => cells[i] !== ''));
  const titles = allTitles.filter((title, i) => isUsed[i]), rowsOfCells = allRows.map(cells => cells.filter((cell, i) => isUsed[i]));
  const isNumber = titles.map(title => title.startsWith('#')), names = titles.map(title => title.replace(/^#/, ''));
  const cell = (content, i) => {
    const isShort = typeof content === 'string' && content.length <= 20;
    const attributes = {'data-label': names[i], role: i === 0 ? 'rowheader' : 'cell', class: isNumber[i] ? 'number' : isShort ? 'short' : ''};
    if (i === 0) attributes.scope = 'row';
    return el(i === 0 ? 'th' : 'td', attributes, ...(Array.isArray(content) ? content : [content]));
  };
  const head = names.map((name, i) => el('th', {scope: 'col', role: 'columnheader', ...(isNumber[i] ? {class: 'number'} : {})}, name));
  // The roles are those that the elements have anyway; laid out as cards they would lose them.
  return el('div', {class: titles.length > 4 ? 'table cards' : 'table'}, el('table', {role: 'table'}, caption ? el('caption', {}, caption) : null,
    el('thead', {role: 'rowgroup'}, el('tr', {role: 'row'}, ...head)),
    el('tbody', {role: 'rowgroup'}, ...rowsOfCells.map(cells => el('tr', {role: 'row'}, ...cells.map(cell))))));
}

const weightClass = {note: '', loss: 'odd', mute: 'bad', fatal: 'bad'};

// `told`: remedies that stand above already.
function findingItem(finding, told) {
  const isNew = finding.remedy && !told.has(finding.remedy);
  told.add(finding.remedy);
  const place = finding.offset === undefined ? '' : ` (${finding.element || 'byte'} at ${grouped.format(finding.offset)})`;
  return el('li', {}, el('span', {class: weightClass[finding.weight] || ''}, `${finding.sentence}${place}`),
    isNew ? el('span', {class: 'remedy'}, 'Remedy: ', el('code', {}, finding.remedy)) : null);
}

function findingList(findings) {
  const told = new Set();
  return findings.length === 0 ? null : el('ul', {class: 'plain'}, ...findings.map(finding => findingItem(finding, told)));
}

function verdictCell(track) {
  const state = track.dropped ? el('span', {class: 'state bad'}, 'dropped')
    : el('span', {class: 'state good'}, `offered as index ${track.index}`);
  return [el('div', {}, state, findingList((track.dropped ? [track.dropped] : []).concat(track.findings)))];
}

function showTracks() {
  const place = byId('track-table');
  const cells = report.tracks.map(track => [grouped.format(track.number), verdictCell(track), track.kind, track.mime || '', track.codec,
    format(track), track.language || '', (track.config || []).join(', ')]);
  if (cells.length === 0) place.append(el('p', {class: 'odd'}, 'No track description could be read.'));
  else place.append(table('Every track of the file, in its order', ['Number', 'On the device', 'Kind', 'MIME type', 'Codec ID', 'Format', 'Language', 'Configuration'], cells));
  if (report.track_count > report.tracks.length)
    place.append(paragraph(`Listed: the first ${report.tracks.length} of ${grouped.format(report.track_count)}.`));
}

function showFindings() {
  if (report.findings.length === 0) byId('findings').remove();
  else byId('findings').append(findingList(report.findings));
}

function showHead() {
  const facts = byId('facts'), good = report.verdict === 'plays', bad = report.verdict === 'stops_the_media_process' || report.verdict === 'nothing_plays';
  byId('verdict').append(el('span', {class: `state ${good ? 'good' : bad ? 'bad' : 'odd'}`}, report.verdict_text),
    report.reason ? `: ${report.reason}` : '');
  const rate = report.duration_us > 0 ? bitRate(report.size * 8e6 / report.duration_us) : '';
  const entries = [['Title', report.title], ['Container', report.container_mime], ['Document type', report.doc_type], ['Size', bytes(report.size)],
    ['Duration', report.duration_us > 0 ? clock(report.duration_us) : 'none that seeks can use'], ['Average', rate],
    ['Tracks', `${report.offered_count} of ${report.track_count} offered`], ['Muxer', report.muxing_app], ['Written by', report.writing_app]];
  for (const [name, value] of entries) if (value) facts.append(el('div', {}, el('dt', {}, name), el('dd', {}, value)));
}

function showFigures() {
  const drawn = timelines.filter(line => line.unitCount > 0);
  if (drawn.length === 0) {
    byId('figures').remove();
    return;
  }
  const cells = drawn.map(line => [trackName(line.track.index), grouped.format(line.unitCount), grouped.format(line.keyCount), grouped.format(line.bytes),
    averageRate(line) > 0 ? bitRate(averageRate(line)) : '', bitRate(d3.max(line.rates) || 0), line.longest_key_gap_us === undefined ? '' : seconds(line.longest_key_gap_us),
    clock(line.first_us), clock(line.last_us)]);
  byId('figures').querySelector('div').append(table('What each track delivers; the peak is the highest of the stretches drawn',
    ['Track', '#Units', '#Key frames', '#Bytes', '#Average', '#Peak', '#Longest without a key frame', '#First', '#Last'], cells));
}

function showChapters() {
  const place = byId('chapter-table');
  if (report.chapters.length === 0) {
    place.append(paragraph('None.'));
    return;
  }
  const notes = chapter => [chapter.hidden ? 'hidden' : '', chapter.disabled ? 'disabled' : ''].filter(Boolean).join(', ');
  const hasEditions = report.chapters.some(chapter => chapter.edition > 0);
  const cells = report.chapters.map(chapter => [clock(chapter.start_us), chapter.end_us === undefined ? '' : clock(chapter.end_us),
    `${'\u2013 '.repeat(chapter.depth)}${chapter.title}`, chapter.language, hasEditions ? String(chapter.edition + 1) : '', notes(chapter)]);
  place.append(table('', ['Start', 'End', 'Title', 'Language', '#Edition', 'Flags'], cells));
  if (report.chapter_count > report.chapters.length)
    place.append(paragraph(`Listed: the first ${report.chapters.length} of ${grouped.format(report.chapter_count)}.`));
}

function showAttachments() {
  const place = byId('attachment-table');
  if (report.attachments.length === 0) {
    place.append(paragraph('None.'));
    return;
  }
  place.append(table('', ['Name', 'MIME type', 'Description', '#Bytes', '#At byte'], report.attachments.map(file =>
    [file.name, file.mime, file.description, grouped.format(file.size), grouped.format(file.position)])));
  if (report.attachment_count > report.attachments.length)
    place.append(paragraph(`Listed: the first ${report.attachments.length} of ${grouped.format(report.attachment_count)}.`));
}
