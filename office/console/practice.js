// What an admin sets: rooms, staff, kinds of signal, rules, and the announced release.

import { byId, copyOf, fillSelect, isAhead, left, onClick, onSubmit, showRows, showValue, write, writeAll } from "./elements.js";
import { pickUpPhone } from "./phone.js";

const cooldownMinutes = 5;
const words = { available: "available", busy: "busy", dnd: "do not disturb" };

let view;
let order;
const here = (name, fields) => order(name, { practice: view.practiceId, ...fields });

function toggle(row, action, name, isOn, [turnOff, turnOn]) {
  const button = row.querySelector(`[data-action="${action}"]`);
  write(button, isOn ? turnOff : turnOn);
  button.setAttribute("aria-label", `${isOn ? turnOff : turnOn}: ${name}`);
}

function toggleActive(row, name) {
  const isOn = row.item.active !== false;
  row.classList.toggle("off", !isOn);
  toggle(row, "active", name, isOn, ["Disable", "Enable"]);
}

function createRoom() {
  const row = copyOf("room-row");
  onSubmit(row.querySelector("form"), ({ name }) => here("room", { room: row.item.id, name }));
  onClick(row, "active", ({ id, active }) => here("room", { room: id, active: active === false }));
  return row;
}

function updateRoom(row, { name }) {
  const field = row.querySelector("input");
  showValue(field, name);
  field.setAttribute("aria-label", `Name of ${name}`);
  row.querySelector("form button").setAttribute("aria-label", `Rename ${name}`);
  toggleActive(row, name);
}

function createMember() {
  const row = copyOf("member-row");
  onClick(row, "phone", ({ id }) => pickUpPhone(id));
  onClick(row, "shift", ({ id, onShift }) => here("member", { member: id, onShift: onShift === false }));
  onClick(row, "cooldown", ({ id, cooldownUntil }) => here("member", isAhead(cooldownUntil)
    ? { member: id, onShift: true, cooldownMinutes: 0 }
    : { member: id, onShift: false, offShiftReason: "admin", cooldownMinutes }));
  onClick(row, "active", ({ id, active }) => here("member", { member: id, active: active === false }));
  return row;
}

function updateMember(row, member) {
  const { name, onShift, cooldownUntil, status, isAdmin } = member;
  const department = view.practice.office.departments.find(({ key }) => key === member.department);
  const resting = isAhead(cooldownUntil);
  writeAll(row, {
    name,
    facts: [department?.label ?? member.department, isAdmin && "admin", words[status] ?? status,
      onShift === false && "off shift", resting && `cooldown ${left(cooldownUntil)}`].filter(Boolean).join(" · "),
  });
  row.querySelector('[data-action="phone"]').setAttribute("aria-label", `Phone of ${name}`);
  row.querySelector("summary").setAttribute("aria-label", `More about ${name}`);
  row.querySelector('[data-action="phone"]').disabled = member.active === false;
  toggle(row, "shift", name, onShift !== false, ["Off shift", "On shift"]);
  toggle(row, "cooldown", name, resting, ["End cooldown", "Cooldown"]);
  toggleActive(row, name);
}

function createType() {
  const row = copyOf("type-row");
  onSubmit(row.querySelector("form"), ({ label, color }) =>
    here("type", { type: row.item.id, label, color: color.toUpperCase() }));
  onClick(row, "active", ({ id, active }) => here("type", { type: id, active: active === false }));
  return row;
}

function updateType(row, { label, color }) {
  const { elements } = row.querySelector("form");
  showValue(elements.label, label);
  showValue(elements.color, color.toLowerCase());
  elements.label.setAttribute("aria-label", `Words of ${label}`);
  elements.color.setAttribute("aria-label", `Colour of ${label}`);
  row.querySelector("form button").setAttribute("aria-label", `Save ${label}`);
  toggleActive(row, label);
}

onSubmit(byId("room-form"), async (fields) => {
  if (await here("room/add", fields)) byId("room-form").reset();
});
onSubmit(byId("member-form"), async (fields) => {
  if (await here("member/add", fields)) byId("member-form").reset();
});
onSubmit(byId("practice-form"), ({ name, autoExpireMinutes }) =>
  here("practice", { name, autoExpireMinutes: Number(autoExpireMinutes) }));
for (const [id, rule] of [["rule-sender", "requireSignedInSender"], ["rule-open", "allowAnyProvider"]]) {
  byId(id).addEventListener("change", async ({ target }) => {
    // Shows what the office holds, whatever it answered.
    await here("practice", { [rule]: target.checked });
    showPractice(view, order);
  });
}
onSubmit(byId("release-form"), ({ version, build, url, sha256 }) =>
  order("announce", { version, build: Number(build), url, ...(sha256 && { sha256 }) }));
byId("release-withdraw").addEventListener("click", () => order("announce"));

export function showPractice(now, sendOrder) {
  view = now;
  order = sendOrder;
  const { office, rooms, members, signalTypes } = view.practice;
  showRows(byId("room-list"), "room", rooms, createRoom, updateRoom);
  showRows(byId("member-list"), "member", members, createMember, updateMember);
  showRows(byId("type-list"), "type", signalTypes, createType, updateType);
  fillSelect(byId("member-form").elements.department, office.departments.map(({ key, label }) => [key, label]));
  const form = byId("practice-form").elements;
  showValue(form.name, office.name);
  showValue(form.autoExpireMinutes, office.settings?.autoExpireMinutes ?? 0);
  byId("rule-sender").checked = office.settings?.requireSignedInSender ?? false;
  byId("rule-open").checked = office.settings?.allowAnyProvider ?? true;
  const macos = view.release?.macos;
  write(byId("release-now"), macos ? `${macos.version} (build ${macos.build}), ${macos.url}` : "None.");
}
