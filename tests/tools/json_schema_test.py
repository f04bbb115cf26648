#!/usr/bin/python3
"""Whether what each command prints with --json is what its schema in docs/json/ says, and nothing more.

usage: json_schema_test.py PROGRAM SAMPLES
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

try:
    import jsonschema
except ImportError:
    jsonschema = None

PROGRAM, SAMPLES = None, None
SCHEMAS = pathlib.Path(__file__).resolve().parents[2] / "docs" / "json"
HOSTILE_NAME = "\x1b[31m$(touch x) </script>\n\u202eword"
LOCKED_MANIFEST = """<?xml version="1.0"?>
<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0">
<manifest:file-entry manifest:full-path="/" manifest:media-type="application/vnd.oasis.opendocument.text"/>
<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml" manifest:size="9">
<manifest:encryption-data manifest:checksum-type="SHA1/1K" manifest:checksum="x"/></manifest:file-entry>
</manifest:manifest>"""


def load_schemas():
    return {path.name: json.loads(path.read_text()) for path in sorted(SCHEMAS.glob("*.schema.json"))}


def objects_in(schema):
    """The parts of a schema that describe objects."""
    if isinstance(schema, dict):
        if schema.get("type") == "object" and "properties" in schema:
            yield schema
        for part in schema.values():
            yield from objects_in(part)
    elif isinstance(schema, list):
        for part in schema:
            yield from objects_in(part)


def commands_with_json(command, name=""):
    for one in command["commands"]:
        full = f"{name}-{one['name']}".strip("-")
        if any("--json" in option["names"] for option in one["options"]):
            yield full
        yield from commands_with_json(one, full)


class Documents:
    """A folder with documents of all fates."""

    def __init__(self, folder):
        self.folder = folder
        self.good = SAMPLES / "harbour-report.docx"
        self.empty = self.write("empty.txt", b"")
        self.wordless = self.write("wordless.txt", b"1 2 3 ... !!!\n")
        self.unknown = self.write("unknown.bin", bytes(range(256)) * 8)
        self.damaged = self.write("damaged.docx", self.good.read_bytes()[:3000])
        self.damaged_page = self.write("cut.pdf", (SAMPLES / "软件开发合同.pdf").read_bytes()[:20000])
        self.hostile = self.write(HOSTILE_NAME.replace("/", "") + ".txt", "vessel </script> \u2028 harbour\n".encode() * 9)
        self.bytes_name = self.write(b"\xff\xfe.txt", b"harbour " * 20)
        self.missing = folder / "missing.txt"
        self.locked = folder / "locked.odt"
        with zipfile.ZipFile(self.locked, "w") as archive:
            archive.writestr("mimetype", "application/vnd.oasis.opendocument.text")
            archive.writestr("content.xml", b"encrypted")
            archive.writestr("META-INF/manifest.xml", LOCKED_MANIFEST)

    def write(self, name, content):
        path = os.path.join(os.fsencode(self.folder), os.fsencode(name))
        with open(path, "wb") as file:
            file.write(content)
        return path

    def all(self):
        return [self.good, self.empty, self.wordless, self.unknown, self.damaged, self.damaged_page, self.hostile,
                self.bytes_name, self.missing, self.locked, SAMPLES / "软件开发合同.pdf"]


@unittest.skipUnless(jsonschema, "python3-jsonschema is not installed")
class JsonOutput(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.schemas = load_schemas()
        cls.scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.scratch.cleanup)
        cls.folder = pathlib.Path(cls.scratch.name)
        documents = cls.folder / "documents"
        documents.mkdir()
        cls.documents = Documents(documents)
        cls.boxes = cls.folder / "boxes"
        cls.learning = cls.learn_folder()
        cls.run_program("learn", cls.learning, "--by-folder", "--box", "centers")
        cls.run_program("learn", cls.learning, "--by-folder", "--box", "files", "-m", "dbscan", "--eps", "1.5",
                        "--minpts", "1")

    @classmethod
    def learn_folder(cls):
        """A few samples in folders, of which one has a hostile name."""
        folder = cls.folder / "learn"
        corpus = SAMPLES / "corpus" / "learn"
        for source in ["invoices", "采购合同", "travel-reports"]:
            name = HOSTILE_NAME.replace("/", "") if source == "travel-reports" else source
            (folder / name).mkdir(parents=True)
            for file in sorted((corpus / source).iterdir())[:4]:
                shutil.copy(file, folder / name)
        (folder / "stray.txt").write_text("in no folder\n")
        return folder

    @classmethod
    def run_program(cls, *words):
        environment = {**os.environ, "MORVA_BOX_PATH": str(cls.boxes), "MORVA_LOG_LEVEL": "0"}
        return subprocess.run([PROGRAM, *words], capture_output=True, env=environment)

    def check(self, schema_name, *words, lines=None):
        """Runs a command, and gives its objects, which are as the schema says, one in each line."""
        name = schema_name + ".schema.json"
        uri = SCHEMAS.as_uri() + "/"
        store = {uri + other: schema for other, schema in self.schemas.items()}
        resolver = jsonschema.RefResolver(uri + name, self.schemas[name], store=store)
        validator = jsonschema.Draft202012Validator(self.schemas[name], resolver=resolver)
        finished = self.run_program(*words, "--json")
        *output, end = finished.stdout.decode().split("\n")
        self.assertEqual(end, "")
        objects = [json.loads(line) for line in output]
        for one in objects:
            error = jsonschema.exceptions.best_match(validator.iter_errors(one))
            self.assertIsNone(error, f"{words}: {error and error.message}\n{json.dumps(one)[:500]}")
        if lines is not None:
            self.assertEqual(len(objects), lines, finished.stderr.decode(errors="replace"))
        return objects

    def outcomes(self, objects):
        return {one.get("outcome") or one["error"]["outcome"] for one in objects}

    def test_features(self):
        documents = self.documents.all()
        found = self.check("features", "features", *documents, lines=len(documents))
        self.assertLessEqual({"text", "encrypted", "no text", "failed", "not supported"}, self.outcomes(found))

    def test_dna(self):
        documents = self.documents.all()
        self.check("dna", "dna", *documents, lines=len(documents))
        self.check("dna", "dna", "--wide", self.documents.good, lines=1)

    def test_text(self):
        documents = self.documents.all()
        self.check("text", "text", *documents, lines=len(documents))
        self.check("text", "text", "--kind", "all", *documents, lines=len(documents))

    def test_collect(self):
        documents = self.documents.all()
        self.check("collect", "collect", *documents, lines=len(documents))

    def test_compare(self):
        found = self.check("compare", "compare", self.documents.good, self.documents.hostile, lines=1)
        self.assertTrue(found[0]["too_short_to_judge"])
        self.check("compare", "compare", self.documents.missing, self.documents.locked, lines=2)

    def test_cluster(self):
        inputs = [self.learning, self.documents.folder]
        for method in (["kmeans", "-k", "3"], ["kmedians", "--canopy-seeds"], ["canopy"], ["dbscan"],
                       ["dbscan", "--eps", "0.001"], ["kmeans", "-k", "2", "--dna"]):
            found = self.check("cluster", "cluster", *inputs, "-m", *method, lines=1)
            self.assertIn("encrypted", {one["error"]["outcome"] for one in found[0]["failed"]})
        self.check("cluster", "cluster", *inputs, "-m", "canopy", "-o", self.folder / "lists", lines=1)
        self.check("cluster", "cluster", self.documents.empty, "-m", "canopy", lines=0)

    def test_learn(self):
        found = self.check("learn", "learn", self.learning, "--by-folder", "--box", "again", lines=1)
        self.assertEqual(len(found[0]["classes"]), 3)
        self.check("learn", "learn", self.learning, "--box", "found", "-m", "dbscan", "--eps", "2.2", lines=1)
        self.check("learn", "learn", self.learning, "--box", "again", "-k", "2", lines=0)
        for box in ("again", "found"):
            self.run_program("box", "remove", box)

    def test_shards(self):
        first, second = self.folder / "first.shard", self.folder / "second.shard"
        found = self.check("extract", "extract", *self.documents.all(), "-o", first, lines=1)
        self.assertGreater(found[0]["failed_count"], 2)
        self.check("extract", "extract", self.learning, "--part", "1/2", "-o", second, lines=1)
        self.check("merge", "merge", first, second, "-o", self.folder / "all.shard", lines=1)
        self.check("similar", "similar", "--from", first, second)
        self.check("extract", "extract", first, "-o", self.documents.good, lines=0)

    def test_match(self):
        inputs = [self.learning, *self.documents.all()]
        for box in ("centers", "files"):
            found = self.check("match", "match", *inputs, "--box", box)
            self.assertTrue(any(one.get("class") for one in found))
            self.assertTrue(any("class" in one and one["class"] is None for one in found))
            self.assertLessEqual({"encrypted", "failed"}, {one["error"]["outcome"] for one in found if "error" in one})
        self.check("match", "match", self.documents.good, "--box", "no such box", lines=0)

    def test_similar(self):
        inputs = [self.learning, *self.documents.all()]
        for options in ([], ["--threshold", "55"], ["--threshold", "70", "--pairs"]):
            self.check("similar", "similar", *inputs, *options)
        self.check("similar", "similar", self.documents.good, lines=1)

    def test_suggest(self):
        self.check("suggest", "suggest", self.learning, "--by-folder", lines=1)
        found = self.check("suggest", "suggest", self.learning, self.documents.folder, lines=1)
        self.assertIn("encrypted", {one["error"]["outcome"] for one in found[0]["failed"]})
        self.check("suggest", "suggest", self.documents.good, lines=0)

    def test_boxes(self):
        self.check("box-list", "box", "list", lines=2)
        for box in ("centers", "files"):
            self.check("box-show", "box", "show", box, lines=1)
            self.check("box-dump", "box", "dump", self.boxes / f"{box}.box", lines=1)
        self.check("box-show", "box", "show", "no such box", lines=1)
        self.check("box-dump", "box", "dump", self.documents.damaged, lines=0)

    def test_changes_of_boxes(self):
        copy = self.folder / "copy.box"
        shutil.copy(self.boxes / "centers.box", copy)
        self.check("box-add", "box", "add", copy, lines=1)
        self.assertIn("error", self.check("box-add", "box", "add", copy, lines=1)[0])
        (self.boxes / "copy.box").write_bytes(b"no box")
        self.assertIn("error", self.check("box-list", "box", "list", lines=3)[1 + 1])
        self.assertTrue(self.check("box-verify", "box", "verify", "copy", lines=1)[0]["problems"])
        self.assertFalse(self.check("box-verify", "box", "verify", "centers", lines=1)[0]["problems"])
        self.check("box-remove", "box", "remove", "copy", lines=1)
        self.assertIn("error", self.check("box-remove", "box", "remove", "copy", lines=1)[0])

    def test_version_and_help(self):
        self.check("version", "version", lines=1)
        self.check("help", "help", lines=1)
        self.check("help", "help", "box", "add", lines=1)


class Schemas(unittest.TestCase):
    def test_each_command_with_json_has_one(self):
        program = json.loads(subprocess.run([PROGRAM, "help", "--json"], check=True, capture_output=True).stdout)
        named = {name.removesuffix(".schema.json") for name in load_schemas()} - {"common"}
        self.assertEqual(set(commands_with_json(program)), named)

    def test_they_describe_each_field_and_allow_no_other(self):
        schemas = load_schemas()
        for name, schema in schemas.items():
            for part in objects_in(schema):
                self.assertIs(part.get("additionalProperties"), False, name)
                for field, about in part["properties"].items():
                    if "$ref" in about and "description" not in about:
                        file, _, inside = about["$ref"].partition("#/$defs/")
                        about = schemas[file or name]["$defs"][inside]
                    self.assertTrue("description" in about or "const" in about, f"{name}: {field}")


if __name__ == "__main__":
    PROGRAM, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
