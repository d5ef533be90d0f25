showCommands();
if (byId('timeline')) {  // otherwise the file was not read
  showTimeline();
  showFigures();
  showSeeks();
  showLayout();
}
// On paper nothing unfolds.
const figures = byId('figures');
if (figures) {
  addEventListener('beforeprint', () => { figures.open = true; });
  addEventListener('afterprint', () => { figures.open = false; });
}
addEventListener('wheel', () => tip.hide(), {passive: true});
document.documentElement.dataset.ready = 'true';  // for whoever drives the page
