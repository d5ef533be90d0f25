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
