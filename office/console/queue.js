// The live queue, and how a signal looks wherever it is shown.

import { byId, copyOf, setState, showRows, since, write, writeAll } from "./elements.js";

function addressee(signal, view) {
  if (signal.toDepartment) {
    return view.practice.office.departments.find(({ key }) => key === signal.toDepartment)?.label ?? signal.toDepartment;
  }
  const members = signal.providerIds ?? (signal.providerId ? [signal.providerId] : []);
  return members.length ? members.map(view.memberName).join(", ") : "whoever is free";
}

function end(signal, view) {
  if (signal.clearedBy === "ble") return "done: arrived (beacon)";
  if (signal.clearedBy === "timeout") return "expired";
  const word = signal.status === "canceled" ? "taken back" : signal.status;
  return signal.clearedBy ? `${word} by ${view.memberName(signal.clearedBy)}` : word;
}

function stateOf(signal, view) {
  if (signal.status === "waiting") return `waiting, ${since(signal.createdAt)}`;
  if (signal.status !== "acknowledged") return `${end(signal, view)}, ${since(signal.clearedAt)}`;
  return signal.acknowledgedBy ? `${view.memberName(signal.acknowledgedBy)} is on the way` : "somebody is on the way";
}

export const createSignal = () => copyOf("signal-row");

/** `actions` are [name, text, work]. */
export function updateSignal(row, signal, view, actions) {
  const type = view.type(signal.typeId);
  const room = view.room(signal.roomId)?.name ?? "a room that is gone";
  row.style.setProperty("--type", type?.color ?? "");
  row.dataset.status = signal.status;
  writeAll(row, {
    label: type?.label ?? "A kind that is gone",
    room,
    state: stateOf(signal, view),
    people: `${signal.requesterId ? `${view.memberName(signal.requesterId)} calls ` : "Calls "}${addressee(signal, view)}`,
    note: signal.note ?? "",
  });
  setState(row.querySelector(".state"), signal.status === "acknowledged" ? "on" : signal.status === "waiting" ? "call" : "");
  const buttons = row.querySelector(".buttons");
  showRows(buttons, "action", actions.map(([id, text, work]) => ({ id, text, work })), () => {
    const button = document.createElement("button");
    button.type = "button";
    button.addEventListener("click", () => button.item.work());
    return button;
  }, (button, { text }) => {
    write(button, text);
    button.setAttribute("aria-label", `${text}: ${type?.label}, ${room}`);
  });
}

export function showQueue(view, order) {
  const { signals, cleared } = view.practice;
  write(byId("queue-count"), signals.length ? String(signals.length) : "");
  showRows(byId("queue-list"), "signal", signals, createSignal, (row, signal) =>
    updateSignal(row, signal, view, ["done", "cancel"].map((action) =>
      [action, action === "done" ? "Done" : "Take back", () => order("act", { signal: signal.id, action })])));
  showRows(byId("cleared-list"), "signal", cleared, createSignal, (row, signal) => updateSignal(row, signal, view, []));
}
