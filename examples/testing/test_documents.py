"""What a host's own tests may look like, of a host that is a program: vtdirect."""
import os
import subprocess

FRAME = "//plm/Products/Trekking Bike/Folders/Frame/frame.lxz"


def vtdirect(plm, *arguments):
    return subprocess.run(
        [os.environ.get("VTDIRECT", "vtdirect"), "--server", f"plm={plm.url}", *arguments],
        capture_output=True, text=True)


def test_document_is_fetched(plm, tmp_path):
    assert vtdirect(plm, "get", FRAME, "-o", tmp_path / "frame").returncode == 0
    assert (tmp_path / "frame").read_text() == "The second frame."


def test_half_a_document_is_none(plm, tmp_path):
    plm.control("POST", "faults", {"rule": "GET *content/streams/*=cut:7"})
    assert vtdirect(plm, "get", FRAME, "-o", tmp_path / "frame").returncode == 7
    assert not (tmp_path / "frame").exists()


def test_content_is_asked_for_once(plm, tmp_path):
    assert vtdirect(plm, "get", FRAME, "-o", tmp_path / "frame").returncode == 0
    asked = plm.control("GET", "requests?path=*content/streams/*&count=1&wait=5000")["requests"]
    assert [request["status"] for request in asked] == [200]


def test_version_of_somebody_else_is_seen(plm):
    plm.control("POST", "documents/D1/iterate", {"user": "bruno", "content": "The third frame."})
    assert "A.3" in vtdirect(plm, "versions", FRAME).stdout
