// Connects the page with the office: shows what it is told over the web socket, and sends orders.

import { byId, fillSelect, setState, write } from "./elements.js";
import { showComputers } from "./computers.js";
import { showPhone } from "./phone.js";
import { showPractice } from "./practice.js";
import { showQueue } from "./queue.js";

const retryAfter = 1000;
const practicePicker = byId("practice");
let told = null;

function say(sentence) {
  const message = byId("message");
  message.hidden = sentence === "";
  message.querySelector("p").textContent = sentence;
}

/** Gives the office's answer, or nothing after it has said why not. */
async function order(name, fields = {}) {
  try {
    const response = await fetch(`/console/v1/${name}`, {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify(fields),
    });
    const answer = await response.json();
    say(response.ok ? "" : (answer.message ?? answer.error));
    return response.ok ? answer : undefined;
  } catch {
    say("The office does not answer. Is it still running?");
    return undefined;
  }
}

function chosenPractice() {
  const practices = told.office.practices;
  return practices.find(({ office }) => office.id === practicePicker.value) ?? practices[0];
}

function show() {
  if (!told) return;
  fillSelect(practicePicker, told.office.practices.map(({ office }) => [office.id, office.name]));
  const practice = chosenPractice();
  if (!practice) {
    say("This office holds no practice yet. Start it with --sample harbour.");
    return;
  }
  const view = {
    practice,
    practiceId: practice.office.id,
    practices: told.office.practices,
    waiting: told.office.waiting,
    release: told.office.desktopRelease,
    connected: new Set(told.connected),
    memberName: (id) => practice.members.find((member) => member.id === id)?.name ?? "somebody who left",
    room: (id) => practice.rooms.find((room) => room.id === id),
    type: (id) => practice.signalTypes.find((type) => type.id === id),
  };
  showComputers(view, order);
  showQueue(view, order);
  showPhone(view, order);
  showPractice(view, order);
}

function connect() {
  const connection = byId("connection");
  const socket = new WebSocket(`${location.origin.replace(/^http/, "ws")}/console/v1/live`);
  socket.addEventListener("message", ({ data }) => {
    told = JSON.parse(data);
    show();
    setState(connection, "live");
    write(connection, "Live");
  });
  socket.addEventListener("close", () => {
    setState(connection, "lost");
    write(connection, "Not connected. Trying again…");
    setTimeout(connect, retryAfter);
  });
}

practicePicker.addEventListener("change", show);
byId("message").querySelector("button").addEventListener("click", () => say(""));
setInterval(show, 1000); // waiting times and codes' ends
connect();
