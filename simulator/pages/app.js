// The repository: a tree at the side, and the page that the address names. Addresses are those that clients
// print: app/#zvk1/tcomp/infoPage?oid=ID for an object, and .../URLTemplateAction?...&oid=ID to edit it.
import {ask, element, table} from "./dom.js";

const prefix = document.body.dataset.prefix;
const data = `${prefix}/app/data/`;
const page = document.getElementById("page");
const status = document.getElementById("status");

function infoAddress(id) {
  return `${prefix}/app/#zvk1/tcomp/infoPage?oid=${encodeURIComponent(id)}`;
}

function editAddress(id) {
  return `${prefix}/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction` +
    `?u8&action=MULTIEDITATTR&oid=${encodeURIComponent(id)}`;
}

function documentLink(entry) {
  const by = entry.checkedOutBy ? ` (checked out by ${entry.checkedOutBy})` : "";
  return element("a", {href: infoAddress(entry.id)}, `${entry.cadName} ${entry.version}${by}`);
}

// A folder fills itself when it is opened for the first time.
function folderNode(folder) {
  const inside = element("div", {}, ...folder.folders.map(folderNode));
  const node = element("details", {}, element("summary", {}, folder.name), inside);
  node.addEventListener("toggle", async () => {
    if (!node.open || node.dataset.filled) return;
    node.dataset.filled = "yes";
    const {documents} = await ask(`${data}folder?id=${encodeURIComponent(folder.id)}`);
    inside.append(element("ul", {}, ...documents.map((entry) => element("li", {}, documentLink(entry)))));
    if (documents.length === 0 && folder.folders.length === 0) inside.append(element("p", {class: "quiet"}, "empty"));
  });
  return node;
}

async function showTree() {
  const {contexts} = await ask(`${data}contexts`);
  document.getElementById("tree").replaceChildren(...contexts.map((context) =>
    element("details", {open: contexts.length === 1},
      element("summary", {}, `${context.name} (${context.kind})`), ...context.folders.map(folderNode))));
}

function contentsTable(document) {
  if (document.contents.length === 0) return element("p", {class: "quiet"}, "It has no content.");
  return table("Contents", ["File", "Category", "Bytes", "Kind"], document.contents.map((content) => [
    content.url ? element("a", {href: content.url, download: true}, content.fileName) : content.fileName,
    content.category, String(content.size), content.role]));
}

function factsTable(document) {
  const rows = [["Number", document.number], ["Name", document.name], ["Version", document.version],
    ["Id", document.id], ["Context", document.context], ["Location", document.location || "in a workspace alone"],
    ["Last modified", document.modified]];
  if (document.checkedOutBy) rows.push(["Checked out by", document.checkedOutBy]);
  return table("About it", ["What", "Value"], rows);
}

function versionsTable(document) {
  return table("Versions", ["Version", "Id", "Last modified", "Comment"], document.versions.map((version) => [
    element("a", {href: infoAddress(version.id)}, version.version), version.id, version.modified, version.comment]));
}

function attributesTable(document) {
  if (document.attributes.length === 0) return element("p", {class: "quiet"}, "It has no attributes.");
  return table("Attributes", ["Name", "Value"], document.attributes.map(({name, value}) => [name, value]));
}

async function showDocument(id) {
  const document = await ask(`${data}document?id=${encodeURIComponent(id)}`);
  show(`${document.cadName} ${document.version}`,
    document.editable ? element("p", {}, element("a", {href: editAddress(id)}, "Edit its attributes"))
      : element("p", {class: "quiet"}, `Its attributes cannot be edited: ${document.reason}.`),
    factsTable(document), attributesTable(document), contentsTable(document), versionsTable(document));
}

async function nonceHeader() {
  const answer = await ask(`${prefix}/servlet/rest/security/csrf`, {headers: {Accept: "application/json"}});
  const {nonce_key: name, nonce} = answer.items[0].attributes;
  return {[name]: nonce};
}

