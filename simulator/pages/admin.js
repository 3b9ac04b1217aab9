// The live view of a server: its faults with switches, and the requests as they come.
import {ask, element} from "./dom.js";

// What people try first. A switch is on while its rule is in force.
const switches = [
  ["Downloads answer 503", "GET *content/streams/*=503"],
  ["Downloads break off after 1000 bytes", "GET *content/streams/*=cut:1000"],
  ["Downloads come at 10 kB a second", "GET *content/streams/*=slow:10000"],
  ["Downloads have a wrong bit", "GET *content/streams/*=corrupt"],
  ["Writes are carried out, and their answers lost", "POST *=lost-answer"],
  ["Writes answer 500", "POST *=500"],
  ["Every fifth answer is 503", "* *=chance:20,503"],
  ["Every answer takes a second longer", "* *=delay:1000"],
  ["Every connection is dropped", "* *=drop"],
  ["Sessions end with each request", "* *=expire-session"],
];

const mostRows = 500;
const status = document.getElementById("status");
const rows = document.getElementById("requests");
let mark = 0;

function tell(text) {
  status.textContent = text;
}

// Runs what a person asked for, and says why when it fails.
function tried(action) {
  return async (event) => {
    event.preventDefault();
    try {
      tell((await action(event)) ?? "");
    } catch (error) {
      tell(`That failed: ${error.message}`);
    }
    await showFaults();
  };
}

function post(path, body) {
  return ask(path, {method: "POST", headers: {"Content-Type": "application/json"}, body: JSON.stringify(body)});
}

function remove(path) {
  return ask(path, {method: "DELETE"});
}

function faultRow(fault) {
  return element("tr", {}, element("th", {scope: "row"}, element("code", {}, fault.rule)),
    element("td", {}, String(fault.matches)), element("td", {}, String(fault.met)),
    element("td", {}, fault.left === null ? "all" : String(fault.left)),
    element("td", {}, element("button", {
      type: "button", "aria-label": `Remove ${fault.rule}`, onclick: tried(() => remove(`faults/${fault.id}`)),
    }, "Remove")));
}

function switchFor([label, rule], faults) {
  const fault = faults.find((entry) => entry.rule === rule);
  const box = element("input", {type: "checkbox", role: "switch", checked: fault !== undefined});
  box.addEventListener("change", tried(async () => {
    if (box.checked) await post("faults", {rule});
    else if (fault) await remove(`faults/${fault.id}`);
    return box.checked ? `On: ${label}.` : `Off: ${label}.`;
  }));
  return element("label", {}, box, element("span", {}, label), element("code", {class: "quiet"}, rule));
}

// Rows and switches are only made again when something changed, so that nobody loses the focus.
let shown = "";
async function showFaults() {
  const {faults} = await ask("faults");
  const now = JSON.stringify(faults);
  if (now === shown) return;
  shown = now;
  const box = document.getElementById("switches");
  const focused = [...box.querySelectorAll("input")].indexOf(document.activeElement);
  box.replaceChildren(element("legend", {}, "Switches"), ...switches.map((entry) => switchFor(entry, faults)));
  if (focused >= 0) box.querySelectorAll("input")[focused].focus();
  document.getElementById("faults").replaceChildren(...faults.map(faultRow));
}

function requestRow(request) {
  const good = request.status >= 200 && request.status < 400;
  const details = request.body === null ? request.path
    : element("details", {}, element("summary", {}, request.path), element("code", {}, JSON.stringify(request.body)));
  return element("tr", {id: `request-${request.id}`, "data-id": String(request.id)},
    element("th", {scope: "row"}, String(request.id)), element("td", {}, request.time.slice(11, 23)),
    element("td", {}, request.method), element("td", {}, details),
    element("td", {class: good ? "good" : "bad"}, request.status === 0 ? "none" : String(request.status)),
    element("td", {}, String(request.answerBytes)), element("td", {}, (request.microseconds / 1000).toFixed(1)),
    element("td", {}, request.user), element("td", {}, request.fault === null ? "" : `rule ${request.fault}`));
}

function pattern() {
  return encodeURIComponent(document.getElementById("pattern").value || "*");
}

// A late answer gets its row after those that overtook it, so every question reaches back a little.
const overlap = 100;

function requestsSince(since, wait) {
  return ask(`requests?path=${pattern()}&since=${Math.max(0, since)}${wait}`);
}

// Asks again and again for what came since; the server holds each question until there is something.
async function follow() {
  for (;;) {
    try {
      const wanted = pattern();
      await requestsSince(mark, "&wait=2000").catch((error) => (error.status === 504 ? null : Promise.reject(error)));
      const {requests} = await requestsSince(mark - overlap, "");
      if (wanted === pattern()) requests.forEach(addRequest);
      await showFaults();
    } catch (error) {
      tell(`The server doesn't answer: ${error.message}`);
      await new Promise((resolve) => setTimeout(resolve, 1000));
    }
  }
}

function addRequest(request) {
  if (document.getElementById(`request-${request.id}`) !== null) return;
  mark = Math.max(mark, request.id);
  const older = [...rows.children].find((row) => Number(row.dataset.id) < request.id) ?? null;
  rows.insertBefore(requestRow(request), older);
  while (rows.children.length > mostRows) rows.lastElementChild.remove();
}

function startOver() {
  mark = 0;
  rows.replaceChildren();
}

document.getElementById("add-fault").addEventListener("submit", tried(async () => {
  const input = document.getElementById("rule");
  await post("faults", {rule: input.value});
  input.value = "";
  return "Added.";
}));
document.getElementById("clear-faults").addEventListener("click", tried(() => remove("faults")));
document.getElementById("clear-requests").addEventListener("click", tried(async () => {
  await remove("requests");
  startOver();
}));
document.getElementById("reset").addEventListener("click", tried(async () => {
  const {milliseconds} = await post("reset", {});
  startOver();
  return `Everything is as it was at the start, after ${milliseconds} ms.`;
}));
document.getElementById("pattern").addEventListener("change", startOver);

ask("status").then(({url, generation}) => {
  document.getElementById("server").replaceChildren(element("a", {href: `${url}app/`}, url), ` ${generation}`);
});
showFaults();
follow();
