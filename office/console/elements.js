// The few things that the page's parts do with elements.

export const byId = (id) => document.getElementById(id);

/** A copy of the one element in a template. */
export const copyOf = (template) => byId(template).content.firstElementChild.cloneNode(true);

/** Changes nothing where the text stands already, so that a selection in it survives. */
export function write(element, text) {
  if (element.textContent !== text) element.textContent = text;
  element.hidden = text === "";
}

/** Writes texts into the places that a template names with data-show. */
export function writeAll(row, texts) {
  for (const [name, text] of Object.entries(texts)) write(row.querySelector(`[data-show="${name}"]`), text);
}

export function setState(element, state) {
  if (element.dataset.state !== state) element.dataset.state = state;
}

/**
 * Makes the list's rows those of `items`, in their order. A row lives as long as its item, so that focus and half-typed
 * texts survive what happens around it. `create(item)` makes a row; `update(row, item)` fills it. What a row's buttons
 * act on is `row.item`.
 */
export function showRows(list, attribute, items, create, update) {
  const rows = new Map([...list.children].map((row) => [row.dataset[attribute], row]));
  let next = list.firstElementChild;
  for (const item of items) {
    let row = rows.get(item.id);
    rows.delete(item.id);
    if (!row) {
      row = create(item);
      row.dataset[attribute] = item.id;
    }
    row.item = item;
    update(row, item);
    if (row === next) next = next.nextElementSibling;
    else list.insertBefore(row, next);
  }
  for (const row of rows.values()) row.remove();
}

/** Options as [value, text]; what was chosen stays chosen while it is there. */
export function fillSelect(select, options) {
  const wanted = JSON.stringify(options);
  if (select.shownOptions === wanted) return;
  select.shownOptions = wanted;
  const chosen = select.value;
  select.replaceChildren(...options.map(([value, text]) => new Option(text, value)));
  if (options.some(([value]) => value === chosen)) select.value = chosen;
}

/** Shows a value of the office in a field, but leaves what somebody is typing until the office's own value changes. */
export function showValue(field, value) {
  const text = String(value);
  if (field.shownValue === text) return;
  field.shownValue = text;
  field.value = text;
}

export function onClick(row, action, work) {
  row.querySelector(`[data-action="${action}"]`).addEventListener("click", () => work(row.item));
}

/** A form that sends an order; its button rests while that is under way. */
export function onSubmit(form, work) {
  form.addEventListener("submit", async (event) => {
    event.preventDefault();
    const button = form.querySelector("button:not([type])");
    button.disabled = true;
    try {
      await work(Object.fromEntries(new FormData(form)));
    } finally {
      button.disabled = false;
    }
  });
}

const minute = 60_000;

/** "now", "4 min", "2 h". */
export function since(time) {
  const minutes = Math.floor((Date.now() - Date.parse(time)) / minute);
  return minutes < 1 ? "now" : minutes < 60 ? `${minutes} min` : `${Math.floor(minutes / 60)} h`;
}

export const isAhead = (time) => time !== undefined && Date.parse(time) > Date.now();

/** "1:05" until then. */
export function left(time) {
  const seconds = Math.max(0, Math.ceil((Date.parse(time) - Date.now()) / 1000));
  return `${Math.floor(seconds / 60)}:${String(seconds % 60).padStart(2, "0")}`;
}
