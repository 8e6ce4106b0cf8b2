// What the pages share. Texts never become markup: they are set by textContent only.
const element = (tag, className, text) => {
  const e = document.createElement(tag);
  if (className) e.className = className;
  if (text !== undefined) e.textContent = text;
  return e;
};
function copyText(text) {
  if (navigator.clipboard) { navigator.clipboard.writeText(text); return; }
  // Pages from a file have no clipboard of their own.
  const area = element('textarea');
  area.value = text;
  document.body.append(area);
  area.select();
  document.execCommand('copy');
  area.remove();
}
