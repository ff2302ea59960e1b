// Computers: those that wait to be set up, those that are paired, and codes for more of them.

import { byId, copyOf, fillSelect, isAhead, left, onClick, onSubmit, setState, showRows, write, writeAll } from "./elements.js";

const uses = { room: "Room computer", shared: "Shared workstation", member: "Own computer" };

const active = (records) => records.filter((record) => record.active !== false);
const named = (records) => active(records).map(({ id, name }) => [id, name]);

/** Which of room and owner a use asks for. */
function adaptPlacement(form, practice) {
  const role = form.elements.role.value;
  const rooms = named(practice.rooms);
  fillSelect(form.elements.room, role === "shared" ? [["", "No fixed room"], ...rooms] : rooms);
  fillSelect(form.elements.member, named(practice.members));
  form.querySelector('[data-field="room"]').hidden = role === "member";
  form.querySelector('[data-field="member"]').hidden = role !== "member";
}

function placementOf({ name, role, room, member }, practiceId) {
  return {
    practice: practiceId,
    role,
    ...(role !== "member" && room && { room }),
    ...(role === "member" && { member }),
    ...(name.trim() && { name: name.trim() }),
  };
}

let view;
let order;

function createWaiting() {
  const row = copyOf("waiting-row");
  const form = row.querySelector("form");
  form.elements.role.addEventListener("change", () => adaptPlacement(form, view.practice));
  onSubmit(form, (fields) => order("approve", { request: row.item.request, ...placementOf(fields, view.practiceId) }));
  return row;
}

function updateWaiting(row, request) {
  const form = row.querySelector("form");
  form.elements.name.placeholder = request.name;
  form.setAttribute("aria-label", `Set up ${request.name}`);
  writeAll(row, {
    name: request.name,
    facts: `${request.model} · ${request.request} · code for ${left(request.expiresAt)}`,
  });
  adaptPlacement(form, view.practice);
}

function adaptMove(form, { role }) {
  fillSelect(form.elements.practice, view.practices.filter(({ office }) => office.id !== view.practiceId)
    .map(({ office }) => [office.id, office.name]));
  const target = view.practices.find(({ office }) => office.id === form.elements.practice.value);
  const places = !target ? [] : role === "member" ? named(target.members) : named(target.rooms);
  fillSelect(form.elements.place, role === "member" ? places : [["", "As here, if it is there"], ...places]);
}

function createComputer() {
  const row = copyOf("computer-row");
  onClick(row, "sign-out", ({ id }) => order("signout", { device: id }));
  onClick(row, "unlink", ({ id }) => order("revoke", { device: id }));
  const form = row.querySelector("form");
  form.elements.practice.addEventListener("change", () => adaptMove(form, row.item));
  onSubmit(form, ({ practice, place }) => order("move", {
    device: row.item.id,
    practice,
    ...(place && { [row.item.role === "member" ? "member" : "room"]: place }),
  }));
  return row;
}

function updateComputer(row, { role, collected, station, device, id }) {
  const isOn = view.connected.has(id);
  const room = view.room(device.roomId)?.name;
  row.dataset.name = device.name;
  writeAll(row, {
    name: device.name,
    state: isOn ? "connected" : collected ? "not connected" : "has not come yet",
    place: uses[role] + (device.memberId ? ` of ${view.memberName(device.memberId)}` : room ? ` · ${room}` : ""),
    person: !station ? "" : device.signedInMemberId ? `${view.memberName(device.signedInMemberId)} is signed in`
      : "Nobody is signed in",
  });
  setState(row.querySelector(".state"), isOn ? "on" : "off");
  row.querySelector('[data-action="sign-out"]').hidden = !device.signedInMemberId;
  row.querySelector('[data-action="sign-out"]').setAttribute("aria-label", `Sign out at ${device.name}`);
  row.querySelector('[data-action="unlink"]').setAttribute("aria-label", `Unlink ${device.name}`);
  row.querySelector("details").hidden = view.practices.length < 2;
  adaptMove(row.querySelector("form"), { role });
}

const codeForm = byId("code-form");
const codeResult = byId("code-result");
codeForm.elements.role.addEventListener("change", () => adaptPlacement(codeForm, view.practice));
onSubmit(codeForm, async (fields) => {
  const answer = await order("code", placementOf(fields, view.practiceId));
  codeResult.hidden = !answer;
  if (answer) write(byId("code-value"), answer.code);
});

export function showComputers(now, sendOrder) {
  view = now;
  order = sendOrder;
  const waiting = view.waiting.filter(({ expiresAt }) => isAhead(expiresAt));
  const count = byId("waiting-count");
  write(count, waiting.length ? String(waiting.length) : "");
  showRows(byId("waiting-list"), "request", waiting.map((request) => ({ ...request, id: request.request })),
    createWaiting, updateWaiting);
  showRows(byId("computer-list"), "device", view.practice.devices.map((entry) => ({ ...entry, id: entry.device.id })),
    createComputer, updateComputer);
  adaptPlacement(codeForm, view.practice);
  showRows(byId("code-list"), "code", view.practice.codes.filter(({ expiresAt }) => isAhead(expiresAt)),
    () => document.createElement("li"),
    (row, code) => write(row, `A code for ${code.name ? `“${code.name}”` : `a ${uses[code.role].toLowerCase()}`}` +
      ` is open for ${left(code.expiresAt)}`));
}