function field(name, value) {
  const id = `field-${name}`;
  return element("p", {}, element("label", {for: id}, name), element("br"),
    element("input", {type: "text", id, name, value}));
}

async function save(event, id) {
  event.preventDefault();
  const form = event.target;
  const said = {attributes: {}};
  for (const input of form.querySelectorAll("input[name]")) {
    if (input.value === input.defaultValue) continue;
    if (input.dataset.own) said[input.dataset.own] = input.value;
    else said.attributes[input.name] = input.value;
  }
  const name = form.querySelector("#new-name").value;
  if (name !== "") said.attributes[name] = form.querySelector("#new-value").value;
  try {
    await ask(`${data}document?id=${encodeURIComponent(id)}`, {
      method: "POST",
      headers: {"Content-Type": "application/json", ...await nonceHeader()},
      body: JSON.stringify(said),
    });
    await showEditor(id);
    tell("Saved.");
  } catch (error) {
    tell(`Not saved: ${error.message}.`);
  }
}

function ownField(label, key, value) {
  const made = field(label, value);
  made.querySelector("input").dataset.own = key;
  return made;
}

async function showEditor(id) {
  const document = await ask(`${data}document?id=${encodeURIComponent(id)}&edit=1`);
  const back = element("p", {}, element("a", {href: infoAddress(id)}, "Back to the document"));
  if (!document.editable) return show(`Attributes of ${document.cadName}`, back,
    element("p", {}, `They cannot be edited: ${document.reason}.`), attributesTable(document));
  const copy = document.id === id ? null
    : element("p", {}, "It is checked out by you: this is the working copy ",
      element("a", {href: infoAddress(document.id)}, document.id), ".");
  show(`Attributes of ${document.cadName}`, back, copy,
    element("form", {id: "attributes", onsubmit: (event) => save(event, id)},
      ownField("Name", "name", document.name), ownField("Number", "number", document.number),
      ...document.attributes.map(({name, value}) => field(name, value)),
      element("fieldset", {}, element("legend", {}, "One more"),
        element("p", {class: "row"}, element("label", {for: "new-name"}, "Name"),
          element("input", {type: "text", id: "new-name"}), element("label", {for: "new-value"}, "Value"),
          element("input", {type: "text", id: "new-value"}))),
      element("button", {type: "submit"}, "Save")));
}

async function showWorkspaces() {
  const {workspaces} = await ask(`${data}workspaces`);
  show("Workspaces", ...workspaces.flatMap((workspace) => [
    element("h3", {}, `${workspace.name} (${workspace.context})`),
    element("p", {class: "quiet"}, `${workspace.description} ${workspace.id}`),
    workspace.documents.length === 0 ? element("p", {class: "quiet"}, "It is empty.")
      : element("ul", {}, ...workspace.documents.map((entry) => element("li", {}, documentLink(entry))))]),
  workspaces.length === 0 ? element("p", {}, "This user has none.") : null);
}

// The heading gets the focus, so that a screen reader says where it is and the keyboard goes on from there.
function show(title, ...children) {
  document.title = `${title} - vantry-sim`;
  const heading = element("h2", {tabindex: "-1"}, title);
  page.replaceChildren(heading, ...children.filter((child) => child !== null));
  heading.focus();
}

function tell(text) {
  status.textContent = text;
}

async function route() {
  tell("");
  try {
    const hash = decodeURI(location.hash);
    if (location.pathname.endsWith("URLTemplateAction")) {
      await showEditor(new URLSearchParams(location.search).get("oid") ?? "");
    } else if (hash.includes("infoPage?")) {
      await showDocument(new URLSearchParams(location.hash.slice(location.hash.indexOf("?"))).get("oid") ?? "");
    } else if (hash === "#workspaces") {
      await showWorkspaces();
    } else {
      show("Repository", element("p", {}, "Open a folder at the side to see its documents."));
    }
  } catch (error) {
    show("Not found", element("p", {}, `${error.message}.`));
  }
}

addEventListener("hashchange", route);
showTree().catch((error) => tell(`The tree could not be read: ${error.message}.`));
route();
