// Commands are there to be copied.

function copied(text) {
  if (navigator.clipboard && isSecureContext) return navigator.clipboard.writeText(text);
  const field = document.body.appendChild(el('textarea', {class: 'unseen', 'aria-hidden': 'true'}));
  field.value = text;
  field.select();
  const isDone = document.execCommand('copy');
  field.remove();
  return isDone ? Promise.resolve() : Promise.reject();
}

function copyButton(command) {
  const button = el('button', {type: 'button', class: 'copy'}, 'Copy');
  button.addEventListener('click', () => copied(command.textContent)
    .then(() => 'Copied', () => 'Select it to copy').then(told => { button.textContent = told; tip.speak([told]); }));
  return button;
}

function showCommands() {
  for (const command of document.querySelectorAll('code.command')) command.after(' ', copyButton(command));
}
