"""The documents that the pages of the tests are made from, and what a reader finds in a page."""

import copy
import html.parser
import json
import pathlib
import re
import subprocess

SAMPLES = pathlib.Path(__file__).resolve().parent.parent / "samples"
HOSTILE = '<script>document.title="taken"</script><b onload=x>"\'&amp;\u202Eback\x1b[31m\x00'
LONG = "W" * 400
CJK = "長い名前" * 60


def sample(name: str) -> dict:
    return json.loads((SAMPLES / f"{name}.json").read_text())


def odd_run() -> dict:
    """A run in which everything went wrong, in words that try to be more than words."""
    run = copy.deepcopy(sample("matrix")["cases"][1]["report"])
    run.update(root=f"/srv/{HOSTILE}/{LONG}", bundle=f"/srv/{CJK}.bundle", dryRun=False, leftProcesses=[HOSTILE])
    run["user"]["name"] = HOSTILE
    run["alerts"] = [
        {"title": "An alert", "text": f"Two lines:\n{HOSTILE}{LONG}", "buttons": ["OK", LONG], "answer": "OK", "answeredBy": "user"},
        {"title": HOSTILE, "text": "", "buttons": [HOSTILE], "answer": None, "answeredBy": None},
    ]
    run["notStored"] = [{"what": HOSTILE, "reason": "No space left on device"}]
    run["unreadable"] = [{"path": f"/Library/{CJK}", "pathBytes": "2fff", "what": "property list", "problem": HOSTILE}]
    run["steps"][0].update(outcome="exception", fault="std::runtime_error", faultMessage=f"fire\n{HOSTILE}")
    run["finderFlags"][0]["after"] = {"exists": True, "flags": None, "problem": HOSTILE}
    nested = [{"type": "string", "value": HOSTILE}, {"type": "data", "value": "00ff" * 90}, {"type": "array", "value": []}]
    run["preferences"][0]["after"] = {"type": "dictionary", "value": {HOSTILE: {"type": "array", "value": nested}}}
    run["preferences"][1].update(change="changed", before={"type": "string", "value": CJK}, key=LONG)
    run["preferences"][2].update(change="removed", before={"type": "real", "value": 1.5}, after=None, key=HOSTILE)
    moved, link, created = run["entries"][1], run["entries"][2], run["entries"][4]
    moved.update({"change": "moved", "from": f"/{LONG}", "replaced": "folder"}, differs=["contents", "mode", "owner", "attributes"])
    moved["after"].update(size=7, mode="0600", owner=501, attributes={HOSTILE: "01", "user.kept": "02"})
    moved["before"]["attributes"] = {"user.gone": "03", "user.kept": "04"}
    link["after"].update(type="link", target=f"/{HOSTILE}", targetBytes="ff00")
    created.update(path=f"/Library/{CJK}{HOSTILE}", pathBytes="2f00")
    run["error"].update(status=5, whatToDo=f"Try\n{LONG}")
    run["exitStatus"] = 5
    run["newer"] = {"list": [{"aMember": HOSTILE}, 1.5, None], "flag": True}
    return run


def odd_matrix() -> dict:
    """The sample of a matrix, with that run in place of a case's."""
    matrix = sample("matrix")
    matrix["cases"][1].update(report=odd_run(), messages=f"said\n{HOSTILE}")
    return matrix


class Page(html.parser.HTMLParser):
    """The elements and the text of a page. Ends the test when tags are not balanced."""

    VOID = {"meta", "br", "wbr"}

    def __init__(self, source: str) -> None:
        super().__init__()
        self.elements: list[tuple[str, dict]] = []
        self.words: list[str] = []
        self.open: list[str] = []
        self.feed(source)
        self.close()
        assert not self.open, f"not closed: {self.open}"

    def handle_starttag(self, tag: str, attrs: list) -> None:
        assert len(attrs) == len(dict(attrs)), f"an attribute twice: {tag} {attrs}"
        self.elements.append((tag, dict(attrs)))
        if tag not in self.VOID:
            self.open.append(tag)

    def handle_endtag(self, tag: str) -> None:
        assert self.open.pop() == tag, f"</{tag}> where it does not belong"

    def handle_data(self, data: str) -> None:
        if self.open and self.open[-1] not in ("style", "script"):
            self.words.append(data)

    def named(self, *tags: str) -> list[dict]:
        return [attributes for tag, attributes in self.elements if tag in tags]

    @property
    def text(self) -> str:
        """Without white space, at which a report may break a line anywhere."""
        return re.sub(r"\s", "", "".join(self.words))


def page_of(program: str, document: dict) -> str:
    return subprocess.run([program], input=json.dumps(document), capture_output=True, text=True, check=True).stdout
