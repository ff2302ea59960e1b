// The phone of one member of staff.

import { byId, copyOf, fillSelect, isAhead, left, onClick, onSubmit, setState, showRows, write, writeAll } from "./elements.js";
import { createSignal, updateSignal } from "./queue.js";

const statuses = [["available", "Available"], ["busy", "Busy"], ["dnd", "Do not disturb"]];
const picker = byId("phone-member");

let view;
let order;
const owner = () => view.practice.members.find(({ id }) => id === picker.value);

export function pickUpPhone(memberId) {
  picker.value = memberId;
  picker.dispatchEvent(new Event("change"));
  byId("phone").scrollIntoView();
  picker.focus();
}

/** Whether a signal rings on the phone: whoever is on the way, before that everybody who is called. */
function callsFor(signal, member) {
  if (signal.acknowledgedBy) return signal.acknowledgedBy === member.id;
  if (signal.providerIds) return signal.providerIds.includes(member.id);
  return signal.providerId ? signal.providerId === member.id : member.department === "provider";
}

function actionsFor(signal, member) {
  const act = (action) => () => order("act", { signal: signal.id, action, by: member.id });
  const mine = callsFor(signal, member);
  return [
    ...(mine && signal.status === "waiting" ? [["acknowledge", "On my way", act("acknowledge")]] : []),
    ...(mine ? [["done", "Done", act("done")]] : []),
    ...(signal.requesterId === member.id ? [["cancel", "Take back", act("cancel")]] : []),
  ];
}

function createStation() {
  const row = copyOf("station-row");
  onClick(row, "scan", ({ id }) => order("scan", { device: id, member: picker.value }));
  onClick(row, "sign-out", ({ id }) => order("signout", { device: id }));
  return row;
}

function updateStation(row, { id, device, codeShownUntil }) {
  const showsCode = isAhead(codeShownUntil);
  const isMine = device.signedInMemberId === picker.value;
  writeAll(row, {
    name: device.name,
    state: isMine ? "signed in here" : showsCode ? `shows a code, ${left(codeShownUntil)}`
      : device.signedInMemberId ? `${view.memberName(device.signedInMemberId)} is signed in`
      : view.connected.has(id) ? "shows no code" : "not connected",
  });
  const scan = row.querySelector('[data-action="scan"]');
  scan.disabled = !showsCode;
  scan.hidden = isMine;
  scan.setAttribute("aria-label", `Scan the code of ${device.name}`);
  const signOut = row.querySelector('[data-action="sign-out"]');
  signOut.hidden = !isMine;
  signOut.setAttribute("aria-label", `Sign out at ${device.name}`);
}

onSubmit(byId("phone-code-form"), async ({ code }) => {
  const token = code.trim().replace(/^.*token=/, "");
  if (await order("signin", { code: token, member: picker.value })) byId("phone-code-form").reset();
});

onSubmit(byId("walk-form"), ({ room }) => order("walk", { practice: view.practiceId, member: picker.value, room }));

onSubmit(byId("send-form"), async ({ room, type, to, note }) => {
  const [kind, id] = to.split(":");
  const sent = await order("send", {
    practice: view.practiceId,
    from: picker.value,
    room,
    type,
    note,
    ...(kind === "department" && { toDepartment: id }),
    ...(kind === "member" && { to: [id] }),
  });
  if (sent) byId("send-form").elements.note.value = "";
});

picker.addEventListener("change", () => showPhone(view, order));

export function showPhone(now, sendOrder) {
  view = now;
  order = sendOrder;
  const { members, rooms, signalTypes, signals, devices, office } = view.practice;
  const active = (records) => records.filter((record) => record.active !== false);
  fillSelect(picker, active(members).map(({ id, name }) => [id, name]));
  const member = owner();
  byId("phone").dataset.member = member?.id ?? "";
  if (!member) return;

  const resting = isAhead(member.cooldownUntil);
  showRows(byId("phone-status"), "status", statuses.map(([id, text]) => ({ id, text })), () => {
    const button = document.createElement("button");
    button.type = "button";
    button.addEventListener("click", () => order("status",
      { practice: view.practiceId, member: picker.value, status: button.item.id }));
    return button;
  }, (button, { id, text }) => {
    write(button, text);
    button.setAttribute("aria-pressed", String(member.status === id));
    button.title = resting ? `In a cooldown for ${left(member.cooldownUntil)}` : "";
  });

  showRows(byId("phone-signals"), "signal",
    signals.filter((signal) => callsFor(signal, member) || signal.requesterId === member.id), createSignal,
    (row, signal) => updateSignal(row, signal, view, actionsFor(signal, member)));
  showRows(byId("station-list"), "station", devices.filter(({ station }) => station)
    .map((entry) => ({ ...entry, id: entry.device.id })), createStation, updateStation);

  const roomOptions = active(rooms).map(({ id, name }) => [id, name]);
  fillSelect(byId("walk-form").elements.room, roomOptions);
  const form = byId("send-form");
  fillSelect(form.elements.room, roomOptions);
  fillSelect(form.elements.type, active(signalTypes).map(({ id, label }) => [id, label]));
  fillSelect(form.elements.to, [
    ["", "Whoever is free"],
    ...office.departments.map(({ key, label, labelPlural }) => [`department:${key}`, `All: ${labelPlural ?? label}`]),
    ...active(members).filter(({ id }) => id !== member.id).map(({ id, name }) => [`member:${id}`, name]),
  ]);
}
