showCommands();
if (byId('timeline')) {  // otherwise the file was not read
  showTimeline();
  showFigures();
  showSeeks();
  showLayout();
}
// On paper nothing unfolds.
const folded = [...document.querySelectorAll('main details')];
addEventListener('beforeprint', () => folded.forEach(part => { part.open = true; }));
addEventListener('afterprint', () => folded.forEach(part => { part.open = false; }));
addEventListener('wheel', () => tip.hide(), {passive: true});
document.documentElement.dataset.ready = 'true';  // for whoever drives the page
