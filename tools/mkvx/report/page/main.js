showHead();
showFindings();
showTracks();
showTimeline();
showFigures();
showSeeks();
showLayout();
showChapters();
showAttachments();
addEventListener('wheel', () => tip.hide(), {passive: true});
document.documentElement.dataset.ready = 'true';  // for whoever drives the page
