"""The pages of vantry-sim in a real browser, beside vtdirect: pages_test.py VANTRY_SIM VTDIRECT."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import urllib.request

import browser

TAB, ENTER, SPACE = "\ue004", "\ue007", " "
HOSTILE = "<script>document.title='taken over'</script>"
HOSTILE_ATTRIBUTE = "\"><img src=x onerror=\"document.title='taken over'\">"
STATE = {
    "users": ["anna"],
    "contexts": [{"name": "Bike", "folders": [{"name": "Default", "folders": ["Frame"]}]}],
    "workspaces": [{"name": "Bench", "owner": "anna", "context": "Bike"}],
    "documents": [
        {"cadName": "fork.lxz", "id": "D1", "number": "F-1", "folder": "Bike/Default/Frame", "content": "a fork",
         "version": "B.2", "attributes": {"COLOUR": "blue"}},
        {"cadName": "crank.lxz", "id": "D2", "number": "C-1", "folder": "Bike/Default/Frame", "content": "a crank"},
        {"cadName": HOSTILE, "id": "D3", "folder": "Bike/Default/Frame", "content": "x",
         "attributes": {HOSTILE_ATTRIBUTE: HOSTILE_ATTRIBUTE}},
    ],
}
SIMULATOR, VTDIRECT = (os.path.abspath(program) for program in sys.argv[1:3])


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.temporary.cleanup)
        cls.directory = pathlib.Path(cls.temporary.name)
        state = cls.directory / "state.json"
        state.write_text(json.dumps(STATE))
        cls.server = subprocess.Popen(
            [SIMULATOR, "--data", cls.directory / "data", "--port", "0", "--admin-port", "0", "--prefix", "/vt",
             "--seed", f"file:{state}"], stdout=subprocess.PIPE, text=True)
        cls.addClassCleanup(cls.server.wait)
        cls.addClassCleanup(cls.server.terminate)
        cls.addClassCleanup(cls.server.stdout.close)
        cls.url, cls.admin = re.findall(r"http://\S+", cls.server.stdout.readline())
        cls.browser = browser.Browser(cls.directory)
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.control("POST", "reset")

    def control(self, method, path, body=None):
        request = urllib.request.Request(self.admin + path, json.dumps(body).encode() if body else None, method=method)
        with urllib.request.urlopen(request, timeout=10) as answer:
            return answer.read()

    def vtdirect(self, *arguments):
        home = {"HOME": str(self.directory), "XDG_CONFIG_HOME": str(self.directory), "no_proxy": "127.0.0.1"}
        return subprocess.run([VTDIRECT, "--server", f"plm={self.url}", *arguments], capture_output=True, text=True,
                              env={"PATH": os.environ["PATH"], **home}, cwd=self.directory, timeout=30)

    def said(self, *arguments):
        result = self.vtdirect(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout.strip()

    def test_browse_url_leads_to_the_document(self):
        self.browser.open(self.said("browse-url", "//plm/Products/Bike/Folders/Frame/fork.lxz"))
        self.browser.wait_for_text("h2", "fork.lxz B.2")
        self.assertIn("F-1", self.browser.text("table"))
        self.assertIn("COLOUR", self.browser.text("main"))

    def test_edit_url_leads_to_the_form_that_changes_what_vtdirect_sees(self):
        path = "//plm/Products/Bike/Folders/Frame/crank.lxz"
        working = self.said("checkout", path)
        self.browser.open(self.said("edit-url", working))
        self.browser.type(self.browser.find("input[name=Number]"), "C-2")
        self.browser.type(self.browser.find("#new-name"), "COLOUR")
        self.browser.type(self.browser.find("#new-value"), "red <b>")
        self.browser.click(self.browser.find_text("button", "Save"))
        self.browser.wait_for_text("#status", "Saved.")
        self.assertIn("number: C-2\n", self.said("info", working) + "\n")
        self.assertEqual(self.browser.run("return document.querySelector('input[name=COLOUR]').value"), "red <b>")
        # The attribute is the working copy's, which the page leads to, and the document's after the check-in.
        self.browser.click(self.browser.find("main p:nth-of-type(2) a"))
        self.browser.wait_for_text("main", "red <b>")
        self.browser.open(self.said("browse-url", path))
        self.browser.wait_for_text("main", "It has no attributes.")

    def test_document_that_cannot_be_edited_says_why(self):
        self.control("POST", "documents/D2/checkout", {"user": "bruno"})
        self.browser.open(f"{self.url}servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction"
                          "?u8&action=MULTIEDITATTR&oid=D2")
        self.browser.wait_for_text("main", "checked out by bruno")
        self.assertFalse(self.browser.run("return document.querySelector('form')"))

    def test_unknown_document_is_told(self):
        self.browser.open(f"{self.url}app/#zvk1/tcomp/infoPage?oid=D99")
        self.browser.wait_for_text("h2", "Not found")

    def test_tree_opens_and_leads_to_documents(self):
        self.browser.open(f"{self.url}app/")
        self.browser.click(self.browser.find_text("nav summary", "Default"))
        self.browser.click(self.browser.find_text("nav summary", "Frame"))
        self.browser.click(self.browser.find_text("nav a", "fork.lxz"))
        self.browser.wait_for_text("h2", "fork.lxz B.2")
        self.browser.click(self.browser.find_text("header a", "Workspaces"))
        self.browser.wait_for_text("main", "Bench")

    def test_keyboard_alone_leads_to_a_document_whose_heading_gets_the_focus(self):
        self.browser.open(f"{self.url}app/")
        self.browser.find_text("nav summary", "Default")
        focused = "return document.activeElement.innerText"
        self.browser.run("document.querySelector('.skip').focus()")
        for wanted in ("Default", "Frame"):
            self.browser.wait_for(f"focus on {wanted}",
                                  lambda: self.browser.press(TAB) or self.browser.run(focused) == wanted)
            self.browser.press(ENTER)
        self.browser.find_text("nav a", "fork.lxz")
        self.browser.wait_for("focus on the fork",
                              lambda: self.browser.press(TAB) or "fork.lxz" in self.browser.run(focused))
        self.browser.press(ENTER)
        self.browser.wait_for("focus on the heading", lambda: self.browser.run(focused) == "fork.lxz B.2")

    def test_texts_of_the_server_are_never_markup(self):
        self.browser.open(f"{self.url}app/#zvk1/tcomp/infoPage?oid=D3")
        self.browser.wait_for_text("h2", HOSTILE)
        self.assertIn(HOSTILE_ATTRIBUTE, self.browser.text("main"))
        self.assertNotEqual(self.browser.run("return document.title"), "taken over")
        urllib.request.urlopen(f"{self.url}app/?oid=%22%3E%3Cimg%20src=x%20onerror=alert(1)%3E", timeout=10).close()
        self.browser.open(self.admin)
        self.browser.find_text("#requests tr", "onerror")
        self.assertEqual(self.browser.run("return document.querySelectorAll('img').length"), 0)
        self.control("POST", "faults", {"rule": f"GET /{HOSTILE}=503"})
        self.browser.find_text("#faults code", HOSTILE)
        self.assertEqual(self.browser.run("return document.querySelectorAll('main script').length"), 0)

    def test_live_view_shows_a_get_as_it_comes(self):
        self.browser.open(self.admin)
        self.browser.find("#switches input")
        self.said("get", "//plm/?id=D1", "-o", str(self.directory / "fetched"))
        self.browser.find_text("#requests tr", "/servlet/rest/v1/dkm/documents/D1")
        row = self.browser.run("return [...document.querySelectorAll('#requests tr')]"
                               ".find((r) => r.innerText.includes('content/streams')).innerText")
        self.assertIn("200", row)

    def test_switched_fault_makes_vtdirect_fail_until_it_is_switched_off(self):
        target = str(self.directory / "refused")
        self.browser.open(self.admin)
        label = self.browser.find_text("#switches label", "Downloads answer 503")
        self.browser.click(label)
        self.browser.wait_for_text("#status", "On: Downloads answer 503.")
        self.assertNotEqual(self.vtdirect("get", "//plm/?id=D1", "-o", target).returncode, 0)
        self.assertFalse(os.path.exists(target))
        self.browser.wait_for_text("#faults", "GET *content/streams/*=503")
        self.browser.find_text("#requests td.bad", "503")
        # By the keyboard this time: the switch has kept the focus.
        self.browser.run("document.querySelector('#switches input').focus()")
        self.browser.press(SPACE)
        self.browser.wait_for_text("#status", "Off: Downloads answer 503.")
        self.said("get", "//plm/?id=D1", "-o", target)

    def test_own_rule_is_added_removed_and_judged(self):
        self.browser.open(self.admin)
        self.browser.type(self.browser.find("#rule"), "GET *=nonsense")
        self.browser.press(ENTER)
        self.browser.wait_for_text("#status", "unknown action")
        self.browser.type(self.browser.find("#rule"), "GET *OrvetGW=418*2")
        self.browser.press(ENTER)
        self.browser.find_text("#faults tr", "GET *OrvetGW=418*2")
        self.browser.click(self.browser.find("#faults button"))
        self.browser.wait_for("an empty table", lambda: self.browser.text("#faults") == "")

    def test_pages_have_names_for_whoever_cannot_see_them(self):
        for url in (f"{self.url}app/#zvk1/tcomp/infoPage?oid=D1", self.admin,
                    f"{self.url}servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?oid=D1"):
            self.browser.open(url)
            self.browser.find("main table, main form input")
            problems = self.browser.run("""
                const bad = [];
                if (document.documentElement.lang !== "en") bad.push("no language");
                if (document.querySelectorAll("main").length !== 1) bad.push("not one main");
                if (document.querySelectorAll("h1").length !== 1) bad.push("not one h1");
                for (const input of document.querySelectorAll("input"))
                  if (input.labels.length === 0 && !input.ariaLabel) bad.push("input without a label: " + input.id);
                for (const button of document.querySelectorAll("button"))
                  if (!(button.ariaLabel || button.innerText)) bad.push("button without a name");
                for (const table of document.querySelectorAll("table"))
                  if (table.caption === null) bad.push("table without a caption");
                if (document.querySelector("[role=status]") === null) bad.push("nothing speaks");
                return bad;""")
            self.assertEqual(problems, [], url)

    def test_dark_and_light_have_enough_contrast(self):
        grounds = set()
        for scheme in ("light", "dark"):
            self.browser.command("Emulation.setEmulatedMedia",
                                 features=[{"name": "prefers-color-scheme", "value": scheme}])
            self.browser.open(self.admin)
            colours = self.browser.run("""
                const style = getComputedStyle(document.documentElement);
                return Object.fromEntries(["ground", "panel", "text", "quiet", "accent", "good", "bad"]
                  .map((name) => [name, style.getPropertyValue("--" + name).trim()]));""")
            grounds.add(colours["ground"])
            for name in ("text", "quiet", "accent", "good", "bad"):
                for ground in ("ground", "panel"):
                    self.assertGreaterEqual(contrast(colours[name], colours[ground]), 4.5, f"{scheme}: {name} on {ground}")
        self.assertEqual(len(grounds), 2)


def contrast(one, other):
    """The contrast ratio of two colours (WCAG 2.1)."""
    def luminance(colour):
        parts = [int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)]
        red, green, blue = (p / 12.92 if p <= 0.03928 else ((p + 0.055) / 1.055) ** 2.4 for p in parts)
        return 0.2126 * red + 0.7152 * green + 0.0722 * blue
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


if __name__ == "__main__":
    if lacking := browser.missing():
        print(f"Not run: there is no {' and no '.join(lacking)} here; scripts/setup installs them where Debian has them.")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0]])
