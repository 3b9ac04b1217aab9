// Small helpers that both pages use. Texts from the server become text nodes and never markup.

// element("a", {href: "#x"}, "text", child): a new element with attributes, texts and children.
export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value === false || value === null || value === undefined) continue;
    if (key.startsWith("on")) made.addEventListener(key.slice(2), value);
    else made.setAttribute(key, value === true ? "" : value);
  }
  made.append(...children.filter((child) => child !== null && child !== undefined));
  return made;
}

// A table with a caption; each row is a list of cells, the first of which names the row.
export function table(caption, heads, rows) {
  return element("table", {},
    element("caption", {}, caption),
    element("thead", {}, element("tr", {}, ...heads.map((head) => element("th", {scope: "col"}, head)))),
    element("tbody", {}, ...rows.map((cells) => element("tr", {}, ...cells.map((cell, index) =>
      element(index === 0 ? "th" : "td", index === 0 ? {scope: "row"} : {}, cell ?? ""))))));
}

// The JSON of an answer; an error with the server's own reason for any other than a 2xx.
export async function ask(url, options = {}) {
  const response = await fetch(url, options);
  const text = await response.text();
  let body = null;
  try {
    body = text === "" ? null : JSON.parse(text);
  } catch {
    // A fault may have put any bytes in the place of JSON.
  }
  if (response.ok) return body;
  const error = new Error(body?.error?.message ?? `the server answered ${response.status}`);
  error.status = response.status;
  error.body = body;
  throw error;
}
